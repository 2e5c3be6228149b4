/// @file Outline.h
/// Flat outlines, in device pixels, of the fills and the lines of a shape.
#pragma once

#include "companions/swfrenderer/Rasterizer.h"
#include "companions/swfrenderer/Shape.h"

#include <functional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace swf
{
/// Furthest distance between a curve and the chords in its place, in twips of the shape; half as much again at sharp
/// turns. Where the shape is drawn larger than it is defined the chords get shorter, so that the distance is no more on
/// the screen.
inline constexpr double kFlatness = 2;
/// The same on the screen, in device pixels.
inline constexpr double kFlatnessOnScreen = kFlatness / 20;
/// Chords in place of one curve at most.
inline constexpr int kMostChords = 256;

/// How far chords may be from the curves of a shape, in the shape's units.
/// @param scale  device pixels per unit
inline double FlatnessAt(double scale)
{
    return std::min(kFlatness, kFlatnessOnScreen / std::max(scale, 1e-9));
}

/// Adds to @p out the edges between the fills of @p layer. Stops at @p limit edges.
void FlattenFills(const ShapeLayer& layer, const Matrix& toDevice, std::size_t limit, std::vector<FlatEdge>& out);

/// Flat outlines of shapes and glyphs that are drawn again and again: curves are cut once for every flatness, which is
/// the same for most of the scales that a movie uses. What is drawn does not depend on what is kept.
class COutlineCache
{
public:
    /// As FlattenFills(). @param layer  stays where it is and as it is for the life of the cache. Throws
    /// std::bad_alloc.
    void Flatten(const ShapeLayer& layer, const Matrix& toDevice, std::size_t limit, std::vector<FlatEdge>& out);

private:
    /// End of a chord, from the end of the one before it.
    struct Chord
    {
        double x, y; ///< units of the shape
        std::uint16_t fill0, fill1;
        bool isMove; ///< nothing is drawn up to here
    };
    using Key = std::pair<const ShapeLayer*, double>; ///< and its flatness
    struct KeyHash
    {
        std::size_t operator()(const Key& key) const
        {
            return std::hash<const ShapeLayer*>()(key.first) * 31 + std::hash<double>()(key.second);
        }
    };
    static std::vector<Chord> Cut(const ShapeLayer& layer, double flatness);

    std::unordered_map<Key, std::vector<Chord>, KeyHash> m_outlines;
    std::size_t m_nHeld = 0; ///< chords of all outlines, and a few for the outline itself
};

/// A quadratic curve cut so that its chords are equally far from it, which takes the fewest of them. After R. Levien:
/// the curve is a piece of y = x^2, moved, turned and scaled; the chords that x needs are the integral of the square
/// root of the curvature there, for which there is a short approximation, and another one for its inverse.
class CCurveCuts
{
public:
    /// @param flatness  furthest distance between the curve and its chords, in the units of the points
    CCurveCuts(Point from, Point control, Point to, double flatness);

    int Chords() const { return m_nChords; }
    /// End of chord @p i, counted from 1.
    Point End(int i) const;

private:
    void Cut(double flatness);
    void CutAtTurn(Point bend, double flatness);
    double ParameterOf(int i) const;
    Point At(double t) const;

    Point m_from, m_control, m_to;
    int m_nChords = 1;
    double m_first = 0, m_perChord = 0; ///< integral at the start, and over one chord
    double m_offset = 0, m_factor = 0;  ///< from x to the curve's parameter
    double m_turn = 0;                  ///< parameter of the end of chord m_turnAt
    int m_turnAt = 0;                   ///< 0: all ends are the integral's
};

/// Calls @p add(point) for the end of every chord in place of a curve; @p from is not repeated.
template <class Add> void FlattenCurve(Point from, Point control, Point to, double flatness, const Add& add)
{
    const CCurveCuts cuts(from, control, to, flatness);
    for (int i = 1; i <= cuts.Chords(); ++i)
        add(cuts.End(i));
}

/// Adds a straight edge. Its ends are moved to the nearest 256th of a pixel, so that equal corners stay equal whatever
/// rounding they went through; what lies beyond a million pixels is brought nearer.
void AddFlatEdge(Point a, Point b, std::uint16_t fill0, std::uint16_t fill1, std::vector<FlatEdge>& out);
} // namespace swf
