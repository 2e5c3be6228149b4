#include "host/interchange/ProjectPieces.h"
#include "host/project/Decimal.h"
#include "host/project/FrameRate.h"
#include "tests/host/interchange/TimelineText.h"

#include <gtest/gtest.h>

#include <random>

namespace qmx::host
{
namespace
{
using namespace timeline;
using nlohmann::json;

std::uint64_t Units(const json& number)
{
    const std::optional<Decimal> decimal = Decimal::Parse(number.dump());
    EXPECT_TRUE(decimal) << number;
    return decimal ? decimal->Scaled(7).value_or(0) : 0;
}

/// Rewrites what a project can say in more than one way, so that equal projects are equal trees: times as counts of
/// 100 ns on their frames, clips by start time, no in point of 0.
json Settled(json project)
{
    const json rateField = project.at("frameRate");
    const FrameRate rate = *FrameRate::Parse(rateField.is_string() ? rateField.get<std::string>() : rateField.dump());
    const auto settleTimes = [](json& clip)
    {
        if (!clip.contains("inPoint"))
            return;
        clip["inPoint"] = Units(clip["inPoint"]);
        if (clip["inPoint"] == 0)
            clip.erase("inPoint");
    };
    for (json& track : project["tracks"])
    {
        for (json& clip : track["clips"])
        {
            const std::uint64_t start = Units(clip["start"]);
            const std::uint64_t end = start + Units(clip["duration"]);
            clip["start"] = rate.Snapped(start);
            clip["duration"] = rate.Snapped(end) - rate.Snapped(start);
            settleTimes(clip);
            for (const char* const pSide : {"from", "to"})
            {
                if (!clip.contains(pSide))
                    continue;
                settleTimes(clip[pSide]);
                for (const char* const pTime : {"start", "duration"})
                {
                    if (clip[pSide].contains(pTime))
                        clip[pSide][pTime] = Units(clip[pSide][pTime]);
                }
            }
        }
        std::sort(track["clips"].begin(), track["clips"].end(),
                  [](const json& a, const json& b) { return a["start"] < b["start"]; });
    }
    return project;
}

/// Exports and imports a project, checks that the same project comes back without a loss, and that going round once
/// more changes nothing at all. @return the timeline
Exported GoRound(const std::string& project)
{
    Exported out(ParseJson(project));
    const Imported back(out.text);
    EXPECT_EQ(Settled(back.project), Settled(json::parse(project))) << out.text;
    EXPECT_TRUE(back.report.empty()) << back.report.front();
    if (testing::Test::HasFailure())
        return out;
    const Exported again(back.tree);
    EXPECT_EQ(Imported(again.text).project, back.project);
    EXPECT_EQ(again.timeline.at("tracks"), out.timeline.at("tracks"));
    return out;
}

std::string Project(const std::string& tracks, const std::string& rate = "25")
{
    return R"({"width": 640, "height": 360, "frameRate": )" + rate + R"(, "tracks": [)" + tracks + "]}";
}

TEST(TimelineExporter, AClipHasItsPlaceItsTrimAndItsFile)
{
    const Exported out = GoRound(Project(
        R"({"id": 3, "clips": [{"type": "video", "path": "my film.mp4", "start": 1, "duration": 2, "inPoint": 0.48}]})"));
    const json& timeline = out.timeline;
    EXPECT_EQ(timeline.at("OTIO_SCHEMA"), "Timeline.1");
    EXPECT_EQ(timeline.at("tracks").at("OTIO_SCHEMA"), "Stack.1");
    EXPECT_EQ(timeline.at("tracks").at("children").at(0).at("kind"), "Video");
    EXPECT_EQ(out.Child(0).at("OTIO_SCHEMA"), "Gap.1");
    EXPECT_EQ(out.Child(0).at("source_range").at("duration").at("value"), 25);
    const json& clip = out.Child(1);
    EXPECT_EQ(clip.at("OTIO_SCHEMA"), "Clip.2");
    EXPECT_EQ(clip.at("name"), "my film");
    EXPECT_EQ(clip.at("source_range").at("start_time").at("value"), 12);
    EXPECT_EQ(clip.at("source_range").at("start_time").at("rate"), 25);
    EXPECT_EQ(clip.at("source_range").at("duration").at("value"), 50);
    const json& media = clip.at("media_references").at(clip.at("active_media_reference_key").get<std::string>());
    EXPECT_EQ(media.at("OTIO_SCHEMA"), "ExternalReference.1");
    EXPECT_EQ(media.at("target_url"), "my%20film.mp4");
    EXPECT_TRUE(media.at("available_range").is_null());
}

TEST(TimelineExporter, NumbersOfTimesAreWrittenAsDoubles)
{
    const Exported out = GoRound(Project(R"({"id": 1, "clips": [{"type": "color", "start": 0, "duration": 2}]})"));
    EXPECT_NE(out.text.find("\"rate\": 25.0"), std::string::npos);
    EXPECT_NE(out.text.find("\"value\": 50.0"), std::string::npos);
}

TEST(TimelineExporter, EverySettingOfEveryKindComesBack)
{
    GoRound(Project(R"(
        {"id": 18446744073709551615, "volume": 0.25, "mute": true, "position": {"left": 0.1, "top": -0.5, "width": 1.5},
         "clips": [
            {"type": "video", "path": "../a b/c.mp4", "start": 0, "duration": 1, "inPoint": 2.5, "rotation": 270,
             "frameRate": "24000/1001", "volume": 0.80, "mute": false,
             "key": {"color": "#00ff10", "similarity": 0.125, "spill": 1e-3, "background": "b/g.png"}},
            {"type": "camera", "path": "cams/one.mjpg", "start": 1, "duration": 1, "inPoint": 7, "rotation": 90},
            {"type": "camera", "path": "cams/two.h264", "start": 2, "duration": 1, "frameRate": 15},
            {"type": "image", "path": "/pictures/p.jpg", "start": 3, "duration": 1, "inPoint": 0.04, "rotation": 180},
            {"type": "color", "start": 4, "duration": 1},
            {"type": "audio", "path": "s.wav", "start": 5, "duration": 1, "inPoint": 0.123456, "volume": 16},
            {"type": "title", "start": 6, "duration": 1, "texts": [
                {"text": "Zeile\n\"zwei\" \u00e9\ud83c\udfac\\", "color": "#ff8000", "animation": "leftToRight", "speed": 3,
                 "alignment": 2, "x": 0.3333333333333333}]},
            {"type": "keystroke", "start": 7, "duration": 1, "inPoint": 10, "left": 0.05, "top": 0.7, "width": 0.9,
             "keystrokes": [{"text": "Ctrl", "startTime": 10.5, "endTime": 12.5, "hostData1": 18446744073709551615}]}]},
        {"id": 0, "clips": [{"type": "audio", "path": "m.mp3", "start": 0.02, "duration": 9.9999999}]},
        {"id": 5, "clips": []})"));
}

TEST(TimelineExporter, TracksOfSoundAreThoseWithNothingElse)
{
    const std::string sound = R"({"type": "audio", "path": "s.wav", "start": 0, "duration": 1})";
    const Exported out = GoRound(Project(
        R"({"id": 1, "clips": [)" + sound + R"(]}, {"id": 2, "clips": [)" + sound +
        R"(, {"type": "color", "start": 2, "duration": 1}]}, {"id": 3, "clips": [{"type": "color", "start": 0, "duration": 1}]})"));
    const json& tracks = out.timeline.at("tracks").at("children");
    EXPECT_EQ(tracks.at(0).at("kind"), "Audio");
    EXPECT_EQ(tracks.at(1).at("kind"), "Video");
    EXPECT_EQ(tracks.at(2).at("kind"), "Video");
    ASSERT_EQ(out.report.size(), 2U); // the one file cannot be read, which is said once, and the mixture
    EXPECT_EQ(out.report[1], "tracks[1]: audio clips among pictures: their track is one of pictures to other programs");
}

TEST(TimelineExporter, WhatOtherProgramsDoNotSeeIsReported)
{
    const Exported out(ParseJson(Project(R"({"id": 1, "mute": true, "position": {"left": 0.5}, "clips": [
        {"type": "title", "start": 0, "duration": 1, "texts": []},
        {"type": "image", "path": "a.png", "start": 1, "duration": 1, "rotation": 90},
        {"type": "camera", "path": "c.mjpg", "start": 2, "duration": 1},
        {"type": "transition", "start": 3, "duration": 1, "effect": 12, "progress": 0.5, "from": {"type": "color"}}]})")));
    EXPECT_EQ(out.report, (std::vector<std::string>{
                              "tracks[0]: mute, position: only qmx reads it",
                              "tracks[0].clips[0]: title: only qmx makes its pictures",
                              "tracks[0].clips[1]: rotation: only qmx reads it",
                              "tracks[0].clips[2]: length of \"c.mjpg\": the media cannot be read, so it is left open",
                              "tracks[0].clips[2]: recording \"c.mjpg\": its media are no film that others read",
                              "tracks[0].clips[3]: effect \"iris\": other programs may show another one",
                              "tracks[0].clips[3]: progress: only qmx reads it"}));
}

TEST(TimelineExporter, LengthsOfMediaAreAvailableRanges)
{
    const std::string project = Project(R"({"id": 1, "clips": [
        {"type": "video", "path": "m/a.mp4", "start": 0, "duration": 1},
        {"type": "camera", "path": "m/c.h264", "start": 1, "duration": 1},
        {"type": "image", "path": "m/p.png", "start": 2, "duration": 1}]})");
    std::vector<std::string> asked;
    const LengthLookup lookup = [&](const std::string& type, const std::filesystem::path& path)
    {
        asked.push_back(type + ' ' + path.generic_string());
        return std::optional<std::uint64_t>(type == "video" ? 100'000'000 : 33'333'333);
    };
    ExportOptions options;
    options.projectFile = "p/x.json";
    options.timelineFile = "p/x.otio";
    const Exported out(ParseJson(project), options, lookup);
    EXPECT_EQ(asked, (std::vector<std::string>{"video p/m/a.mp4", "camera p/m/c.h264"}));
    const auto reference = [&](std::size_t child)
    { return out.Child(child).at("media_references").at("DEFAULT_MEDIA"); };
    EXPECT_EQ(reference(0).at("available_range").at("duration").at("value"), 250);
    EXPECT_EQ(reference(0).at("available_range").at("start_time").at("value"), 0);
    EXPECT_EQ(reference(1).at("available_range").at("duration").at("value"), 33'333'333);
    EXPECT_EQ(reference(1).at("available_range").at("duration").at("rate"), 10'000'000);
    EXPECT_EQ(reference(1).at("target_url"), "m/c.mp4");
    EXPECT_TRUE(reference(2).at("available_range").is_null());
}

TEST(TimelineExporter, PathsCountFromTheTimelineAndBackFromTheProject)
{
    const std::string project = Project(R"({"id": 1, "clips": [
        {"type": "video", "path": "a.mp4", "start": 0, "duration": 1, "key": {"color": "#00ff00", "background": "b.png"}},
        {"type": "image", "path": "/pictures/p.png", "start": 1, "duration": 1}]})");
    ExportOptions out;
    out.projectFile = "here/p.json";
    out.timelineFile = "there/cuts/p.otio";
    const Exported moved(ParseJson(project), out);
    EXPECT_EQ(moved.Child(0).at("media_references").at("DEFAULT_MEDIA").at("target_url"), "../../here/a.mp4");
    EXPECT_EQ(moved.Child(1).at("media_references").at("DEFAULT_MEDIA").at("target_url"), "file:///pictures/p.png");
    ImportOptions in;
    in.timelineFile = out.timelineFile;
    in.projectFile = out.projectFile;
    EXPECT_EQ(Settled(Imported(moved.text, in).project), Settled(json::parse(project)));
}

