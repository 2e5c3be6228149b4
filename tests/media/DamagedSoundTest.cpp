/// @file DamagedSoundTest.cpp
/// Sounds that were cut off or overwritten in places: silence or what can be decoded, never a crash, a hang or a flood
/// of memory.
#include "engine/decoders/media/AudioDecoder.h"
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
constexpr std::uint64_t kMemoryLimit = 512ULL << 20; // over what the process had before
/// A damaged header may claim hours, and an honest reader fills holes with silence; nobody listens that long.
constexpr std::uint64_t kMostBytes = 192'000 * 60;

std::vector<std::string> CorpusSounds()
{
    std::vector<std::string> names;
    std::error_code absent;
    for (const auto& entry : std::filesystem::directory_iterator(CorpusFolder() / "audio", absent))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

/// Opens what there is, reads it, jumps to the middle and beyond the end, and back.
void Exercise(const std::filesystem::path& path)
{
    std::vector<unsigned char> block(192'000);
    void* hSound = nullptr;
    if (FAILED(QMXGetClipAudioBegin(&hSound, EnginePath(path), 0)))
        return;
    std::uint64_t cbAll = 0;
    while (const unsigned int cb = QMXGetClipAudio(hSound, block.data()))
    {
        ASSERT_LE(cb, block.size());
        cbAll += cb;
        if (cbAll > kMostBytes)
            break;
    }
    const std::uint64_t end = cbAll * 10'000'000 / 192'000;
    for (const std::uint64_t time : {end / 2, end + 100, end * 2 + 10'000'000, std::uint64_t{0}, end / 3})
    {
        ASSERT_EQ(QMXGetClipAudioBegin(&hSound, EnginePath(path), time), S_OK);
        for (int i = 0; i < 3; ++i)
            QMXGetClipAudio(hSound, block.data());
    }
    CAudioDecoder decoder;
    ASSERT_EQ(decoder.Initialize(EnginePath(path)), S_OK);
    for (const std::uint64_t time : {end / 2, end / 4, end / 2 + 1'000, end * 2, std::uint64_t{0}})
    {
        decoder.Seek(time);
        decoder.GetSample(block.data());
    }
    QMXGetClipAudioEnd(hSound);
}

std::string NameOf(const testing::TestParamInfo<std::string>& info)
{
    std::string name = info.param;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
    return name;
}

class CutSoundTest : public testing::TestWithParam<std::string>
{
protected:
    MediaServices m_services;
};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CutSoundTest);

class OverwrittenSoundTest : public testing::TestWithParam<std::string>
{
protected:
    MediaServices m_services;
};
} // namespace

TEST_P(CutSoundTest, CutAnywhereIsRefusedOrPartlyHeard)
{
    constexpr std::uint64_t kCuts = 64;
    QMX_REQUIRE_CORPUS(original, std::filesystem::path("audio") / GetParam());
    const std::filesystem::path copy = ScratchFolder() / GetParam();
    std::filesystem::copy_file(original, copy, std::filesystem::copy_options::overwrite_existing);
    std::filesystem::permissions(copy, std::filesystem::perms::owner_write, std::filesystem::perm_options::add);
    const std::uint64_t size = std::filesystem::file_size(copy);
    ResetPeakResidentBytes();
    const std::uint64_t before = ResidentBytes();
    Watchdog watchdog(kStepLimit);
    for (std::uint64_t cut = kCuts; cut > 0; --cut) // the copy can only become shorter
    {
        const std::uint64_t length = size * cut / (kCuts + 1);
        watchdog.Step(GetParam() + " cut after " + std::to_string(length) + " bytes");
        std::filesystem::resize_file(copy, length);
        Exercise(copy);
    }
    EXPECT_LT(PeakResidentBytes(), before + kMemoryLimit);
    std::filesystem::remove(copy);
}

INSTANTIATE_TEST_SUITE_P(Files, CutSoundTest, testing::ValuesIn(CorpusSounds()), NameOf);

TEST_P(OverwrittenSoundTest, OverwrittenAnywhereIsRefusedOrPartlyHeard)
{
    constexpr int kMutations = 200;
    QMX_REQUIRE_CORPUS(original, std::filesystem::path("audio") / GetParam());
    std::ifstream input(original, std::ios::binary);
    std::ostringstream content;
    content << input.rdbuf();
    const std::string bytes = content.str();
    ASSERT_FALSE(bytes.empty());
    const std::filesystem::path copy = ScratchFolder() / GetParam();
    Random random;
    ResetPeakResidentBytes();
    const std::uint64_t before = ResidentBytes();
    Watchdog watchdog(kStepLimit);
    for (int mutation = 0; mutation < kMutations; ++mutation)
    {
        watchdog.Step(GetParam() + ", overwriting " + std::to_string(mutation) +
                      " with QMX_TEST_SEED=" + std::to_string(random.Seed()));
        std::string damaged = bytes;
        // Headers lie at the front; half of the hits go there.
        const std::uint64_t edge = std::min<std::uint64_t>(bytes.size(), 1024);
        for (std::uint64_t hits = 1 + random.Below(8); hits > 0; --hits)
        {
            const std::uint64_t at = random.Below(2) == 0 ? random.Below(edge) : random.Below(bytes.size());
            damaged[at] = static_cast<char>(random.Below(256));
        }
        std::ofstream(copy, std::ios::binary | std::ios::trunc)
            .write(damaged.data(), static_cast<std::streamsize>(damaged.size()));
        Exercise(copy);
    }
    EXPECT_LT(PeakResidentBytes(), before + kMemoryLimit);
    std::filesystem::remove(copy);
}

INSTANTIATE_TEST_SUITE_P(Files, OverwrittenSoundTest,
                         testing::Values("test-cbr-info-header.mp3", "sine-200000samples-itunes.m4a", "bear_vorbis.ogg",
                                         "flac1sMono.flac", "piano_8bit_stereo.wav"),
                         NameOf);
