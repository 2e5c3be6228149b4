// The records of titles and keystrokes in project files.
#include "host/HostError.h"
#include "host/project/ProjectReader.h"

#include <gtest/gtest.h>

#include <string>

namespace qmx::host
{
namespace
{
std::string ProjectOf(const std::string& clip)
{
    return R"({"width": 64, "height": 64, "frameRate": 10, "tracks": [{"id": 1, "clips": [)" + clip + "]}]}";
}
std::string TitleOf(const std::string& item)
{
    return ProjectOf(R"({"type": "title", "start": 0, "duration": 1, "texts": [)" + item + "]}");
}
std::string KeystrokesOf(const std::string& items)
{
    return ProjectOf(R"({"type": "keystroke", "start": 0, "duration": 1, "keystrokes": [)" + items + "]}");
}

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
        return error.what();
    }
}

/// What is wrong with one field of a text.
std::string TextError(const std::string& field)
{
    const std::string error = ErrorOf(TitleOf(R"({"text": "a", )" + field + "}"));
    const std::string place = "tracks[0].clips[0].texts[0].";
    EXPECT_EQ(error.substr(0, place.size()), place);
    return error.substr(std::min(place.size(), error.size()));
}
std::string KeystrokeError(const std::string& fields)
{
    const std::string error = ErrorOf(KeystrokesOf("{" + fields + "}"));
    const std::string place = "tracks[0].clips[0].keystrokes[0].";
    EXPECT_EQ(error.substr(0, place.size()), place);
    return error.substr(std::min(place.size(), error.size()));
}

TEST(ProjectTexts, EveryFieldOfATextIsRead)
{
    const Project project = ProjectReader::Parse(
        TitleOf(R"({"text": "Grüße 😀", "textLength": 3, "fontName": "Noto Sans", "fontSize": 12.5, "fontWeight": 700,
                    "italic": true, "underline": true, "color": "#12aBcD", "opacity": 0.25, "x": 0.5, "y": -1.25,
                    "alignment": "center", "animation": "bottomToTop", "speed": 8})"),
        "p.json");
    const ProjectClip& clip = project.tracks[0].clips[0];
    EXPECT_EQ(clip.kind, ClipKind::Title);
    ASSERT_EQ(clip.texts.size(), 1U);
    const tagQMXTitleTextInfo& text = clip.texts[0];
    EXPECT_EQ(text.text, L"Grüße 😀");
    EXPECT_EQ(text.textLength, 3U);
    EXPECT_EQ(text.fontName, L"Noto Sans");
    EXPECT_EQ(text.fontSize, 12.5F);
    EXPECT_EQ(text.fontWeight, 700U);
    EXPECT_TRUE(text.italic);
    EXPECT_TRUE(text.underline);
    EXPECT_EQ(text.color, 0x12ABCDU);
    EXPECT_EQ(text.opacity, 0.25F);
    EXPECT_EQ(text.x, 0.5);
    EXPECT_EQ(text.y, -1.25);
    EXPECT_EQ(text.alignment, 2U);
    EXPECT_EQ(text.animation, QMXTitleAnimation_BottomToTop);
    EXPECT_EQ(text.speed, 8U);
}

TEST(ProjectTexts, ATextNeedsNothingButItself)
{
    const Project project = ProjectReader::Parse(TitleOf(R"({"text": "plain"})"), "p.json");
    const tagQMXTitleTextInfo& text = project.tracks[0].clips[0].texts[0];
    EXPECT_EQ(text.textLength, 5U);
    EXPECT_EQ(text.fontName, L"");
    EXPECT_EQ(text.fontSize, 24);
    EXPECT_EQ(text.fontWeight, 400U);
    EXPECT_FALSE(text.italic);
    EXPECT_FALSE(text.underline);
    EXPECT_EQ(text.color, 0xFFFFFFU);
    EXPECT_EQ(text.opacity, 1);
    EXPECT_EQ(text.x, 0);
    EXPECT_EQ(text.y, 0);
    EXPECT_EQ(text.alignment, 0U);
    EXPECT_EQ(text.animation, QMXTitleAnimation_None);
    EXPECT_EQ(text.speed, 0U);
    EXPECT_EQ(ErrorOf(TitleOf("")), ""); // and a title needs no text
}

TEST(ProjectTexts, EnumerationsAreNamesOrNumbers)
{
    for (int n = 0; n < 5; ++n)
    {
        const char* const names[] = {"none", "leftToRight", "topToBottom", "rightToLeft", "bottomToTop"};
        for (const std::string& value : {std::to_string(n), '"' + std::string(names[n]) + '"'})
        {
            const Project project =
                ProjectReader::Parse(TitleOf(R"({"text": "a", "animation": )" + value + "}"), "p.json");
            EXPECT_EQ(project.tracks[0].clips[0].texts[0].animation, static_cast<std::uint32_t>(n));
        }
    }
    EXPECT_EQ(TextError(R"("alignment": 4)"), "alignment: must be one of \"leading\" (0), \"trailing\" (1), "
                                              "\"center\" (2), \"justified\" (3)");
    EXPECT_EQ(TextError(R"("alignment": "left")").substr(0, 20), "alignment: must be o");
    EXPECT_EQ(TextError(R"("animation": true)").substr(0, 20), "animation: must be o");
    EXPECT_EQ(TextError(R"("animation": -1)").substr(0, 20), "animation: must be o");
}

