#include "engine/platform/PixelUtility.h"
#include "tests/companions/pixelutility/TestImage.h"

#include <gtest/gtest.h>

namespace
{
constexpr TestPixel kStale = {1, 2, 3, 4};
constexpr TestPixel kClear = {0, 0, 0, 0};

/// Rotates into a target with a gap behind its rows and compares every pixel with the turned picture.
void ExpectTurned(const TestImage& source, std::uint32_t angle, std::uint32_t gap)
{
    SCOPED_TRACE(testing::Message() << source.Width() << " x " << source.Height() << ", angle " << angle);
    const TestImage expected = Turned(source, angle);
    TestImage actual(expected.Width(), expected.Height(), gap);
    const tagSampleInfo from = source.Info();
    const tagSampleInfo to = actual.Info();
    ASSERT_TRUE(RotateBGRA(&from, &to, angle));
    for (std::uint32_t y = 0; y < expected.Height(); ++y)
        for (std::uint32_t x = 0; x < expected.Width(); ++x)
            ASSERT_EQ(actual.At(x, y), expected.At(x, y)) << "at " << x << ", " << y;
    EXPECT_TRUE(actual.GapsAreUntouched());
}

TEST(RotateBGRA, TurnsClockwise)
{
    // | 1 2 3 |  turned by 90:  | 4 1 |
    // | 4 5 6 |                 | 5 2 |
    //                           | 6 3 |
    TestImage source(3, 2);
    for (std::uint32_t i = 0; i < 6; ++i)
        source.Set(i % 3, i / 3, {static_cast<std::uint8_t>(i + 1), 0, 0, 255});
    TestImage target(2, 3);
    const tagSampleInfo from = source.Info();
    const tagSampleInfo to = target.Info();
    ASSERT_TRUE(RotateBGRA(&from, &to, 90));
    const std::uint8_t expected[] = {4, 1, 5, 2, 6, 3};
    for (std::uint32_t i = 0; i < 6; ++i)
        EXPECT_EQ(target.At(i % 2, i / 2)[0], expected[i]);
}

TEST(RotateBGRA, TurnsEverySizeByEveryAngle)
{
    TestRandom random;
    for (std::uint32_t width = 1; width <= 35; ++width)
    {
        TestImage source(width, random.Between(1, 35), random.Between(0, 7));
        source.FillRandomly(random);
        for (const std::uint32_t angle : {0U, 90U, 180U, 270U})
            ASSERT_NO_FATAL_FAILURE(ExpectTurned(source, angle, random.Between(0, 7)));
    }
}

TEST(RotateBGRA, TurnsPicturesThatSeveralThreadsShare)
{
    TestRandom random;
    TestImage source(701, 523);
    source.FillRandomly(random);
    for (const std::uint32_t angle : {0U, 90U, 180U, 270U})
        ASSERT_NO_FATAL_FAILURE(ExpectTurned(source, angle, 4));
}

TEST(RotateBGRA, ClearsTheTargetForAnyOtherAngle)
{
    TestImage source(4, 3);
    source.Fill({9, 9, 9, 9});
    for (const std::uint32_t angle : {1U, 45U, 89U, 360U, 450U, 0xFFFFFFA6U})
    {
        TestImage target(3, 4, 8);
        target.Fill(kStale);
        const tagSampleInfo from = source.Info();
        const tagSampleInfo to = target.Info();
        EXPECT_FALSE(RotateBGRA(&from, &to, angle));
        for (std::uint32_t i = 0; i < 12; ++i)
            ASSERT_EQ(target.At(i % 3, i / 3), kClear);
        EXPECT_TRUE(target.GapsAreUntouched());
    }
}

TEST(RotateBGRA, ClearsTheTargetWhenItsSizeIsNotTheTurnedOne)
{
    TestImage source(4, 3);
    source.Fill({9, 9, 9, 9});
    for (const std::uint32_t angle : {0U, 90U, 180U, 270U})
    {
        const bool quarter = angle == 90 || angle == 270;
        TestImage target(quarter ? 4 : 3, quarter ? 3 : 4); // the other way round
        target.Fill(kStale);
        const tagSampleInfo from = source.Info();
        const tagSampleInfo to = target.Info();
        EXPECT_FALSE(RotateBGRA(&from, &to, angle));
        for (std::uint32_t i = 0; i < 12; ++i)
            ASSERT_EQ(target.At(i % target.Width(), i / target.Width()), kClear);
    }
}

TEST(RotateBGRA, RefusesDescriptorsThatItCannotUse)
{
    TestImage source(4, 4);
    source.Fill({9, 9, 9, 9});
    TestImage target(4, 4);
    target.Fill(kStale);
    const tagSampleInfo from = source.Info();
    const tagSampleInfo to = target.Info();
    const auto refused = [&](auto change)
    {
        tagSampleInfo badFrom = from;
        change(badFrom);
        tagSampleInfo badTo = to;
        change(badTo);
        return !RotateBGRA(&badFrom, &to, 90) && !RotateBGRA(&from, &badTo, 90);
    };
    EXPECT_FALSE(RotateBGRA(nullptr, &to, 90));
    EXPECT_FALSE(RotateBGRA(&from, nullptr, 90));
    EXPECT_TRUE(refused([](tagSampleInfo& i) { i.pData = nullptr; }));
    EXPECT_TRUE(refused([](tagSampleInfo& i) { i.nWidth = 0; }));
    EXPECT_TRUE(refused([](tagSampleInfo& i) { i.nHeight = 0; }));
    EXPECT_TRUE(refused([](tagSampleInfo& i) { i.nWidth = 32'768; }));
    EXPECT_TRUE(refused([](tagSampleInfo& i) { i.nHeight = 32'768; }));
    EXPECT_TRUE(refused([](tagSampleInfo& i) { i.nStride = 15; }));
    EXPECT_TRUE(refused([](tagSampleInfo& i) { i.nStride = 0xFFFFFFFF; }));
    for (std::uint32_t i = 0; i < 16; ++i)
        ASSERT_EQ(target.At(i % 4, i / 4), kStale);
}
} // namespace
