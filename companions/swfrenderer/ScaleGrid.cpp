#include "companions/swfrenderer/ScaleGrid.h"

#include <algorithm>

namespace swf
{
namespace
{
/// The piece of a quadratic curve between two parameters.
std::array<Point, 3> Piece(const std::array<Point, 3>& curve, double first, double last)
{
    // The control point of a piece is the curve's blossom at both of its ends.
    const auto at = [&curve](double s, double t)
    {
        const double a = (1 - s) * (1 - t), b = (1 - s) * t + s * (1 - t), c = s * t;
        return Point{a * curve[0].x + b * curve[1].x + c * curve[2].x,
                     a * curve[0].y + b * curve[1].y + c * curve[2].y};
    };
    return {at(first, first), at(first, last), at(last, last)};
}

/// Where a coordinate of a quadratic curve has a value, between its ends.
void Crossings(double p0, double p1, double p2, double value, std::vector<double>& out)
{
    const double a = p0 - 2 * p1 + p2, b = 2 * (p1 - p0), c = p0 - value;
    const auto add = [&out](double t)
    {
        if (t > 0 && t < 1)
            out.push_back(t);
    };
    constexpr double kStraight = 1e-9;
    if (std::abs(a) <= kStraight * (std::abs(b) + std::abs(c)))
        return add(-c / b);
    const double square = b * b - 4 * a * c;
    if (!(square >= 0))
        return;
    const double q = -0.5 * (b + std::copysign(std::sqrt(square), b));
    add(q / a);
    add(c / q);
}
} // namespace

CScaleGrid::Axis::Axis(double low, double high, double middleLow, double middleHigh, double factor) : scale(factor)
{
    middleLow = std::clamp(middleLow, low, high);
    middleHigh = std::clamp(middleHigh, middleLow, high);
    const double whole = (high - low) * factor, corners = (middleLow - low) + (high - middleHigh);
    const double shrink = corners > whole ? whole / corners : 1;
    from = {low, middleLow, middleHigh, high};
    to = {low * factor, low * factor + (middleLow - low) * shrink, high * factor - (high - middleHigh) * shrink,
          high * factor};
}

double CScaleGrid::Axis::Map(double v) const
{
    if (v <= from[0])
        return to[0] + v - from[0];
    if (v >= from[3])
        return to[3] + v - from[3];
    const std::size_t i = v < from[1] ? 0 : v < from[2] ? 1 : 2;
    const double room = from[i + 1] - from[i];
    return to[i] + (room > 0 ? (v - from[i]) / room * (to[i + 1] - to[i]) : 0);
}

CScaleGrid::CScaleGrid(const Rect& box, const Rect& middle, double scaleX, double scaleY)
    : m_x(box.xMin, box.xMax, middle.xMin, middle.xMax, scaleX),
      m_y(box.yMin, box.yMax, middle.yMin, middle.yMax, scaleY)
{
}

void CScaleGrid::Cut(const std::array<Point, 3>& curve, std::vector<double>& cuts) const
{
    cuts.clear();
    for (std::size_t i = 0; i < 4; ++i)
    {
        Crossings(curve[0].x, curve[1].x, curve[2].x, m_x.from[i], cuts);
        Crossings(curve[0].y, curve[1].y, curve[2].y, m_y.from[i], cuts);
    }
    cuts.push_back(1);
    std::sort(cuts.begin(), cuts.end());
}

void CScaleGrid::MapEdge(const std::array<Point, 3>& curve, bool isLine, std::vector<Edge>& out) const
{
    std::vector<double> cuts;
    Cut(curve, cuts);
    double first = 0;
    for (const double last : cuts)
    {
        if (last <= first)
            continue;
        const std::array<Point, 3> piece = Piece(curve, first, last);
        const Point end = Map(last == 1 ? curve[2] : piece[2]), control = isLine ? end : Map(piece[1]);
        out.push_back({static_cast<float>(control.x), static_cast<float>(control.y), static_cast<float>(end.x),
                       static_cast<float>(end.y)});
        first = last;
    }
}

Shape CScaleGrid::Map(const Shape& shape, const Matrix& toObject) const
{
    Shape out;
    out.nonZero = shape.nonZero;
    const Matrix scaled = Then(toObject, {m_x.scale, 0, 0, m_y.scale, 0, 0});
    const double lineScale = std::sqrt(std::abs(toObject.Determinant()));
    for (const ShapeLayer& layer : shape.layers)
    {
        ShapeLayer& to = out.layers.emplace_back();
        to.fills = layer.fills;
        to.lines = layer.lines;
        for (FillStyle& fill : to.fills)
            fill.matrix = Then(fill.matrix, scaled);
        for (LineStyle& line : to.lines)
        {
            line.width *= lineScale;
            line.fill.matrix = Then(line.fill.matrix, scaled);
        }
        for (const Path& path : layer.paths)
        {
            Path& added = to.paths.emplace_back(path);
            Point from = toObject.Map(Point{path.startX, path.startY});
            const Point start = Map(from);
            added.startX = static_cast<float>(start.x);
            added.startY = static_cast<float>(start.y);
            added.firstEdge = static_cast<std::uint32_t>(to.edges.size());
            for (std::uint32_t i = 0; i < path.edgeCount; ++i)
            {
                const Edge& edge = layer.edges[path.firstEdge + i];
                const Point end = toObject.Map(Point{edge.x, edge.y});
                const Point control = edge.IsLine() ? Point{(from.x + end.x) / 2, (from.y + end.y) / 2}
                                                    : toObject.Map(Point{edge.cx, edge.cy});
                MapEdge({from, control, end}, edge.IsLine(), to.edges);
                from = end;
            }
            added.edgeCount = static_cast<std::uint32_t>(to.edges.size()) - added.firstEdge;
        }
    }
    return out;
}
} // namespace swf
