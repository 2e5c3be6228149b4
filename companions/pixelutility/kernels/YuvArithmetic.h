/// @file YuvArithmetic.h
/// The fixed-point arithmetic that the YUV to BGRA kernel and its scalar twin share. Private to the kernels.
#pragma once

#include "companions/pixelutility/kernels/YuvToBgra.h"

#include <cstdint>

namespace qmx::kernels
{
/// One 16-bit arithmetic for every sample depth. A sample is first moved to the top of its 16 bits: w = sample <<
/// sampleShift. With Mul(a, b) = (a * b + 2^14) >> 15 every term is a level of the 8-bit result times 64:
///
///   luma   = Mul(w >> 1, lumaScale) + lumaOffset      (the offset holds black and the rounding of the last shift)
///   chroma = Mul(w ^ 0x8000 as signed, factor)
///   R = clamp((luma + Mul(V, redV)) >> 6), G = clamp((luma - Mul(U, greenU) - Mul(V, greenV)) >> 6), …
///
/// Error: half a unit (1/128 level) a product, 0.008 level a factor, half a level in the last shift: below 0.6 level.
struct YuvArithmetic
{
    int sampleShift = 8;         ///< 0..8: left shift that brings a sample to the top of its 16 bits
    std::int16_t lumaScale = 0;  ///< 1 = 2^14
    std::int16_t lumaOffset = 0; ///< in 1/64 level
    std::int16_t redV = 0;       ///< 1 = 2^13, as are the following
    std::int16_t greenU = 0;     ///< subtracted
    std::int16_t greenV = 0;     ///< subtracted
    std::int16_t blueU = 0;
    int alphaShift = 0;               ///< right shift that brings an alpha sample to the bottom of its 16 bits
    std::uint32_t alphaMaximum = 255; ///< largest alpha sample: alpha = (sample * 255 + maximum / 2) / maximum
};

/// Factors for the matrix, range and depth of @p picture, which must pass IsReadable().
YuvArithmetic MakeYuvArithmetic(const YuvPicture& picture);

/// Whether both kernels can read @p picture and write rows @p strideTarget apart.
bool IsReadable(const YuvPicture& picture, const std::uint8_t* pTarget, std::ptrdiff_t strideTarget);
} // namespace qmx::kernels
