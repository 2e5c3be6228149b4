/// @file Surface.h
/// Pictures that the renderer draws on, and masks.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace swf
{
/// Half-open rectangle of device pixels.
struct Area
{
    int left = 0, top = 0, right = 0, bottom = 0;

    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool IsEmpty() const { return right <= left || bottom <= top; }
    std::uint64_t Pixels() const
    {
        return IsEmpty() ? 0 : static_cast<std::uint64_t>(Width()) * static_cast<std::uint64_t>(Height());
    }
    Area Meet(const Area& o) const
    {
        return {std::max(left, o.left), std::max(top, o.top), std::min(right, o.right), std::min(bottom, o.bottom)};
    }
    bool operator==(const Area&) const = default;
};

/// Premultiplied B, G, R, A bytes of an area, one number per pixel, rows without padding.
struct Surface
{
    using Level = std::uint32_t;
    Area area;
    std::vector<Level> pixels;

    std::size_t Held() const { return pixels.capacity() * sizeof(Level); } ///< bytes
    /// Takes a new area; keeps its memory. Throws std::bad_alloc.
    void Reset(const Area& newArea, std::uint32_t colour = 0)
    {
        area = newArea;
        pixels.assign(static_cast<std::size_t>(area.Pixels()), colour);
    }
    std::uint32_t* Row(int y)
    {
        return pixels.data() + static_cast<std::size_t>(y - area.top) * static_cast<std::size_t>(area.Width());
    }
    const std::uint32_t* Row(int y) const { return const_cast<Surface*>(this)->Row(y); }
    std::uint32_t* At(int x, int y) { return Row(y) + (x - area.left); }
    const std::uint32_t* At(int x, int y) const { return Row(y) + (x - area.left); }
};

/// How much of every pixel shows, 0..255. Outside its area nothing does.
struct Mask
{
    using Level = std::uint8_t;
    Area area;
    std::vector<Level> levels;

    std::size_t Held() const { return levels.capacity() * sizeof(Level); } ///< bytes
    void Reset(const Area& newArea)
    {
        area = newArea;
        levels.assign(static_cast<std::size_t>(area.Pixels()), 0);
    }
    std::uint8_t* At(int x, int y)
    {
        return levels.data() + static_cast<std::size_t>(y - area.top) * static_cast<std::size_t>(area.Width()) +
               (x - area.left);
    }
    const std::uint8_t* At(int x, int y) const { return const_cast<Mask*>(this)->At(x, y); }
};

/// Scales all four channels of a pixel by @p factor / 255, rounded.
inline std::uint32_t ScalePixel(std::uint32_t pixel, std::uint32_t factor)
{
    const std::uint64_t spread = (pixel | static_cast<std::uint64_t>(pixel) << 24) & 0x00FF00FF00FF00FFULL;
    // x / 255 rounded = (x + 128 + ((x + 128) >> 8)) >> 8 in each of the four 16-bit lanes.
    std::uint64_t product = spread * factor + 0x0080008000800080ULL;
    product = ((product + ((product >> 8) & 0x00FF00FF00FF00FFULL)) >> 8) & 0x00FF00FF00FF00FFULL;
    return static_cast<std::uint32_t>(product | product >> 24);
}

/// @p source over @p target; both premultiplied.
inline std::uint32_t Over(std::uint32_t source, std::uint32_t target)
{
    const std::uint32_t alpha = source >> 24;
    if (alpha == 255)
        return source;
    return source + ScalePixel(target, 255 - alpha);
}
} // namespace swf
