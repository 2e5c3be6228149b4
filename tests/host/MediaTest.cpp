// The whole program over films whose pictures carry their number, so that each output frame tells what it shows.
#include "tests/host/DecodedVideo.h"
#include "tests/host/Program.h"
#include "tests/support/FrameStripReader.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/Picture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPattern.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>

namespace qmx::host
{
namespace
{
namespace fs = std::filesystem;
using test_support::Picture;

class Media : public testing::Test
{
protected:
    std::string Name(const std::string& file) const { return (m_folder.Path() / file).string(); }
    std::string Project() const { return Name("p.json"); }

    /// A project of 640 x 360 at @p rate with the tracks given.
    void WriteProject(const std::string& rate, const std::string& tracks) const
    {
        std::ofstream(m_folder.Path() / "p.json")
            << R"({"width": 640, "height": 360, "frameRate": ")" + rate + R"(", "tracks": [)" + tracks + "]}";
    }
    /// One track over the whole canvas.
    static std::string Track(const std::string& clips) { return R"({"id": 1, "clips": [)" + clips + "]}"; }
    static std::string Video(const fs::path& path, const std::string& start, const std::string& duration,
                             const std::string& more = "")
    {
        return R"({"type": "video", "path": ")" + path.generic_string() + R"(", "start": )" + start +
               ", \"duration\": " + duration + more + "}";
    }

    /// The composed picture at @p at seconds.
    std::optional<Picture> FrameAt(const std::string& at) const
    {
        const QmxRun run({"frame", Project(), "--at", at, "-o", Name("f.png")});
        EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
        return test_support::ReadPng(Name("f.png"));
    }
    std::vector<std::string> Hashes(const std::string& from = "") const
    {
        std::vector<std::string> arguments{"hash", Project()};
        if (!from.empty())
            arguments.insert(arguments.end(), {"--from", from});
        const QmxRun run(arguments);
        EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
        return Lines(run.Output());
    }

    test_support::TemporaryFolder m_folder;
};

Picture Cropped(const Picture& picture, std::uint32_t left, std::uint32_t top, std::uint32_t width,
                std::uint32_t height)
{
    Picture part{width, height, {}};
    for (std::uint32_t y = top; y < top + height; ++y)
        part.bgra.insert(part.bgra.end(), picture.At(left, y), picture.At(left, y) + std::size_t{width} * 4);
    return part;
}

/// Turned counter-clockwise by a quarter.
Picture TurnedBack(const Picture& picture)
{
    Picture turned{picture.height, picture.width, {}};
    for (std::uint32_t y = 0; y < turned.height; ++y)
    {
        for (std::uint32_t x = 0; x < turned.width; ++x)
        {
            const std::uint8_t* const p = picture.At(picture.width - 1 - y, x);
            turned.bgra.insert(turned.bgra.end(), p, p + 4);
        }
    }
    return turned;
}

bool IsBlack(const Picture& picture)
{
    for (std::size_t i = 0; i < picture.bgra.size(); ++i)
    {
        if (picture.bgra[i] != (i % 4 == 3 ? 255 : 0))
            return false;
    }
    return true;
}

TEST_F(Media, InfoTellsTheFactsOfAFile)
{
    QMX_REQUIRE_MEDIA(turned, "rotated-90-30.mp4");
    QMX_REQUIRE_MEDIA(ntsc, "h264-2997.mkv");
    const QmxRun text({"info", ntsc.string()});
    EXPECT_EQ(text.ExitCode(), 0);
    EXPECT_EQ(text.Output().rfind(ntsc.string() + "\n  kind          film\n", 0), 0U) << text.Output();
    for (const char* const pLine : {"  size          192 x 108\n", "  frame rate    30000/1001 (29.97) a second\n",
                                    "  rotation      0\n", "  pixel aspect  1:1\n"})
        EXPECT_NE(text.Output().find(pLine), std::string::npos) << text.Output();
    const QmxRun run({"info", "--json", turned.string(), ntsc.string()});
    EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
    const nlohmann::json list = nlohmann::json::parse(run.Output(), nullptr, false);
    ASSERT_TRUE(list.is_array());
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0]["file"], turned.string());
    EXPECT_EQ(list[0]["width"], 128);
    EXPECT_EQ(list[0]["height"], 208);
    EXPECT_EQ(list[0]["rotation"], 90);
    EXPECT_EQ(list[0]["frameRate"]["num"], 30);
    EXPECT_EQ(list[0]["frameRate"]["den"], 1);
    EXPECT_EQ(list[0]["pixelAspect"]["x"], 1);
    EXPECT_NEAR(list[0]["duration"].get<double>(), 2.0, 0.05);
    EXPECT_EQ(list[1]["frameRate"]["num"], 30000);
    EXPECT_EQ(list[1]["frameRate"]["den"], 1001);
}