TEST(TimelineExporter, ATransitionBetweenClipsThatGoOnJoinsThem)
{
    const Exported out = GoRound(Project(R"({"id": 1, "clips": [
        {"type": "video", "path": "a.mp4", "start": 0, "duration": 2, "inPoint": 1, "volume": 0.5},
        {"type": "transition", "start": 2, "duration": 0.8, "module": "qmx_transitions", "effect": "dissolve",
         "from": {"type": "video", "path": "a.mp4", "inPoint": 3}, "to": {"type": "video", "path": "b.mp4", "inPoint": 4}},
        {"type": "video", "path": "b.mp4", "start": 2.8, "duration": 2, "inPoint": 4.4}]})"));
    const json& children = out.timeline.at("tracks").at("children").at(0).at("children");
    ASSERT_EQ(children.size(), 3U);
    EXPECT_EQ(children.at(0).at("source_range").at("start_time").at("value"), 25);
    EXPECT_EQ(children.at(0).at("source_range").at("duration").at("value"), 60);
    EXPECT_EQ(children.at(1).at("OTIO_SCHEMA"), "Transition.1");
    EXPECT_EQ(children.at(1).at("transition_type"), "SMPTE_Dissolve");
    EXPECT_EQ(children.at(1).at("in_offset").at("value"), 10);
    EXPECT_EQ(children.at(1).at("out_offset").at("value"), 10);
    EXPECT_EQ(children.at(2).at("source_range").at("start_time").at("value"), 100);
    EXPECT_EQ(children.at(2).at("source_range").at("duration").at("value"), 60);
}

