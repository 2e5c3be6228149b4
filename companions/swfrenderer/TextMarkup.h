/// @file TextMarkup.h
/// The characters of dynamic text and how each is to look.
#pragma once

#include "companions/swfrenderer/Movie.h"

#include <memory>
#include <string>
#include <vector>

namespace swf
{
inline constexpr std::size_t kMaxLetters = 65'536; ///< of one field

struct TextFormat
{
    std::uint16_t font = 0;
    std::string face;
    bool bold = false, italic = false, underline = false, kerning = false;
    double height = 240; ///< twips
    Rgba colour;
    std::uint8_t align = 0;
    double left = 0, right = 0, indent = 0, leading = 0; ///< twips
};

/// One character; code 10 ends a paragraph.
struct MarkedCode
{
    std::uint32_t code = 0;
    std::shared_ptr<const TextFormat> pFormat; ///< never null
};

/// The text of @p edit without its markup: p, br, sbr, li, b, i, u, font (face, size, color) and textformat count.
/// Throws std::bad_alloc.
std::vector<MarkedCode> ReadMarkup(const EditText& edit);
} // namespace swf
