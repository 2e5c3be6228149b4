#include "companions/swfrenderer/Shape.h"

#include <cmath>

namespace swf
{
namespace
{
double Mix(double a, double b, double t)
{
    return a + (b - a) * t;
}
Point Mix(Point a, Point b, double t)
{
    return {Mix(a.x, b.x, t), Mix(a.y, b.y, t)};
}
Rgba Mix(Rgba a, Rgba b, double t)
{
    const auto channel = [t](std::uint8_t x, std::uint8_t y) { return static_cast<std::uint8_t>(Mix(x, y, t)); };
    return {channel(a.r, b.r), channel(a.g, b.g), channel(a.b, b.b), channel(a.a, b.a)};
}
Matrix Mix(const Matrix& a, const Matrix& b, double t)
{
    return {Mix(a.a, b.a, t), Mix(a.b, b.b, t),   Mix(a.c, b.c, t),
            Mix(a.d, b.d, t), Mix(a.tx, b.tx, t), Mix(a.ty, b.ty, t)};
}
FillStyle Mix(const FillStyle& a, const FillStyle& b, double t)
{
    FillStyle fill = a;
    fill.colour = Mix(a.colour, b.colour, t);
    fill.matrix = Mix(a.matrix, b.matrix, t);
    fill.focus = Mix(a.focus, b.focus, t);
    for (std::size_t i = 0; i < fill.stops.size() && i < b.stops.size(); ++i)
    {
        fill.stops[i].ratio = static_cast<std::uint8_t>(std::lround(Mix(a.stops[i].ratio, b.stops[i].ratio, t)));
        fill.stops[i].colour = Mix(a.stops[i].colour, b.stops[i].colour, t);
    }
    return fill;
}

ShapeRecord AsCurve(ShapeRecord record, Point from)
{
    if (record.kind == ShapeRecord::Kind::Line)
    {
        record.kind = ShapeRecord::Kind::Curve;
        record.control = Mix(from, record.to, 0.5);
    }
    return record;
}
} // namespace

void CShapeBuilder::AddStyles(StyleSet&& styles)
{
    m_fill0 = m_fill1 = m_line = 0;
    m_bInPath = false;
    ShapeLayer layer;
    layer.fills = std::move(styles.fills);
    layer.lines = std::move(styles.lines);
    m_shape.layers.push_back(std::move(layer));
}

void CShapeBuilder::Add(const ShapeRecord& record)
{
    if (record.kind == ShapeRecord::Kind::Style)
        ChangeStyle(record);
    else
        AddEdge(record);
}

void CShapeBuilder::ChangeStyle(const ShapeRecord& record)
{
    if (m_shape.layers.empty())
        m_shape.layers.emplace_back();
    const ShapeLayer& layer = m_shape.layers.back();
    const auto checked = [](std::uint32_t index, std::size_t count) { return index <= count ? index : 0; };
    if (record.hasFill0)
        m_fill0 = checked(record.fill0, layer.fills.size());
    if (record.hasFill1)
        m_fill1 = checked(record.fill1, layer.fills.size());
    if (record.hasLine)
        m_line = checked(record.line, layer.lines.size());
    if (record.hasMove)
        m_position = record.to;
    m_bInPath = false;
}

void CShapeBuilder::AddEdge(const ShapeRecord& record)
{
    const Point from = m_position;
    m_position = record.to;
    if (m_line == 0 && m_fill0 == m_fill1)
        return; // the same on both sides
    ShapeLayer& layer = m_shape.layers.back();
    if (!m_bInPath)
    {
        Path path;
        path.startX = static_cast<float>(from.x);
        path.startY = static_cast<float>(from.y);
        path.firstEdge = static_cast<std::uint32_t>(layer.edges.size());
        path.fill0 = m_fill0;
        path.fill1 = m_fill1;
        path.line = m_line;
        layer.paths.push_back(path);
        m_bInPath = true;
    }
    Edge edge;
    edge.x = static_cast<float>(record.to.x);
    edge.y = static_cast<float>(record.to.y);
    const bool curve = record.kind == ShapeRecord::Kind::Curve;
    edge.cx = curve ? static_cast<float>(record.control.x) : edge.x;
    edge.cy = curve ? static_cast<float>(record.control.y) : edge.y;
    layer.edges.push_back(edge);
    ++layer.paths.back().edgeCount;
}

Shape CShapeBuilder::Finish(const Rect& bounds, bool nonZero)
{
    m_shape.bounds = bounds;
    m_shape.nonZero = nonZero;
    for (ShapeLayer& layer : m_shape.layers)
    {
        layer.edges.shrink_to_fit();
        layer.paths.shrink_to_fit();
    }
    return std::move(m_shape);
}

Shape ShapeAt(const MorphShape& morph, std::uint32_t ratio)
{
    const double t = std::min(ratio, 65'535U) / 65'535.0;
    StyleSet set = morph.startStyles;
    for (std::size_t i = 0; i < set.fills.size() && i < morph.endStyles.fills.size(); ++i)
        set.fills[i] = Mix(set.fills[i], morph.endStyles.fills[i], t);
    for (std::size_t i = 0; i < set.lines.size() && i < morph.endStyles.lines.size(); ++i)
    {
        set.lines[i].width = Mix(set.lines[i].width, morph.endStyles.lines[i].width, t);
        set.lines[i].fill = Mix(set.lines[i].fill, morph.endStyles.lines[i].fill, t);
    }
    CShapeBuilder builder;
    builder.AddStyles(std::move(set));
    // Edge goes with edge; records that only change styles or move stand on either side as the author's tool left them.
    std::size_t n = 0;
    Point from, fromEnd;
    for (const ShapeRecord& record : morph.start)
    {
        ShapeRecord out = record;
        if (record.kind == ShapeRecord::Kind::Style)
        {
            if (n < morph.end.size() && morph.end[n].kind == ShapeRecord::Kind::Style && record.hasMove)
            {
                if (morph.end[n].hasMove)
                    fromEnd = morph.end[n].to;
                ++n;
            }
            if (record.hasMove)
            {
                from = record.to;
                out.to = Mix(from, fromEnd, t);
            }
            builder.Add(out);
            continue;
        }
        while (n < morph.end.size() && morph.end[n].kind == ShapeRecord::Kind::Style)
        {
            if (morph.end[n].hasMove)
                fromEnd = morph.end[n].to;
            ++n;
        }
        ShapeRecord end = record;
        if (n < morph.end.size())
            end = morph.end[n++];
        const Point to = record.to, toEnd = end.to;
        if (record.kind == ShapeRecord::Kind::Curve || end.kind == ShapeRecord::Kind::Curve)
        {
            out = AsCurve(record, from);
            out.control = Mix(out.control, AsCurve(end, fromEnd).control, t);
        }
        out.to = Mix(to, toEnd, t);
        from = to;
        fromEnd = toEnd;
        builder.Add(out);
    }
    Rect bounds;
    bounds.Include(Mix(Point{morph.startBounds.xMin, morph.startBounds.yMin},
                       Point{morph.endBounds.xMin, morph.endBounds.yMin}, t));
    bounds.Include(Mix(Point{morph.startBounds.xMax, morph.startBounds.yMax},
                       Point{morph.endBounds.xMax, morph.endBounds.yMax}, t));
    return builder.Finish(bounds, false);
}
} // namespace swf
