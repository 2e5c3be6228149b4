// The whole program from the command line to its files, with clips that need no media.
#include "tests/host/DecodedVideo.h"
#include "tests/host/Program.h"
#include "tests/support/Picture.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <regex>

namespace qmx::host
{
namespace
{
namespace fs = std::filesystem;

constexpr int kCommandLine = 2;
constexpr int kProject = 3;
constexpr int kMedia = 4;
constexpr int kOutput = 5;

/// A folder with a project of black clips.
class CommandLine : public testing::Test
{
protected:
    void SetUp() override
    {
        WriteProject(R"({"width": 64, "height": 48, "frameRate": "30000/1001", "tracks": [
            {"id": 7, "clips": [{"type": "color", "start": 0, "duration": 1.001}]},
            {"id": 9, "position": {"left": 0.5, "width": 0.5}, "clips":
                [{"type": "color", "start": 0.5, "duration": 0.25}]}]})");
    }
    void WriteProject(const std::string& text) const { std::ofstream(m_folder.Path() / "p.json") << text; }
    std::string Name(const std::string& file) const { return (m_folder.Path() / file).string(); }
    std::string Project() const { return Name("p.json"); }
    /// Nothing but the project lies in the folder.
    void ExpectNothingLeft() const { EXPECT_EQ(m_folder.FileCount(), 1U); }

    test_support::TemporaryFolder m_folder;
};

/// GoogleTest's own regular expressions know fewer operators on some systems.
bool Matches(const std::string& text, const char* pPattern)
{
    return std::regex_match(text, std::regex(pPattern));
}

TEST_F(CommandLine, HelpAndVersionGoToStandardOutput)
{
    const QmxRun help({"--help"});
    EXPECT_EQ(help.ExitCode(), 0);
    for (const char* const pCommand : {"render", "frame", "sheet", "hash", "audio", "info", "thumbnail"})
        EXPECT_NE(help.Output().find(pCommand), std::string::npos) << pCommand;
    EXPECT_EQ(help.Errors(), "");
    const QmxRun command({"render", "--help"});
    EXPECT_EQ(command.ExitCode(), 0);
    EXPECT_NE(command.Output().find("--crf"), std::string::npos);
    const QmxRun version({"--version"});
    EXPECT_EQ(version.ExitCode(), 0);
    EXPECT_TRUE(Matches(version.Output(), "qmx [0-9]+[.][0-9]+[.][0-9]+\n")) << version.Output();
}

TEST_F(CommandLine, AWrongCommandLineIsTwoAndSaysWhatIsWrong)
{
    const std::string out = Name("a.mp4");
    const std::string png = Name("a.png");
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{}, "subcommand"},
        {{"paint"}, "subcommand"},
        {{"render"}, "PROJECT"},
        {{"render", Project()}, "--output"},
        {{"render", Project(), "-o", out, "--crf", "52"}, "--crf"},
        {{"render", Project(), "-o", out, "--crf", "x"}, "--crf"},
        {{"render", Project(), "-o", out, "--preset", "warp"}, "--preset"},
        {{"render", Project(), "-o", out, "--progress", "xml"}, "--progress"},
        {{"render", Project(), "-o", out, "--progress", "json", "--no-progress"}, "--no-progress"},
        {{"render", Project(), "-o", out, "--colour"}, "--colour"},
        {{"render", Project(), "-o", out, "extra"}, "extra"},
        {{"render", Project(), "-o", Name("a.avi")}, "a.avi: the name must end in .mp4"},
        {{"render", Project(), "-o", out, "--from", "1.001"}, "--from: 1.001 lies at or behind"},
        {{"render", Project(), "-o", out, "--to", "1,5"}, "--to: \"1,5\" is no number of seconds"},
        {{"hash", Project(), "--from", "-1"}, "--from: -1 lies outside 0 to 1000000 seconds"},
        {{"frame", Project(), "-o", out, "--at", "0"}, "a.mp4: the name must end in .png"},
        {{"sheet", Project(), "-o", Name("png")}, "png: the name must end in .png"},
        {{"frame", Project(), "-o", png}, "--at"},
        {{"frame", Project(), "-o", png, "--at", "2"}, "--at: 2 lies at or behind the project's end"},
        {{"frame", Project(), "-o", png, "--at", "0", "--track", "8"},
         "--track: the project has no track with the ID 8"},
        {{"frame", Project(), "-o", png, "--at", "0", "--track", "x"}, "--track: \"x\" is no track ID"},
        {{"sheet", Project(), "-o", png, "--columns", "0"}, "--columns"},
        {{"sheet", Project(), "-o", png, "--rows", "33"}, "--rows"},
        {{"audio", Project(), "-o", out}, "a.mp4: the name must end in .wav"},
        {{"audio", Project()}, "--output"},
        {{"info"}, "FILE"}};
    for (const auto& [arguments, word] : cases)
    {
        const QmxRun run(arguments);
        EXPECT_EQ(run.ExitCode(), kCommandLine) << word;
        EXPECT_EQ(run.Errors().rfind("qmx: ", 0), 0U) << run.Errors();
        EXPECT_NE(run.Errors().find(word), std::string::npos) << run.Errors();
        EXPECT_EQ(Lines(run.Errors()).size(), 1U) << run.Errors();
        EXPECT_EQ(run.Output(), "");
    }
    ExpectNothingLeft();
}

