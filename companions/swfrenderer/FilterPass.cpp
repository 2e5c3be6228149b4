#include "companions/swfrenderer/FilterPass.h"

#include "companions/swfrenderer/Parallel.h"

#include <cmath>
#include <type_traits>

namespace swf
{
namespace
{
/// Mean over a window of @p width samples, which need not be whole: the outermost two count with what is left over.
/// @tparam Pixel  one level or four of them
template <class Pixel> void BlurLine(const Pixel* pIn, Pixel* pOut, int n, std::ptrdiff_t step, double width)
{
    const double half = (width - 1) / 2;
    const int whole = static_cast<int>(std::floor(half));
    const auto rest = static_cast<std::uint32_t>(std::lround((half - whole) * 256));
    const std::uint32_t total = static_cast<std::uint32_t>(2 * whole + 1) * 256 + 2 * rest;
    constexpr int kChannels = sizeof(Pixel);
    std::uint32_t sums[kChannels] = {};
    const auto channel = [](Pixel p, int c) { return static_cast<std::uint32_t>(p) >> (8 * c) & 255; };
    const auto at = [&](int i) { return i >= 0 && i < n ? pIn[i * step] : Pixel{0}; };
    for (int i = 0; i <= std::min(whole, n - 1); ++i)
        for (int c = 0; c < kChannels; ++c)
            sums[c] += channel(pIn[i * step], c);
    for (int i = 0; i < n; ++i)
    {
        const Pixel before = at(i - whole - 1), after = at(i + whole + 1);
        std::uint32_t out = 0;
        for (int c = 0; c < kChannels; ++c)
        {
            const std::uint64_t sum =
                std::uint64_t{sums[c]} * 256 + std::uint64_t{channel(before, c) + channel(after, c)} * rest;
            out |= static_cast<std::uint32_t>((sum + total / 2) / total) << (8 * c);
        }
        pOut[i * step] = static_cast<Pixel>(out);
        const Pixel gone = at(i - whole);
        for (int c = 0; c < kChannels; ++c)
            sums[c] += channel(after, c) - channel(gone, c);
    }
}

template <class Pixel>
void BlurBoth(std::vector<Pixel>& pixels, std::vector<Pixel>& copy, const Area& area, double widthX, double widthY,
              std::uint32_t passes)
{
    const int width = area.Width(), height = area.Height();
    copy.resize(pixels.size());
    for (std::uint32_t pass = 0; pass < passes; ++pass)
    {
        if (widthX > 1)
        {
            ForEachBand(static_cast<std::uint32_t>(height),
                        BandCount(static_cast<std::uint32_t>(height), area.Pixels()),
                        [&](std::uint32_t, std::uint32_t first, std::uint32_t end)
                        {
                            for (std::size_t y = first; y < end; ++y)
                                BlurLine(pixels.data() + y * static_cast<std::size_t>(width),
                                         copy.data() + y * static_cast<std::size_t>(width), width, 1, widthX);
                        });
            pixels.swap(copy);
        }
        if (widthY > 1)
        {
            ForEachBand(static_cast<std::uint32_t>(width), BandCount(static_cast<std::uint32_t>(width), area.Pixels()),
                        [&](std::uint32_t, std::uint32_t first, std::uint32_t end)
                        {
                            for (std::size_t x = first; x < end; ++x)
                                BlurLine(pixels.data() + x, copy.data() + x, height, width, widthY);
                        });
            pixels.swap(copy);
        }
    }
}

std::uint32_t PassesOf(const Filter& filter)
{
    return std::min(filter.passes, 15U);
}

void ApplyColourMatrix(const Filter& filter, Surface& picture)
{
    const auto& m = filter.matrix;
    for (std::uint32_t& p : picture.pixels)
    {
        const float alpha = static_cast<float>(p >> 24);
        const float scale = alpha > 0 ? 255 / alpha : 0;
        const float r = static_cast<float>(p >> 16 & 255) * scale, g = static_cast<float>(p >> 8 & 255) * scale,
                    b = static_cast<float>(p & 255) * scale;
        std::array<float, 4> out;
        for (std::size_t i = 0; i < 4; ++i)
        {
            const float v = m[5 * i] * r + m[5 * i + 1] * g + m[5 * i + 2] * b + m[5 * i + 3] * alpha + m[5 * i + 4];
            out[i] = v == v ? std::clamp(v, 0.0F, 255.0F) : 0.0F;
        }
        p = Premultiplied(out);
    }
}

/// A colour of a gradient filter at a level 0..255.
std::uint32_t StopColour(const std::vector<GradientStop>& stops, std::uint32_t level)
{
    if (stops.empty())
        return 0;
    std::size_t i = 0;
    while (i < stops.size() && stops[i].ratio < level)
        ++i;
    if (i == 0 || i == stops.size())
        return Premultiplied(stops[i == 0 ? 0 : i - 1].colour);
    const GradientStop &a = stops[i - 1], &b = stops[i];
    const float t = static_cast<float>(level - a.ratio) / static_cast<float>(std::max(1, b.ratio - a.ratio));
    const auto mix = [t](std::uint8_t x, std::uint8_t y)
    { return static_cast<float>(x) + (static_cast<float>(y) - static_cast<float>(x)) * t; };
    return Premultiplied(std::array<float, 4>{mix(a.colour.r, b.colour.r), mix(a.colour.g, b.colour.g),
                                              mix(a.colour.b, b.colour.b), mix(a.colour.a, b.colour.a)});
}
} // namespace

Area FilterMargins(const Filter& filter, double scaleX, double scaleY)
{
    if (filter.kind == Filter::Kind::ColourMatrix)
        return {};
    if (filter.kind == Filter::Kind::Convolution)
    {
        const int x = static_cast<int>(filter.columns), y = static_cast<int>(filter.rows);
        return {x, y, x, y};
    }
    const double passes = PassesOf(filter);
    const double reachX = std::max(0.0, filter.blurX * scaleX) / 2 * passes + 1 +
                          std::abs(filter.distance * std::cos(filter.angle)) * scaleX;
    const double reachY = std::max(0.0, filter.blurY * scaleY) / 2 * passes + 1 +
                          std::abs(filter.distance * std::sin(filter.angle)) * scaleY;
    const int x = static_cast<int>(std::ceil(std::min(reachX, 4096.0))),
              y = static_cast<int>(std::ceil(std::min(reachY, 4096.0)));
    return {x, y, x, y};
}

std::uint64_t FilterCost(const Filter& filter)
{
    if (filter.kind == Filter::Kind::Convolution)
        return 1 + std::uint64_t{filter.columns} * filter.rows;
    return filter.kind == Filter::Kind::ColourMatrix ? 1 : 4 + 2 * std::uint64_t{PassesOf(filter)};
}

void CFilterPass::BlurPicture(Surface& picture, double widthX, double widthY, std::uint32_t passes)
{
    BlurBoth(picture.pixels, m_copy, picture.area, widthX, widthY, passes);
}

void CFilterPass::BlurLevels(std::vector<std::uint8_t>& levels, const Area& area, double widthX, double widthY,
                             std::uint32_t passes)
{
    BlurBoth(levels, m_other, area, widthX, widthY, passes);
}

/// The blurred alpha, moved by a distance that need not be whole pixels, into m_shifted.
void CFilterPass::ReadShifted(const Area& area, double dx, double dy)
{
    const int width = area.Width(), height = area.Height();
    m_shifted.resize(m_alpha.size());
    const int wholeX = static_cast<int>(std::floor(-dx)), wholeY = static_cast<int>(std::floor(-dy));
    const auto shareX = static_cast<std::uint32_t>(std::lround((-dx - wholeX) * 256));
    const auto shareY = static_cast<std::uint32_t>(std::lround((-dy - wholeY) * 256));
    const auto at = [&](int x, int y) -> std::uint32_t
    {
        if (x < 0 || y < 0 || x >= width || y >= height)
            return 0;
        return m_alpha[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    };
    std::size_t i = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x, ++i)
        {
            const int sx = x + wholeX, sy = y + wholeY;
            const std::uint32_t top = at(sx, sy) * (256 - shareX) + at(sx + 1, sy) * shareX;
            const std::uint32_t bottom = at(sx, sy + 1) * (256 - shareX) + at(sx + 1, sy + 1) * shareX;
            m_shifted[i] = static_cast<std::uint8_t>((top * (256 - shareY) + bottom * shareY + 32'768) >> 16);
        }
}

void CFilterPass::Shadow(const Filter& filter, double scaleX, double scaleY, Surface& picture)
{
    m_alpha.resize(picture.pixels.size());
    for (std::size_t i = 0; i < m_alpha.size(); ++i)
        m_alpha[i] = static_cast<std::uint8_t>(picture.pixels[i] >> 24);
    BlurLevels(m_alpha, picture.area, filter.blurX * scaleX, filter.blurY * scaleY, PassesOf(filter));
    ReadShifted(picture.area, filter.distance * std::cos(filter.angle) * scaleX,
                filter.distance * std::sin(filter.angle) * scaleY);
    const bool gradient = filter.kind == Filter::Kind::GradientGlow;
    const std::uint32_t solid = Premultiplied(filter.colour);
    for (std::size_t i = 0; i < m_shifted.size(); ++i)
    {
        const std::uint32_t source = picture.pixels[i], alpha = source >> 24;
        const std::uint32_t shifted = filter.inner ? 255U - m_shifted[i] : m_shifted[i];
        const auto level = static_cast<std::uint32_t>(std::min(255.0, shifted * filter.strength + 0.5));
        std::uint32_t shadow = gradient ? StopColour(filter.stops, level) : ScalePixel(solid, level);
        if (filter.inner)
        {
            shadow = ScalePixel(shadow, alpha);
            picture.pixels[i] = filter.knockout || filter.hideObject ? shadow : Over(shadow, source);
        }
        else if (filter.knockout)
            picture.pixels[i] = ScalePixel(shadow, 255 - alpha);
        else
            picture.pixels[i] = filter.hideObject ? shadow : Over(source, shadow);
    }
}

/// Light from one side, shadow from the other: the difference of the alpha moved both ways.
void CFilterPass::Bevel(const Filter& filter, double scaleX, double scaleY, Surface& picture)
{
    m_alpha.resize(picture.pixels.size());
    for (std::size_t i = 0; i < m_alpha.size(); ++i)
        m_alpha[i] = static_cast<std::uint8_t>(picture.pixels[i] >> 24);
    BlurLevels(m_alpha, picture.area, filter.blurX * scaleX, filter.blurY * scaleY, PassesOf(filter));
    const double dx = filter.distance * std::cos(filter.angle) * scaleX,
                 dy = filter.distance * std::sin(filter.angle) * scaleY;
    ReadShifted(picture.area, dx, dy);
    m_other = m_shifted;
    ReadShifted(picture.area, -dx, -dy);
    const std::uint32_t light = Premultiplied(filter.highlight), dark = Premultiplied(filter.colour);
    for (std::size_t i = 0; i < m_shifted.size(); ++i)
    {
        const std::uint32_t source = picture.pixels[i], alpha = source >> 24;
        const double difference = std::clamp((int{m_other[i]} - int{m_shifted[i]}) * filter.strength, -255.0, 255.0);
        const auto level = static_cast<std::uint32_t>(std::abs(difference) + 0.5);
        std::uint32_t edge = ScalePixel(difference > 0 ? light : dark, level);
        if (filter.kind == Filter::Kind::GradientBevel)
            edge = StopColour(filter.stops, static_cast<std::uint32_t>((255 + difference) / 2 + 0.5));
        if (!filter.onTop)
            edge = filter.inner ? ScalePixel(edge, alpha) : ScalePixel(edge, 255 - alpha);
        picture.pixels[i] = filter.knockout || filter.hideObject ? edge : Over(edge, source);
    }
}

void CFilterPass::Convolve(const Filter& filter, Surface& picture)
{
    const int width = picture.area.Width(), height = picture.area.Height();
    const int columns = static_cast<int>(filter.columns), rows = static_cast<int>(filter.rows);
    constexpr int kMaxSide = 15; // what an editor offers; larger ones cost without bound
    if (columns == 0 || rows == 0 || columns > kMaxSide || rows > kMaxSide ||
        filter.kernel.size() != static_cast<std::size_t>(columns * rows))
        return;
    m_copy = picture.pixels;
    const float divisor = filter.divisor == 0 ? 1 : filter.divisor;
    const std::uint32_t outside = Premultiplied(filter.colour);
    const auto at = [&](int x, int y) -> std::uint32_t
    {
        const bool inside = x >= 0 && y >= 0 && x < width && y < height;
        if (!inside && !filter.clamp)
            return outside;
        x = std::clamp(x, 0, width - 1);
        y = std::clamp(y, 0, height - 1);
        return m_copy[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            std::array<float, 4> sum{};
            for (int j = 0; j < rows; ++j)
                for (int i = 0; i < columns; ++i)
                {
                    const std::uint32_t p = at(x + i - columns / 2, y + j - rows / 2);
                    const float k = filter.kernel[static_cast<std::size_t>(j * columns + i)];
                    for (std::size_t c = 0; c < 4; ++c)
                        sum[c] += k * static_cast<float>(p >> (8 * c) & 255);
                }
            std::uint32_t& target = picture.pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                                   static_cast<std::size_t>(x)];
            const float bias = filter.bias;
            const auto level = [&](std::size_t c, float most)
            {
                const float v = sum[c] / divisor + bias;
                return static_cast<std::uint32_t>((v == v ? std::clamp(v, 0.0F, most) : 0) + 0.5F);
            };
            const std::uint32_t alpha = filter.preserveAlpha ? target >> 24 : level(3, 255);
            const auto most = static_cast<float>(alpha);
            target = level(0, most) | level(1, most) << 8 | level(2, most) << 16 | alpha << 24;
        }
}

void CFilterPass::Apply(const Filter& filter, double scaleX, double scaleY, Surface& picture)
{
    if (picture.area.IsEmpty())
        return;
    switch (filter.kind)
    {
    case Filter::Kind::Shadow:
    case Filter::Kind::GradientGlow:
        return Shadow(filter, scaleX, scaleY, picture);
    case Filter::Kind::Blur:
        return BlurPicture(picture, filter.blurX * scaleX, filter.blurY * scaleY, PassesOf(filter));
    case Filter::Kind::Bevel:
    case Filter::Kind::GradientBevel:
        return Bevel(filter, scaleX, scaleY, picture);
    case Filter::Kind::Convolution:
        return Convolve(filter, picture);
    case Filter::Kind::ColourMatrix:
        return ApplyColourMatrix(filter, picture);
    }
}
} // namespace swf
