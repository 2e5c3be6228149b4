/// @file ConvertNv12.h
/// NV12 pictures to BGRA of another size, turned.
#pragma once

#include "companions/pixelutility/BgraPicture.h"
#include "companions/pixelutility/ScaleBgra.h"
#include "engine/platform/SampleInfo.h"

#include <cstddef>
#include <cstdint>

/// Borrowed contiguous planes: Y rows, then rows of interleaved U and V. Sizes are 1..32,767.
struct Nv12Picture
{
    const std::uint8_t* pData = nullptr;
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    const std::uint8_t* LumaRow(std::uint32_t y) const { return pData + std::size_t{y} * width; }
    std::size_t ChromaStride() const { return (std::size_t{width} + 1) / 2 * 2; }
    const std::uint8_t* ChromaRow(std::uint32_t y) const { return LumaRow(height) + y * ChromaStride(); }
    std::uint64_t Pixels() const { return std::uint64_t{width} * height; }

    /// @return false for a descriptor that cannot be used: null, null pixels, a side of 0 or above 32,767.
    static bool FromDescriptor(const tagSampleInfo* pInfo, Nv12Picture& picture);
};

/// Converts @p source, scales it to @p width x @p height and turns the result clockwise by @p angle, one of 0, 90, 180
/// and 270. The pixels are those of the steps one after the other, but a picture between them exists only in pieces
/// that fit the processor's cache.
/// @param target  of the turned size
/// @return false and nothing written when memory is short.
bool ConvertScaleAndTurn(const Nv12Picture& source, std::uint32_t width, std::uint32_t height,
                         const BgraPicture& target, std::uint32_t angle, ShrinkMode mode);
