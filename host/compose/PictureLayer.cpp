#include "host/compose/PictureLayer.h"

#include "host/compose/Layout.h"

#include <algorithm>
#include <cstring>

namespace qmx::host
{
Layer LayerOf(ISampleBuffer& picture, const PixelBox& box)
{
    std::uint8_t* pPixels = nullptr;
    std::uint32_t length = 0;
    const std::uint32_t stride = picture.GetStride();
    Layer layer;
    if (!picture.GetBuffer(&pPixels, &length) || picture.GetFormat() != kSampleFormatBgra ||
        std::uint64_t{stride} * picture.GetHeight() > length)
        return layer;
    layer.pPixels = pPixels;
    layer.stride = stride;
    layer.place = Centred(box, picture.GetWidth(), picture.GetHeight());
    if (picture.GetAlphaFlag())
        layer.alpha = picture.GetFlag() == 1 ? AlphaMode::Premultiplied : AlphaMode::Straight;
    return layer;
}

SampleBufferPtr CentredPicture(ISampleBuffer& picture, std::uint32_t width, std::uint32_t height)
{
    const PixelBox bounds{0, 0, static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)};
    const Layer layer = LayerOf(picture, bounds);
    SampleBufferPtr pResult = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, width, height, 0));
    std::uint8_t* pPixels = nullptr;
    std::uint32_t length = 0;
    if (!layer.pPixels || !pResult || !pResult->GetBuffer(&pPixels, &length))
        return {};
    const std::size_t stride = pResult->GetStride();
    if (!layer.place.Covers(bounds))
        std::memset(pPixels, 0, stride * height);
    const PixelBox seen{std::max(layer.place.left, 0), std::max(layer.place.top, 0),
                        std::min(layer.place.right, bounds.right), std::min(layer.place.bottom, bounds.bottom)};
    if (!seen.IsEmpty())
    {
        const std::uint8_t* pSource = layer.pPixels +
                                      static_cast<std::size_t>(seen.top - layer.place.top) * layer.stride +
                                      static_cast<std::size_t>(seen.left - layer.place.left) * 4;
        std::uint8_t* pTarget =
            pPixels + static_cast<std::size_t>(seen.top) * stride + static_cast<std::size_t>(seen.left) * 4;
        for (std::int32_t y = seen.top; y < seen.bottom; ++y, pSource += layer.stride, pTarget += stride)
            CopyRowStraight(pTarget, pSource, static_cast<std::size_t>(seen.Width()), layer.alpha);
    }
    pResult->SetRatioX(width);
    pResult->SetRatioY(height);
    return pResult;
}
} // namespace qmx::host
