#include "companions/swfrenderer/SystemFont.h"

#include <utility>

namespace swf
{
COutlineBuilder::COutlineBuilder()
{
    m_shape.nonZero = true; // strokes of a letter may lie on each other
    m_shape.layers.resize(1);
    m_shape.layers[0].fills.resize(1);
}

void COutlineBuilder::Close()
{
    if (m_bOpen && !(m_at == m_start))
        Line(m_start.x, -m_start.y);
    m_bOpen = false;
}

void COutlineBuilder::Move(double x, double y)
{
    Close();
    m_start = m_at = {x, -y};
}

void COutlineBuilder::Line(double x, double y)
{
    Quadratic(x, y, x, y); // a control point at the end makes it straight
}

void COutlineBuilder::Quadratic(double cx, double cy, double x, double y)
{
    ShapeLayer& layer = m_shape.layers[0];
    if (!m_bOpen)
    {
        Path path;
        path.startX = static_cast<float>(m_at.x);
        path.startY = static_cast<float>(m_at.y);
        path.firstEdge = static_cast<std::uint32_t>(layer.edges.size());
        path.fill1 = 1;
        layer.paths.push_back(path);
        m_shape.bounds.Include(m_at);
        m_bOpen = true;
    }
    layer.edges.push_back(
        {static_cast<float>(cx), static_cast<float>(-cy), static_cast<float>(x), static_cast<float>(-y)});
    ++layer.paths.back().edgeCount;
    m_shape.bounds.Include(Point{cx, -cy});
    m_at = {x, -y};
    m_shape.bounds.Include(m_at);
}

void COutlineBuilder::Cubic(double cx0, double cy0, double cx1, double cy1, double x, double y)
{
    constexpr int kPieces = 4;
    const Point p0{m_at.x, -m_at.y}, p1{cx0, cy0}, p2{cx1, cy1}, p3{x, y};
    const auto at = [&](double t)
    {
        const double s = 1 - t;
        const double a = s * s * s, b = 3 * s * s * t, c = 3 * s * t * t, d = t * t * t;
        return Point{a * p0.x + b * p1.x + c * p2.x + d * p3.x, a * p0.y + b * p1.y + c * p2.y + d * p3.y};
    };
    for (int i = 0; i < kPieces; ++i)
    {
        // Through the curve at both ends and in the middle of the piece.
        const double first = static_cast<double>(i) / kPieces, last = static_cast<double>(i + 1) / kPieces;
        const Point from = at(first), middle = at((first + last) / 2), to = i + 1 == kPieces ? p3 : at(last);
        Quadratic(2 * middle.x - (from.x + to.x) / 2, 2 * middle.y - (from.y + to.y) / 2, to.x, to.y);
    }
}

Shape COutlineBuilder::Finish()
{
    Close();
    return std::move(m_shape);
}
} // namespace swf
