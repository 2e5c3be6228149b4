/// @file ColourTest.cpp
/// Colours against the standards' formulas in double precision, and pictures that must come through untouched.
#include "tests/support/ClipFixture.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/PictureCompare.h"
#include "tests/support/ReferenceFilm.h"
#include "tests/support/TestPattern.h"

extern "C"
{
#include <libavutil/frame.h>
}

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <ostream>
#include <vector>

using namespace test_support;

namespace
{
/// A film of the colour grid, coded without loss.
struct GridFilm
{
    std::string name;
    MatrixWeights matrix;
    bool fullRange;
    std::uint32_t chroma; ///< 420, 422 or 444
    std::uint32_t bits;
    std::uint32_t block;              ///< pixels
    bool hasAlpha;                    ///< (x + 3 y) mod 256
    std::vector<AVColorSpace> tagged; ///< what the file says; empty = nothing
};
void PrintTo(const GridFilm& film, std::ostream* pStream)
{
    *pStream << film.name;
}

std::vector<GridFilm> GridFilms()
{
    struct Matrix
    {
        const char* name;
        MatrixWeights weights;
        std::vector<AVColorSpace> tagged;
    };
    const Matrix matrices[] = {{"smpte170m", kBt601, {AVCOL_SPC_SMPTE170M}},
                               {"bt470bg", kBt601, {AVCOL_SPC_BT470BG}},
                               {"bt709", kBt709, {AVCOL_SPC_BT709}},
                               {"bt2020nc", kBt2020, {AVCOL_SPC_BT2020_NCL}}};
    std::vector<GridFilm> films;
    for (const Matrix& matrix : matrices)
        for (const bool fullRange : {false, true})
            for (const std::uint32_t chroma : {420U, 422U, 444U})
                for (const std::uint32_t bits : {8U, 10U})
                    films.push_back({std::string("grid-") + matrix.name + (fullRange ? "-pc-" : "-tv-") +
                                         std::to_string(chroma) + "p" + std::to_string(bits) +
                                         (bits == 8 ? ".mp4" : ".mkv"),
                                     matrix.weights, fullRange, chroma, bits, 16, false, matrix.tagged});
    films.push_back({"grid-untagged-336.mp4", kBt601, false, 420, 8, 16, false, {}});
    films.push_back({"grid-untagged-336.avi", kBt601, false, 420, 8, 16, false, {}});
    films.push_back({"grid-untagged-756.mp4", kBt709, false, 420, 8, 36, false, {}});
    films.push_back({"alpha-yuva420p-vp9.webm", kBt709, false, 420, 8, 16, true, {AVCOL_SPC_BT709}});
    films.push_back({"alpha-yuva444p-ffv1.mkv", kBt709, false, 444, 8, 16, true, {AVCOL_SPC_BT709}});
    return films;
}

std::uint8_t Rounded(double level)
{
    return static_cast<std::uint8_t>(std::lround(level));
}

std::uint8_t AlphaAt(const GridFilm& film, std::uint32_t x, std::uint32_t y)
{
    return film.hasAlpha ? static_cast<std::uint8_t>((x + 3 * y) & 255) : 255;
}

/// What the formula gives. Where chroma is subsampled, pixels beside another block may be mixed with its chroma by
/// rights; there the colours of @p actual stand in.
Picture ExpectedGrid(const GridFilm& film, const Picture& actual)
{
    const std::uint32_t side = kGridSide * film.block, border = film.chroma == 444 ? 0 : 2;
    Picture expected{side, side, std::vector<std::uint8_t>(static_cast<std::size_t>(side) * side * 4)};
    for (std::uint32_t y = 0; y < side; ++y)
        for (std::uint32_t x = 0; x < side; ++x)
        {
            std::uint8_t* const p = expected.bgra.data() + (static_cast<std::size_t>(y) * side + x) * 4;
            const auto inside = [&](std::uint32_t i)
            { return i % film.block >= border && i % film.block < film.block - border; };
            if ((inside(x) && inside(y)) || actual.width != side || actual.height != side)
            {
                const tagGridColour colour = GridColour(x / film.block, y / film.block, film.bits);
                const RgbLevels levels =
                    LevelsOfYuv(colour.y, colour.u, colour.v, film.bits, film.matrix, film.fullRange);
                p[0] = Rounded(levels.b);
                p[1] = Rounded(levels.g);
                p[2] = Rounded(levels.r);
            }
            else
                std::copy_n(actual.At(x, y), 3, p);
            p[3] = AlphaAt(film, x, y);
        }
    return expected;
}

class GridFilmTest : public testing::TestWithParam<GridFilm>
{
protected:
    MediaServices m_services;
};

/// A film of the RGBA pattern.
struct PatternFilm
{
    std::string name;
    std::uint32_t width;
    bool hasAlpha;
};
void PrintTo(const PatternFilm& film, std::ostream* pStream)
{
    *pStream << film.name;
}

constexpr std::uint32_t kPatternHeight = 48, kPatternFrames = 4;

std::vector<PatternFilm> PatternFilms()
{
    std::vector<PatternFilm> films;
    for (const std::uint32_t width : {64U, 61U})
    {
        const std::string size = std::to_string(width);
        for (const char* const name : {"rgb-qtrle-.mov", "rgb-png-.mov", "rgb-raw-.avi", "rgb-raw-.mov",
                                       "rgb-ffv1-.mkv", "rgb-utvideo-.avi", "rgb-h264-.mp4"})
            films.push_back({std::string(name).insert(std::string(name).find('.'), size), width, false});
        for (const char* const name : {"alpha-qtrle-.mov", "alpha-png-.mov", "alpha-ffv1-.mkv", "alpha-raw-.avi"})
            films.push_back({std::string(name).insert(std::string(name).find('.'), size), width, true});
    }
    return films;
}

Picture ExpectedPattern(const PatternFilm& film, std::uint32_t frame)
{
    Picture picture{film.width, kPatternHeight, {}};
    for (std::uint32_t y = 0; y < kPatternHeight; ++y)
        for (std::uint32_t x = 0; x < film.width; ++x)
        {
            const tagPatternPixel pixel = PatternPixel(x, y, frame);
            picture.bgra.insert(picture.bgra.end(),
                                {pixel.b, pixel.g, pixel.r, film.hasAlpha ? pixel.a : std::uint8_t{255}});
        }
    return picture;
}

class PatternFilmTest : public testing::TestWithParam<PatternFilm>
{
protected:
    MediaServices m_services;
};

template <class Film> std::string NameOf(const testing::TestParamInfo<Film>& info)
{
    std::string name = info.param.name;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
    return name;
}
} // namespace

