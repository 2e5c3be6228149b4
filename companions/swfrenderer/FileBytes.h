/// @file FileBytes.h
/// A whole file in memory. One source per system.
#pragma once

#include <cstdint>
#include <vector>

namespace swf
{
/// Reads the file at @p path. Empty when it cannot be read, is empty or larger than kMaxFileBytes. Throws bad_alloc.
std::vector<std::uint8_t> ReadFileBytes(const wchar_t* path);
} // namespace swf
