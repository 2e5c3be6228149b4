#include "effects/Blend.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <vector>

namespace qmx::effects
{
namespace
{
using Pixel = std::array<std::uint8_t, 4>;

Pixel Mixed(const Pixel& first, const Pixel& second, std::uint32_t weight)
{
    Pixel output{};
    MixPixel(output.data(), first.data(), second.data(), weight);
    return output;
}

/// The rule in double precision: colours weigh as much as their alpha.
Pixel Exact(const Pixel& first, const Pixel& second, std::uint32_t weight)
{
    const double share = weight / 256.0;
    const double alpha = first[3] * (1 - share) + second[3] * share;
    Pixel output{};
    for (std::size_t c = 0; c < 3 && alpha > 0; ++c)
        output[c] = static_cast<std::uint8_t>(
            std::lround((first[c] * first[3] * (1 - share) + second[c] * second[3] * share) / alpha));
    output[3] = static_cast<std::uint8_t>(std::lround(alpha));
    return output;
}

TEST(MixPixel, IsTheFirstOrTheSecondAtTheEnds)
{
    const Pixel first{10, 20, 30, 40};
    const Pixel second{50, 60, 70, 80};
    EXPECT_EQ(Mixed(first, second, 0), first);
    EXPECT_EQ(Mixed(first, second, kFullWeight), second);
}

TEST(MixPixel, ATransparentPixelLendsNoColour)
{
    EXPECT_EQ(Mixed({0, 0, 0, 0}, {200, 100, 50, 255}, 128), (Pixel{200, 100, 50, 128}));
    EXPECT_EQ(Mixed({9, 9, 9, 0}, {8, 8, 8, 0}, 128), (Pixel{0, 0, 0, 0}));
}

TEST(MixRow, KeepsWithinOneLevelOfTheRuleForEveryKindOfPixel)
{
    std::vector<std::uint8_t> first(4 * 331);
    std::vector<std::uint8_t> second(first.size());
    std::uint32_t seed = 1;
    const auto next = [&] { return static_cast<std::uint8_t>((seed = seed * 1664525U + 1013904223U) >> 24); };
    for (std::size_t i = 0; i < first.size(); ++i)
    {
        const bool opaque = i / 4 >= 100 && i / 4 < 250 && i % 4 == 3;
        first[i] = opaque ? 255 : next();
        second[i] = opaque ? 255 : next();
    }
    std::vector<std::uint8_t> output(first.size());
    std::vector<std::uint8_t> byWeights(first.size());
    for (const std::uint32_t weight : {1U, 77U, 128U, 255U})
    {
        MixRow(output.data(), first.data(), second.data(), 331, weight);
        const std::vector<std::uint16_t> weights(331, static_cast<std::uint16_t>(weight));
        MixRow(byWeights.data(), first.data(), second.data(), 331, weights.data());
        EXPECT_EQ(output, byWeights);
        for (std::size_t i = 0; i < first.size(); i += 4)
        {
            Pixel a;
            Pixel b;
            std::memcpy(a.data(), &first[i], 4);
            std::memcpy(b.data(), &second[i], 4);
            const Pixel exact = Exact(a, b, weight);
            for (std::size_t c = 0; c < 4; ++c)
                ASSERT_NEAR(output[i + c], exact[c], 1) << "pixel " << i / 4 << ", weight " << weight;
        }
    }
}

TEST(MixRow, EqualPixelsStayAsTheyAre)
{
    std::vector<std::uint8_t> row(4 * 256);
    for (std::size_t i = 0; i < row.size(); ++i)
        row[i] = static_cast<std::uint8_t>(i % 4 == 3 ? 255 : i / 4);
    std::vector<std::uint8_t> output(row.size());
    for (std::uint32_t weight = 0; weight <= kFullWeight; ++weight)
    {
        MixRow(output.data(), row.data(), row.data(), 256, weight);
        ASSERT_EQ(output, row) << weight;
    }
}

TEST(WeightOf, CutsWhatLiesOutside)
{
    EXPECT_EQ(WeightOf(-1), 0U);
    EXPECT_EQ(WeightOf(0), 0U);
    EXPECT_EQ(WeightOf(0.5F), 128U);
    EXPECT_EQ(WeightOf(1), kFullWeight);
    EXPECT_EQ(WeightOf(1e30F), kFullWeight);
    EXPECT_EQ(WeightOf(NAN), 0U);
}
} // namespace
} // namespace qmx::effects