TEST_F(CommandLine, ABadProjectIsThreeForEveryCommandThatReadsOne)
{
    WriteProject(R"({"width": 64, "height": 48, "frameRate": 30, "tracks": [{"id": 1, "clips":
        [{"type": "audio", "start": 0, "duration": 1}]}]})");
    const std::vector<std::vector<std::string>> commands = {{"render", Project(), "-o", Name("a.mp4")},
                                                            {"frame", Project(), "--at", "0", "-o", Name("a.png")},
                                                            {"sheet", Project(), "-o", Name("a.png")},
                                                            {"hash", Project()},
                                                            {"audio", Project(), "-o", Name("a.wav")}};
    for (const std::vector<std::string>& arguments : commands)
    {
        const QmxRun run(arguments);
        EXPECT_EQ(run.ExitCode(), kProject) << arguments[0];
        EXPECT_EQ(run.Errors(), "qmx: " + Project() + ": tracks[0].clips[0].path: is missing\n");
        EXPECT_EQ(run.Output(), "");
    }
    ExpectNothingLeft();
}

TEST_F(CommandLine, AProjectThatIsNotThereIsThree)
{
    const QmxRun run({"hash", Name("none.json")});
    EXPECT_EQ(run.ExitCode(), kProject);
    EXPECT_EQ(run.Errors(), "qmx: " + Name("none.json") + ": cannot be read: No such file or directory\n");
}

TEST_F(CommandLine, APositionWithoutPixelsIsThree)
{
    WriteProject(R"({"width": 64, "height": 48, "frameRate": 30, "tracks": [{"id": 1, "position": {"width": 0.01},
        "clips": [{"type": "color", "start": 0, "duration": 1}]}]})");
    const QmxRun run({"hash", Project()});
    EXPECT_EQ(run.ExitCode(), kProject);
    EXPECT_EQ(run.Errors(), "qmx: " + Project() +
                                ": tracks[0].position: makes a box of 1 x 48 pixels, each side must have 2 to 16384\n");
}

TEST_F(CommandLine, AnOddCanvasCanBeHashedButNotEncoded)
{
    WriteProject(R"({"width": 63, "height": 48, "frameRate": 30, "tracks": [{"id": 1, "clips":
        [{"type": "color", "start": 0, "duration": 0.1}]}]})");
    const QmxRun render({"render", Project(), "-o", Name("a.mp4")});
    EXPECT_EQ(render.ExitCode(), kProject);
    EXPECT_EQ(render.Errors(), "qmx: " + Project() + ": width: must be even for a video, not 63\n");
    EXPECT_EQ(QmxRun({"hash", Project()}).ExitCode(), 0);
    ExpectNothingLeft();
}

