/// @file TestPattern.h
/// Pictures whose every pixel follows from a rule, for the tests of colour and alpha. Shared by the program that writes
/// them and by the tests that know from the same rule what must come out.
#pragma once

#include <array>
#include <cstdint>

/// Luma and chroma samples of one flat block of the colour grid, at the depth asked for.
struct tagGridColour
{
    std::uint32_t y = 0, u = 0, v = 0;
};

inline constexpr std::array<std::uint32_t, 9> kGridLuma{0, 16, 45, 90, 126, 160, 200, 235, 255};
inline constexpr std::array<std::uint32_t, 7> kGridChroma{0, 16, 64, 128, 170, 240, 255};
/// Blocks in a row and in a column: together they hold every combination once.
inline constexpr std::uint32_t kGridSide = 21;
static_assert(kGridLuma.size() * kGridChroma.size() * kGridChroma.size() == kGridSide * kGridSide);

/// Colour of block @p column, @p row (both below kGridSide). Above 8 bits the low bits are filled too, so that a reader
/// that drops them is told apart.
/// @param bits  8 or 10
constexpr tagGridColour GridColour(std::uint32_t column, std::uint32_t row, std::uint32_t bits)
{
    const std::uint32_t index = row * kGridSide + column;
    const auto deepen = [bits, index](std::uint32_t value, std::uint32_t salt)
    {
        const std::uint32_t extra = bits - 8;
        return (value << extra) + ((index * 3 + salt) & ((1U << extra) - 1));
    };
    tagGridColour colour;
    colour.y = deepen(kGridLuma[index / (kGridChroma.size() * kGridChroma.size())], 0);
    colour.u = deepen(kGridChroma[index / kGridChroma.size() % kGridChroma.size()], 1);
    colour.v = deepen(kGridChroma[index % kGridChroma.size()], 2);
    return colour;
}

/// One pixel of the RGBA pattern; straight alpha. All 256 levels of each channel occur, alpha 0 and 255 included, and
/// the colour under alpha 0 is not black.
struct tagPatternPixel
{
    std::uint8_t r = 0, g = 0, b = 0, a = 0;
};

constexpr tagPatternPixel PatternPixel(std::uint32_t x, std::uint32_t y, std::uint32_t frame)
{
    tagPatternPixel pixel;
    pixel.r = static_cast<std::uint8_t>(x * 4 + frame * 9);
    pixel.g = static_cast<std::uint8_t>(y * 5 + x + frame);
    pixel.b = static_cast<std::uint8_t>(x * 3 ^ y * 7);
    pixel.a = static_cast<std::uint8_t>(x < 4 ? 0 : x < 8 ? 255 : x * 5 + y * 3);
    return pixel;
}
