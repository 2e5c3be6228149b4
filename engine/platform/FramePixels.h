/// @file FramePixels.h
/// Frames as the pixel utility library sees them.
#pragma once

#include "engine/platform/SampleBuffer.h"
#include "engine/platform/SampleInfo.h"

#include <cstdint>

/// Describes BGRA rows of @p width * 4 bytes.
inline tagSampleInfo DescribeTightBgra(std::uint8_t* pixels, std::uint32_t width, std::uint32_t height)
{
    tagSampleInfo info;
    info.pData = pixels;
    info.nWidth = width;
    info.nHeight = height;
    info.nStride = width * 4;
    return info;
}

/// Describes the pixels of @p frame.
/// @return false when it is no BGRA picture, or shorter than its size says.
inline bool DescribeFrame(ISampleBuffer& frame, tagSampleInfo& info)
{
    std::uint8_t* pixels = nullptr;
    std::uint32_t cb = 0;
    if (frame.GetFormat() != kSampleFormatBgra || !frame.GetBuffer(&pixels, &cb) || pixels == nullptr)
        return false;
    info = DescribeTightBgra(pixels, frame.GetWidth(), frame.GetHeight());
    return std::uint64_t{info.nWidth} * 4 * info.nHeight <= cb;
}
