#include "companions/swfrenderer/Paint.h"

#include <bit>
#include <cmath>

namespace swf
{
namespace
{
constexpr int kTableSize = 4096;
constexpr double kGradientHalf = 16'384; ///< twips: half the side of the gradient square
constexpr double kMaxBitmapCoordinate = 1e9;

double ToLinear(double v) ///< IEC 61966-2-1, 0..1
{
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}
double FromLinear(double v)
{
    return v <= 0.0031308 ? v * 12.92 : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
}

/// The colours of a gradient between its stops.
class CStops
{
public:
    CStops(const std::vector<GradientStop>& stops, bool linear) : m_stops(stops), m_bLinear(linear)
    {
        if (linear)
            for (const GradientStop& stop : stops)
                m_light.push_back({ToLinear(stop.colour.r / 255.0), ToLinear(stop.colour.g / 255.0),
                                   ToLinear(stop.colour.b / 255.0)});
    }
    /// @param ratio  not less than the one before
    std::array<float, 4> At(double ratio)
    {
        while (m_next < m_stops.size() && m_stops[m_next].ratio < ratio)
            ++m_next;
        const auto plain = [](Rgba c) { return std::array<float, 4>{float(c.r), float(c.g), float(c.b), float(c.a)}; };
        if (m_next == 0)
            return plain(m_stops[0].colour);
        if (m_next == m_stops.size())
            return plain(m_stops.back().colour);
        const GradientStop &a = m_stops[m_next - 1], &b = m_stops[m_next];
        const double t = (ratio - a.ratio) / std::max(1, b.ratio - a.ratio);
        const auto mix = [t](std::uint8_t from, std::uint8_t to) { return static_cast<float>(from + (to - from) * t); };
        if (!m_bLinear)
            return {mix(a.colour.r, b.colour.r), mix(a.colour.g, b.colour.g), mix(a.colour.b, b.colour.b),
                    mix(a.colour.a, b.colour.a)};
        const auto light = [&](std::size_t c)
        {
            const double low = m_light[m_next - 1][c], high = m_light[m_next][c];
            return static_cast<float>(255 * FromLinear(low + (high - low) * t));
        };
        return {light(0), light(1), light(2), mix(a.colour.a, b.colour.a)};
    }

private:
    const std::vector<GradientStop>& m_stops;
    bool m_bLinear;
    std::vector<std::array<double, 3>> m_light; ///< of the stops, where they are mixed so
    std::size_t m_next = 0;                     ///< first stop that is not below
};

std::uint64_t HashOf(const FillStyle& fill, const ColourTransform& colours)
{
    std::uint64_t hash = fill.linearRgb ? 1 : 0;
    const auto add = [&hash](std::uint64_t v) { hash = (hash ^ v) * 0x100000001B3ULL ^ hash >> 29; };
    for (const GradientStop& stop : fill.stops)
        add(Premultiplied(Rgba{stop.colour.r, stop.colour.g, stop.colour.b, 255}) ^ std::uint64_t{stop.colour.a} << 32 ^
            std::uint64_t{stop.ratio} << 40);
    for (std::size_t i = 0; i < 4; ++i)
        add(std::uint64_t{std::bit_cast<std::uint32_t>(colours.multiply[i])} << 32 |
            std::bit_cast<std::uint32_t>(colours.add[i]));
    return hash;
}

/// @p value taken into 0..size-1; by wrapping round, or by staying at the border.
int Inside(std::int64_t value, int size, bool repeat)
{
    if (value >= 0 && value < size)
        return static_cast<int>(value);
    if (!repeat)
        return value < 0 ? 0 : size - 1;
    const std::int64_t rest = value % size;
    return static_cast<int>(rest < 0 ? rest + size : rest);
}

/// Of two pixels, the second with @p share / 256.
std::uint32_t Mix(std::uint32_t a, std::uint32_t b, std::uint32_t share)
{
    const std::uint32_t even = (((a & 0xFF00FF) * (256 - share) + (b & 0xFF00FF) * share + 0x800080) >> 8) & 0xFF00FF;
    const std::uint32_t odd =
        (((a >> 8) & 0xFF00FF) * (256 - share) + ((b >> 8) & 0xFF00FF) * share + 0x800080) & 0xFF00FF00;
    return even | odd;
}

std::int64_t Fixed(double v)
{
    return std::llround(std::clamp(v, -kMaxBitmapCoordinate, kMaxBitmapCoordinate) * 65'536);
}
} // namespace

void CPaint::SetSolid(const std::array<float, 4>& rgba)
{
    m_kind = FillKind::Solid;
    m_solid = Premultiplied(rgba);
}

void CPaint::SetFill(const FillStyle& fill, const Matrix& toDevice, const ColourTransform& colours,
                     const Bitmap* pBitmap, CGradientTables& tables)
{
    if (fill.kind == FillKind::Solid)
        return SetSolid(colours.Apply(fill.colour));
    const Matrix toFill = Then(fill.matrix, toDevice).Inverse();
    m_kind = fill.kind;
    m_toFill = toFill;
    if (fill.kind == FillKind::Bitmap)
    {
        m_pBitmap = pBitmap;
        m_bRepeat = fill.repeat;
        m_bSmooth = fill.smooth;
        m_colours = colours;
        m_bTransform = !colours.IsIdentity();
        if (!pBitmap || pBitmap->pixels.empty() || toFill.Determinant() == 0)
        {
            m_kind = FillKind::Solid;
            m_solid = 0;
        }
        return;
    }
    const double unit = 1 / kGradientHalf;
    m_toFill = Then(toFill, {unit, 0, 0, unit, 0, 0});
    m_focus = fill.focus;
    m_spread = fill.spread;
    if (fill.stops.empty())
        return SetSolid({0, 0, 0, 0});
    m_pTable = tables.Find(fill, colours);
    if (toFill.Determinant() == 0) // squeezed to nothing: the last colour is everywhere
    {
        m_kind = FillKind::Solid;
        m_solid = m_pTable->back();
    }
}

CGradientTables::Table CGradientTables::Find(const FillStyle& fill, const ColourTransform& colours)
{
    const std::uint64_t hash = HashOf(fill, colours);
    const auto [first, end] = m_entries.equal_range(hash);
    for (auto at = first; at != end; ++at)
        if (at->second.stops == fill.stops && at->second.colours == colours && at->second.linearRgb == fill.linearRgb)
            return at->second.table;
    auto pTable = std::make_shared<std::vector<std::uint32_t>>(kTableSize);
    CStops stops(fill.stops, fill.linearRgb);
    for (std::size_t i = 0; i < pTable->size(); ++i)
        (*pTable)[i] = Premultiplied(colours.Apply(stops.At(static_cast<double>(i) * 255 / (kTableSize - 1))));
    constexpr std::size_t kMostTables = 512; // of 16 KiB
    if (m_entries.size() >= kMostTables)
        m_entries.clear(); // those that are in use live on
    m_entries.emplace(hash, Entry{fill.stops, colours, fill.linearRgb, pTable});
    return pTable;
}

std::uint32_t CPaint::TableColour(double t) const
{
    if (m_spread != Spread::Pad)
    {
        const double whole = std::floor(t);
        const double rest = t - whole;
        t = m_spread == Spread::Reflect && std::fmod(std::abs(whole), 2) == 1 ? 1 - rest : rest;
    }
    t = (t * 256 - 0.5) / 255; // a gradient has 256 steps; each shows its colour in its middle
    if (!(t > 0))
        return m_pTable->front();
    return t >= 1 ? m_pTable->back() : (*m_pTable)[static_cast<std::size_t>(t * (kTableSize - 1) + 0.5)];
}

void CPaint::FetchLinear(double u, double du, int n, std::uint32_t* pOut) const
{
    for (int i = 0; i < n; ++i)
        pOut[i] = TableColour((u + du * i + 1) / 2);
}

/// The colour at a point is that of t on the line from the focus (f, 0) through it to the unit circle: with d the
/// vector from the focus, t = (f dx + sqrt(dx^2 + (1 - f^2) dy^2)) / (1 - f^2).
void CPaint::FetchRadial(double u, double v, int n, std::uint32_t* pOut) const
{
    const double rest = 1 - m_focus * m_focus;
    for (int i = 0; i < n; ++i, u += m_toFill.a, v += m_toFill.b)
    {
        const double dx = u - m_focus;
        const double t =
            m_focus == 0 ? std::sqrt(u * u + v * v) : (m_focus * dx + std::sqrt(dx * dx + rest * v * v)) / rest;
        pOut[i] = TableColour(t);
    }
}

void CPaint::FetchNearest(double u, double v, int n, std::uint32_t* pOut) const
{
    const Bitmap& bitmap = *m_pBitmap;
    std::int64_t fu = Fixed(u), fv = Fixed(v);
    const std::int64_t du = Fixed(m_toFill.a), dv = Fixed(m_toFill.b);
    for (int i = 0; i < n; ++i, fu += du, fv += dv)
        pOut[i] = bitmap.At(Inside(fu >> 16, bitmap.width, m_bRepeat), Inside(fv >> 16, bitmap.height, m_bRepeat));
}

void CPaint::FetchSmooth(double u, double v, int n, std::uint32_t* pOut) const
{
    const Bitmap& bitmap = *m_pBitmap;
    std::int64_t fu = Fixed(u - 0.5), fv = Fixed(v - 0.5);
    const std::int64_t du = Fixed(m_toFill.a), dv = Fixed(m_toFill.b);
    for (int i = 0; i < n; ++i, fu += du, fv += dv)
    {
        const int x0 = Inside(fu >> 16, bitmap.width, m_bRepeat), y0 = Inside(fv >> 16, bitmap.height, m_bRepeat);
        const auto shareX = static_cast<std::uint32_t>((fu >> 8) & 255);
        const auto shareY = static_cast<std::uint32_t>((fv >> 8) & 255);
        if ((shareX | shareY) == 0)
        {
            pOut[i] = bitmap.At(x0, y0);
            continue;
        }
        const int x1 = Inside((fu >> 16) + 1, bitmap.width, m_bRepeat);
        const int y1 = Inside((fv >> 16) + 1, bitmap.height, m_bRepeat);
        pOut[i] = Mix(Mix(bitmap.At(x0, y0), bitmap.At(x1, y0), shareX),
                      Mix(bitmap.At(x0, y1), bitmap.At(x1, y1), shareX), shareY);
    }
}

void CPaint::TransformColours(int n, std::uint32_t* pOut) const
{
    for (int i = 0; i < n; ++i)
    {
        const std::uint32_t p = pOut[i];
        const float alpha = static_cast<float>(p >> 24);
        const float scale = alpha > 0 ? 255 / alpha : 0;
        const auto straight = [scale](std::uint32_t v)
        { return std::min(255.0F, static_cast<float>(v & 255) * scale); };
        pOut[i] = Premultiplied(
            m_colours.Apply(std::array<float, 4>{straight(p >> 16), straight(p >> 8), straight(p), alpha}));
    }
}

std::uint64_t CPaint::Cost() const
{
    switch (m_kind)
    {
    case FillKind::Solid:
        return 1;
    case FillKind::Linear:
        return 4;
    case FillKind::Radial:
        return m_focus == 0 ? 6 : 8;
    default:
        return (m_bSmooth ? 8 : 3) + (m_bTransform ? 4 : 0);
    }
}

void CPaint::Fetch(int x, int y, int n, std::uint32_t* pOut) const
{
    if (m_kind == FillKind::Solid)
        return (void)std::fill_n(pOut, n, m_solid);
    const Point at = m_toFill.Map(Point{x + 0.5, y + 0.5});
    if (m_kind == FillKind::Linear)
        return FetchLinear(at.x, m_toFill.a, n, pOut);
    if (m_kind == FillKind::Radial)
        return FetchRadial(at.x, at.y, n, pOut);
    if (m_bSmooth)
        FetchSmooth(at.x, at.y, n, pOut);
    else
        FetchNearest(at.x, at.y, n, pOut);
    if (m_bTransform)
        TransformColours(n, pOut);
}
} // namespace swf
