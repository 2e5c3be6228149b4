#include "engine/platform/PixelUtility.h"
#include "tests/companions/pixelutility/TestImage.h"

#include <gtest/gtest.h>

namespace
{
constexpr TestPixel kRed{0, 0, 255, 255};
constexpr TestPixel kBlue{255, 0, 0, 255};

/// What the rule says where the source is opaque.
void ExpectMerged(const TestImage& target, std::uint32_t width, std::uint32_t height, std::int64_t x, std::int64_t y)
{
    for (std::uint32_t v = 0; v < target.Height(); ++v)
    {
        for (std::uint32_t u = 0; u < target.Width(); ++u)
        {
            const bool inside = u >= x && u < x + width && v >= y && v < y + height;
            ASSERT_EQ(target.At(u, v), inside ? kRed : kBlue) << u << ", " << v;
        }
    }
}

TEST(MergeBGRA, CutsThePictureAtEveryEdge)
{
    TestImage source(5, 4, 8);
    source.Fill(kRed);
    for (std::int32_t y = -5; y <= 8; ++y)
    {
        for (std::int32_t x = -6; x <= 9; ++x)
        {
            TestImage target(8, 7, 12);
            target.Fill(kBlue);
            const tagSampleInfo from = source.Info();
            const tagSampleInfo to = target.Info();
            ASSERT_TRUE(MergeBGRA(&from, &to, x, y, 0));
            ASSERT_NO_FATAL_FAILURE(ExpectMerged(target, 5, 4, x, y)) << "at " << x << ", " << y;
            ASSERT_TRUE(target.GapsAreUntouched());
        }
    }
}

TEST(MergeBGRA, PlacesFarOutsideChangeNothing)
{
    TestImage source(5, 4);
    source.Fill(kRed);
    TestImage target(8, 7);
    target.Fill(kBlue);
    const tagSampleInfo from = source.Info();
    const tagSampleInfo to = target.Info();
    for (const std::int32_t place : {INT32_MIN, -1000, 1000, INT32_MAX})
    {
        EXPECT_TRUE(MergeBGRA(&from, &to, place, 0, 0));
        EXPECT_TRUE(MergeBGRA(&from, &to, 0, place, 0));
    }
    ExpectMerged(target, 0, 0, 0, 0);
}

TEST(MergeBGRA, TakesEveryPixelFromItsPlace)
{
    TestRandom random;
    TestImage source(300, 200);
    source.FillRandomly(random);
    TestImage target(400, 300);
    target.FillRandomly(random);
    const TestImage before = target;
    const tagSampleInfo from = source.Info();
    const tagSampleInfo to = target.Info();
    ASSERT_TRUE(MergeBGRA(&from, &to, 150, -20, 0));
    for (std::uint32_t y = 0; y < 300; ++y)
    {
        for (std::uint32_t x = 0; x < 400; ++x)
        {
            const bool covered = x >= 150 && y < 180;
            const TestPixel pixel = covered ? source.At(x - 150, y + 20) : TestPixel{0, 0, 0, 0};
            if (pixel[3] == 255)
                ASSERT_EQ(target.At(x, y), pixel) << x << ", " << y;
            else if (pixel[3] == 0)
                ASSERT_EQ(target.At(x, y), before.At(x, y)) << x << ", " << y;
            else
                ASSERT_GE(target.At(x, y)[3], pixel[3]) << x << ", " << y;
        }
    }
}

TEST(MergeBGRA, RefusesDescriptorsThatCannotBeUsed)
{
    TestImage picture(4, 4);
    picture.Fill(kBlue);
    const tagSampleInfo good = picture.Info();
    tagSampleInfo bad = good;
    EXPECT_FALSE(MergeBGRA(nullptr, &good, 0, 0, 0));
    EXPECT_FALSE(MergeBGRA(&good, nullptr, 0, 0, 0));
    bad.nStride = 15;
    EXPECT_FALSE(MergeBGRA(&bad, &good, 0, 0, 0));
    EXPECT_FALSE(MergeBGRA(&good, &bad, 0, 0, 0));
    bad = good;
    bad.pData = nullptr;
    EXPECT_FALSE(MergeBGRA(&bad, &good, 0, 0, 0));
}
} // namespace