TEST_F(CommandLine, MediaThatAreMissingOrNoVideoAreFour)
{
    const auto projectWith = [&](const std::string& path)
    {
        WriteProject(R"({"width": 64, "height": 48, "frameRate": 30, "tracks": [{"id": 1, "clips":
            [{"type": "color", "start": 0, "duration": 1},
             {"type": "video", "start": 1, "duration": 1, "path": ")" +
                     path + R"("}]}]})");
    };
    const std::string place = "qmx: " + Project() + ": tracks[0].clips[1].path: ";
    projectWith("none.mp4");
    const QmxRun missing({"hash", Project()});
    EXPECT_EQ(missing.ExitCode(), kMedia);
    EXPECT_EQ(missing.Errors(), place + Name("none.mp4") + ": cannot be opened: No such file or directory\n");
    EXPECT_EQ(missing.Output(), "");
    projectWith("p.json");
    const QmxRun text({"render", Project(), "-o", Name("a.mp4")});
    EXPECT_EQ(text.ExitCode(), kMedia);
    EXPECT_EQ(text.Errors(), place + Name("p.json") + ": holds no video that can be read\n");
    projectWith(".");
    EXPECT_EQ(QmxRun({"hash", Project()}).Errors(), place + Name(".") + ": is a folder\n");
    ExpectNothingLeft();
}

TEST_F(CommandLine, InfoTellsEveryFileThatCannotBeReadAndIsFour)
{
    const QmxRun run({"info", Name("none.mp4"), Project()});
    EXPECT_EQ(run.ExitCode(), kMedia);
    EXPECT_EQ(run.Errors(), "qmx: " + Name("none.mp4") + ": cannot be opened: No such file or directory\nqmx: " +
                                Project() + ": holds no media that can be read\n");
    EXPECT_EQ(run.Output(), "");
    const QmxRun json({"info", "--json", Name("none.mp4")});
    EXPECT_EQ(json.ExitCode(), kMedia);
    EXPECT_EQ(json.Output(), "[]\n");
}

TEST_F(CommandLine, InfoTellsOfFlashMovies)
{
    // 64 by 48 pixels, 25.5 frames a second, two empty frames.
    const unsigned char movie[] = {0x46, 0x57, 0x53, 0x0A, 0x19, 0x00, 0x00, 0x00, 0x60, 0x00, 0x28, 0x00, 0x00,
                                   0x1E, 0x00, 0x80, 0x19, 0x02, 0x00, 0x40, 0x00, 0x40, 0x00, 0x00, 0x00};
    std::ofstream(Name("two.SWF"), std::ios::binary)
        .write(reinterpret_cast<const char*>(movie), static_cast<std::streamsize>(sizeof movie));
    const QmxRun run({"info", Name("two.SWF")});
    EXPECT_EQ(run.ExitCode(), 0);
    EXPECT_EQ(run.Output().rfind(Name("two.SWF") + "\n  kind          Flash movie\n", 0), 0U) << run.Output();
    EXPECT_NE(run.Output().find("  size          64 x 48\n  duration      0.0784"), std::string::npos);
    EXPECT_NE(run.Output().find("  frame rate    51/2 (25.5) a second\n  frames        2\n"), std::string::npos);
    EXPECT_EQ(run.Errors(), "");
}

TEST_F(CommandLine, OutputsThatCannotBeWrittenAreFiveAndLeaveNothing)
{
    const std::vector<std::vector<std::string>> commands = {{"render", Project(), "-o", Name("none/a.mp4")},
                                                            {"frame", Project(), "--at", "0", "-o", Name("none/a.png")},
                                                            {"sheet", Project(), "-o", Name("none/a.png")}};
    for (const std::vector<std::string>& arguments : commands)
    {
        const QmxRun run(arguments);
        EXPECT_EQ(run.ExitCode(), kOutput) << arguments[0];
        EXPECT_EQ(run.Errors(), "qmx: " + arguments.back() + ": cannot be written: No such file or directory\n");
    }
    fs::create_symlink("p.json", Name("p.png"));
    const QmxRun itself({"frame", Project(), "--at", "0", "-o", Name("p.png")});
    EXPECT_EQ(itself.ExitCode(), kOutput);
    EXPECT_EQ(itself.Errors(), "qmx: " + Name("p.png") + ": is a file that the project is made of\n");
    fs::remove(Name("p.png"));
    ExpectNothingLeft();
}

TEST_F(CommandLine, HashPrintsALineForEveryFrame)
{
    const QmxRun run({"hash", Project()});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    const std::vector<std::string> lines = Lines(run.Output());
    ASSERT_EQ(lines.size(), 30U);
    EXPECT_EQ(lines[0].substr(0, 12), "0 0.0000000 ");
    EXPECT_EQ(lines[1].substr(0, 12), "1 0.0333666 ");
    EXPECT_EQ(lines[29].substr(0, 13), "29 0.9676333 ");
    // Every frame is black, so every checksum is the same.
    for (const std::string& line : lines)
    {
        EXPECT_TRUE(Matches(line, "[0-9]+ [0-9][.][0-9]{7} [0-9a-f]{16}")) << line;
        EXPECT_EQ(line.substr(line.size() - 16), lines[0].substr(lines[0].size() - 16));
    }
    EXPECT_EQ(run.Errors(), "");
}

