/// @file ThreadsTest.cpp
/// Documents that share nothing are played at the same time, each from a thread of its own.
#include "tests/media/FilmTable.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/FrameStripReader.h"
#include "tests/support/MediaFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <thread>

using namespace test_support;

namespace
{
constexpr std::size_t kThreads = 8;
/// Constant rates, so that slot n shows picture n. Two threads share a film: their documents keep the decoders apart.
constexpr std::array<const char*, kThreads> kFilms{"h264-bframes-30.mp4",  "h264-bframes-30.mp4", "vp9-60.webm",
                                                   "hevc-open-gop-24.mp4", "h264-no-b-30.mp4",    "mpeg4-odd-30.mp4",
                                                   "qtrle-30.mov",         "rotated-90-30.mp4"};

/// Plays a film, jumps about in it, and says what went wrong first.
std::string PlayAndJump(const std::filesystem::path& path, unsigned seed)
{
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    if (!info)
        return "refused";
    const auto count = static_cast<std::uint64_t>(info->dDuration * info->dFrameRate + 0.5);
    std::mt19937 random(seed);
    ClipFixture clip(path, *info);
    for (std::uint64_t request = 0; request < 150; ++request)
    {
        const std::uint64_t slot = request < 60 ? request % count : random() % count;
        const std::optional<std::uint32_t> number =
            ReadFrameStrip(clip.FrameAt(GridTime(slot, info->nFrameRateNum, info->nFrameRateDen)).picture);
        if (!number || *number != slot)
            return "slot " + std::to_string(slot) + " shows " + (number ? std::to_string(*number) : "nothing readable");
    }
    return {};
}
} // namespace

TEST(EightThreads, WithDocumentsOfTheirOwnDoNotDisturbEachOther)
{
    const MediaServices services;
    for (const char* const film : kFilms)
    {
        QMX_REQUIRE_MEDIA(path, film);
    }
    std::array<std::string, kThreads> faults;
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < kThreads; ++i)
        threads.emplace_back([i, &faults]
                             { faults[i] = PlayAndJump(MediaFolder() / kFilms[i], static_cast<unsigned>(i)); });
    for (std::thread& thread : threads)
        thread.join();
    for (std::size_t i = 0; i < kThreads; ++i)
        EXPECT_EQ(faults[i], "") << kFilms[i];
}
