#include "tests/companions/TestSeed.h"
#include "tests/companions/pixelutility/kernels/YuvTestPicture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <tuple>
#include <vector>

using namespace qmx::kernels;

namespace
{
constexpr std::array kMatrices = {YuvMatrix::Bt601, YuvMatrix::Bt709, YuvMatrix::Bt2020, YuvMatrix::Smpte240m,
                                  YuvMatrix::Fcc};
constexpr std::array<const char*, 5> kMatrixNames = {"Bt601", "Bt709", "Bt2020", "Smpte240m", "Fcc"};

/// How far a converted pixel is from the formula, at worst.
struct WorstError
{
    double value = 0.0;
    std::array<std::uint32_t, 3> yuv{};

    void Take(double error, std::uint32_t y, std::uint32_t u, std::uint32_t v)
    {
        if (error > value)
        {
            value = error;
            yuv = {y, u, v};
        }
    }
};

std::ostream& operator<<(std::ostream& out, const WorstError& worst)
{
    return out << worst.value << " at Y " << worst.yuv[0] << " U " << worst.yuv[1] << " V " << worst.yuv[2];
}

class YuvToBgraFormula : public testing::TestWithParam<std::tuple<YuvMatrix, bool>>
{
protected:
    /// Converts the 256 x 256 grid of Y and one chroma channel while the other chroma channel is @p other.
    void CheckGrid(bool gridOfU, std::uint8_t other, WorstError& worst)
    {
        for (std::ptrdiff_t c = 0; c < 256; ++c)
        {
            std::uint8_t* const pGrid = gridOfU ? m_u.data() : m_v.data();
            std::uint8_t* const pOther = gridOfU ? m_v.data() : m_u.data();
            std::fill_n(pGrid + c * 256, 256, static_cast<std::uint8_t>(c));
            std::fill_n(pOther + c * 256, 256, other);
        }
        ASSERT_TRUE(ConvertYuvToBgra(m_view, m_bgra.data(), 1024));
        for (std::uint32_t c = 0; c < 256; ++c)
        {
            const std::uint32_t u = gridOfU ? c : other;
            const std::uint32_t v = gridOfU ? other : c;
            for (std::uint32_t y = 0; y < 256; ++y)
            {
                const std::array<double, 3> exact = ExactBgr(m_view, y, u, v);
                const std::uint8_t* const pPixel = &m_bgra[(std::size_t{c} * 256 + y) * 4];
                for (std::size_t i = 0; i < 3; ++i)
                    worst.Take(std::abs(pPixel[i] - exact[i]), y, u, v);
            }
        }
    }

    void SetUp() override
    {
        for (std::size_t i = 0; i < m_y.size(); ++i)
            m_y[i] = static_cast<std::uint8_t>(i);
        m_view.pY = m_y.data();
        m_view.pU = m_u.data();
        m_view.pV = m_v.data();
        m_view.strideY = m_view.strideU = m_view.strideV = 256;
        m_view.width = m_view.height = 256;
        m_view.chromaShiftX = m_view.chromaShiftY = 0;
        std::tie(m_view.matrix, m_view.fullRange) = GetParam();
    }

    std::vector<std::uint8_t> m_y = std::vector<std::uint8_t>(65536);
    std::vector<std::uint8_t> m_u = std::vector<std::uint8_t>(65536);
    std::vector<std::uint8_t> m_v = std::vector<std::uint8_t>(65536);
    std::vector<std::uint8_t> m_bgra = std::vector<std::uint8_t>(std::size_t{65536} * 4);
    YuvPicture m_view;
};

// Red depends on Y and V alone and blue on Y and U alone, so both are covered completely; green, a sum of the same kind
// of terms, in steps of 17 of the other chroma channel.
TEST_P(YuvToBgraFormula, EightBitsAreWithinOneLevelOnTheWholeGrid)
{
    WorstError worst;
    for (const bool gridOfU : {true, false})
    {
        for (int other = 0; other < 256; other += 17)
            ASSERT_NO_FATAL_FAILURE(CheckGrid(gridOfU, static_cast<std::uint8_t>(other), worst));
        ASSERT_NO_FATAL_FAILURE(CheckGrid(gridOfU, 128, worst));
    }
    EXPECT_LE(worst.value, 1.0) << worst;
    RecordProperty("worst", std::to_string(worst.value));
}

TEST_P(YuvToBgraFormula, DeepSamplesAreWithinOneLevel)
{
    TestRandom random;
    for (int depth = 9; depth <= 16; ++depth)
    {
        for (const bool highBits : {false, true})
        {
            SCOPED_TRACE(testing::Message() << depth << " bits, high " << highBits);
            YuvTestPicture picture(256, 64, {depth, highBits, false, 0, 0, false});
            std::tie(picture.view.matrix, picture.view.fullRange) = GetParam();
            // Corners and range limits against each other first, then anything.
            const std::uint32_t most = picture.Maximum();
            const std::uint32_t unit = 1U << (depth - 8);
            const std::array<std::uint32_t, 8> edges = {0,          1,          16 * unit,  most / 2,
                                                        128 * unit, 235 * unit, 240 * unit, most};
            std::vector<std::array<std::uint32_t, 3>> samples(std::size_t{256} * 64);
            for (std::size_t i = 0; i < samples.size(); ++i)
            {
                if (i < 512)
                    samples[i] = {edges[i % 8], edges[i / 8 % 8], edges[i / 64]};
                else
                    samples[i] = {random.Between(0, most), random.Between(0, most), random.Between(0, most)};
                for (int plane = 0; plane < 3; ++plane)
                    picture.Set(plane, static_cast<int>(i % 256), static_cast<int>(i / 256),
                                samples[i][static_cast<std::size_t>(plane)]);
            }
            std::vector<std::uint8_t> bgra(samples.size() * 4);
            ASSERT_TRUE(ConvertYuvToBgra(picture.view, bgra.data(), 1024));
            WorstError worst;
            for (std::size_t i = 0; i < samples.size(); ++i)
            {
                const auto [y, u, v] = samples[i];
                const std::array<double, 3> exact = ExactBgr(picture.view, y, u, v);
                for (std::size_t c = 0; c < 3; ++c)
                    worst.Take(std::abs(bgra[i * 4 + c] - exact[c]), y, u, v);
            }
            EXPECT_LE(worst.value, 1.0) << worst;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryMatrixAndRange, YuvToBgraFormula,
                         testing::Combine(testing::ValuesIn(kMatrices), testing::Bool()),
                         [](const auto& info)
                         {
                             return std::string(kMatrixNames[static_cast<std::size_t>(std::get<0>(info.param))]) +
                                    (std::get<1>(info.param) ? "Full" : "Limited");
                         });
} // namespace
