// The whole program over transitions and colour keys.
#include "tests/host/Program.h"
#include "tests/support/FrameStripReader.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/Picture.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <optional>

namespace qmx::host
{
namespace
{
namespace fs = std::filesystem;
using test_support::Picture;
using test_support::ReadFrameStrip;

class Transitions : public testing::Test
{
protected:
    std::string Name(const std::string& file) const { return (m_folder.Path() / file).string(); }
    /// A project at 10 frames a second.
    void WriteProject(const std::string& tracks, std::uint32_t width = 40, std::uint32_t height = 20) const
    {
        std::ofstream(Name("p.json")) << R"({"width": )" << width << R"(, "height": )" << height
                                      << R"(, "frameRate": 10, "tracks": [)" << tracks << "]}";
    }
    static std::string Track(int id, const std::string& clips)
    {
        return R"({"id": )" + std::to_string(id) + R"(, "clips": [)" + clips + "]}";
    }
    /// A transition from 1 s to 2 s.
    static std::string Transition(const std::string& more)
    {
        return R"({"type": "transition", "start": 1, "duration": 1)" + more + "}";
    }
    static std::string Image(const std::string& path, const std::string& more = "")
    {
        return R"({"type": "image", "path": ")" + path + "\"" + more + "}";
    }
    Picture FrameAt(const std::string& at) const
    {
        const QmxRun run({"frame", Name("p.json"), "--at", at, "-o", Name("f.png")});
        EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
        return test_support::ReadPng(Name("f.png")).value_or(Picture{1, 1, {0, 0, 0, 0}});
    }
    std::vector<std::string> Hashes(const std::string& from) const
    {
        const QmxRun run({"hash", Name("p.json"), "--from", from});
        EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
        return Lines(run.Output());
    }
    void ExpectFailure(int code, const std::string& reason) const
    {
        const QmxRun run({"frame", Name("p.json"), "--at", "1.5", "-o", Name("f.png")});
        EXPECT_EQ(run.ExitCode(), code);
        EXPECT_EQ(run.Errors(), "qmx: " + Name("p.json") + ": " + reason + '\n');
        EXPECT_FALSE(fs::exists(Name("f.png")));
    }
    /// A picture of one colour, 0xAARRGGBB.
    void WritePicture(const std::string& name, std::uint32_t color, std::uint32_t width = 40,
                      std::uint32_t height = 20) const
    {
        Picture picture{width, height, {}};
        for (std::uint32_t i = 0; i < width * height; ++i)
            for (int shift = 0; shift < 32; shift += 8)
                picture.bgra.push_back(static_cast<std::uint8_t>(color >> shift));
        ASSERT_TRUE(test_support::WritePng(Name(name), picture));
    }

