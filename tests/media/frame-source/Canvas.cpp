#include "tests/media/frame-source/Canvas.h"

#include "tests/media/frame-source/StrokeFont.h"

#include <algorithm>
#include <cmath>

Colour Mix(const Colour& from, const Colour& to, double t)
{
    return {from.r + (to.r - from.r) * t, from.g + (to.g - from.g) * t, from.b + (to.b - from.b) * t,
            from.a + (to.a - from.a) * t};
}

Canvas::Canvas(int width, int height)
    : m_width(width), m_height(height), m_pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3)
{
}

void Canvas::Blend(int x, int y, const Colour& colour, double coverage)
{
    const double alpha = colour.a * coverage;
    std::uint8_t* const p =
        m_pixels.data() +
        (static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x)) * 3;
    if (alpha >= 1)
    {
        p[0] = static_cast<std::uint8_t>(colour.r);
        p[1] = static_cast<std::uint8_t>(colour.g);
        p[2] = static_cast<std::uint8_t>(colour.b);
        return;
    }
    p[0] = static_cast<std::uint8_t>(p[0] + (colour.r - p[0]) * alpha + 0.5);
    p[1] = static_cast<std::uint8_t>(p[1] + (colour.g - p[1]) * alpha + 0.5);
    p[2] = static_cast<std::uint8_t>(p[2] + (colour.b - p[2]) * alpha + 0.5);
}

template <class Distance>
void Canvas::FillShape(double left, double top, double right, double bottom, const Colour& colour, Distance distance)
{
    const int x0 = std::max(0, static_cast<int>(std::floor(left)) - 1);
    const int y0 = std::max(0, static_cast<int>(std::floor(top)) - 1);
    const int x1 = std::min(m_width, static_cast<int>(std::ceil(right)) + 1);
    const int y1 = std::min(m_height, static_cast<int>(std::ceil(bottom)) + 1);
    for (int y = y0; y < y1; ++y)
        for (int x = x0; x < x1; ++x)
        {
            const double coverage = std::clamp(0.5 - distance(x + 0.5, y + 0.5), 0.0, 1.0);
            if (coverage > 0)
                Blend(x, y, colour, coverage);
        }
}

void Canvas::FillRect(double left, double top, double width, double height, const Colour& colour)
{
    FillRoundRect(left, top, width, height, 0, colour);
}

void Canvas::FillGradient(const Colour& top, const Colour& bottom)
{
    for (int y = 0; y < m_height; ++y)
    {
        const Colour colour = Mix(top, bottom, static_cast<double>(y) / m_height);
        for (int x = 0; x < m_width; ++x)
            Blend(x, y, colour, 1);
    }
}

void Canvas::FillRoundRect(double left, double top, double width, double height, double radius, const Colour& colour)
{
    const double cx = left + width / 2, cy = top + height / 2;
    const double hx = width / 2 - radius, hy = height / 2 - radius;
    FillShape(left, top, left + width, top + height, colour,
              [=](double x, double y)
              {
                  const double dx = std::abs(x - cx) - hx, dy = std::abs(y - cy) - hy;
                  const double outside = dx > 0 && dy > 0 ? std::sqrt(dx * dx + dy * dy) : std::max(dx, dy);
                  return outside - radius;
              });
}

void Canvas::FillCircle(double x, double y, double radius, const Colour& colour)
{
    FillShape(x - radius, y - radius, x + radius, y + radius, colour,
              [=](double px, double py) { return std::sqrt((px - x) * (px - x) + (py - y) * (py - y)) - radius; });
}

void Canvas::Line(double x0, double y0, double x1, double y1, double thickness, const Colour& colour)
{
    const double radius = thickness / 2, dx = x1 - x0, dy = y1 - y0, length2 = dx * dx + dy * dy;
    FillShape(std::min(x0, x1) - radius, std::min(y0, y1) - radius, std::max(x0, x1) + radius,
              std::max(y0, y1) + radius, colour,
              [=](double px, double py)
              {
                  const double t =
                      length2 > 0 ? std::clamp(((px - x0) * dx + (py - y0) * dy) / length2, 0.0, 1.0) : 0.0;
                  const double ex = px - x0 - t * dx, ey = py - y0 - t * dy;
                  return std::sqrt(ex * ex + ey * ey) - radius;
              });
}

void Canvas::FillBelow(const std::vector<double>& tops, const Colour& colour)
{
    const double highest = *std::min_element(tops.begin(), tops.end());
    for (int y = std::max(0, static_cast<int>(std::floor(highest))); y < m_height; ++y)
        for (int x = 0; x < m_width; ++x)
        {
            const double coverage = std::min(y + 1 - tops[static_cast<std::size_t>(x)], 1.0);
            if (coverage > 0)
                Blend(x, y, colour, coverage);
        }
}

double Canvas::Text(double left, double top, double size, std::string_view text, const Colour& colour, double weight)
{
    const double unit = size / kStrokeFontBaseline, thickness = std::max(1.2, size * weight);
    for (const char c : text)
    {
        const std::string_view strokes = StrokesOf(c);
        for (std::size_t i = 0; i + 4 < strokes.size(); i += 3)
        {
            if (strokes[i + 2] == ';')
                continue;
            const auto at = [&](std::size_t k) { return (strokes[k] - '0') * unit; };
            Line(left + at(i), top + at(i + 1), left + at(i + 3), top + at(i + 4), thickness, colour);
        }
        left += kStrokeFontAdvance * unit;
    }
    return left;
}

double Canvas::TextWidth(double size, std::string_view text)
{
    return static_cast<double>(text.size()) * kStrokeFontAdvance * size / kStrokeFontBaseline;
}
