/// @file FrameStripReader.h
/// Reads the number that a test picture carries.
#pragma once

#include "tests/support/Picture.h"

#include <cstdint>
#include <optional>

namespace test_support
{
/// The number in the strip of @p picture, which may have been scaled. Nothing when a block is neither clearly black
/// nor clearly white or the check bits are wrong: a blank picture, a mixture of two, one that lies on its side.
std::optional<std::uint32_t> ReadFrameStrip(const Picture& picture);
/// The same for one plane of luma samples of a byte each.
/// @param stride  bytes from row to row
std::optional<std::uint32_t> ReadFrameStrip(const std::uint8_t* pLuma, std::uint32_t width, std::uint32_t height,
                                            std::ptrdiff_t stride);
} // namespace test_support