TEST_F(Media, InfoGoesOnAfterAFileThatCannotBeRead)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    const QmxRun run({"info", "--json", Name("none.mp4"), film.string()});
    EXPECT_EQ(run.ExitCode(), 4);
    EXPECT_EQ(nlohmann::json::parse(run.Output(), nullptr, false).size(), 1U);
    EXPECT_NE(run.Errors().find("none.mp4"), std::string::npos);
}

TEST_F(Media, EveryRenderedFrameShowsItsOwnPicture)
{
    for (const auto& [name, rate] : {std::pair{"h264-bframes-30.mp4", "30"},
                                     {"h264-5994.mkv", "60000/1001"},
                                     {"h264-bframes-23976.mp4", "24000/1001"},
                                     {"hevc-bframes-50.mkv", "50"}})
    {
        QMX_REQUIRE_MEDIA(film, name);
        WriteProject(rate, Track(Video(film, "0", "5")));
        const QmxRun run({"render", Project(), "-o", Name("a.mp4"), "--preset", "ultrafast", "--crf", "10"});
        ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
        const DecodedVideo video(Name("a.mp4"));
        ASSERT_GT(video.frames.size(), 100U);
        for (std::size_t i = 0; i < video.frames.size(); ++i)
            ASSERT_EQ(test_support::ReadFrameStrip(video.frames[i].y.data(), 640, 360, 640), i) << name;
    }
}

TEST_F(Media, TrimmedAndMovedClipsShowTheirPartOfTheSource)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    // | 0 black | 1: pictures 60..89 | 2: pictures 15..44 | 3 nothing |
    WriteProject("30",
                 Track(Video(film, "1", "1", ", \"inPoint\": 2") + ", " + Video(film, "2", "1", ", \"inPoint\": 0.5") +
                       R"(, {"type": "color", "start": 4, "duration": 0.5})"));
    const QmxRun run({"render", Project(), "-o", Name("a.mp4"), "--preset", "ultrafast", "--crf", "10"});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    const DecodedVideo video(Name("a.mp4"));
    ASSERT_EQ(video.frames.size(), 135U);
    for (std::size_t i = 0; i < 135; ++i)
    {
        const auto number = test_support::ReadFrameStrip(video.frames[i].y.data(), 640, 360, 640);
        if (i >= 30 && i < 60)
            ASSERT_EQ(number, i - 30 + 60) << i;
        else if (i >= 60 && i < 90)
            ASSERT_EQ(number, i - 60 + 15) << i;
        else
            ASSERT_EQ(number, std::nullopt) << i;
    }
}

TEST_F(Media, AFrameLooksTheSameAskedAloneOrInItsTurn)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    QMX_REQUIRE_MEDIA(turned, "rotated-90-30.mp4");
    WriteProject("30000/1001", Track(Video(film, "0", "3") + ", " + Video(film, "3", "1.5", ", \"inPoint\": 9.2")) +
                                   R"(, {"id": 2, "position": {"left": 0.6, "width": 0.3}, "clips": [)" +
                                   Video(turned, "1", "3") + "]}");
    const std::vector<std::string> all = Hashes();
    ASSERT_EQ(all.size(), 135U);
    for (const std::size_t first : {3U, 31U, 89U, 90U, 100U, 118U, 134U})
    {
        const std::string time = all[first].substr(all[first].find(' ') + 1, 9);
        EXPECT_EQ(Hashes(time), std::vector<std::string>(all.begin() + static_cast<std::ptrdiff_t>(first), all.end()))
            << first;
    }
}

TEST_F(Media, AClipLongerThanItsSourceHoldsTheLastPicture)
{
    QMX_REQUIRE_MEDIA(film, "h264-no-b-30.mp4"); // 60 pictures
    WriteProject("30", Track(Video(film, "0", "4")));
    const std::vector<std::string> lines = Hashes();
    ASSERT_EQ(lines.size(), 120U);
    const auto hash = [](const std::string& line) { return line.substr(line.rfind(' ')); };
    EXPECT_NE(hash(lines[58]), hash(lines[59]));
    for (std::size_t i = 60; i < 120; ++i)
        EXPECT_EQ(hash(lines[i]), hash(lines[59]));
    const std::optional<Picture> alone = FrameAt("3.9");
    ASSERT_TRUE(alone);
    EXPECT_EQ(test_support::ReadFrameStrip(*alone), 59U);
}

TEST_F(Media, AnInPointBehindTheSourceShowsItsLastPicture)
{
    QMX_REQUIRE_MEDIA(film, "h264-no-b-30.mp4");
    WriteProject("30", Track(Video(film, "0", "1", ", \"inPoint\": 50")));
    const std::optional<Picture> picture = FrameAt("0.5");
    ASSERT_TRUE(picture);
    EXPECT_EQ(test_support::ReadFrameStrip(*picture), 59U);
}

