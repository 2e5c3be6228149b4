/// @file SoundExactnessTest.cpp
/// The same samples at the same times, wherever reading begins, as an independent decoding gives.
#include "engine/decoders/media/AudioDecoder.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/Random.h"
#include "tests/support/ReferenceSound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>

using namespace test_support;

namespace
{
struct SoundFilm
{
    const char* name;
    double seconds; ///< true length; 0: the container does not state it to the sample
    bool isExact;   ///< lossless at 48 kHz: nothing may differ; else -80 dB

    double Limit() const { return isExact ? -200 : -80; }
};
void PrintTo(const SoundFilm& film, std::ostream* pStream)
{
    *pStream << film.name;
}

const SoundFilm kFilms[] = {
    {"sound-u8-48000.wav", 3, true},
    {"sound-s16le-48000.wav", 3, true},
    {"sound-s24le-48000.wav", 3, true},
    {"sound-s32le-48000.wav", 3, true},
    {"sound-f32le-48000.wav", 3, true},
    {"sound-f64le-48000.wav", 3, true},
    {"sound-mono-48000.wav", 3, true},
    {"sound-surround-48000.wav", 3, true},
    {"sound-be-48000.aiff", 3, true},
    {"sound-48000.flac", 3, true},
    {"sound-alac.m4a", 3, true},
    {"sound-pcm.mkv", 8, true},
    {"sound-flac.mkv", 8, true},
    {"sound-s16le-8000.wav", 3, false},
    {"sound-s16le-11025.wav", 3, false},
    {"sound-s16le-16000.wav", 3, false},
    {"sound-s16le-22050.wav", 3, false},
    {"sound-s16le-32000.wav", 3, false},
    {"sound-s16le-44100.wav", 3, false},
    {"sound-s16le-88200.wav", 3, false},
    {"sound-s16le-96000.wav", 3, false},
    {"sound-s16le-192000.wav", 3, false},
    {"sound-odd-rate.wav", 3, false},
    {"sound-mono-44100.wav", 3, false},
    {"sound-44100.flac", 3, false},
    {"sound-24-96000.flac", 3, false},
    {"sound-vbr.mp3", 8, false},
    {"sound-cbr-320.mp3", 8, false},
    {"sound-cbr-no-header.mp3", 0, false},
    {"sound-vbr-no-header.mp3", 0, false},
    {"sound-low-rate.mp3", 8, false},
    {"sound-aac.m4a", 8, false},
    {"sound-aac-44100.m4a", 8, false},
    {"sound-aac.mp4", 8, false},
    {"sound-aac-fragmented.mp4", 0, false},
    {"sound-aac.aac", 0, false},
    {"sound-aac.mka", 0, false},
    {"sound-aac.ts", 0, false},
    {"sound.opus", 8, false},
    {"sound-opus.webm", 8, false},
    {"sound-vorbis.ogg", 8, false},
    {"sound-48000.ac3", 0, false},
    {"sound-44100.ac3", 0, false},
};

/// One decoder as a clip holds it; the blocks are put together.
class OpenSound
{
public:
    bool Open(const std::filesystem::path& path) { return SUCCEEDED(m_decoder.Initialize(EnginePath(path))); }
    /// @p count samples from @p time (100 ns) on, or what there is.
    Sound From(std::uint64_t time, std::size_t count)
    {
        Sound sound;
        m_decoder.Seek(time);
        while (sound.Samples() < count)
        {
            const unsigned int cb = m_decoder.GetSample(reinterpret_cast<unsigned char*>(m_block.data()));
            if (cb == 0)
                break;
            sound.values.insert(sound.values.end(), m_block.begin(), m_block.begin() + cb / 2);
        }
        return sound;
    }

private:
    CAudioDecoder m_decoder;
    std::vector<std::int16_t> m_block = std::vector<std::int16_t>(96'000);
};

class SoundExactnessTest : public testing::TestWithParam<SoundFilm>
{
protected:
    MediaServices m_services;
};

std::string NameOf(const testing::TestParamInfo<SoundFilm>& info)
{
    std::string name = info.param.name;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
    return name;
}
} // namespace

TEST_P(SoundExactnessTest, GivesTheSamplesOfAnIndependentDecodingWhereverReadingBegins)
{
    const SoundFilm& film = GetParam();
    QMX_REQUIRE_MEDIA(path, film.name);
    const Sound reference = DecodeByProgram(path);
    ASSERT_GT(reference.Samples(), 48'000U);
    const Sound whole = DecodeByEngine(path);

    // Without a statement of the container's the decoders agree on the blocks, but not on what a resampler makes of
    // the last one.
    if (film.seconds != 0)
        EXPECT_NEAR(static_cast<double>(whole.Samples()), film.seconds * 48'000, 1);
    else
        EXPECT_NEAR(static_cast<double>(whole.Samples()), static_cast<double>(reference.Samples()), 20);
    const std::size_t common = std::min(whole.Samples(), reference.Samples()) - 20;
    EXPECT_LE(DifferenceInDb(whole, 0, reference, 0, common), film.Limit());

    double worst = DifferenceInDb(whole, 0, reference, 0, common);
    constexpr int kPositions = 50;
    constexpr std::size_t kCount = 4'000;
    OpenSound open;
    ASSERT_TRUE(open.Open(path));
    Random random;
    for (int i = 0; i < kPositions; ++i)
    {
        const std::uint64_t time = random.Below((common - kCount) * 10'000'000 / 48'000);
        const std::size_t sample = (time * 48 + 5'000) / 10'000; // the nearest
        const Sound part = open.From(time, kCount);
        ASSERT_LE(DifferenceInDb(part, 0, whole, sample, kCount), film.Limit()) << "from sample " << sample;
        ASSERT_LE(DifferenceInDb(part, 0, reference, sample, kCount), film.Limit()) << "from sample " << sample;
        worst = std::max(worst, DifferenceInDb(part, 0, reference, sample, kCount));
    }
    RecordProperty("worst_dB", std::to_string(worst));
}

TEST_P(SoundExactnessTest, EndsWhereItEndsHoweverTheEndIsReached)
{
    QMX_REQUIRE_MEDIA(path, GetParam().name);
    const Sound whole = DecodeByEngine(path);
    ASSERT_GT(whole.Samples(), 48'000U);
    OpenSound open;
    ASSERT_TRUE(open.Open(path));
    for (const std::size_t before : {1U, 100U, 1'200U, 30'000U})
    {
        const std::size_t sample = whole.Samples() - before;
        const Sound tail = open.From((sample * 10'000 + 24) / 48, SIZE_MAX);
        EXPECT_EQ(tail.Samples(), before);
        EXPECT_LE(DifferenceInDb(tail, 0, whole, sample, before), GetParam().Limit()) << before;
    }
    const std::uint64_t end = (whole.Samples() + 48) * 10'000 / 48;
    EXPECT_EQ(open.From(end, 1).Samples(), 0U);
    EXPECT_EQ(open.From(end + 36'000'000'000, 1).Samples(), 0U);
    EXPECT_EQ(open.From(~std::uint64_t{0} - 5, 1).Samples(), 0U);
    const Sound again = open.From(0, 4'000);
    EXPECT_EQ(LargestDifference(again, 0, whole, 0, 4'000), 0);
}

INSTANTIATE_TEST_SUITE_P(Films, SoundExactnessTest, testing::ValuesIn(kFilms), NameOf);
