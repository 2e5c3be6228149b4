// The whole program over pictures and animations that are made here.
#include "tests/support/Picture.h"
#include "tests/decoders/still/TinyGif.h"
#include "tests/host/Program.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/PictureCompare.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>

namespace qmx::host
{
namespace
{
using test_support::Picture;

class Pictures : public testing::Test
{
protected:
    std::string Name(const std::string& file) const { return (m_folder.Path() / file).string(); }
    void Write(const std::string& file, const std::vector<std::uint8_t>& bytes) const
    {
        std::ofstream(Name(file), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    /// A project of 40 x 20 at 10 frames a second with one track.
    void WriteProject(const std::string& clips) const
    {
        std::ofstream(Name("p.json"))
            << R"({"width": 40, "height": 20, "frameRate": 10, "tracks": [{"id": 1, "clips": [)" << clips << "]}]}";
    }
    std::optional<Picture> FrameAt(const std::string& at) const
    {
        const QmxRun run({"frame", Name("p.json"), "--at", at, "-o", Name("f.png")});
        EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
        return test_support::ReadPng(Name("f.png"));
    }
    std::string ErrorOfHash() const
    {
        const QmxRun run({"hash", Name("p.json")});
        EXPECT_NE(run.ExitCode(), 0);
        return run.Errors();
    }

    test_support::TemporaryFolder m_folder;
};

std::uint32_t ColorAt(const Picture& picture, std::uint32_t x, std::uint32_t y)
{
    const std::uint8_t* const p = picture.At(x, y);
    return static_cast<std::uint32_t>(p[2]) << 16 | static_cast<std::uint32_t>(p[1]) << 8 | p[0];
}

/// Left half of one colour, right half of another. Colours are 0xAARRGGBB.
Picture TwoHalves(std::uint32_t width, std::uint32_t height, std::uint32_t left, std::uint32_t right)
{
    Picture picture{width, height, {}};
    for (std::uint32_t i = 0; i < width * height; ++i)
        for (int shift = 0; shift < 32; shift += 8)
            picture.bgra.push_back(static_cast<std::uint8_t>((i % width < width / 2 ? left : right) >> shift));
    return picture;
}

TEST_F(Pictures, StandInTheMiddleAtTheirOwnSizeAndShowWhatLiesBeneath)
{
    ASSERT_TRUE(test_support::WritePng(Name("a.png"), TwoHalves(20, 10, 0xFFFF0000U, 0x800000FFU)));
    WriteProject(R"({"type": "image", "path": "a.png", "start": 0, "duration": 1})");
    const std::optional<Picture> frame = FrameAt("0.5");
    ASSERT_TRUE(frame);
    EXPECT_EQ(ColorAt(*frame, 10, 5), 0xFF0000U);
    EXPECT_EQ(ColorAt(*frame, 29, 14), 0x000080U); // half of it over black
    EXPECT_EQ(ColorAt(*frame, 9, 10), 0U);
    EXPECT_EQ(ColorAt(*frame, 30, 10), 0U);
    EXPECT_EQ(ColorAt(*frame, 20, 4), 0U);
}

TEST_F(Pictures, LargeOnesAreFittedAndTurned)
{
    ASSERT_TRUE(test_support::WritePng(Name("a.png"), TwoHalves(400, 200, 0xFFFF0000U, 0xFF00FF00U)));
    WriteProject(R"({"type": "image", "path": "a.png", "start": 0, "duration": 1},
        {"type": "image", "path": "a.png", "start": 1, "duration": 1, "rotation": 90})");
    const std::optional<Picture> lying = FrameAt("0");
    ASSERT_TRUE(lying);
    EXPECT_EQ(ColorAt(*lying, 0, 0), 0xFF0000U);
    EXPECT_EQ(ColorAt(*lying, 39, 19), 0x00FF00U);
    const std::optional<Picture> turned = FrameAt("1"); // 10 x 20 in the middle, its left half on top
    ASSERT_TRUE(turned);
    EXPECT_EQ(ColorAt(*turned, 15, 0), 0xFF0000U);
    EXPECT_EQ(ColorAt(*turned, 24, 19), 0x00FF00U);
    EXPECT_EQ(ColorAt(*turned, 14, 10), 0U);
    EXPECT_EQ(ColorAt(*turned, 25, 10), 0U);
}

TEST_F(Pictures, AnimationsPlayFromTheirInPointAndRepeat)
{
    TinyGif gif(10, 10);
    for (std::uint8_t color = 0; color < 3; ++color)
        gif.Control(10, 1).Solid(0, 0, 10, 10, color);
    Write("a.gif", gif.End().bytes);
    WriteProject(R"({"type": "image", "path": "a.gif", "start": 0, "duration": 2, "inPoint": 0.1})");
    constexpr std::uint32_t kColors[] = {0xFF0000U, 0x00FF00U, 0x0000FFU};
    for (int i = 0; i < 6; ++i)
    {
        // Played from the start each time, the steps back of a round show what the decoder's rule says.
        const std::optional<Picture> frame = FrameAt("0." + std::to_string(i));
        ASSERT_TRUE(frame);
        EXPECT_EQ(ColorAt(*frame, 20, 10), kColors[(i + 1) % 3]) << i;
        EXPECT_EQ(ColorAt(*frame, 14, 10), 0U) << i; // ten pixels wide, whether composed now or shown again
        EXPECT_EQ(ColorAt(*frame, 15, 10), kColors[(i + 1) % 3]) << i;
    }
}

TEST_F(Pictures, InfoTellsTheirFacts)
{
    TinyGif gif(12, 7);
    gif.Control(5, 1).Solid(0, 0, 12, 7, 0).Control(20, 1).Solid(0, 0, 12, 7, 1);
    Write("a.gif", gif.End().bytes);
    ASSERT_TRUE(test_support::WritePng(Name("b.png"), TwoHalves(31, 9, 0xFFFF0000U, 0xFF00FF00U)));
    const QmxRun text({"info", Name("b.png")});
    EXPECT_EQ(text.ExitCode(), 0) << text.Errors();
    EXPECT_EQ(text.Output().rfind(Name("b.png") + "\n  kind          picture, PNG\n", 0), 0U) << text.Output();
    EXPECT_NE(text.Output().find("  size          31 x 9\n  frames        1\n  orientation   1\n"), std::string::npos);
    const QmxRun run({"info", "--json", Name("a.gif")});
    const nlohmann::json list = nlohmann::json::parse(run.Output(), nullptr, false);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]["format"], "GIF");
    EXPECT_EQ(list[0]["width"], 12);
    EXPECT_EQ(list[0]["height"], 7);
    EXPECT_EQ(list[0]["frames"], 2);
    EXPECT_NEAR(list[0]["duration"].get<double>(), 0.29, 1e-9);
}

TEST_F(Pictures, InfoTellsTheUprightSizeOfTurnedPhotographs)
{
    QMX_REQUIRE_CORPUS(photo, "images/exif/Landscape_6.jpg");
    const QmxRun run({"info", photo.string()});
    EXPECT_NE(run.Output().find("  size          1800 x 1200\n  frames        1\n  orientation   6\n"),
              std::string::npos)
        << run.Output();
}

TEST_F(Pictures, FilesThatAreNoneOrMisnamedAreErrorsOfTheMedia)
{
    Write("a.png", {'t', 'e', 'x', 't'});
    WriteProject(R"({"type": "image", "path": "a.png", "start": 0, "duration": 1})");
    EXPECT_EQ(ErrorOfHash(), "qmx: " + Name("p.json") + ": tracks[0].clips[0].path: " + Name("a.png") +
                                 ": holds no picture that can be read\n");
    ASSERT_TRUE(test_support::WritePng(Name("b.gif"), TwoHalves(4, 4, 0, 0)));
    WriteProject(R"({"type": "image", "path": "b.gif", "start": 0, "duration": 1})");
    EXPECT_EQ(ErrorOfHash(), "qmx: " + Name("p.json") + ": tracks[0].clips[0].path: " + Name("b.gif") +
                                 ": is named as a GIF, but is PNG\n");
    ASSERT_TRUE(test_support::WritePng(Name("c.png"), TwoHalves(1, 1, 0, 0)));
    WriteProject(R"({"type": "image", "path": "c.png", "start": 0, "duration": 1})");
    EXPECT_EQ(ErrorOfHash(), "qmx: " + Name("p.json") +
                                 ": tracks[0].clips[0]: a picture of 1 x 1 cannot be fitted "
                                 "into the track's position\n");
}
} // namespace
} // namespace qmx::host
