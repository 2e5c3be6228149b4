/// @file Geometry.h
/// Points, rectangles and affine maps. Shapes speak twips (1/20 pixel), the renderer device pixels; y points down.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace swf
{
struct Point
{
    double x = 0, y = 0;
    bool operator==(const Point&) const = default;
};

/// Half-open on neither side: a rectangle of one point is not empty.
struct Rect
{
    double xMin = std::numeric_limits<double>::infinity(), yMin = std::numeric_limits<double>::infinity();
    double xMax = -std::numeric_limits<double>::infinity(), yMax = -std::numeric_limits<double>::infinity();

    bool IsEmpty() const { return !(xMin <= xMax && yMin <= yMax); }
    double Width() const { return xMax - xMin; }
    double Height() const { return yMax - yMin; }
    void Include(Point p)
    {
        xMin = std::min(xMin, p.x);
        yMin = std::min(yMin, p.y);
        xMax = std::max(xMax, p.x);
        yMax = std::max(yMax, p.y);
    }
    void Include(const Rect& r)
    {
        if (!r.IsEmpty())
        {
            Include(Point{r.xMin, r.yMin});
            Include(Point{r.xMax, r.yMax});
        }
    }
    void Grow(double x, double y)
    {
        xMin -= x;
        xMax += x;
        yMin -= y;
        yMax += y;
    }
    bool operator==(const Rect&) const = default;
};

/// x' = a x + c y + tx, y' = b x + d y + ty.
struct Matrix
{
    double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;

    Point Map(Point p) const { return {a * p.x + c * p.y + tx, b * p.x + d * p.y + ty}; }
    Rect Map(const Rect& r) const
    {
        Rect out;
        if (!r.IsEmpty())
        {
            out.Include(Map(Point{r.xMin, r.yMin}));
            out.Include(Map(Point{r.xMax, r.yMin}));
            out.Include(Map(Point{r.xMin, r.yMax}));
            out.Include(Map(Point{r.xMax, r.yMax}));
        }
        return out;
    }
    double Determinant() const { return a * d - b * c; }
    /// Longest stretch of a unit vector, within a factor of the square root of two.
    double Scale() const { return std::max(std::hypot(a, b), std::hypot(c, d)); }
    /// The zero map for a matrix that has no inverse.
    Matrix Inverse() const
    {
        const double det = Determinant();
        if (!(std::abs(det) > 1e-18))
            return {0, 0, 0, 0, 0, 0};
        const double i = 1 / det;
        return {d * i, -b * i, -c * i, a * i, (c * ty - d * tx) * i, (b * tx - a * ty) * i};
    }
    bool operator==(const Matrix&) const = default;
};

/// The map that does @p first, then @p second.
inline Matrix Then(const Matrix& first, const Matrix& second)
{
    return {second.a * first.a + second.c * first.b,
            second.b * first.a + second.d * first.b,
            second.a * first.c + second.c * first.d,
            second.b * first.c + second.d * first.d,
            second.a * first.tx + second.c * first.ty + second.tx,
            second.b * first.tx + second.d * first.ty + second.ty};
}
} // namespace swf
