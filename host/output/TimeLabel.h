/// @file TimeLabel.h
/// Times written into a picture.
#pragma once

#include "host/compose/Canvas.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace qmx::host
{
/// Minutes, seconds and milliseconds, cut off: 615,000,000 (100 ns) becomes "1:01.500".
std::string LabelText(std::uint64_t time);

inline constexpr std::int32_t kLabelHeight = 14; ///< pixels
/// Width of @p text in pixels.
std::int32_t LabelWidth(std::string_view text);
/// Writes @p text in light grey; what lies outside the canvas is left out. Only digits, ':' and '.' have a shape.
void DrawLabel(Canvas& canvas, std::string_view text, std::int32_t left, std::int32_t top);
} // namespace qmx::host