TEST(TimelineExporter, OtherTransitionsHaveClipsOfTheirOwn)
{
    // The sides show other parts of the media, or other media, than the clips beside them; one is missing.
    const Exported out = GoRound(Project(R"({"id": 1, "clips": [
        {"type": "video", "path": "a.mp4", "start": 0, "duration": 2},
        {"type": "transition", "start": 2, "duration": 1, "effect": "wipe-left",
         "from": {"type": "video", "path": "a.mp4", "inPoint": 9}, "to": {"type": "image", "path": "b.png"}},
        {"type": "transition", "start": 3, "duration": 1, "effect": 15, "to": {"type": "video", "path": "c.mp4"}},
        {"type": "video", "path": "c.mp4", "start": 4, "duration": 1, "inPoint": 0.4, "rotation": 90},
        {"type": "transition", "start": 6, "duration": 1, "module": "other_effects", "effect": 77,
         "from": {"type": "title", "texts": [{"text": "x"}]}}]})"));
    std::string schemas;
    for (const json& child : out.timeline.at("tracks").at("children").at(0).at("children"))
        schemas += child.at("OTIO_SCHEMA").get<std::string>()[0];
    EXPECT_EQ(schemas, "CCTCGTCCGCTG");
    EXPECT_EQ(out.Child(2).at("transition_type"), "Custom_Transition");
    EXPECT_EQ(out.Child(2).at("name"), "wipe-left");
    EXPECT_EQ(out.Child(5).at("name"), "zoom");
    EXPECT_EQ(out.Child(10).at("name"), "77");
}

