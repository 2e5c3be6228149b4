#include "host/compose/Compositor.h"

#include <algorithm>

namespace qmx::host
{
namespace
{
PixelBox Common(const PixelBox& a, const PixelBox& b)
{
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
}

std::uint8_t* PixelAt(Canvas& canvas, std::int32_t x, std::int32_t y)
{
    return canvas.Row(static_cast<std::uint32_t>(y)) + static_cast<std::size_t>(x) * 4;
}

void ClearSpan(Canvas& canvas, std::int32_t y, std::int32_t left, std::int32_t right)
{
    if (left < right)
        FillRowBlack(PixelAt(canvas, left, y), static_cast<std::size_t>(right - left));
}

/// Clears all of the canvas but @p kept, which lies inside it or is empty.
void ClearAround(Canvas& canvas, const PixelBox& kept)
{
    const PixelBox bounds = canvas.Bounds();
    for (std::int32_t y = 0; y < bounds.bottom; ++y)
    {
        const bool crosses = !kept.IsEmpty() && y >= kept.top && y < kept.bottom;
        ClearSpan(canvas, y, 0, crosses ? kept.left : bounds.right);
        if (crosses)
            ClearSpan(canvas, y, kept.right, bounds.right);
    }
}

void Draw(Canvas& canvas, const Layer& layer)
{
    const PixelBox seen = Common(layer.place, canvas.Bounds());
    if (seen.IsEmpty())
        return;
    const auto width = static_cast<std::size_t>(seen.Width());
    const std::uint8_t* pSource = layer.pPixels + static_cast<std::size_t>(seen.top - layer.place.top) * layer.stride +
                                  static_cast<std::size_t>(seen.left - layer.place.left) * 4;
    for (std::int32_t y = seen.top; y < seen.bottom; ++y, pSource += layer.stride)
        DrawRow(PixelAt(canvas, seen.left, y), pSource, width, layer.alpha);
}
} // namespace

void Compose(Canvas& canvas, std::span<const Layer> layers)
{
    const bool solid = !layers.empty() && layers.front().alpha == AlphaMode::Opaque;
    ClearAround(canvas, solid ? Common(layers.front().place, canvas.Bounds()) : PixelBox{});
    for (const Layer& layer : layers)
        Draw(canvas, layer);
}
} // namespace qmx::host
