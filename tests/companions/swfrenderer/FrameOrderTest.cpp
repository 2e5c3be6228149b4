/// @file FrameOrderTest.cpp
/// A frame looks the same whatever was asked for before it, at whatever size, and however many threads draw it.
#include "companions/swfrenderer/Parallel.h"
#include "tests/companions/TestSeed.h"
#include "tests/companions/swfrenderer/GeneratedMovie.h"
#include "tests/companions/swfrenderer/MoviePlayer.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{
std::vector<std::uint32_t> FreshFrame(const Bytes& file, std::uint32_t index, std::uint32_t width, std::uint32_t height)
{
    MoviePlayer player(file);
    player->SetRenderSize(width, height);
    return player.Frame(index);
}
/// Colours besides the background's.
bool ShowsSomething(const std::vector<std::uint32_t>& pixels)
{
    return std::any_of(pixels.begin(), pixels.end(), [&](std::uint32_t p) { return p != pixels[0]; });
}
} // namespace

TEST(FrameOrder, DoesNotMatterToGeneratedMovies)
{
    TestRandom random;
    constexpr int kMovies = 26;
    int shown = 0;
    for (int i = 0; i < kMovies; ++i)
    {
        const std::uint32_t seed = random.Between(0, 0x7FFFFFFF);
        SCOPED_TRACE(seed);
        const Bytes file = GeneratedMovie(seed);
        MoviePlayer player(file);
        ASSERT_TRUE(player.IsOpen());
        for (int request = 0; request < 8; ++request)
        {
            const bool large = random.Between(0, 3) == 0;
            const std::uint32_t width = large ? 200 : 120, height = large ? 130 : 90;
            const std::uint32_t index = random.Between(0, request == 7 ? 5'000 : 30);
            player->SetRenderSize(width, height);
            const auto pixels = player.Frame(index);
            ASSERT_EQ(pixels.size(), std::size_t{width} * height);
            EXPECT_EQ(pixels, FreshFrame(file, index, width, height)) << index << " at " << width;
            shown += request == 0 && ShowsSomething(pixels) ? 1 : 0;
        }
    }
    EXPECT_GT(shown, kMovies * 9 / 10);
}

TEST(FrameOrder, HoldsForAnyNumberOfBands)
{
    TestRandom random;
    for (int i = 0; i < 6; ++i)
    {
        const std::uint32_t seed = random.Between(0, 0x7FFFFFFF), index = random.Between(0, 20);
        SCOPED_TRACE(seed);
        const Bytes file = GeneratedMovie(seed);
        swf::SetBandCount(1);
        const auto alone = FreshFrame(file, index, 640, 480);
        for (const std::uint32_t bands : {2U, 3U, 7U, 64U, 0U})
        {
            swf::SetBandCount(bands);
            EXPECT_EQ(FreshFrame(file, index, 640, 480), alone) << bands;
        }
    }
    swf::SetBandCount(0);
}
