#include "host/project/ProjectReader.h"
#include "tests/host/interchange/TimelineText.h"

#include <gtest/gtest.h>

namespace qmx::host
{
namespace
{
using namespace timeline;
using nlohmann::json;

/// What an import that throws says: "PLACE: REASON".
std::string ErrorOf(const std::string& text)
{
    try
    {
        (void)Imported(text);
    }
    catch (const JsonError& error)
    {
        return error.Path() + ": " + error.what();
    }
    return "no error";
}

TEST(TimelineImporter, ClipsAndGapsKeepPlaceAndTrim)
{
    const Imported made(Timeline({Track({Clip(File("a.mp4"), Range("48", "24", "24")), Gap("12", "24"),
                                         Clip(File("b.mp4", Range("0", "100", "24")), Range("6", "36", "24"))})}));
    EXPECT_EQ(made.project.at("frameRate"), 24);
    ASSERT_EQ(made.ClipCount(), 2U);
    EXPECT_EQ(made.Clip(0), json::parse(R"({"type": "video", "start": 0, "duration": 1, "path": "a.mp4",
                                            "inPoint": 2})"));
    EXPECT_EQ(made.Clip(1), json::parse(R"({"type": "video", "start": 1.5, "duration": 1.5, "path": "b.mp4",
                                            "inPoint": 0.25})"));
}

TEST(TimelineImporter, TracksKeepOrderAndKind)
{
    const Imported made(Timeline({Track({Clip(File("low.mp4"), Range("0", "25", "25"))}),
                                  Track({Clip(File("high.png"), Range("0", "25", "25"))}),
                                  Track({Clip(File("sound.mp4"), Range("24000", "48000", "48000"))}, "Audio")}));
    ASSERT_EQ(made.project.at("tracks").size(), 3U);
    EXPECT_EQ(made.Clip(0, 0).at("type"), "video");
    EXPECT_EQ(made.Clip(0, 1).at("type"), "image");
    EXPECT_EQ(made.Clip(0, 2), json::parse(R"({"type": "audio", "start": 0, "duration": 1, "path": "sound.mp4",
                                               "inPoint": 0.5})"));
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(made.project.at("tracks").at(i).at("id"), i + 1);
}

TEST(TimelineImporter, FilmsAreMuteWhereTheTimelineHasTracksOfSound)
{
    const std::string film = Track({Clip(File("a.mp4"), Range("0", "25", "25"))});
    EXPECT_FALSE(Imported(Timeline({film})).Clip(0).contains("mute"));
    EXPECT_FALSE(Imported(Timeline({film, Track({}, "Audio")})).Clip(0).contains("mute"));
    const Imported both(Timeline({film, Track({Clip(File("a.wav"), Range("0", "25", "25"))}, "Audio")}));
    EXPECT_EQ(both.Clip(0).at("mute"), true);
    EXPECT_FALSE(both.Clip(0, 1).contains("mute"));
}

TEST(TimelineImporter, TheMediaOwnTimeCodeIsTakenOff)
{
    // The media begin at one hour; the clip a second later.
    const Imported made(
        Timeline({Track({Clip(File("a.mov", Range("86400", "2400", "24")), Range("86424", "24", "24"))})}));
    EXPECT_EQ(made.Clip(0).at("inPoint"), 1);
    const Imported early(
        Timeline({Track({Clip(File("a.mov", Range("86400", "2400", "24")), Range("86376", "48", "24"))})}));
    EXPECT_FALSE(early.Clip(0).contains("inPoint"));
    EXPECT_EQ(early.Clip(0).at("duration"), 2);
    EXPECT_TRUE(early.Reports({"tracks.children[0].children[0]", "start before the media's"}));
}

TEST(TimelineImporter, AClipWithoutARangeIsAsLongAsItsMedia)
{
    const Imported made(Timeline({Track({Clip(File("a.mov", Range("100", "50", "25")), "null"),
                                         Clip(File("b.mov"), "null"), Clip(File("c.mov"), Range("0", "25", "25"))})}));
    ASSERT_EQ(made.ClipCount(), 2U);
    EXPECT_EQ(made.Clip(0).at("duration"), 2);
    EXPECT_FALSE(made.Clip(0).contains("inPoint"));
    EXPECT_EQ(made.Clip(1).at("start"), 2);
    EXPECT_TRUE(made.Reports({"children[1]", "without a range"}));
}

TEST(TimelineImporter, OlderAndNewerSchemasAreUnderstood)
{
    const std::string old = R"({"OTIO_SCHEMA": "Clip.1", "media_reference": )" + File("a.mov") +
                            R"(, "source_range": )" + Range("0", "25", "25") + "}";
    const std::string filler = R"({"OTIO_SCHEMA": "Filler.1", "source_range": )" + Range("0", "50", "25") + "}";
    const std::string chosen = R"({"OTIO_SCHEMA": "Clip.2", "media_references": {"low": )" + File("low.mov") +
                               R"(, "high": )" + File("high.mov") +
                               R"(}, "active_media_reference_key": "high", "source_range": )" + Range("0", "25", "25") +
                               "}";
    const std::string sequence =
        R"({"OTIO_SCHEMA": "Sequence.1", "kind": "Video", "children": [)" + Join({old, filler, chosen}) + "]}";
    const Imported made(R"({"OTIO_SCHEMA": "Timeline.9", "tracks": )" + Stack({sequence}) + "}");
    ASSERT_EQ(made.ClipCount(), 2U);
    EXPECT_EQ(made.Clip(0).at("path"), "a.mov");
    EXPECT_EQ(made.Clip(1).at("path"), "high.mov");
    EXPECT_EQ(made.Clip(1).at("start"), 3);
}

TEST(TimelineImporter, AnyObjectThatHoldsAnEditCanBeTheRoot)
{
    const std::string clip = Clip(File("a.mov"), Range("0", "25", "25"));
    for (const std::string& root :
         {clip, Track({clip}), Stack({Track({clip})}), Stack({clip}), Timeline({clip}),
          R"({"OTIO_SCHEMA": "SerializableCollection.1", "children": [)" + Timeline({Track({clip})}) + "]}"})
    {
        const Imported made(root);
        EXPECT_EQ(made.ClipCount(), 1U) << root;
        EXPECT_EQ(made.Clip(0).at("path"), "a.mov");
    }
}

TEST(TimelineImporter, TheFirstTimelineOfACollectionIsRead)
{
    const std::string first = Timeline({Track({Clip(File("a.mov"), Range("0", "25", "25"))})});
    const std::string second = Timeline({Track({Clip(File("b.mov"), Range("0", "25", "25"))})});
    const Imported made(R"({"OTIO_SCHEMA": "SerializableCollection.1", "children": [)" +
                        Join({File("bin.mov"), first, second}) + "]}");
    EXPECT_EQ(made.Clip(0).at("path"), "a.mov");
    EXPECT_TRUE(made.Reports({"children[0]", "ExternalReference"}));
    EXPECT_TRUE(made.Reports({"children[2]", "only the first timeline"}));
}

TEST(TimelineImporter, ATransitionTakesItsShareOfBothClips)
{
    // | A 0..2 s | B 2..4 s |, a dissolve from 1.5 to 2.5 s.
    const Imported made(Timeline({Track({Clip(File("a.mov"), Range("100", "50", "25")), Dissolve("12.5", "12.5", "25"),
                                         Clip(File("b.mov"), Range("50", "50", "25"))})}));
    ASSERT_EQ(made.ClipCount(), 3U);
    EXPECT_EQ(made.Clip(0), json::parse(R"({"type": "video", "start": 0, "duration": 1.5, "path": "a.mov",
                                            "inPoint": 4})"));
    EXPECT_EQ(made.Clip(1), json::parse(R"({"type": "transition", "start": 1.5, "duration": 1,
        "module": "qmx_transitions", "effect": "dissolve",
        "from": {"type": "video", "path": "a.mov", "inPoint": 5.5},
        "to": {"type": "video", "path": "b.mov", "inPoint": 2}})"));
    EXPECT_EQ(made.Clip(2), json::parse(R"({"type": "video", "start": 2.5, "duration": 1.5, "path": "b.mov",
                                            "inPoint": 2.5})"));
    EXPECT_TRUE(made.report.empty()) << made.report[0];
}

TEST(TimelineImporter, TheToClipOfALopsidedTransitionBeginsInItsMiddle)
{
    // From 1 to 2.5 s, cut at 2: the middle is at 1.75, where b is a quarter of a second before its in point.
    const Imported made(Timeline({Track({Clip(File("a.mov"), Range("0", "40", "20")), Dissolve("20", "10", "20"),
                                         Clip(File("b.mov"), Range("60", "40", "20"))})}));
    EXPECT_EQ(made.Clip(1).at("start"), 1);
    EXPECT_EQ(made.Clip(1).at("duration"), 1.5);
    EXPECT_EQ(made.Clip(1).at("from").at("inPoint"), 1);
    EXPECT_EQ(made.Clip(1).at("to").at("inPoint"), 2.75);
    EXPECT_EQ(made.Clip(2).at("inPoint"), 3.5);
}

TEST(TimelineImporter, AFadeHasOneSideOnly)
{
    const std::string clip = Clip(File("a.mov"), Range("0", "50", "25"));
    const Imported in(Timeline({Track({Dissolve("0", "25", "25"), clip})}));
    ASSERT_EQ(in.ClipCount(), 2U);
    EXPECT_FALSE(in.Clip(0).contains("from"));
    EXPECT_EQ(in.Clip(0).at("to").at("path"), "a.mov");
    const Imported out(Timeline({Track({clip, Dissolve("25", "0", "25"), Gap("0", "25")})}));
    ASSERT_EQ(out.ClipCount(), 2U);
    EXPECT_FALSE(out.Clip(1).contains("to"));
    EXPECT_EQ(out.Clip(1).at("from").at("inPoint"), 1);
    const Imported gaps(Timeline({Track({Gap("25", "25"), Dissolve("5", "5", "25"), Gap("25", "25"), clip})}));
    EXPECT_EQ(gaps.ClipCount(), 1U);
    EXPECT_TRUE(gaps.Reports({"children[1]", "not seen", "becomes a cut"}));
}

TEST(TimelineImporter, AClipBetweenTwoTransitionsMayBelongToThemAlone)
{
    const std::string clip = Clip(File("b.mov"), Range("0", "20", "20"));
    const Imported made(Timeline({Track({Clip(File("a.mov"), Range("0", "20", "20")), Dissolve("10", "10", "20"), clip,
                                         Dissolve("10", "10", "20"), Clip(File("c.mov"), Range("0", "20", "20"))})}));
    ASSERT_EQ(made.ClipCount(), 4U); // a, transition, transition, c
    EXPECT_EQ(made.Clip(1).at("start"), 0.5);
    EXPECT_EQ(made.Clip(2).at("start"), 1.5);
    EXPECT_EQ(made.Clip(2).at("from").at("inPoint"), 0.5);
}

TEST(TimelineImporter, ATransitionThatReachesTooFarIsShortened)
{
    const Imported made(Timeline({Track({Clip(File("a.mov"), Range("0", "20", "20")), Dissolve("30", "25", "20"),
                                         Clip(File("b.mov"), Range("30", "20", "20")), Dissolve("5", "5", "20"),
                                         Clip(File("c.mov"), Range("0", "20", "20"))})}));
    // The first one takes all of a and b, so nothing of b is left for the second, which keeps its share of c.
    ASSERT_EQ(made.ClipCount(), 3U);
    EXPECT_EQ(made.Clip(0).at("start"), 0);
    EXPECT_EQ(made.Clip(0).at("duration"), 2);
    EXPECT_EQ(made.Clip(1).at("start"), 2);
    EXPECT_EQ(made.Clip(1).at("duration"), 0.25);
    EXPECT_TRUE(made.Reports({"children[1]", "shortened"}));
    EXPECT_TRUE(made.Reports({"children[3]", "shortened"}));
}

TEST(TimelineImporter, TransitionsThatNoProjectHasBecomeCuts)
{
    const std::string a = Clip(File("a.wav"), Range("0", "20", "20"));
    const std::string film = Clip(File("a.mov"), Range("0", "20", "20"));
    const Imported sound(Timeline({Track({a, Dissolve("5", "5", "20"), a}, "Audio")}));
    EXPECT_EQ(sound.ClipCount(), 2U);
    EXPECT_TRUE(sound.Reports({"children[1]", "transition of sounds", "becomes a cut"}));
    const Imported nested(Timeline({Track({film, Dissolve("5", "5", "20"), Stack({Track({film})})})}));
    EXPECT_EQ(nested.ClipCount(), 2U);
    EXPECT_TRUE(nested.Reports({"nested sequence", "becomes a cut"}));
    const Imported twice(Timeline({Track({film, Dissolve("5", "5", "20"), Dissolve("4", "4", "20"), film})}));
    EXPECT_EQ(twice.ClipCount(), 3U);
    EXPECT_TRUE(twice.Reports({"children[2]", "second transition", "left out"}));
    const Imported none(Timeline({Track({film, Dissolve("0", "0", "20"), film})}));
    EXPECT_EQ(none.ClipCount(), 2U);
    EXPECT_TRUE(none.Reports({"without length"}));
}

TEST(TimelineImporter, OtherTransitionsBecomeTheNearestEffect)
{
    const auto effect = [](const std::string& type, const std::string& name, bool isExact)
    {
        const std::string clip = Clip(File("a.mov"), Range("0", "20", "20"));
        const std::string transition = R"({"OTIO_SCHEMA": "Transition.1", "transition_type": ")" + type +
                                       R"(", "name": ")" + name + R"(", "in_offset": )" + Time("5", "20") +
                                       R"(, "out_offset": )" + Time("5", "20") + "}";
        const Imported made(Timeline({Track({clip, transition, clip})}));
        EXPECT_EQ(made.Reports({"becomes the effect"}), !isExact) << type << name;
        return made.Clip(1).at("effect").get<std::string>();
    };
    EXPECT_EQ(effect("SMPTE_Dissolve", "anything", true), "dissolve");
    EXPECT_EQ(effect("Custom_Transition", "wipe-down", true), "wipe-down");
    EXPECT_EQ(effect("Custom_Transition", "Page Turn", true), "page-turn");
    EXPECT_EQ(effect("Custom_Transition", "Edge Wipe", false), "wipe-right");
    EXPECT_EQ(effect("SMPTE_Wipe", "", false), "wipe-right");
    EXPECT_EQ(effect("Custom_Transition", "Dip to White", false), "fade-black"); // dips first
    EXPECT_EQ(effect("Custom_Transition", "Fade through white", false), "fade-white");
    EXPECT_EQ(effect("Custom_Transition", "Sparkles", false), "dissolve");
}

