#include "tests/companions/pixelutility/TestImage.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr std::uint8_t kGap = 0xA5;
}

TestImage::TestImage(std::uint32_t width, std::uint32_t height, std::uint32_t gap)
    : m_bytes((std::size_t{width} * 4 + gap) * height, kGap)
{
    m_info.pData = m_bytes.data();
    m_info.nWidth = width;
    m_info.nHeight = height;
    m_info.nStride = width * 4 + gap;
}

void TestImage::FillRandomly(TestRandom& random)
{
    for (std::uint32_t y = 0; y < Height(); ++y)
        for (std::uint32_t x = 0; x < Width(); ++x)
            Set(x, y, {random.Byte(), random.Byte(), random.Byte(), random.Byte()});
}

void TestImage::Fill(const TestPixel& pixel)
{
    for (std::uint32_t y = 0; y < Height(); ++y)
        for (std::uint32_t x = 0; x < Width(); ++x)
            Set(x, y, pixel);
}

void TestImage::Set(std::uint32_t x, std::uint32_t y, const TestPixel& pixel)
{
    std::copy(pixel.begin(), pixel.end(), &m_bytes[std::size_t{y} * m_info.nStride + std::size_t{x} * 4]);
}

TestPixel TestImage::At(std::uint32_t x, std::uint32_t y) const
{
    TestPixel pixel;
    std::copy_n(&m_bytes[std::size_t{y} * m_info.nStride + std::size_t{x} * 4], 4, pixel.begin());
    return pixel;
}

bool TestImage::GapsAreUntouched() const
{
    for (std::size_t y = 0; y < Height(); ++y)
        for (std::size_t i = std::size_t{Width()} * 4; i < m_info.nStride; ++i)
            if (m_bytes[y * m_info.nStride + i] != kGap)
                return false;
    return true;
}

TestImage Turned(const TestImage& source, std::uint32_t angle)
{
    const std::uint32_t w = source.Width();
    const std::uint32_t h = source.Height();
    const bool quarter = angle == 90 || angle == 270;
    TestImage turned(quarter ? h : w, quarter ? w : h);
    for (std::uint32_t y = 0; y < h; ++y)
    {
        for (std::uint32_t x = 0; x < w; ++x)
        {
            if (angle == 0)
                turned.Set(x, y, source.At(x, y));
            else if (angle == 90) // the top row becomes the right-hand column
                turned.Set(h - 1 - y, x, source.At(x, y));
            else if (angle == 180)
                turned.Set(w - 1 - x, h - 1 - y, source.At(x, y));
            else
                turned.Set(y, w - 1 - x, source.At(x, y));
        }
    }
    return turned;
}

std::vector<double> ExactShares(std::uint32_t source, std::uint32_t target, std::uint32_t index, bool area)
{
    std::vector<double> shares(source, 0.0);
    const double ratio = static_cast<double>(source) / target;
    if (area && target < source)
    {
        const double start = index * ratio;
        const double end = start + ratio;
        for (std::uint32_t j = 0; j < source; ++j)
            shares[j] = std::max(0.0, std::min(end, j + 1.0) - std::max(start, static_cast<double>(j))) / ratio;
        return shares;
    }
    const double centre = std::clamp((index + 0.5) * ratio - 0.5, 0.0, source - 1.0);
    const auto first = static_cast<std::uint32_t>(centre);
    shares[first] += 1.0 - (centre - first);
    shares[std::min(first + 1, source - 1)] += centre - first;
    return shares;
}

double WorstScalingError(const TestImage& source, const TestImage& actual, bool area)
{
    double worst = 0.0;
    for (std::uint32_t y = 0; y < actual.Height(); ++y)
    {
        const std::vector<double> rows = ExactShares(source.Height(), actual.Height(), y, area);
        // Down the columns first: the sums are shared by all pixels of the row.
        std::vector<std::array<double, 4>> sums(source.Width());
        for (std::uint32_t v = 0; v < source.Height(); ++v)
            for (std::uint32_t u = 0; rows[v] > 0.0 && u < source.Width(); ++u)
                for (std::size_t c = 0; c < 4; ++c)
                    sums[u][c] += rows[v] * source.At(u, v)[c];
        for (std::uint32_t x = 0; x < actual.Width(); ++x)
        {
            const std::vector<double> columns = ExactShares(source.Width(), actual.Width(), x, area);
            std::array<double, 4> exact{};
            for (std::uint32_t u = 0; u < source.Width(); ++u)
                for (std::size_t c = 0; c < 4; ++c)
                    exact[c] += columns[u] * sums[u][c];
            for (std::size_t c = 0; c < 4; ++c)
                worst = std::max(worst, std::abs(actual.At(x, y)[c] - exact[c]));
        }
    }
    return worst;
}
