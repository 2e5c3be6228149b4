#include "companions/swfrenderer/Stroker.h"

#include <numbers>

namespace swf
{
namespace
{
Point Unit(Point a, Point b)
{
    const double length = std::hypot(b.x - a.x, b.y - a.y);
    return length > 0 ? Point{(b.x - a.x) / length, (b.y - a.y) / length} : Point{1, 0};
}
/// To the left of @p direction where y points down.
Point Normal(Point direction, double half)
{
    return {direction.y * half, -direction.x * half};
}
} // namespace

void CStroker::Put(Point p)
{
    const Point device = m_toDevice.Map(p);
    if (m_bOpenOutline)
        AddFlatEdge(m_last, device, 1, 0, *m_pOut);
    else
        m_first = device;
    m_last = device;
    m_bOpenOutline = true;
}

void CStroker::Close()
{
    if (m_bOpenOutline)
        AddFlatEdge(m_last, m_first, 1, 0, *m_pOut);
    m_bOpenOutline = false;
}

/// From @p n0 clockwise to @p n1, on the outer side of a turn.
void CStroker::RoundJoin(Point at, Point n0, Point n1)
{
    const double from = std::atan2(n0.y, n0.x);
    double sweep = std::atan2(n1.y, n1.x) - from;
    if (sweep < 0)
        sweep += 2 * std::numbers::pi;
    const int steps = static_cast<int>(sweep / m_arcStep);
    for (int i = 1; i <= steps; ++i)
    {
        const double angle = from + sweep * i / (steps + 1);
        Put({at.x + m_half * std::cos(angle), at.y + m_half * std::sin(angle)});
    }
}

void CStroker::JoinAt(Point at, Point before, Point after)
{
    const Point n0 = Normal(before, m_half), n1 = Normal(after, m_half);
    const double cross = before.x * after.y - before.y * after.x;
    const double dot = before.x * after.x + before.y * after.y;
    Put({at.x + n0.x, at.y + n0.y});
    constexpr double kAlmostStraight = 1e-6;
    if (cross < 0) // the inner side: through the middle, so that the outline keeps its sense
        Put(at);
    else if (cross > kAlmostStraight || dot < 0)
    {
        if (m_pLine->join == Join::Round)
            RoundJoin(at, n0, n1);
        else if (m_pLine->join == Join::Miter)
        {
            // The tip is half / cos(angle / 2) away from the corner; cos^2 = (1 + dot) / 2.
            const double cosSquared = (1 + dot) / 2;
            if (cosSquared * m_pLine->miterLimit * m_pLine->miterLimit >= 1)
                Put({at.x + (n0.x + n1.x) / (2 * cosSquared), at.y + (n0.y + n1.y) / (2 * cosSquared)});
        }
    }
    Put({at.x + n1.x, at.y + n1.y});
}

void CStroker::CapAt(Point at, Point direction, Cap cap)
{
    const Point n = Normal(direction, m_half);
    if (cap == Cap::Round)
        RoundJoin(at, n, {-n.x, -n.y});
    else if (cap == Cap::Square)
    {
        const Point ahead{direction.x * m_half, direction.y * m_half};
        Put({at.x + n.x + ahead.x, at.y + n.y + ahead.y});
        Put({at.x - n.x + ahead.x, at.y - n.y + ahead.y});
    }
}

/// The left side of the points.
void CStroker::Side(bool closed)
{
    const std::size_t n = m_points.size();
    const std::size_t segments = closed ? n : n - 1;
    Point before = Unit(m_points[0], m_points[1 % n]);
    const Point first = before;
    if (!closed)
    {
        const Point normal = Normal(before, m_half);
        Put({m_points[0].x + normal.x, m_points[0].y + normal.y});
    }
    for (std::size_t i = 1; i < segments; ++i)
    {
        const Point after = Unit(m_points[i], m_points[(i + 1) % n]);
        JoinAt(m_points[i], before, after);
        before = after;
    }
    if (closed)
        JoinAt(m_points[0], before, first);
    else
    {
        const Point normal = Normal(before, m_half);
        Put({m_points[n - 1].x + normal.x, m_points[n - 1].y + normal.y});
    }
}

void CStroker::Dot()
{
    const Point at = m_points[0];
    if (m_pLine->startCap == Cap::None)
        return;
    Put({at.x, at.y - m_half});
    CapAt(at, {1, 0}, m_pLine->startCap);
    Put({at.x, at.y + m_half});
    CapAt(at, {-1, 0}, m_pLine->startCap);
    Close();
}

void CStroker::Finish()
{
    if (m_points.empty())
        return;
    const bool closed = m_points.size() > 2 && m_points.front() == m_points.back() && !m_pLine->noClose;
    if (closed)
        m_points.pop_back();
    if (m_points.size() == 1)
        Dot();
    else
    {
        Side(closed);
        if (closed)
            Close();
        else
            CapAt(m_points.back(), Unit(m_points[m_points.size() - 2], m_points.back()), m_pLine->endCap);
        std::reverse(m_points.begin(), m_points.end());
        Side(closed);
        if (!closed)
            CapAt(m_points.back(), Unit(m_points[m_points.size() - 2], m_points.back()), m_pLine->startCap);
        Close();
    }
    m_points.clear();
}

void CStroker::Add(Point p)
{
    if (m_points.empty() || m_points.back() != p)
        m_points.push_back(p);
}

void CStroker::Outline(const ShapeLayer& layer, std::uint32_t number, const Matrix& toDevice, double stageScale,
                       std::size_t limit, std::vector<FlatEdge>& out)
{
    m_pLine = &layer.lines[number - 1];
    m_toDevice = toDevice;
    m_pOut = &out;
    m_points.clear();
    m_bOpenOutline = false;
    const double scale = std::sqrt(std::abs(toDevice.Determinant()));
    if (!(scale > 0))
        return;
    double width = m_pLine->width * scale;
    if (m_pLine->keepX && m_pLine->keepY)
        width = m_pLine->width / 20 * stageScale;
    width = std::max(width, 1.0); // a line is never thinner than a pixel
    m_half = width / scale / 2;
    m_arcStep = std::clamp(2 * std::acos(std::max(-1.0, 1 - 2 * kFlatness / width)), 0.05, 1.0);
    const double curveScale = toDevice.Scale() * std::max(1.0, 1 + width / 8); // wide lines show their corners more
    for (const Path& path : layer.paths)
    {
        if (path.line != number || out.size() >= limit)
            continue;
        Point from{path.startX, path.startY};
        if (!m_points.empty() && m_points.back() != from)
            Finish();
        Add(from);
        for (std::uint32_t i = 0; i < path.edgeCount && out.size() + m_points.size() < limit; ++i)
        {
            const Edge& edge = layer.edges[path.firstEdge + i];
            const Point to{edge.x, edge.y};
            if (edge.IsLine())
                Add(to);
            else
                FlattenCurve(from, {edge.cx, edge.cy}, to, curveScale, [this](Point p) { Add(p); });
            from = to;
        }
    }
    Finish();
}
} // namespace swf
