// Timelines of several shapes, as files: what becomes of them, and that going round changes nothing.
#include "tests/host/interchange/TimelineText.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace qmx::host
{
namespace
{
using namespace timeline;

std::string FileText(const std::string& name)
{
    std::ifstream stream(std::filesystem::path(QMX_TIMELINES_DIR) / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// "start+duration type path+inPoint" of every clip, sides in brackets, tracks apart.
std::string EditOf(const nlohmann::json& project)
{
    const auto describe = [](const nlohmann::json& clip)
    {
        std::string text = clip.at("type").get<std::string>();
        if (clip.contains("path"))
            text += ' ' + clip.at("path").get<std::string>();
        if (clip.contains("inPoint"))
            text += '+' + clip.at("inPoint").dump();
        return text;
    };
    std::string edit;
    for (const nlohmann::json& track : project.at("tracks"))
    {
        for (const nlohmann::json& clip : track.at("clips"))
        {
            edit += clip.at("start").dump() + '+' + clip.at("duration").dump() + ' ';
            edit += clip.contains("effect") ? clip.at("effect").get<std::string>() : describe(clip);
            for (const char* const pSide : {"from", "to"})
                edit += clip.contains(pSide) ? std::string(" ") + pSide + " [" + describe(clip.at(pSide)) + ']' : "";
            edit += '\n';
        }
        edit += "--\n";
    }
    return edit;
}

class TimelineFiles : public testing::TestWithParam<const char*>
{
};

TEST_P(TimelineFiles, SurviveExportAndImport)
{
    const Imported first(FileText(GetParam()));
    const Exported out(first.tree);
    const Imported second(out.text);
    EXPECT_EQ(second.project, first.project);
    EXPECT_TRUE(second.report.empty()) << second.report.front();
    EXPECT_EQ(Exported(second.tree).text, out.text);
}

INSTANTIATE_TEST_SUITE_P(All, TimelineFiles, testing::Values("cut-list.otio", "nested.otio", "speeds.otio", "old.otio"),
                         [](const testing::TestParamInfo<const char*>& info)
                         {
                             std::string name = info.param;
                             name.resize(name.find('.'));
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST(TimelineFile, OfCutsGapsAndTransitions)
{
    const Imported made(FileText("cut-list.otio"));
    EXPECT_EQ(EditOf(made.project),
              "0+1.6 video screen.mp4\n"
              "1.6+0.8 dissolve from [video screen.mp4+1.6] to [video phone upright.mp4+1]\n"
              "2.4+2.6 video phone upright.mp4+1.4\n"
              "6+1.8 video /media/studio/b-roll.mov+4\n"
              "7.8+0.4 wipe-right from [video /media/studio/b-roll.mov+5.8] to [video screen.mp4+4]\n"
              "8.2+0.8 video screen.mp4+4.2\n"
              "9+1 dissolve from [video screen.mp4+5]\n--\n"
              "0+2 audio screen.mp4\n"
              "5+5 audio music.wav+0.5\n--\n");
    EXPECT_EQ(made.project.at("frameRate"), 25);
    EXPECT_EQ(made.report.size(), 3U); // names, time code, the wipe
    EXPECT_TRUE(made.Reports({"tracks.children[0].children[5] \"Edge Wipe\"", "wipe-right"}));
}

TEST(TimelineFile, OfNestedSequencesAndGenerators)
{
    const Imported made(FileText("nested.otio"));
    EXPECT_EQ(EditOf(made.project), "0+2 video screen.mp4\n"
                                    "2+1.5 video screen.mp4+1.4166667\n"
                                    "3.5+1.5 video phone upright.mp4\n"
                                    "5+1 video phone upright.mp4+2.5\n"
                                    "6+1 color\n"
                                    "7+1 color\n--\n"
                                    "3+1.5 image logo.png\n--\n");
    EXPECT_TRUE(made.Reports({"\"bars\"", "SMPTEBars"}));
    EXPECT_EQ(made.report.size(), 2U);
}

TEST(TimelineFile, OfWhatProjectsLack)
{
    const Imported made(FileText("speeds.otio"));
    EXPECT_EQ(made.project.at("frameRate"), "30000/1001");
    EXPECT_EQ(made.ClipCount(), 5U);
    for (const char* const pWords : {"speed 2", "freeze frame", "Gaussian Blur", "look here", "image sequence",
                                     "missing media", "Hologram", "names of 6 objects"})
        EXPECT_TRUE(made.Reports({pWords})) << pWords;
    EXPECT_EQ(made.report.size(), 8U);
}

TEST(TimelineFile, OfOldSchemasInACollection)
{
    const Imported made(FileText("old.otio"));
    EXPECT_EQ(made.project.at("frameRate"), "24000/1001");
    ASSERT_EQ(made.ClipCount(), 2U);
    EXPECT_EQ(made.Clip(0).at("path"), "C:/Films/one.mov");
    EXPECT_EQ(made.Clip(0).at("duration"), 10.01);
    EXPECT_EQ(made.Clip(1).at("type"), "color");
    EXPECT_EQ(made.Clip(1).at("start"), 11.011);
}
} // namespace
} // namespace qmx::host
