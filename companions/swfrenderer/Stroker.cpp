#include "companions/swfrenderer/Stroker.h"

#include <numbers>
#include <tuple>
#include <utility>

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
    if (m_bOpenPiece)
        AddFlatEdge(m_last, device, 1, 0, *m_pOut);
    else
        m_first = device;
    m_last = device;
    m_bOpenPiece = true;
}

void CStroker::Close()
{
    if (m_bOpenPiece)
        AddFlatEdge(m_last, m_first, 1, 0, *m_pOut);
    m_bOpenPiece = false;
}

void CStroker::Segment(Point a, Point b, Point direction)
{
    const Point n = Normal(direction, m_half);
    Put({a.x + n.x, a.y + n.y});
    Put({b.x + n.x, b.y + n.y});
    Put({b.x - n.x, b.y - n.y});
    Put({a.x - n.x, a.y - n.y});
    Close();
}

/// The points between @p from and @p to, offsets from @p at, clockwise.
void CStroker::Arc(Point at, Point from, Point to)
{
    const double start = std::atan2(from.y, from.x);
    double sweep = std::atan2(to.y, to.x) - start;
    if (sweep < 0)
        sweep += 2 * std::numbers::pi;
    int chords = 1; // halved until they are short enough
    while (sweep > m_arcStep * chords && chords < kMostChords)
        chords *= 2;
    for (int i = 1; i < chords; ++i)
    {
        const double angle = start + sweep * i / chords;
        Put({at.x + m_half * std::cos(angle), at.y + m_half * std::sin(angle)});
    }
}

/// The wedge that two stretches leave open on the outer side of their corner.
void CStroker::JoinAt(Point at, Point before, Point after)
{
    const double cross = before.x * after.y - before.y * after.x;
    const double dot = before.x * after.x + before.y * after.y;
    constexpr double kAlmostStraight = 1e-9;
    if (std::abs(cross) < kAlmostStraight && dot > 0)
        return;
    Point from = Normal(before, m_half), to = Normal(after, m_half);
    if (cross < 0) // a turn to the left opens on the right
        std::tie(from, to) = std::pair(Point{-to.x, -to.y}, Point{-from.x, -from.y});
    Put(at);
    Put({at.x + from.x, at.y + from.y});
    if (m_pLine->join == Join::Round)
        Arc(at, from, to);
    else if (m_pLine->join == Join::Miter)
    {
        // The tip is half / cos(angle / 2) away from the corner; cos^2 = (1 + dot) / 2.
        const double cosSquared = (1 + dot) / 2;
        if (cosSquared * m_pLine->miterLimit * m_pLine->miterLimit >= 1)
            Put({at.x + (from.x + to.x) / (2 * cosSquared), at.y + (from.y + to.y) / (2 * cosSquared)});
    }
    Put({at.x + to.x, at.y + to.y});
    Close();
}

void CStroker::CapAt(Point at, Point direction, Cap cap)
{
    if (cap == Cap::None)
        return;
    const Point n = Normal(direction, m_half);
    Put({at.x + n.x, at.y + n.y});
    if (cap == Cap::Round)
        Arc(at, n, {-n.x, -n.y});
    else
    {
        const Point ahead{direction.x * m_half, direction.y * m_half};
        Put({at.x + n.x + ahead.x, at.y + n.y + ahead.y});
        Put({at.x - n.x + ahead.x, at.y - n.y + ahead.y});
    }
    Put({at.x - n.x, at.y - n.y});
    Close();
}

