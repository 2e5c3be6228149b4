/// @file Blend.h
/// Rows of pixels put onto rows of an opaque canvas. Pixels are BGRA, 8 bits each; rows must not overlap.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qmx::host
{
/// How the colours of a picture relate to its alpha.
enum class AlphaMode
{
    Opaque,       ///< the alpha says nothing
    Straight,     ///< colours stand as they are
    Premultiplied ///< colours are already multiplied by the alpha
};

/// Opaque black.
void FillRowBlack(std::uint8_t* pRow, std::size_t pixels);

/// Puts @p pSource over @p pTarget, which is opaque and stays so.
/// Straight: target = (source * a + target * (255 - a)) / 255; premultiplied: target = source +
/// target * (255 - a) / 255, held at 255. Divisions round to the nearest.
void DrawRow(std::uint8_t* pTarget, const std::uint8_t* pSource, std::size_t pixels, AlphaMode mode);

/// Copies a row so that its colours stand straight: opaque pixels get the alpha 255, premultiplied ones are divided by
/// their alpha, rounded to the nearest and held at 255.
void CopyRowStraight(std::uint8_t* pTarget, const std::uint8_t* pSource, std::size_t pixels, AlphaMode mode);
} // namespace qmx::host
