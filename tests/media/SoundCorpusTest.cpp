/// @file SoundCorpusTest.cpp
/// Sounds as they are found in the world, with the facts that the collection states for them.
#include "engine/decoders/media/AudioDecoder.h"
#include "engine/platform/RefPtr.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/ReferenceSound.h"

#include <gtest/gtest.h>

#include <mfapi.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ostream>

using namespace test_support;

namespace
{
struct CorpusSound
{
    const char* name;
    std::uint32_t rate, channels;
    std::uint32_t bits;     ///< 0: the coding has none
    std::uint32_t samples;  ///< of a channel, by another decoder
    std::uint32_t accuracy; ///< samples by which that may be wrong: 0 where the true length is stated, else a block
    double rms, peak;       ///< full scale is 1
};
void PrintTo(const CorpusSound& sound, std::ostream* pStream)
{
    *pStream << sound.name;
}

const CorpusSound kSounds[] = {
    {"sample_8bit.wav", 44'100, 1, 8, 44'100, 0, 0.0053, 0.0078},
    {"sine_24le.wav", 44'100, 1, 24, 44'100, 0, 0.0884, 0.1250},
    {"sample_float32.wav", 44'100, 1, 32, 45'056, 0, 0.0006, 0.0027},
    {"sample_with_trailing_bytes.wav", 44'100, 1, 16, 44'100, 0, 0.0006, 0.0027},
    {"bear-vbr-xing-header.mp3", 48'000, 2, 0, 133'632, 1'152, 0.0061, 0.0726},
    {"bear-vbr-no-seek-table.mp3", 48'000, 2, 0, 134'784, 1'152, 0.0061, 0.0726},
    {"bear-cbr-constant-frame-size-no-seek-table.mp3", 48'000, 2, 0, 133'632, 1'152, 0.0061, 0.0728},
    {"test-cbr-info-header.mp3", 44'100, 1, 0, 44'100, 1'152, 0.0839, 0.1194},
    {"bear.flac", 48'000, 2, 16, 131'568, 0, 0.0065, 0.0800},
    {"bear_vorbis.ogg", 48'000, 2, 0, 131'568, 1'024, 0.0064, 0.0698},
    {"bear.opus", 48'000, 2, 0, 131'520, 960, 0.0065, 0.0800},
    {"silence-22khz-mono-1s.wav", 22'050, 1, 16, 22'032, 0, 0, 0},
    {"vbr22.mp3", 22'050, 1, 0, 199'332, 1'152, 0, 0},
    {"flac1sMono.flac", 44'100, 1, 16, 44'100, 0, 0.1105, 0.7997},
    {"sine-1009ms-1ch-32000hz-gapless.mp3", 32'000, 1, 0, 32'288, 0, 0.5372, 0.8031}, // 1.009 s
    {"sine-200000samples-itunes.m4a", 48'000, 1, 0, 200'000, 0, 0.5648, 0.8103},
    {"piano_8bit_stereo.wav", 8'000, 2, 8, 35'195, 0, 0.1517, 0.6484},
    {"house.wma", 16'000, 1, 0, 118'784, 2'048, 0.0837, 0.5122},
    {"waveformatextensible-24bit-4byte-48kHz-stereo.wav", 48'000, 2, 32, 2, 0, 0, 0},
};

class SoundCorpusTest : public testing::TestWithParam<CorpusSound>
{
protected:
    MediaServices m_services;
};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SoundCorpusTest);

std::string NameOf(const testing::TestParamInfo<CorpusSound>& info)
{
    std::string name = info.param.name;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
    return name;
}
} // namespace

TEST_P(SoundCorpusTest, HasTheFactsOfTheCollection)
{
    const CorpusSound& facts = GetParam();
    QMX_REQUIRE_CORPUS(path, std::filesystem::path("audio") / facts.name);
    CAudioDecoder decoder;
    ASSERT_EQ(decoder.Initialize(EnginePath(path)), S_OK);
    ComPtr<IMFMediaType> pType;
    ASSERT_EQ(decoder.GetNativeMediaType(pType.Put()), S_OK);
    const auto get = [&](const GUID& key)
    {
        UINT32 value = 0;
        return SUCCEEDED(pType->GetUINT32(key, &value)) ? value : 0;
    };
    EXPECT_EQ(get(MF_MT_AUDIO_SAMPLES_PER_SECOND), facts.rate);
    EXPECT_EQ(get(MF_MT_AUDIO_NUM_CHANNELS), facts.channels);
    EXPECT_EQ(get(MF_MT_AUDIO_BITS_PER_SAMPLE), facts.bits);

    const Sound sound = DecodeByEngine(path);
    const double perSample = 48'000.0 / facts.rate;
    EXPECT_NEAR(static_cast<double>(sound.Samples()), facts.samples * perSample, facts.accuracy * perSample + 1);
    double sum = 0;
    double peak = 0;
    for (const std::int16_t value : sound.values)
    {
        const double level = value / 32'768.0 * (facts.channels == 1 ? std::sqrt(2.0) : 1); // one spread over two
        sum += level * level;
        peak = std::max(peak, std::abs(level));
    }
    const double rms = std::sqrt(sum / static_cast<double>(std::max<std::size_t>(1, sound.values.size())));
    EXPECT_NEAR(rms, facts.rms, 0.0002 + facts.rms * 0.01);
    EXPECT_NEAR(peak, facts.peak, 0.004 + facts.peak * 0.03); // between samples a peak may be higher
}

INSTANTIATE_TEST_SUITE_P(Files, SoundCorpusTest, testing::ValuesIn(kSounds), NameOf);

TEST(SoundCorpus, DamagedFilesAreRefusedOrPartlyHeard)
{
    const MediaServices services;
    for (const char* const pName : {"malformed-join.mp3", "crash-24728523.wav"})
    {
        QMX_REQUIRE_CORPUS(path, std::filesystem::path("damaged/audio") / pName);
        const Sound sound = DecodeByEngine(path, 0, 48'000 * 600);
        EXPECT_LT(sound.Samples(), 48'000U * 600);
        DecodeByEngine(path, 20'000'000);
    }
}

TEST(SoundCorpus, TheJoinedFileIsHeardFromBothParts)
{
    const MediaServices services;
    QMX_REQUIRE_CORPUS(path, "damaged/audio/malformed-join.mp3");
    const Sound reference = DecodeByProgram(path);
    const Sound sound = DecodeByEngine(path);
    // The other decoder leaves out what it cannot decode; here there is silence in its place, so that the second part
    // stays where it is.
    EXPECT_GE(sound.Samples(), reference.Samples());
    EXPECT_LE(sound.Samples(), reference.Samples() + 8 * 1'254);
}
