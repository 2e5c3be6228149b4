#include "companions/swfrenderer/FilterPass.h"

#include "companions/swfrenderer/Parallel.h"

#include <array>
#include <cmath>

namespace swf
{
namespace
{
/// A window of a width that need not be whole: the outermost two samples count with what is left over.
struct Window
{
    explicit Window(double width) : whole(static_cast<int>(std::floor((width - 1) / 2)))
    {
        const double rest = (width - 1) / 2 - whole;
        inner = static_cast<float>(1 / width);
        outer = static_cast<float>(rest / width);
    }
    std::uint8_t Mean(std::int32_t sum, std::int32_t outermost) const
    {
        return static_cast<std::uint8_t>(
            static_cast<std::int32_t>(static_cast<float>(sum) * inner + static_cast<float>(outermost) * outer + 0.5F));
    }
    int whole; ///< samples to each side that count in full
    float inner, outer;
};

/// The mean of every sample's window along a row of @p n pixels.
/// @param padded  the row between whole + 1 pixels of zeros on either side
template <std::size_t kChannels>
void BlurRow(const std::uint8_t* padded, std::uint8_t* pOut, int n, const Window& window)
{
    std::array<std::int32_t, kChannels> sums{};
    const auto span = static_cast<std::size_t>(2 * window.whole + 1) * kChannels; // of the samples that count in full
    for (std::size_t i = kChannels; i < kChannels + span; i += kChannels)
        for (std::size_t c = 0; c < kChannels; ++c)
            sums[c] += padded[i + c];
    for (int x = 0; x < n; ++x, padded += kChannels, pOut += kChannels)
        for (std::size_t c = 0; c < kChannels; ++c)
        {
            const std::int32_t before = padded[c], after = padded[kChannels + span + c];
            pOut[c] = window.Mean(sums[c], before + after);
            sums[c] += after - padded[kChannels + c];
        }
}

constexpr std::size_t kBlock = 64; ///< bytes that go down the rows together

/// The mean of every sample's window along columns of bytes, for the blocks @p first to @p end of a row.
void BlurColumns(const std::uint8_t* pIn, std::uint8_t* pOut, std::size_t stride, int height, std::size_t first,
                 std::size_t end, const Window& window)
{
    const std::size_t left = first * kBlock, right = std::min(end * kBlock, stride);
    const std::vector<std::uint8_t> nothing(right - left + kBlock, 0);
    std::vector<std::int32_t> sums(right - left + kBlock, 0);
    const auto row = [&](int y)
    { return y >= 0 && y < height ? pIn + static_cast<std::size_t>(y) * stride + left : nothing.data(); };
    for (int y = 0; y <= std::min(window.whole, height - 1); ++y)
        for (std::size_t i = 0; i < right - left; ++i)
            sums[i] += row(y)[i];
    for (int y = 0; y < height; ++y)
    {
        const std::uint8_t* const pBefore = row(y - window.whole - 1);
        const std::uint8_t* const pAfter = row(y + window.whole + 1);
        const std::uint8_t* const pGone = row(y - window.whole);
        std::uint8_t* const pTo = pOut + static_cast<std::size_t>(y) * stride + left;
        const auto one = [&](std::size_t i)
        {
            pTo[i] = window.Mean(sums[i], std::int32_t{pBefore[i]} + pAfter[i]);
            sums[i] += std::int32_t{pAfter[i]} - pGone[i];
        };
        std::size_t at = 0;
        for (; at + kBlock <= right - left; at += kBlock) // of a length that the compiler knows
        {
            std::array<std::uint8_t, kBlock> mean;
            for (std::size_t i = 0; i < kBlock; ++i)
                mean[i] = window.Mean(sums[at + i], std::int32_t{pBefore[at + i]} + pAfter[at + i]);
            for (std::size_t i = 0; i < kBlock; ++i)
                sums[at + i] += std::int32_t{pAfter[at + i]} - pGone[at + i];
            std::copy(mean.begin(), mean.end(), pTo + at);
        }
        for (; at < right - left; ++at)
            one(at);
    }
}

/// @tparam Pixel  one level or four of them
template <class Pixel>
void BlurBoth(std::vector<Pixel>& pixels, std::vector<Pixel>& copy, const Area& area, double widthX, double widthY,
              std::uint32_t passes)
{
    constexpr std::size_t kChannels = sizeof(Pixel);
    const auto width = static_cast<std::size_t>(area.Width()), stride = width * kChannels;
    const auto rows = static_cast<std::uint32_t>(area.Height());
    const auto blocks = static_cast<std::uint32_t>((stride + kBlock - 1) / kBlock);
    copy.resize(pixels.size());
    const auto alongRows = [&](std::uint32_t, std::uint32_t first, std::uint32_t end)
    {
        const Window window(widthX);
        const std::size_t margin = static_cast<std::size_t>(window.whole + 1) * kChannels;
        std::vector<std::uint8_t> padded(stride + 2 * margin, 0);
        for (std::size_t y = first; y < end; ++y)
        {
            const auto* const pRow = reinterpret_cast<const std::uint8_t*>(pixels.data() + y * width);
            std::copy(pRow, pRow + stride, padded.begin() + static_cast<std::ptrdiff_t>(margin));
            BlurRow<kChannels>(padded.data(), reinterpret_cast<std::uint8_t*>(copy.data() + y * width), area.Width(),
                               window);
        }
    };
    const auto alongColumns = [&](std::uint32_t, std::uint32_t first, std::uint32_t end)
    {
        BlurColumns(reinterpret_cast<const std::uint8_t*>(pixels.data()), reinterpret_cast<std::uint8_t*>(copy.data()),
                    stride, area.Height(), first, end, Window(widthY));
    };
    for (std::uint32_t pass = 0; pass < passes; ++pass)
    {
        if (widthX > 1)
        {
            ForEachBand(rows, BandCount(rows, area.Pixels()), alongRows);
            pixels.swap(copy);
        }
        if (widthY > 1)
        {
            ForEachBand(blocks, BandCount(blocks, area.Pixels()), alongColumns);
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
    const std::vector<std::uint8_t> nothing(static_cast<std::size_t>(width), 0);
    const auto row = [&](int y)
    {
        return y < 0 || y >= height ? nothing.data()
                                    : m_alpha.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
    };
    const auto shiftRow = [&](int y)
    {
        const std::uint8_t *const pTop = row(y + wholeY), *const pBottom = row(y + wholeY + 1);
        std::uint8_t* const pOut = m_shifted.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
        const auto mix = [&](std::uint32_t top0, std::uint32_t top1, std::uint32_t bottom0, std::uint32_t bottom1)
        {
            const std::uint32_t top = top0 * (256 - shareX) + top1 * shareX;
            const std::uint32_t bottom = bottom0 * (256 - shareX) + bottom1 * shareX;
            return static_cast<std::uint8_t>((top * (256 - shareY) + bottom * shareY + 32'768) >> 16);
        };
        const auto at = [width](const std::uint8_t* p, int x) -> std::uint32_t
        { return x >= 0 && x < width ? p[x] : std::uint8_t{0}; };
        const int inside = std::clamp(-wholeX, 0, width), outside = std::clamp(width - 1 - wholeX, inside, width);
        for (int x = 0; x < inside; ++x)
            pOut[x] = mix(at(pTop, x + wholeX), at(pTop, x + wholeX + 1), at(pBottom, x + wholeX),
                          at(pBottom, x + wholeX + 1));
        for (int x = inside; x < outside; ++x)
            pOut[x] = mix(pTop[x + wholeX], pTop[x + wholeX + 1], pBottom[x + wholeX], pBottom[x + wholeX + 1]);
        for (int x = outside; x < width; ++x)
            pOut[x] = mix(at(pTop, x + wholeX), at(pTop, x + wholeX + 1), at(pBottom, x + wholeX),
                          at(pBottom, x + wholeX + 1));
    };
    const auto rows = static_cast<std::uint32_t>(height);
    ForEachBand(rows, BandCount(rows, area.Pixels()),
                [&](std::uint32_t, std::uint32_t first, std::uint32_t end)
                {
                    for (std::uint32_t y = first; y < end; ++y)
                        shiftRow(static_cast<int>(y));
                });
}

void CFilterPass::ReadAlpha(const Surface& picture)
{
    m_alpha.resize(picture.pixels.size());
    for (std::size_t i = 0; i < m_alpha.size(); ++i)
        m_alpha[i] = static_cast<std::uint8_t>(picture.pixels[i] >> 24);
}

void CFilterPass::Shadow(const Filter& filter, double scaleX, double scaleY, Surface& picture)
{
    ReadAlpha(picture);
    BlurLevels(m_alpha, picture.area, filter.blurX * scaleX, filter.blurY * scaleY, PassesOf(filter));
    ReadShifted(picture.area, filter.distance * std::cos(filter.angle) * scaleX,
                filter.distance * std::sin(filter.angle) * scaleY);
    const bool gradient = filter.kind == Filter::Kind::GradientGlow;
    const std::uint32_t solid = Premultiplied(filter.colour);
    std::array<std::uint32_t, 256> ramp{}; // the shadow's colour for every level of the shifted alpha
    for (std::uint32_t i = 0; i < ramp.size(); ++i)
    {
        const std::uint32_t shifted = filter.inner ? 255U - i : i;
        const auto level = static_cast<std::uint32_t>(std::min(255.0, shifted * filter.strength + 0.5));
        ramp[i] = gradient ? StopColour(filter.stops, level) : ScalePixel(solid, level);
    }
    const bool alone = filter.knockout || filter.hideObject;
    const auto shade = [&](std::uint32_t source, std::uint32_t shadow)
    {
        const std::uint32_t alpha = source >> 24;
        if (filter.inner)
            return alone ? ScalePixel(shadow, alpha) : Over(ScalePixel(shadow, alpha), source);
        if (filter.knockout)
            return ScalePixel(shadow, 255 - alpha);
        return filter.hideObject ? shadow : Over(source, shadow);
    };
    const auto rows = static_cast<std::uint32_t>(picture.area.Height());
    const auto width = static_cast<std::size_t>(picture.area.Width());
    ForEachBand(rows, BandCount(rows, picture.area.Pixels()),
                [&](std::uint32_t, std::uint32_t first, std::uint32_t end)
                {
                    for (std::size_t i = first * width; i < end * width; ++i)
                        picture.pixels[i] = shade(picture.pixels[i], ramp[m_shifted[i]]);
                });
}

/// Light from one side, shadow from the other: the difference of the alpha moved both ways.
void CFilterPass::Bevel(const Filter& filter, double scaleX, double scaleY, Surface& picture)
{
    ReadAlpha(picture);
    BlurLevels(m_alpha, picture.area, filter.blurX * scaleX, filter.blurY * scaleY, PassesOf(filter));
    const double dx = filter.distance * std::cos(filter.angle) * scaleX,
                 dy = filter.distance * std::sin(filter.angle) * scaleY;
    ReadShifted(picture.area, dx, dy);
    m_other = m_shifted;
    ReadShifted(picture.area, -dx, -dy);
    const std::uint32_t light = Premultiplied(filter.highlight), dark = Premultiplied(filter.colour);
    std::array<std::uint32_t, 511> ramp{}; // the bevel's colour for every difference of the two, from -255
    for (int i = 0; i < static_cast<int>(ramp.size()); ++i)
    {
        const double difference = std::clamp((i - 255) * filter.strength, -255.0, 255.0);
        const auto level = static_cast<std::uint32_t>(std::abs(difference) + 0.5);
        ramp[static_cast<std::size_t>(i)] =
            filter.kind == Filter::Kind::GradientBevel
                ? StopColour(filter.stops, static_cast<std::uint32_t>((255 + difference) / 2 + 0.5))
                : ScalePixel(difference > 0 ? light : dark, level);
    }
    const bool alone = filter.knockout || filter.hideObject;
    const auto shine = [&](std::size_t i)
    {
        const std::uint32_t source = picture.pixels[i], alpha = source >> 24;
        std::uint32_t edge = ramp[static_cast<std::size_t>(255 + int{m_other[i]} - int{m_shifted[i]})];
        if (!filter.onTop)
            edge = ScalePixel(edge, filter.inner ? alpha : 255 - alpha);
        picture.pixels[i] = alone ? edge : Over(edge, source);
    };
    const auto rows = static_cast<std::uint32_t>(picture.area.Height());
    const auto width = static_cast<std::size_t>(picture.area.Width());
    ForEachBand(rows, BandCount(rows, picture.area.Pixels()),
                [&](std::uint32_t, std::uint32_t first, std::uint32_t end)
                {
                    for (std::size_t i = first * width; i < end * width; ++i)
                        shine(i);
                });
}

namespace
{
/// The rows of a picture that a kernel's row meets, with what lies beyond both ends.
class CKernelRows
{
public:
    CKernelRows(const Filter& filter, const std::vector<std::uint32_t>& pixels, int width, int height)
        : m_filter(filter), m_pixels(pixels), m_width(width), m_height(height), m_outside(Premultiplied(filter.colour)),
          m_row(static_cast<std::size_t>(width) + filter.columns + kBlock)
    {
    }
    /// Adds to @p sums, four channels to the pixel, what row @p j of the kernel gives to row @p y of the picture.
    void Add(int y, std::uint32_t j, std::vector<float>& sums)
    {
        const int before = static_cast<int>(m_filter.columns) / 2;
        const int row = y + static_cast<int>(j) - static_cast<int>(m_filter.rows) / 2;
        if (!m_filter.clamp && (row < 0 || row >= m_height))
            std::fill(m_row.begin(), m_row.end(), m_outside);
        else
        {
            const std::uint32_t* const p =
                m_pixels.data() +
                static_cast<std::size_t>(std::clamp(row, 0, m_height - 1)) * static_cast<std::size_t>(m_width);
            const auto out =
                std::copy(p, p + m_width, std::fill_n(m_row.begin(), before, m_filter.clamp ? p[0] : m_outside));
            std::fill(out, m_row.end(), m_filter.clamp ? p[m_width - 1] : m_outside);
        }
        for (std::uint32_t i = 0; i < m_filter.columns; ++i)
        {
            const float factor = m_filter.kernel[j * m_filter.columns + i];
            const auto* const pLevels = reinterpret_cast<const std::uint8_t*>(m_row.data() + i);
            // Blocks of a length that the compiler knows; the buffers have room for a whole last one.
            for (std::size_t at = 0; at < static_cast<std::size_t>(m_width) * 4; at += kBlock * 4)
                for (std::size_t k = 0; k < kBlock * 4; ++k)
                    sums[at + k] += factor * static_cast<float>(pLevels[at + k]);
        }
    }
    static constexpr std::size_t kBlock = 16; ///< pixels

private:
    const Filter& m_filter;
    const std::vector<std::uint32_t>& m_pixels;
    int m_width, m_height;
    std::uint32_t m_outside;
    std::vector<std::uint32_t> m_row;
};
} // namespace

void CFilterPass::Convolve(const Filter& filter, Surface& picture)
{
    const int width = picture.area.Width(), height = picture.area.Height();
    constexpr std::uint32_t kMaxSide = 15; // what an editor offers; larger ones cost without bound
    if (filter.columns == 0 || filter.rows == 0 || filter.columns > kMaxSide || filter.rows > kMaxSide ||
        filter.kernel.size() != std::size_t{filter.columns} * filter.rows)
        return;
    m_copy = picture.pixels;
    const float divisor = filter.divisor == 0 ? 1 : filter.divisor;
    const auto convolveRow = [&](int y, CKernelRows& rows, std::vector<float>& sums)
    {
        std::fill(sums.begin(), sums.end(), 0.0F);
        for (std::uint32_t j = 0; j < filter.rows; ++j)
            rows.Add(y, j, sums);
        std::uint32_t* const pRow = picture.Row(y + picture.area.top);
        for (std::size_t x = 0; x < static_cast<std::size_t>(width); ++x)
        {
            const auto level = [&](std::size_t c, float most)
            {
                const float v = sums[x * 4 + c] / divisor + filter.bias;
                return static_cast<std::uint32_t>((v == v ? std::clamp(v, 0.0F, most) : 0) + 0.5F);
            };
            const std::uint32_t alpha = filter.preserveAlpha ? pRow[x] >> 24 : level(3, 255);
            const auto most = static_cast<float>(alpha);
            pRow[x] = level(0, most) | level(1, most) << 8 | level(2, most) << 16 | alpha << 24;
        }
    };
    ForEachBand(static_cast<std::uint32_t>(height),
                BandCount(static_cast<std::uint32_t>(height), picture.area.Pixels() * filter.kernel.size()),
                [&](std::uint32_t, std::uint32_t first, std::uint32_t end)
                {
                    CKernelRows rows(filter, m_copy, width, height);
                    std::vector<float> sums((static_cast<std::size_t>(width) + CKernelRows::kBlock) * 4);
                    for (std::uint32_t y = first; y < end; ++y)
                        convolveRow(static_cast<int>(y), rows, sums);
                });
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
