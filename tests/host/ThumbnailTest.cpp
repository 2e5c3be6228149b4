// Thumbnails of media files of every kind.
#include "tests/decoders/still/TinyGif.h"
#include "tests/host/Program.h"
#include "tests/support/FrameStripReader.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/Picture.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace qmx::host
{
namespace
{
namespace fs = std::filesystem;
using test_support::Picture;
using test_support::ReadFrameStrip;

class Thumbnails : public testing::Test
{
protected:
    std::string Name(const std::string& file) const { return (m_folder.Path() / file).string(); }
    Picture Thumbnail(const std::string& file, const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> arguments{"thumbnail", file, "-o", Name("t.png")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const QmxRun run(arguments);
        EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
        EXPECT_EQ(run.Output() + run.Errors(), "");
        return test_support::ReadPng(Name("t.png")).value_or(Picture{});
    }
    void ExpectFailure(const std::vector<std::string>& arguments, int code, const std::string& reason) const
    {
        const QmxRun run(arguments);
        EXPECT_EQ(run.ExitCode(), code);
        EXPECT_EQ(run.Errors(), "qmx: " + reason + '\n');
        EXPECT_FALSE(fs::exists(Name("t.png")));
    }
    /// Rows of one colour each (B, G, R, A).
    Picture Striped(std::uint32_t width, std::uint32_t height) const
    {
        Picture picture{width, height, {}};
        for (std::uint32_t i = 0; i < width * height; ++i)
            picture.bgra.insert(picture.bgra.end(), {static_cast<std::uint8_t>(i / width), 0, 200, 255});
        return picture;
    }

    test_support::TemporaryFolder m_folder;
};

TEST_F(Thumbnails, AVideoIs640PixelsWideAndShowsTheFrameAtATime)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    const Picture first = Thumbnail(film.string());
    EXPECT_EQ(first.width, 640U);
    EXPECT_EQ(first.height, 360U);
    EXPECT_EQ(ReadFrameStrip(first), 0U);
    EXPECT_EQ(ReadFrameStrip(Thumbnail(film.string(), {"--at", "2.5"})), 75U);
    EXPECT_EQ(ReadFrameStrip(Thumbnail(film.string(), {"--at", "9.99"})), 299U);
}

TEST_F(Thumbnails, AVideoIsUprightAndInItsDisplayShape)
{
    QMX_REQUIRE_MEDIA(turned, "rotated-90-30.mp4"); // 128 x 208 when it is upright
    const Picture picture = Thumbnail(turned.string());
    EXPECT_EQ(picture.width, 640U);
    EXPECT_EQ(picture.height, 1040U);
    EXPECT_EQ(ReadFrameStrip(picture), 0U);
}

TEST_F(Thumbnails, ARecordingIsShownByItsName)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    for (const std::string name : {"m.mjpg", "h.h264"})
    {
        const QmxRun pack({"pack-camera", film.string(), Name(name)});
        ASSERT_EQ(pack.ExitCode(), 0) << pack.Errors();
        EXPECT_EQ(ReadFrameStrip(Thumbnail(Name(name))), 0U);
        const Picture later = Thumbnail(Name(name), {"--at", "3"});
        EXPECT_EQ(later.width, 640U);
        EXPECT_EQ(ReadFrameStrip(later), 90U);
    }
    fs::remove(Name("t.png"));
    ExpectFailure({"thumbnail", Name("m.mjpg"), "-o", Name("sub/t.png")}, 5,
                  Name("sub/t.png") + ": cannot be written: No such file or directory");
}

TEST_F(Thumbnails, APictureIsMadeSmallerAndNeverLarger)
{
    ASSERT_TRUE(test_support::WritePng(Name("large.png"), Striped(1280, 200)));
    const Picture large = Thumbnail(Name("large.png"));
    EXPECT_EQ(large.width, 640U);
    EXPECT_EQ(large.height, 100U);
    EXPECT_NEAR(*large.At(320, 50), 100, 1);
    ASSERT_TRUE(test_support::WritePng(Name("tall.png"), Striped(100, 1280)));
    EXPECT_EQ(Thumbnail(Name("tall.png")).height, 640U);
    ASSERT_TRUE(test_support::WritePng(Name("small.png"), Striped(20, 10)));
    const Picture small = Thumbnail(Name("small.png"));
    EXPECT_EQ(small.width, 20U);
    EXPECT_EQ(small.bgra, Striped(20, 10).bgra);
}

TEST_F(Thumbnails, AnAnimationShowsTheFrameAtATime)
{
    TinyGif gif(16, 12);
    for (std::uint8_t color = 0; color < 3; ++color)
        gif.Control(100, 1).Solid(0, 0, 16, 12, color);
    const std::vector<std::uint8_t> bytes = gif.End().bytes;
    std::ofstream(Name("a.gif"), std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    const Picture first = Thumbnail(Name("a.gif"));
    EXPECT_EQ(first.width, 16U);
    EXPECT_EQ(first.At(8, 6)[2], 255); // red, green, blue
    EXPECT_EQ(Thumbnail(Name("a.gif"), {"--at", "1.5"}).At(8, 6)[1], 255);
    EXPECT_EQ(Thumbnail(Name("a.gif"), {"--at", "2.5"}).At(8, 6)[0], 255);
}

TEST_F(Thumbnails, AFlashMovieIsDrawn)
{
    // Version 5, 640 x 320 pixels, 10 frames a second, one frame, background #2040c0.
    std::vector<std::uint8_t> file{'F',  'W',  'S',  5,    32,   0,    0,    0, // signature, version, length
                                   0x78, 0x00, 0x06, 0x40, 0x00, 0x00, 0x0C, 0x80,
                                   0x00,                         // 15 bits a side: 0, 12,800, 0, 6,400 twips
                                   0x00, 0x0A, 0x01, 0x00,       // rate 10.0, one frame
                                   0x43, 0x02, 0x20, 0x40, 0xC0, // background
                                   0x40, 0x00,                   // show frame
                                   0x00, 0x00};                  // end
    file[4] = static_cast<std::uint8_t>(file.size());
    std::ofstream(Name("a.swf"), std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    const Picture picture = Thumbnail(Name("a.swf"));
    EXPECT_EQ(picture.width, 640U);
    EXPECT_EQ(picture.height, 320U);
    ASSERT_FALSE(picture.IsEmpty());
    EXPECT_EQ(std::vector<int>(picture.At(9, 9), picture.At(9, 9) + 3), (std::vector<int>{0xC0, 0x40, 0x20}));
}

TEST_F(Thumbnails, FailuresSayWhyAndLeaveNothingBehind)
{
    const std::string out = Name("t.png");
    ExpectFailure({"thumbnail", Name("none.mp4"), "-o", out}, 4,
                  Name("none.mp4") + ": cannot be opened: No such file or directory");
    ExpectFailure({"thumbnail", Name("none.mjpg"), "-o", out}, 4,
                  Name("none.mjpg") + ": its index none.meta cannot be opened: No such file or directory");
    ExpectFailure({"thumbnail", m_folder.Path().string(), "-o", out}, 4, m_folder.Path().string() + ": is a folder");
    std::ofstream(Name("text.mp4")) << "no film\n";
    ExpectFailure({"thumbnail", Name("text.mp4"), "-o", out}, 4,
                  Name("text.mp4") + ": holds no video that can be read");
    ExpectFailure({"thumbnail", Name("text.mp4"), "-o", Name("t.jpg")}, 2,
                  Name("t.jpg") + ": the name must end in .png");
    ExpectFailure({"thumbnail", Name("text.mp4"), "-o", out, "--at", "x"}, 2, "--at: \"x\" is no number of seconds");
    ExpectFailure({"thumbnail", Name("text.mp4"), "-o", out, "--at", "-1"}, 2,
                  "--at: -1 lies outside 0 to 1000000 seconds");
    EXPECT_EQ(QmxRun({"thumbnail", Name("text.mp4")}).ExitCode(), 2);
    ASSERT_TRUE(test_support::WritePng(Name("own.png"), Striped(1, 1)));
    ExpectFailure({"thumbnail", Name("own.png"), "-o", out}, 4, Name("own.png") + ": is too small to be shown");
    ASSERT_TRUE(test_support::WritePng(Name("own.png"), Striped(20, 10)));
    ExpectFailure({"thumbnail", Name("own.png"), "-o", Name("own.png")}, 5,
                  Name("own.png") + ": is the file that is to be shown");
    EXPECT_EQ(m_folder.FileCount(), 2U);
}

TEST_F(Thumbnails, ATimeBehindTheEndIsFour)
{
    QMX_REQUIRE_MEDIA(film, "h264-no-b-30.mp4"); // 2 s
    ExpectFailure({"thumbnail", film.string(), "-o", Name("t.png"), "--at", "5"}, 4,
                  film.string() + ": has no picture at 5 seconds");
}
} // namespace
} // namespace qmx::host
