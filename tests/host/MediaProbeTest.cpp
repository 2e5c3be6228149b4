#include "host/compose/MediaProbe.h"

#include "host/project/CameraFiles.h"

#include <gtest/gtest.h>

namespace qmx::host
{
namespace
{
/// Rate of a recording of @p frames + 1 frames whose times are rounded down.
double RateOf(double rate, std::uint64_t frames)
{
    const auto duration = static_cast<std::uint64_t>(static_cast<double>(frames) * 1e7 / rate);
    return LikelyRate(static_cast<double>(frames) * 1e7 / static_cast<double>(duration), frames, duration);
}

TEST(LikelyRate, IsTheRateThatTheTimesWereMadeOf)
{
    for (const std::uint64_t frames : {1U, 2U, 29U, 300U, 100'000U})
    {
        for (const double rate : {30.0, 25.0, 24.0, 60.0, 15.0, 1.0})
            EXPECT_EQ(RateOf(rate, frames), rate) << frames;
    }
    for (const double rate : {30'000 / 1001.0, 24'000 / 1001.0, 60'000 / 1001.0})
        EXPECT_NEAR(RateOf(rate, 300), rate, 1e-9);
}

TEST(LikelyRate, IsTheMeanOfTimesThatFollowNoRate)
{
    EXPECT_NEAR(RateOf(27.31, 1'000), 27.31, 1e-4);
    EXPECT_EQ(LikelyRate(1e9, 1, 1), 1000);
    EXPECT_EQ(LikelyRate(1e-9, 1, 10'000'000'000'000'000), 0.001);
}

TEST(CameraFiles, LieBesideTheName)
{
    EXPECT_EQ(CameraMediaPath("a/b.c.mjpg"), "a/b.c.mov");
    EXPECT_EQ(CameraMediaPath("a/b.h264"), "a/b.mp4");
    EXPECT_EQ(CameraIndexPath("a/b.h264"), "a/b.meta");
    EXPECT_TRUE(IsCameraName("x.h264") && IsCameraName("x.mjpg"));
    EXPECT_FALSE(IsCameraName("x.H264") || IsCameraName("x.mp4") || IsCameraName("mjpg") || IsCameraName(""));
}
} // namespace
} // namespace qmx::host
