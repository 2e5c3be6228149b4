// qmx import and qmx export, run as a user runs them.
#include "tests/host/Program.h"
#include "tests/support/TemporaryFolder.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace qmx::host
{
namespace
{
class Interchange : public testing::Test
{
protected:
    std::string Name(const std::string& file) const { return (m_folder.Path() / file).string(); }
    std::string Write(const std::string& file, const std::string& text) const
    {
        std::ofstream(m_folder.Path() / file, std::ios::binary) << text;
        return Name(file);
    }
    static std::string Read(const std::string& file)
    {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static std::string Timelines(const std::string& file)
    {
        return (std::filesystem::path(QMX_TIMELINES_DIR) / file).string();
    }

    test_support::TemporaryFolder m_folder;
};

const char* const kPictures = R"({"width": 96, "height": 64, "frameRate": "30000/1001", "tracks": [
    {"id": 4, "clips": [{"type": "color", "start": 0, "duration": 0.5},
        {"type": "title", "start": 0.5005, "duration": 1, "texts": [
            {"text": "Here", "fontName": "DejaVu Sans", "fontSize": 60, "color": "#ff8000", "x": 0.1, "y": 0.1,
             "animation": "leftToRight", "speed": 7}]}]},
    {"id": 2, "position": {"left": 0.5, "top": 0.25, "width": 0.5, "height": 0.5}, "clips": [
        {"type": "keystroke", "start": 0.1, "duration": 0.9, "inPoint": 3, "left": 0.05, "keystrokes": [
            {"text": "Q", "startTime": 3.2, "fontName": "DejaVu Sans", "fontSize": 40, "textColor": "#00ff00"}]}]}]})";

TEST_F(Interchange, AProjectShowsTheSamePicturesAfterGoingRound)
{
    const std::string project = Write("p.json", kPictures);
    const QmxRun out({"export", project, "-o", Name("p.otio")});
    ASSERT_EQ(out.ExitCode(), 0) << out.Errors();
    EXPECT_EQ(out.Output(), "");
    EXPECT_EQ(out.Errors(), "qmx: " + project + ": tracks[0].clips[1]: title: only qmx makes its pictures\n" + //
                                "qmx: " + project + ": tracks[1]: position: only qmx reads it\n" + "qmx: " + project +
                                ": tracks[1].clips[0]: keystroke: only qmx makes its pictures\n");
    const QmxRun back({"import", Name("p.otio"), "-o", Name("back.json")});
    ASSERT_EQ(back.ExitCode(), 0) << back.Errors();
    EXPECT_EQ(back.Errors(), "");
    const QmxRun hash({"hash", project});
    EXPECT_EQ(hash.ExitCode(), 0);
    EXPECT_FALSE(hash.Output().empty());
    EXPECT_EQ(QmxRun({"hash", Name("back.json")}).Output(), hash.Output());
    EXPECT_EQ(m_folder.FileCount(), 3U);
}

TEST_F(Interchange, TransitionsLookTheSameAfterGoingRound)
{
    const std::string project = (std::filesystem::path(QMX_SAMPLES_DIR) / "transitions.json").string();
    ASSERT_EQ(QmxRun({"export", project, "-o", Name("t.otio")}).ExitCode(), 0);
    const QmxRun back({"import", Name("t.otio"), "-o", Name("back.json")});
    ASSERT_EQ(back.ExitCode(), 0) << back.Errors();
    const QmxRun hash({"hash", project, "--from", "1", "--to", "4"});
    EXPECT_FALSE(hash.Output().empty()) << hash.Errors();
    EXPECT_EQ(QmxRun({"hash", Name("back.json"), "--from", "1", "--to", "4"}).Output(), hash.Output());
}

TEST_F(Interchange, MadeFromAnotherFolderMediaAreFoundAgain)
{
    std::filesystem::create_directories(m_folder.Path() / "cuts" / "new");
    const std::string project =
        Write("p.json", R"({"width": 64, "height": 48, "frameRate": 25, "tracks": [{"id": 1, "clips": [
        {"type": "image", "path": "a picture.png", "start": 0, "duration": 1}]}]})");
    ASSERT_EQ(QmxRun({"frame", Write("c.json", kPictures), "--at", "1", "-o", Name("a picture.png")}).ExitCode(), 0);
    ASSERT_EQ(QmxRun({"export", project, "-o", Name("cuts/p.otio")}).ExitCode(), 0);
    EXPECT_NE(Read(Name("cuts/p.otio")).find("\"target_url\": \"../a%20picture.png\""), std::string::npos);
    const QmxRun back({"import", Name("cuts/p.otio"), "-o", Name("cuts/new/p.json")});
    ASSERT_EQ(back.ExitCode(), 0) << back.Errors();
    EXPECT_EQ(back.Errors(), "");
    EXPECT_NE(Read(Name("cuts/new/p.json")).find("\"../../a picture.png\""), std::string::npos);
    EXPECT_EQ(QmxRun({"hash", Name("cuts/new/p.json")}).Output(), QmxRun({"hash", project}).Output());
}

