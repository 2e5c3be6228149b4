#include "host/project/ProjectReader.h"

#include "host/HostError.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace qmx::host
{
namespace
{
std::string Replaced(std::string text, const std::string& what, const std::string& with)
{
    const std::size_t at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return at == std::string::npos ? text : text.replace(at, what.size(), with);
}

/// A project that is right in every respect; the tests break one thing at a time.
const std::string kGood = R"({
  "width": 1280, "height": 720, "frameRate": "30000/1001",
  "tracks": [
    {"id": 1, "clips": [
      {"type": "video", "start": 0, "duration": 5, "inPoint": 1.5, "path": "media/a.mp4", "rotation": 90,
       "frameRate": 25},
      {"type": "color", "start": 5, "duration": 2.5}
    ]},
    {"id": 2, "position": {"left": 0.5, "top": 0.25, "width": 0.5, "height": 0.75}, "clips": [
      {"type": "video", "start": 1, "duration": 1, "path": "/abs/b.mov"}
    ]}
  ]
})";

/// "REASON" of the error that @p text gives; "" when it gives none.
std::string ErrorOf(const std::string& text)
{
    try
    {
        ProjectReader::Parse(text, "folder/p.json");
        return "";
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::Project);
        EXPECT_EQ(error.Subject(), "folder/p.json");
        return error.what();
    }
}

std::string ErrorWith(const std::string& what, const std::string& with)
{
    return ErrorOf(Replaced(kGood, what, with));
}

/// A project of one track with the clips given.
std::string WithClips(const std::string& clips)
{
    return R"({"width": 64, "height": 64, "frameRate": 10, "tracks": [{"id": 1, "clips": [)" + clips + "]}]}";
}

TEST(ProjectReader, ReadsEveryField)
{
    const Project project = ProjectReader::Parse(kGood, "folder/p.json");
    EXPECT_EQ(project.file, "folder/p.json");
    EXPECT_EQ(project.width, 1280U);
    EXPECT_EQ(project.height, 720U);
    EXPECT_EQ(project.frameRate, FrameRate::Parse("30000/1001"));
    ASSERT_EQ(project.tracks.size(), 2U);
    const ProjectTrack& first = project.tracks[0];
    EXPECT_EQ(first.id, 1U);
    EXPECT_EQ(first.place, "tracks[0]");
    EXPECT_EQ(first.box.left, 0.0);
    EXPECT_EQ(first.box.width, 1.0);
    ASSERT_EQ(first.clips.size(), 2U);
    const ProjectClip& video = first.clips[0];
    EXPECT_EQ(video.kind, ClipKind::Video);
    EXPECT_EQ(video.place, "tracks[0].clips[0]");
    EXPECT_EQ(video.start, 0U);
    EXPECT_EQ(video.End(), first.clips[1].start);
    EXPECT_EQ(video.inPoint, 15'000'000U);
    EXPECT_EQ(video.path, "folder/media/a.mp4");
    EXPECT_EQ(video.rotation, 90U);
    EXPECT_EQ(video.frameRate, FrameRate::Parse("25"));
    const ProjectClip& color = first.clips[1];
    EXPECT_EQ(color.kind, ClipKind::Color);
    EXPECT_EQ(color.start, 50'000'000U);
    EXPECT_EQ(color.duration, 25'000'000U);
    const ProjectTrack& second = project.tracks[1];
    EXPECT_EQ(second.box.left, 0.5);
    EXPECT_EQ(second.box.top, 0.25);
    EXPECT_EQ(second.box.width, 0.5);
    EXPECT_EQ(second.box.height, 0.75);
    EXPECT_EQ(second.clips[0].path, "/abs/b.mov");
    EXPECT_EQ(second.clips[0].frameRate, std::nullopt);
    EXPECT_EQ(project.Duration(), 75'000'000U);
}

