#include "companions/pixelutility/kernels/MergeBgra.h"
#include "tests/companions/TestSeed.h"
#include "tests/companions/pixelutility/kernels/KernelTargets.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace qmx::kernels;

namespace
{
using Bytes = std::vector<std::uint8_t>;

Bytes RandomPixels(std::size_t count, TestRandom& random)
{
    Bytes bytes(count * 4 + 1);
    for (std::uint8_t& byte : bytes)
        byte = random.Byte();
    // Opaque and empty pixels are as frequent as all others together, alone and in runs.
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::uint32_t kind = random.Between(0, 3);
        if (kind < 2)
            bytes[1 + i * 4 + 3] = kind == 0 ? 0 : 255;
    }
    return bytes;
}

/// The kernel and its twin over the same pixels at an odd address.
void ExpectTwinsAgree(const Bytes& source, const Bytes& target)
{
    Bytes actual = target;
    Bytes expected = target;
    MergeBgraRow(source.data() + 1, actual.data() + 1, target.size() / 4);
    MergeBgraRowScalar(source.data() + 1, expected.data() + 1, target.size() / 4);
    ASSERT_EQ(actual, expected) << target.size() / 4 << " pixels";
}

TEST(MergeBgraRow, AgreesWithItsTwinForTheWidthsAroundAVector)
{
    TestRandom random;
    for (std::size_t count = 0; count <= 67; ++count)
        ASSERT_NO_FATAL_FAILURE(ExpectTwinsAgree(RandomPixels(count, random), RandomPixels(count, random)));
}

TEST(MergeBgraRow, AgreesWithItsTwinOnEveryInstructionSet)
{
    TestRandom random;
    for (int round = 0; round < 50; ++round)
    {
        const Bytes source = RandomPixels(1'001, random);
        const Bytes target = RandomPixels(1'001, random);
        ForEveryKernelTarget([&] { ExpectTwinsAgree(source, target); });
        if (testing::Test::HasFailure())
            return;
    }
}

TEST(MergeBgraRow, IsSourceOverForEveryPairOfAlphas)
{
    constexpr double kFront = 200;
    constexpr double kBack = 30;
    for (int sourceAlpha = 0; sourceAlpha < 256; ++sourceAlpha)
    {
        for (int targetAlpha = 0; targetAlpha < 256; ++targetAlpha)
        {
            const std::uint8_t source[4] = {200, 200, 200, static_cast<std::uint8_t>(sourceAlpha)};
            std::uint8_t target[4] = {30, 30, 30, static_cast<std::uint8_t>(targetAlpha)};
            MergeBgraRow(source, target, 1);
            const double rest = targetAlpha * (255.0 - sourceAlpha) / 255.0;
            const double alpha = sourceAlpha + rest;
            const double colour = alpha == 0 ? kBack : (kFront * sourceAlpha + kBack * rest) / alpha;
            // Half a level, and what single precision may tip over.
            ASSERT_NEAR(target[3], alpha, 0.5001) << sourceAlpha << " over " << targetAlpha;
            ASSERT_NEAR(target[0], colour, 0.5001) << sourceAlpha << " over " << targetAlpha;
            ASSERT_EQ(target[0], target[2]);
        }
    }
}

TEST(MergeBgraRow, EmptyPixelsLeaveTheTargetAndOpaqueOnesReplaceItToTheBit)
{
    const std::uint8_t source[12] = {1, 2, 3, 0, 4, 5, 6, 255, 7, 8, 9, 0};
    std::uint8_t target[12] = {10, 20, 30, 0, 40, 50, 60, 7, 70, 80, 90, 128};
    MergeBgraRow(source, target, 3);
    const std::uint8_t expected[12] = {10, 20, 30, 0, 4, 5, 6, 255, 70, 80, 90, 128};
    EXPECT_TRUE(std::equal(target, target + 12, expected));
}
} // namespace
