// The whole program and the sound of projects.
#include "tests/host/DecodedVideo.h"
#include "tests/host/Program.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/ReferenceSound.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>

namespace qmx::host
{
namespace
{
using test_support::Sound;

class ProgramSound : public testing::Test
{
protected:
    std::string Name(const std::string& file) const { return (m_folder.Path() / file).string(); }
    void WriteProject(const std::string& tracks, const std::string& rate = "30") const
    {
        std::ofstream(m_folder.Path() / "p.json")
            << R"({"width": 64, "height": 48, "frameRate": ")" + rate + R"(", "tracks": [)" + tracks + "]}";
    }
    static std::string Track(int id, const std::string& clips)
    {
        return "{\"id\": " + std::to_string(id) + ", \"clips\": [" + clips + "]}";
    }
    static std::string Clip(const std::string& kind, const std::filesystem::path& path, double start, double duration,
                            double inPoint)
    {
        return R"({"type": ")" + kind + R"(", "path": ")" + path.string() + R"(", "start": )" + std::to_string(start) +
               ", \"duration\": " + std::to_string(duration) + ", \"inPoint\": " + std::to_string(inPoint) + "}";
    }
    /// The project's sound as qmx audio writes it.
    Sound Audio() const
    {
        const QmxRun run({"audio", Name("p.json"), "-o", Name("a.wav")});
        EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
        EXPECT_EQ(run.Output(), "");
        return test_support::DecodeByProgram(Name("a.wav"));
    }

