#include "companions/pixelutility/kernels/YuvArithmetic.h"

#include <algorithm>
#include <cstring>

namespace qmx::kernels
{
namespace
{
/// Sample @p index of a row as it is stored: one byte, or two little-endian.
std::uint16_t SampleAt(const std::uint8_t* pRow, std::ptrdiff_t index, bool words)
{
    if (!words)
        return pRow[index];
    std::uint16_t sample;
    std::memcpy(&sample, pRow + index * 2, sizeof(sample));
    return sample;
}

int MulFixedPoint(int a, int b)
{
    return (a * b + (1 << 14)) >> 15;
}

std::uint8_t ToByte(int level64)
{
    return static_cast<std::uint8_t>(std::clamp(level64 >> 6, 0, 255));
}

/// Where the samples of one row start.
struct Row
{
    const std::uint8_t* pY;
    const std::uint8_t* pU;
    const std::uint8_t* pV;
    const std::uint8_t* pA;
};

void ConvertPixel(const YuvPicture& source, const YuvArithmetic& arithmetic, const Row& row, std::ptrdiff_t x,
                  std::uint8_t* pTarget)
{
    const bool words = source.bitDepth > 8;
    const std::ptrdiff_t pair = x >> source.chromaShiftX;
    const int sampleY = SampleAt(row.pY, x, words);
    const int sampleU = SampleAt(row.pU, source.interleavedChroma ? pair * 2 : pair, words);
    const int sampleV =
        source.interleavedChroma ? SampleAt(row.pU, pair * 2 + 1, words) : SampleAt(row.pV, pair, words);

    const int shift = arithmetic.sampleShift;
    const int wordY = static_cast<std::uint16_t>(sampleY << shift) >> 1;
    const int wordU = static_cast<std::uint16_t>(sampleU << shift) - 0x8000;
    const int wordV = static_cast<std::uint16_t>(sampleV << shift) - 0x8000;
    const int luma = MulFixedPoint(wordY, arithmetic.lumaScale) + arithmetic.lumaOffset;
    pTarget[0] = ToByte(luma + MulFixedPoint(wordU, arithmetic.blueU));
    pTarget[1] = ToByte(luma - MulFixedPoint(wordU, arithmetic.greenU) - MulFixedPoint(wordV, arithmetic.greenV));
    pTarget[2] = ToByte(luma + MulFixedPoint(wordV, arithmetic.redV));
    if (!row.pA)
    {
        pTarget[3] = 255;
        return;
    }
    const std::uint32_t sampleA = static_cast<std::uint32_t>(SampleAt(row.pA, x, words)) >> arithmetic.alphaShift;
    const std::uint32_t maximum = arithmetic.alphaMaximum;
    pTarget[3] = static_cast<std::uint8_t>(std::min(255U, (sampleA * 255U + maximum / 2U) / maximum));
}
} // namespace

bool ConvertYuvToBgraScalar(const YuvPicture& source, std::uint8_t* pTarget, std::ptrdiff_t strideTarget)
{
    if (!IsReadable(source, pTarget, strideTarget))
        return false;
    const YuvArithmetic arithmetic = MakeYuvArithmetic(source);
    for (std::ptrdiff_t y = 0; y < source.height; ++y)
    {
        const std::ptrdiff_t yChroma = y >> source.chromaShiftY;
        const Row row = {source.pY + y * source.strideY, source.pU + yChroma * source.strideU,
                         source.interleavedChroma ? nullptr : source.pV + yChroma * source.strideV,
                         source.pA ? source.pA + y * source.strideA : nullptr};
        for (std::ptrdiff_t x = 0; x < source.width; ++x)
            ConvertPixel(source, arithmetic, row, x, pTarget + y * strideTarget + x * 4);
    }
    return true;
}
} // namespace qmx::kernels
