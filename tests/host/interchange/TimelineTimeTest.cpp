#include "host/interchange/TimelineTime.h"
#include "host/project/FrameRate.h"

#include <gtest/gtest.h>

#include <random>

namespace qmx::host
{
namespace
{
TimelineRate Rate(const char* pText)
{
    const std::optional<TimelineRate> rate = TimelineRate::Parse(pText);
    EXPECT_TRUE(rate) << pText;
    return rate.value_or(TimelineRate());
}

TEST(TimelineRate, WholeRatesAreThemselves)
{
    for (const std::uint64_t rate : {1U, 24U, 25U, 30U, 50U, 60U, 120U, 1000U, 44'100U, 48'000U, 96'000U, 10'000'000U})
    {
        EXPECT_EQ(Rate(std::to_string(rate).c_str()), (TimelineRate{rate, 1}));
        EXPECT_EQ(Rate((std::to_string(rate) + ".0").c_str()), (TimelineRate{rate, 1}));
    }
}

TEST(TimelineRate, DecimalsOfSlowedDownRatesAreTheRatesTheyStandFor)
{
    for (const char* const pText : {"29.97", "29.970", "29.97003", "29.97002997002997", "29.970029970029973"})
        EXPECT_EQ(Rate(pText), (TimelineRate{30'000, 1001})) << pText;
    for (const char* const pText : {"23.976", "23.98", "23.97602", "23.976023976023978", "23.976023976023976"})
        EXPECT_EQ(Rate(pText), (TimelineRate{24'000, 1001})) << pText;
    for (const char* const pText : {"59.94", "59.94005994005994"})
        EXPECT_EQ(Rate(pText), (TimelineRate{60'000, 1001})) << pText;
    EXPECT_EQ(Rate("47.952"), (TimelineRate{48'000, 1001}));
    EXPECT_EQ(Rate("119.88"), (TimelineRate{120'000, 1001}));
    EXPECT_EQ(Rate("47952.04795204795"), (TimelineRate{48'000'000, 1001}));
}

TEST(TimelineRate, OtherDecimalsAreExactFractions)
{
    EXPECT_EQ(Rate("12.5"), (TimelineRate{25, 2}));
    EXPECT_EQ(Rate("15.15"), (TimelineRate{303, 20}));
    EXPECT_EQ(Rate("0.001"), (TimelineRate{1, 1000}));
    EXPECT_EQ(Rate("23.5"), (TimelineRate{47, 2}));
    EXPECT_EQ(Rate("1e3"), (TimelineRate{1000, 1}));
    EXPECT_EQ(Rate("254016000000"), (TimelineRate{254'016'000'000, 1}));
    EXPECT_EQ(Rate("17.123456789012345"), (TimelineRate{17'123'457, 1'000'000})); // to the sixth decimal
}

TEST(TimelineRate, RatesWithoutMeaningAreRefused)
{
    for (const char* const pText : {"0", "0.0", "-24", "nan", "inf", "", "24fps", "0.0009", "1e13", "1e400", "24,0"})
        EXPECT_FALSE(TimelineRate::Parse(pText)) << pText;
}

TEST(TimelineRate, TextsReadBackAsTheSameRate)
{
    for (const TimelineRate& rate :
         {TimelineRate{24, 1}, TimelineRate{24'000, 1001}, TimelineRate{25, 1}, TimelineRate{30'000, 1001},
          TimelineRate{60'000, 1001}, TimelineRate{48'000, 1}, TimelineRate{10'000'000, 1}, TimelineRate{25, 2}})
        EXPECT_EQ(TimelineRate::Parse(rate.Text()), rate) << rate.Text();
    EXPECT_EQ((TimelineRate{24, 1}).Text(), "24.0");
    EXPECT_EQ((TimelineRate{10'000'000, 1}).Text(), "10000000.0");
    EXPECT_EQ((TimelineRate{30'000, 1001}).Text(), "29.97002997002997");
}

TEST(TimelineTime, FramesStartWhereProjectsPutThem)
{
    for (const TimelineRate& rate :
         {TimelineRate{24, 1}, TimelineRate{25, 1}, TimelineRate{30, 1}, TimelineRate{24'000, 1001},
          TimelineRate{30'000, 1001}, TimelineRate{60'000, 1001}, TimelineRate{12'345, 678}})
    {
        const std::optional<FrameRate> frames = FrameRate::FromFraction(rate.numerator, rate.denominator);
        ASSERT_TRUE(frames);
        for (const std::int64_t frame : {0, 1, 2, 7, 29, 30, 1000, 107'892, 9'999'999})
        {
            const TimelineTime time = TimelineTime::FromCount(frame, rate);
            EXPECT_EQ(static_cast<std::uint64_t>(time.FloorUnits()),
                      frames->TimeOfFrame(static_cast<std::uint64_t>(frame)));
            EXPECT_EQ(time.NearestCount(rate), frame);
        }
    }
}

TEST(TimelineTime, AMillionFramesAddUpToTheMillionthFrame)
{
    const TimelineRate rate{30'000, 1001};
    const TimelineTime frame = TimelineTime::FromCount(1, rate);
    TimelineTime sum;
    for (int i = 0; i < 1'000'000; ++i)
        sum = sum + frame;
    EXPECT_EQ(sum, TimelineTime::FromCount(1'000'000, rate));
}

TEST(TimelineTime, RatesOfPicturesAndSoundMixWithoutLoss)
{
    // An hour of each of the usual rates, there and back, in an order that a seed decides.
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::vector<TimelineRate> rates{{24, 1},        {25, 1},        {30, 1},     {24'000, 1001}, {30'000, 1001},
                                          {60'000, 1001}, {48'000, 1},    {44'100, 1}, {96'000, 1},    {10'000'000, 1},
                                          {90'000, 1},    {1'000'000, 1}, {1000, 1}};
    std::vector<TimelineTime> steps;
    TimelineTime sum;
    for (int i = 0; i < 2000; ++i)
    {
        const TimelineRate& rate = rates[random() % rates.size()];
        const TimelineTime step = TimelineTime::FromCount(random() % 100'000, rate);
        if ((sum + step).IsTooLong())
            break;
        steps.push_back(step);
        sum = sum + step;
    }
    std::shuffle(steps.begin(), steps.end(), random);
    for (const TimelineTime& step : steps)
        sum = sum - step;
    EXPECT_TRUE(sum.IsZero());
}

TEST(TimelineTime, ValuesAreDecimalsOfEitherSign)
{
    const TimelineRate rate{24, 1};
    const auto units = [&](const char* pValue)
    {
        const std::optional<TimelineTime> time = TimelineTime::Parse(pValue, rate);
        return time ? time->FloorUnits() : -999;
    };
    EXPECT_EQ(units("48"), 20'000'000);
    EXPECT_EQ(units("48.0"), 20'000'000);
    EXPECT_EQ(units("12.5"), 5'208'333);
    EXPECT_EQ(units("-24"), -10'000'000);
    EXPECT_EQ(units("-1"), -416'667); // down, not towards 0
    EXPECT_EQ(units("4.8e1"), 20'000'000);
    EXPECT_EQ(units("47.9999999999999"), 20'000'000); // comes from arithmetic with doubles
    EXPECT_EQ(units("abc"), -999);
}

TEST(TimelineTime, WhatLiesBeyondAMillionSecondsIsRefused)
{
    EXPECT_TRUE(TimelineTime::Parse("1000000", {1, 1}));
    EXPECT_TRUE(TimelineTime::Parse("-1000000", {1, 1}));
    EXPECT_FALSE(TimelineTime::Parse("1000000.5", {1, 1}));
    EXPECT_FALSE(TimelineTime::Parse("1e18", {24, 1}));
    EXPECT_FALSE(TimelineTime::Parse("1e300", {24, 1}));
    EXPECT_FALSE(TimelineTime::Parse("1", {1, 1'000'001}));
    EXPECT_TRUE(TimelineTime::Parse("254016000000000000", {254'016'000'000, 1}));
    const TimelineTime most = TimelineTime::FromCount(1'000'000, {1, 1});
    EXPECT_FALSE(most.IsTooLong());
    EXPECT_TRUE((most + TimelineTime::FromUnits(1)).IsTooLong());
    EXPECT_TRUE((TimelineTime() - most - TimelineTime::FromUnits(1)).IsTooLong());
}

TEST(TimelineTime, RatesThatNoDenominatorHoldsAreRoundedToATenthOfANanosecond)
{
    const TimelineTime a = TimelineTime::FromCount(1, {999'999'999'989, 1});
    const TimelineTime b = TimelineTime::FromCount(1, {999'999'999'961, 1});
    const TimelineTime sum = TimelineTime::FromCount(1, {1, 1}) + a + b;
    EXPECT_EQ(sum.FloorUnits(), 10'000'000);
    EXPECT_FALSE(sum < TimelineTime::FromCount(1, {1, 1}));
}

TEST(TimelineTime, TheNearestUnitIsTheOneThatDecimalsHave)
{
    EXPECT_EQ(TimelineTime::FromCount(1, {3, 1}).NearestUnits(), 3'333'333);
    EXPECT_EQ(TimelineTime::FromCount(2, {3, 1}).NearestUnits(), 6'666'667);
    EXPECT_EQ(TimelineTime::FromCount(1, {20'000'000, 1}).NearestUnits(), 1); // halves go up
    EXPECT_EQ(TimelineTime::FromCount(-1, {3, 1}).NearestUnits(), -3'333'333);
}
} // namespace
} // namespace qmx::host
