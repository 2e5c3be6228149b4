/// @file EffectPictures.h
/// The three pictures of a blend, as effects see them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qmx::effects
{
/// Borrowed pictures of one size, BGRA with straight alpha, rows without padding.
struct EffectPictures
{
    std::uint8_t* pOutput;
    const std::uint8_t* pFrom;
    const std::uint8_t* pTo;
    std::uint32_t width;  ///< at least 1
    std::uint32_t height; ///< at least 1

    std::size_t RowBytes() const { return std::size_t{width} * 4; }
    std::uint8_t* OutputRow(std::uint32_t y) const { return pOutput + y * RowBytes(); }
    const std::uint8_t* FromRow(std::uint32_t y) const { return pFrom + y * RowBytes(); }
    const std::uint8_t* ToRow(std::uint32_t y) const { return pTo + y * RowBytes(); }
};
} // namespace qmx::effects
