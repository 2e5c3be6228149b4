/// @file FontReference.h
/// Measures of text taken from fonts by others than those that draw it: by HarfBuzz and Fontconfig on Linux, by GDI on
/// Windows.
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

struct FontName
{
    std::string family;
    int weight = 400; ///< 100..900
    bool italic = false;
};

/// Whether the system has a font of exactly this name.
bool HasFont(const FontName& font);

/// @param utf8  one line in one script, without characters that the font does not have. On Windows of ASCII, which is
///              not kerned.
/// @param size  pixels to the em
/// @return all 0 when there is no such font
MeasuredText MeasureText(const FontName& font, std::string_view utf8, double size);
} // namespace test_support