    test_support::TemporaryFolder m_folder;
};

std::vector<int> ColorAt(const Picture& picture, std::uint32_t x, std::uint32_t y)
{
    const std::uint8_t* const p = picture.At(x, y);
    return {p[2], p[1], p[0]};
}

void ExpectColor(const Picture& picture, std::uint32_t x, std::uint32_t y, const std::vector<int>& expected,
                 int tolerance)
{
    const std::vector<int> actual = ColorAt(picture, x, y);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "channel " << i << " at " << x << ", " << y;
}

TEST_F(Transitions, ADissolveLeadsFromOnePictureToTheOther)
{
    WritePicture("red.png", 0xFFFF0000U);
    WritePicture("blue.png", 0xFF0000FFU);
    WriteProject(Track(1, Image("red.png", R"(, "start": 0, "duration": 1)") + ", " +
                              Transition(", \"from\": " + Image("red.png") + ", \"to\": " + Image("blue.png")) + ", " +
                              Image("blue.png", R"(, "start": 2, "duration": 1)")));
    for (int tenth = 9; tenth <= 21; ++tenth)
    {
        const double share = tenth <= 10 ? 0 : tenth >= 20 ? 1 : (tenth - 10) / 10.0;
        const Picture picture = FrameAt(std::to_string(tenth / 10) + '.' + std::to_string(tenth % 10));
        ExpectColor(picture, 20, 10, {static_cast<int>(255 * (1 - share)), 0, static_cast<int>(255 * share)}, 2);
    }
}

TEST_F(Transitions, ATransitionOnItsOwnStartsFromWhatLiesBeneath)
{
    WritePicture("red.png", 0xFFFF0000U);
    WritePicture("blue.png", 0xFF0000FFU);
    WriteProject(Track(1, Image("red.png", R"(, "start": 0, "duration": 3)")) + ", " +
                 Track(2, Transition(R"(, "effect": "dissolve", "to": )" + Image("blue.png"))));
    ExpectColor(FrameAt("1"), 20, 10, {255, 0, 0}, 0);
    ExpectColor(FrameAt("1.5"), 20, 10, {128, 0, 128}, 2);
    ExpectColor(FrameAt("2"), 20, 10, {255, 0, 0}, 0);
}

TEST_F(Transitions, AFixedProgressHolds)
{
    WritePicture("red.png", 0xFFFF0000U);
    WritePicture("blue.png", 0xFF0000FFU);
    WriteProject(Track(1, Transition(R"(, "effect": 3, "progress": 0.5, "from": )" + Image("red.png") +
                                     ", \"to\": " + Image("blue.png"))));
    const std::vector<std::string> lines = Hashes("1");
    ASSERT_EQ(lines.size(), 10U);
    for (const std::string& line : lines)
        EXPECT_EQ(line.substr(line.rfind(' ')), lines[0].substr(lines[0].rfind(' ')));
    const Picture picture = FrameAt("1.9"); // a wipe to the right, half way
    ExpectColor(picture, 2, 10, {0, 0, 255}, 2);
    ExpectColor(picture, 37, 10, {255, 0, 0}, 2);
}

TEST_F(Transitions, PicturesLookAsTheyDoBesideTheTransition)
{
    // Smaller than the canvas, with transparency, and premultiplied ones.
    WritePicture("small.png", 0x80FF8040U, 10, 8);
    const std::string keystroke = R"("keystrokes": [{"text": "", "fontName": "DejaVu Sans", "fontSize": 60,
        "startTime": 0, "backColor": "#ff8040", "backAlpha": 0.5}])";
    const std::string title = R"("texts": [{"text": "A", "fontName": "DejaVu Sans", "fontSize": 200, "x": 0.2, "y": 0.1,
        "color": "#80ffc0", "opacity": 0.6}])";
    const std::vector<std::string> clips{R"("type": "image", "path": "small.png")",
                                         R"("type": "keystroke", )" + keystroke, R"("type": "title", )" + title,
                                         R"("type": "color")"};
    WritePicture("green.png", 0xFF20A060U);
    for (const std::string& clip : clips)
    {
        WriteProject(Track(1, Image("green.png", R"(, "start": 0, "duration": 3)")) + ", " +
                     Track(2, "{\"start\": 0, \"duration\": 1, " + clip + "}, " +
                                  Transition(R"(, "from": {)" + clip + R"(, "start": 0}, "to": {"type": "color"})")));
        const Picture before = FrameAt("0.9");
        const Picture first = FrameAt("1"); // the from picture bit by bit
        ASSERT_EQ(before.bgra.size(), first.bgra.size());
        for (std::size_t i = 0; i < before.bgra.size(); ++i)
            ASSERT_NEAR(before.bgra[i], first.bgra[i], 1) << clip << " byte " << i; // straight and back rounds twice
    }
}

TEST_F(Transitions, FilmsRunToTheCutAndFromIt)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4"); // 300 numbered frames
    const std::string path = film.generic_string();
    const auto side = [&](const std::string& more)
    { return R"({"type": "video", "path": ")" + path + "\"" + more + "}"; };
    // Through black only one of the two is seen, and near the ends brightly enough to be read.
    WriteProject(Track(1, R"({"type": "transition", "start": 1, "duration": 4, "effect": "fade-black", "from": )" +
                              side(R"(, "inPoint": 1)") + ", \"to\": " + side(R"(, "inPoint": 6)") + "}"),
                 384, 216);
    EXPECT_EQ(ReadFrameStrip(FrameAt("1")), 30U);
    EXPECT_EQ(ReadFrameStrip(FrameAt("1.2")), 36U);
    EXPECT_EQ(ReadFrameStrip(FrameAt("4.8")), 180U + 54U); // 1.8 s behind the cut at 3
    // With one progress for all pictures: the from clip below the middle, the to clip above it.
    for (const auto& [progress, first] : {std::pair{"0", 30U}, {"1", 180U}})
    {
        WriteProject(Track(1, R"({"type": "transition", "start": 1, "duration": 4, "progress": )" +
                                  std::string(progress) + ", \"from\": " + side(R"(, "inPoint": 1)") +
                                  ", \"to\": " + side(R"(, "inPoint": 6)") + "}"),
                     384, 216);
        EXPECT_EQ(ReadFrameStrip(FrameAt("1")), first);
        EXPECT_EQ(ReadFrameStrip(FrameAt("4.5")), first + 105);
    }
}

