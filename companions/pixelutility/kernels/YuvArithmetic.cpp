#include "companions/pixelutility/kernels/YuvArithmetic.h"

#include <cmath>

namespace qmx::kernels
{
namespace
{
struct LumaWeights
{
    double red;
    double blue;
};

LumaWeights WeightsOf(YuvMatrix matrix)
{
    switch (matrix)
    {
    case YuvMatrix::Bt601:
        return {0.299, 0.114};
    case YuvMatrix::Bt2020:
        return {0.2627, 0.0593};
    case YuvMatrix::Smpte240m:
        return {0.212, 0.087};
    case YuvMatrix::Fcc:
        return {0.30, 0.11};
    case YuvMatrix::Bt709:
        break;
    }
    return {0.2126, 0.0722};
}

std::int16_t Rounded(double value)
{
    return static_cast<std::int16_t>(std::lround(value));
}
} // namespace

YuvArithmetic MakeYuvArithmetic(const YuvPicture& picture)
{
    const LumaWeights weights = WeightsOf(picture.matrix);
    const double green = 1.0 - weights.red - weights.blue;
    const double redV = 2.0 * (1.0 - weights.red);
    const double blueU = 2.0 * (1.0 - weights.blue);

    // Levels of the 8-bit result per 1/256 of the sample's 16-bit scale. Limited range keeps 219 and 224 of 256 steps
    // at every depth; full range ends at 2^n - 1, which is a little less than the scale's end.
    const double samples = std::ldexp(1.0, picture.bitDepth);
    const double fullStep = 255.0 / 256.0 * samples / (samples - 1.0);
    const double lumaStep = picture.fullRange ? fullStep : 255.0 / 219.0;
    const double chromaStep = picture.fullRange ? fullStep : 255.0 / 224.0;
    const double black = picture.fullRange ? 0.0 : 16.0;

    YuvArithmetic arithmetic;
    arithmetic.sampleShift = picture.highBits ? 0 : 16 - picture.bitDepth;
    arithmetic.lumaScale = Rounded(16384.0 * lumaStep);
    arithmetic.lumaOffset = Rounded(32.0 - 64.0 * black * lumaStep);
    arithmetic.redV = Rounded(8192.0 * chromaStep * redV);
    arithmetic.greenU = Rounded(8192.0 * chromaStep * blueU * weights.blue / green);
    arithmetic.greenV = Rounded(8192.0 * chromaStep * redV * weights.red / green);
    arithmetic.blueU = Rounded(8192.0 * chromaStep * blueU);
    arithmetic.alphaShift = picture.highBits ? 16 - picture.bitDepth : 0;
    arithmetic.alphaMaximum = (1U << picture.bitDepth) - 1U;
    return arithmetic;
}

bool IsReadable(const YuvPicture& picture, const std::uint8_t* pTarget, std::ptrdiff_t strideTarget)
{
    if (!pTarget || !picture.pY || !picture.pU || (!picture.pV && !picture.interleavedChroma))
        return false;
    if (picture.width <= 0 || picture.height <= 0)
        return false;
    if ((picture.chromaShiftX & ~1) != 0 || (picture.chromaShiftY & ~1) != 0)
        return false;
    if (picture.bitDepth < 8 || picture.bitDepth > 16 || (picture.bitDepth == 8 && picture.highBits))
        return false;
    // Rows that overlap would make the result depend on the order of the rows.
    const std::ptrdiff_t cbRow = static_cast<std::ptrdiff_t>(picture.width) * 4;
    return picture.height == 1 || strideTarget >= cbRow || strideTarget <= -cbRow;
}
} // namespace qmx::kernels
