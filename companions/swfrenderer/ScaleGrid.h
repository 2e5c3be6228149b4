/// @file ScaleGrid.h
/// Objects whose corners keep their size when they are scaled.
#pragma once

#include "companions/swfrenderer/Shape.h"

#include <array>
#include <vector>

namespace swf
{
/// A box in nine parts: scaled, its corners stay as they are, its sides grow along themselves alone and the middle
/// takes what is left. Where the corners have no room they shrink.
class CScaleGrid
{
public:
    /// @param box   of the object, in its own twips  @param middle  the part that grows both ways
    CScaleGrid(const Rect& box, const Rect& middle, double scaleX, double scaleY);

    /// From the object's own twips to where they are when it has been scaled.
    Point Map(Point p) const { return {m_x.Map(p.x), m_y.Map(p.y)}; }
    /// A shape on the object, scaled. Its edges are cut where they go from part to part.
    /// @param toObject  from the shape's twips to those of the object
    Shape Map(const Shape& shape, const Matrix& toObject) const;
    /// Back from the scaled object, to be done before what places it.
    Matrix Unscaled() const { return {1 / m_x.scale, 0, 0, 1 / m_y.scale, 0, 0}; }

private:
    struct Axis
    {
        double scale = 1;
        std::array<double, 4> from{}, to{};

        Axis(double low, double high, double middleLow, double middleHigh, double factor);
        double Map(double v) const;
    };
    void Cut(const std::array<Point, 3>& curve, std::vector<double>& cuts) const;
    void MapEdge(const std::array<Point, 3>& curve, bool isLine, std::vector<Edge>& out) const;

    Axis m_x, m_y;
};
} // namespace swf
