/// @file Compositor.h
/// Lays pictures over each other on a black canvas.
#pragma once

#include "host/compose/Blend.h"
#include "host/compose/Canvas.h"

#include <cstdint>
#include <span>

namespace qmx::host
{
/// Borrowed view of a picture and its place.
struct Layer
{
    const std::uint8_t* pPixels = nullptr; ///< BGRA rows from the top
    std::size_t stride = 0;                ///< bytes from row to row
    PixelBox place;                        ///< as large as the picture; may reach outside the canvas
    AlphaMode alpha = AlphaMode::Opaque;

    /// Nothing beneath it can be seen on a canvas of this size.
    bool Hides(const PixelBox& bounds) const { return alpha == AlphaMode::Opaque && place.Covers(bounds); }
};

/// Draws @p layers, bottom first, onto a black background; every pixel of the canvas is opaque afterwards. Only what
/// the first layer leaves uncovered is cleared.
void Compose(Canvas& canvas, std::span<const Layer> layers);
} // namespace qmx::host
