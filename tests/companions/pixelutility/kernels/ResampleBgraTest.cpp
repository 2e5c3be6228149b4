#include "companions/pixelutility/kernels/ResampleBgra.h"
#include "tests/companions/TestSeed.h"
#include "tests/companions/pixelutility/kernels/KernelTargets.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace qmx::kernels;

namespace
{
/// Tap table with memory of its own.
struct OwnedTaps
{
    explicit OwnedTaps(const ResampleAxis& axis)
        : first(TapFirstCount(axis)), weights(TapWeightCount(axis, axis.Pairs())),
          taps(MakeResampleTaps(axis, axis.Pairs(), first.data(), weights.data()))
    {
    }
    OwnedTaps(const OwnedTaps&) = delete;
    OwnedTaps& operator=(const OwnedTaps&) = delete;

    std::vector<std::uint32_t> first;
    std::vector<std::int16_t> weights;
    ResampleTaps taps;
};

/// A random picture, scaled by the kernel and by its twin.
class ScaledPicture
{
public:
    ScaledPicture(const ResampleAxis& horizontal, const ResampleAxis& vertical, TestRandom& random)
        : m_columns(horizontal), m_rows(vertical)
    {
        // Odd strides and addresses, and not a byte behind the last pixel.
        const std::size_t misalignment = random.Between(0, 3);
        const std::size_t cbRow = std::size_t{horizontal.source} * 4;
        const std::size_t stride = cbRow + random.Between(0, 5);
        m_source.resize(misalignment + stride * (vertical.source - 1) + cbRow);
        for (std::uint8_t& byte : m_source)
            byte = random.Byte();
        m_resampler = {m_source.data() + misalignment,
                       static_cast<std::ptrdiff_t>(stride),
                       horizontal,
                       vertical,
                       m_columns.taps,
                       m_rows.taps};
        m_targetStride = std::size_t{horizontal.target} * 4 + random.Between(0, 5);
    }

    using Kernel = decltype(&ResampleBgra);
    /// The whole target, gaps included, made in bands of @p bandRows rows.
    std::vector<std::uint8_t> Run(Kernel kernel, std::uint32_t bandRows) const
    {
        std::vector<std::uint8_t> target(m_targetStride * m_resampler.vertical.target, 0xA5);
        for (std::uint32_t first = 0; first < m_resampler.vertical.target; first += bandRows)
        {
            std::vector<std::int16_t> scratch(m_resampler.ScratchSize(), 0x5555); // left over from another band
            kernel(m_resampler, first, std::min(first + bandRows, m_resampler.vertical.target),
                   target.data() + m_targetStride * first, static_cast<std::ptrdiff_t>(m_targetStride), scratch.data());
        }
        return target;
    }

private:
    std::vector<std::uint8_t> m_source;
    OwnedTaps m_columns;
    OwnedTaps m_rows;
    BgraResampler m_resampler;
    std::size_t m_targetStride = 0;
};

ResampleAxis RandomAxis(std::uint32_t source, std::uint32_t target, TestRandom& random)
{
    const bool area = target < source && random.Between(0, 1) == 1;
    return {source, target, area ? ResampleMethod::Area : ResampleMethod::Bilinear};
}

TEST(ResampleTaps, AddUpToOneAndLieWithinTheSource)
{
    for (const ResampleMethod method : {ResampleMethod::Bilinear, ResampleMethod::Area})
    {
        for (std::uint32_t source = 1; source <= 70; ++source)
        {
            for (std::uint32_t target = 1; target <= (method == ResampleMethod::Area ? source : 70); ++target)
            {
                const ResampleAxis axis{source, target, method};
                const OwnedTaps owned(axis);
                for (std::uint32_t i = 0; i < target; ++i)
                {
                    std::int32_t sum = 0;
                    for (std::uint32_t tap = 0; tap < owned.taps.pairs * 2; ++tap)
                    {
                        const std::int32_t weight = owned.taps.Weight(i, tap);
                        ASSERT_GE(weight, 0);
                        ASSERT_TRUE(weight == 0 || owned.taps.pFirst[i] + tap < source);
                        sum += weight;
                    }
                    ASSERT_EQ(sum, kTapOne) << source << " to " << target << ", sample " << i;
                    ASSERT_LT(owned.taps.pFirst[i], source);
                }
            }
        }
    }
}

TEST(ResampleTaps, ShareWhatAnOutputSampleCovers)
{
    // 3 to 2: | a | b | c |  becomes  | a + b/2 | b/2 + c |, each over 3/2.
    const ResampleAxis axis{3, 2, ResampleMethod::Area};
    const OwnedTaps owned(axis);
    ASSERT_EQ(owned.taps.pairs, 1U);
    EXPECT_EQ(owned.taps.pFirst[0], 0U);
    EXPECT_NEAR(owned.taps.Weight(0, 0), kTapOne * 2.0 / 3.0, 1.0);
    EXPECT_NEAR(owned.taps.Weight(0, 1), kTapOne / 3.0, 1.0);
    EXPECT_EQ(owned.taps.pFirst[1], 1U);
    EXPECT_NEAR(owned.taps.Weight(1, 0), kTapOne / 3.0, 1.0);
}

TEST(ResampleTaps, LieBetweenCentresWhenTheyAreBilinear)
{
    // 2 to 4: centres at -1/4, 1/4, 3/4 and 5/4 of a source sample from the first one's centre.
    const ResampleAxis axis{2, 4, ResampleMethod::Bilinear};
    const OwnedTaps owned(axis);
    EXPECT_EQ(owned.taps.Weight(0, 0), kTapOne);
    EXPECT_EQ(owned.taps.Weight(1, 0), kTapOne * 3 / 4);
    EXPECT_EQ(owned.taps.Weight(2, 0), kTapOne / 4);
    EXPECT_EQ(owned.taps.pFirst[3], 1U);
    EXPECT_EQ(owned.taps.Weight(3, 0), kTapOne);
}

TEST(ResampleBgra, AgreesWithItsTwinForTheWidthsAroundAVector)
{
    TestRandom random;
    for (std::uint32_t source = 1; source <= 67; ++source)
    {
        for (const std::uint32_t target : {1U, source / 3 + 1, source, source + 1, random.Between(1, 67)})
        {
            SCOPED_TRACE(testing::Message() << source << " to " << target);
            const ScaledPicture picture(RandomAxis(source, target, random),
                                        RandomAxis(random.Between(1, 30), random.Between(1, 20), random), random);
            const std::vector<std::uint8_t> expected = picture.Run(&ResampleBgraScalar, 1'000);
            ASSERT_EQ(picture.Run(&ResampleBgra, 1'000), expected);
            ASSERT_EQ(picture.Run(&ResampleBgra, 3), expected); // bands change nothing
        }
    }
}

TEST(ResampleBgra, AgreesWithItsTwinOnEveryInstructionSet)
{
    TestRandom random;
    for (int round = 0; round < 40; ++round)
    {
        const ScaledPicture picture(RandomAxis(random.Between(1, 300), random.Between(1, 300), random),
                                    RandomAxis(random.Between(1, 60), random.Between(1, 60), random), random);
        const std::vector<std::uint8_t> expected = picture.Run(&ResampleBgraScalar, 1'000);
        ForEveryKernelTarget([&] { ASSERT_EQ(picture.Run(&ResampleBgra, 7), expected); });
        if (testing::Test::HasFailure())
            return;
    }
}
} // namespace
