#include "engine/platform/PixelUtility.h"
#include "tests/companions/pixelutility/TestImage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace
{
constexpr std::array<std::uint8_t, 3> kGreen = {0, 255, 0};
constexpr TestPixel kGreenPixel = {0, 255, 0, 255};
constexpr TestPixel kRedPixel = {0, 0, 255, 255};

struct Tuning
{
    double similarity = 0.1;
    double smoothness = 0.2;
    double spill = 0.0;
    std::uint8_t option = 0;
    std::uint8_t keyOnly = 0;
};

bool Key(const TestImage& frame, const TestImage* pBackground, const Tuning& tuning,
         const std::array<std::uint8_t, 3>& key = kGreen)
{
    const tagSampleInfo frameInfo = frame.Info();
    const tagSampleInfo backgroundInfo = pBackground ? pBackground->Info() : tagSampleInfo();
    return ReplaceToTransparent(&frameInfo, &backgroundInfo, key.data(), tuning.similarity, tuning.smoothness,
                                tuning.spill, tuning.option, tuning.keyOnly);
}

TestPixel Keyed(const TestPixel& pixel, const Tuning& tuning, const std::array<std::uint8_t, 3>& key = kGreen)
{
    TestImage frame(1, 1);
    frame.Set(0, 0, pixel);
    EXPECT_TRUE(Key(frame, nullptr, tuning, key));
    return frame.At(0, 0);
}

TestPixel KeyedOver(const TestPixel& pixel, const TestPixel& background, const Tuning& tuning)
{
    TestImage frame(1, 1);
    frame.Set(0, 0, pixel);
    TestImage back(1, 1);
    back.Set(0, 0, background);
    EXPECT_TRUE(Key(frame, &back, tuning));
    return frame.At(0, 0);
}

/// Cb and Cr by Rec. ITU-R BT.709 from levels.
std::array<double, 2> ChromaOf(const TestPixel& p)
{
    const double luma = (0.0722 * p[0] + 0.7152 * p[1] + 0.2126 * p[2]) / 255.0;
    return {(p[0] / 255.0 - luma) / 1.8556, (p[2] / 255.0 - luma) / 1.5748};
}

double KeptShare(const TestPixel& pixel, const TestPixel& key, const Tuning& tuning)
{
    const auto [cb, cr] = ChromaOf(pixel);
    const auto [keyCb, keyCr] = ChromaOf(key);
    const double distance = std::hypot(cb - keyCb, cr - keyCr);
    return std::clamp((distance - tuning.similarity) / tuning.smoothness, 0.0, 1.0);
}

TEST(ReplaceToTransparent, MakesTheKeyColourTransparentAndKeepsOthers)
{
    EXPECT_EQ(Keyed(kGreenPixel, {}), (TestPixel{0, 255, 0, 0}));
    EXPECT_EQ(Keyed(kRedPixel, {}), kRedPixel);
    EXPECT_EQ(Keyed({255, 255, 255, 255}, {}), (TestPixel{255, 255, 255, 255}));
    EXPECT_EQ(Keyed({7, 7, 7, 255}, {}), (TestPixel{7, 7, 7, 255}));
}

TEST(ReplaceToTransparent, LooksAtChromaAndNotAtBrightness)
{
    // Mixing with grey moves the chroma towards 0, brightness does not: 2/3 green is as far from the key as its
    // chroma is shorter, |chroma| / 3 = 0.199.
    const Tuning tuning{0.21, 0.01, 0.0, 0, 0};
    EXPECT_EQ(Keyed({0, 170, 0, 255}, tuning)[3], 0);
    EXPECT_EQ(Keyed({0, 160, 0, 255}, tuning)[3], 255);
    EXPECT_EQ(Keyed({85, 255, 85, 255}, tuning)[3], 0); // the same chroma as 2/3 green, brighter
}

TEST(ReplaceToTransparent, FollowsALinearRampBetweenKeyedAndKept)
{
    // The chroma of green mixed with grey of the same luma lies on a straight line, 0.596 long.
    for (int share = 0; share <= 20; ++share)
    {
        const double s = share / 20.0;
        const auto grey = [&](double level) { return static_cast<std::uint8_t>(std::lround(level)); };
        const TestPixel pixel = {grey(182.0 * s), grey(255.0 * (1.0 - s) + 182.0 * s), grey(182.0 * s), 255};
        for (const Tuning& tuning : {Tuning{0.1, 0.4, 0, 0, 0}, Tuning{0.0, 0.5, 0, 0, 0}, Tuning{0.3, 0.1, 0, 0, 0}})
            EXPECT_NEAR(Keyed(pixel, tuning)[3], 255.0 * KeptShare(pixel, kGreenPixel, tuning), 0.6) << "mix " << s;
    }
}

TEST(ReplaceToTransparent, HasASharpEdgeWithoutSmoothness)
{
    const double distance = 0.6 - 0.1; // between green and black, below which similarity decides
    EXPECT_EQ(Keyed({0, 0, 0, 255}, {distance, 0.0, 0, 0, 0})[3], 255);
    EXPECT_EQ(Keyed({0, 0, 0, 255}, {0.6, 0.0, 0, 0, 0})[3], 0);
    EXPECT_EQ(Keyed(kGreenPixel, {0.0, 0.0, 0, 0, 0})[3], 0); // the key itself goes in any case
}

TEST(ReplaceToTransparent, MultipliesTheAlphaThatThePixelHas)
{
    const TestPixel pixel = {60, 200, 60, 100};
    const Tuning tuning{0.1, 0.4, 0, 0, 0};
    const double kept = KeptShare(pixel, kGreenPixel, tuning);
    ASSERT_GT(kept, 0.1);
    ASSERT_LT(kept, 0.9);
    EXPECT_NEAR(Keyed(pixel, tuning)[3], 100.0 * kept, 0.6);
    EXPECT_EQ(Keyed({0, 0, 255, 100}, tuning)[3], 100);
}

TEST(ReplaceToTransparent, DrawsTheBackgroundAndMakesTheResultOpaque)
{
    const TestPixel background = {200, 100, 50, 0}; // its alpha says nothing
    EXPECT_EQ(KeyedOver(kGreenPixel, background, {}), (TestPixel{200, 100, 50, 255}));
    EXPECT_EQ(KeyedOver(kRedPixel, background, {}), kRedPixel);
    const TestPixel pixel = {60, 200, 60, 255};
    const Tuning tuning{0.1, 0.4, 0, 0, 0};
    const double kept = KeptShare(pixel, kGreenPixel, tuning);
    const TestPixel mixed = KeyedOver(pixel, background, tuning);
    for (std::size_t c = 0; c < 3; ++c)
        EXPECT_NEAR(mixed[c], pixel[c] * kept + background[c] * (1.0 - kept), 0.6);
    EXPECT_EQ(mixed[3], 255);
}

TEST(ReplaceToTransparent, LetsTheBackgroundThroughWhereTheFrameIsTransparent)
{
    const TestPixel half = {0, 0, 255, 128};
    const TestPixel mixed = KeyedOver(half, {200, 100, 50, 255}, {});
    EXPECT_NEAR(mixed[0], 200 * 127 / 255.0, 0.6);
    EXPECT_NEAR(mixed[2], (255 * 128 + 50 * 127) / 255.0, 0.6);
    EXPECT_EQ(mixed[3], 255);
}

TEST(ReplaceToTransparent, DrawsNoBackgroundWhenOnlyTheKeyIsAskedFor)
{
    TestImage frame(2, 1);
    frame.Set(0, 0, kGreenPixel);
    frame.Set(1, 0, kRedPixel);
    TestImage background(2, 1);
    background.Fill({200, 100, 50, 255});
    Tuning tuning;
    tuning.keyOnly = 1;
    ASSERT_TRUE(Key(frame, &background, tuning));
    EXPECT_EQ(frame.At(0, 0), (TestPixel{0, 255, 0, 0}));
    EXPECT_EQ(frame.At(1, 0), kRedPixel);
}

TEST(ReplaceToTransparent, TakesTheKeysTintOutWhenTheSpillPassIsOn)
{
    const TestPixel greenish = {100, 160, 110, 255};
    Tuning tuning{0.05, 0.05, 1.0, 1, 0};
    const TestPixel clean = Keyed(greenish, tuning);
    const auto [keyCb, keyCr] = ChromaOf(kGreenPixel);
    const auto along = [&](const TestPixel& p)
    {
        const auto [cb, cr] = ChromaOf(p);
        return (cb * keyCb + cr * keyCr) / std::hypot(keyCb, keyCr);
    };
    const auto luma = [](const TestPixel& p) { return 0.0722 * p[0] + 0.7152 * p[1] + 0.2126 * p[2]; };
    ASSERT_GT(along(greenish), 0.05);
    EXPECT_NEAR(along(clean), 0.0, 0.004);
    EXPECT_NEAR(luma(clean), luma(greenish), 1.0); // the brightness stays
    EXPECT_EQ(clean[3], 255);

    tuning.spill = 0.5;
    EXPECT_NEAR(along(Keyed(greenish, tuning)), along(greenish) / 2.0, 0.004);
}

TEST(ReplaceToTransparent, LeavesColoursOppositeTheKeyAloneInTheSpillPass)
{
    const Tuning tuning{0.05, 0.05, 1.0, 1, 0};
    EXPECT_EQ(Keyed({200, 30, 190, 255}, tuning), (TestPixel{200, 30, 190, 255}));
    EXPECT_EQ(Keyed({128, 128, 128, 255}, tuning), (TestPixel{128, 128, 128, 255}));
}

TEST(ReplaceToTransparent, RunsNoSpillPassWithoutTheOptionOrWithAGreyKey)
{
    const TestPixel greenish = {100, 160, 110, 255};
    EXPECT_EQ(Keyed(greenish, {0.05, 0.05, 1.0, 0, 0}), greenish);
    EXPECT_EQ(Keyed(greenish, {0.01, 0.01, 1.0, 1, 0}, {128, 128, 128}), greenish);
}

TEST(ReplaceToTransparent, KeysAnyColour)
{
    EXPECT_EQ(Keyed({255, 0, 0, 255}, {}, {255, 0, 0})[3], 0); // blue, its byte first
    EXPECT_EQ(Keyed({255, 0, 0, 255}, {}, {0, 0, 255})[3], 255);
    EXPECT_EQ(Keyed({90, 90, 90, 255}, {}, {0, 0, 0})[3], 0); // a grey key takes every grey
}

TEST(ReplaceToTransparent, TakesTuningValuesIntoTheirRange)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(Keyed(kGreenPixel, {-5.0, -5.0, -5.0, 1, 0})[3], 0);
    EXPECT_EQ(Keyed(kRedPixel, {nan, nan, nan, 1, 0}), kRedPixel);
    EXPECT_EQ(Keyed({0, 0, 0, 255}, {inf, 0.1, inf, 1, 0})[3], 0); // everything within 1 is keyed
}

