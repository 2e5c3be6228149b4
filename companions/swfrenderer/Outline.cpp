#include "companions/swfrenderer/Outline.h"

namespace swf
{
namespace
{
/// Of (1 + 4 x^2)^(-1/4), within two percent.
double Integral(double x)
{
    constexpr double d = 0.67;
    return x / (1 - d + std::sqrt(std::sqrt(d * d * d * d + x * x / 4)));
}
constexpr double kSteppedOver = 1.5; ///< times the distance wanted, which the approximation keeps elsewhere

double InverseIntegral(double x)
{
    constexpr double b = 0.39;
    return x * (1 - b + std::sqrt(b * b + x * x / 4));
}
} // namespace

CCurveCuts::CCurveCuts(Point from, Point control, Point to, double flatness)
    : m_from(from), m_control(control), m_to(to)
{
    const Point chord{to.x - from.x, to.y - from.y}, arm{control.x - from.x, control.y - from.y};
    const double length = std::hypot(chord.x, chord.y), along = arm.x * chord.x + arm.y * chord.y;
    const double across = std::abs(chord.x * arm.y - chord.y * arm.x);
    const bool turnsBack = along < 0 || along >= length * length;
    if (turnsBack || across > 2 * flatness * length) // the curve goes half as far as its control point
        Cut(flatness);
}

void CCurveCuts::Cut(double flatness)
{
    const Point bend{2 * m_control.x - m_from.x - m_to.x, 2 * m_control.y - m_from.y - m_to.y};
    const Point chord{m_to.x - m_from.x, m_to.y - m_from.y};
    const double cross = chord.x * bend.y - chord.y * bend.x, bendLength = std::hypot(bend.x, bend.y);
    const double start = ((m_control.x - m_from.x) * bend.x + (m_control.y - m_from.y) * bend.y) / cross;
    const double end = ((m_to.x - m_control.x) * bend.x + (m_to.y - m_control.y) * bend.y) / cross;
    const double scale = std::abs(cross) / (bendLength * std::abs(end - start));
    m_first = Integral(start);
    const double all = Integral(end) - m_first;
    const double chords = std::ceil(std::abs(all) * std::sqrt(scale / flatness) / 2);
    m_offset = InverseIntegral(m_first);
    m_factor = 1 / (InverseIntegral(m_first + all) - m_offset);
    if (std::isfinite(chords) && std::isfinite(m_factor)) // else its points lie on one line
        m_nChords = static_cast<int>(std::clamp<double>(chords, 1, kMostChords));
    m_perChord = all / m_nChords;
    CutAtTurn(bend, flatness);
}

/// Where a curve turns back sharply, the integral may step over the turn. The derivative, 2 ((control - from) - t
/// bend), is shortest there.
void CCurveCuts::CutAtTurn(Point bend, double flatness)
{
    const double length2 = bend.x * bend.x + bend.y * bend.y;
    const double turn = ((m_control.x - m_from.x) * bend.x + (m_control.y - m_from.y) * bend.y) / length2;
    if (!(turn > 0 && turn < 1))
        return;
    int next = 1;
    while (next < m_nChords && ParameterOf(next) < turn)
        ++next;
    const Point p = At(turn), a = next == 1 ? m_from : End(next - 1), b = End(next);
    const double dx = b.x - a.x, dy = b.y - a.y, square = dx * dx + dy * dy;
    const double nearest = square > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / square, 0.0, 1.0) : 0;
    if (std::hypot(p.x - a.x - nearest * dx, p.y - a.y - nearest * dy) <= kSteppedOver * flatness)
        return;
    m_turn = turn;
    m_turnAt = next;
    ++m_nChords;
}

double CCurveCuts::ParameterOf(int i) const
{
    return (InverseIntegral(m_first + m_perChord * i) - m_offset) * m_factor;
}

Point CCurveCuts::At(double t) const
{
    const double s = 1 - t;
    return {s * s * m_from.x + 2 * s * t * m_control.x + t * t * m_to.x,
            s * s * m_from.y + 2 * s * t * m_control.y + t * t * m_to.y};
}

