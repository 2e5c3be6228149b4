/// @file DamagedInputTest.cpp
/// Films that were cut off or overwritten in places: refused or partly shown, never a crash, a hang or a flood of
/// memory.
#include "engine/decoders/media/MediaInfo.h"
#include "tests/media/Damage.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/MediaFolder.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace test_support;

namespace
{
constexpr std::uint64_t kMemoryLimit = 1ULL << 30;
constexpr std::uint32_t kFrameWidth = 64; // the scaling of whole frames is not what is tested

/// Opens what there is, reads a few pictures from the start, jumps to the middle and beyond the end, and back.
void Play(const std::filesystem::path& path)
{
    tagMediaInfo media;
    const tagVideoInfo& info = media.video;
    if (!QMXGetMediaInfo(EnginePath(path), &media) || info.nFrameRateNum == 0 || info.nFrameRateDen == 0)
        return;
    DecoderFixture decoder(path, info, kFrameWidth);
    for (std::uint64_t n = 0; n < 4; ++n)
        decoder.Frame(n);
    const double middle = std::clamp(info.dDuration / 2, 0.0, 1e6) * kTimePerSecond;
    decoder.FrameAt(static_cast<std::uint64_t>(middle));
    decoder.FrameAt(static_cast<std::uint64_t>(middle) * 2 + kTimePerSecond);
    decoder.FrameAt(0);
}

class CutCorpusTest : public testing::TestWithParam<std::string>
{
protected:
    MediaServices m_services;
};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CutCorpusTest);

class CutFilmTest : public testing::TestWithParam<std::string>
{
protected:
    MediaServices m_services;
};

class OverwrittenFilmTest : public testing::TestWithParam<std::string>
{
protected:
    MediaServices m_services;
};
} // namespace

TEST_P(CutCorpusTest, CutAnywhereIsRefusedOrPartlyShown)
{
    QMX_REQUIRE_CORPUS(path, std::filesystem::path("video") / GetParam());
    CutAnywhere(path, kMemoryLimit, Play);
}

INSTANTIATE_TEST_SUITE_P(Files, CutCorpusTest, testing::ValuesIn(CorpusFiles("video")), NameOfFile);

TEST_P(CutFilmTest, CutAnywhereIsRefusedOrPartlyShown)
{
    QMX_REQUIRE_MEDIA(path, GetParam());
    CutAnywhere(path, kMemoryLimit, Play);
}

/// Layouts whose index does not lie at the end, so that a cut leaves something to play.
INSTANTIATE_TEST_SUITE_P(Films, CutFilmTest,
                         testing::Values("h264-bframes-5994.mp4", "h264-fragmented-30.mp4",
                                         "h264-fragmented-index-2997.mp4", "h264-2997.mkv", "h264-30.ts", "h264-30.flv",
                                         "mpeg4-bframes-25.avi", "mpeg2-bframes-2997.mpg", "vp9-altref-2997.webm",
                                         "wmv2-30.wmv"),
                         NameOfFile);

TEST_P(OverwrittenFilmTest, OverwrittenAnywhereIsRefusedOrPartlyShown)
{
    constexpr std::uint64_t kEdge = 2048;
    QMX_REQUIRE_CORPUS(path, std::filesystem::path("video") / GetParam());
    OverwriteAnywhere(path, kEdge, kMemoryLimit, Play);
}

INSTANTIATE_TEST_SUITE_P(Files, OverwrittenFilmTest, testing::Values("bt601.mp4", "transparent.webm", "smooth.wmv"),
                         NameOfFile);