TEST(TimelineImporter, NestedSequencesAreFlattened)
{
    // The outer track shows seconds 1 to 4 of a stack: two tracks, the upper one beginning with a gap of two seconds.
    const std::string low = Track({Clip(File("low.mov"), Range("10", "50", "10"))});
    const std::string high = Track({Gap("20", "10"), Clip(File("high.mov"), Range("0", "30", "10"))});
    const std::string nested = Stack({low, high}, R"(, "source_range": )" + Range("10", "30", "10"));
    const Imported made(Timeline({Track({Gap("10", "10"), nested, Clip(File("z.mov"), Range("0", "10", "10"))}),
                                  Track({Clip(File("top.mov"), Range("0", "10", "10"))})}));
    ASSERT_EQ(made.project.at("tracks").size(), 3U);
    ASSERT_EQ(made.ClipCount(0), 2U);
    EXPECT_EQ(made.Clip(0, 0), json::parse(R"({"type": "video", "start": 1, "duration": 3, "path": "low.mov",
                                               "inPoint": 2})"));
    EXPECT_EQ(made.Clip(1, 0).at("start"), 4);
    ASSERT_EQ(made.ClipCount(1), 1U);
    EXPECT_EQ(made.Clip(0, 1), json::parse(R"({"type": "video", "start": 2, "duration": 2, "path": "high.mov"})"));
    EXPECT_EQ(made.Clip(0, 2).at("path"), "top.mov");
}