    test_support::MediaServices m_services;
    test_support::TemporaryFolder m_folder;
};

/// Sound that was coded with loss is that of @p exact from sample @p from on: a shift by one sample fits worse by far.
void ExpectSame(const Sound& coded, const Sound& exact, std::size_t from, std::size_t count)
{
    const double difference = DifferenceInDb(coded, 1, exact, from + 1, count);
    EXPECT_LT(difference, -40);
    EXPECT_LT(difference, DifferenceInDb(coded, 0, exact, from + 1, count) - 6);
    EXPECT_LT(difference, DifferenceInDb(coded, 2, exact, from + 1, count) - 6);
}
} // namespace

TEST_F(ProgramSound, AudioWritesWhatAFileHolds)
{
    QMX_REQUIRE_MEDIA(path, "sound-s16le-48000.wav");
    WriteProject(Track(1, Clip("audio", path, 0, 3, 0)));
    const Sound written = Audio();
    ASSERT_EQ(written.Samples(), 3 * 48'000U);
    EXPECT_EQ(LargestDifference(written, 0, test_support::DecodeByProgram(path), 0, written.Samples()), 0);
}

TEST_F(ProgramSound, ACutIsNotHeardWhereTheSoundGoesOn)
{
    for (const char* const pName : {"sound-s16le-44100.wav", "sound-vbr.mp3", "sound-aac-44100.m4a", "sound.opus"})
    {
        QMX_REQUIRE_MEDIA(path, pName);
        WriteProject(Track(1, Clip("audio", path, 0, 2.9, 0)), "30000/1001");
        const Sound whole = Audio();
        std::string clips;
        double start = 0;
        for (const double end : {0.1001, 0.5, 0.7341, 0.734133, 1.999999, 2.0020, 2.9})
        {
            clips += (clips.empty() ? "" : ",") + Clip("audio", path, start, end - start, start);
            start = end;
        }
        WriteProject(Track(1, clips), "30000/1001");
        const Sound cut = Audio();
        ASSERT_EQ(cut.Samples(), whole.Samples());
        EXPECT_LE(LargestDifference(cut, 0, whole, 0, whole.Samples()), 3) << pName;
        const auto largestStep = [](const Sound& sound)
        {
            int largest = 0;
            for (std::size_t i = 1; i < sound.Samples(); ++i)
                largest = std::max(largest, std::abs(sound.At(i, 0) - sound.At(i - 1, 0)));
            return largest;
        };
        EXPECT_LE(largestStep(cut), largestStep(whole) + 3) << pName;
    }
}

TEST_F(ProgramSound, RenderWritesTheSameSoundBesideThePictures)
{
    QMX_REQUIRE_MEDIA(music, "sound-aac-44100.m4a");
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    WriteProject(Track(1, Clip("video", film, 0, 3, 1)) + "," + Track(2, Clip("audio", music, 0.5, 3, 2)));
    const QmxRun run({"render", Name("p.json"), "-o", Name("a.mp4"), "--preset", "ultrafast"});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    const Sound exact = Audio();
    const Sound rendered = test_support::DecodeByProgram(Name("a.mp4"));
    ASSERT_EQ(exact.Samples(), 168'000U);
    ASSERT_GE(rendered.Samples(), exact.Samples());
    ExpectSame(rendered, exact, 0, 167'000);
    EXPECT_EQ(DecodedVideo(Name("a.mp4")).frames.size(), 105U);
}

TEST_F(ProgramSound, RenderOfASpanBeginsWithItsSound)
{
    QMX_REQUIRE_MEDIA(music, "sound-aac-44100.m4a");
    WriteProject(Track(1, Clip("audio", music, 0, 3, 0)), "30000/1001");
    const QmxRun run({"render", Name("p.json"), "-o", Name("a.mp4"), "--from", "1", "--to", "2"});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    const Sound exact = Audio();
    const Sound rendered = test_support::DecodeByProgram(Name("a.mp4"));
    // The first frame from 1 s on is number 30.
    ExpectSame(rendered, exact, 48'048, 47'000);
}

TEST_F(ProgramSound, AProjectWithoutSoundHasNoStreamOfIt)
{
    QMX_REQUIRE_MEDIA(film, "h264-25.avi");
    WriteProject(Track(1, Clip("video", film, 0, 0.5, 0)));
    const QmxRun run({"render", Name("p.json"), "-o", Name("a.mp4")});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    EXPECT_TRUE(test_support::DecodeByProgram(Name("a.mp4")).values.empty());
    const Sound silence = Audio();
    EXPECT_EQ(silence.Samples(), 24'000U);
    EXPECT_TRUE(std::all_of(silence.values.begin(), silence.values.end(), [](std::int16_t v) { return v == 0; }));
}

TEST_F(ProgramSound, AFileWithoutSoundIsAnErrorForAnAudioClip)
{
    QMX_REQUIRE_MEDIA(film, "h264-25.avi");
    WriteProject(Track(1, Clip("audio", film, 0, 1, 0)));
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"audio", Name("p.json"), "-o", Name("a.wav")}, {"hash", Name("p.json")}})
    {
        const QmxRun run(arguments);
        EXPECT_EQ(run.ExitCode(), 4);
        EXPECT_EQ(run.Errors(), "qmx: " + Name("p.json") + ": tracks[0].clips[0].path: " + film.string() +
                                    ": holds no sound that can be read\n");
    }
    EXPECT_EQ(m_folder.FileCount(), 1U);
}

TEST_F(ProgramSound, InfoTellsOfSound)
{
    QMX_REQUIRE_MEDIA(wave, "sound-s24le-48000.wav");
    QMX_REQUIRE_MEDIA(bare, "sound-vbr-no-header.mp3");
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    const QmxRun text({"info", wave.string()});
    EXPECT_EQ(text.Output().rfind(wave.string() + "\n  kind          sound\n", 0), 0U) << text.Output();
    EXPECT_NE(text.Output().find("  duration      3 s\n  sound         48000 Hz, 2 channels, 24 bits\n"),
              std::string::npos);
    const QmxRun run({"info", "--json", wave.string(), bare.string(), film.string()});
    EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
    const nlohmann::json list = nlohmann::json::parse(run.Output(), nullptr, false);
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[0]["audio"], (nlohmann::json{{"rate", 48'000}, {"channels", 2}, {"bits", 24}}));
    EXPECT_FALSE(list[0].contains("width"));
    EXPECT_EQ(list[1]["audio"], (nlohmann::json{{"rate", 44'100}, {"channels", 2}}));
    // Eight seconds and what the encoder adds; the size of the file and the first frame's rate say something else.
    EXPECT_NEAR(list[1]["duration"].get<double>(), 8.05, 0.03);
    EXPECT_EQ(list[2]["audio"], (nlohmann::json{{"rate", 48'000}, {"channels", 1}}));
    EXPECT_EQ(list[2]["width"], 192);
}
} // namespace qmx::host
