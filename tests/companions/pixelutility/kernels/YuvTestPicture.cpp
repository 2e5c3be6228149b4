#include "tests/companions/pixelutility/kernels/YuvTestPicture.h"

#include <algorithm>
#include <cmath>

using namespace qmx::kernels;

YuvTestPicture::YuvTestPicture(int width, int height, const YuvStorage& storage, std::size_t misalignment,
                               std::size_t rowGap, bool bottomUp)
    : m_storage(storage)
{
    view.width = width;
    view.height = height;
    view.chromaShiftX = storage.shiftX;
    view.chromaShiftY = storage.shiftY;
    view.bitDepth = storage.bitDepth;
    view.highBits = storage.highBits;
    view.interleavedChroma = storage.interleaved;

    std::array<std::uint8_t*, 4> starts{};
    std::array<std::ptrdiff_t, 4> strides{};
    for (int plane = 0; plane < 4; ++plane)
    {
        if ((plane == 2 && storage.interleaved) || (plane == 3 && !storage.alpha))
            continue;
        const auto rows = static_cast<std::size_t>(PlaneHeight(plane));
        const std::size_t cbSample = storage.bitDepth > 8 ? 2 : 1;
        const std::size_t cbRow =
            static_cast<std::size_t>(PlaneWidth(plane)) * cbSample * (plane == 1 && storage.interleaved ? 2 : 1);
        const std::size_t stride = cbRow + rowGap;
        // Not a byte more than the rows need: a read beyond them is an error that the address sanitizer sees.
        std::vector<std::uint8_t>& bytes = m_planes[static_cast<std::size_t>(plane)];
        bytes.resize(misalignment + stride * (rows - 1) + cbRow);
        starts[static_cast<std::size_t>(plane)] = bytes.data() + misalignment + (bottomUp ? stride * (rows - 1) : 0);
        strides[static_cast<std::size_t>(plane)] =
            bottomUp ? -static_cast<std::ptrdiff_t>(stride) : static_cast<std::ptrdiff_t>(stride);
    }
    view.pY = starts[0];
    view.pU = starts[1];
    view.pV = starts[2];
    view.pA = starts[3];
    view.strideY = strides[0];
    view.strideU = strides[1];
    view.strideV = strides[2];
    view.strideA = strides[3];
}

int YuvTestPicture::PlaneWidth(int plane) const
{
    const bool chroma = plane == 1 || plane == 2;
    return chroma ? (view.width + m_storage.shiftX) >> m_storage.shiftX : view.width;
}

int YuvTestPicture::PlaneHeight(int plane) const
{
    const bool chroma = plane == 1 || plane == 2;
    return chroma ? (view.height + m_storage.shiftY) >> m_storage.shiftY : view.height;
}

std::uint8_t* YuvTestPicture::At(int plane, int x, int y)
{
    const std::ptrdiff_t cbSample = m_storage.bitDepth > 8 ? 2 : 1;
    const bool pairs = m_storage.interleaved && (plane == 1 || plane == 2);
    const std::ptrdiff_t column = pairs ? std::ptrdiff_t{x} * 2 + (plane == 2 ? 1 : 0) : x;
    const std::array<const std::uint8_t*, 4> starts = {view.pY, view.pU, pairs ? view.pU : view.pV, view.pA};
    const std::array<std::ptrdiff_t, 4> strides = {view.strideY, view.strideU, pairs ? view.strideU : view.strideV,
                                                   view.strideA};
    const auto index = static_cast<std::size_t>(plane);
    return const_cast<std::uint8_t*>(starts[index]) + y * strides[index] + column * cbSample; // our own bytes
}

void YuvTestPicture::Set(int plane, int x, int y, std::uint32_t value)
{
    std::uint8_t* const p = At(plane, x, y);
    if (m_storage.bitDepth == 8)
    {
        *p = static_cast<std::uint8_t>(value);
        return;
    }
    const std::uint32_t word = m_storage.highBits ? value << (16 - m_storage.bitDepth) : value;
    p[0] = static_cast<std::uint8_t>(word);
    p[1] = static_cast<std::uint8_t>(word >> 8);
}

std::array<double, 3> ExactBgr(const YuvPicture& picture, std::uint32_t y, std::uint32_t u, std::uint32_t v)
{
    struct Weights
    {
        double red;
        double blue;
    };
    constexpr std::array<Weights, 5> kWeights = {
        {{0.299, 0.114}, {0.2126, 0.0722}, {0.2627, 0.0593}, {0.212, 0.087}, {0.30, 0.11}}};
    const Weights weights = kWeights[static_cast<std::size_t>(picture.matrix)];
    const double green = 1.0 - weights.red - weights.blue;

    const double scale = std::ldexp(1.0, picture.bitDepth - 8);
    const double most = std::ldexp(1.0, picture.bitDepth) - 1.0;
    const double middle = std::ldexp(1.0, picture.bitDepth - 1);
    const double luma = picture.fullRange ? y / most : (y - 16.0 * scale) / (219.0 * scale);
    const double cb = (u - middle) / (picture.fullRange ? most : 224.0 * scale);
    const double cr = (v - middle) / (picture.fullRange ? most : 224.0 * scale);

    const double r = luma + 2.0 * (1.0 - weights.red) * cr;
    const double b = luma + 2.0 * (1.0 - weights.blue) * cb;
    const double g = (luma - weights.red * r - weights.blue * b) / green;
    const auto level = [](double value) { return std::clamp(value * 255.0, 0.0, 255.0); };
    return {level(b), level(g), level(r)};
}
