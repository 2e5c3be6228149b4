#include "host/info/FileFacts.h"

#include "host/info/FileDate.h"

#include <gtest/gtest.h>

namespace qmx::host
{
TEST(DateText, CountsFrom1601WithAsManyDecimalsAsItTakes)
{
    EXPECT_EQ(DateText(0), "1601-01-01T00:00:00");
    EXPECT_EQ(DateText(1), "1601-01-01T00:00:00.0000001");
    EXPECT_EQ(DateText(116'444'736'000'000'000), "1970-01-01T00:00:00");
    EXPECT_EQ(DateText(125'963'424'005'000'000), "2000-03-01T00:00:00.5");
    EXPECT_EQ(DateText(kLastDate), "9999-12-31T23:59:59.9999999");
}

TEST(LikelyFraction, IsWholeOrSlowedOrInMillionths)
{
    const auto is = [](double rate, std::uint64_t num, std::uint64_t den)
    {
        const RateFraction fraction = LikelyFraction(rate);
        return fraction.num == num && fraction.den == den;
    };
    EXPECT_TRUE(is(30, 30, 1));
    EXPECT_TRUE(is(30'000 / 1001.0, 30'000, 1'001));
    EXPECT_TRUE(is(24'000 / 1001.0, 24'000, 1'001));
    EXPECT_TRUE(is(12.5, 25, 2));
    EXPECT_TRUE(is(27.31, 2'731, 100));
    EXPECT_TRUE(is(0.001, 1, 1'000));
}
} // namespace qmx::host
