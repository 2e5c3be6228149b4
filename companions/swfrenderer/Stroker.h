/// @file Stroker.h
/// Outlines of lines.
#pragma once

#include "companions/swfrenderer/Outline.h"

#include <vector>

namespace swf
{
/// Makes the outline of everything that one line style draws: fill 1, to be filled by the non-zero rule. Every stretch,
/// corner and end is a piece of its own with the same sense, so that tight turns leave no holes.
class CStroker
{
public:
    /// @param line        style @p number of @p layer, counted from 1
    /// @param stageScale  device pixels per pixel of the stage, for widths that do not grow
    void Outline(const ShapeLayer& layer, std::uint32_t number, const Matrix& toDevice, double stageScale,
                 std::size_t limit, std::vector<FlatEdge>& out);

private:
    bool SetPen(const Matrix& toDevice, double stageScale);
    Point OnPixel(Point p) const;
    void Add(Point p);
    void Finish();
    void Segment(Point a, Point b, Point direction);
    void JoinAt(Point at, Point before, Point after);
    void Arc(Point at, Point from, Point to);
    void CapAt(Point at, Point direction, Cap cap);
    void Put(Point p);
    void Close();

    const LineStyle* m_pLine = nullptr;
    Matrix m_toPen;    ///< from the shape to where the line is drawn: the shape itself, or the screen
    Matrix m_toDevice; ///< from there to device pixels
    double m_half = 0; ///< half the width, where the line is drawn
    double m_flatness = 0;
    double m_arcStep = 0; ///< radians between the points of a round join
    std::vector<FlatEdge>* m_pOut = nullptr;
    std::size_t m_limit = 0;     ///< of edges
    std::vector<Point> m_points; ///< of the line being walked, without repetitions
    bool m_bOpenPiece = false;
    Point m_first, m_last; ///< of the piece, device pixels
};
} // namespace swf
