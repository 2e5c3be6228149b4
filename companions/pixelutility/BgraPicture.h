/// @file BgraPicture.h
/// A checked view of the picture that a descriptor names.
#pragma once

#include "engine/platform/SampleInfo.h"

#include <cstddef>
#include <cstdint>

/// Borrowed pixels of 4 bytes. Sizes are 1..32,767, so that sizes of rows and pictures fit 32 and 64 bits.
struct BgraPicture
{
    std::uint8_t* pData = nullptr;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t stride = 0; ///< bytes, at least width * 4

    std::uint8_t* Row(std::uint32_t y) const { return pData + std::size_t{y} * stride; }
    std::size_t RowBytes() const { return std::size_t{width} * 4; }
    int Stride() const { return static_cast<int>(stride); }
    std::uint64_t Pixels() const { return std::uint64_t{width} * height; }

    /// @return false for a descriptor that cannot be used: null, null pixels, a side of 0 or above 32,767, a stride
    ///         below width * 4 or above 2^31 - 1.
    static bool FromDescriptor(const tagSampleInfo* pInfo, BgraPicture& picture);
    /// Transparent black.
    void Clear() const;
    bool HasSizeOf(const BgraPicture& other) const { return width == other.width && height == other.height; }
};
