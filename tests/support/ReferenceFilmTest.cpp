#include "tests/support/ReferenceFilm.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace test_support;

namespace
{
void ExpectLevels(const RgbLevels& actual, double r, double g, double b)
{
    EXPECT_NEAR(actual.r, r, 1e-9);
    EXPECT_NEAR(actual.g, g, 1e-9);
    EXPECT_NEAR(actual.b, b, 1e-9);
}

/// Samples, not rounded, of a colour given as R', G', B' of 0..1: the standards' own direction.
struct Samples
{
    double y, u, v;
};
Samples SamplesOf(double r, double g, double b, const MatrixWeights& m, bool fullRange, double bits)
{
    const double luma = m.kr * r + (1 - m.kr - m.kb) * g + m.kb * b;
    const double cb = (b - luma) / (2 * (1 - m.kb)), cr = (r - luma) / (2 * (1 - m.kr));
    const double unit = std::exp2(bits - 8), top = std::exp2(bits) - 1;
    if (fullRange)
        return {luma * top, 128 * unit + cb * top, 128 * unit + cr * top};
    return {(16 + 219 * luma) * unit, (128 + 224 * cb) * unit, (128 + 224 * cr) * unit};
}
} // namespace

TEST(LevelsOfYuv, BlackGreyAndWhiteHaveNoColourInAnyMatrix)
{
    for (const MatrixWeights& matrix : {kBt601, kBt709, kBt2020})
    {
        ExpectLevels(LevelsOfYuv(16, 128, 128, 8, matrix, false), 0, 0, 0);
        ExpectLevels(LevelsOfYuv(235, 128, 128, 8, matrix, false), 255, 255, 255);
        ExpectLevels(LevelsOfYuv(0, 128, 128, 8, matrix, true), 0, 0, 0);
        ExpectLevels(LevelsOfYuv(255, 128, 128, 8, matrix, true), 255, 255, 255);
        ExpectLevels(LevelsOfYuv(64, 512, 512, 10, matrix, false), 0, 0, 0);
        ExpectLevels(LevelsOfYuv(940, 512, 512, 10, matrix, false), 255, 255, 255);
        ExpectLevels(LevelsOfYuv(1023, 512, 512, 10, matrix, true), 255, 255, 255);
    }
}

TEST(LevelsOfYuv, ValuesBeyondTheRangeAreClipped)
{
    ExpectLevels(LevelsOfYuv(0, 128, 128, 8, kBt709, false), 0, 0, 0);
    ExpectLevels(LevelsOfYuv(255, 128, 128, 8, kBt709, false), 255, 255, 255);
}

TEST(LevelsOfYuv, InvertsTheStandardsEquations)
{
    for (const MatrixWeights& matrix : {kBt601, kBt709, kBt2020})
        for (const bool fullRange : {false, true})
            for (const std::uint32_t bits : {8U, 10U})
                for (double r = 0; r <= 1; r += 0.25)
                    for (double g = 0; g <= 1; g += 0.25)
                        for (double b = 0; b <= 1; b += 0.25)
                        {
                            const Samples s = SamplesOf(r, g, b, matrix, fullRange, bits);
                            const auto whole = [](double value)
                            { return static_cast<std::uint32_t>(std::max(0.0, value) + 0.5); };
                            const RgbLevels levels =
                                LevelsOfYuv(whole(s.y), whole(s.u), whole(s.v), bits, matrix, fullRange);
                            // Half a step of luma and of each chroma, in levels.
                            const double tolerance = bits == 8 ? 1.8 : 0.45;
                            EXPECT_NEAR(levels.r, 255 * r, tolerance);
                            EXPECT_NEAR(levels.g, 255 * g, tolerance);
                            EXPECT_NEAR(levels.b, 255 * b, tolerance);
                        }
}

TEST(ReferenceFilm, OfNoFileIsNotOpen)
{
    EXPECT_FALSE(ReferenceFilm("/nonexistent/film.mp4").IsOpen());
    EXPECT_FALSE(ReadNumberedFilm("/nonexistent/film.mp4").fault.empty());
}
