/// @file MemoryTest.cpp
/// Playing on takes no more memory than playing has taken.
#include "tests/support/ClipFixture.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/Process.h"

#include "engine/platform/SampleBuffer.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

using namespace test_support;

namespace
{
std::uint64_t FramesFromTheSystem()
{
    tagSampleBufferPoolInfo info;
    GetSampleBufferPoolInfo(&info);
    return info.nMisses;
}
} // namespace

TEST(PlayingTenMinutes, KeepsTheResidentSetFlatAndAllocatesNoFrames)
{
    constexpr std::uint64_t kRate = 30, kMinute = 60 * kRate, kFrames = 10 * kMinute, kWarmUp = kMinute;
    const MediaServices services;
    QMX_REQUIRE_MEDIA(path, "long-1080p.mp4");
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    ASSERT_TRUE(info);
    ASSERT_EQ(info->nFrameRateNum, kRate * info->nFrameRateDen);
    ClipFixture clip(path, *info);

    std::vector<double> minutes(10); // mean of the resident set in each minute, bytes
    std::uint64_t missesAfterWarmUp = 0;
    for (std::uint64_t n = 0; n < kFrames; ++n)
    {
        if (n == kWarmUp)
            missesAfterWarmUp = FramesFromTheSystem();
        ASSERT_TRUE(clip.BufferAt(GridTime(n, kRate, 1), nullptr)) << "no picture " << n;
        if (n % kRate == 0)
            minutes[n / kMinute] += static_cast<double>(ResidentBytes()) / 60;
    }
    EXPECT_EQ(FramesFromTheSystem(), missesAfterWarmUp);
    EXPECT_LE(minutes.back(), 1.02 * minutes[1]);
    for (std::size_t i = 0; i < minutes.size(); ++i)
        RecordProperty("MiBInMinute" + std::to_string(i + 1), std::to_string(minutes[i] / (1024 * 1024)));
}