/// The films themselves: samples and tags must be what the expectation assumes.
TEST_P(GridFilmTest, IsMadeAsItsFactsSay)
{
    const GridFilm& grid = GetParam();
    QMX_REQUIRE_MEDIA(path, grid.name);
    ReferenceFilm film(path);
    ASSERT_TRUE(film.IsOpen());
    int pictures = 0;
    film.ForEach(
        [&](const ReferencePicture& picture)
        {
            const AVFrame& frame = *picture.pFrame;
            const int subX = grid.chroma == 444 ? 1 : 2, subY = grid.chroma == 420 ? 2 : 1;
            int wrong = 0;
            for (int y = 0; y < frame.height; ++y)
                for (int x = 0; x < frame.width; ++x)
                {
                    const auto column = static_cast<std::uint32_t>(x) / grid.block;
                    const auto row = static_cast<std::uint32_t>(y) / grid.block;
                    const tagGridColour colour = GridColour(column, row, grid.bits);
                    wrong += SampleOf(frame, 0, x, y) != colour.y ||
                             SampleOf(frame, 1, x / subX, y / subY) != colour.u ||
                             SampleOf(frame, 2, x / subX, y / subY) != colour.v;
                    if (grid.hasAlpha)
                        wrong += SampleOf(frame, 3, x, y) !=
                                 AlphaAt(grid, static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y));
                }
            EXPECT_EQ(wrong, 0);
            EXPECT_EQ(frame.colorspace, grid.tagged.empty() ? AVCOL_SPC_UNSPECIFIED : grid.tagged.front());
            if (!grid.tagged.empty())
            {
                EXPECT_EQ(frame.color_range, grid.fullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG);
            }
            ++pictures;
            return true;
        });
    EXPECT_EQ(pictures, 3);
}

