// How well the chroma key takes a foreground of known transparency off a green screen, beside FFmpeg's filter.
#include "engine/platform/PixelUtility.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/Picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <sstream>

using namespace test_support;

namespace
{
struct Color
{
    double b, g, r;
};
constexpr Color kGreen{64, 177, 0}; // the usual paint
constexpr std::uint8_t kKey[] = {64, 177, 0};

/// A green screen, lit unevenly and with noise, before which things of known shape stand.
class GreenScreen
{
public:
    static constexpr std::uint32_t kWidth = 640;
    static constexpr std::uint32_t kHeight = 360;

    GreenScreen() : m_picture{kWidth, kHeight, {}}, m_alpha(kWidth * kHeight), m_front(kWidth * kHeight)
    {
        for (std::uint32_t y = 0; y < kHeight; ++y)
            for (std::uint32_t x = 0; x < kWidth; ++x)
                Paint(x, y);
    }

    const Picture& Shot() const { return m_picture; }

    /// Mean distance of alpha from the known one, 0..1.
    double MeanAlphaError(const Picture& keyed) const
    {
        double sum = 0;
        for (std::size_t i = 0; i < m_alpha.size(); ++i)
            sum += std::abs(keyed.bgra[i * 4 + 3] / 255.0 - m_alpha[i]);
        return sum / static_cast<double>(m_alpha.size());
    }

    /// Mean of how much greener than its true colour a pixel on an edge is, in levels, weighed by how much it shows.
    double MeanRim(const Picture& keyed) const
    {
        const auto excess = [](double b, double g, double r) { return std::max(0.0, g - std::max(b, r)); };
        double sum = 0;
        double weights = 0;
        for (std::size_t i = 0; i < m_alpha.size(); ++i)
        {
            const double shows = keyed.bgra[i * 4 + 3] / 255.0;
            if (m_alpha[i] < 0.05 || m_alpha[i] > 0.95 || shows == 0)
                continue;
            const std::uint8_t* const p = &keyed.bgra[i * 4];
            const Color& front = m_front[i];
            sum += shows * std::max(0.0, excess(p[0], p[1], p[2]) - excess(front.b, front.g, front.r));
            weights += shows;
        }
        return weights > 0 ? sum / weights : 0;
    }

private:
    struct Thing
    {
        double x, y, radius;
        Color color;
        double alpha;
    };

    /// Faces, clothes, a veil; none of them is green.
    static constexpr Thing kThings[] = {{110, 110, 70, {140, 172, 224}, 1}, {260, 120, 60, {60, 44, 40}, 1},
                                        {400, 100, 65, {235, 235, 235}, 1}, {540, 120, 60, {50, 40, 200}, 1},
                                        {120, 270, 55, {180, 90, 60}, 1},   {280, 270, 60, {90, 110, 120}, 0.5},
                                        {430, 270, 50, {30, 200, 240}, 1}};

    double Noise()
    {
        m_seed = m_seed * 1664525U + 1013904223U;
        return (m_seed >> 24) / 255.0 - 0.5;
    }

    void Paint(std::uint32_t x, std::uint32_t y)
    {
        constexpr double kEdge = 4; // pixels from covered to clear
        double alpha = 0;
        Color front{};
        for (const Thing& thing : kThings)
        {
            const double inside = thing.radius - std::hypot(x - thing.x, y - thing.y);
            const double covered = std::clamp(inside / kEdge + 0.5, 0.0, 1.0) * thing.alpha;
            if (covered > alpha)
            {
                alpha = covered;
                front = thing.color;
            }
        }
        // Strands of hair: dark lines a pixel and a half wide.
        if (x > 500 && y > 220)
        {
            const double covered = std::clamp(1.25 - std::abs(std::fmod(x + y * 0.3, 14.0) - 7), 0.0, 1.0);
            if (covered > alpha)
            {
                alpha = covered;
                front = {20, 24, 34};
            }
        }
        const std::size_t i = std::size_t{y} * kWidth + x;
        m_alpha[i] = alpha;
        m_front[i] = front;
        const double light = 1 + 0.06 * (x / static_cast<double>(kWidth) - 0.5);
        const auto level = [&](double screen, double thing)
        {
            const double value = screen * light * (1 - alpha) + thing * alpha + 4 * Noise();
            return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
        };
        m_picture.bgra.push_back(level(kGreen.b, front.b));
        m_picture.bgra.push_back(level(kGreen.g, front.g));
        m_picture.bgra.push_back(level(kGreen.r, front.r));
        m_picture.bgra.push_back(255);
    }

    std::uint32_t m_seed = 1;
    Picture m_picture;
    std::vector<double> m_alpha;
    std::vector<Color> m_front; ///< colour of what stands before the screen
};

Picture KeyedByUs(const Picture& shot, double similarity, double smoothness, double spill)
{
    Picture keyed = shot;
    const tagSampleInfo info{keyed.bgra.data(), nullptr, nullptr, keyed.width, keyed.height, keyed.width * 4};
    EXPECT_TRUE(ReplaceToTransparent(&info, nullptr, kKey, similarity, smoothness, spill, 1, 1));
    return keyed;
}

/// @return none when ffmpeg is not there
std::optional<Picture> KeyedByFFmpeg(const std::filesystem::path& shot, double similarity, double blend)
{
    const std::filesystem::path result = ScratchFolder() / "keyed.png";
    std::ostringstream command;
    command << "ffmpeg -v error -y -i '" << shot.string() << "' -vf 'format=yuv444p,chromakey=0x00B140:" << similarity
            << ':' << blend << ",format=rgba' '" << result.string() << "' </dev/null";
    return std::system(command.str().c_str()) == 0 ? ReadPng(result) : std::nullopt;
}
} // namespace

TEST(KeyQuality, AlphaIsThreeHundredthsOffAtMostAndNoRimShows)
{
    const GreenScreen screen;
    const Picture keyed = KeyedByUs(screen.Shot(), 0.06, 0.22, 1);
    EXPECT_LE(screen.MeanAlphaError(keyed), 0.03);
    EXPECT_LE(screen.MeanRim(keyed), 2); // levels; without the spill pass it is ten times that
    EXPECT_GT(screen.MeanRim(KeyedByUs(screen.Shot(), 0.06, 0.22, 0)), 15);
    RecordProperty("mean_alpha_error", std::to_string(screen.MeanAlphaError(keyed)));
    RecordProperty("mean_rim", std::to_string(screen.MeanRim(keyed)));
}

TEST(KeyQuality, IsNotWorseThanFFmpegsFilterEachAtItsBestSetting)
{
    const GreenScreen screen;
    const std::filesystem::path shot = ScratchFolder() / "screen.png";
    ASSERT_TRUE(WritePng(shot, screen.Shot()));
    double ours = 1;
    double theirs = 1;
    for (const double similarity : {0.03, 0.06, 0.1})
    {
        for (const double ramp : {0.1, 0.15, 0.2, 0.3})
        {
            ours = std::min(ours, screen.MeanAlphaError(KeyedByUs(screen.Shot(), similarity, ramp, 1)));
            const std::optional<Picture> keyed = KeyedByFFmpeg(shot, similarity, ramp);
            if (!keyed)
                GTEST_SKIP() << "no ffmpeg to compare with";
            theirs = std::min(theirs, screen.MeanAlphaError(*keyed));
        }
    }
    EXPECT_LE(ours, theirs);
    RecordProperty("mean_alpha_error", std::to_string(ours));
    RecordProperty("mean_alpha_error_of_ffmpeg", std::to_string(theirs));
    std::printf("mean alpha error %.4f, FFmpeg's chromakey %.4f\n", ours, theirs);
}
