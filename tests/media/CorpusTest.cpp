/// @file CorpusTest.cpp
/// Films as they are found in the world, with the facts that the collection states for them.
#include "tests/media/FilmTable.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/PictureCompare.h"
#include "tests/support/Process.h"
#include "tests/support/ReferenceFilm.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <ostream>

using namespace test_support;

namespace
{
struct CorpusFilm
{
    const char* name;
    std::uint32_t width, height; ///< upright
    std::uint32_t rotation;      ///< clockwise degrees to upright
    std::uint32_t num, den;      ///< pictures a second; 0 = variable
    double start;                ///< seconds from the container's start to the first picture
    double duration;             ///< seconds, of the container
    std::uint32_t count;         ///< slots of the grid: pictures, and pictures that stand for two
    double tolerance;            ///< levels: 3, and 12 where the file names no matrix and the collection assumed BT.601
    std::array<MeanColour, 3> means; ///< first, middle (picture count / 2) and last picture
};
void PrintTo(const CorpusFilm& film, std::ostream* pStream)
{
    *pStream << film.name;
}

constexpr MeanColour kBlack{0, 0, 0};

// clang-format off
const CorpusFilm kFilms[] = {
    {"xmp480qt.mov", 640, 360, 0, 30000, 1001, 0, 1.001, 30, 3,
     {{{121.3, 129.4, 138.9}, {125.6, 131.8, 142.4}, {127.3, 133.5, 142.9}}}},
    {"uuid540.mp4", 960, 540, 0, 30000, 1001, 0, 1.034367, 31, 3,
     {{{121.5, 129.7, 138.3}, {125.4, 131.8, 141.3}, {127.1, 133.5, 142.2}}}},
    {"sample_mpeg4.mp4", 190, 240, 0, 30, 1, 0, 4.966667, 149, 3,
     {{{253.9, 254.1, 253.9}, {213.3, 232.2, 242.6}, {201.5, 224.0, 237.1}}}},
    {"cursed-vfr.mp4", 3026, 1386, 0, 0, 0, 0, 8.725503, 0, 3,
     {{{39.9, 38.9, 43.9}, {44.2, 43.7, 49.4}, {42.0, 41.6, 46.8}}}},
    {"edts.mp4", 854, 480, 0, 25, 1, 0, 9.0, 225, 3, {{kBlack, kBlack, kBlack}}},
    {"sar_2x1.mp4", 640, 360, 0, 30, 1, 0, 5.0, 150, 3,
     {{{122.5, 129.5, 125.8}, {123.9, 128.2, 128.3}, {122.4, 130.0, 125.9}}}},
    {"frames.webm", 1080, 1080, 0, 30, 1, 0, 3.333, 100, 12,
     {{{233.0, 241.1, 232.7}, {232.7, 238.6, 245.2}, {235.2, 241.1, 248.6}}}},
    {"testvid_1022ms.mp4", 480, 360, 0, 29917, 1000, 0, 1.022, 30, 3,
     {{{72.4, 72.4, 72.4}, {48.9, 48.9, 48.9}, {34.7, 34.7, 34.7}}}},
    {"edit_list_positive_shift.mp4", 1920, 1080, 0, 30, 1, 1.0, 10.006, 270, 12, {{kBlack, kBlack, kBlack}}},
    {"bt601.mp4", 360, 240, 0, 30000, 1001, 0, 1.088, 30, 3,
     {{{152.4, 146.7, 148.1}, {152.5, 146.8, 148.2}, {152.5, 146.8, 148.3}}}},
    {"sample_rotate_and_reflect.mp4", 720, 1080, 90, 30000, 1001, 0, 1.024, 30, 12,
     {{{152.3, 146.7, 147.9}, {152.6, 146.8, 148.2}, {152.4, 146.8, 148.0}}}},
    {"sample_with_color_info.mp4", 1080, 1920, 90, 30, 1, 0, 0.298333, 9, 3,
     {{{166.5, 167.9, 167.5}, {166.4, 167.8, 167.5}, {166.3, 167.8, 167.4}}}},
    {"sample_fragmented_seekable.mp4", 1080, 720, 0, 30000, 1001, 0.066733, 1.134466, 30, 12,
     {{{152.3, 146.7, 147.9}, {152.6, 146.8, 148.3}, {152.4, 146.8, 148.1}}}},
    {"sample_shorter_audio.mp4", 320, 240, 0, 60, 1, 0, 1.2, 72, 3,
     {{{122.0, 118.8, 122.1}, {121.3, 118.1, 120.7}, {108.6, 104.4, 105.0}}}},
    {"long_1080p_lowbitrate.mp4", 1920, 1080, 0, 30, 1, 0, 362.767, 10883, 12, {{kBlack, kBlack, kBlack}}},
    {"sample.avi", 960, 400, 0, 24000, 1001, 0, 4.087417, 98, 3, // slots 1 and 2 repeat the first picture
     {{{0.0, 0.0, 0.0}, {6.4, 89.2, 151.4}, {87.0, 149.2, 184.6}}}},
    {"h265_video.mp4", 128, 128, 0, 10, 1, 0, 1.0, 10, 3,
     {{{12.2, 12.1, 253.2}, {12.0, 12.0, 253.1}, {12.3, 12.3, 253.2}}}},
    {"bt709_full_range.mp4", 1280, 720, 0, 30, 1, 0, 1.0, 30, 3,
     {{{123.3, 127.4, 123.7}, {123.4, 127.3, 124.4}, {123.3, 127.4, 123.6}}}},
    {"big_buck_bunny_432_433.webm", 1280, 720, 0, 24, 1, 0, 1.0, 24, 12,
     {{{90.5, 83.0, 46.7}, {89.7, 82.2, 46.0}, {90.5, 82.9, 47.2}}}},
    {"transparent.webm", 200, 200, 0, 30, 1, 0, 5.0, 150, 3, {{{1.6, 0, 0}, {1.6, 0, 0}, {1.6, 0, 0}}}},
    {"fire2.mp4", 1280, 720, 180, 0, 0, 0, 2.38, 0, 12,
     {{{117.2, 113.8, 124.5}, {90.4, 84.8, 88.0}, {94.5, 87.4, 91.3}}}},
    {"realshort.mp4", 320, 240, 0, 0, 0, 0, 1.199, 0, 3,
     {{{155.1, 159.0, 155.0}, {148.4, 156.3, 152.5}, {139.6, 153.9, 151.3}}}},
    {"smooth.wmv", 176, 144, 0, 0, 0, 0, 8.732, 0, 3,
     {{{122.6, 118.2, 92.5}, {103.3, 126.7, 79.6}, {117.1, 133.9, 90.2}}}},
    {"elephant.asf", 160, 120, 0, 0, 0, 0, 28.086, 0, 3,
     {{{111.6, 111.7, 78.2}, {124.7, 124.1, 93.3}, {126.7, 126.1, 95.5}}}},
    {"bbb_480p_vp9_opus_1second.webm", 854, 480, 0, 24, 1, 0.014, 1.008, 24, 3,
     {{kBlack, {11.7, 12.2, 11.0}, {46.9, 46.2, 44.1}}}},
    {"rawvideo.avi", 40, 20, 0, 25, 1, 0, 5.0, 125, 3,
     {{{126.4, 119.3, 141.8}, {127.8, 120.7, 143.2}, {127.6, 120.4, 143.0}}}},
};
// clang-format on

class CorpusFilmTest : public testing::TestWithParam<CorpusFilm>
{
protected:
    MediaServices m_services;
};

std::size_t FirstSlotOf(const CorpusFilm& film)
{
    constexpr double kTimeUnit = 0.001; // the coarsest among the containers with a late start
    return FirstSlot(film.start, kTimeUnit, static_cast<double>(film.num) / film.den);
}

/// Slots of the grid at which the first, the middle and the last picture show.
std::array<std::uint64_t, 3> SlotsOfInterest(const CorpusFilm& film, const std::filesystem::path& path,
                                             const tagVideoInfo& info)
{
    if (film.num != 0)
    {
        const std::size_t shift = FirstSlotOf(film);
        return {shift, shift + film.count / 2, shift + film.count - 1};
    }
    std::vector<double> times;
    ReferenceFilm(path).ForEach(
        [&times](const ReferencePicture& picture)
        {
            times.push_back(picture.time);
            return true;
        });
    // The first slot at or after the picture's time.
    const auto slot = [&](std::size_t i)
    { return static_cast<std::uint64_t>(std::max(0.0, std::ceil(times[i] * info.dFrameRate - 1e-3))); };
    return {slot(0), slot(times.size() / 2), slot(times.size() - 1)};
}
} // namespace

