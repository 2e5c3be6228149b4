/// @file DamagedSoundTest.cpp
/// Sounds that were cut off or overwritten in places: silence or what can be decoded, never a crash, a hang or a flood
/// of memory.
#include "engine/decoders/media/AudioDecoder.h"
#include "engine/decoders/media/MediaInfo.h"
#include "tests/media/Damage.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/Process.h"

#include <gtest/gtest.h>

#include <vector>

using namespace test_support;

namespace
{
constexpr std::uint64_t kMemoryLimit = 512ULL << 20; // over what the process had before
/// A damaged header may claim hours, and an honest reader fills holes with silence; nobody listens that long.
constexpr std::uint64_t kMostBytes = 192'000 * 60;

/// Opens what there is, reads it, jumps to the middle and beyond the end, and back.
void Listen(const std::filesystem::path& path)
{
    tagMediaInfo media;
    QMXGetMediaInfo(EnginePath(path), &media);
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
    QMX_REQUIRE_CORPUS(path, std::filesystem::path("audio") / GetParam());
    CutAnywhere(path, ResidentBytes() + kMemoryLimit, Listen);
}

INSTANTIATE_TEST_SUITE_P(Files, CutSoundTest, testing::ValuesIn(CorpusFiles("audio")), NameOfFile);

TEST_P(OverwrittenSoundTest, OverwrittenAnywhereIsRefusedOrPartlyHeard)
{
    constexpr std::uint64_t kEdge = 1024;
    QMX_REQUIRE_CORPUS(path, std::filesystem::path("audio") / GetParam());
    OverwriteAnywhere(path, kEdge, ResidentBytes() + kMemoryLimit, Listen);
}

INSTANTIATE_TEST_SUITE_P(Files, OverwrittenSoundTest,
                         testing::Values("test-cbr-info-header.mp3", "sine-200000samples-itunes.m4a", "bear_vorbis.ogg",
                                         "flac1sMono.flac", "piano_8bit_stereo.wav"),
                         NameOfFile);
