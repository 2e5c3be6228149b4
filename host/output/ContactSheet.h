/// @file ContactSheet.h
/// Many small pictures of a project on one page.
#pragma once

#include "host/compose/Canvas.h"

#include <cstdint>

namespace qmx::host
{
/// A page of cells, each with a small picture and its time beneath. Cells are filled row by row.
class ContactSheet
{
public:
    static constexpr std::uint32_t kMaxCells = 32;        ///< each way
    static constexpr std::uint32_t kMaxPictureSide = 320; ///< pixels; smaller pictures are not enlarged

    /// @param width, height  of the pictures that will come
    ContactSheet(std::uint32_t columns, std::uint32_t rows, std::uint32_t width, std::uint32_t height);

    std::uint32_t CellCount() const { return m_columns * m_rows; }
    /// Puts @p picture, made smaller, into a cell.
    /// @param time  100 ns, for the label
    void SetCell(std::uint32_t index, const Canvas& picture, std::uint64_t time);
    const Canvas& Page() const { return m_page; }

private:
    std::uint32_t m_columns;
    std::uint32_t m_rows;
    std::uint32_t m_pictureWidth;
    std::uint32_t m_pictureHeight;
    std::uint32_t m_cellWidth;
    std::uint32_t m_cellHeight;
    Canvas m_page;
};

/// Scales @p source down into a box of @p target that lies inside it: each pixel is the mean of those it stands for.
/// @param box  no larger than the source
void Shrink(const Canvas& source, Canvas& target, const PixelBox& box);
} // namespace qmx::host