TEST_F(Transitions, AFilmThatEndsEarlierHoldsItsLastPicture)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4"); // 10 s
    const std::string path = film.generic_string();
    const std::string both = R"(, "from": {"type": "video", "path": ")" + path +
                             R"(", "inPoint": 9.8}, "to": {"type": "video",
        "path": ")" + path + R"(", "inPoint": 30})";
    WriteProject(Track(1, R"({"type": "transition", "start": 0, "duration": 2, "effect": "push-left")" + both + "}"),
                 384, 216);
    const std::vector<std::string> all = Hashes("0");
    ASSERT_EQ(all.size(), 20U);
    for (const auto& [from, first] : {std::pair{"0.9", 9}, {"1", 10}, {"1.1", 11}, {"1.9", 19}})
        EXPECT_EQ(Hashes(from), std::vector<std::string>(all.begin() + first, all.end())) << from;
    WriteProject(Track(1, R"({"type": "transition", "start": 0, "duration": 2, "progress": 0)" + both + "}"), 384, 216);
    EXPECT_EQ(ReadFrameStrip(FrameAt("1.5")), 299U);
    WriteProject(Track(1, R"({"type": "transition", "start": 0, "duration": 2, "progress": 1)" + both + "}"), 384, 216);
    EXPECT_EQ(ReadFrameStrip(FrameAt("0.5")), 299U);
}

TEST_F(Transitions, FramesLookTheSameAskedAloneOrInTheirTurnBetweenClipsOfOneFile)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    const std::string video = R"({"type": "video", "path": ")" + film.generic_string() + "\"";
    WriteProject(Track(1, video + R"(, "start": 0, "duration": 1}, )" +
                              Transition(R"(, "effect": "clock", "from": )" + video + R"(, "inPoint": 1}, "to": )" +
                                         video + R"(, "inPoint": 5})") +
                              ", " + video + R"(, "start": 2, "duration": 1, "inPoint": 5.5})"),
                 192, 108);
    const std::vector<std::string> all = Hashes("0");
    ASSERT_EQ(all.size(), 30U);
    for (int frame = 9; frame < 22; ++frame)
        EXPECT_EQ(Hashes(std::to_string(frame / 10) + '.' + std::to_string(frame % 10)),
                  std::vector<std::string>(all.begin() + frame, all.end()));
}

TEST_F(Transitions, OtherModulesBesideTheProgramAreUsed)
{
    WritePicture("red.png", 0xFFFF0000U);
    WritePicture("blue.png", 0xFF0000FFU);
    WriteProject(Track(
        1, Transition(R"(, "module": "wipe_effect", "from": )" + Image("red.png") + ", \"to\": " + Image("blue.png"))));
    const Picture picture = FrameAt("1.5"); // its edge is sharp
    ExpectColor(picture, 19, 0, {0, 0, 255}, 0);
    ExpectColor(picture, 20, 0, {255, 0, 0}, 0);
}

TEST_F(Transitions, FailuresNameTheirPlace)
{
    const std::string sides = R"(, "from": {"type": "color"}, "to": {"type": "color"})";
    const std::string place = "tracks[0].clips[0].";
    WriteProject(Track(1, Transition(R"(, "module": "no_such_module")" + sides)));
    ExpectFailure(4, place + "module: no_such_module.so: is no library that can be loaded");
    WriteProject(Track(1, Transition(R"(, "module": "libqmxsamplebuffer")" + sides)));
    ExpectFailure(4, place + "module: libqmxsamplebuffer.so: has no entry point ApplyTxEffect");
    WriteProject(Track(1, Transition(R"(, "effect": "page")" + sides)));
    const QmxRun effect({"frame", Name("p.json"), "--at", "1", "-o", Name("f.png")});
    EXPECT_EQ(effect.ExitCode(), 3);
    EXPECT_NE(effect.Errors().find(place + "effect: must be one of \"dissolve\" (0), "), std::string::npos);
    WriteProject(Track(1, Transition(", \"to\": " + Image("none.png"))));
    ExpectFailure(4, place + "to.path: " + Name("none.png") + ": cannot be opened: No such file or directory");
    WritePicture("dot.png", 0xFFFFFFFFU, 1, 1);
    WriteProject(Track(1, Transition(", \"to\": " + Image("dot.png"))));
    ExpectFailure(3, place + "to: a picture of 1 x 1 cannot be fitted into the track's position");
}

