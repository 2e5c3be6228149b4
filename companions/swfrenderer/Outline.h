/// @file Outline.h
/// Flat outlines, in device pixels, of the fills and the lines of a shape.
#pragma once

#include "companions/swfrenderer/Rasterizer.h"
#include "companions/swfrenderer/Shape.h"

#include <vector>

namespace swf
{
/// Furthest distance between a curve and the chords in its place, in device pixels.
inline constexpr double kFlatness = 0.04;

/// Adds to @p out the edges between the fills of @p layer. Stops at @p limit edges.
void FlattenFills(const ShapeLayer& layer, const Matrix& toDevice, std::size_t limit, std::vector<FlatEdge>& out);

/// Calls @p add(point) for the end of every chord in place of a curve; @p from is not repeated.
template <class Add> void FlattenCurve(Point from, Point control, Point to, double scale, const Add& add)
{
    constexpr int kMostChords = 256;
    // A chord over 1/n of the curve is |from - 2 control + to| / (4 n^2) away from it at most.
    const double bend = std::hypot(from.x - 2 * control.x + to.x, from.y - 2 * control.y + to.y) * scale;
    const int n =
        std::clamp(static_cast<int>(std::ceil(std::sqrt(std::min(bend, 1e7) / (4 * kFlatness)))), 1, kMostChords);
    for (int i = 1; i < n; ++i)
    {
        const double t = static_cast<double>(i) / n, s = 1 - t;
        add(Point{s * s * from.x + 2 * s * t * control.x + t * t * to.x,
                  s * s * from.y + 2 * s * t * control.y + t * t * to.y});
    }
    add(to);
}

/// Adds a straight edge; what lies beyond a million pixels is brought nearer.
void AddFlatEdge(Point a, Point b, std::uint16_t fill0, std::uint16_t fill1, std::vector<FlatEdge>& out);
} // namespace swf