Point CCurveCuts::End(int i) const
{
    if (i == m_nChords)
        return m_to;
    if (m_turnAt == 0 || i < m_turnAt)
        return At(ParameterOf(i));
    return At(i == m_turnAt ? m_turn : ParameterOf(i - 1));
}

void AddFlatEdge(Point a, Point b, std::uint16_t fill0, std::uint16_t fill1, std::vector<FlatEdge>& out)
{
    static constexpr double kFar = 1e6;
    static constexpr double kSteps = 256; ///< of a pixel
    const auto near = [](double v)
    { return v == v ? static_cast<float>(std::floor(std::clamp(v, -kFar, kFar) * kSteps + 0.5) / kSteps) : 0.0F; };
    const FlatEdge edge{near(a.x), near(a.y), near(b.x), near(b.y), fill0, fill1};
    if (edge.y0 != edge.y1)
        out.push_back(edge);
}

void FlattenFills(const ShapeLayer& layer, const Matrix& toDevice, std::size_t limit, std::vector<FlatEdge>& out)
{
    const double flatness = FlatnessAt(toDevice.Scale());
    for (const Path& path : layer.paths)
    {
        if (path.fill0 == path.fill1)
            continue;
        const auto fill0 = static_cast<std::uint16_t>(path.fill0), fill1 = static_cast<std::uint16_t>(path.fill1);
        Point from{path.startX, path.startY}, last = toDevice.Map(from);
        for (std::uint32_t i = 0; i < path.edgeCount && out.size() < limit; ++i)
        {
            const Edge& edge = layer.edges[path.firstEdge + i];
            const Point to{edge.x, edge.y};
            const auto add = [&](Point end)
            {
                const Point p = toDevice.Map(end);
                AddFlatEdge(last, p, fill0, fill1, out);
                last = p;
            };
            if (edge.IsLine())
                add(to);
            else
                FlattenCurve(from, Point{edge.cx, edge.cy}, to, flatness, add);
            from = to;
        }
    }
}

std::vector<COutlineCache::Chord> COutlineCache::Cut(const ShapeLayer& layer, double flatness)
{
    std::vector<Chord> chords;
    for (const Path& path : layer.paths)
    {
        if (path.fill0 == path.fill1)
            continue;
        const auto fill0 = static_cast<std::uint16_t>(path.fill0), fill1 = static_cast<std::uint16_t>(path.fill1);
        Point from{path.startX, path.startY};
        chords.push_back({from.x, from.y, fill0, fill1, true});
        const auto add = [&](Point end) { chords.push_back({end.x, end.y, fill0, fill1, false}); };
        for (std::uint32_t i = 0; i < path.edgeCount; ++i)
        {
            const Edge& edge = layer.edges[path.firstEdge + i];
            const Point to{edge.x, edge.y};
            if (edge.IsLine())
                add(to);
            else
                FlattenCurve(from, Point{edge.cx, edge.cy}, to, flatness, add);
            from = to;
        }
    }
    return chords;
}

void COutlineCache::Flatten(const ShapeLayer& layer, const Matrix& toDevice, std::size_t limit,
                            std::vector<FlatEdge>& out)
{
    constexpr std::size_t kMostEdges = 2'048; // of an outline that is kept
    constexpr std::size_t kMostHeld = std::size_t{1} << 19, kOfOutline = 8;
    if (layer.edges.size() > kMostEdges)
        return FlattenFills(layer, toDevice, limit, out);
    const Key key(&layer, FlatnessAt(toDevice.Scale()));
    auto found = m_outlines.find(key);
    if (found == m_outlines.end())
    {
        if (m_nHeld > kMostHeld)
        {
            m_outlines.clear();
            m_nHeld = 0;
        }
        found = m_outlines.emplace(key, Cut(layer, key.second)).first;
        m_nHeld += found->second.size() + kOfOutline;
    }
    Point last;
    for (const Chord& chord : found->second)
    {
        const Point p = toDevice.Map(Point{chord.x, chord.y});
        if (!chord.isMove && out.size() < limit)
            AddFlatEdge(last, p, chord.fill0, chord.fill1, out);
        last = p;
    }
}
} // namespace swf
