#include "companions/swfrenderer/Rasterizer.h"

#include "companions/swfrenderer/Parallel.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace swf
{
namespace
{
constexpr double kOne = kFullWeight;
constexpr int kGrid = 4;                                ///< samples per pixel and axis of Coverage::Grid
constexpr std::uint64_t kCellsAtOnce = 524'288;         ///< that are kept one by one
constexpr std::size_t kMaxDense = std::size_t{1} << 20; ///< sums of a crowded row

constexpr std::size_t kMaxActive = 64; ///< fills that lie on each other at a pixel; those below are hidden

/// Pixels between two coordinates that lie within a range.
std::uint64_t Crossed(float a, float b, int low, int high)
{
    const double from = std::max<double>(std::min(a, b), low), to = std::min<double>(std::max(a, b), high);
    return to > from ? static_cast<std::uint64_t>(to - from) + 1 : 0;
}

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
    const auto uncovered = static_cast<std::int32_t>(std::lround(cover * inset));
    if (band.denseFills != 0)
    {
        const std::size_t at = static_cast<std::size_t>(x - band.area.left) * band.denseFills;
        band.denseCover[at + edge.fill0] += cover;
        band.denseUncovered[at + edge.fill0] += uncovered;
        band.denseCover[at + edge.fill1] -= cover;
        band.denseUncovered[at + edge.fill1] -= uncovered;
        return;
    }
    Cell cell{};
    cell.x = x;
    cell.row = static_cast<std::uint16_t>(row - band.area.top);
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

void CRasterizer::AddGrid(Band& band, const FlatEdge& edge)
{
    const bool down = edge.y0 < edge.y1;
    const double x0 = down ? edge.x0 : edge.x1, y0 = down ? edge.y0 : edge.y1;
    const double x1 = down ? edge.x1 : edge.x0, y1 = down ? edge.y1 : edge.y0;
    if (!(y0 < y1) || y1 <= band.area.top || y0 >= band.area.bottom)
        return;
    const auto line = [](double y) { return static_cast<int>(std::ceil(y * kGrid - 0.5)); };
    const int first = std::max(band.area.top * kGrid, line(std::max(y0, -1e6)));
    const int end = std::min(band.area.bottom * kGrid, line(std::min(y1, 1e6)));
    const double slope = (x1 - x0) / (y1 - y0);
    const std::int32_t cover = (down ? 1 : -1) * static_cast<std::int32_t>(kFullWeight / kGrid);
    for (int at = first; at < end; ++at)
    {
        const double x = x0 + ((at + 0.5) / kGrid - y0) * slope;
        const double sample = std::max<double>(std::ceil(x * kGrid - 0.5) / kGrid, band.area.left);
        const int row = band.area.top + (at - band.area.top * kGrid) / kGrid;
        if (sample < band.area.right)
            AddCell(band, edge, static_cast<int>(std::floor(sample)), row, cover, sample - std::floor(sample));
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

/// Keeps the order of the fills.
void CRasterizer::Activate(Band& band, std::uint16_t fill)
{
    const auto at = std::lower_bound(band.active.begin(), band.active.end(), fill, std::greater<>());
    if (at != band.active.end() && *at == fill)
        return;
    band.active.insert(at, fill);
    if (band.active.size() > kMaxActive)
    {
        band.active.pop_back();
        band.crowded = true;
    }
}

void CRasterizer::SweepRow(Band& band, std::span<Cell> cells, int y, bool nonZero, ISpanSink& sink)
{
    std::sort(cells.begin(), cells.end(), [](const Cell& a, const Cell& b) { return a.x < b.x; });
    int x = band.area.left;
    band.crowded = false;
    for (std::size_t i = 0; i < cells.size();)
    {
        const int cellX = cells[i].x;
        if (!band.active.empty())
            Emit(band, y, x, cellX - x, nonZero, false, sink);
        bool partial = false;
        const std::size_t first = i;
        for (; i < cells.size() && cells[i].x == cellX; ++i)
        {
            const Cell& cell = cells[i];
            if (band.cover[cell.fill] == 0 && band.uncovered[cell.fill] == 0)
                Activate(band, cell.fill);
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
        for (std::size_t k = first; k < i; ++k)
            band.uncovered[cells[k].fill] = 0;
        std::erase_if(band.active, [&band](std::uint16_t fill) { return band.cover[fill] == 0; });
    }
    if (!band.active.empty())
        Emit(band, y, x, band.area.right - x, nonZero, false, sink);
    for (const std::uint16_t fill : band.active)
        band.cover[fill] = 0;
    if (band.crowded)
        for (const Cell& cell : cells)
            band.cover[cell.fill] = 0;
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

/// Makes cells of the sums of a crowded row.
void CRasterizer::ThinOut(Band& band)
{
    constexpr std::int64_t kMost = std::int64_t{1} << 30; // per cell; a multiple of two full weights
    for (std::size_t i = 0; i < band.denseCover.size(); ++i)
    {
        const std::size_t fill = i % band.denseFills;
        std::int64_t cover = fill == 0 ? 0 : band.denseCover[i], uncovered = fill == 0 ? 0 : band.denseUncovered[i];
        while (cover != 0 || uncovered != 0)
        {
            Cell cell{};
            cell.x = band.area.left + static_cast<std::int32_t>(i / band.denseFills);
            cell.fill = static_cast<std::uint16_t>(fill);
            cell.cover = static_cast<std::int32_t>(std::clamp(cover, -kMost, kMost));
            cell.uncovered = static_cast<std::int32_t>(std::clamp(uncovered, -kMost, kMost));
            cover -= cell.cover;
            uncovered -= cell.uncovered;
            band.cells.push_back(cell);
        }
    }
    band.denseFills = 0;
}

void CRasterizer::FillBand(Band& band, const Job& job)
{
    band.cells.clear();
    for (const FlatEdge& edge : job.edges)
        job.coverage == Coverage::Exact  ? AddExact(band, edge)
        : job.coverage == Coverage::Grid ? AddGrid(band, edge)
                                         : AddCentres(band, edge);
    if (band.denseFills != 0)
        ThinOut(band);
    SortCells(band);
    Sweep(band, job.fills, job.nonZero, job.sink);
}

void CRasterizer::FillRows(const Area& area, const Job& job)
{
    const auto rows = static_cast<std::uint32_t>(area.Height());
    const std::uint32_t count = BandCount(rows, area.Pixels() + job.edges.size() * 16);
    if (m_bands.size() < count)
        m_bands.resize(count);
    ForEachBand(
        rows, count,
        [&](std::uint32_t index, std::uint32_t first, std::uint32_t end)
        {
            Band& band = m_bands[index];
            band.area = {area.left, area.top + static_cast<int>(first), area.right, area.top + static_cast<int>(end)};
            FillBand(band, job);
        });
}

/// As many rows at a time as have cells that may be kept; a row that has more by itself is summed up.
void CRasterizer::FillCrowded(const Area& area, const Job& job)
{
    const auto rows = static_cast<std::size_t>(area.Height());
    m_rowCells.assign(rows + 1, 0); // differences from row to row
    for (const FlatEdge& edge : job.edges)
        if (Crossed(edge.y0, edge.y1, area.top, area.bottom) != 0)
        {
            const auto row = [&area](float y)
            { return std::clamp(static_cast<int>(std::floor(y)), area.top, area.bottom - 1) - area.top; };
            const int first = row(std::min(edge.y0, edge.y1)), last = row(std::max(edge.y0, edge.y1));
            const auto wide = static_cast<std::int64_t>(Crossed(edge.x0, edge.x1, area.left, area.right));
            const std::int64_t lines = job.coverage == Coverage::Grid ? kGrid : 1;
            const std::int64_t cells = 2 * lines * (2 + wide / (last - first + 1)); // on both sides of the edge
            m_rowCells[static_cast<std::size_t>(first)] += cells;
            m_rowCells[static_cast<std::size_t>(last) + 1] -= cells;
        }
    const std::size_t dense = static_cast<std::size_t>(area.Width()) * (job.fills + std::size_t{1});
    std::int64_t ofRow = m_rowCells[0];
    for (std::size_t first = 0; first < rows;)
    {
        std::size_t end = first;
        std::int64_t cells = 0;
        for (; end < rows && (end == first || cells + ofRow <= static_cast<std::int64_t>(kCellsAtOnce)); ++end)
        {
            cells += ofRow;
            ofRow += m_rowCells[end + 1];
        }
        const Area strip{area.left, area.top + static_cast<int>(first), area.right, area.top + static_cast<int>(end)};
        first = end;
        if (cells <= static_cast<std::int64_t>(kCellsAtOnce))
            FillRows(strip, job);
        else if (dense <= kMaxDense)
        {
            if (m_bands.empty())
                m_bands.resize(1);
            Band& band = m_bands[0];
            band.area = strip;
            band.denseFills = job.fills + std::size_t{1};
            band.denseCover.assign(dense, 0);
            band.denseUncovered.assign(dense, 0);
            FillBand(band, job);
        }
    }
}

std::uint64_t CRasterizer::CellsOf(std::span<const FlatEdge> edges, const Area& clip)
{
    std::uint64_t cells = 0;
    for (const FlatEdge& edge : edges)
        if (const std::uint64_t rows = Crossed(edge.y0, edge.y1, clip.top, clip.bottom))
            cells += rows + Crossed(edge.x0, edge.x1, clip.left, clip.right);
    return cells;
}

void CRasterizer::Fill(std::span<const FlatEdge> edges, std::uint16_t fills, bool nonZero, Coverage coverage,
                       const Area& clip, std::uint64_t cells, ISpanSink& sink)
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
    const Job job{edges, fills, nonZero, coverage, sink};
    if (cells * (coverage == Coverage::Grid ? std::uint64_t{kGrid} : 1) <= kCellsAtOnce)
        FillRows(area, job);
    else
        FillCrowded(area, job);
}
} // namespace swf