TEST(ReplaceToTransparent, KeysWholePicturesWithGapsBetweenTheirRows)
{
    TestRandom random;
    TestImage frame(640, 401, 12);
    TestImage background(640, 401, 4);
    background.FillRandomly(random);
    for (std::uint32_t y = 0; y < 401; ++y)
        for (std::uint32_t x = 0; x < 640; ++x)
            frame.Set(x, y, (x + y) % 3 == 0 ? kRedPixel : kGreenPixel);
    ASSERT_TRUE(Key(frame, &background, {}));
    EXPECT_TRUE(frame.GapsAreUntouched());
    for (std::uint32_t y = 0; y < 401; ++y)
    {
        for (std::uint32_t x = 0; x < 640; ++x)
        {
            TestPixel expected = background.At(x, y);
            expected[3] = 255;
            ASSERT_EQ(frame.At(x, y), (x + y) % 3 == 0 ? kRedPixel : expected) << x << ", " << y;
        }
    }
}

TEST(ReplaceToTransparent, RefusesWhatItCannotUseAndWritesNothing)
{
    TestImage frame(4, 4);
    frame.Fill(kGreenPixel);
    const TestImage narrower(3, 4);
    const tagSampleInfo good = frame.Info();
    const tagSampleInfo none;
    const auto key = [](const tagSampleInfo* pFrame, const tagSampleInfo* pBackground, const std::uint8_t* pKey)
    { return ReplaceToTransparent(pFrame, pBackground, pKey, 0.1, 0.1, 0.0, 0, 0); };
    EXPECT_FALSE(key(nullptr, &none, kGreen.data()));
    EXPECT_FALSE(key(&none, &none, kGreen.data()));
    EXPECT_FALSE(key(&good, &none, nullptr));
    EXPECT_FALSE(Key(frame, &narrower, {}));
    tagSampleInfo badStride = good;
    badStride.nStride = 12;
    EXPECT_FALSE(key(&badStride, &none, kGreen.data()));
    EXPECT_FALSE(key(&good, &badStride, kGreen.data()));
    EXPECT_EQ(frame.At(0, 0), kGreenPixel);
    EXPECT_TRUE(key(&good, nullptr, kGreen.data())); // no background at all is fine
}
} // namespace
