// Transitions and colour keys of project files.
#include "effects/Effects.h"
#include "host/HostError.h"
#include "host/project/EffectNames.h"
#include "host/project/ProjectReader.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace qmx::host
{
namespace
{
Project ProjectOf(const std::string& clip, const std::string& rate = "10")
{
    return ProjectReader::Parse(R"({"width": 64, "height": 64, "frameRate": )" + rate +
                                    R"(, "tracks": [{"id": 1, "clips": [)" + clip + "]}]}",
                                "folder/p.json");
}

std::string Transition(const std::string& more)
{
    return R"({"type": "transition", "start": 2, "duration": 1)" + more + "}";
}

constexpr const char* kBoth = R"(, "from": {"type": "color"}, "to": {"type": "color"})";

/// The reason without the clip's own place.
std::string ErrorOf(const std::string& clip)
{
    try
    {
        ProjectOf(clip);
        return "";
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::Project);
        const std::string reason = error.what();
        const std::string place = "tracks[0].clips[0].";
        EXPECT_EQ(reason.rfind(place, 0), 0U) << reason;
        return reason.substr(place.size());
    }
}

TEST(ProjectTransitions, TheCutLiesInTheMiddleUnlessTheSidesSayOtherwise)
{
    const Project project = ProjectOf(Transition(
        R"(, "effect": "iris", "from": {"type": "video", "path": "a.mp4", "inPoint": 4, "rotation": 90, "frameRate": 25},
             "to": {"type": "image", "path": "b.png"})"));
    const ProjectClip& clip = project.tracks[0].clips[0];
    EXPECT_EQ(clip.kind, ClipKind::Transition);
    ASSERT_TRUE(clip.pTransition);
    const ProjectTransition& transition = *clip.pTransition;
    EXPECT_EQ(transition.module, "qmx_transitions");
    EXPECT_EQ(transition.effect, 12U);
    EXPECT_FALSE(transition.progress);
    ASSERT_TRUE(transition.from);
    EXPECT_EQ(transition.from->place, "tracks[0].clips[0].from");
    EXPECT_EQ(transition.from->kind, ClipKind::Video);
    EXPECT_EQ(transition.from->path, "folder/a.mp4");
    EXPECT_EQ(transition.from->inPoint, 40'000'000U);
    EXPECT_EQ(transition.from->rotation, 90U);
    EXPECT_EQ(transition.from->frameRate, FrameRate::Parse("25"));
    EXPECT_EQ(transition.from->start, 20'000'000U);
    EXPECT_EQ(transition.from->End(), 25'000'000U);
    ASSERT_TRUE(transition.to);
    EXPECT_EQ(transition.to->kind, ClipKind::Image);
    EXPECT_EQ(transition.to->start, 25'000'000U);
    EXPECT_EQ(transition.to->End(), 30'000'000U);

    const Project own = ProjectOf(Transition(
        R"(, "from": {"type": "color", "start": 0.5}, "to": {"type": "color", "start": 2.25, "duration": 9})"));
    const ProjectTransition& sides = *own.tracks[0].clips[0].pTransition;
    EXPECT_EQ(sides.from->start, 5'000'000U);
    EXPECT_EQ(sides.from->End(), 25'000'000U);
    EXPECT_EQ(sides.to->start, 22'500'000U);
    EXPECT_EQ(sides.to->End(), 112'500'000U);
}

TEST(ProjectTransitions, AFixedProgressHasNoMiddle)
{
    const Project project = ProjectOf(Transition(std::string(R"(, "progress": 0.25)") + kBoth));
    const ProjectTransition& transition = *project.tracks[0].clips[0].pTransition;
    EXPECT_EQ(transition.progress, 0.25F);
    for (const ProjectClip& side : {std::cref(*transition.from), std::cref(*transition.to)})
    {
        EXPECT_EQ(side.start, 20'000'000U);
        EXPECT_EQ(side.End(), 30'000'000U);
    }
    EXPECT_EQ(ErrorOf(Transition(std::string(R"(, "progress": 1.5)") + kBoth)), "progress: must lie between 0 and 1");
    EXPECT_EQ(ErrorOf(Transition(std::string(R"(, "progress": "half")") + kBoth)),
              "progress: must be a number, not a text");
}

TEST(ProjectTransitions, OneSideIsEnough)
{
    EXPECT_EQ(ErrorOf(Transition(R"(, "from": {"type": "color"})")), "");
    EXPECT_EQ(ErrorOf(Transition(R"(, "to": {"type": "color"})")), "");
    EXPECT_EQ(ErrorOf(Transition("")), "from: is missing, and so is \"to\"; a transition needs one of them at least");
}

TEST(ProjectTransitions, ATransitionOfOneTickStillHasTwoSides)
{
    EXPECT_EQ(ErrorOf(R"({"type": "transition", "start": 2.00001, "duration": 0.0000001)" + std::string(kBoth) + "}"),
              "");
}

TEST(ProjectTransitions, EffectsHaveNamesAndNumbers)
{
    for (const NamedNumber& effect : kEffectNames)
    {
        const std::string name = std::string(R"(, "effect": ")") + effect.pName + '"' + kBoth;
        EXPECT_EQ(ProjectOf(Transition(name)).tracks[0].clips[0].pTransition->effect, effect.value);
        const std::string number = ", \"effect\": " + std::to_string(effect.value) + kBoth;
        EXPECT_EQ(ProjectOf(Transition(number)).tracks[0].clips[0].pTransition->effect, effect.value);
    }
    const std::string reason = ErrorOf(Transition(std::string(R"(, "effect": "star")") + kBoth));
    EXPECT_EQ(reason.rfind("effect: must be one of \"dissolve\" (0), \"fade-black\" (1), ", 0), 0U) << reason;
    EXPECT_NE(reason.find(", \"page-turn\" (16)"), std::string::npos) << reason;
    EXPECT_EQ(ErrorOf(Transition(std::string(R"(, "effect": 17)") + kBoth)), reason);
}

TEST(ProjectTransitions, NamesAreThoseOfTheModuleAndItsManual)
{
    ASSERT_EQ(kEffectNames.size(), effects::kEffectCount);
    std::ifstream manual(QMX_DOCS_DIR "/effects.md");
    std::vector<std::string> names; // of the rows of its table: | 3, 4 | `wipe-right`, `wipe-left` | …
    for (std::string line; std::getline(manual, line);)
    {
        if (line.size() < 3 || line[0] != '|' || line[2] < '0' || line[2] > '9')
            continue;
        const std::size_t end = line.find('|', line.find('`'));
        for (std::size_t from = line.find('`'); from < end; from = line.find('`', from + 1))
        {
            const std::size_t to = line.find('`', from + 1);
            names.push_back(line.substr(from + 1, to - from - 1));
            from = to;
        }
    }
    ASSERT_EQ(names.size(), kEffectNames.size());
    for (std::size_t i = 0; i < names.size(); ++i)
    {
        EXPECT_EQ(names[i], kEffectNames[i].pName);
        EXPECT_EQ(kEffectNames[i].value, i);
    }
}

TEST(ProjectTransitions, OtherModulesHaveNumbersOnly)
{
    const Project project = ProjectOf(Transition(std::string(R"(, "module": "wipe_effect", "effect": 70000)") + kBoth));
    EXPECT_EQ(project.tracks[0].clips[0].pTransition->module, "wipe_effect");
    EXPECT_EQ(project.tracks[0].clips[0].pTransition->effect, 70'000U);
    EXPECT_EQ(ErrorOf(Transition(std::string(R"(, "module": "wipe_effect", "effect": "iris")") + kBoth)),
              "effect: must be a number, not a text");
    for (const char* const pName : {"../evil", "/tmp/evil", "a\\\\b", "c:evil", "..", "."})
        EXPECT_EQ(ErrorOf(Transition(R"(, "module": ")" + std::string(pName) + '"' + kBoth)),
                  "module: must be the name of a file beside the program, without a folder");
    EXPECT_EQ(ErrorOf(Transition(std::string(R"(, "module": "")") + kBoth)), "module: must name a file");
}

TEST(ProjectTransitions, RefusesSidesThatCannotBeShown)
{
    for (const char* const pKind : {"audio", "transition"})
        EXPECT_EQ(ErrorOf(Transition(R"(, "from": {"type": ")" + std::string(pKind) + "\"}")),
                  "from.type: a transition cannot lead from or to a clip of the kind \"" + std::string(pKind) + '"');
    EXPECT_EQ(
        ErrorOf(Transition(R"(, "to": {"type": "film"})")),
        "to.type: unknown kind \"film\", the known ones are \"video\", \"camera\", \"image\", \"color\", \"title\" "
        "and \"keystroke\"");
    EXPECT_EQ(ErrorOf(Transition(R"(, "to": {"type": "video"})")), "to.path: is missing");
    EXPECT_EQ(ErrorOf(Transition(R"(, "to": {"type": "video", "path": "a", "volume": 1})")),
              "to.volume: unknown field");
    EXPECT_EQ(ErrorOf(Transition(R"(, "from": {"type": "color", "start": 3})")),
              "from.duration: must be greater than 0");
    EXPECT_EQ(ErrorOf(Transition(R"(, "to": [])")), "to: must be an object, not a list");
    EXPECT_EQ(ErrorOf(Transition(R"(, "path": "a")" + std::string(kBoth))), "path: unknown field");
}

TEST(ProjectTransitions, FilesOfSidesAndBackgroundsBelongToTheProject)
{
    const Project project = ProjectOf(Transition(
        R"(, "from": {"type": "video", "path": "a.mp4", "key": {"color": "#00ff00", "background": "b.png"}},
             "to": {"type": "camera", "path": "c.h264"})"));
    const std::vector<std::filesystem::path> expected{"folder/p.json", "folder/a.mp4", "folder/b.png", "folder/c.mp4",
                                                      "folder/c.meta"};
    EXPECT_EQ(project.Files(), expected);
}

std::string Keyed(const std::string& key)
{
    return R"({"type": "video", "path": "a.mp4", "start": 0, "duration": 1, "key": )" + key + "}";
}

TEST(ProjectKeys, ReadsEveryField)
{
    const Project project = ProjectOf(
        Keyed(R"({"color": "#00b140", "similarity": 0.1, "smoothness": 0.2, "spill": 0.5, "background": "b.png"})"));
    const std::optional<ProjectKey>& key = project.tracks[0].clips[0].key;
    ASSERT_TRUE(key);
    EXPECT_EQ(key->place, "tracks[0].clips[0].key");
    EXPECT_EQ(key->color, 0x00B140U);
    EXPECT_EQ(key->similarity, 0.1);
    EXPECT_EQ(key->smoothness, 0.2);
    EXPECT_EQ(key->spill, 0.5);
    EXPECT_EQ(key->background, "folder/b.png");
    EXPECT_FALSE(ProjectOf(R"({"type": "video", "path": "a", "start": 0, "duration": 1})").tracks[0].clips[0].key);
}

TEST(ProjectKeys, AColorIsEnough)
{
    const Project project =
        ProjectOf(R"({"type": "camera", "path": "a.mjpg", "start": 0, "duration": 1, "key": {"color": "#0000ff"}})");
    const ProjectKey& key = project.tracks[0].clips[0].key.value();
    EXPECT_EQ(key.color, 0xFFU);
    EXPECT_EQ(key.similarity, 0.06);
    EXPECT_EQ(key.smoothness, 0.22);
    EXPECT_EQ(key.spill, 1);
    EXPECT_TRUE(key.background.empty());
}

TEST(ProjectKeys, RefusesWhatMakesNoSense)
{
    EXPECT_EQ(ErrorOf(Keyed("{}")), "key.color: is missing");
    EXPECT_EQ(ErrorOf(Keyed("true")), "key: must be an object, not true or false");
    EXPECT_EQ(ErrorOf(Keyed(R"({"color": "green"})")), "key.color: must be a colour like \"#1e90ff\", not \"green\"");
    for (const char* const pName : {"similarity", "smoothness", "spill"})
        EXPECT_EQ(ErrorOf(Keyed(R"({"color": "#00ff00", ")" + std::string(pName) + "\": 1.01}")),
                  "key." + std::string(pName) + ": must lie between 0 and 1");
    EXPECT_EQ(ErrorOf(Keyed(R"({"color": "#00ff00", "background": ""})")), "key.background: must name a file");
    EXPECT_EQ(ErrorOf(Keyed(R"({"color": "#00ff00", "colour": 1})")), "key.colour: unknown field");
    EXPECT_EQ(ErrorOf(R"({"type": "image", "path": "a", "start": 0, "duration": 1, "key": {"color": "#00ff00"}})"),
              "key: unknown field");
}
} // namespace
} // namespace qmx::host