TEST(TimelineExporter, TransitionsOfOddLengthsComeBack)
{
    for (const char* const pRate : {"25", "\"30000/1001\"", "24", "12.34"})
    {
        for (const char* const pDuration : {"0.04", "0.12", "0.2", "0.36036", "0.7777777", "0.0000005", "1"})
        {
            for (const char* const pIn : {"0", "0.0000001", "0.02", "3.3333333"})
                GoRound(Project(R"({"id": 1, "clips": [{"type": "transition", "start": 1, "duration": )" +
                                    std::string(pDuration) +
                                    R"(, "from": {"type": "video", "path": "a.mp4", "inPoint": )" + pIn +
                                    R"(}, "to": {"type": "video", "path": "b.mp4", "inPoint": )" + pIn + "}}]}",
                                pRate));
        }
    }
}

TEST(TimelineExporter, SidesWithSpansOfTheirOwnAndFixedProgressComeBack)
{
    GoRound(Project(R"({"id": 1, "clips": [
        {"type": "video", "path": "a.mp4", "start": 0, "duration": 2},
        {"type": "transition", "start": 2, "duration": 1, "progress": 0.25,
         "from": {"type": "video", "path": "a.mp4", "inPoint": 2}, "to": {"type": "video", "path": "b.mp4"}},
        {"type": "video", "path": "b.mp4", "start": 3, "duration": 1, "inPoint": 1},
        {"type": "transition", "start": 5, "duration": 1,
         "from": {"type": "video", "path": "a.mp4", "start": 4.5, "duration": 3, "inPoint": 2},
         "to": {"type": "video", "path": "b.mp4", "start": 5.25, "inPoint": 0.5}},
        {"type": "transition", "start": 6, "duration": 1,
         "from": {"type": "video", "path": "a.mp4", "duration": 0.75}, "to": {"type": "title", "texts": [], "duration": 9}}]})"));
}

TEST(TimelineExporter, TwoTransitionsMayShareAClip)
{
    const Exported out = GoRound(Project(R"({"id": 1, "clips": [
        {"type": "transition", "start": 0, "duration": 1, "to": {"type": "video", "path": "b.mp4", "inPoint": 4}},
        {"type": "transition", "start": 1, "duration": 1, "from": {"type": "video", "path": "b.mp4", "inPoint": 4.5}}]})",
                                         "10"));
    EXPECT_EQ(out.timeline.at("tracks").at("children").at(0).at("children").size(), 5U); // gap, t, clip, t, gap
}

TEST(TimelineExporter, ClipsThatGoOnButWereCutStayCut)
{
    const Exported out = GoRound(Project(R"({"id": 1, "clips": [
        {"type": "video", "path": "a.mp4", "start": 0, "duration": 2},
        {"type": "video", "path": "a.mp4", "start": 2, "duration": 2, "inPoint": 2}]})"));
    EXPECT_EQ(out.timeline.at("tracks").at("children").at(0).at("children").size(), 2U);
}

