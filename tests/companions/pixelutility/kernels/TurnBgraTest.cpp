#include "companions/pixelutility/kernels/TurnBgra.h"
#include "tests/companions/TestSeed.h"
#include "tests/companions/pixelutility/kernels/KernelTargets.h"

#include <gtest/gtest.h>

#include <vector>

using namespace qmx::kernels;

namespace
{
std::vector<std::uint8_t> RandomBytes(std::size_t cb, TestRandom& random)
{
    std::vector<std::uint8_t> bytes(cb);
    for (std::uint8_t& byte : bytes)
        byte = random.Byte();
    return bytes;
}

/// Kernel and twin at odd addresses and strides; the whole targets must agree, gaps included.
void ExpectTransposesAgree(std::size_t width, std::size_t rows, bool flipSource, bool flipTarget, TestRandom& random)
{
    const auto stride = static_cast<std::ptrdiff_t>(width * 4 + random.Between(0, 5));
    const auto strideTarget = static_cast<std::ptrdiff_t>(rows * 4 + random.Between(0, 5));
    const auto lastRow = static_cast<std::ptrdiff_t>(rows) - 1;
    const auto lastColumn = static_cast<std::ptrdiff_t>(width) - 1;
    const std::vector<std::uint8_t> source =
        RandomBytes(1 + static_cast<std::size_t>(stride * lastRow) + width * 4, random);
    std::vector<std::uint8_t> actual(1 + static_cast<std::size_t>(strideTarget * lastColumn) + rows * 4, 0xA5);
    std::vector<std::uint8_t> expected = actual;
    const auto run = [&](auto kernel, std::vector<std::uint8_t>& target)
    {
        kernel(source.data() + 1 + (flipSource ? stride * lastRow : 0), flipSource ? -stride : stride,
               target.data() + 1 + (flipTarget ? strideTarget * lastColumn : 0),
               flipTarget ? -strideTarget : strideTarget, width, rows);
    };
    run(&TransposeBgra, actual);
    run(&TransposeBgraScalar, expected);
    ASSERT_EQ(actual, expected) << width << " x " << rows;
}

TEST(TransposeBgra, AgreesWithItsTwinForEverySmallSize)
{
    TestRandom random;
    for (std::size_t width = 1; width <= 67; ++width)
        for (const std::size_t rows : {std::size_t{1}, std::size_t{random.Between(2, 67)}, 68 - width})
            ASSERT_NO_FATAL_FAILURE(ExpectTransposesAgree(width, rows, width % 2 == 0, width % 3 == 0, random));
}

TEST(TransposeBgra, AgreesWithItsTwinOnEveryInstructionSet)
{
    TestRandom random;
    ForEveryKernelTarget([&] { ExpectTransposesAgree(101, 83, true, false, random); });
}

TEST(MirrorBgra, AgreesWithItsTwinForTheWidthsAroundAVectorOnEveryInstructionSet)
{
    TestRandom random;
    for (std::size_t width = 0; width <= 67; ++width)
    {
        const std::vector<std::uint8_t> source = RandomBytes(width * 4 + 1, random);
        std::vector<std::uint8_t> expected(width * 4 + 2, 0xA5);
        MirrorBgraScalar(source.data() + 1, expected.data() + 1, width);
        ForEveryKernelTarget(
            [&]
            {
                std::vector<std::uint8_t> actual(width * 4 + 2, 0xA5);
                MirrorBgra(source.data() + 1, actual.data() + 1, width);
                ASSERT_EQ(actual, expected) << width;
            });
    }
}
} // namespace