TEST_F(CommandLine, HashOfASpanIsThatPartOfTheWhole)
{
    const std::vector<std::string> all = Lines(QmxRun({"hash", Project()}).Output());
    const QmxRun run({"hash", Project(), "--from", "0.5", "--to", "0.6"});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    // Frames 15 (0.5005) to 17 (0.5672).
    EXPECT_EQ(Lines(run.Output()), std::vector<std::string>(all.begin() + 15, all.begin() + 18));
}

TEST_F(CommandLine, FrameWritesAPictureOfTheCanvasSize)
{
    const QmxRun run({"frame", Project(), "--at", "0.6", "-o", Name("a.png")});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    const std::optional<test_support::Picture> picture = test_support::ReadPng(Name("a.png"));
    ASSERT_TRUE(picture);
    ASSERT_EQ(picture->width, 64U);
    ASSERT_EQ(picture->height, 48U);
    for (std::size_t i = 0; i < picture->bgra.size(); ++i)
        ASSERT_EQ(picture->bgra[i], i % 4 == 3 ? 255 : 0);
    EXPECT_EQ(run.Output() + run.Errors(), "");
    EXPECT_EQ(m_folder.FileCount(), 2U);
    EXPECT_EQ(QmxRun({"frame", Project(), "--at", "0", "--track", "9", "-o", Name("a.png")}).ExitCode(), 0);
}

TEST_F(CommandLine, SheetHasTheAskedNumberOfCells)
{
    const QmxRun run({"sheet", Project(), "-o", Name("a.png"), "--columns", "3", "--rows", "2"});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    const std::optional<test_support::Picture> picture = test_support::ReadPng(Name("a.png"));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, 3U * (96 + 12) + 12);
    EXPECT_EQ(picture->height, 2U * (48 + 4 + 14 + 12) + 12);
    EXPECT_EQ(m_folder.FileCount(), 2U);
}

TEST_F(CommandLine, TheSampleProjectsOfTextsCanBeShown)
{
    for (const char* const pSample : {"titles.json", "typing.json"})
    {
        const QmxRun run({"sheet", (fs::path(QMX_SAMPLES_DIR) / pSample).string(), "-o", Name("texts.png"), "--columns",
                          "2", "--rows", "2"});
        EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
        const std::optional<test_support::Picture> sheet = test_support::ReadPng(Name("texts.png"));
        ASSERT_TRUE(sheet);
        // The page and its captions are grey: colours are those of texts and labels.
        int colored = 0;
        for (std::size_t i = 0; i < sheet->bgra.size(); i += 4)
        {
            const auto [low, high] = std::minmax({sheet->bgra[i], sheet->bgra[i + 1], sheet->bgra[i + 2]});
            colored += high - low > 60 ? 1 : 0;
        }
        EXPECT_GT(colored, 500) << pSample;
    }
}

