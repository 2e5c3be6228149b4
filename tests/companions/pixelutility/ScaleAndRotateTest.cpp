#include "engine/platform/PixelUtility.h"
#include "tests/companions/SystemMemory.h"
#include "tests/companions/pixelutility/TestImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace
{
constexpr TestPixel kStale = {1, 2, 3, 4};
constexpr TestPixel kClear = {0, 0, 0, 0};

bool Scale(const TestImage& source, const TestImage& target, std::uint32_t mode)
{
    const tagSampleInfo from = source.Info();
    const tagSampleInfo to = target.Info();
    return ScaleAndRotateBGRA(&from, &to, 0, mode);
}

TestImage RandomImage(std::uint32_t width, std::uint32_t height, std::uint32_t gap, TestRandom& random)
{
    TestImage image(width, height, gap);
    image.FillRandomly(random);
    return image;
}

struct Sizes
{
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t targetWidth;
    std::uint32_t targetHeight;
};

const std::vector<Sizes> kSizes = {
    {192, 108, 128, 72},                                         // two thirds
    {192, 108, 96, 54},  {192, 108, 64, 36}, {192, 108, 48, 27}, // whole factors
    {100, 100, 77, 61},  {101, 67, 100, 66}, {97, 89, 13, 7},    // others
    {64, 36, 128, 72},   {64, 36, 65, 37},   {50, 40, 171, 123}, // larger
    {120, 40, 60, 80},   {40, 120, 80, 60},  {33, 50, 33, 25},   // one axis smaller, one larger or the same
    {1, 1, 9, 9},        {2, 2, 9, 9},       {9, 9, 1, 1},       {3, 1, 1, 5}, // next to nothing
    {1'200, 3, 7, 3},                                                          // many taps
};

TEST(ScaleAndRotateBGRA, IsBilinearBetweenPixelCentresInModeOne)
{
    TestRandom random;
    for (const Sizes& s : kSizes)
    {
        const TestImage source = RandomImage(s.width, s.height, 4, random);
        const TestImage target(s.targetWidth, s.targetHeight, 8);
        ASSERT_TRUE(Scale(source, target, kScaleBilinear));
        EXPECT_LE(WorstScalingError(source, target, false), 0.6)
            << s.width << " x " << s.height << " to " << s.targetWidth << " x " << s.targetHeight;
        EXPECT_TRUE(target.GapsAreUntouched());
    }
}

TEST(ScaleAndRotateBGRA, AveragesTheCoveredAreaInModeTwo)
{
    TestRandom random;
    for (const Sizes& s : kSizes)
    {
        const TestImage source = RandomImage(s.width, s.height, 4, random);
        const TestImage target(s.targetWidth, s.targetHeight, 8);
        ASSERT_TRUE(Scale(source, target, kScaleArea));
        EXPECT_LE(WorstScalingError(source, target, true), 1.0)
            << s.width << " x " << s.height << " to " << s.targetWidth << " x " << s.targetHeight;
        EXPECT_TRUE(target.GapsAreUntouched());
    }
}

TEST(ScaleAndRotateBGRA, MeansOfFourPixelsAreExact)
{
    TestImage source(4, 2);
    source.Set(0, 0, {0, 10, 255, 0});
    source.Set(1, 0, {4, 20, 255, 0});
    source.Set(0, 1, {8, 30, 255, 0});
    source.Set(1, 1, {12, 40, 255, 0});
    for (std::uint32_t y = 0; y < 2; ++y)
        for (std::uint32_t x = 2; x < 4; ++x)
            source.Set(x, y, {100, 100, 100, static_cast<std::uint8_t>(y * 200)});
    const TestImage target(2, 1);
    ASSERT_TRUE(Scale(source, target, kScaleArea));
    EXPECT_EQ(target.At(0, 0), (TestPixel{6, 25, 255, 0}));
    EXPECT_EQ(target.At(1, 0), (TestPixel{100, 100, 100, 100}));
}

TEST(ScaleAndRotateBGRA, KeepsAFlatColourExactly)
{
    for (const std::uint32_t mode : {kScaleBilinear, kScaleArea})
    {
        for (const Sizes& s : kSizes)
        {
            TestImage source(s.width, s.height);
            const TestPixel colour = {255, 254, 37, 1};
            source.Fill(colour);
            const TestImage target(s.targetWidth, s.targetHeight);
            ASSERT_TRUE(Scale(source, target, mode));
            for (std::uint32_t y = 0; y < target.Height(); ++y)
                for (std::uint32_t x = 0; x < target.Width(); ++x)
                    ASSERT_EQ(target.At(x, y), colour);
        }
    }
}

TEST(ScaleAndRotateBGRA, TurnsTheScaledPicture)
{
    // The turn moves pixels and changes none: scaled and turned in one call equals turned afterwards.
    TestRandom random;
    for (const Sizes& s : kSizes)
    {
        for (const std::uint32_t mode : {kScaleBilinear, kScaleArea})
        {
            const TestImage source = RandomImage(s.width, s.height, 4, random);
            const TestImage scaled(s.targetWidth, s.targetHeight);
            ASSERT_TRUE(Scale(source, scaled, mode));
            for (const std::uint32_t angle : {90U, 180U, 270U})
            {
                const TestImage expected = Turned(scaled, angle);
                const TestImage actual(expected.Width(), expected.Height());
                const tagSampleInfo from = source.Info();
                tagSampleInfo to = scaled.Info(); // the size before the turn
                to.pData = actual.Info().pData;
                ASSERT_TRUE(ScaleAndRotateBGRA(&from, &to, angle, mode));
                ASSERT_EQ(actual.Bytes(), expected.Bytes()) << "angle " << angle;
            }
        }
    }
}

TEST(ScaleAndRotateBGRA, WritesTightRowsForAQuarterTurnWhateverTheStride)
{
    TestRandom random;
    const TestImage source = RandomImage(6, 4, 0, random);
    const TestImage expected = Turned(source, 270);
    for (const std::uint32_t stride : {0U, 16U, 24U, 1'000U})
    {
        TestImage actual(4, 6);
        const tagSampleInfo from = source.Info();
        tagSampleInfo to = source.Info();
        to.pData = actual.Info().pData;
        to.nStride = stride;
        ASSERT_TRUE(ScaleAndRotateBGRA(&from, &to, 270, kScaleArea));
        EXPECT_EQ(actual.Bytes(), expected.Bytes());
    }
}

TEST(ScaleAndRotateBGRA, HonoursTheStrideForAHalfTurn)
{
    TestRandom random;
    const TestImage source = RandomImage(90, 70, 12, random);
    const TestImage scaled(50, 40);
    ASSERT_TRUE(Scale(source, scaled, kScaleArea));
    const TestImage expected = Turned(scaled, 180);
    const TestImage actual(50, 40, 20);
    const tagSampleInfo from = source.Info();
    const tagSampleInfo to = actual.Info();
    ASSERT_TRUE(ScaleAndRotateBGRA(&from, &to, 180, kScaleArea));
    for (std::uint32_t y = 0; y < 40; ++y)
        for (std::uint32_t x = 0; x < 50; ++x)
            ASSERT_EQ(actual.At(x, y), expected.At(x, y));
    EXPECT_TRUE(actual.GapsAreUntouched());
}

TEST(ScaleAndRotateBGRA, CopiesWhenTheSizeStays)
{
    TestRandom random;
    const TestImage source = RandomImage(67, 41, 4, random);
    for (const std::uint32_t angle : {0U, 90U, 180U, 270U})
    {
        const TestImage expected = Turned(source, angle);
        const TestImage actual(expected.Width(), expected.Height());
        const tagSampleInfo from = source.Info();
        tagSampleInfo to = source.Info();
        to.pData = actual.Info().pData;
        to.nStride = 67 * 4;
        ASSERT_TRUE(ScaleAndRotateBGRA(&from, &to, angle, kScaleBilinear));
        EXPECT_EQ(actual.Bytes(), expected.Bytes());
    }
}

TEST(ScaleAndRotateBGRA, TakesAnUnknownModeAsBilinear)
{
    TestRandom random;
    const TestImage source = RandomImage(40, 30, 0, random);
    const TestImage expected(13, 11);
    ASSERT_TRUE(Scale(source, expected, kScaleBilinear));
    for (const std::uint32_t mode : {0U, 3U, 0xFFFFFFFFU})
    {
        const TestImage actual(13, 11);
        ASSERT_TRUE(Scale(source, actual, mode));
        EXPECT_EQ(actual.Bytes(), expected.Bytes());
    }
}

TEST(ScaleAndRotateBGRA, ClearsTheTargetForAnyOtherAngle)
{
    TestImage source(8, 8);
    source.Fill({9, 9, 9, 9});
    TestImage target(4, 3, 8);
    target.Fill(kStale);
    const tagSampleInfo from = source.Info();
    const tagSampleInfo to = target.Info();
    EXPECT_FALSE(ScaleAndRotateBGRA(&from, &to, 45, kScaleArea));
    for (std::uint32_t i = 0; i < 12; ++i)
        ASSERT_EQ(target.At(i % 4, i / 4), kClear);
    EXPECT_TRUE(target.GapsAreUntouched());
}

TEST(ScaleAndRotateBGRA, RefusesDescriptorsThatItCannotUse)
{
    TestImage source(8, 8);
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
        return !ScaleAndRotateBGRA(&badFrom, &to, 0, 1) && !ScaleAndRotateBGRA(&from, &badTo, 0, 1);
    };
    EXPECT_FALSE(ScaleAndRotateBGRA(nullptr, &to, 0, 1));
    EXPECT_FALSE(ScaleAndRotateBGRA(&from, nullptr, 0, 1));
    EXPECT_FALSE(ScaleAndRotateBGRA(&from, nullptr, 90, 1));
    EXPECT_TRUE(refused([](tagSampleInfo& i) { i.pData = nullptr; }));
    EXPECT_TRUE(refused([](tagSampleInfo& i) { i.nWidth = 0; }));
    EXPECT_TRUE(refused([](tagSampleInfo& i) { i.nHeight = 32'768; }));
    EXPECT_TRUE(refused([](tagSampleInfo& i) { i.nStride = 15; }));
    for (std::uint32_t i = 0; i < 16; ++i)
        ASSERT_EQ(target.At(i % 4, i / 4), kStale);
}

TEST(ScaleAndRotateBGRA, TakesNoMemoryFromCallToCall)
{
    TestImage source(800, 600);
    source.Fill({1, 2, 3, 4});
    TestImage target(500, 400);
    const tagSampleInfo from = source.Info();
    const tagSampleInfo to = target.Info();
    std::uint64_t allocations = 0;
    for (int round = 0; round < 2; ++round)
    {
        allocations = SystemMemory::Allocations();
        for (const std::uint32_t angle : {0U, 90U, 180U, 270U})
            for (const std::uint32_t mode : {kScaleBilinear, kScaleArea})
                ASSERT_TRUE(ScaleAndRotateBGRA(&from, &to, angle, mode));
    }
    EXPECT_EQ(SystemMemory::Allocations(), allocations);
}

TEST(ScaleAndRotateBGRA, AnswersFalseAndWritesNothingWhenMemoryIsShort)
{
    // On a thread of its own, which has kept no memory from an earlier call.
    std::thread(
        []
        {
            TestImage source(80, 60);
            source.Fill({9, 9, 9, 9});
            TestImage target(50, 40);
            target.Fill(kStale);
            SystemMemory::FailNext(1);
            EXPECT_FALSE(Scale(source, target, kScaleArea));
            SystemMemory::FailNext(0);
            EXPECT_EQ(target.At(0, 0), kStale);
            EXPECT_TRUE(Scale(source, target, kScaleArea));
            EXPECT_EQ(target.At(0, 0), (TestPixel{9, 9, 9, 9}));
        })
        .join();
}

TEST(ScaleAndRotateBGRA, GivesTheSameWhenSeveralThreadsShareAPictureAndWhenTheyDoNot)
{
    // A strip of the source is scaled by itself, small enough for one thread; its rows must be those of the whole
    // picture, which is large enough to be shared out. Whole factors keep the strip's rows where they were.
    TestRandom random;
    const TestImage source = RandomImage(1'000, 900, 0, random);
    const TestImage whole(500, 450);
    ASSERT_TRUE(Scale(source, whole, kScaleArea));
    for (std::uint32_t first = 0; first < 450; first += 10)
    {
        tagSampleInfo from = source.Info();
        from.pData += std::size_t{first} * 2 * from.nStride;
        from.nHeight = 20;
        const TestImage strip(500, 10);
        const tagSampleInfo to = strip.Info();
        ASSERT_TRUE(ScaleAndRotateBGRA(&from, &to, 0, kScaleArea));
        ASSERT_TRUE(std::equal(strip.Bytes().begin(), strip.Bytes().end(),
                               whole.Bytes().begin() + static_cast<std::ptrdiff_t>(first) * 2'000));
    }
}

TEST(ScaleAndRotateBGRA, ServesSeveralThreadsAtATime)
{
    TestRandom random;
    const TestImage source = RandomImage(640, 360, 0, random);
    const TestImage expected(427, 240);
    ASSERT_TRUE(Scale(source, expected, kScaleArea));
    std::atomic<int> errors = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back(
            [&]
            {
                for (int round = 0; round < 8; ++round)
                {
                    const TestImage actual(427, 240);
                    errors += !Scale(source, actual, kScaleArea) || actual.Bytes() != expected.Bytes();
                }
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(errors, 0);
}

TEST(ScaleAndRotateBGRA, ScalesTheLongestRows)
{
    TestImage source(32'767, 2);
    source.Fill({200, 100, 50, 255});
    const TestImage small(3, 1);
    ASSERT_TRUE(Scale(source, small, kScaleArea));
    EXPECT_EQ(small.At(1, 0), (TestPixel{200, 100, 50, 255}));
    const TestImage large(32'767, 1);
    ASSERT_TRUE(Scale(small, large, kScaleArea));
    EXPECT_EQ(large.At(32'766, 0), (TestPixel{200, 100, 50, 255}));
}
} // namespace
