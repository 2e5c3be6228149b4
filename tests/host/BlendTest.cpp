#include "host/compose/Blend.h"

#include "tests/support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace qmx::host
{
namespace
{
using Pixels = std::vector<std::uint8_t>;

std::uint8_t Expected(AlphaMode mode, std::uint8_t source, std::uint8_t target, std::uint8_t alpha)
{
    const double rest = target * (255.0 - alpha) / 255.0;
    const double value = mode == AlphaMode::Opaque     ? source
                         : mode == AlphaMode::Straight ? std::floor(source * alpha / 255.0 + rest + 0.5)
                                                       : std::min(255.0, source + std::floor(rest + 0.5));
    return static_cast<std::uint8_t>(value);
}

TEST(DrawRow, EveryValueIsTheRoundedFormula)
{
    for (const AlphaMode mode : {AlphaMode::Opaque, AlphaMode::Straight, AlphaMode::Premultiplied})
    {
        for (int alpha = 0; alpha < 256; ++alpha)
        {
            for (int source = 0; source < 256; source += 5)
            {
                Pixels from(1024);
                Pixels to(1024);
                for (std::size_t i = 0; i < 256; ++i)
                {
                    const std::uint8_t channels[3] = {static_cast<std::uint8_t>(source),
                                                      static_cast<std::uint8_t>(255 - source),
                                                      static_cast<std::uint8_t>(source ^ 0x55)};
                    std::copy_n(channels, 3, &from[i * 4]);
                    from[i * 4 + 3] = static_cast<std::uint8_t>(alpha);
                    std::fill_n(&to[i * 4], 3, static_cast<std::uint8_t>(i));
                    to[i * 4 + 3] = 255;
                }
                DrawRow(to.data(), from.data(), 256, mode);
                for (std::size_t i = 0; i < 256; ++i)
                {
                    for (std::size_t c = 0; c < 3; ++c)
                        ASSERT_EQ(to[i * 4 + c], Expected(mode, from[i * 4 + c], static_cast<std::uint8_t>(i),
                                                          static_cast<std::uint8_t>(alpha)))
                            << "mode " << static_cast<int>(mode) << " alpha " << alpha << " target " << i;
                    ASSERT_EQ(to[i * 4 + 3], 255);
                }
            }
        }
    }
}

TEST(DrawRow, EveryLengthTouchesItsOwnPixelsOnly)
{
    test_support::Random random;
    for (const AlphaMode mode : {AlphaMode::Opaque, AlphaMode::Straight, AlphaMode::Premultiplied})
    {
        for (std::size_t pixels = 0; pixels <= 67; ++pixels)
        {
            Pixels from(272);
            Pixels to(272);
            std::generate(from.begin(), from.end(), [&] { return static_cast<std::uint8_t>(random.Below(256)); });
            // Runs of one alpha, so that whole blocks are empty or solid now and then.
            for (std::size_t i = 0; i < 68; ++i)
                from[i * 4 + 3] = i < 20 ? 0 : i < 40 ? 255 : from[i * 4 + 3];
            std::generate(to.begin(), to.end(), [&] { return static_cast<std::uint8_t>(random.Below(256)); });
            const Pixels before = to;
            DrawRow(to.data(), from.data(), pixels, mode);
            for (std::size_t i = 0; i < 68; ++i)
            {
                for (std::size_t c = 0; c < 3; ++c)
                {
                    const std::uint8_t drawn = Expected(mode, from[i * 4 + c], before[i * 4 + c], from[i * 4 + 3]);
                    ASSERT_EQ(to[i * 4 + c], i < pixels ? drawn : before[i * 4 + c]) << "length " << pixels;
                }
            }
        }
    }
}

TEST(FillRowBlack, MakesOpaqueBlack)
{
    Pixels row(12, 7);
    FillRowBlack(row.data(), 2);
    EXPECT_EQ(row, (Pixels{0, 0, 0, 255, 0, 0, 0, 255, 7, 7, 7, 7}));
}

TEST(CopyRowStraight, DividesPremultipliedColoursByTheirAlpha)
{
    Pixels from(256 * 256 * 4);
    for (std::size_t i = 0; i < from.size() / 4; ++i)
    {
        const std::uint8_t alpha = static_cast<std::uint8_t>(i / 256);
        const std::uint8_t level = static_cast<std::uint8_t>(i % 256); // above the alpha: light that is added
        const std::uint8_t pixel[4] = {level, static_cast<std::uint8_t>(level / 2), alpha, alpha};
        std::copy_n(pixel, 4, &from[i * 4]);
    }
    Pixels to(from.size(), 7);
    CopyRowStraight(to.data(), from.data(), from.size() / 4, AlphaMode::Premultiplied);
    for (std::size_t i = 0; i < from.size(); ++i)
    {
        const std::uint8_t alpha = from[i | 3U];
        const double level = alpha == 0 ? 0 : std::min(255.0, std::floor(from[i] * 255.0 / alpha + 0.5));
        ASSERT_EQ(to[i], i % 4 == 3 ? alpha : level) << "byte " << i;
    }
}

TEST(CopyRowStraight, KeepsStraightPixelsAndMakesOthersOpaque)
{
    const Pixels from{1, 2, 3, 0, 4, 5, 6, 128, 7, 8, 9, 255};
    Pixels to(12);
    CopyRowStraight(to.data(), from.data(), 3, AlphaMode::Straight);
    EXPECT_EQ(to, from);
    CopyRowStraight(to.data(), from.data(), 3, AlphaMode::Opaque);
    EXPECT_EQ(to, (Pixels{1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 255}));
}
} // namespace
} // namespace qmx::host