TEST_F(Transitions, AFileThatIsShownIsNotWrittenOver)
{
    WritePicture("red.png", 0xFFFF0000U);
    WriteProject(Track(1, Transition(", \"to\": " + Image("red.png"))));
    const QmxRun run({"frame", Name("p.json"), "--at", "1", "-o", Name("red.png")});
    EXPECT_EQ(run.ExitCode(), 5);
    EXPECT_NE(run.Errors().find("is a file that the project is made of"), std::string::npos);
}

TEST_F(Transitions, TheSampleLeadsFromSceneToScene)
{
    const std::string sample = std::string(QMX_SAMPLES_DIR) + "/transitions.json";
    const auto frame = [&](const std::string& at)
    {
        const QmxRun run({"frame", sample, "--track", "1", "--at", at, "-o", Name("s.png")});
        EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
        return test_support::ReadPng(Name("s.png")).value_or(Picture{1, 1, {0, 0, 0, 0}});
    };
    const std::vector<std::vector<int>> scenes{
        {0x12, 0x30, 0x3f}, {0x7a, 0x1f, 0x3d}, {0x0b, 0x6e, 0x4f}, {0x33, 0x28, 0x7a}};
    for (std::size_t i = 0; i < 16; i += 5)
    {
        const Picture before = frame(std::to_string(2 * i) + ".5");
        const Picture during = frame(std::to_string(2 * i) + ".96"); // three tenths
        const Picture after = frame(std::to_string(2 * i + 1) + ".9");
        ExpectColor(before, 40, 40, scenes[i % 4], 1);
        ExpectColor(after, 40, 40, scenes[(i + 1) % 4], 1);
        EXPECT_NE(during.bgra, before.bgra) << "section " << i;
        EXPECT_NE(during.bgra, after.bgra) << "section " << i;
    }
}

/// Films of a green screen with a red thing before its middle.
class ColorKeys : public Transitions
{
protected:
    static constexpr std::uint32_t kWidth = 128, kHeight = 72;

    void SetUp() override
    {
        Picture screen{kWidth, kHeight, {}};
        for (std::uint32_t i = 0; i < kWidth * kHeight; ++i)
        {
            const std::uint32_t x = i % kWidth;
            const std::uint32_t y = i / kWidth;
            const bool thing = x >= 48 && x < 80 && y >= 20 && y < 60;
            const std::uint8_t color[4] = {64, static_cast<std::uint8_t>(thing ? 40 : 177),
                                           static_cast<std::uint8_t>(thing ? 200 : 0), 255};
            screen.bgra.insert(screen.bgra.end(), color, color + 4);
        }
        ASSERT_TRUE(test_support::WritePng(Name("screen.png"), screen));
        WritePicture("blue.png", 0xFF2040C0U, kWidth, kHeight);
        WriteProject(Track(1, Image("screen.png", R"(, "start": 0, "duration": 1)")), kWidth, kHeight);
        const QmxRun render({"render", Name("p.json"), "-o", Name("screen.mp4"), "--crf", "1"});
        ASSERT_EQ(render.ExitCode(), 0) << render.Errors();
    }
    static std::string Film(const std::string& more, const std::string& type = "video",
                            const std::string& path = "screen.mp4")
    {
        return R"({"type": ")" + type + R"(", "path": ")" + path + R"(", "start": 0, "duration": 1)" + more + "}";
    }
    /// The screen is gone, the thing is not, and no rim of the screen is left around it.
    static void ExpectKeyed(const Picture& picture)
    {
        ASSERT_EQ(picture.width, kWidth);
        for (const auto& [x, y] : {std::pair{5U, 5U}, {120U, 66U}, {64U, 10U}, {30U, 40U}})
            ExpectColor(picture, x, y, {0x20, 0x40, 0xC0}, 2);
        ExpectColor(picture, 64, 40, {200, 40, 64}, 12);
        for (std::uint32_t x = 0; x < kWidth; ++x)
        {
            const std::vector<int> color = ColorAt(picture, x, 40);
            EXPECT_LE(color[1] - std::max(color[0], color[2]), 4) << "green at " << x;
        }
    }
    static constexpr const char* kKey = R"(, "key": {"color": "#00b140")";
};