TEST(ProjectReader, SortsTheClipsOfATrackByTime)
{
    const Project project = ProjectReader::Parse(WithClips(R"({"type": "color", "start": 2, "duration": 1},
        {"type": "color", "start": 0, "duration": 2})"),
                                                 "p.json");
    EXPECT_EQ(project.tracks[0].clips[0].place, "tracks[0].clips[1]");
    EXPECT_EQ(project.tracks[0].clips[1].place, "tracks[0].clips[0]");
    EXPECT_EQ(project.Duration(), 30'000'000U);
    EXPECT_EQ(project.FrameCount(), 30U);
}

TEST(ProjectReader, ClipEdgesMoveOntoTheFramesTheyMean)
{
    // 100 frames at 30000/1001 end at 3.33666…; the file rounds it up.
    const Project project =
        ProjectReader::Parse(Replaced(WithClips(R"({"type": "color", "start": 0, "duration": 3.3366667},
        {"type": "color", "start": 3.3366667, "duration": 3.3366667})"),
                                      "10", "\"30000/1001\""),
                             "p.json");
    EXPECT_EQ(project.tracks[0].clips[0].End(), 33'366'666U);
    EXPECT_EQ(project.tracks[0].clips[1].start, 33'366'666U);
    EXPECT_EQ(project.FrameCount(), 200U);
}

