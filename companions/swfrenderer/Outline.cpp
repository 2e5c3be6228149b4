#include "companions/swfrenderer/Outline.h"

namespace swf
{
void AddFlatEdge(Point a, Point b, std::uint16_t fill0, std::uint16_t fill1, std::vector<FlatEdge>& out)
{
    static constexpr double kFar = 1e6;
    const auto near = [](double v) { return static_cast<float>(v == v ? std::clamp(v, -kFar, kFar) : 0); };
    const FlatEdge edge{near(a.x), near(a.y), near(b.x), near(b.y), fill0, fill1};
    if (edge.y0 != edge.y1)
        out.push_back(edge);
}

void FlattenFills(const ShapeLayer& layer, const Matrix& toDevice, std::size_t limit, std::vector<FlatEdge>& out)
{
    for (const Path& path : layer.paths)
    {
        if (path.fill0 == path.fill1)
            continue;
        const auto fill0 = static_cast<std::uint16_t>(path.fill0), fill1 = static_cast<std::uint16_t>(path.fill1);
        Point from = toDevice.Map(Point{path.startX, path.startY});
        for (std::uint32_t i = 0; i < path.edgeCount && out.size() < limit; ++i)
        {
            const Edge& edge = layer.edges[path.firstEdge + i];
            const Point to = toDevice.Map(Point{edge.x, edge.y});
            if (edge.IsLine())
                AddFlatEdge(from, to, fill0, fill1, out);
            else
            {
                Point last = from;
                FlattenCurve(from, toDevice.Map(Point{edge.cx, edge.cy}), to, 1,
                             [&](Point p)
                             {
                                 AddFlatEdge(last, p, fill0, fill1, out);
                                 last = p;
                             });
            }
            from = to;
        }
    }
}
} // namespace swf
