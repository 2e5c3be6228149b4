#include "tests/support/FrameStripReader.h"

#include "tests/support/FrameStripCode.h"

namespace test_support
{
namespace
{
/// Levels below the first are black, above the second white; coding noise stays far from both.
constexpr double kBlackBelow = 90, kWhiteAbove = 165;

/// @param level  brightness of the pixel x, y
template <class Level> std::optional<std::uint32_t> ReadStrip(std::uint32_t width, std::uint32_t height, Level level)
{
    const double block = width / static_cast<double>(kStripColumns);
    if (block < 2 || block * kStripRows > height)
        return std::nullopt;
    std::uint32_t rows[kStripRows] = {};
    for (std::uint32_t row = 0; row < kStripRows; ++row)
        for (std::uint32_t column = 0; column < kStripColumns; ++column)
        {
            // The middle half of the block, where its neighbours do not bleed in.
            const auto from = [block](std::uint32_t i) { return static_cast<std::uint32_t>((i + 0.25) * block); };
            const auto to = [block](std::uint32_t i) { return static_cast<std::uint32_t>((i + 0.75) * block); };
            double sum = 0, count = 0;
            for (std::uint32_t y = from(row); y <= to(row); ++y)
                for (std::uint32_t x = from(column); x <= to(column); ++x, ++count)
                    sum += level(x, y);
            const double mean = sum / count;
            if (mean >= kBlackBelow && mean <= kWhiteAbove)
                return std::nullopt;
            rows[row] = rows[row] << 1 | (mean > kWhiteAbove ? 1U : 0U);
        }
    if (rows[1] != FrameStripCheck(static_cast<std::uint16_t>(rows[0])))
        return std::nullopt;
    return rows[0];
}
} // namespace

std::optional<std::uint32_t> ReadFrameStrip(const Picture& picture)
{
    if (picture.IsEmpty())
        return std::nullopt;
    return ReadStrip(picture.width, picture.height,
                     [&picture](std::uint32_t x, std::uint32_t y)
                     {
                         const std::uint8_t* const p = picture.At(x, y);
                         return (p[0] + p[1] + p[2]) / 3.0;
                     });
}

std::optional<std::uint32_t> ReadFrameStrip(const std::uint8_t* pLuma, std::uint32_t width, std::uint32_t height,
                                            std::ptrdiff_t stride)
{
    return ReadStrip(width, height,
                     [pLuma, stride](std::uint32_t x, std::uint32_t y)
                     { return static_cast<double>(pLuma[static_cast<std::ptrdiff_t>(y) * stride + x]); });
}
} // namespace test_support
