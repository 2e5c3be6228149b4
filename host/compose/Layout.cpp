#include "host/compose/Layout.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qmx::host
{
PixelBox BoxOnCanvas(const BoxFractions& box, std::uint32_t width, std::uint32_t height)
{
    const auto edge = [](double fraction, std::uint32_t side)
    { return static_cast<std::int32_t>(std::lround(fraction * side)); };
    return {edge(box.left, width), edge(box.top, height), edge(box.left + box.width, width),
            edge(box.top + box.height, height)};
}

PixelBox Centred(const PixelBox& box, std::uint32_t width, std::uint32_t height)
{
    // An arithmetic shift rounds down also when the picture is larger than the box.
    const auto w = static_cast<std::int32_t>(width);
    const auto h = static_cast<std::int32_t>(height);
    const std::int32_t left = box.left + ((box.Width() - w) >> 1);
    const std::int32_t top = box.top + ((box.Height() - h) >> 1);
    return {left, top, left + w, top + h};
}

std::uint32_t VideoHeightForWidth(const VideoShape& shape, std::uint32_t width)
{
    // The same steps in the same order as the decoder's, so that both round alike.
    const double rows = static_cast<double>(width) * (static_cast<double>(shape.pixelAspectY) * shape.height) /
                        (static_cast<double>(shape.pixelAspectX) * shape.width);
    if (!(rows < 4294967295.0))
        return 0;
    return static_cast<std::uint32_t>(rows) & ~(shape.evenRows ? 1U : 0U);
}

std::optional<PictureSize> FitVideo(const VideoShape& shape, std::uint32_t rotation, std::uint32_t boxWidth,
                                    std::uint32_t boxHeight)
{
    if (shape.width == 0 || shape.height == 0 || shape.pixelAspectX == 0 || shape.pixelAspectY == 0)
        return std::nullopt;
    if (rotation == 90 || rotation == 270)
        std::swap(boxWidth, boxHeight); // the size asked for is the one before the turn
    const double aspect = (static_cast<double>(shape.pixelAspectX) * shape.width) /
                          (static_cast<double>(shape.pixelAspectY) * shape.height);
    const double widest = std::min<double>(boxWidth, std::round(boxHeight * aspect));
    auto width = static_cast<std::uint32_t>(std::max(1.0, widest));
    while (width > 1 && VideoHeightForWidth(shape, width) > boxHeight)
        --width;
    const std::uint32_t height = VideoHeightForWidth(shape, width);
    if (height < 2 || height > boxHeight || width > boxWidth)
        return std::nullopt;
    return PictureSize{width, height};
}

std::optional<std::uint32_t> FitImage(std::uint32_t width, std::uint32_t height, std::uint32_t rotation,
                                      std::uint32_t boxWidth, std::uint32_t boxHeight)
{
    if (rotation == 90 || rotation == 270)
        std::swap(boxWidth, boxHeight); // the size asked for is the one before the turn
    const std::uint32_t longer = std::max(width, height);
    const std::uint32_t shorter = std::min(width, height);
    if (width < height)
        std::swap(boxWidth, boxHeight); // from here on the longer side counts first
    if (shorter < 2)
        return std::nullopt;
    // The engine's sides are this exact quotient without its fraction and lowest bit, so they never exceed it.
    const std::uint64_t byShorter = std::uint64_t{boxHeight} * longer / shorter;
    const auto side = static_cast<std::uint32_t>(std::min<std::uint64_t>({longer, boxWidth, byShorter}));
    const bool isSeen = side >= 2 && std::uint64_t{side} * shorter / longer >= 2;
    return isSeen ? std::optional(side) : std::nullopt;
}
} // namespace qmx::host
