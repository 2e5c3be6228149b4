// Films and sound on their way through a timeline.
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
TEST(InterchangeFilm, ShowsTheSamePicturesAndHasItsLength)
{
    const test_support::TemporaryFolder folder;
    const auto name = [&](const char* pFile) { return (folder.Path() / pFile).string(); };
    std::ofstream(folder.Path() / "title.json") << R"({"width": 64, "height": 48, "frameRate": 25, "tracks": [{"id": 1,
        "mute": true, "clips": [{"type": "title", "start": 0, "duration": 2, "texts": [{"text": "Moving", "fontName": "DejaVu Sans",
        "fontSize": 90, "y": 0.3, "animation": "leftToRight", "speed": 7}]}]}]})";
    ASSERT_EQ(QmxRun({"render", name("title.json"), "-o", name("a film.mp4")}).ExitCode(), 0);
    std::ofstream(folder.Path() / "p.json") << R"({"width": 64, "height": 48, "frameRate": "30000/1001", "tracks": [
        {"id": 1, "clips": [
            {"type": "video", "path": "a film.mp4", "start": 0.2, "duration": 0.6006, "inPoint": 0.52},
            {"type": "video", "path": "a film.mp4", "start": 0.8008, "duration": 0.3, "rotation": 180},
            {"type": "color", "start": 1.2012, "duration": 0.1}]}]})";
    const QmxRun out({"export", name("p.json"), "-o", name("p.otio")});
    ASSERT_EQ(out.ExitCode(), 0) << out.Errors();
    EXPECT_EQ(out.Errors(), "qmx: " + name("p.json") + ": tracks[0].clips[1]: rotation: only qmx reads it\n");
    std::ifstream stream(folder.Path() / "p.otio");
    const nlohmann::json timeline = nlohmann::json::parse(stream);
    const nlohmann::json& clip = timeline.at("tracks").at("children").at(0).at("children").at(1);
    const nlohmann::json& length = clip.at("media_references").at("DEFAULT_MEDIA").at("available_range").at("duration");
    EXPECT_NEAR(length.at("value").get<double>() / length.at("rate").get<double>(), 2, 1e-6);
    ASSERT_EQ(QmxRun({"import", name("p.otio"), "-o", name("back.json")}).ExitCode(), 0);
    const QmxRun hash({"hash", name("p.json")});
    ASSERT_EQ(hash.ExitCode(), 0) << hash.Errors();
    EXPECT_EQ(QmxRun({"hash", name("back.json")}).Output(), hash.Output());
}

TEST(InterchangeFilm, GivesATimelineWithoutASizeItsOwn)
{
    const test_support::TemporaryFolder folder;
    const auto name = [&](const char* pFile) { return (folder.Path() / pFile).string(); };
    std::ofstream(folder.Path() / "c.json") << R"({"width": 70, "height": 50, "frameRate": 20, "tracks": [{"id": 1,
        "clips": [{"type": "color", "start": 0, "duration": 1}]}]})";
    ASSERT_EQ(QmxRun({"render", name("c.json"), "-o", name("c.mp4")}).ExitCode(), 0);
    std::ofstream(folder.Path() / "c.otio") << R"({"OTIO_SCHEMA": "Clip.2", "media_references": {"DEFAULT_MEDIA":
        {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "c.mp4"}}, "source_range": {
        "start_time": {"value": 0, "rate": 48000}, "duration": {"value": 24000, "rate": 48000}}})";
    const QmxRun run({"import", name("c.otio"), "-o", name("made.json")});
    ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    EXPECT_EQ(run.Errors(), "");
    std::ifstream stream(folder.Path() / "made.json");
    const nlohmann::json project = nlohmann::json::parse(stream);
    EXPECT_EQ(project.at("width"), 70);
    EXPECT_EQ(project.at("height"), 50);
    EXPECT_EQ(project.at("frameRate"), 20);
}
} // namespace
} // namespace qmx::host