TEST_F(ColorKeys, WhatLiesBeneathShowsThrough)
{
    WriteProject(Track(1, Image("blue.png", R"(, "start": 0, "duration": 1)")) + ", " +
                     Track(2, Film(std::string(kKey) + "}")),
                 kWidth, kHeight);
    ExpectKeyed(FrameAt("0"));
    ExpectKeyed(FrameAt("0.9"));
}

TEST_F(ColorKeys, ABackgroundTakesThePlaceOfTheScreen)
{
    WritePicture("small.png", 0xFF2040C0U, 6, 4); // stretched
    for (const char* const pBackground : {"blue.png", "small.png"})
    {
        WriteProject(Track(1, Film(std::string(kKey) + R"(, "background": ")" + pBackground + "\"}")), kWidth, kHeight);
        ExpectKeyed(FrameAt("0"));
        ExpectKeyed(FrameAt("0.5"));
    }
}

TEST_F(ColorKeys, CameraRecordingsAreKeyedToo)
{
    const QmxRun pack({"pack-camera", Name("screen.mp4"), Name("cam.mjpg"), "--quality", "98"});
    ASSERT_EQ(pack.ExitCode(), 0) << pack.Errors();
    for (const std::string background : {"", R"(, "background": "blue.png")"})
    {
        WriteProject(Track(1, Image("blue.png", R"(, "start": 0, "duration": 1)")) + ", " +
                         Track(2, Film(kKey + background + "}", "camera", "cam.mjpg")),
                     kWidth, kHeight);
        ExpectKeyed(FrameAt("0.5"));
    }
}

TEST_F(ColorKeys, AKeyedFilmCanBeASideOfATransition)
{
    WriteProject(Track(1, Image("blue.png", R"(, "start": 0, "duration": 3)")) + ", " +
                     Track(2, Transition(R"(, "progress": 0, "from": {"type": "video", "path": "screen.mp4")" +
                                         std::string(kKey) + R"(}}, "to": {"type": "color"})")),
                 kWidth, kHeight);
    ExpectKeyed(FrameAt("1"));
}

TEST_F(ColorKeys, SettingsCount)
{
    WriteProject(Track(1, Film(std::string(kKey) + R"(, "similarity": 1, "background": "blue.png"})")), kWidth,
                 kHeight);
    ExpectColor(FrameAt("0"), 64, 40, {0x20, 0x40, 0xC0}, 2); // everything is taken out
    WriteProject(Track(1, Film(R"(, "key": {"color": "#ff00ff", "background": "blue.png"})")), kWidth, kHeight);
    ExpectColor(FrameAt("0"), 5, 5, {0, 177, 64}, 6); // nothing is
}

TEST_F(ColorKeys, ABackgroundThatIsNoPictureIsFour)
{
    WriteProject(Track(1, Film(std::string(kKey) + R"(, "background": "none.png"})")), kWidth, kHeight);
    const std::string place = "tracks[0].clips[0].key.background: ";
    const QmxRun none({"hash", Name("p.json")});
    EXPECT_EQ(none.ExitCode(), 4);
    EXPECT_EQ(none.Errors(), "qmx: " + Name("p.json") + ": " + place + Name("none.png") +
                                 ": cannot be opened: No such file or directory\n");
    WriteProject(Track(1, Film(std::string(kKey) + R"(, "background": "screen.mp4"})")), kWidth, kHeight);
    const QmxRun film({"hash", Name("p.json")});
    EXPECT_EQ(film.ExitCode(), 4);
    EXPECT_EQ(film.Errors(),
              "qmx: " + Name("p.json") + ": " + place + Name("screen.mp4") + ": holds no picture that can be read\n");
}
} // namespace
} // namespace qmx::host