TEST_F(Media, PicturesStandInTheMiddleOfTheirBoxesOverBlack)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4"); // 192 x 108, as wide for its height as the canvas
    WriteProject("30", R"({"id": 1, "position": {"left": 0.5, "top": 0.25, "width": 0.5, "height": 0.75}, "clips": [)" +
                           Video(film, "0", "1") + "]}");
    const std::optional<Picture> picture = FrameAt("0.5");
    ASSERT_TRUE(picture);
    // The box is 320 x 270 from (320, 90); the picture in it 320 x 180, 45 rows above and below.
    EXPECT_EQ(test_support::ReadFrameStrip(Cropped(*picture, 320, 135, 320, 180)), 15U);
    EXPECT_TRUE(IsBlack(Cropped(*picture, 0, 0, 320, 360)));
    EXPECT_TRUE(IsBlack(Cropped(*picture, 320, 0, 320, 135)));
    EXPECT_TRUE(IsBlack(Cropped(*picture, 320, 315, 320, 45)));
}

TEST_F(Media, LaterTracksLieOnEarlierOnes)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    const std::string small = R"("position": {"left": 0.25, "top": 0.5, "width": 0.5, "height": 0.5}, "clips": [)";
    WriteProject("30", Track(Video(film, "0", "1")) + ", {\"id\": 2, " + small +
                           Video(film, "0", "1", ", \"inPoint\": 4") + "]}");
    const std::optional<Picture> picture = FrameAt("0.2");
    ASSERT_TRUE(picture);
    EXPECT_EQ(test_support::ReadFrameStrip(*picture), 6U);
    EXPECT_EQ(test_support::ReadFrameStrip(Cropped(*picture, 160, 180, 320, 180)), 126U);
    const QmxRun run({"frame", Project(), "--at", "0.2", "--track", "2", "-o", Name("t.png")});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    const std::optional<Picture> alone = test_support::ReadPng(Name("t.png"));
    ASSERT_TRUE(alone);
    EXPECT_EQ(test_support::ReadFrameStrip(*alone), std::nullopt);
    EXPECT_EQ(test_support::ReadFrameStrip(Cropped(*alone, 160, 180, 320, 180)), 126U);
    EXPECT_TRUE(IsBlack(Cropped(*alone, 0, 0, 640, 180)));
}

TEST_F(Media, AFilmThatIsStoredLyingStandsUpright)
{
    QMX_REQUIRE_MEDIA(film, "rotated-90-30.mp4"); // 128 x 208 once upright
    WriteProject("30", Track(Video(film, "0", "1")));
    const std::optional<Picture> picture = FrameAt("0.5");
    ASSERT_TRUE(picture);
    const std::uint32_t width = 222; // 360 * 128 / 208 = 221.5
    const std::uint32_t left = (640 - width) / 2;
    EXPECT_EQ(test_support::ReadFrameStrip(Cropped(*picture, left, 0, width, 360)), 15U);
    EXPECT_TRUE(IsBlack(Cropped(*picture, 0, 0, left, 360)));
    EXPECT_TRUE(IsBlack(Cropped(*picture, left + width, 0, 640 - left - width, 360)));
}

TEST_F(Media, AClipsRotationTurnsItClockwiseInsideItsBox)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    WriteProject("30", Track(Video(film, "0", "1", ", \"rotation\": 90")));
    std::optional<Picture> picture = FrameAt("0.5");
    ASSERT_TRUE(picture);
    // Turned, the picture is 360 high and 202 wide.
    EXPECT_EQ(test_support::ReadFrameStrip(TurnedBack(Cropped(*picture, 219, 0, 202, 360))), 15U);
    EXPECT_TRUE(IsBlack(Cropped(*picture, 0, 0, 219, 360)));
    EXPECT_TRUE(IsBlack(Cropped(*picture, 421, 0, 219, 360)));
    WriteProject("30", Track(Video(film, "0", "1", ", \"rotation\": 180")));
    picture = FrameAt("0.5");
    ASSERT_TRUE(picture);
    EXPECT_EQ(test_support::ReadFrameStrip(TurnedBack(TurnedBack(*picture))), 15U);
    WriteProject("30", Track(Video(film, "0", "1", ", \"rotation\": 270")));
    picture = FrameAt("0.5");
    ASSERT_TRUE(picture);
    EXPECT_EQ(test_support::ReadFrameStrip(TurnedBack(TurnedBack(TurnedBack(Cropped(*picture, 219, 0, 202, 360))))),
              15U);
}

