#include "host/sound/SoundMixer.h"

#include "host/HostError.h"
#include "host/project/ProjectReader.h"
#include "host/sound/SoundTime.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/ReferenceSound.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qmx::host
{
namespace
{
using test_support::Sound;

class SoundMixerTest : public testing::Test
{
protected:
    SoundMixerTest()
    {
        WriteWave(m_folder.Path() / "low.wav", m_low);
        WriteWave(m_folder.Path() / "high.wav", m_high);
    }

    host::Project Project(const std::string& tracks) const
    {
        return ProjectReader::Parse(R"({"width": 64, "height": 48, "frameRate": 30, "tracks": [)" + tracks + "]}",
                                    m_folder.Path() / "p.json");
    }
    static std::string Clip(const std::string& name, const std::string& start, const std::string& duration,
                            const std::string& more = "")
    {
        return R"({"type": "audio", "path": ")" + name + R"(", "start": )" + start + ", \"duration\": " + duration +
               more + "}";
    }
    static std::string Track(int id, const std::string& clips, const std::string& more = "")
    {
        return "{\"id\": " + std::to_string(id) + more + ", \"clips\": [" + clips + "]}";
    }
    /// @p count samples of a project from @p first on, in levels of 16 bits.
    std::vector<float> Mixed(const host::Project& project, std::uint64_t first, std::size_t count,
                             std::size_t part = 1'600)
    {
        MediaProbe probe;
        SoundMixer mixer(project, probe);
        mixer.Start(first);
        std::vector<float> samples(count * 2);
        for (std::size_t at = 0; at < count; at += part)
            mixer.Read(samples.data() + at * 2, std::min(part, count - at));
        for (float& sample : samples)
            sample *= 32'768;
        return samples;
    }
    /// Value @p channel of sample @p sample; 0 outside.
    static float At(const Sound& sound, std::int64_t sample, std::size_t channel)
    {
        const bool isInside = sample >= 0 && sample < static_cast<std::int64_t>(sound.Samples());
        return isInside ? sound.At(static_cast<std::size_t>(sample), channel) : 0.0F;
    }

    test_support::MediaServices m_services;
    test_support::TemporaryFolder m_folder;
    Sound m_low = test_support::Tone(48'000, 100, 0.4);
    Sound m_high = test_support::Tone(24'000, 700, 0.4);
};
} // namespace

TEST_F(SoundMixerTest, AClipIsHeardFromItsStartToItsEnd)
{
    const host::Project project = Project(Track(1, Clip("low.wav", "0.5", "0.25")));
    const std::vector<float> mixed = Mixed(project, 0, 48'000);
    for (std::int64_t i = 0; i < 48'000; ++i)
        for (std::size_t channel = 0; channel < 2; ++channel)
            ASSERT_EQ(mixed[static_cast<std::size_t>(i) * 2 + channel], i < 36'000 ? At(m_low, i - 24'000, channel) : 0)
                << i;
}

TEST_F(SoundMixerTest, TheInPointIsTheFirstSampleThatIsHeard)
{
    const host::Project project = Project(Track(1, Clip("low.wav", "0.1", "0.2", ", \"inPoint\": 0.333")));
    const std::vector<float> mixed = Mixed(project, 0, 14'400);
    for (std::int64_t i = 4'800; i < 14'400; ++i)
        ASSERT_EQ(mixed[static_cast<std::size_t>(i) * 2], At(m_low, i - 4'800 + 15'984, 0)) << i;
}

TEST_F(SoundMixerTest, TracksAreAddedEachWithItsVolume)
{
    const host::Project project =
        Project(Track(1, Clip("low.wav", "0", "1", ", \"volume\": 0.5"), ", \"volume\": 0.5") + "," +
                Track(2, Clip("high.wav", "0.25", "0.5", ", \"volume\": 0.75")));
    const std::vector<float> mixed = Mixed(project, 0, 48'000);
    for (std::int64_t i = 0; i < 48'000; ++i)
        for (std::size_t channel = 0; channel < 2; ++channel)
            ASSERT_NEAR(mixed[static_cast<std::size_t>(i) * 2 + channel],
                        0.25F * At(m_low, i, channel) + 0.75F * At(m_high, i - 12'000, channel), 0.01)
                << i;
}

TEST_F(SoundMixerTest, WhatIsMutedIsNotHeard)
{
    const host::Project project = Project(Track(1, Clip("low.wav", "0", "1"), ", \"mute\": true") + "," +
                                          Track(2, Clip("low.wav", "0", "1", ", \"mute\": true")) + "," +
                                          Track(3, Clip("low.wav", "0", "1", ", \"volume\": 0")));
    MediaProbe probe;
    EXPECT_FALSE(SoundMixer(project, probe).HasSound());
    for (const float value : Mixed(project, 0, 4'800))
        ASSERT_EQ(value, 0);
}

TEST_F(SoundMixerTest, AFileThatEndsBeforeItsClipIsFollowedBySilence)
{
    const host::Project project =
        Project(Track(1, Clip("high.wav", "0", "0.75") + "," + Clip("high.wav", "0.75", "0.25")));
    const std::vector<float> mixed = Mixed(project, 0, 48'000);
    for (std::int64_t i = 0; i < 48'000; ++i)
        ASSERT_EQ(mixed[static_cast<std::size_t>(i) * 2], At(m_high, i < 36'000 ? i : i - 36'000, 0)) << i;
}

TEST_F(SoundMixerTest, SoundsTheSameWhereverItBegins)
{
    const host::Project project = Project(Track(1, Clip("low.wav", "0.1001", "0.4", ", \"inPoint\": 0.05003")) + "," +
                                          Track(2, Clip("high.wav", "0.2", "0.6", ", \"volume\": 16")));
    const std::vector<float> whole = Mixed(project, 0, 48'000);
    const host::Project soft = Project(Track(1, Clip("low.wav", "0.1001", "0.4", ", \"inPoint\": 0.05003")));
    const std::vector<float> softWhole = Mixed(soft, 0, 48'000);
    for (const std::uint64_t first : {1U, 4'805U, 10'000U, 20'000U, 40'000U})
    {
        const std::vector<float> part = Mixed(soft, first, 4'000, 77);
        for (std::size_t i = 0; i < part.size(); ++i)
            ASSERT_EQ(part[i], softWhole[first * 2 + i]) << first << " + " << i / 2;
    }
    for (const float value : whole)
        ASSERT_LE(std::abs(value), 32'768.5F); // however loud
}

TEST_F(SoundMixerTest, ClipsThatAreOnlySeenAreSilentWhateverTheirFiles)
{
    const host::Project project = Project(Track(1, R"({"type": "title", "start": 0, "duration": 1, "texts": []},
        {"type": "keystroke", "start": 1, "duration": 1, "keystrokes": []},
        {"type": "image", "start": 2, "duration": 1, "path": "none.png"},
        {"type": "camera", "start": 3, "duration": 1, "path": "none.mjpg"},
        {"type": "color", "start": 4, "duration": 1},
        {"type": "transition", "start": 5, "duration": 1, "from": {"type": "video", "path": "low.wav"}})"));
    MediaProbe probe;
    EXPECT_FALSE(SoundMixer(project, probe).HasSound());
}

TEST_F(SoundMixerTest, AColorHasNoSoundAndAFileThatCannotBeReadIsAnError)
{
    MediaProbe probe;
    EXPECT_FALSE(SoundMixer(Project(Track(1, R"({"type": "color", "start": 0, "duration": 1})")), probe).HasSound());
    try
    {
        const host::Project project = Project(Track(1, Clip("none.wav", "0", "1")));
        const SoundMixer mixer(project, probe);
        FAIL() << "made";
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::Media);
        EXPECT_NE(std::string(error.what()).find("tracks[0].clips[0].path: "), std::string::npos) << error.what();
    }
}

TEST(SoundTime, SamplesAndTimesAgree)
{
    for (std::uint64_t sample = 0; sample < 200'000; ++sample)
        ASSERT_EQ(SampleAtTime(TimeOfSample(sample)), sample);
    EXPECT_EQ(SampleAtTime(10'000'000'000'000), 48'000'000'000U);
}
} // namespace qmx::host
