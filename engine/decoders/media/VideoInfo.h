/// @file VideoInfo.h
/// Facts of a video stream.
#pragma once

#include <cstddef>
#include <cstdint>

/// Filled in place; a field that cannot be determined keeps what the caller put there. The layout is part of the
/// exported interface.
struct tagVideoInfo
{
    std::uint32_t nWidth = 0;        ///< pixels, after the exchange for a stream turned by 90 or 270 degrees
    std::uint32_t nHeight = 0;       ///< rows, likewise
    std::uint32_t nRotation = 0;     ///< clockwise degrees that make the stored picture upright: 0, 90, 180 or 270
    double dFrameRate = 0;           ///< frames per second: nFrameRateNum / nFrameRateDen
    std::uint32_t nFrameRateNum = 0; ///< numerator
    std::uint32_t nFrameRateDen = 0; ///< denominator
    std::uint32_t nPixelAspectX = 0; ///< shape of a pixel; 1 when the stream does not say
    std::uint32_t nPixelAspectY = 0; ///< likewise
    double dDuration = 0;            ///< seconds
};
static_assert(sizeof(tagVideoInfo) == 48 && offsetof(tagVideoInfo, dFrameRate) == 16 &&
                  offsetof(tagVideoInfo, nPixelAspectX) == 32 && offsetof(tagVideoInfo, dDuration) == 40,
              "fixed by the exported interface");
