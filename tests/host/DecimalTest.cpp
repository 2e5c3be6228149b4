#include "host/project/Decimal.h"

#include <gtest/gtest.h>

namespace qmx::host
{
namespace
{
std::optional<std::uint64_t> Ticks(std::string_view text)
{
    const std::optional<Decimal> decimal = Decimal::Parse(text);
    return decimal ? decimal->Scaled(7) : std::nullopt;
}

TEST(Decimal, SecondsBecomeHundredNanosecondsExactly)
{
    EXPECT_EQ(Ticks("0"), 0U);
    EXPECT_EQ(Ticks("1"), 10'000'000U);
    EXPECT_EQ(Ticks("0.1"), 1'000'000U);
    EXPECT_EQ(Ticks(".5"), 5'000'000U);
    EXPECT_EQ(Ticks("5."), 50'000'000U);
    EXPECT_EQ(Ticks("0.0000001"), 1U);
    EXPECT_EQ(Ticks("86400.1234567"), 864'001'234'567U);
    EXPECT_EQ(Ticks("1e3"), 10'000'000'000U);
    EXPECT_EQ(Ticks("15E-1"), 15'000'000U);
    EXPECT_EQ(Ticks("2.5e+2"), 2'500'000'000U);
}

TEST(Decimal, TimesRoundToTheNearestAndHalvesUp)
{
    EXPECT_EQ(Ticks("0.00000004"), 0U);
    EXPECT_EQ(Ticks("0.00000005"), 1U);
    EXPECT_EQ(Ticks("0.000000149999999999999999999999999"), 1U);
    EXPECT_EQ(Ticks("3.33333333333333333333"), 33'333'333U);
    EXPECT_EQ(Ticks("0.1000000000000000055511151231257827"), 1'000'000U); // how some programs write a tenth
    EXPECT_EQ(Ticks("2.1999999999999997"), 22'000'000U);                  // 0.1 added up in binary
}

TEST(Decimal, LeadingZerosAndManyDigitsKeepTheirPlace)
{
    EXPECT_EQ(Ticks("000000000000000000000000012.5"), 125'000'000U);
    EXPECT_EQ(Ticks("0.00000000000000000000000000000000001e35"), 10'000'000U);
    EXPECT_EQ(Ticks("123456789012345678901234567890e-25"), 123'456'789'012U); // 12,345.678901234…
}

TEST(Decimal, NumbersTooLargeForSixtyFourBitsHaveNoScaledValue)
{
    EXPECT_EQ(Ticks("1e12"), std::nullopt);
    EXPECT_EQ(Ticks("1e999999999999"), std::nullopt);
    EXPECT_EQ(Ticks("99999999999999999999999999999999"), std::nullopt);
    EXPECT_EQ(Ticks("0e999999999999"), 0U);
    EXPECT_EQ(Ticks("1e-999999999999"), 0U);
}

TEST(Decimal, EverythingElseIsRefused)
{
    for (const char* const pText : {"", "-", ".", "e5", "1e", "1e+", "+1", " 1", "1 ", "1,5", "1.5.0", "0x10", "nan",
                                    "inf", "-inf", "1:30", "--1", "1e1.5", "\xD9\xA1"})
        EXPECT_FALSE(Decimal::Parse(pText)) << pText;
}

TEST(Decimal, ASignOnZeroDoesNotMakeItNegative)
{
    EXPECT_FALSE(Decimal::Parse("-0.0")->IsNegative());
    EXPECT_TRUE(Decimal::Parse("-0.1")->IsNegative());
    EXPECT_EQ(Ticks("-0.1"), 1'000'000U); // the size is the same
}

TEST(Decimal, FractionsComeInLowestTerms)
{
    std::uint64_t numerator = 0;
    std::uint64_t denominator = 0;
    ASSERT_TRUE(Decimal::Parse("12.50")->ToFraction(1000, numerator, denominator));
    EXPECT_EQ(numerator, 25U);
    EXPECT_EQ(denominator, 2U);
    ASSERT_TRUE(Decimal::Parse("6e1")->ToFraction(1000, numerator, denominator));
    EXPECT_EQ(numerator, 60U);
    EXPECT_EQ(denominator, 1U);
    EXPECT_FALSE(Decimal::Parse("0.001")->ToFraction(999, numerator, denominator));
    EXPECT_FALSE(Decimal::Parse("1e4")->ToFraction(999, numerator, denominator));
    EXPECT_FALSE(Decimal::Parse("1e-30")->ToFraction(1'000'000, numerator, denominator));
    EXPECT_FALSE(Decimal::Parse("1e9999")->ToFraction(1'000'000, numerator, denominator));
}

TEST(SecondsText, ShowsAllSevenDecimals)
{
    EXPECT_EQ(SecondsText(0), "0.0000000");
    EXPECT_EQ(SecondsText(15'000'000), "1.5000000");
    EXPECT_EQ(SecondsText(10'000'000'001), "1000.0000001");
}

TEST(NumberText, IsTheShortestThatReadsBack)
{
    EXPECT_EQ(NumberText(10.0), "10");
    EXPECT_EQ(NumberText(0.1), "0.1");
    EXPECT_EQ(NumberText(10.01), "10.01");
}
} // namespace
} // namespace qmx::host
