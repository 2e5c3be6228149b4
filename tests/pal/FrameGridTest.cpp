#include "pal/media/FrameGrid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace
{
using pal::ChooseRate;
using pal::FrameGrid;
using pal::NominalRate;
using pal::Rate;

/// Times of @p count pictures at @p rate in ticks of 1/@p ticksPerSecond, rounded as a container does.
std::vector<std::int64_t> Times(double rate, int count, int ticksPerSecond, std::int64_t start = 0)
{
    std::vector<std::int64_t> times;
    for (int i = 0; i < count; ++i)
        times.push_back(start + std::llround(i * ticksPerSecond / rate));
    return times;
}

void ExpectRate(const NominalRate& nominal, std::int64_t num, std::int64_t den, bool aligned)
{
    EXPECT_EQ(nominal.rate.num, num);
    EXPECT_EQ(nominal.rate.den, den);
    EXPECT_EQ(nominal.aligned, aligned);
}
} // namespace

TEST(FrameGrid, SampleTimesNeverFallBehindWholeFrameDurations)
{
    for (const Rate rate : {Rate{30, 1}, Rate{30000, 1001}, Rate{24000, 1001}, Rate{60000, 1001}, Rate{25, 1}})
    {
        FrameGrid grid;
        grid.rate = rate;
        const auto duration = static_cast<std::int64_t>(1e7 / rate.Value());
        for (std::int64_t n = 0; n < 40'000; n += 7)
        {
            ASSERT_GE(grid.TimeOf(n), n * duration);
            ASSERT_EQ(grid.IndexAtOrAfter(grid.TimeOf(n)), n);
            ASSERT_EQ(grid.IndexAtOrAfter(grid.TimeOf(n) + 1), n + 1);
            ASSERT_EQ(grid.IndexAtOrAfter(n * duration), n); // what a decoder asks for frame n
        }
    }
}

TEST(FrameGrid, AlignedPicturesRoundToTheNearestSample)
{
    FrameGrid grid;
    grid.rate = {30, 1};
    grid.tickDen = 1000;
    for (int n = 0; n < 1000; ++n)
        ASSERT_EQ(grid.IndexOf(std::llround(n * 1000 / 30.0)), n);
}

TEST(FrameGrid, ALateFirstPictureShiftsAllByWholeSamples)
{
    FrameGrid grid;
    grid.rate = {24, 1};
    grid.tickDen = 1000;
    grid.origin = -7;
    grid.firstPts = 7; // a third of a frame late: at time 0 it does not show yet
    EXPECT_EQ(grid.IndexOf(7), 1);
    EXPECT_EQ(grid.IndexOf(49), 2);
    grid.firstPts = -6; // one tick: rounding
    EXPECT_EQ(grid.IndexOf(-6), 0);
    EXPECT_EQ(grid.IndexOf(36), 1);
    grid.firstPts = 994; // 24.02 frames late, as 24 frames rounded up
    EXPECT_EQ(grid.IndexOf(994), 24);
    EXPECT_EQ(grid.IndexOf(1036), 25);
}

TEST(FrameGrid, UnalignedPicturesShowFromTheFirstSampleAtOrAfterThem)
{
    FrameGrid grid;
    grid.rate = {60, 1};
    grid.tickDen = 600;
    grid.aligned = false;
    EXPECT_EQ(grid.IndexOf(0), 0);
    EXPECT_EQ(grid.IndexOf(10), 1);
    EXPECT_EQ(grid.IndexOf(11), 2);
    EXPECT_EQ(grid.IndexOf(-5), 0);
}

TEST(FrameGrid, SurvivesExtremeTimes)
{
    FrameGrid grid;
    grid.rate = {240'000, 1001};
    grid.tickDen = 90'000;
    (void)grid.IndexOf(INT64_MAX);
    (void)grid.IndexOf(INT64_MIN);
    (void)grid.PtsOf(INT64_MAX / 4);
    EXPECT_GT(grid.TimeOf(INT64_MAX / 4), 0);
    EXPECT_GT(grid.IndexAtOrAfter(INT64_MAX), 0);
}

TEST(ChooseRate, KeepsTheRateOfAConstantStream)
{
    ExpectRate(ChooseRate(Times(30, 300, 15360), 1, 15360, {{30, 1}, {30, 1}}), 30, 1, true);
    ExpectRate(ChooseRate(Times(30000 / 1001.0, 300, 1000), 1, 1000, {{30000, 1001}, {19001, 634}}), 30000, 1001, true);
    ExpectRate(ChooseRate(Times(24000 / 1001.0, 300, 90000, 126'000), 1, 90000, {{24000, 1001}, {24000, 1001}}), 24000,
               1001, true);
    ExpectRate(ChooseRate(Times(60000 / 1001.0, 600, 1000), 1, 1000, {{60000, 1001}, {60000, 1001}}), 60000, 1001,
               true);
}

TEST(ChooseRate, FindsTheGridOfAStreamWithHoles)
{
    std::vector<std::int64_t> times;
    for (int n = 0; n < 200; ++n)
        if (n % 7 != 3 && n % 11 != 5)
            times.push_back(n * 1000 / 15);
    ExpectRate(ChooseRate(times, 1, 1000, {{15, 1}, {0, 0}}), 15, 1, true);
}

TEST(ChooseRate, TakesSixtyForAVariableStreamAndMoreForFasterBursts)
{
    const std::vector<std::int64_t> times = {0, 1700, 4100, 6203, 17'777, 50'001, 61'003, 63'555};
    ExpectRate(ChooseRate(times, 1, 90'000, {{90'000, 1}, {10, 1}}), 60, 1, false);
    const std::vector<std::int64_t> fast = {0, 801, 1607, 6203, 17'777, 50'001, 61'003, 63'555};
    ExpectRate(ChooseRate(fast, 1, 90'000, {{90'000, 1}, {10, 1}}), 120, 1, false);
}

TEST(ChooseRate, OfASinglePictureIsTheStatedOne)
{
    const std::vector<std::int64_t> one = {0};
    ExpectRate(ChooseRate(one, 1, 1000, {{25, 1}, {0, 0}}), 25, 1, true);
    ExpectRate(ChooseRate(one, 1, 1000, {{90'000, 1}, {0, 0}}), 30, 1, true);
}

TEST(ChooseRate, ReadsTimeBasesOfWholeFrames)
{
    ExpectRate(ChooseRate(Times(25, 125, 25), 1, 25, {{25, 1}, {25, 1}}), 25, 1, true);
    std::vector<std::int64_t> times = Times(30, 100, 30);
    times.erase(times.begin() + 40, times.begin() + 43); // dropped pictures
    ExpectRate(ChooseRate(times, 1, 30, {{30, 1}, {2900, 100}}), 30, 1, true);
}