TEST_F(CommandLine, ProjectsWithoutMediaHaveASilentSound)
{
    for (const char* const pSample : {"titles.json", "typing.json"})
    {
        const QmxRun run({"audio", (fs::path(QMX_SAMPLES_DIR) / pSample).string(), "-o", Name("silence.wav")});
        EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
        std::ifstream file(Name("silence.wav"), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        EXPECT_GT(bytes.size(), 44U + 48'000U * 4) << pSample;
        EXPECT_EQ(bytes.find_first_not_of('\0', 44), std::string::npos) << pSample; // 44 bytes of header
    }
}

TEST_F(CommandLine, RenderWritesAPlayableVideoWithExactTimes)
{
    const QmxRun run({"render", Project(), "-o", Name("a.mp4"), "--preset", "ultrafast"});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    EXPECT_EQ(run.Output() + run.Errors(), ""); // no terminal, no progress
    const DecodedVideo video(Name("a.mp4"));
    ASSERT_TRUE(video.readable);
    EXPECT_EQ(video.width, 64);
    EXPECT_EQ(video.height, 48);
    ASSERT_EQ(video.frames.size(), 30U);
    EXPECT_EQ(video.frames[29].pts * video.timeBaseNum * 30000, std::int64_t{29} * 1001 * video.timeBaseDen);
    for (const DecodedVideo::Frame& frame : video.frames)
        EXPECT_EQ(frame.y[0], 16);
    EXPECT_EQ(m_folder.FileCount(), 2U);
}

TEST_F(CommandLine, RenderOfASpanStartsAtZero)
{
    const QmxRun run({"render", Project(), "-o", Name("a.MP4"), "--from", "0.5", "--to", "0.6"});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    const DecodedVideo video(Name("a.MP4"));
    ASSERT_EQ(video.frames.size(), 3U);
    EXPECT_EQ(video.frames[0].pts, 0);
}

TEST_F(CommandLine, RenderReplacesAnOlderFile)
{
    std::ofstream(Name("a.mp4")) << "old";
    EXPECT_EQ(QmxRun({"render", Project(), "-o", Name("a.mp4")}).ExitCode(), 0);
    EXPECT_EQ(DecodedVideo(Name("a.mp4")).frames.size(), 30U);
}

TEST_F(CommandLine, JsonProgressIsALineAtATimeAndEndsWithTheLastFrame)
{
    const QmxRun run({"render", Project(), "-o", Name("a.mp4"), "--progress", "json"});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    const std::vector<std::string> lines = Lines(run.Output());
    ASSERT_FALSE(lines.empty());
    for (const std::string& line : lines)
        EXPECT_TRUE(Matches(line, "[{]\"frame\":[0-9]+,\"frames\":30,\"fps\":[0-9]+[.][0-9],"
                                  "\"secondsLeft\":[0-9]+[.][0-9][}]"))
            << line;
    EXPECT_EQ(lines.back().rfind("{\"frame\":30,", 0), 0U);
}

#if !defined(_WIN32) // signals, a shell, names that are no text
TEST_F(CommandLine, AFullStandardOutputIsFive)
{
    const fs::path full = "/dev/full";
    if (!fs::exists(full))
        GTEST_SKIP() << "no /dev/full here";
    Program run("/bin/sh", {"-c", "exec \"$0\" hash \"$1\" > /dev/full", QMX_PROGRAM, Project()});
    run.Finish();
    EXPECT_EQ(run.ExitCode(), kOutput);
    EXPECT_EQ(run.Errors(), "qmx: standard output: cannot be written: No space left on device\n");
}

TEST_F(CommandLine, AnInterruptedRenderingLeavesNothingBehind)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    {
        WriteProject(R"({"width": 1280, "height": 720, "frameRate": 30, "tracks": [{"id": 1, "clips":
            [{"type": "color", "start": 0, "duration": 900000}]}]})");
        Program run(QMX_PROGRAM, {"render", Project(), "-o", Name("a.mp4"), "--progress", "json"});
        ASSERT_TRUE(run.WaitForLine());
        EXPECT_EQ(m_folder.FileCount(), 2U); // the project and what is being written
        run.Signal(signal);
        run.Finish();
        EXPECT_EQ(run.ExitCode(), 1);
        EXPECT_EQ(run.Errors(), "qmx: interrupted\n");
        ExpectNothingLeft();
    }
}

TEST_F(CommandLine, ASignalThatWasIgnoredBeforeStaysIgnored)
{
    WriteProject(R"({"width": 64, "height": 48, "frameRate": 30, "tracks": [{"id": 1, "clips":
        [{"type": "color", "start": 0, "duration": 900000}]}]})");
    Program run("/bin/sh", {"-c", "trap '' HUP; exec \"$0\" render \"$1\" -o \"$2\" --progress json", QMX_PROGRAM,
                            Project(), Name("a.mp4")});
    ASSERT_TRUE(run.WaitForLine());
    run.Signal(SIGHUP);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(run.WaitForLine());
    run.Signal(SIGTERM);
    run.Finish();
    EXPECT_EQ(run.ExitCode(), 1);
    ExpectNothingLeft();
}

TEST_F(CommandLine, NamesOfAnyBytesWork)
{
    const std::string project = Name("p\xFF.json");
    fs::rename(Project(), project);
    const std::string output = Name("\xC3\xA4 \xFE.png");
    const QmxRun run({"frame", project, "--at", "0", "-o", output});
    EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
    EXPECT_TRUE(test_support::ReadPng(output));
}
#endif
} // namespace
} // namespace qmx::host