TEST(TimelineExporter, ClipsInAnyOrderAreSorted)
{
    GoRound(Project(R"({"id": 1, "clips": [
        {"type": "color", "start": 5, "duration": 1}, {"type": "video", "path": "a", "start": 0, "duration": 2},
        {"type": "color", "start": 3, "duration": 1}]})"));
}

TEST(TimelineExporter, RatesThatTimelinesReadDifferentlyDoNotCarryTimes)
{
    // 29.97 is 2997/100 to a project, but 30000/1001 to everyone who reads a timeline.
    const Exported out = GoRound(
        Project(R"({"id": 1, "clips": [{"type": "video", "path": "a.mp4", "start": 10.010010, "duration": 20.02002}]})",
                "29.97"));
    EXPECT_EQ(out.Child(1).at("source_range").at("duration").at("rate"), 10'000'000);
    EXPECT_EQ(
        GoRound(Project(R"({"id": 1, "clips": [{"type": "color", "start": 0, "duration": 1.001}]})", "\"30000/1001\""))
            .Child(0)
            .at("source_range")
            .at("duration")
            .at("value"),
        30);
}

TEST(TimelineExporter, AnyProjectComesBack)
{
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::vector<std::string> rates{
        "24", "25",          "30",  "60",  "\"24000/1001\"", "\"30000/1001\"", "\"60000/1001\"", "29.97", "12.5", "31",
        "17", "\"999/998\"", "0.1", "1000"};
    for (int round = 0; round < 40 && !HasFailure(); ++round)
    {
        const std::string rateText = rates[random() % rates.size()];
        const FrameRate rate =
            *FrameRate::Parse(json::parse(rateText).is_string() ? json::parse(rateText).get<std::string>() : rateText);
        std::string clips;
        std::uint64_t end = 0;
        const auto next = [&](std::uint64_t least) // a time behind least, on a frame or not
        {
            const std::uint64_t time = least + 10 + random() % 50'000'000;
            return random() % 4 == 0 ? time : rate.TimeOfFrame(rate.FramesBefore(time + 10));
        };
        const auto side = [&](const char* pName)
        {
            return random() % 4 == 0
                       ? std::string()
                       : std::string(", \"") + pName + R"(": {"type": "video", "path": ")" + "ab"[random() % 2] +
                             R"(.mp4", "inPoint": )" + SecondsText(random() % 30'000'000) + "}";
        };
        for (int i = 0; i < 12; ++i)
        {
            const std::uint64_t start = random() % 2 == 0 ? rate.Snapped(end) : next(end);
            end = next(start);
            const std::string span =
                R"("start": )" + SecondsText(start) + R"(, "duration": )" + SecondsText(end - start);
            clips += clips.empty() ? "{" : ", {";
            if (random() % 3 == 0)
                clips += R"("type": "transition", )" + span + side("from") + R"(, "to": {"type": "color"}})";
            else
                clips += R"("type": "video", "path": "a.mp4", )" + span + R"(, "inPoint": )" +
                         SecondsText(random() % 30'000'000) + "}";
        }
        GoRound(Project(R"({"id": 1, "clips": [)" + clips + "]}", rateText));
    }
}

TEST(ProjectPieces, CoverATrackWithoutHoles)
{
    const JsonValue track = ParseJson(R"({"id": 1, "clips": [
        {"type": "transition", "start": 1, "duration": 1, "from": {"type": "color"}, "to": {"type": "color"}},
        {"type": "color", "start": 2, "duration": 1}]})");
    const std::vector<TrackPiece> pieces = PiecesOfTrack(track, "tracks[4]", FrameRate());
    ASSERT_EQ(pieces.size(), 3U);
    std::uint64_t end = 0;
    for (const TrackPiece& piece : pieces)
    {
        EXPECT_EQ(piece.start, end);
        end = piece.end;
    }
    EXPECT_EQ(end, 30'000'000U);
    EXPECT_EQ(pieces[0].pClip, nullptr);
    EXPECT_EQ(pieces[1].place, "tracks[4].clips[0].from");
    EXPECT_TRUE(pieces[1].isSide);
    EXPECT_EQ(pieces[1].end, 15'000'000U);
    EXPECT_EQ(pieces[2].place, "tracks[4].clips[1]"); // the to side goes on as the clip
    EXPECT_FALSE(pieces[2].isSide);
    ASSERT_NE(pieces[2].pTransition, nullptr);
    EXPECT_EQ(pieces[2].transitionStart, 10'000'000U);
    EXPECT_EQ(pieces[2].transitionEnd, 20'000'000U);
}
} // namespace
} // namespace qmx::host
