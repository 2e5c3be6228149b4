#include "companions/pixelutility/kernels/ChromaKey.h"
#include "tests/companions/TestSeed.h"
#include "tests/companions/pixelutility/kernels/KernelTargets.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

using namespace qmx::kernels;

namespace
{
struct KeyCase
{
    ChromaKeyRule rule;
    std::vector<std::uint8_t> pixels;
    std::vector<std::uint8_t> background;
};

KeyCase RandomCase(std::size_t count, TestRandom& random)
{
    const std::array<std::uint8_t, 3> key = {random.Byte(), random.Byte(), random.Byte()};
    const auto unit = [&random] { return random.Between(0, 100) / 100.0; };
    KeyCase result{MakeChromaKeyRule(key.data(), unit() * 0.5, unit(), unit()),
                   std::vector<std::uint8_t>(count * 4 + 1), std::vector<std::uint8_t>(count * 4 + 1)};
    for (std::uint8_t& byte : result.pixels)
        byte = random.Byte();
    for (std::uint8_t& byte : result.background)
        byte = random.Byte();
    return result;
}

/// The kernel and its twin over the same pixels at an odd address.
void ExpectTwinsAgree(const KeyCase& keyCase, bool withBackground)
{
    const std::uint8_t* const pBackground = withBackground ? keyCase.background.data() + 1 : nullptr;
    const std::size_t count = keyCase.pixels.size() / 4;
    std::vector<std::uint8_t> actual = keyCase.pixels;
    std::vector<std::uint8_t> expected = keyCase.pixels;
    KeyBgra(keyCase.rule, actual.data() + 1, pBackground, count);
    KeyBgraScalar(keyCase.rule, expected.data() + 1, pBackground, count);
    ASSERT_EQ(actual, expected) << count << " pixels";
}

TEST(KeyBgra, AgreesWithItsTwinForTheWidthsAroundAVector)
{
    TestRandom random;
    for (std::size_t count = 0; count <= 67; ++count)
        for (const bool withBackground : {false, true})
            ASSERT_NO_FATAL_FAILURE(ExpectTwinsAgree(RandomCase(count, random), withBackground));
}

TEST(KeyBgra, AgreesWithItsTwinOnEveryInstructionSet)
{
    TestRandom random;
    for (int round = 0; round < 50; ++round)
    {
        const KeyCase keyCase = RandomCase(1'001, random);
        ForEveryKernelTarget(
            [&]
            {
                ExpectTwinsAgree(keyCase, false);
                ExpectTwinsAgree(keyCase, true);
            });
        if (testing::Test::HasFailure())
            return;
    }
}
} // namespace