TEST_P(GridFilmTest, ColoursAreWithinOneLevelOfTheFormula)
{
    const GridFilm& grid = GetParam();
    QMX_REQUIRE_MEDIA(path, grid.name);
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->nWidth, kGridSide * grid.block);
    ClipFixture clip(path, *info);
    for (const std::uint64_t n : {0U, 2U})
    {
        const Picture actual = clip.FrameAt(GridTime(n, info->nFrameRateNum, info->nFrameRateDen)).picture;
        EXPECT_TRUE(PicturesMatch(actual, ExpectedGrid(grid, actual), {1, 0}, grid.name));
    }
}

/// Transparency is data and not rounded at all.
TEST_P(GridFilmTest, AlphaIsExact)
{
    const GridFilm& grid = GetParam();
    QMX_REQUIRE_MEDIA(path, grid.name);
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    ASSERT_TRUE(info);
    const Picture actual = ClipFixture(path, *info).FrameAt(0).picture;
    ASSERT_EQ(actual.width, kGridSide * grid.block);
    ASSERT_EQ(actual.height, kGridSide * grid.block);
    for (std::uint32_t y = 0; y < actual.height; ++y)
        for (std::uint32_t x = 0; x < actual.width; ++x)
            ASSERT_EQ(actual.At(x, y)[3], AlphaAt(grid, x, y)) << "at " << x << ", " << y;
}

INSTANTIATE_TEST_SUITE_P(Films, GridFilmTest, testing::ValuesIn(GridFilms()), NameOf<GridFilm>);

TEST_P(PatternFilmTest, IsMadeAsItsFactsSay)
{
    const PatternFilm& pattern = GetParam();
    QMX_REQUIRE_MEDIA(path, pattern.name);
    ReferenceFilm film(path);
    ASSERT_TRUE(film.IsOpen());
    std::uint32_t pictures = 0;
    film.ForEach(
        [&](const ReferencePicture& picture)
        {
            const Picture expected = ExpectedPattern(pattern, pictures++);
            int wrong = 0;
            for (std::uint32_t y = 0; y < kPatternHeight; ++y)
                for (std::uint32_t x = 0; x < pattern.width; ++x)
                    for (int component = 0; component < (pattern.hasAlpha ? 4 : 3); ++component)
                        wrong += SampleOf(*picture.pFrame, component, static_cast<int>(x), static_cast<int>(y)) !=
                                 expected.At(x, y)[component == 3 ? 3 : 2 - component];
            EXPECT_EQ(wrong, 0) << "picture " << pictures - 1;
            return true;
        });
    EXPECT_EQ(pictures, kPatternFrames);
}

TEST_P(PatternFilmTest, KeepsItsPixelsExactly)
{
    const PatternFilm& pattern = GetParam();
    QMX_REQUIRE_MEDIA(path, pattern.name);
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    ASSERT_TRUE(info);
    ClipFixture clip(path, *info);
    for (std::uint32_t n = 0; n < kPatternFrames; ++n)
    {
        const Picture actual = clip.FrameAt(GridTime(n, info->nFrameRateNum, info->nFrameRateDen)).picture;
        EXPECT_TRUE(
            PicturesMatch(actual, ExpectedPattern(pattern, n), {}, pattern.name + " picture " + std::to_string(n)));
    }
}

INSTANTIATE_TEST_SUITE_P(Films, PatternFilmTest, testing::ValuesIn(PatternFilms()), NameOf<PatternFilm>);