TEST(TimelineImporter, ATrackInATrackContinuesIt)
{
    const std::string inner =
        Track({Clip(File("a.mov"), Range("0", "10", "10")), Clip(File("b.mov"), Range("0", "20", "10"))}, "Video",
              R"(, "source_range": )" + Range("5", "15", "10"));
    const Imported made(Timeline({Track({inner, Clip(File("c.mov"), Range("0", "10", "10"))})}));
    ASSERT_EQ(made.ClipCount(), 3U);
    EXPECT_EQ(made.Clip(0).at("inPoint"), 0.5);
    EXPECT_EQ(made.Clip(0).at("duration"), 0.5);
    EXPECT_EQ(made.Clip(1).at("duration"), 1);
    EXPECT_EQ(made.Clip(2).at("start"), 1.5);
}

TEST(TimelineImporter, RangesOfTracksAndOfTheTopStackTrim)
{
    const std::string track = Track({Clip(File("a.mov"), Range("0", "40", "10"))}, "Video",
                                    R"(, "source_range": )" + Range("10", "20", "10"));
    const Imported first(Timeline({track}));
    EXPECT_EQ(first.Clip(0), json::parse(R"({"type": "video", "start": 0, "duration": 2, "path": "a.mov",
                                             "inPoint": 1})"));
    const Imported both(R"({"OTIO_SCHEMA": "Timeline.1", "tracks": )" +
                        Stack({track}, R"(, "source_range": )" + Range("5", "10", "10")) + "}");
    EXPECT_EQ(both.Clip(0), json::parse(R"({"type": "video", "start": 0, "duration": 1, "path": "a.mov",
                                            "inPoint": 1.5})"));
    // A range that begins before the track shows nothing for as long.
    const Imported early(Timeline({Track({Clip(File("a.mov"), Range("0", "40", "10"))}, "Video",
                                         R"(, "source_range": )" + Range("-10", "20", "10"))}));
    EXPECT_EQ(early.Clip(0), json::parse(R"({"type": "video", "start": 1, "duration": 1, "path": "a.mov"})"));
}