TEST_P(CorpusFilmTest, OpensWithItsFacts)
{
    const CorpusFilm& film = GetParam();
    QMX_REQUIRE_CORPUS(path, std::filesystem::path("video") / film.name);
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->nWidth, film.width);
    EXPECT_EQ(info->nHeight, film.height);
    EXPECT_EQ(info->nRotation, film.rotation);
    ASSERT_GT(info->nFrameRateNum, 0U);
    ASSERT_GT(info->nFrameRateDen, 0U);
    if (film.num != 0)
    {
        EXPECT_NEAR(info->dFrameRate, static_cast<double>(film.num) / film.den, 1e-4)
            << info->nFrameRateNum << " / " << info->nFrameRateDen;
    }
    const double frame = film.num != 0 ? static_cast<double>(film.den) / film.num : 1 / 60.0;
    EXPECT_NEAR(info->dDuration, film.duration, frame);
}

TEST_P(CorpusFilmTest, ShowsItsColours)
{
    const CorpusFilm& film = GetParam();
    QMX_REQUIRE_CORPUS(path, std::filesystem::path("video") / film.name);
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    ASSERT_TRUE(info);
    const std::array<std::uint64_t, 3> slots = SlotsOfInterest(film, path, *info);
    ClipFixture clip(path, *info);
    for (std::size_t i = 0; i < slots.size(); ++i)
    {
        const ClipFrame frame = clip.FrameAt(GridTime(slots[i], info->nFrameRateNum, info->nFrameRateDen));
        ASSERT_FALSE(frame.picture.IsEmpty()) << "slot " << slots[i];
        const MeanColour mean = MeanOf(frame.picture);
        EXPECT_NEAR(mean.r, film.means[i].r, film.tolerance) << "slot " << slots[i];
        EXPECT_NEAR(mean.g, film.means[i].g, film.tolerance) << "slot " << slots[i];
        EXPECT_NEAR(mean.b, film.means[i].b, film.tolerance) << "slot " << slots[i];
        EXPECT_FALSE(frame.endOfStream) << "slot " << slots[i];
    }
}

