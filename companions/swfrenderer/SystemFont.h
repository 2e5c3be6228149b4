/// @file SystemFont.h
/// Outlines from fonts that the movie does not spell out: those of the system, and font files that it carries.
#pragma once

#include "companions/swfrenderer/Shape.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace swf
{
class CSystemFont
{
public:
    virtual ~CSystemFont() = default;
    /// The face that the system has for a name, or what it takes instead; "_sans", "_serif" and "_typewriter" are the
    /// format's names for the three common kinds. @return null when there is none.
    static std::unique_ptr<CSystemFont> Open(const std::string& face, bool bold, bool italic);
    /// An OpenType file in memory, borrowed. @return null when it cannot be read, and always on Windows.
    static std::unique_ptr<CSystemFont> OpenFile(std::span<const std::uint8_t> file);

    // Units of the font.
    double unitsPerEm = 1, ascent = 0, descent = 0;
    /// The outline of a character, y pointing down, filled with style 1.
    /// @return false when the font does not have it; then nothing has changed. Throws std::bad_alloc.
    virtual bool Outline(std::uint32_t code, Shape& shape, double& advance) = 0;
};

/// Takes the edges of an outline, y pointing up as fonts have it, into a shape.
class COutlineBuilder
{
public:
    COutlineBuilder();
    void Move(double x, double y);
    void Line(double x, double y);
    void Quadratic(double cx, double cy, double x, double y);
    /// As four quadratic curves, which differ from it by less than a hundredth of its size.
    void Cubic(double cx0, double cy0, double cx1, double cy1, double x, double y);
    /// Closes what is open.
    Shape Finish();

private:
    void Close();

    Shape m_shape;
    Point m_start, m_at; ///< y pointing down
    bool m_bOpen = false;
};
} // namespace swf