TEST(ProjectTexts, WrongFieldsOfATextAreNamed)
{
    EXPECT_EQ(ErrorOf(TitleOf("{}")), "tracks[0].clips[0].texts[0].text: is missing");
    EXPECT_EQ(ErrorOf(TitleOf("7")), "tracks[0].clips[0].texts[0]: must be an object, not a number");
    EXPECT_EQ(ErrorOf(ProjectOf(R"({"type": "title", "start": 0, "duration": 1})")),
              "tracks[0].clips[0].texts: is missing");
    EXPECT_EQ(ErrorOf(ProjectOf(R"({"type": "title", "start": 0, "duration": 1, "texts": [], "inPoint": 1})")),
              "tracks[0].clips[0].inPoint: unknown field");
    EXPECT_EQ(TextError(R"("colour": "#000000")"), "colour: unknown field");
    EXPECT_EQ(TextError(R"("opacity": 1.5)"), "opacity: must lie between 0 and 1");
    EXPECT_EQ(TextError(R"("fontSize": -1)"), "fontSize: must lie between 0 and 1000");
    EXPECT_EQ(TextError(R"("fontWeight": 0)"), "fontWeight: must be greater than 0");
    EXPECT_EQ(TextError(R"("fontWeight": 1000)"), "fontWeight: must be a whole number from 0 to 999, not 1000");
    EXPECT_EQ(TextError(R"("italic": 1)"), "italic: must be true or false, not a number");
    EXPECT_EQ(TextError(R"("x": 17)"), "x: must lie between -16 and 16");
    EXPECT_EQ(TextError(R"("speed": -1)"), "speed: must be a whole number from 0 to 1000, not -1");
    for (const char* const pColor : {"", "#", "#12345", "#1234567", "123456", "#12345g", "#-12345", "#12345\\u00e9"})
        EXPECT_EQ(TextError(R"("color": ")" + std::string(pColor) + '"').substr(0, 44),
                  "color: must be a colour like \"#1e90ff\", not ")
            << pColor;
}

TEST(ProjectTexts, EveryFieldOfAKeystrokeIsRead)
{
    const Project project = ProjectReader::Parse(
        ProjectOf(R"({"type": "keystroke", "start": 0, "duration": 1, "inPoint": 2.5, "left": 0.25, "top": 0.5,
                      "width": 0.75, "keystrokes": [{"text": "Ctrl + ←", "startTime": 1.5, "endTime": 2.25,
                      "fontName": "Noto Sans", "fontSize": 9, "textColor": "#010203", "backColor": "#0a0b0c",
                      "textAlpha": 0.5, "backAlpha": 0.25, "hostData1": 18446744073709551615, "hostData2": 2},
                      {"text": "", "startTime": 1.5}]})"),
        "p.json");
    const ProjectClip& clip = project.tracks[0].clips[0];
    EXPECT_EQ(clip.kind, ClipKind::Keystroke);
    EXPECT_EQ(clip.inPoint, 25'000'000U);
    EXPECT_EQ(clip.strip.left, 0.25F);
    EXPECT_EQ(clip.strip.top, 0.5F);
    EXPECT_EQ(clip.strip.width, 0.75F);
    ASSERT_EQ(clip.keystrokes.size(), 2U);
    const tagQMXKeystrokeInfo& key = clip.keystrokes[0];
    EXPECT_EQ(key.text, L"Ctrl + ←");
    EXPECT_EQ(key.startTime, 15'000'000U);
    EXPECT_EQ(key.endTime, 22'500'000U);
    EXPECT_EQ(key.fontName, L"Noto Sans");
    EXPECT_EQ(key.fontSize, 9);
    EXPECT_EQ(key.textColor, 0x010203U);
    EXPECT_EQ(key.backColor, 0x0A0B0CU);
    EXPECT_EQ(key.textAlpha, 0.5F);
    EXPECT_EQ(key.backAlpha, 0.25F);
    EXPECT_EQ(key.hostData1, UINT64_MAX);
    EXPECT_EQ(key.hostData2, 2U);
    EXPECT_EQ(clip.keystrokes[1].endTime, 0U);
    EXPECT_EQ(clip.keystrokes[1].textColor, 0xFFFFFFU);
    EXPECT_EQ(clip.keystrokes[1].backColor, 0U);
    EXPECT_EQ(clip.keystrokes[1].textAlpha, 1);
    EXPECT_EQ(clip.keystrokes[1].backAlpha, 1);
}

TEST(ProjectTexts, TheStripOfKeystrokesIsTheWholeBoxUnlessItIsPlaced)
{
    const Project project = ProjectReader::Parse(KeystrokesOf(""), "p.json");
    EXPECT_EQ(project.tracks[0].clips[0].strip.left, 0);
    EXPECT_EQ(project.tracks[0].clips[0].strip.top, 0);
    EXPECT_EQ(project.tracks[0].clips[0].strip.width, 1);
}

TEST(ProjectTexts, WrongFieldsOfAKeystrokeAreNamed)
{
    EXPECT_EQ(KeystrokeError(R"("text": "a")"), "startTime: is missing");
    EXPECT_EQ(KeystrokeError(R"("startTime": 1)"), "text: is missing");
    EXPECT_EQ(KeystrokeError(R"("text": "a", "startTime": -1)"), "startTime: must not be negative");
    EXPECT_EQ(KeystrokeError(R"("text": "a", "startTime": 2, "endTime": 1)"),
              "endTime: must not be less than startTime");
    EXPECT_EQ(KeystrokeError(R"("text": "a", "startTime": 2, "color": 1)"), "color: unknown field");
    EXPECT_EQ(KeystrokeError(R"("text": "a", "startTime": 2, "backAlpha": 2)"), "backAlpha: must lie between 0 and 1");
    EXPECT_EQ(ErrorOf(KeystrokesOf(R"({"text": "a", "startTime": 2}, {"text": "b", "startTime": 1.9})")),
              "tracks[0].clips[0].keystrokes[1].startTime: must not be less than that of the keystroke before");
}
} // namespace
} // namespace qmx::host
