#include "host/compose/Layout.h"

#include <gtest/gtest.h>

namespace qmx::host
{
namespace
{
TEST(BoxOnCanvas, TheWholeCanvasIsTheDefault)
{
    EXPECT_EQ(BoxOnCanvas({}, 1280, 720), (PixelBox{0, 0, 1280, 720}));
}

TEST(BoxOnCanvas, BoxesThatShareAnEdgeLeaveNoSeam)
{
    const PixelBox first = BoxOnCanvas({0, 0, 1.0 / 3, 1}, 100, 10);
    const PixelBox second = BoxOnCanvas({1.0 / 3, 0, 1.0 / 3, 1}, 100, 10);
    const PixelBox third = BoxOnCanvas({2.0 / 3, 0, 1.0 / 3, 1}, 100, 10);
    EXPECT_EQ(first.right, 33);
    EXPECT_EQ(second.left, 33);
    EXPECT_EQ(second.right, 67);
    EXPECT_EQ(third.left, 67);
    EXPECT_EQ(third.right, 100);
}

TEST(BoxOnCanvas, MayReachOutsideAndMayBeEmpty)
{
    EXPECT_EQ(BoxOnCanvas({-0.5, 0.75, 1, 0.5}, 200, 100), (PixelBox{-100, 75, 100, 125}));
    EXPECT_TRUE(BoxOnCanvas({0, 0, 0.001, 1}, 100, 100).IsEmpty());
}

TEST(Centred, PutsTheOddPixelToTheRightAndBelow)
{
    EXPECT_EQ(Centred({10, 20, 110, 120}, 50, 60), (PixelBox{35, 40, 85, 100}));
    EXPECT_EQ(Centred({0, 0, 10, 10}, 5, 7), (PixelBox{2, 1, 7, 8}));
    EXPECT_EQ(Centred({0, 0, 10, 10}, 13, 10), (PixelBox{-2, 0, 11, 10}));
}

TEST(VideoHeightForWidth, KeepsOddRowsOfCameraRecordings)
{
    EXPECT_EQ(VideoHeightForWidth({193, 109, 1, 1, false}, 193), 109U);
    EXPECT_EQ(VideoHeightForWidth({193, 109, 1, 1, true}, 193), 108U);
}

TEST(VideoHeightForWidth, FollowsTheDisplayAspectAndIsEven)
{
    EXPECT_EQ(VideoHeightForWidth({1920, 1080, 1, 1}, 1280), 720U);
    EXPECT_EQ(VideoHeightForWidth({1920, 1080, 1, 1}, 1000), 562U); // 562.5
    EXPECT_EQ(VideoHeightForWidth({1920, 1080, 1, 1}, 100), 56U);   // 56.25
    EXPECT_EQ(VideoHeightForWidth({1440, 1080, 4, 3}, 1280), 720U); // anamorphic
    EXPECT_EQ(VideoHeightForWidth({720, 576, 16, 15}, 768), 576U);
    EXPECT_EQ(VideoHeightForWidth({16384, 16, 1, 1}, 100), 0U);
}

TEST(FitVideo, FillsABoxOfTheSameShape)
{
    EXPECT_EQ(FitVideo({1920, 1080, 1, 1}, 0, 1280, 720), (PictureSize{1280, 720}));
    EXPECT_EQ(FitVideo({1920, 1080, 1, 1}, 180, 640, 360), (PictureSize{640, 360}));
}

TEST(FitVideo, TouchesTheSidesOfATallBoxAndTheTopOfAWideOne)
{
    EXPECT_EQ(FitVideo({1920, 1080, 1, 1}, 0, 640, 720), (PictureSize{640, 360}));
    EXPECT_EQ(FitVideo({1080, 1920, 1, 1}, 0, 1280, 720), (PictureSize{405, 720}));
    EXPECT_EQ(FitVideo({1440, 1080, 4, 3}, 0, 1280, 1000), (PictureSize{1280, 720}));
}

TEST(FitVideo, AQuarterTurnExchangesTheBox)
{
    // Turned, the picture is 720 high and 405 wide: it fits the box that the upright phone video fits.
    EXPECT_EQ(FitVideo({1920, 1080, 1, 1}, 90, 1280, 720), (PictureSize{720, 404}));
    EXPECT_EQ(FitVideo({1920, 1080, 1, 1}, 270, 405, 720), (PictureSize{720, 404}));
    EXPECT_EQ(FitVideo({1080, 1920, 1, 1}, 90, 1280, 720), (PictureSize{720, 1280}));
}

TEST(FitVideo, StaysInsideEveryBoxAndKeepsTheShape)
{
    for (const VideoShape& shape : {VideoShape{1920, 1080, 1, 1}, VideoShape{1080, 1920, 1, 1},
                                    VideoShape{720, 576, 16, 11}, VideoShape{333, 777, 3, 2}})
    {
        for (std::uint32_t width = 4; width < 200; width += 7)
        {
            for (std::uint32_t height = 4; height < 200; height += 5)
            {
                const std::optional<PictureSize> size = FitVideo(shape, 0, width, height);
                if (!size)
                    continue;
                ASSERT_LE(size->width, width);
                ASSERT_LE(size->height, height);
                ASSERT_EQ(size->height, VideoHeightForWidth(shape, size->width));
                // No larger picture fits: one side touches the box, up to what rounding to even rows takes.
                const double aspect =
                    1.0 * shape.pixelAspectX * shape.width / (1.0 * shape.pixelAspectY * shape.height);
                ASSERT_TRUE(size->width == width || size->height + 2 > height || size->width + 1 > height * aspect)
                    << width << " x " << height;
            }
        }
    }
}

TEST(FitVideo, GivesNothingWhereNoTwoRowsFit)
{
    EXPECT_EQ(FitVideo({1920, 1080, 1, 1}, 0, 2, 2), std::nullopt);
    EXPECT_EQ(FitVideo({1920, 1080, 1, 1}, 0, 1280, 1), std::nullopt);
    EXPECT_EQ(FitVideo({16384, 16, 1, 1}, 0, 100, 100), std::nullopt);
    EXPECT_EQ(FitVideo({0, 1080, 1, 1}, 0, 100, 100), std::nullopt);
    EXPECT_EQ(FitVideo({1920, 1080, 1, 0}, 0, 100, 100), std::nullopt);
    EXPECT_NE(FitVideo({16, 16384, 1, 1}, 0, 100, 2048), std::nullopt);
}

TEST(FitImage, FitsTheLongerSideAndNeverEnlarges)
{
    EXPECT_EQ(FitImage(4000, 3000, 0, 1920, 1080), 1440U); // 1440 x 1080
    EXPECT_EQ(FitImage(3000, 4000, 0, 1920, 1080), 1080U);
    EXPECT_EQ(FitImage(4000, 1000, 0, 1920, 1080), 1920U);
    EXPECT_EQ(FitImage(4000, 3000, 90, 1920, 1080), 1080U); // lies on its side: 810 x 1080
    EXPECT_EQ(FitImage(3000, 4000, 270, 1920, 1080), 1440U);
    EXPECT_EQ(FitImage(640, 480, 180, 1920, 1080), 640U);
    EXPECT_EQ(FitImage(100, 100, 0, 100, 100), 100U);
}

TEST(FitImage, GivesNothingWhereNoTwoPixelsAreLeft)
{
    EXPECT_EQ(FitImage(1, 100, 0, 1920, 1080), std::nullopt);
    EXPECT_EQ(FitImage(0, 0, 0, 1920, 1080), std::nullopt);
    EXPECT_EQ(FitImage(4000, 2, 0, 1920, 1080), std::nullopt);
    EXPECT_EQ(FitImage(100, 100, 0, 1, 100), std::nullopt);
}

} // namespace
} // namespace qmx::host
