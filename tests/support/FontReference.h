/// @file FontReference.h
/// Measures of text taken from font files by HarfBuzz and Fontconfig alone, for what the platform layer is held
/// against.
#pragma once

#include <string>
#include <string_view>

namespace test_support
{
/// One line of text, in pixels from its origin on the baseline; y counts downward.
struct MeasuredText
{
    double width = 0;   ///< sum of the advances
    double ascent = 0;  ///< of the font, above the baseline
    double descent = 0; ///< below it
    double inkLeft = 0; ///< of what is drawn
    double inkTop = 0;
    double inkRight = 0;
    double inkBottom = 0;
    double Height() const { return ascent + descent; }
};

/// File of a font that the system has under exactly this family name. Empty when there is none.
std::string FindFontFile(const std::string& family, int weight = 400, bool italic = false);

/// @param utf8  one line in one script, without characters that the font does not have
/// @param size  pixels to the em
/// @return all 0 when the file cannot be read
MeasuredText MeasureText(const std::string& fontFile, std::string_view utf8, double size);
} // namespace test_support