TEST_F(Media, AVariableRatePlaysInStep)
{
    QMX_REQUIRE_MEDIA(film, "vfr-bursts.mp4"); // numbered by a clock of 120 ticks a second
    WriteProject("60", Track(Video(film, "0", "9.5")));
    const QmxRun run({"render", Project(), "-o", Name("a.mp4"), "--preset", "ultrafast", "--crf", "10"});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    const DecodedVideo video(Name("a.mp4"));
    ASSERT_EQ(video.frames.size(), 570U);
    // Ticks at which the film has a picture.
    const auto isKept = [](std::uint32_t n)
    {
        return n % 2 == 0 && (n < 120 || (n >= 360 && n <= 418) || n == 468 || n == 552 || n == 606 ||
                              (n >= 720 && n <= 956 && n % 4 == 0) || n == 1140);
    };
    std::uint32_t shown = 0;
    for (std::uint32_t i = 0; i < 570; ++i)
    {
        shown = isKept(i * 2) ? i * 2 : shown;
        ASSERT_EQ(test_support::ReadFrameStrip(video.frames[i].y.data(), 640, 360, 640), shown) << i;
    }
}

TEST_F(Media, TransparentFilmsShowWhatLiesBeneath)
{
    QMX_REQUIRE_MEDIA(film, "alpha-qtrle-64.mov"); // 64 x 48, every pixel follows from its place
    std::ofstream(Project()) << R"({"width": 64, "height": 48, "frameRate": 25, "tracks": [)" +
                                    Track(Video(film, "0", "0.16")) + "]}";
    const std::optional<Picture> picture = FrameAt("0.08");
    ASSERT_TRUE(picture);
    ASSERT_EQ(picture->width, 64U);
    for (std::uint32_t y = 0; y < 48; ++y)
    {
        for (std::uint32_t x = 0; x < 64; ++x)
        {
            const tagPatternPixel pixel = PatternPixel(x, y, 2);
            const auto over = [&](std::uint8_t value) { return std::floor(value * pixel.a / 255.0 + 0.5); };
            ASSERT_EQ(picture->At(x, y)[0], over(pixel.b)) << x << ", " << y;
            ASSERT_EQ(picture->At(x, y)[1], over(pixel.g)) << x << ", " << y;
            ASSERT_EQ(picture->At(x, y)[2], over(pixel.r)) << x << ", " << y;
        }
    }
}

TEST_F(Media, TheSheetShowsTheMiddleOfEachPart)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    WriteProject("30", Track(Video(film, "0", "10")));
    const QmxRun run({"sheet", Project(), "-o", Name("s.png"), "--columns", "3", "--rows", "2"});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    const std::optional<Picture> page = test_support::ReadPng(Name("s.png"));
    ASSERT_TRUE(page);
    for (std::uint32_t cell = 0; cell < 6; ++cell)
        EXPECT_EQ(test_support::ReadFrameStrip(Cropped(*page, 12 + cell % 3 * 332, 12 + cell / 3 * 210, 320, 180)),
                  25 + 50 * cell);
}

TEST_F(Media, AProjectsOwnFrameRateForAClipCounts)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    // At ten steps a second each picture stands for three frames.
    WriteProject("30", Track(Video(film, "0", "1", ", \"frameRate\": 10")));
    for (const auto& [at, number] : {std::pair{"0", 0U}, {"0.09", 0U}, {"0.1", 3U}, {"0.2", 6U}, {"0.29", 6U}})
    {
        const std::optional<Picture> picture = FrameAt(at);
        ASSERT_TRUE(picture);
        EXPECT_EQ(test_support::ReadFrameStrip(*picture), number) << at;
    }
}

TEST_F(Media, TheOutputMayNotBeOneOfTheMedia)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    fs::copy_file(film, Name("copy.mp4"));
    WriteProject("30", Track(Video("copy.mp4", "0", "1")));
    const QmxRun run({"render", Project(), "-o", Name("copy.mp4")});
    EXPECT_EQ(run.ExitCode(), 5);
    EXPECT_EQ(run.Errors(), "qmx: " + Name("copy.mp4") + ": is a file that the project is made of\n");
    EXPECT_EQ(fs::file_size(Name("copy.mp4")), fs::file_size(film));
}

TEST_F(Media, TheSmallestHostShowsAPicture)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    Program run(QMX_MINIMAL_HOST, {film.string()});
    run.Finish();
    EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
    EXPECT_EQ(run.Output().rfind("640 x 360, first pixel #", 0), 0U) << run.Output();
}

TEST(MinimalHost, ShowsABlackPictureWithoutAFilm)
{
    Program run(QMX_MINIMAL_HOST, {});
    run.Finish();
    EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
    EXPECT_EQ(run.Output(), "640 x 360, first pixel #000000\n");
}
} // namespace
} // namespace qmx::host
