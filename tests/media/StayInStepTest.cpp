/// @file StayInStepTest.cpp
/// Hosts whose own rate is another than the film's show the right picture for ten minutes: no drift adds up.
#include "tests/support/ClipFixture.h"
#include "tests/support/FrameStripReader.h"
#include "tests/support/MediaFolder.h"

#include <gtest/gtest.h>

using namespace test_support;

namespace
{
/// Plays @p film from its start to its end at @p hostRate pictures a second.
/// @param filmRate  pictures a second of the film
void PlayAt(const char* film, std::uint32_t filmRate, std::uint32_t hostRate)
{
    constexpr std::uint32_t kSeconds = 600;
    const MediaServices services;
    QMX_REQUIRE_MEDIA(path, film);
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    ASSERT_TRUE(info);
    ASSERT_EQ(info->nFrameRateNum, filmRate * info->nFrameRateDen);
    ClipFixture clip(path, *info);
    for (std::uint64_t tick = 0; tick < std::uint64_t{kSeconds} * hostRate; ++tick)
    {
        const ClipFrame frame = clip.FrameAt(GridTime(tick, hostRate, 1));
        const std::optional<std::uint32_t> number = ReadFrameStrip(frame.picture);
        ASSERT_TRUE(number) << "no readable picture at tick " << tick;
        ASSERT_EQ(*number, tick * filmRate / hostRate) << "at tick " << tick;
        ASSERT_FALSE(frame.endOfStream) << "at tick " << tick;
    }
}
} // namespace

TEST(StayInStep, HostOf60PicturesASecondOnAFilmOf30)
{
    PlayAt("long-30.mp4", 30, 60);
}

TEST(StayInStep, HostOf24PicturesASecondOnAFilmOf60)
{
    PlayAt("long-60.mp4", 60, 24);
}
