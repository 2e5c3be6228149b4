/// @file Canvas.h
/// A picture in memory with the few anti-aliased shapes that the demonstration films are drawn with.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

/// An opaque colour, or with @c a below 1 a veil over what is there.
struct Colour
{
    double r = 0, g = 0, b = 0; ///< 0..255
    double a = 1;               ///< 0..1
};
/// The colour 0xRRGGBB.
constexpr Colour Rgb(std::uint32_t hex, double alpha = 1)
{
    return {static_cast<double>(hex >> 16 & 255), static_cast<double>(hex >> 8 & 255), static_cast<double>(hex & 255),
            alpha};
}
/// @p t of the way from @p from to @p to; 0 <= t <= 1.
Colour Mix(const Colour& from, const Colour& to, double t);

/// Rows of three bytes R, G, B without padding, top-down. Coordinates are pixels from the top left corner; whatever
/// lies outside is cut off.
class Canvas
{
public:
    Canvas(int width, int height);

    int Width() const { return m_width; }
    int Height() const { return m_height; }
    const std::vector<std::uint8_t>& Pixels() const { return m_pixels; }

    void FillRect(double left, double top, double width, double height, const Colour& colour);
    /// From @p top to @p bottom down the whole picture.
    void FillGradient(const Colour& top, const Colour& bottom);
    void FillRoundRect(double left, double top, double width, double height, double radius, const Colour& colour);
    void FillCircle(double x, double y, double radius, const Colour& colour);
    /// A straight line with round ends.
    void Line(double x0, double y0, double x1, double y1, double thickness, const Colour& colour);
    /// The area below the curve y(x): every column is filled from its height in @p tops to the bottom of the picture.
    /// @param tops  one height for each column of the picture
    void FillBelow(const std::vector<double>& tops, const Colour& colour);
    /// One line of text, its capitals' top at @p top.
    /// @param size  height of the capitals
    /// @return the x coordinate after the last character
    double Text(double left, double top, double size, std::string_view text, const Colour& colour,
                double weight = 0.14);
    static double TextWidth(double size, std::string_view text);

private:
    void Blend(int x, int y, const Colour& colour, double coverage);
    /// Blends every pixel of the box whose signed distance to a shape is below half a pixel.
    template <class Distance>
    void FillShape(double left, double top, double right, double bottom, const Colour& colour, Distance distance);

    int m_width, m_height;
    std::vector<std::uint8_t> m_pixels;
};
