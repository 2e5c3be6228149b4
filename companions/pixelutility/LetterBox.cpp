#include "companions/pixelutility/LetterBox.h"

#include <algorithm>
#include <cstring>

namespace
{
/// round(side * part / whole), at least 1 and at most @p limit.
std::uint32_t Share(std::uint32_t side, std::uint64_t part, std::uint64_t whole, std::uint32_t limit)
{
    const std::uint64_t share = (side * part + whole / 2) / whole;
    return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(share, 1, limit));
}

void ClearPart(const BgraPicture& picture, std::uint32_t left, std::uint32_t width, std::uint32_t top,
               std::uint32_t bottom)
{
    for (std::uint32_t y = top; width != 0 && y < bottom; ++y)
        std::memset(picture.Row(y) + std::size_t{left} * 4, 0, std::size_t{width} * 4);
}
} // namespace

PixelBox FitBox(std::uint32_t ratioX, std::uint32_t ratioY, std::uint32_t boxWidth, std::uint32_t boxHeight,
                std::uint32_t width, std::uint32_t height)
{
    PixelBox box{0, 0, std::min(boxWidth, width), std::min(boxHeight, height)};
    if (std::uint64_t{box.width} * ratioY > std::uint64_t{box.height} * ratioX)
        box.width = Share(box.height, ratioX, ratioY, box.width);
    else
        box.height = Share(box.width, ratioY, ratioX, box.height);
    box.left = (width - box.width) / 2;
    box.top = (height - box.height) / 2;
    return box;
}

bool PlaceInBox(const BgraPicture& source, const BgraPicture& target, const PixelBox& box, ShrinkMode mode)
{
    const BgraPicture inner{target.Row(box.top) + std::size_t{box.left} * 4, box.width, box.height, target.stride};
    if (!ScaleAndTurnPicture(source, box.width, box.height, inner, 0, mode))
    {
        target.Clear();
        return false;
    }
    const std::uint32_t right = box.left + box.width;
    const std::uint32_t bottom = box.top + box.height;
    ClearPart(target, 0, target.width, 0, box.top);
    ClearPart(target, 0, box.left, box.top, bottom);
    ClearPart(target, right, target.width - right, box.top, bottom);
    ClearPart(target, 0, target.width, bottom, target.height);
    return true;
}
