#include "host/project/FrameRate.h"

#include <gtest/gtest.h>

namespace qmx::host
{
namespace
{
FrameRate Rate(std::uint64_t numerator, std::uint64_t denominator)
{
    return FrameRate::FromFraction(numerator, denominator).value();
}

TEST(FrameRate, ReadsNumbersAndFractions)
{
    EXPECT_EQ(FrameRate::Parse("30"), Rate(30, 1));
    EXPECT_EQ(FrameRate::Parse("29.97"), Rate(2997, 100));
    EXPECT_EQ(FrameRate::Parse("30000/1001"), Rate(30000, 1001));
    EXPECT_EQ(FrameRate::Parse("60/2"), Rate(30, 1));
    EXPECT_EQ(FrameRate::Parse("0.001"), Rate(1, 1000));
    EXPECT_EQ(FrameRate::Parse("1000"), Rate(1000, 1));
}

TEST(FrameRate, RefusesRatesThatAreNoneOrOutOfRange)
{
    for (const char* const pText : {"0",
                                    "-30",
                                    "30/0",
                                    "0/1",
                                    "-30/1",
                                    "30/-1",
                                    "30/1/1",
                                    "/",
                                    "30/",
                                    "/1",
                                    " 30",
                                    "abc",
                                    "1000.1",
                                    "1001",
                                    "0.0009",
                                    "1/1001",
                                    "1e300",
                                    "23.9760239760239",
                                    "1000001/1001",
                                    "99999999999999999999/1",
                                    "30.0/1"})
        EXPECT_FALSE(FrameRate::Parse(pText)) << pText;
}

TEST(FrameRate, FrameTimesDoNotDrift)
{
    const FrameRate ntsc = Rate(30000, 1001);
    EXPECT_EQ(ntsc.TimeOfFrame(0), 0U);
    EXPECT_EQ(ntsc.TimeOfFrame(1), 333'666U);            // 333,666.67
    EXPECT_EQ(ntsc.TimeOfFrame(3), 1'001'000U);          // exactly
    EXPECT_EQ(ntsc.TimeOfFrame(30000), 10'010'000'000U); // exactly
    // 27 hours in: 2,997,003 = 3 * 999,001, and three frames last 1,001,000 units.
    EXPECT_EQ(ntsc.TimeOfFrame(2'997'003), 999'001U * std::uint64_t{1'001'000});
}

TEST(FrameRate, TheLargestTermsAndTimesStayInside64Bits)
{
    const FrameRate odd = Rate(999'999, 1'000'000);
    const std::uint64_t frames = odd.FramesBefore(kMaxTime);
    EXPECT_EQ(frames, 999'999U); // a million seconds at 0.999999 frames per second
    EXPECT_EQ(odd.TimeOfFrame(frames), kMaxTime);
    const FrameRate fast = Rate(1'000'000, 1001);
    EXPECT_EQ(fast.TimeOfFrame(fast.FramesBefore(kMaxTime) - 1), 9'999'999'999'990U); // the last that starts before
    EXPECT_LT(fast.TimeOfFrame(fast.FramesBefore(kMaxTime) - 1), kMaxTime);
    EXPECT_GE(fast.TimeOfFrame(fast.FramesBefore(kMaxTime)), kMaxTime);
}

TEST(FrameRate, CountsTheFramesThatStartBeforeATime)
{
    const FrameRate thirty = Rate(30, 1);
    EXPECT_EQ(thirty.FramesBefore(0), 0U);
    EXPECT_EQ(thirty.FramesBefore(1), 1U);
    EXPECT_EQ(thirty.FramesBefore(333'333), 1U);
    EXPECT_EQ(thirty.FramesBefore(333'334), 2U);
    EXPECT_EQ(thirty.FramesBefore(100'000'000), 300U);
    EXPECT_EQ(thirty.FramesBefore(100'000'001), 301U);
}

TEST(FrameRate, CountingAndTimesAgreeForEveryFrameOfUnevenRates)
{
    for (const FrameRate& rate : {Rate(30000, 1001), Rate(24000, 1001), Rate(7, 3), Rate(999'983, 1009)})
    {
        for (std::uint64_t frame = 0; frame < 5000; ++frame)
        {
            const std::uint64_t time = rate.TimeOfFrame(frame);
            ASSERT_EQ(rate.FramesBefore(time), frame);
            ASSERT_EQ(rate.FramesBefore(time + 1), frame + 1);
        }
    }
}

TEST(FrameRate, RoundedDecimalsSnapOntoTheFrameTheyMean)
{
    const FrameRate ntsc = Rate(30000, 1001);
    EXPECT_EQ(ntsc.TimeOfFrame(100), 33'366'666U);
    EXPECT_EQ(ntsc.Snapped(33'366'664), 33'366'666U);
    EXPECT_EQ(ntsc.Snapped(33'366'667), 33'366'666U);
    EXPECT_EQ(ntsc.Snapped(33'366'668), 33'366'666U);
    EXPECT_EQ(ntsc.Snapped(33'366'663), 33'366'663U); // three units away is meant
    EXPECT_EQ(ntsc.Snapped(33'366'669), 33'366'669U);
    EXPECT_EQ(ntsc.Snapped(0), 0U);
    EXPECT_EQ(ntsc.Snapped(2), 0U);
}
} // namespace
} // namespace qmx::host
