/// @file Rasterizer.h
/// Turns outlines into runs of pixels, all fills of a shape in one pass.
#pragma once

#include "companions/swfrenderer/Surface.h"

#include <cstdint>
#include <span>
#include <vector>

namespace swf
{
/// A straight edge in device pixels. Fills count from 1, 0 is none; who walks from the first point to the second, y
/// pointing down, has fill0 on the left and fill1 on the right.
struct FlatEdge
{
    float x0, y0, x1, y1;
    std::uint16_t fill0, fill1;
};

inline constexpr std::uint32_t kFullWeight = 65'536;

/// Share of a pixel that a fill covers.
struct FillWeight
{
    std::uint16_t fill;
    std::uint32_t weight; ///< 1..kFullWeight; those of one pixel add up to kFullWeight at most
};

/// Takes the runs. Rows come from several threads at a time, each row from one.
class ISpanSink
{
public:
    virtual void Span(int y, int x, int length, std::span<const FillWeight> weights) = 0;

protected:
    ~ISpanSink() = default;
};

enum class Coverage : std::uint8_t
{
    Exact, ///< the area that a fill has of a pixel
    Grid,  ///< how many of 4 by 4 samples it has: what players of the format call high quality
    Centre ///< all or nothing, by the pixel's centre
};

/// Every edge adds to the coverage of the fill on its one side what it takes from the other, so that neighbours share
/// a pixel exactly and no seam shows between them.
class CRasterizer
{
public:
    /// Pixels of @p clip that edges pass through, at most: what Fill() costs.
    static std::uint64_t CellsOf(std::span<const FlatEdge> edges, const Area& clip);
    /// @param fills    fills are 1..fills
    /// @param nonZero  overlapping outlines of a fill add up; else they cancel
    /// @param cells    CellsOf(edges, clip)
    /// Takes some 50 MiB at most, whatever the outline: where edges crowd, rows are done one by one. A row in which
    /// crowded edges have more than a million pairs of a fill and a pixel stays empty.
    void Fill(std::span<const FlatEdge> edges, std::uint16_t fills, bool nonZero, Coverage coverage, const Area& clip,
              std::uint64_t cells, ISpanSink& sink);

private:
    /// What an edge does to one pixel of a row and to all pixels to the right of it.
    struct Cell
    {
        std::int32_t x;
        std::int32_t cover;     ///< change of coverage from the next pixel on, kFullWeight per row height
        std::int32_t uncovered; ///< part of cover that this pixel does not have
        std::uint16_t row;      ///< in the band
        std::uint16_t fill;
    };
    /// Memory of one band, kept from call to call.
    struct Band
    {
        Area area;
        std::vector<Cell> cells, sorted;
        std::vector<std::uint32_t> rowStart;
        std::vector<std::int64_t> cover, uncovered; ///< of every fill
        std::vector<std::uint16_t> active;          ///< fills whose cover is not zero, the later one first
        bool crowded = false;                       ///< there were more of them than are kept
        std::vector<FillWeight> weights;
        // Of a crowded row: sums for every pixel and fill, in that order.
        std::size_t denseFills = 0; ///< 0: cells are kept one by one
        std::vector<std::int64_t> denseCover, denseUncovered;
    };
    struct Job
    {
        std::span<const FlatEdge> edges;
        std::uint16_t fills;
        bool nonZero;
        Coverage coverage;
        ISpanSink& sink;
    };

    static void AddExact(Band& band, const FlatEdge& edge);
    static void AddGrid(Band& band, const FlatEdge& edge);
    static void AddCentres(Band& band, const FlatEdge& edge);
    static void AddRow(Band& band, const FlatEdge& edge, int row, double xFrom, double xTo, std::int32_t height);
    static void AddCell(Band& band, const FlatEdge& edge, int x, int row, std::int32_t cover, double inset);
    static void SortCells(Band& band);
    static void ThinOut(Band& band);
    static void FillBand(Band& band, const Job& job);
    void FillRows(const Area& area, const Job& job);
    void FillCrowded(const Area& area, const Job& job);
    static void Sweep(Band& band, std::uint16_t fills, bool nonZero, ISpanSink& sink);
    static void Activate(Band& band, std::uint16_t fill);
    static void SweepRow(Band& band, std::span<Cell> cells, int y, bool nonZero, ISpanSink& sink);
    static void Emit(Band& band, int y, int x, int length, bool nonZero, bool partial, ISpanSink& sink);

    std::vector<Band> m_bands;
    std::vector<std::int64_t> m_rowCells;
};
} // namespace swf
