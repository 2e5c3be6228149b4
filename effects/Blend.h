/// @file Blend.h
/// Mixing of pixels with straight alpha: a transparent pixel lends no colour.
#pragma once

#include <cstdint>

namespace qmx::effects
{
/// Weights count from 0 (the first picture) to this (the second).
inline constexpr std::uint32_t kFullWeight = 256;

/// @p share of 0..1 as a weight; what lies outside is cut, what is no number is 0.
std::uint32_t WeightOf(float share);

/// Mixes @p pixels pixels of two rows with one weight. Rows may not overlap, but the output may be one of them.
void MixRow(std::uint8_t* pOutput, const std::uint8_t* pFirst, const std::uint8_t* pSecond, std::uint32_t pixels,
            std::uint32_t weight);

/// Mixes with a weight for every pixel.
void MixRow(std::uint8_t* pOutput, const std::uint8_t* pFirst, const std::uint8_t* pSecond, std::uint32_t pixels,
            const std::uint16_t* pWeights);

/// Mixes @p pixels pixels of a row with one colour (B, G, R, A).
void MixRowWithColor(std::uint8_t* pOutput, const std::uint8_t* pRow, const std::uint8_t* pColor, std::uint32_t pixels,
                     std::uint32_t weight);

/// Mixes two pixels.
void MixPixel(std::uint8_t* pOutput, const std::uint8_t* pFirst, const std::uint8_t* pSecond, std::uint32_t weight);
} // namespace qmx::effects
