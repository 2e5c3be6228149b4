/// @file YuvToBgra.h
/// YUV pictures to BGRA: one SIMD kernel with run-time dispatch and its scalar twin. A leaf: no other part of the
/// system is needed, so that the platform layer converts frames with the same code as the pixel utility library.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qmx::kernels
{
enum class YuvMatrix
{
    Bt601,     ///< Rec. ITU-R BT.601: Kr 0.299, Kb 0.114
    Bt709,     ///< Rec. ITU-R BT.709: Kr 0.2126, Kb 0.0722
    Bt2020,    ///< Rec. ITU-R BT.2020 non-constant luminance: Kr 0.2627, Kb 0.0593
    Smpte240m, ///< Kr 0.212, Kb 0.087
    Fcc        ///< 47 CFR 73.682: Kr 0.30, Kb 0.11
};

/// Borrowed view of a planar or semi-planar YUV picture.
struct YuvPicture
{
    const std::uint8_t* pY = nullptr;
    const std::uint8_t* pU = nullptr; ///< U plane; interleaved U, V when interleavedChroma
    const std::uint8_t* pV = nullptr; ///< V plane; unused when interleavedChroma
    const std::uint8_t* pA = nullptr; ///< alpha plane at full size, or null: opaque
    std::ptrdiff_t strideY = 0;       ///< bytes; negative strides are allowed
    std::ptrdiff_t strideU = 0;
    std::ptrdiff_t strideV = 0;
    std::ptrdiff_t strideA = 0;
    int width = 0;         ///< pixels
    int height = 0;        ///< rows
    int chromaShiftX = 1;  ///< log2 of the horizontal chroma subsampling: 0 or 1
    int chromaShiftY = 1;  ///< log2 of the vertical chroma subsampling: 0 or 1
    int bitDepth = 8;      ///< 8: one byte a sample; 9..16: two bytes, little-endian
    bool highBits = false; ///< samples of 9..16 bits stand in the high bits of their 16 (P010), else in the low bits
    bool interleavedChroma = false; ///< NV12, P010
    bool fullRange = false;         ///< luma 0..2^n-1, else 16..235 (times 2^(n-8))
    YuvMatrix matrix = YuvMatrix::Bt709;
};

/// Converts to BGRA8 with replicated chroma. Every channel is within 1 level of the formula in double precision.
/// @param pTarget  height rows of width * 4 bytes, strideTarget apart. Nothing is written beyond a row's pixels.
/// @return false for a picture it cannot read (null plane, size <= 0, unsupported shift or depth) or target rows that
///         would overlap.
bool ConvertYuvToBgra(const YuvPicture& source, std::uint8_t* pTarget, std::ptrdiff_t strideTarget);

/// The scalar twin: the same results, pixel by pixel.
bool ConvertYuvToBgraScalar(const YuvPicture& source, std::uint8_t* pTarget, std::ptrdiff_t strideTarget);
} // namespace qmx::kernels
