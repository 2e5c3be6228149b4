/// @file PathText.h
/// Wide strings of the engine to and from the bytes of Linux paths.
#pragma once

#include <string>
#include <string_view>

namespace pal
{
/// UTF-8 bytes of @p text. A byte that is not part of valid UTF-8 travels through wide strings as the code point
/// 0xDC00 + byte (a lone low surrogate, which no valid text holds) and comes back as that byte.
std::string ToPathBytes(std::wstring_view text);

/// Inverse of ToPathBytes(): any bytes survive the round trip.
std::wstring FromPathBytes(std::string_view bytes);
} // namespace pal