void CStroker::Finish()
{
    const std::size_t count = m_points.size();
    if (count == 1 && m_pLine->startCap != Cap::None)
    {
        CapAt(m_points[0], {1, 0}, m_pLine->startCap);
        CapAt(m_points[0], {-1, 0}, m_pLine->startCap);
    }
    if (count > 1)
    {
        const Point first = Unit(m_points[0], m_points[1]);
        Point before = first;
        Segment(m_points[0], m_points[1], first);
        for (std::size_t i = 1; i + 1 < count && m_pOut->size() < m_limit; ++i)
        {
            const Point after = Unit(m_points[i], m_points[i + 1]);
            JoinAt(m_points[i], before, after);
            Segment(m_points[i], m_points[i + 1], after);
            before = after;
        }
        if (count > 2 && m_points.front() == m_points.back() && !m_pLine->noClose)
            JoinAt(m_points[0], before, first);
        else
        {
            CapAt(m_points[0], {-first.x, -first.y}, m_pLine->startCap);
            CapAt(m_points.back(), before, m_pLine->endCap);
        }
    }
    m_points.clear();
}

void CStroker::Add(Point p)
{
    if (m_points.empty() || m_points.back() != p)
        m_points.push_back(p);
}

/// @return false when nothing can be drawn.
bool CStroker::SetPen(const Matrix& toDevice, double stageScale)
{
    const LineStyle& line = *m_pLine;
    const double scale = std::sqrt(std::abs(toDevice.Determinant()));
    if (!(scale > 0))
        return false;
    double width = line.width * scale; // device pixels
    if (line.keepX && line.keepY)
        width = line.width / 20 * stageScale;
    else if (line.keepX)
        width = line.width * std::hypot(toDevice.c, toDevice.d);
    else if (line.keepY)
        width = line.width * std::hypot(toDevice.a, toDevice.b);
    width = std::max(line.hinted ? std::round(width) : width, 1.0); // a line is never thinner than a pixel
    // A line whose width is not the shape's is round on the screen, whatever the shape goes through.
    const bool onScreen = line.keepX || line.keepY || line.hinted;
    m_toPen = onScreen ? toDevice : Matrix{};
    m_toDevice = onScreen ? Matrix{} : toDevice;
    m_half = width / (onScreen ? 1 : scale) / 2;
    m_flatness = FlatnessAt(onScreen ? 1 : toDevice.Scale());
    // As wide as an arc may be without its chord being further away than that.
    m_arcStep = m_half > m_flatness ? 2 * std::sqrt(m_flatness * (2 * m_half - m_flatness)) / m_half : 2;
    return true;
}

/// The ends of edges of a hinted line: where the sides of a line across or down fall on the borders of pixels.
Point CStroker::OnPixel(Point p) const
{
    if (!m_pLine->hinted)
        return p;
    const double offset = std::fmod(2 * m_half, 2) == 0 ? 0.0 : 0.5;
    return {std::floor(p.x - offset + 0.5) + offset, std::floor(p.y - offset + 0.5) + offset};
}

void CStroker::Outline(const ShapeLayer& layer, std::uint32_t number, const Matrix& toDevice, double stageScale,
                       std::size_t limit, std::vector<FlatEdge>& out)
{
    m_pLine = &layer.lines[number - 1];
    m_pOut = &out;
    m_limit = limit;
    m_points.clear();
    m_bOpenPiece = false;
    if (!SetPen(toDevice, stageScale))
        return;
    for (const Path& path : layer.paths)
    {
        if (path.line != number || out.size() >= limit)
            continue;
        Point from = OnPixel(m_toPen.Map(Point{path.startX, path.startY}));
        if (!m_points.empty() && m_points.back() != from)
            Finish();
        Add(from);
        for (std::uint32_t i = 0; i < path.edgeCount && out.size() + m_points.size() < limit; ++i)
        {
            const Edge& edge = layer.edges[path.firstEdge + i];
            const Point to = OnPixel(m_toPen.Map(Point{edge.x, edge.y}));
            if (edge.IsLine())
                Add(to);
            else
                FlattenCurve(from, m_toPen.Map(Point{edge.cx, edge.cy}), to, m_flatness, [this](Point p) { Add(p); });
            from = to;
        }
    }
    Finish();
}
} // namespace swf
