/// @file FrameStripCode.h
/// The machine-readable frame number that test pictures carry in their top left corner.
///
/// Two rows of 16 square blocks, black for 0 and white for 1, each one sixteenth of the picture's width wide and high.
/// The upper row is the number, the lower row its check bits; the leftmost block is the most significant bit.
/// Blocks this large survive lossy coding, chroma subsampling and scaling, and a mixture of two pictures fails the
/// check. Shared by the program that draws the pictures and by the tests that read them.
#pragma once

#include <cstdint>

inline constexpr std::uint32_t kStripColumns = 16; ///< blocks in a row, bits of a number
inline constexpr std::uint32_t kStripRows = 2;

/// Check bits of a frame number. Neighbouring numbers differ in about half of the bits, and neither an all-black nor
/// an all-white strip is valid.
constexpr std::uint16_t FrameStripCheck(std::uint16_t number)
{
    const std::uint32_t mixed = number * 0x9E37U + 0x5A5AU;
    return static_cast<std::uint16_t>(mixed ^ mixed >> 7 ^ number >> 3);
}
static_assert(FrameStripCheck(0) != 0 && FrameStripCheck(0xFFFF) != 0xFFFF, "a blank picture must not be readable");

/// Whether the block in @p column of @p row is white.
constexpr bool FrameStripBit(std::uint16_t number, std::uint32_t column, std::uint32_t row)
{
    const std::uint16_t bits = row == 0 ? number : FrameStripCheck(number);
    return (bits >> (kStripColumns - 1 - column) & 1) != 0;
}
