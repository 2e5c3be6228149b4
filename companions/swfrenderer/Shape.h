/// @file Shape.h
/// Shapes as the renderer takes them, and the records they are made of.
#pragma once

#include "companions/swfrenderer/Colour.h"
#include "companions/swfrenderer/Geometry.h"

#include <cstdint>
#include <vector>

namespace swf
{
enum class FillKind : std::uint8_t
{
    Solid,
    Linear, ///< gradients live in a square of 32,768 twips about their origin
    Radial,
    Bitmap
};
enum class Spread : std::uint8_t
{
    Pad,
    Reflect,
    Repeat
};

struct GradientStop
{
    std::uint8_t ratio = 0; ///< 0..255
    Rgba colour;
    bool operator==(const GradientStop&) const = default;
};

struct FillStyle
{
    FillKind kind = FillKind::Solid;
    Spread spread = Spread::Pad;
    bool linearRgb = false; ///< stops are mixed in linear light
    bool repeat = false;    ///< bitmaps: tiled, else the border goes on
    bool smooth = false;    ///< bitmaps
    std::uint16_t bitmap = 0;
    Rgba colour;
    double focus = 0; ///< of a radial gradient, -1..1 along its x axis
    Matrix matrix;    ///< from the gradient's square or the bitmap's pixels to the shape
    std::vector<GradientStop> stops;
};

enum class Cap : std::uint8_t
{
    Round,
    None,
    Square
};
enum class Join : std::uint8_t
{
    Round,
    Bevel,
    Miter
};

struct LineStyle
{
    double width = 0; ///< twips
    Cap startCap = Cap::Round, endCap = Cap::Round;
    Join join = Join::Round;
    double miterLimit = 3;
    bool keepX = false;  ///< the width does not grow with a horizontal, or
    bool keepY = false;  ///< vertical, scale
    bool hinted = false; ///< its points lie on whole pixels
    bool noClose = false;
    FillStyle fill;
};

/// From the end of the one before it. A straight edge has its control point at its end.
struct Edge
{
    float cx = 0, cy = 0, x = 0, y = 0;
    bool IsLine() const { return cx == x && cy == y; }
};

/// A run of edges with the same styles. Styles count from 1; 0 is none. With y pointing down, fill0 lies to the left of
/// who walks along the edges, fill1 to the right.
struct Path
{
    float startX = 0, startY = 0;
    std::uint32_t firstEdge = 0, edgeCount = 0;
    std::uint32_t fill0 = 0, fill1 = 0, line = 0;
};

/// What has one set of styles. Lines lie above the fills of their layer and below the next layer.
struct ShapeLayer
{
    std::vector<FillStyle> fills;
    std::vector<LineStyle> lines;
    std::vector<Path> paths;
    std::vector<Edge> edges;
};

struct Shape
{
    Rect bounds;          ///< twips, lines included
    bool nonZero = false; ///< overlapping outlines of a fill add up; else they cancel
    std::vector<ShapeLayer> layers;
};

/// One record of a shape, positions absolute.
struct ShapeRecord
{
    enum class Kind : std::uint8_t
    {
        Style, ///< move and styles, each only when its flag says so
        Line,
        Curve
    };
    Kind kind = Kind::Style;
    bool hasMove = false, hasFill0 = false, hasFill1 = false, hasLine = false;
    std::uint32_t fill0 = 0, fill1 = 0, line = 0;
    Point control, to;
};

struct StyleSet
{
    std::vector<FillStyle> fills;
    std::vector<LineStyle> lines;
};

/// Sorts records into layers and paths as they come.
class CShapeBuilder
{
public:
    /// What later records refer to; lies above what came before.
    void AddStyles(StyleSet&& styles);
    /// Styles that the set does not have count as none.
    void Add(const ShapeRecord& record);
    /// The builder is empty afterwards.
    Shape Finish(const Rect& bounds, bool nonZero);

private:
    void ChangeStyle(const ShapeRecord& record);
    void AddEdge(const ShapeRecord& record);

    Shape m_shape;
    std::uint32_t m_fill0 = 0, m_fill1 = 0, m_line = 0;
    Point m_position;
    bool m_bInPath = false;
};

/// A shape between two. Both ends have the same styles in the same places.
struct MorphShape
{
    Rect startBounds, endBounds;
    StyleSet startStyles, endStyles;
    std::vector<ShapeRecord> start, end;
};

/// The shape at @p ratio, 0 (start) to 65,535 (end).
Shape ShapeAt(const MorphShape& morph, std::uint32_t ratio);
} // namespace swf
