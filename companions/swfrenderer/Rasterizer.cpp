#include "companions/swfrenderer/Rasterizer.h"

#include "companions/swfrenderer/Parallel.h"

#include <algorithm>
#include <cmath>

namespace swf
{
namespace
{
constexpr double kOne = kFullWeight;

std::uint32_t ByRule(std::int64_t cover, bool nonZero)
{
    std::int64_t v = cover < 0 ? -cover : cover;
    if (nonZero)
        return static_cast<std::uint32_t>(std::min<std::int64_t>(v, kFullWeight));
    v &= 2 * std::int64_t{kFullWeight} - 1;
    return static_cast<std::uint32_t>(v > kFullWeight ? 2 * std::int64_t{kFullWeight} - v : v);
}
} // namespace

void CRasterizer::AddCell(Band& band, const FlatEdge& edge, int x, int row, std::int32_t cover, double inset)
{
    if (cover == 0)
        return;
    Cell cell{};
    cell.x = x;
    cell.row = static_cast<std::uint16_t>(row - band.area.top);
    const auto uncovered = static_cast<std::int32_t>(std::lround(cover * inset));
    if (edge.fill0 != 0)
    {
        cell.fill = edge.fill0;
        cell.cover = cover;
        cell.uncovered = uncovered;
        band.cells.push_back(cell);
    }
    if (edge.fill1 != 0)
    {
        cell.fill = edge.fill1;
        cell.cover = -cover;
        cell.uncovered = -uncovered;
        band.cells.push_back(cell);
    }
}

/// @param height  of the piece within the row, negative for an edge that points up
void CRasterizer::AddRow(Band& band, const FlatEdge& edge, int row, double xFrom, double xTo, std::int32_t height)
{
    const int left = band.area.left, right = band.area.right;
    const double low = std::min(xFrom, xTo), high = std::max(xFrom, xTo);
    if (low >= right)
        return;
    if (high <= left)
        return AddCell(band, edge, left, row, height, 0);
    if (const int x = static_cast<int>(std::floor(low)); x >= left && high <= x + 1)
        return AddCell(band, edge, x, row, height, (low + high) / 2 - x);

    // The piece spans several pixels. Shares are differences of one rounded running sum, so they add up to height.
    const double perPixel = height / (high - low);
    std::int32_t done = 0;
    double at = low;
    if (low < left)
    {
        done = static_cast<std::int32_t>(std::lround((left - low) * perPixel));
        AddCell(band, edge, left, row, done, 0);
        at = left;
    }
    const double end = std::min<double>(high, right);
    for (int x = static_cast<int>(std::floor(at)); at < end; ++x)
    {
        const double next = std::min<double>(x + 1, end);
        const std::int32_t sum =
            next == high ? height : static_cast<std::int32_t>(std::lround((next - low) * perPixel));
        AddCell(band, edge, x, row, sum - done, (at + next) / 2 - x);
        done = sum;
        at = next;
    }
}

void CRasterizer::AddExact(Band& band, const FlatEdge& edge)
{
    const bool down = edge.y0 < edge.y1;
    const double x0 = down ? edge.x0 : edge.x1, y0 = down ? edge.y0 : edge.y1;
    const double x1 = down ? edge.x1 : edge.x0, y1 = down ? edge.y1 : edge.y0;
    const double top = std::max<double>(y0, band.area.top), bottom = std::min<double>(y1, band.area.bottom);
    if (!(top < bottom))
        return;
    const auto fixedTop = static_cast<std::int32_t>(std::lround(top * kOne));
    const auto fixedBottom = static_cast<std::int32_t>(std::lround(bottom * kOne));
    const double slope = (x1 - x0) / (y1 - y0);
    const double xMin = std::min(x0, x1), xMax = std::max(x0, x1);
    const auto xAt = [&](std::int32_t y) { return std::clamp(x0 + (y / kOne - y0) * slope, xMin, xMax); };
    double x = xAt(fixedTop);
    for (std::int32_t y = fixedTop; y < fixedBottom;)
    {
        const int row = y >> 16;
        const std::int32_t next = std::min(fixedBottom, (row + 1) * static_cast<std::int32_t>(kFullWeight));
        const double xNext = xAt(next);
        AddRow(band, edge, row, x, xNext, down ? next - y : y - next);
        y = next;
        x = xNext;
    }
}

void CRasterizer::AddCentres(Band& band, const FlatEdge& edge)
{
    const bool down = edge.y0 < edge.y1;
    const double x0 = down ? edge.x0 : edge.x1, y0 = down ? edge.y0 : edge.y1;
    const double x1 = down ? edge.x1 : edge.x0, y1 = down ? edge.y1 : edge.y0;
    if (!(y0 < y1) || y1 <= band.area.top || y0 >= band.area.bottom)
        return;
    const int first = std::max(band.area.top, static_cast<int>(std::ceil(std::max(y0, -1e6) - 0.5)));
    const int end = std::min(band.area.bottom, static_cast<int>(std::ceil(std::min(y1, 1e6) - 0.5)));
    const double slope = (x1 - x0) / (y1 - y0);
    const std::int32_t cover = down ? static_cast<std::int32_t>(kFullWeight) : -static_cast<std::int32_t>(kFullWeight);
    for (int row = first; row < end; ++row)
    {
        const double x = std::ceil(x0 + (row + 0.5 - y0) * slope - 0.5);
        if (x < band.area.right)
            AddCell(band, edge, static_cast<int>(std::max<double>(x, band.area.left)), row, cover, 0);
    }
}

void CRasterizer::SortCells(Band& band)
{
    const std::size_t rows = static_cast<std::size_t>(band.area.Height());
    band.rowStart.assign(rows + 1, 0);
    for (const Cell& cell : band.cells)
        ++band.rowStart[cell.row + std::size_t{1}];
    for (std::size_t i = 1; i <= rows; ++i)
        band.rowStart[i] += band.rowStart[i - 1];
    band.sorted.resize(band.cells.size());
    for (const Cell& cell : band.cells)
        band.sorted[band.rowStart[cell.row]++] = cell;
    for (std::size_t i = rows; i > 0; --i)
        band.rowStart[i] = band.rowStart[i - 1];
    band.rowStart[0] = 0;
}

void CRasterizer::Emit(Band& band, int y, int x, int length, bool nonZero, bool partial, ISpanSink& sink)
{
    if (length <= 0)
        return;
    band.weights.clear();
    for (const std::uint16_t fill : band.active)
    {
        const std::int64_t cover = band.cover[fill] - (partial ? band.uncovered[fill] : 0);
        if (const std::uint32_t weight = ByRule(cover, nonZero); weight > 0)
            band.weights.push_back({fill, weight});
    }
    if (band.weights.empty())
        return;
    if (band.weights.size() > 1)
    {
        // Where fills lie on each other, the later one covers the earlier.
        std::sort(band.weights.begin(), band.weights.end(),
                  [](const FillWeight& a, const FillWeight& b) { return a.fill > b.fill; });
        std::uint32_t left = kFullWeight;
        for (FillWeight& w : band.weights)
        {
            w.weight = std::min(w.weight, left);
            left -= w.weight;
        }
        std::erase_if(band.weights, [](const FillWeight& w) { return w.weight == 0; });
    }
    sink.Span(y, x, length, band.weights);
}

void CRasterizer::SweepRow(Band& band, std::span<Cell> cells, int y, bool nonZero, ISpanSink& sink)
{
    std::sort(cells.begin(), cells.end(), [](const Cell& a, const Cell& b) { return a.x < b.x; });
    int x = band.area.left;
    for (std::size_t i = 0; i < cells.size();)
    {
        const int cellX = cells[i].x;
        if (!band.active.empty())
            Emit(band, y, x, cellX - x, nonZero, false, sink);
        bool partial = false;
        for (; i < cells.size() && cells[i].x == cellX; ++i)
        {
            const Cell& cell = cells[i];
            if (band.cover[cell.fill] == 0 && band.uncovered[cell.fill] == 0 &&
                std::find(band.active.begin(), band.active.end(), cell.fill) == band.active.end())
                band.active.push_back(cell.fill);
            band.cover[cell.fill] += cell.cover;
            band.uncovered[cell.fill] += cell.uncovered;
            partial = partial || cell.uncovered != 0;
        }
        x = cellX;
        if (partial)
        {
            Emit(band, y, x, 1, nonZero, true, sink);
            ++x;
        }
        std::erase_if(band.active,
                      [&band](std::uint16_t fill)
                      {
                          band.uncovered[fill] = 0;
                          return band.cover[fill] == 0;
                      });
    }
    if (!band.active.empty())
        Emit(band, y, x, band.area.right - x, nonZero, false, sink);
    for (const std::uint16_t fill : band.active)
        band.cover[fill] = 0;
    band.active.clear();
}

void CRasterizer::Sweep(Band& band, std::uint16_t fills, bool nonZero, ISpanSink& sink)
{
    band.cover.assign(std::size_t{fills} + 1, 0);
    band.uncovered.assign(std::size_t{fills} + 1, 0);
    band.active.clear();
    for (int row = 0; row < band.area.Height(); ++row)
    {
        const std::uint32_t first = band.rowStart[static_cast<std::size_t>(row)];
        const std::uint32_t end = band.rowStart[static_cast<std::size_t>(row) + 1];
        if (first < end)
            SweepRow(band, {band.sorted.data() + first, end - first}, band.area.top + row, nonZero, sink);
    }
}

void CRasterizer::Fill(std::span<const FlatEdge> edges, std::uint16_t fills, bool nonZero, Coverage coverage,
                       const Area& clip, ISpanSink& sink)
{
    if (clip.IsEmpty() || edges.empty())
        return;
    float yMin = edges[0].y0, yMax = edges[0].y0;
    for (const FlatEdge& edge : edges)
    {
        yMin = std::min({yMin, edge.y0, edge.y1});
        yMax = std::max({yMax, edge.y0, edge.y1});
    }
    Area area = clip;
    area.top = std::max(area.top, static_cast<int>(std::floor(std::max(yMin, -1e6F))));
    area.bottom = std::min(area.bottom, static_cast<int>(std::ceil(std::min(yMax, 1e6F))) + 1);
    if (area.IsEmpty())
        return;
    const std::uint32_t count = BandCount(static_cast<std::uint32_t>(area.Height()), area.Pixels() + edges.size() * 16);
    if (m_bands.size() < count)
        m_bands.resize(count);
    ForEachBand(
        static_cast<std::uint32_t>(area.Height()), count,
        [&](std::uint32_t index, std::uint32_t first, std::uint32_t end)
        {
            Band& band = m_bands[index];
            band.area = {area.left, area.top + static_cast<int>(first), area.right, area.top + static_cast<int>(end)};
            band.cells.clear();
            for (const FlatEdge& edge : edges)
                coverage == Coverage::Exact ? AddExact(band, edge) : AddCentres(band, edge);
            SortCells(band);
            Sweep(band, fills, nonZero, sink);
        });
}
} // namespace swf