TEST(ProjectReader, RefusesWhatIsNoProject)
{
    EXPECT_EQ(ErrorOf("[]"), "must be an object, not a list");
    EXPECT_EQ(ErrorOf("{}"), "width: is missing");
    EXPECT_EQ(ErrorOf("{"), "the JSON text ends too early (line 1)");
    EXPECT_EQ(ErrorWith("media/a.mp4", "\xFF.mp4"), "tracks[0].clips[0].path: not UTF-8 (line 5)");
    EXPECT_EQ(ErrorWith("1.5", "NaN"), "tracks[0].clips[0].inPoint: no valid JSON (line 5)");
    EXPECT_EQ(ErrorWith("1.5", "1e400"), "tracks[0].clips[0].inPoint: a number out of range (line 5)");
    EXPECT_EQ(ErrorOf(std::string(100'000, '[')), "nested deeper than 32 levels");
}

TEST(ProjectReader, RefusesUnknownFieldsAtEveryLevel)
{
    EXPECT_EQ(ErrorWith("\"width\"", "\"name\": 1, \"width\""), "name: unknown field");
    EXPECT_EQ(ErrorWith("\"id\": 2", "\"id\": 2, \"hidden\": true"), "tracks[1].hidden: unknown field");
    EXPECT_EQ(ErrorWith("\"left\"", "\"right\": 0, \"left\""), "tracks[1].position.right: unknown field");
    EXPECT_EQ(ErrorWith("\"rotation\"", "\"Rotation\""), "tracks[0].clips[0].Rotation: unknown field");
    EXPECT_EQ(ErrorWith("2.5", "2.5, \"path\": \"x\""), "tracks[0].clips[1].path: unknown field");
    EXPECT_EQ(ErrorWith("2.5", "2.5, \"start\": 1"), "tracks[0].clips[1]: the name \"start\" stands here twice");
}

TEST(ProjectReader, RefusesWrongTypes)
{
    EXPECT_EQ(ErrorWith("1280", "\"1280\""), "width: must be a number, not a text");
    EXPECT_EQ(ErrorWith("\"30000/1001\"", "true"),
              "frameRate: must be a number or a text like \"30000/1001\", not true or false");
    EXPECT_EQ(ErrorWith("{\"left\": 0.5, \"top\": 0.25, \"width\": 0.5, \"height\": 0.75}", "[0, 0, 1, 1]"),
              "tracks[1].position: must be an object, not a list");
    EXPECT_EQ(ErrorWith("0.25", "null"), "tracks[1].position.top: must be a number, not null");
    EXPECT_EQ(ErrorWith("\"color\"", "6"), "tracks[0].clips[1].type: must be a text, not a number");
    EXPECT_EQ(ErrorWith("\"start\": 5", "\"start\": \"5\""), "tracks[0].clips[1].start: must be a number, not a text");
    EXPECT_EQ(ErrorWith("\"media/a.mp4\"", "{}"), "tracks[0].clips[0].path: must be a text, not an object");
    EXPECT_EQ(ErrorOf(R"({"width": 2, "height": 2, "frameRate": 1, "tracks": {}})"),
              "tracks: must be a list, not an object");
    EXPECT_EQ(ErrorOf(R"({"width": 2, "height": 2, "frameRate": 1, "tracks": [1]})"),
              "tracks[0]: must be an object, not a number");
    EXPECT_EQ(ErrorOf(WithClips("7")), "tracks[0].clips[0]: must be an object, not a number");
}

TEST(ProjectReader, RefusesWhatIsMissing)
{
    EXPECT_EQ(ErrorWith("\"height\": 720, ", ""), "height: is missing");
    EXPECT_EQ(ErrorWith("\"frameRate\": \"30000/1001\",", ""), "frameRate: is missing");
    EXPECT_EQ(ErrorOf(R"({"width": 2, "height": 2, "frameRate": 1})"), "tracks: is missing");
    EXPECT_EQ(ErrorWith("\"id\": 2, ", ""), "tracks[1].id: is missing");
    EXPECT_EQ(ErrorWith("\"type\": \"color\", ", ""), "tracks[0].clips[1].type: is missing");
    EXPECT_EQ(ErrorWith("\"start\": 5, ", ""), "tracks[0].clips[1].start: is missing");
    EXPECT_EQ(ErrorWith(", \"duration\": 2.5", ""), "tracks[0].clips[1].duration: is missing");
    EXPECT_EQ(ErrorWith(", \"path\": \"/abs/b.mov\"", ""), "tracks[1].clips[0].path: is missing");
    EXPECT_EQ(ErrorOf(R"({"width": 2, "height": 2, "frameRate": 1, "tracks": [{"id": 1}]})"),
              "tracks[0].clips: is missing");
}

TEST(ProjectReader, RefusesProjectsWithoutClips)
{
    EXPECT_EQ(ErrorOf(R"({"width": 2, "height": 2, "frameRate": 1, "tracks": []})"),
              "tracks: hold no clip, so there is nothing to show");
    EXPECT_EQ(ErrorOf(WithClips("")), "tracks: hold no clip, so there is nothing to show");
}

TEST(ProjectReader, RefusesSizesOutOfRange)
{
    const std::string reason = "must be a whole number from 1 to 16384, not ";
    EXPECT_EQ(ErrorWith("1280", "0"), "width: " + reason + "0");
    EXPECT_EQ(ErrorWith("1280", "-2"), "width: " + reason + "-2");
    EXPECT_EQ(ErrorWith("1280", "1280.5"), "width: " + reason + "1280.5");
    EXPECT_EQ(ErrorWith("720", "16385"), "height: " + reason + "16385");
    EXPECT_EQ(ErrorWith("720", "99999999999999999999"), "height: " + reason + "99999999999999999999");
    EXPECT_EQ(ErrorWith("720", "16384"), "");
}

TEST(ProjectReader, RefusesBadFrameRates)
{
    const std::string reason = ": must be a rate from 0.001 to 1000 frames per second, a number or a fraction like "
                               "\"30000/1001\" with terms up to 1000000";
    for (const char* const pRate : {"0", "-1", "1e9", "\"30/0\"", "\"x\"", "\"\""})
        EXPECT_EQ(ErrorWith("\"30000/1001\"", pRate), "frameRate" + reason) << pRate;
    EXPECT_EQ(ErrorWith("\"frameRate\": 25", "\"frameRate\": 0"), "tracks[0].clips[0].frameRate" + reason);
}

TEST(ProjectReader, RefusesTrackIdsThatAreNoneOrTaken)
{
    EXPECT_EQ(ErrorWith("\"id\": 2", "\"id\": 1"), "tracks[1].id: 1 is already the id of tracks[0]");
    const std::string reason = "tracks[1].id: must be a whole number from 0 to 18446744073709551615, not ";
    EXPECT_EQ(ErrorWith("\"id\": 2", "\"id\": -2"), reason + "-2");
    EXPECT_EQ(ErrorWith("\"id\": 2", "\"id\": 2.5"), reason + "2.5");
    EXPECT_EQ(ErrorWith("\"id\": 2", "\"id\": 18446744073709551616"), reason + "18446744073709551616");
    EXPECT_EQ(ErrorWith("\"id\": 2", "\"id\": 18446744073709551615"), "");
}

TEST(ProjectReader, RefusesPositionsWithoutAnAreaOrFarAway)
{
    EXPECT_EQ(ErrorWith("\"width\": 0.5", "\"width\": 0"), "tracks[1].position.width: must be greater than 0");
    EXPECT_EQ(ErrorWith("\"height\": 0.75", "\"height\": -1"), "tracks[1].position.height: must be greater than 0");
    EXPECT_EQ(ErrorWith("\"height\": 0.75", "\"height\": 1e-400"), "tracks[1].position.height: must be greater than 0");
    EXPECT_EQ(ErrorWith("\"left\": 0.5", "\"left\": -16.1"), "tracks[1].position.left: must lie between -16 and 16");
    EXPECT_EQ(ErrorWith("\"top\": 0.25", "\"top\": 1e300"), "tracks[1].position.top: must lie between -16 and 16");
    EXPECT_EQ(ErrorWith("\"left\": 0.5", "\"left\": -0.5"), ""); // partly outside is fine
}

TEST(ProjectReader, RefusesTimesOutOfRange)
{
    const std::string clip = "tracks[0].clips[1].";
    EXPECT_EQ(ErrorWith("\"start\": 5", "\"start\": -5"), clip + "start: must not be negative");
    EXPECT_EQ(ErrorWith("2.5", "-2.5"), clip + "duration: must not be negative");
    EXPECT_EQ(ErrorWith("2.5", "0"), clip + "duration: must be greater than 0");
    EXPECT_EQ(ErrorWith("2.5", "0.00000001"), clip + "duration: must be greater than 0");
    EXPECT_EQ(ErrorWith("2.5", "1000000.1"), clip + "duration: must not be greater than 1000000 seconds");
    EXPECT_EQ(ErrorWith("2.5", "1e300"), clip + "duration: must not be greater than 1000000 seconds");
    EXPECT_EQ(ErrorWith("2.5", "999996"), clip + "duration: ends after 1000000 seconds");
    EXPECT_EQ(ErrorWith("1.5", "-1"), "tracks[0].clips[0].inPoint: must not be negative");
    EXPECT_EQ(ErrorWith("\"start\": 5", "\"start\": 18446744073709551615"),
              clip + "start: must not be greater than 1000000 seconds");
}

TEST(ProjectReader, RefusesClipsThatOverlapOnATrack)
{
    EXPECT_EQ(ErrorWith("\"start\": 5", "\"start\": 4.9"),
              "tracks[0].clips[1].start: overlaps tracks[0].clips[0], which ends at 5.0000000 seconds");
    EXPECT_EQ(ErrorOf(WithClips(R"({"type": "color", "start": 1, "duration": 1},
        {"type": "color", "start": 0, "duration": 1.5})")),
              "tracks[0].clips[0].start: overlaps tracks[0].clips[1], which ends at 1.5000000 seconds");
    EXPECT_EQ(ErrorOf(WithClips(R"({"type": "color", "start": 0, "duration": 0.1},
        {"type": "color", "start": 0.1, "duration": 0.2}, {"type": "color", "start": 0.30000000000000004,
        "duration": 1})")),
              "");
}

TEST(ProjectReader, ReadsCameraClipsAsItReadsVideos)
{
    const Project project = ProjectReader::Parse(
        WithClips(R"({"type": "camera", "path": "cam.mjpg", "start": 1, "duration": 2, "inPoint": 3, "rotation": 270,
                      "frameRate": 25})"),
        "folder/p.json");
    const ProjectClip& clip = project.tracks.at(0).clips.at(0);
    EXPECT_EQ(clip.kind, ClipKind::Camera);
    EXPECT_EQ(clip.path, std::filesystem::path("folder") / "cam.mjpg");
    EXPECT_EQ(clip.inPoint, 30'000'000U);
    EXPECT_EQ(clip.rotation, 270U);
    EXPECT_EQ(clip.frameRate, FrameRate::FromFraction(25, 1));
    EXPECT_EQ(ErrorOf(WithClips(R"({"type": "camera", "start": 0, "duration": 1})")),
              "tracks[0].clips[0].path: is missing");
}

TEST(ProjectReader, RefusesUnknownKinds)
{
    EXPECT_EQ(ErrorWith("\"color\"", "\"colour\""),
              "tracks[0].clips[1].type: unknown kind \"colour\", the known ones are \"video\", \"camera\", \"image\", "
              "\"color\", \"audio\", \"title\", \"keystroke\" and \"transition\"");
}

TEST(ProjectReader, ReadsSoundOfClipsAndTracks)
{
    const Project project = ProjectReader::Parse(R"({"width": 64, "height": 48, "frameRate": 30, "tracks": [
        {"id": 1, "volume": 0.5, "mute": false, "clips": [
            {"type": "audio", "start": 1, "duration": 2, "path": "a.mp3", "inPoint": 0.25, "volume": 1.5e0},
            {"type": "video", "start": 3, "duration": 2, "path": "b.mp4", "mute": true}]},
        {"id": 2, "mute": true, "clips": []}]})",
                                                 "p.json");
    const ProjectTrack& track = project.tracks[0];
    EXPECT_EQ(track.volume, 0.5);
    EXPECT_FALSE(track.mute);
    EXPECT_EQ(track.clips[0].kind, ClipKind::Audio);
    EXPECT_EQ(track.clips[0].path, "a.mp3");
    EXPECT_EQ(track.clips[0].inPoint, 2'500'000U);
    EXPECT_EQ(track.clips[0].volume, 1.5);
    EXPECT_FALSE(track.clips[0].mute);
    EXPECT_EQ(track.clips[1].volume, 1);
    EXPECT_TRUE(track.clips[1].mute);
    EXPECT_EQ(project.tracks[1].volume, 1);
    EXPECT_TRUE(project.tracks[1].mute);
}

TEST(ProjectReader, RefusesSoundThatMakesNoSense)
{
    EXPECT_EQ(ErrorWith("\"rotation\": 90", "\"volume\": -0.1"),
              "tracks[0].clips[0].volume: must lie between 0 and 16");
    EXPECT_EQ(ErrorWith("\"rotation\": 90", "\"volume\": 16.5"),
              "tracks[0].clips[0].volume: must lie between 0 and 16");
    EXPECT_EQ(ErrorWith("\"rotation\": 90", "\"volume\": \"loud\""),
              "tracks[0].clips[0].volume: must be a number, not a text");
    EXPECT_EQ(ErrorWith("\"rotation\": 90", "\"mute\": 1"),
              "tracks[0].clips[0].mute: must be true or false, not a number");
    EXPECT_EQ(ErrorWith("\"id\": 2", "\"id\": 2, \"volume\": 99"), "tracks[1].volume: must lie between 0 and 16");
    EXPECT_EQ(ErrorOf(WithClips(R"({"type": "audio", "start": 0, "duration": 1})")),
              "tracks[0].clips[0].path: is missing");
    EXPECT_EQ(ErrorOf(WithClips(R"({"type": "audio", "start": 0, "duration": 1, "path": "a", "rotation": 90})")),
              "tracks[0].clips[0].rotation: unknown field");
    EXPECT_EQ(ErrorOf(WithClips(R"({"type": "color", "start": 0, "duration": 1, "volume": 1})")),
              "tracks[0].clips[0].volume: unknown field");
}

TEST(ProjectReader, ReadsImageClips)
{
    const Project project = ProjectReader::Parse(
        WithClips(R"({"type": "image", "path": "a.gif", "start": 1, "duration": 2, "inPoint": 0.5, "rotation": 270})"),
        "folder/p.json");
    const ProjectClip& clip = project.tracks[0].clips[0];
    EXPECT_EQ(clip.kind, ClipKind::Image);
    EXPECT_EQ(clip.path, "folder/a.gif");
    EXPECT_EQ(clip.inPoint, 5'000'000U);
    EXPECT_EQ(clip.rotation, 270U);
    EXPECT_EQ(ErrorOf(WithClips(R"({"type": "image", "start": 0, "duration": 1})")),
              "tracks[0].clips[0].path: is missing");
    EXPECT_EQ(ErrorOf(WithClips(R"({"type": "image", "path": "a", "start": 0, "duration": 1, "frameRate": 30})")),
              "tracks[0].clips[0].frameRate: unknown field");
}

TEST(ProjectReader, RefusesRotationsThatAreNoQuarterTurns)
{
    EXPECT_EQ(ErrorWith("\"rotation\": 90", "\"rotation\": 45"),
              "tracks[0].clips[0].rotation: must be 0, 90, 180 or 270");
    EXPECT_EQ(ErrorWith("\"rotation\": 90", "\"rotation\": 360"),
              "tracks[0].clips[0].rotation: must be a whole number from 0 to 270, not 360");
    EXPECT_EQ(ErrorWith("\"rotation\": 90", "\"rotation\": -90"),
              "tracks[0].clips[0].rotation: must be a whole number from 0 to 270, not -90");
}

TEST(ProjectReader, RefusesPathsThatNameNoFile)
{
    EXPECT_EQ(ErrorWith("media/a.mp4", ""), "tracks[0].clips[0].path: must name a file");
    EXPECT_EQ(ErrorWith("media/a.mp4", "a\\u0000.mp4"), "tracks[0].clips[0].path: must name a file");
}

TEST(ProjectReader, ReadsAFileWhoseNameIsNotUtf8)
{
    const test_support::TemporaryFolder folder;
    const std::filesystem::path file = folder.Path() / "p\xFF.json";
    std::ofstream(file) << kGood;
    const Project project = ProjectReader::ReadFile(file);
    EXPECT_EQ(project.tracks[0].clips[0].path, folder.Path() / "media/a.mp4");
}

TEST(ProjectReader, FilesThatCannotBeReadAreProjectErrors)
{
    const test_support::TemporaryFolder folder;
    const auto reasonOf = [](const std::filesystem::path& file)
    {
        try
        {
            ProjectReader::ReadFile(file);
            return std::string();
        }
        catch (const HostError& error)
        {
            EXPECT_EQ(error.Code(), ExitCode::Project);
            EXPECT_EQ(error.Subject(), file.string());
            return std::string(error.what());
        }
    };
    EXPECT_EQ(reasonOf(folder.Path() / "none.json"), "cannot be read: No such file or directory");
    EXPECT_EQ(reasonOf(folder.Path()), "is a folder");
    const std::filesystem::path large = folder.Path() / "large.json";
    std::ofstream(large) << std::string(ProjectReader::kMaxFileSize + 1, ' ');
    EXPECT_EQ(reasonOf(large), "is larger than 16 MiB");
}
} // namespace
} // namespace qmx::host
