/// @file DamagedInputTest.cpp
/// Films that were cut off or overwritten in places: refused or partly shown, never a crash, a hang or a flood of
/// memory.
#include "tests/support/ClipFixture.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/Process.h"
#include "tests/support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <vector>

using namespace test_support;

namespace
{
constexpr std::chrono::seconds kStepLimit{10};
constexpr std::uint64_t kMemoryLimit = 1ULL << 30;
constexpr std::uint32_t kFrameWidth = 64; // the scaling of whole frames is not what is tested

/// Every video file of the collection.
std::vector<std::string> CorpusFilms()
{
    std::vector<std::string> names;
    std::error_code absent;
    for (const auto& entry : std::filesystem::directory_iterator(CorpusFolder() / "video", absent))
        if (entry.path().extension() != ".png")
            names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

/// Opens what there is, reads a few pictures from the start, jumps to the middle and beyond the end, and back.
void Exercise(const std::filesystem::path& path)
{
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    if (!info || info->nFrameRateNum == 0 || info->nFrameRateDen == 0)
        return;
    DecoderFixture decoder(path, *info, kFrameWidth);
    for (std::uint64_t n = 0; n < 4; ++n)
        decoder.Frame(n);
    const double middle = std::clamp(info->dDuration / 2, 0.0, 1e6) * kTimePerSecond;
    decoder.FrameAt(static_cast<std::uint64_t>(middle));
    decoder.FrameAt(static_cast<std::uint64_t>(middle) * 2 + kTimePerSecond);
    decoder.FrameAt(0);
}

/// Cuts a copy of @p original at places spread over it.
void CutAnywhere(const std::filesystem::path& original)
{
    constexpr std::uint64_t kCuts = 64;
    const std::filesystem::path copy = ScratchFolder() / original.filename();
    std::filesystem::copy_file(original, copy, std::filesystem::copy_options::overwrite_existing);
    std::filesystem::permissions(copy, std::filesystem::perms::owner_write, std::filesystem::perm_options::add);
    const std::uint64_t size = std::filesystem::file_size(copy);
    ResetPeakResidentBytes();
    Watchdog watchdog(kStepLimit);
    for (std::uint64_t cut = kCuts; cut > 0; --cut) // the copy can only become shorter
    {
        const std::uint64_t length = size * cut / (kCuts + 1);
        watchdog.Step(original.string() + " cut after " + std::to_string(length) + " bytes");
        std::filesystem::resize_file(copy, length);
        Exercise(copy);
    }
    EXPECT_LT(PeakResidentBytes(), kMemoryLimit);
    std::filesystem::remove(copy);
}

std::string NameOf(const testing::TestParamInfo<std::string>& info)
{
    std::string name = info.param;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
    return name;
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
    CutAnywhere(path);
}

INSTANTIATE_TEST_SUITE_P(Files, CutCorpusTest, testing::ValuesIn(CorpusFilms()), NameOf);

TEST_P(CutFilmTest, CutAnywhereIsRefusedOrPartlyShown)
{
    QMX_REQUIRE_MEDIA(path, GetParam());
    CutAnywhere(path);
}

/// Layouts whose index does not lie at the end, so that a cut leaves something to play.
INSTANTIATE_TEST_SUITE_P(Films, CutFilmTest,
                         testing::Values("h264-bframes-5994.mp4", "h264-fragmented-30.mp4",
                                         "h264-fragmented-index-2997.mp4", "h264-2997.mkv", "h264-30.ts", "h264-30.flv",
                                         "mpeg4-bframes-25.avi", "mpeg2-bframes-2997.mpg", "vp9-altref-2997.webm",
                                         "wmv2-30.wmv"),
                         NameOf);

TEST_P(OverwrittenFilmTest, OverwrittenAnywhereIsRefusedOrPartlyShown)
{
    constexpr int kMutations = 200;
    QMX_REQUIRE_CORPUS(original, std::filesystem::path("video") / GetParam());
    std::ifstream input(original, std::ios::binary);
    std::ostringstream content;
    content << input.rdbuf();
    const std::string bytes = content.str();
    ASSERT_FALSE(bytes.empty());
    const std::filesystem::path copy = ScratchFolder() / GetParam();
    Random random;
    ResetPeakResidentBytes();
    Watchdog watchdog(kStepLimit);
    for (int mutation = 0; mutation < kMutations; ++mutation)
    {
        watchdog.Step(GetParam() + ", overwriting " + std::to_string(mutation) +
                      " with QMX_TEST_SEED=" + std::to_string(random.Seed()));
        std::string damaged = bytes;
        // Headers lie at the front or, in some containers, at the back; half of the hits go there.
        const std::uint64_t edge = std::min<std::uint64_t>(bytes.size(), 2048);
        for (std::uint64_t hits = 1 + random.Below(8); hits > 0; --hits)
        {
            const std::uint64_t anywhere = random.Below(bytes.size()), near = random.Below(edge);
            const std::uint64_t place = random.Below(4);
            const std::uint64_t at = place == 0 ? near : place == 1 ? bytes.size() - 1 - near : anywhere;
            damaged[at] = static_cast<char>(random.Below(256));
        }
        std::ofstream(copy, std::ios::binary | std::ios::trunc)
            .write(damaged.data(), static_cast<std::streamsize>(damaged.size()));
        Exercise(copy);
    }
    EXPECT_LT(PeakResidentBytes(), kMemoryLimit);
    std::filesystem::remove(copy);
}

INSTANTIATE_TEST_SUITE_P(Files, OverwrittenFilmTest, testing::Values("bt601.mp4", "transparent.webm", "smooth.wmv"),
                         NameOf);