TEST(TimelineImporter, ATransitionThatATrimCutsThroughIsACut)
{
    const std::string track = Track({Clip(File("a.mov"), Range("0", "20", "10")), Dissolve("5", "5", "10"),
                                     Clip(File("b.mov"), Range("0", "20", "10"))},
                                    "Video", R"(, "source_range": )" + Range("18", "22", "10"));
    const Imported made(Timeline({track}));
    EXPECT_EQ(made.ClipCount(), 2U);
    EXPECT_TRUE(made.Reports({"at the edge"}));
}

TEST(TimelineImporter, GeneratorsAreBlackAndTheirColoursReported)
{
    const auto generator = [](const std::string& kind, const std::string& parameters)
    {
        return Clip(R"({"OTIO_SCHEMA": "GeneratorReference.1", "generator_kind": ")" + kind + R"(", "parameters": )" +
                        parameters + "}",
                    Range("0", "10", "10"));
    };
    const Imported made(
        Timeline({Track({generator("SolidColor", R"({"color": "#000000"})"), generator("black", "{}"),
                         generator("SolidColor", R"({"color": "#ff0000"})"), generator("SMPTEBars", "{}")})}),
        KnownCanvas());
    ASSERT_EQ(made.ClipCount(), 4U);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(made.Clip(i).at("type"), "color");
    ASSERT_EQ(made.report.size(), 2U);
    EXPECT_TRUE(made.Reports({"children[2]", "SolidColor", "black takes its place"}));
    EXPECT_TRUE(made.Reports({"children[3]", "SMPTEBars"}));
}

TEST(TimelineImporter, MissingMediaKeepTheirPlaceInBlack)
{
    const std::string missing =
        Clip(R"({"OTIO_SCHEMA": "MissingReference.1"})", Range("0", "10", "10"), R"(, "name": "lost")");
    const std::string none = R"({"OTIO_SCHEMA": "Clip.2", "source_range": )" + Range("0", "10", "10") + "}";
    const std::string remote = Clip(File("https://example.org/a.mov"), Range("0", "10", "10"));
    const Imported made(Timeline(
        {Track({missing, none, remote}), Track({missing, Clip(File("a.wav"), Range("0", "10", "10"))}, "Audio")}));
    ASSERT_EQ(made.ClipCount(0), 3U);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(made.Clip(i).at("type"), "color");
    ASSERT_EQ(made.ClipCount(1), 1U); // a black clip would be seen
    EXPECT_EQ(made.Clip(0, 1).at("start"), 1);
    EXPECT_TRUE(made.Reports({"tracks.children[0].children[0] \"lost\"", "missing media", "black takes its place"}));
    EXPECT_TRUE(made.Reports({"tracks.children[1].children[0]", "missing media", "left out"}));
    EXPECT_TRUE(made.Reports({"https://example.org/a.mov", "is no local file"}));
}

TEST(TimelineImporter, OfAnImageSequenceTheFirstPictureIsShown)
{
    const std::string sequence =
        R"({"OTIO_SCHEMA": "ImageSequenceReference.1", "target_url_base": "file:///shots/sc%201",
        "name_prefix": "im.", "name_suffix": ".png", "start_frame": 7, "frame_step": 1, "rate": 24,
        "frame_zero_padding": 4})";
    const Imported made(Timeline({Track({Clip(sequence, Range("0", "24", "24"))})}));
    EXPECT_EQ(made.Clip(0).at("type"), "image");
    EXPECT_EQ(made.Clip(0).at("path"), "/shots/sc 1/im.0007.png");
    EXPECT_TRUE(made.Reports({"image sequence", "first picture"}));
}

TEST(TimelineImporter, SpeedsFreezesEffectsMarkersAndTextsAreReported)
{
    const std::string effects = R"(, "name": "shot", "metadata": {"other": 1}, "effects": [
        {"OTIO_SCHEMA": "LinearTimeWarp.1", "time_scalar": 2.5}, {"OTIO_SCHEMA": "LinearTimeWarp.1", "time_scalar": 1},
        {"OTIO_SCHEMA": "FreezeFrame.1", "time_scalar": 0}, {"OTIO_SCHEMA": "Effect.1", "effect_name": "blur"},
        {"OTIO_SCHEMA": "Sparkle.3", "name": "glitter"}, {"OTIO_SCHEMA": "Effect.1", "name": "off", "enabled": false}],
        "markers": [{"OTIO_SCHEMA": "Marker.2", "name": "here", "marked_range": )" +
                                Range("5", "0", "10") + "}]";
    const Imported made(
        Timeline({Track({Clip(File("a.mov"), Range("0", "10", "10"), effects)}, "Video", R"(, "name": "V1")")}));
    ASSERT_EQ(made.ClipCount(), 1U);
    EXPECT_EQ(made.report.size(), 7U);
    EXPECT_TRUE(made.Reports({"tracks.children[0].children[0] \"shot\"", "speed 2.5", "its own speed"}));
    EXPECT_TRUE(made.Reports({"freeze frame"}));
    EXPECT_TRUE(made.Reports({"effect \"blur\"", "left out"}));
    EXPECT_TRUE(made.Reports({"effect \"glitter\"", "left out"}));
    EXPECT_TRUE(made.Reports({"marker \"here\" at 0.5000000 s", "left out"}));
    EXPECT_TRUE(made.Reports({"names of 2 objects"}));
    EXPECT_TRUE(made.Reports({"metadata of 1 object"}));
}

TEST(TimelineImporter, VolumesOfClipsAndTracksAreKept)
{
    const auto gain = [](const std::string& value)
    { return R"(, "effects": [{"OTIO_SCHEMA": "AudioVolume.1", "gain": )" + value + "}]"; };
    const Imported made(Timeline({Track({Clip(File("a.wav"), Range("0", "10", "10"), gain("0.5")),
                                         Clip(File("a.wav"), Range("0", "10", "10"), gain("40"))},
                                        "Audio", gain("2"))}),
                        KnownCanvas());
    EXPECT_EQ(made.project.at("tracks").at(0).at("volume"), 2);
    EXPECT_EQ(made.Clip(0).at("volume"), 0.5);
    EXPECT_EQ(made.Clip(1).at("volume"), 16);
    EXPECT_EQ(made.report.size(), 1U);
    EXPECT_TRUE(made.Reports({"volume 40"}));
}

TEST(TimelineImporter, WhatIsTurnedOffIsLeftOut)
{
    const std::string on = Clip(File("a.mov"), Range("0", "10", "10"));
    const std::string off = Clip(File("b.mov"), Range("0", "10", "10"), R"(, "enabled": false)");
    const Imported made(
        Timeline({Track({off, on}), Track({on}, "Video", R"(, "enabled": false)"), Track({on}, "Subtitle")}));
    ASSERT_EQ(made.project.at("tracks").size(), 1U);
    EXPECT_EQ(made.ClipCount(), 1U);
    EXPECT_EQ(made.Clip(0).at("start"), 1);
    EXPECT_TRUE(made.Reports({"tracks.children[0].children[0]", "turned off"}));
    EXPECT_TRUE(made.Reports({"tracks.children[1]", "turned off"}));
    EXPECT_TRUE(made.Reports({"tracks.children[2]", "kind \"Subtitle\""}));
}

TEST(TimelineImporter, UnknownSchemasKeepTheirLengthAndAreReported)
{
    const std::string unknown = R"({"OTIO_SCHEMA": "Hologram.7", "source_range": )" + Range("0", "30", "10") + "}";
    const Imported made(Timeline(
        {Track({unknown, Clip(File("a.mov"), Range("0", "10", "10")), R"({"OTIO_SCHEMA": "X.1"})", R"({})"})}));
    ASSERT_EQ(made.ClipCount(), 1U);
    EXPECT_EQ(made.Clip(0).at("start"), 3);
    EXPECT_TRUE(made.Reports({"children[0]", "Hologram"}));
}

TEST(TimelineImporter, TheStartOfTheTimeCodeIsReportedAndItsRateTaken)
{
    const std::string track = Track({Clip(File("a.mov"), Range("0", "48000", "48000"))});
    const Imported made(Timeline({track}, R"(, "global_start_time": )" + Time("90000", "25")));
    EXPECT_EQ(made.project.at("frameRate"), 25);
    EXPECT_TRUE(made.Reports({"global_start_time", "starts at 0"}));
    EXPECT_FALSE(Imported(Timeline({track}, R"(, "global_start_time": )" + Time("0", "25"))).Reports({"starts at 0"}));
}

TEST(TimelineImporter, SizeAndRateComeFromOptionsTheFileOrTheFirstMedia)
{
    std::vector<std::filesystem::path> asked;
    const ShapeLookup lookup = [&](const std::filesystem::path& path)
    {
        asked.push_back(path);
        return MediaShape{640, 360, FrameRate::FromFraction(50, 1)};
    };
    const std::string text = Timeline({Track({Clip(File("a.mov"), Range("0", "25", "25"))})});
    const Imported fromMedia(text, {}, lookup);
    EXPECT_EQ(fromMedia.project.at("width"), 640);
    EXPECT_EQ(fromMedia.project.at("height"), 360);
    EXPECT_EQ(fromMedia.project.at("frameRate"), 25); // the file says so
    ASSERT_EQ(asked.size(), 1U);
    const Imported otherwise(text, {}, [](const std::filesystem::path&) { return std::nullopt; });
    EXPECT_EQ(otherwise.project.at("width"), 1920);
    EXPECT_EQ(otherwise.project.at("height"), 1080);
    EXPECT_TRUE(otherwise.Reports({"size of the pictures", "1920 x 1080"}));
    ImportOptions options;
    options.width = 320;
    options.height = 200;
    options.frameRate = FrameRate::Parse("30000/1001");
    const Imported forced(text, options, lookup);
    EXPECT_EQ(forced.project.at("width"), 320);
    EXPECT_EQ(forced.project.at("height"), 200);
    EXPECT_EQ(forced.project.at("frameRate"), "30000/1001");
    EXPECT_EQ(asked.size(), 1U); // needs none
    const Imported canvas(Timeline({Track({Clip(File("a.mov"), Range("0", "25", "25"))})},
                                   R"(, "canvas_size": {"OTIO_SCHEMA": "V2d.1", "x": 800.0, "y": 600.0})"));
    EXPECT_EQ(canvas.project.at("width"), 800);
    EXPECT_EQ(canvas.project.at("height"), 600);
    // Rates of samples are none of frames, so the media are asked.
    const Imported samples(Timeline({Track({Clip(File("a.mov"), Range("0", "48000", "48000"))})}), {}, lookup);
    EXPECT_EQ(samples.project.at("frameRate"), 50);
}

TEST(TimelineImporter, RelativePathsCountFromTheProject)
{
    ImportOptions options;
    options.timelineFile = "cuts/a.otio";
    options.projectFile = "projects/new/a.json";
    const Imported made(Timeline({Track({Clip(File("../films/my%20film.mov"), Range("0", "10", "10")),
                                         Clip(File("file:///films/b.mov"), Range("0", "10", "10"))})}),
                        options);
    EXPECT_EQ(made.Clip(0).at("path"), "../../films/my film.mov");
    EXPECT_EQ(made.Clip(1).at("path"), "/films/b.mov");
}

TEST(TimelineImporter, FramesOfSlowedDownRatesDoNotDrift)
{
    for (const char* const pRate : {"29.97", "29.97002997002997", "23.976", "23.976023976023978", "59.94"})
    {
        std::vector<std::string> clips;
        for (int i = 0; i < 200; ++i)
            clips.push_back(Clip(File("a.mov"), Range(std::to_string(i), "7", pRate)));
        const Imported made(Timeline({Track(clips)}));
        const Project project = ProjectReader::Parse(JsonText(made.tree, 2), "p.json");
        ASSERT_EQ(project.tracks[0].clips.size(), 200U);
        for (std::size_t i = 0; i < 200; ++i)
            ASSERT_EQ(project.tracks[0].clips[i].start, project.frameRate.TimeOfFrame(7 * i)) << pRate << ' ' << i;
        EXPECT_EQ(project.frameRate.Denominator(), 1001U);
    }
}

TEST(TimelineImporter, ClipsThatAreTooShortAreLeftOut)
{
    const Imported made(
        Timeline({Track({Clip(File("a.mov"), Range("0", "1", "100000000")), Clip(File("b.mov"), Range("0", "10", "10")),
                         Clip(File("c.mov"), Range("0", "0", "10"))})}));
    ASSERT_EQ(made.ClipCount(), 1U);
    EXPECT_TRUE(made.Reports({"children[0]", "shorter than 100 ns"}));
}

TEST(TimelineImporter, ErrorsNameThePlace)
{
    const auto with = [](const std::string& clip) { return Timeline({Track({clip})}); };
    const std::string place = "tracks.children[0].children[0].source_range";
    EXPECT_EQ(ErrorOf("{}"), "OTIO_SCHEMA: is missing; this is no OpenTimelineIO file");
    EXPECT_EQ(ErrorOf("[]"), ": must be an object, not a list");
    EXPECT_EQ(ErrorOf(R"({"OTIO_SCHEMA": "Marker.1"})").substr(0, 12), "OTIO_SCHEMA:");
    EXPECT_EQ(ErrorOf(R"({"OTIO_SCHEMA": "Timeline.1"})"), "tracks: is missing");
    EXPECT_EQ(ErrorOf(Timeline({})), "tracks: holds no clip that can be shown");
    EXPECT_EQ(ErrorOf(with(Clip(File("a"), Range("0", "-5", "24")))), place + ".duration: must not be negative");
    EXPECT_EQ(ErrorOf(with(Clip(File("a"), Range("0", "5", "0")))),
              place + ".start_time.rate: must be a rate from 0.001 to 10^12 a second, not 0");
    EXPECT_EQ(ErrorOf(with(Clip(File("a"), Range("0", "5", "NaN")))),
              place + ".start_time.rate: must be a finite number");
    EXPECT_EQ(ErrorOf(with(Clip(File("a"), Range("Infinity", "5", "24")))),
              place + ".start_time.value: must be a finite number");
    EXPECT_EQ(ErrorOf(with(Clip(File("a"), Range("0", "1e15", "24")))),
              place + ".duration.value: is further than 1000000 seconds from 0");
    EXPECT_EQ(ErrorOf(with(Clip(File("a"), R"({"start_time": null})"))), place + ".duration: is missing");
    EXPECT_EQ(ErrorOf(with(Clip(File("a"), R"("long")"))), place + ": must be an object, not a text");
    EXPECT_EQ(ErrorOf(with("7")), "tracks.children[0].children[0]: must be an object, not a number");
    EXPECT_EQ(ErrorOf(Timeline({Track({Clip(File("a"), Range("0", "9", "24")), Dissolve("-1", "1", "24")})})),
              "tracks.children[0].children[1].in_offset: must not be negative");
    const std::string half = Clip(File("a"), Range("0", "900000", "1"));
    EXPECT_EQ(ErrorOf(Timeline({Track({half, half})})),
              "tracks.children[0].children[1]: ends after 1000000 seconds of its timeline");
}

TEST(TimelineImporter, NumbersOfTheFormatThatJsonLacksAreLetThroughWhereNoneIsNeeded)
{
    const Imported made(
        Timeline({Track({Clip(File("a.mov"), Range("0", "10", "10"),
                              R"(, "metadata": {"a": [NaN, Infinity, -Infinity, Inf, -Inf], "b": "NaN \" Inf"})")})}));
    EXPECT_EQ(made.ClipCount(), 1U);
}

TEST(TimelineImporter, DeepAndLargeFilesAreRefusedBeforeTheyHurt)
{
    std::string deep = Clip(File("a"), Range("0", "9", "24"));
    for (int i = 0; i < 200; ++i)
        deep = Stack({deep});
    EXPECT_NE(ErrorOf(Timeline({deep})).find("nested deeper than 256 levels"), std::string::npos);
    std::string bearable = Clip(File("a"), Range("0", "9", "24"));
    for (int i = 0; i < 100; ++i)
        bearable = i % 2 == 0 ? Track({bearable}) : Stack({bearable});
    EXPECT_EQ(Imported(Timeline({bearable})).ClipCount(), 1U);
    std::string repeated = R"({"OTIO_SCHEMA": "Timeline.1")";
    for (int i = 0; i < 2'000; ++i)
        repeated += ",\"m" + std::to_string(i) + "\":0";
    EXPECT_NE(ErrorOf(repeated + ",\"m7\":0}").find("stands here twice"), std::string::npos);
    EXPECT_EQ(ErrorOf(repeated + "}"), "tracks: is missing");
}

TEST(TimelineImporter, ManyLossesAreCounted)
{
    std::vector<std::string> clips(TransferReport::kMaxLosses + 5, Clip("null", Range("0", "1", "10")));
    const Imported made(Timeline({Track(clips)}));
    ASSERT_EQ(made.report.size(), TransferReport::kMaxLosses + 1);
    EXPECT_EQ(made.report.back().substr(0, 2), "6 "); // five clips and the size of the pictures
}

TEST(TransferReport, LinesAreFreeOfControlCharactersAndJsonOfNothing)
{
    TransferReport report;
    report.Add("tracks", "a\x1b[2J\nb", "what", "why");
    report.Add("", "", "what", "why");
    EXPECT_EQ(report.Lines(), (std::vector<std::string>{"tracks \"a?[2J?b\": what: why", "what: why"}));
    const json list = json::parse(report.Json());
    EXPECT_EQ(list, json::parse(R"([{"place": "tracks", "name": "a\u001b[2J\nb", "what": "what", "why": "why"},
                                    {"place": "", "name": "", "what": "what", "why": "why"}])"));
    EXPECT_EQ(json::parse(TransferReport().Json()), json::array());
}
} // namespace
} // namespace qmx::host
