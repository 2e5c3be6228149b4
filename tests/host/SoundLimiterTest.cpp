#include "host/sound/SoundLimiter.h"

#include "tests/support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace qmx::host
{
namespace
{
/// What comes out for @p input, without the samples by which it lags.
std::vector<float> Limited(std::vector<float> input, std::size_t part = 1'000)
{
    SoundLimiter limiter;
    input.resize(input.size() + SoundLimiter::kAhead * 2);
    for (std::size_t at = 0; at < input.size() / 2; at += part)
        limiter.Process(input.data() + at * 2, std::min(part, input.size() / 2 - at));
    return {input.begin() + SoundLimiter::kAhead * 2, input.end()};
}

std::vector<float> Sine(std::size_t samples, double amplitude)
{
    std::vector<float> values;
    for (std::size_t i = 0; i < samples; ++i)
    {
        values.push_back(static_cast<float>(amplitude * std::sin(0.05 * static_cast<double>(i))));
        values.push_back(static_cast<float>(amplitude * std::cos(0.03 * static_cast<double>(i))));
    }
    return values;
}
} // namespace

TEST(SoundLimiter, WhatStaysWithinFullScaleComesOutAsItWentIn)
{
    std::vector<float> input = Sine(20'000, 0.999);
    input[5'000] = 1;
    input[7'001] = -1;
    EXPECT_EQ(Limited(input), input);
}

TEST(SoundLimiter, NothingPassesFullScale)
{
    test_support::Random random;
    std::vector<float> input(40'000);
    for (float& value : input)
        value = static_cast<float>(random.Below(2'000'001)) / 250'000 - 4;
    for (const float value : Limited(input))
        ASSERT_LE(std::abs(value), 1.000001F);
    for (const float value : Limited(Sine(20'000, 16)))
        ASSERT_LE(std::abs(value), 1.000001F);
}

TEST(SoundLimiter, TheVolumeGoesDownBeforeAPeakAndUpAgainAfterIt)
{
    std::vector<float> input(2 * 100'000, 0.5F);
    input[2 * 50'000] = 2; // left, one sample
    const std::vector<float> output = Limited(input);
    EXPECT_NEAR(output[2 * 50'000], 1, 1e-5);
    EXPECT_NEAR(output[2 * 50'000 + 1], 0.25, 1e-5); // right goes with left
    for (std::size_t i = 0; i < 50'000 - SoundLimiter::kAhead; ++i)
        ASSERT_EQ(output[2 * i], 0.5F);
    for (std::size_t i = 1; i < 100'000; ++i)
        ASSERT_LE(std::abs(output[2 * i + 1] - output[2 * i - 1]), 0.5F * 0.5F / 200) << i; // no step
    EXPECT_LT(output[2 * 50'500 + 1], 0.4F);
    EXPECT_EQ(output[2 * 99'999], 0.5F); // a second later it is as before
}

TEST(SoundLimiter, ComesToTheSameInPartsOfAnySize)
{
    const std::vector<float> input = Sine(5'000, 1.7);
    const std::vector<float> whole = Limited(input, 1'000'000);
    EXPECT_EQ(Limited(input, 1), whole);
    EXPECT_EQ(Limited(input, 1'601), whole);
}

TEST(SoundLimiter, ResetForgets)
{
    SoundLimiter limiter;
    std::vector<float> loud(2'000, 3.0F);
    limiter.Process(loud.data(), 1'000);
    limiter.Reset();
    std::vector<float> soft(2 * SoundLimiter::kAhead + 2, 0.25F);
    limiter.Process(soft.data(), SoundLimiter::kAhead + 1);
    for (std::size_t i = 0; i < 2 * SoundLimiter::kAhead; ++i)
        ASSERT_EQ(soft[i], 0);
    EXPECT_EQ(soft.back(), 0.25F);
}
} // namespace qmx::host
