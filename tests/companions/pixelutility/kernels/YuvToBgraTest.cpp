#include "tests/companions/TestSeed.h"
#include "tests/companions/pixelutility/kernels/KernelTargets.h"
#include "tests/companions/pixelutility/kernels/YuvTestPicture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace qmx::kernels;
using testing::ElementsAre;

namespace
{
constexpr std::uint8_t kUntouched = 0xA5;

std::vector<YuvStorage> EveryStorage()
{
    std::vector<YuvStorage> all;
    for (const int depth : {8, 9, 10, 12, 16})
        for (const bool highBits : {false, true})
            for (const bool interleaved : {false, true})
                for (int shifts = 0; shifts < 4; ++shifts)
                    for (const bool alpha : {false, true})
                        if (depth > 8 || !highBits)
                            all.push_back({depth, highBits, interleaved, shifts & 1, shifts >> 1, alpha});
    return all;
}

void FillRandomly(YuvTestPicture& picture, TestRandom& random)
{
    for (int plane = 0; plane < (picture.view.pA ? 4 : 3); ++plane)
        for (int y = 0; y < picture.PlaneHeight(plane); ++y)
            for (int x = 0; x < picture.PlaneWidth(plane); ++x)
                picture.Set(plane, x, y, random.Between(0, picture.Maximum()));
}

/// Converts with the kernel and with its twin into targets with a gap behind each row; both whole targets must agree,
/// and the gaps must be untouched.
void ExpectTwinsAgree(const YuvPicture& view, std::size_t misalignment, std::size_t rowGap)
{
    const std::size_t cbRow = static_cast<std::size_t>(view.width) * 4;
    const std::size_t stride = cbRow + rowGap;
    const std::size_t cb = misalignment + stride * static_cast<std::size_t>(view.height);
    std::vector<std::uint8_t> actual(cb, kUntouched);
    std::vector<std::uint8_t> expected(cb, kUntouched);
    ASSERT_TRUE(ConvertYuvToBgra(view, actual.data() + misalignment, static_cast<std::ptrdiff_t>(stride)));
    ASSERT_TRUE(ConvertYuvToBgraScalar(view, expected.data() + misalignment, static_cast<std::ptrdiff_t>(stride)));
    ASSERT_EQ(actual, expected);
    for (std::size_t y = 0; y < static_cast<std::size_t>(view.height); ++y)
        for (std::size_t x = cbRow; x < stride; ++x)
            ASSERT_EQ(actual[misalignment + y * stride + x], kUntouched) << "row " << y << ", byte " << x;
}

std::vector<std::uint8_t> ConvertOnePixel(const YuvStorage& storage, YuvMatrix matrix, bool fullRange,
                                          std::array<std::uint32_t, 4> yuva)
{
    YuvTestPicture picture(1, 1, storage);
    picture.view.matrix = matrix;
    picture.view.fullRange = fullRange;
    for (int plane = 0; plane < (storage.alpha ? 4 : 3); ++plane)
        picture.Set(plane, 0, 0, yuva[static_cast<std::size_t>(plane)]);
    std::vector<std::uint8_t> pixel(4);
    EXPECT_TRUE(ConvertYuvToBgra(picture.view, pixel.data(), 4));
    return pixel;
}

TEST(ConvertYuvToBgra, AgreesWithItsTwinForEveryStorageAndTheWidthsAroundAVector)
{
    TestRandom random;
    for (const YuvStorage& storage : EveryStorage())
    {
        for (int width = 1; width <= 67; ++width)
        {
            SCOPED_TRACE(testing::Message() << storage.bitDepth << " bits, high " << storage.highBits
                                            << ", interleaved " << storage.interleaved << ", shifts " << storage.shiftX
                                            << storage.shiftY << ", alpha " << storage.alpha << ", width " << width);
            YuvTestPicture picture(width, 3, storage, random.Between(0, 3), random.Between(0, 5), width % 2 == 0);
            picture.view.matrix = static_cast<YuvMatrix>(random.Between(0, 4));
            picture.view.fullRange = random.Between(0, 1) == 1;
            FillRandomly(picture, random);
            ASSERT_NO_FATAL_FAILURE(ExpectTwinsAgree(picture.view, random.Between(0, 7), random.Between(0, 9)));
        }
    }
}

TEST(ConvertYuvToBgra, AgreesWithItsTwinOnEveryInstructionSet)
{
    TestRandom random;
    for (const YuvStorage& storage : EveryStorage())
    {
        YuvTestPicture picture(201, 5, storage, 1, 3);
        FillRandomly(picture, random);
        ForEveryKernelTarget([&] { ExpectTwinsAgree(picture.view, 3, 7); });
        if (testing::Test::HasFailure())
            return;
    }
}

TEST(ConvertYuvToBgra, WritesBottomUpWhenTheTargetStrideIsNegative)
{
    YuvTestPicture picture(2, 2, {8, false, false, 1, 1, false});
    picture.view.fullRange = true;
    const std::array<std::uint8_t, 4> luma = {10, 20, 30, 40};
    for (int i = 0; i < 4; ++i)
        picture.Set(0, i % 2, i / 2, luma[static_cast<std::size_t>(i)]);
    picture.Set(1, 0, 0, 128);
    picture.Set(2, 0, 0, 128);
    std::vector<std::uint8_t> bgra(16);
    ASSERT_TRUE(ConvertYuvToBgra(picture.view, bgra.data() + 8, -8));
    EXPECT_THAT(bgra, ElementsAre(30, 30, 30, 255, 40, 40, 40, 255, 10, 10, 10, 255, 20, 20, 20, 255));
}

TEST(ConvertYuvToBgra, RepeatsAChromaSampleForTheTwoByTwoPixelsAroundIt)
{
    // 3 x 3 pixels have 2 x 2 chroma samples: the last column and row of samples serve one column and row of pixels.
    YuvTestPicture picture(3, 3, {8, false, false, 1, 1, false});
    picture.view.fullRange = true;
    const std::array<std::uint8_t, 4> chromaV = {128, 160, 90, 200};
    for (int i = 0; i < 4; ++i)
    {
        picture.Set(1, i % 2, i / 2, 128);
        picture.Set(2, i % 2, i / 2, chromaV[static_cast<std::size_t>(i)]);
    }
    for (int i = 0; i < 9; ++i)
        picture.Set(0, i % 3, i / 3, 100);
    std::vector<std::uint8_t> bgra(36);
    ASSERT_TRUE(ConvertYuvToBgra(picture.view, bgra.data(), 12));
    for (std::size_t i = 0; i < 9; ++i)
    {
        const std::uint32_t v = chromaV[i % 3 / 2 + i / 3 / 2 * 2];
        EXPECT_NEAR(bgra[i * 4 + 2], ExactBgr(picture.view, 100, 128, v)[2], 0.6) << "pixel " << i;
    }
}

TEST(ConvertYuvToBgra, GivesTheColoursThatTheStandardsName)
{
    const YuvStorage plain{8, false, false, 0, 0, false};
    EXPECT_THAT(ConvertOnePixel(plain, YuvMatrix::Bt709, false, {16, 128, 128}), ElementsAre(0, 0, 0, 255));
    EXPECT_THAT(ConvertOnePixel(plain, YuvMatrix::Bt709, false, {235, 128, 128}), ElementsAre(255, 255, 255, 255));
    EXPECT_THAT(ConvertOnePixel(plain, YuvMatrix::Bt709, true, {255, 128, 128}), ElementsAre(255, 255, 255, 255));
    EXPECT_THAT(ConvertOnePixel(plain, YuvMatrix::Bt709, true, {0, 128, 128}), ElementsAre(0, 0, 0, 255));
    // 100 % colour bars, rounded to 8 bits: blue of BT.709, red of BT.601.
    const std::vector<std::uint8_t> blue = ConvertOnePixel(plain, YuvMatrix::Bt709, false, {32, 240, 118});
    EXPECT_NEAR(blue[0], 255, 1);
    EXPECT_NEAR(blue[1], 0, 1);
    EXPECT_NEAR(blue[2], 0, 1);
    const std::vector<std::uint8_t> red = ConvertOnePixel(plain, YuvMatrix::Bt601, false, {81, 90, 240});
    EXPECT_NEAR(red[0], 0, 1);
    EXPECT_NEAR(red[1], 0, 1);
    EXPECT_NEAR(red[2], 255, 1);
    const YuvStorage p010{10, true, true, 1, 1, false};
    EXPECT_THAT(ConvertOnePixel(p010, YuvMatrix::Bt2020, false, {64, 512, 512}), ElementsAre(0, 0, 0, 255));
    EXPECT_THAT(ConvertOnePixel(p010, YuvMatrix::Bt2020, false, {940, 512, 512}), ElementsAre(255, 255, 255, 255));
}

TEST(ConvertYuvToBgra, CopiesAnAlphaPlaneAndRoundsADeepOne)
{
    for (const int depth : {8, 9, 10, 12, 14, 16})
    {
        for (const bool highBits : {false, true})
        {
            if (depth == 8 && highBits)
                continue;
            const std::uint32_t most = (1U << depth) - 1U;
            const int width = 256;
            const int height = static_cast<int>((most + 1) / 256);
            YuvTestPicture picture(width, height, {depth, highBits, false, 1, 1, true});
            for (std::uint32_t i = 0; i <= most; ++i)
                picture.Set(3, static_cast<int>(i % 256), static_cast<int>(i / 256), i);
            std::vector<std::uint8_t> bgra((std::size_t{most} + 1) * 4);
            ASSERT_TRUE(ConvertYuvToBgra(picture.view, bgra.data(), std::ptrdiff_t{width} * 4));
            for (std::uint32_t i = 0; i <= most; ++i)
                ASSERT_EQ(bgra[i * 4 + 3], std::lround(i * 255.0 / most)) << depth << " bits, alpha " << i;
        }
    }
}

TEST(ConvertYuvToBgra, RefusesWhatItCannotReadAndWritesNothing)
{
    YuvTestPicture picture(4, 4, {8, false, false, 1, 1, false});
    const auto refuses = [](const YuvPicture& view, std::ptrdiff_t stride = 16)
    {
        std::vector<std::uint8_t> target(64, kUntouched);
        const bool refused =
            !ConvertYuvToBgra(view, target.data(), stride) && !ConvertYuvToBgraScalar(view, target.data(), stride);
        return refused && target == std::vector<std::uint8_t>(64, kUntouched);
    };
    const auto with = [&](auto change)
    {
        YuvPicture view = picture.view;
        change(view);
        return view;
    };
    EXPECT_FALSE(refuses(picture.view));
    EXPECT_TRUE(refuses(with([](YuvPicture& v) { v.pY = nullptr; })));
    EXPECT_TRUE(refuses(with([](YuvPicture& v) { v.pU = nullptr; })));
    EXPECT_TRUE(refuses(with([](YuvPicture& v) { v.pV = nullptr; })));
    EXPECT_TRUE(refuses(with([](YuvPicture& v) { v.width = 0; })));
    EXPECT_TRUE(refuses(with([](YuvPicture& v) { v.height = -1; })));
    EXPECT_TRUE(refuses(with([](YuvPicture& v) { v.chromaShiftX = 2; })));
    EXPECT_TRUE(refuses(with([](YuvPicture& v) { v.chromaShiftY = -1; })));
    EXPECT_TRUE(refuses(with([](YuvPicture& v) { v.bitDepth = 7; })));
    EXPECT_TRUE(refuses(with([](YuvPicture& v) { v.bitDepth = 17; })));
    EXPECT_TRUE(refuses(with([](YuvPicture& v) { v.highBits = true; })));
    EXPECT_TRUE(refuses(picture.view, 15));
    EXPECT_TRUE(refuses(picture.view, -15));
    EXPECT_FALSE(ConvertYuvToBgra(picture.view, nullptr, 16));
    EXPECT_FALSE(ConvertYuvToBgraScalar(picture.view, nullptr, 16));
}
} // namespace