TEST_P(CorpusFilmTest, HasAsManyPicturesAsTheFile)
{
    const CorpusFilm& film = GetParam();
    QMX_REQUIRE_CORPUS(path, std::filesystem::path("video") / film.name);
    if (film.num == 0)
        GTEST_SKIP() << "a film of variable rate has no number of slots of its own";
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    ASSERT_TRUE(info);
    const std::size_t shift = FirstSlotOf(film);
    DecoderFixture decoder(path, *info, 64);
    // A film of minutes is not worth watching for this: its last second tells.
    std::uint64_t n = film.count > 1000 ? film.count - 30 : 0;
    while (n < film.count + shift + 100 && !decoder.Frame(n).endOfStream)
        ++n;
    EXPECT_EQ(n, film.count + shift);
}

INSTANTIATE_TEST_SUITE_P(Files, CorpusFilmTest, testing::ValuesIn(kFilms),
                         [](const auto& info)
                         {
                             std::string name = info.param.name;
                             std::replace_if(
                                 name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
                             return name;
                         });

/// Pictures that another decoder made of the same frames.
TEST(CorpusReference, FramesOfTheFiveReferencePicturesMatch)
{
    const MediaServices services;
    QMX_REQUIRE_CORPUS(path, "video/testvid_1022ms.mp4");
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    ASSERT_TRUE(info);
    ClipFixture clip(path, *info);
    for (const std::uint64_t n : {29, 14, 0, 16, 15}) // not in order
    {
        char name[64];
        std::snprintf(name, sizeof name, "video/testvid_1022ms_%03u.expected.png", static_cast<unsigned>(n));
        const std::optional<Picture> expected = ReadPng(CorpusFolder() / name);
        ASSERT_TRUE(expected) << name;
        const Picture actual = clip.FrameAt(GridTime(n, info->nFrameRateNum, info->nFrameRateDen)).picture;
        EXPECT_TRUE(PicturesMatch(actual, *expected, {3, 0}, name));
    }
}

/// The collection's damaged films: refused or partly shown, never a crash, a hang or a flood of memory.
TEST(CorpusDamaged, FilmsAreRefusedOrPartlyShown)
{
    constexpr std::uint64_t kMemoryLimit = 512ULL << 20;
    const MediaServices services;
    QMX_REQUIRE_CORPUS(folder, "damaged/video");
    Watchdog watchdog(std::chrono::seconds(10));
    ResetPeakResidentBytes();
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
    {
        watchdog.Step(entry.path().string());
        ++files;
        const std::optional<tagVideoInfo> info = VideoInfoOf(entry.path());
        if (!info || info->nFrameRateNum == 0 || info->nFrameRateDen == 0)
            continue;
        ClipFixture clip(entry.path(), *info);
        for (std::uint64_t n = 0; n < 200; ++n)
            clip.BufferAt(GridTime(n, info->nFrameRateNum, info->nFrameRateDen), nullptr);
        clip.BufferAt(0, nullptr);
    }
    EXPECT_EQ(files, 4);
    EXPECT_LT(PeakResidentBytes(), kMemoryLimit);
}