TEST_F(Interchange, TheReportIsLinesOrJson)
{
    const QmxRun lines({"import", Timelines("speeds.otio"), "-o", Name("p.json"), "--width", "320", "--height", "200"});
    EXPECT_EQ(lines.ExitCode(), 0);
    EXPECT_EQ(lines.Output(), "");
    EXPECT_NE(lines.Errors().find("qmx: " + Timelines("speeds.otio") +
                                  ": tracks.children[0].children[0] \"fast\": speed 2: "),
              std::string::npos)
        << lines.Errors();
    EXPECT_NE(lines.Errors().find("screen.mp4\": not there"), std::string::npos);
    const QmxRun asJson({"import", Timelines("speeds.otio"), "-o", Name("p.json"), "--report", "json"});
    EXPECT_EQ(asJson.ExitCode(), 0);
    EXPECT_EQ(asJson.Errors(), "");
    const nlohmann::json list = nlohmann::json::parse(asJson.Output());
    ASSERT_GE(list.size(), 8U);
    EXPECT_EQ(list[0].at("place"), "tracks.children[0].children[0]");
    EXPECT_EQ(list[0].at("name"), "fast");
    EXPECT_EQ(list[0].at("what"), "speed 2");
    EXPECT_TRUE(list[0].contains("why"));
    const QmxRun none({"export", Write("c.json", R"({"width": 64, "height": 48, "frameRate": 25, "tracks": [{"id": 1,
        "clips": [{"type": "color", "start": 0, "duration": 1}]}]})"),
                       "-o", Name("c.otio"), "--report", "json"});
    EXPECT_EQ(none.Output(), "[]\n");
}

TEST_F(Interchange, OptionsDecideTheCanvas)
{
    const QmxRun run({"import", Timelines("speeds.otio"), "-o", Name("p.json"), "--width", "320", "--height", "200",
                      "--frame-rate", "50"});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    const nlohmann::json project = nlohmann::json::parse(Read(Name("p.json")));
    EXPECT_EQ(project.at("width"), 320);
    EXPECT_EQ(project.at("height"), 200);
    EXPECT_EQ(project.at("frameRate"), 50);
    EXPECT_EQ(run.Errors().find("size of the pictures"), std::string::npos);
}

TEST_F(Interchange, WrongCommandLinesAreTwo)
{
    const std::string otio = Timelines("nested.otio");
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"import", otio}, "--output"},
        {{"import", "-o", Name("a.json")}, "FILE"},
        {{"import", otio, "-o", Name("a.txt")}, "a.txt: the name must end in .json"},
        {{"import", otio, "-o", Name("a.json"), "--width", "0"}, "--width"},
        {{"import", otio, "-o", Name("a.json"), "--height", "20000"}, "--height"},
        {{"import", otio, "-o", Name("a.json"), "--frame-rate", "0"}, "--frame-rate: \"0\" is no rate"},
        {{"import", otio, "-o", Name("a.json"), "--report", "xml"}, "--report"},
        {{"export", Write("p.json", kPictures), "-o", Name("a.json")}, "a.json: the name must end in .otio"}};
    for (const auto& [arguments, word] : cases)
    {
        const QmxRun run(arguments);
        EXPECT_EQ(run.ExitCode(), 2) << word;
        EXPECT_NE(run.Errors().find(word), std::string::npos) << run.Errors();
    }
    EXPECT_EQ(m_folder.FileCount(), 1U);
}

TEST_F(Interchange, BadFilesAreThreeWithTheirPlaceAndLeaveNothing)
{
    const auto import = [&](const std::string& text)
    {
        const QmxRun run({"import", Write("a.otio", text), "-o", Name("a.json")});
        EXPECT_EQ(run.ExitCode(), 3);
        EXPECT_EQ(run.Output(), "");
        return run.Errors();
    };
    const std::string begin = "qmx: " + Name("a.otio") + ": ";
    EXPECT_EQ(import("{"), begin + "the JSON text ends too early (line 1)\n");
    EXPECT_EQ(import("{}"), begin + "OTIO_SCHEMA: is missing; this is no OpenTimelineIO file\n");
    EXPECT_EQ(import(R"({"OTIO_SCHEMA": "Clip.2", "source_range": {"start_time": {"value": 0, "rate": 24},
        "duration": {"value": 1, "rate": 0}}})"),
              begin + "source_range.duration.rate: must be a rate from 0.001 to 10^12 a second, not 0\n");
    // What this program's own metadata say is checked as a project is.
    EXPECT_EQ(import(R"({"OTIO_SCHEMA": "Clip.2", "metadata": {"qmx": {"type": "title", "texts": [], "colour": 1}},
        "source_range": {"start_time": {"value": 0, "rate": 24}, "duration": {"value": 24, "rate": 24}}})"),
              begin + "makes no project: tracks[0].clips[0].colour: unknown field\n");
    EXPECT_EQ(QmxRun({"import", Name("none.otio"), "-o", Name("a.json")}).ExitCode(), 3);
    EXPECT_EQ(QmxRun({"import", m_folder.Path().string(), "-o", Name("a.json")}).ExitCode(), 3);
    const QmxRun out({"export", Write("p.json", "{}"), "-o", Name("p.otio")});
    EXPECT_EQ(out.ExitCode(), 3);
    EXPECT_EQ(out.Errors(), "qmx: " + Name("p.json") + ": width: is missing\n");
    EXPECT_EQ(m_folder.FileCount(), 2U);
}

TEST_F(Interchange, OutputsThatCannotBeWrittenAreFive)
{
    EXPECT_EQ(QmxRun({"import", Timelines("nested.otio"), "-o", Name("no/folder/a.json")}).ExitCode(), 5);
    const std::string project = Write("p.json", kPictures);
    EXPECT_EQ(QmxRun({"export", project, "-o", Name("no/folder/a.otio")}).ExitCode(), 5);
    std::filesystem::create_directory(m_folder.Path() / "d.otio");
    EXPECT_EQ(QmxRun({"export", project, "-o", Name("d.otio")}).ExitCode(), 5);
    EXPECT_EQ(m_folder.FileCount(), 2U);
}
} // namespace
} // namespace qmx::host
