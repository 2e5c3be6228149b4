#include "host/compose/ProjectPlayer.h"

#include "host/project/ProjectReader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace qmx::host
{
namespace
{
/// A label without text is a box: at 288 rows 20 pixels wide, and a line and 10 pixels high.
std::string BoxAt(double left, const std::string& color, double alpha)
{
    return R"({"type": "keystroke", "start": 0, "duration": 2, "left": )" + std::to_string(left) +
           R"(, "keystrokes": [{"text": "", "fontName": "DejaVu Sans", "startTime": 0, "backColor": ")" + color +
           R"(", "backAlpha": )" + std::to_string(alpha) + "}]}";
}

class ProjectPlayerTexts : public testing::Test
{
protected:
    static Project ProjectOf(const std::string& tracks)
    {
        return ProjectReader::Parse(R"({"width": 320, "height": 288, "frameRate": 10, "tracks": [)" + tracks + "]}",
                                    "p.json");
    }
    static std::vector<std::uint8_t> Compose(const std::string& tracks, std::uint64_t time = 0)
    {
        const Project project = ProjectOf(tracks);
        ProjectPlayer player(project);
        Canvas canvas(320, 288);
        player.Compose(time, canvas);
        return {canvas.Row(0), canvas.Row(0) + canvas.ByteCount()};
    }
    static std::vector<int> At(const std::vector<std::uint8_t>& pixels, std::size_t x, std::size_t y)
    {
        const std::uint8_t* const p = pixels.data() + (y * 320 + x) * 4;
        return {p[0], p[1], p[2], p[3]};
    }
    static bool AnyLight(const std::vector<std::uint8_t>& pixels)
    {
        for (std::size_t i = 0; i < pixels.size(); i += 4)
        {
            if (pixels[i] > 128)
                return true;
        }
        return false;
    }
};

TEST_F(ProjectPlayerTexts, OverlaysAreComposedAsPremultipliedPictures)
{
    const std::string below = R"({"id": 1, "clips": [)" + BoxAt(0, "#ff0000", 1) + "]}";
    const std::string above = R"(, {"id": 2, "clips": [)" + BoxAt(0, "#0080ff", 0.5) + "]}";
    const std::vector<std::uint8_t> alone = Compose(below);
    EXPECT_EQ(At(alone, 5, 5), (std::vector<int>{0, 0, 255, 255}));
    EXPECT_EQ(At(alone, 100, 5), (std::vector<int>{0, 0, 0, 255}));
    const std::vector<int> both = At(Compose(below + above), 5, 5);
    EXPECT_NEAR(both[0], 128, 1);
    EXPECT_NEAR(both[1], 64, 1);
    EXPECT_NEAR(both[2], 127, 1);
    EXPECT_EQ(both[3], 255);
}

TEST_F(ProjectPlayerTexts, TheStripsPlaceCountsInTheTracksBox)
{
    const std::vector<std::uint8_t> pixels =
        Compose(R"({"id": 1, "position": {"left": 0.5, "top": 0, "width": 0.5, "height": 1}, "clips": [)" +
                BoxAt(0.5, "#ffffff", 1) + "]}");
    EXPECT_EQ(At(pixels, 235, 5)[0], 0);
    EXPECT_EQ(At(pixels, 245, 5)[0], 255);
    EXPECT_EQ(At(pixels, 255, 5)[0], 255);
    EXPECT_EQ(At(pixels, 265, 5)[0], 0);
}

TEST_F(ProjectPlayerTexts, TitlesAndKeystrokesFollowEachOtherOnOneTrack)
{
    const std::string track = R"({"id": 1, "clips": [
        {"type": "title", "start": 0, "duration": 1, "texts": [{"text": "A", "fontName": "DejaVu Sans", "fontSize": 100}]},
        {"type": "keystroke", "start": 1, "duration": 1, "keystrokes": [{"text": "", "fontName": "DejaVu Sans", "startTime": 0,
            "backColor": "#ffffff"}]},
        {"type": "color", "start": 2, "duration": 1},
        {"type": "title", "start": 3, "duration": 1, "texts": []},
        {"type": "title", "start": 4, "duration": 1, "texts": [{"text": "B", "fontName": "DejaVu Sans", "fontSize": 100}]}]})";
    const std::vector<std::uint8_t> first = Compose(track, 5'000'000);
    const std::vector<std::uint8_t> last = Compose(track, 45'000'000);
    EXPECT_TRUE(AnyLight(first));
    EXPECT_TRUE(AnyLight(last));
    EXPECT_NE(first, last);
    EXPECT_EQ(At(Compose(track, 15'000'000), 5, 5)[0], 255);
    EXPECT_FALSE(AnyLight(Compose(track, 25'000'000)));
    EXPECT_FALSE(AnyLight(Compose(track, 35'000'000)));

    // One player forward and back shows the same as a fresh one for each.
    const Project project = ProjectOf(track);
    ProjectPlayer player(project);
    Canvas canvas(320, 288);
    for (const std::uint64_t time : {5'000'000U, 15'000'000U, 25'000'000U, 35'000'000U, 45'000'000U, 5'000'000U})
    {
        player.Compose(time, canvas);
        const std::vector<std::uint8_t> pixels(canvas.Row(0), canvas.Row(0) + canvas.ByteCount());
        EXPECT_EQ(pixels, Compose(track, time)) << time;
    }
}

TEST_F(ProjectPlayerTexts, KeystrokesRunInTheRecordingsTime)
{
    const std::string track = R"({"id": 1, "clips": [{"type": "keystroke", "start": 1, "duration": 2, "inPoint": 5,
        "keystrokes": [{"text": "", "fontName": "DejaVu Sans", "startTime": 6, "backColor": "#ffffff"}]}]})";
    EXPECT_EQ(At(Compose(track, 19'000'000), 5, 5)[0], 0);
    EXPECT_EQ(At(Compose(track, 20'000'000), 5, 5)[0], 255);
}
} // namespace
} // namespace qmx::host
