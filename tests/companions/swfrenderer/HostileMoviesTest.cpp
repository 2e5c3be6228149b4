/// @file HostileMoviesTest.cpp
/// Movies made to cost too much. Each is refused, or drawn as far as its budget goes: within 256 MiB, and within a
/// number of operations, which is what bounds the time. The clock is a watchdog for what nobody counted.
#include "tests/companions/swfrenderer/HostileMovies.h"
#include "tests/companions/swfrenderer/MoviePlayer.h"
#include "tests/companions/swfrenderer/PackedMovie.h"
#include "tests/companions/swfrenderer/PeakMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <iostream>
#include <string>

namespace
{
constexpr std::size_t kMost = std::size_t{256} << 20;
constexpr double kWatchdog = 60; ///< seconds of all processors, with sanitizers; two are meant without

/// What programs give a movie; where nothing is optimised, a share of the time, and all of the memory.
swf::Budget FullBudget()
{
    swf::Budget budget;
#if !defined(NDEBUG)
    budget.tickWork /= 32;
    budget.frameWork /= 32;
    budget.frameEdges /= 4;
    budget.frameCells /= 32;
    budget.readSteps /= 4;
    budget.videoWork /= 4;
#endif
    return budget;
}

constexpr std::uint32_t kRed = 0xFFFF0000U, kWhite = 0xFFFFFFFFU;

class EveryHostileMovie : public testing::TestWithParam<HostileMovie>
{
};

std::string NameOf(const testing::TestParamInfo<HostileMovie>& info)
{
    return info.param.name;
}

MovieBuilder OneBox()
{
    return MovieBuilder().Box(1, 4, 4, 0xFF0000).Place(1, 1).ShowFrame();
}
} // namespace

TEST_P(EveryHostileMovie, StaysWithinItsMemory)
{
    const Bytes file = GetParam().make();
    const std::clock_t start = std::clock();
    PeakMemory::Restart();
    {
        MoviePlayer player(file, FullBudget());
        ASSERT_TRUE(player.IsOpen());
        player->SetRenderSize(1280, 720);
        const tagSWFFrameInfo* pInfo = nullptr;
        const std::uint8_t* pPixels = nullptr;
        for (const std::uint32_t index : GetParam().frames)
            EXPECT_EQ(player->RenderFrame(index, &pInfo, &pPixels), S_OK) << index;
    }
    EXPECT_LT(PeakMemory::Get(), kMost);
    const double took = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    EXPECT_LT(took, kWatchdog);
    std::cout << GetParam().name << ": " << (PeakMemory::Get() >> 20) << " MiB, " << took << " s of all processors\n";
}

INSTANTIATE_TEST_SUITE_P(Of, EveryHostileMovie, testing::ValuesIn(HostileMovies()), NameOf);

TEST(HostileBombs, AreCutAtTheStatedLengthAndRefusedWhereThatIsHuge)
{
    Bytes body = OneBox().Body(4, 4);
    const auto honest = static_cast<std::uint32_t>(body.size() + 8);
    body.resize(std::size_t{100} << 20, 0); // packs a thousandfold
    for (const bool lzma : {false, true})
    {
        const Bytes file = lzma ? LzmaMovie(body, honest) : ZlibMovie(body, honest);
        const auto claim = [&file](std::uint32_t length)
        {
            Bytes claimed = file;
            for (std::size_t i = 0; i < 4; ++i)
                claimed[4 + i] = static_cast<std::uint8_t>(length >> (8 * i));
            return claimed;
        };
        PeakMemory::Restart();
        EXPECT_TRUE(MoviePlayer(file).IsOpen());
        EXPECT_LT(PeakMemory::Get(), std::size_t{4} << 20);
        EXPECT_TRUE(MoviePlayer(claim(64U << 20)).IsOpen());
        EXPECT_FALSE(MoviePlayer(claim((64U << 20) + 1)).IsOpen());
        EXPECT_FALSE(MoviePlayer(claim(0xFFFFFFFF)).IsOpen());
        EXPECT_LT(PeakMemory::Get(), kMost);
    }
}

TEST(HostileShapes, AreDrawnWithAMillionEdges)
{
    for (const int side : {100, 720})
    {
        MoviePlayer player(SquareOfAMillionEdges(side));
        ASSERT_TRUE(player.IsOpen());
        const auto pixels = player.Frame(0);
        ASSERT_EQ(pixels.size(), static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
        // Half of the first column is cut away by teeth that are finer than its pixels; everything else is red.
        std::size_t different = 0;
        for (std::size_t i = 0; i < pixels.size(); ++i)
            if (i % static_cast<std::size_t>(side) != 0)
                different += pixels[i] == kRed ? 0 : 1;
            else
                EXPECT_NEAR(pixels[i] & 255, 128, 40) << i;
        EXPECT_EQ(different, 0U);
    }
    // An odd number of times round is as good as once.
    const auto once = MoviePlayer(EdgesAcross(4)).Frame(0);
    EXPECT_GT(std::count_if(once.begin(), once.end(), [](std::uint32_t p) { return p != kWhite; }), 0);
    EXPECT_EQ(MoviePlayer(EdgesAcross((1 << 20) - 4)).Frame(0), once);
}

TEST(HostileBitmaps, Of65535SquaredAreLeftOut)
{
    MovieBuilder m;
    m.Box(1, 4, 4, 0xFF0000).Place(1, 1);
    m.Tag(20, ByteWriter().U16(2).U8(5).U16(65'535).U16(65'535).Raw(Zlib(Bytes(64, 0))).bytes).Place(2, 2);
    ByteWriter jpeg; // a frame header, a scan header, nothing else
    jpeg.U16(3).U8(0xFF).U8(0xD8).U8(0xFF).U8(0xC0).U8(0).U8(11).U8(8).U8(255).U8(255).U8(255).U8(255).U8(1);
    jpeg.U8(1).U8(0x11).U8(0).U8(0xFF).U8(0xDA).U8(0).U8(8).U8(1).U8(1).U8(0).U8(0).U8(63).U8(0).U8(0xFF).U8(0xD9);
    m.Tag(21, jpeg.bytes).Place(3, 3).ShowFrame();
    PeakMemory::Restart();
    MoviePlayer player(m.File(4, 4));
    ASSERT_TRUE(player.IsOpen());
    EXPECT_EQ(player.Frame(0), std::vector<std::uint32_t>(16, kRed));
    EXPECT_LT(PeakMemory::Get(), std::size_t{4} << 20);
}

TEST(HostileMovie, WithCoordinatesBeyondEverythingIsDrawnInPart)
{
    ByteWriter w;
    w.U16(1).Rect(-500'000, 500'000, -500'000, 500'000).U8(1).U8(0).U8(255).U8(0).U8(0).U8(0).Bits(2, 4).Bits(0, 4);
    w.Style(-500'000, -500'000, 0, 1);
    for (int i = 0; i < 2'000; ++i)
        w.Line(65'000, i % 2 == 0 ? 65'000 : -64'000);
    w.Bits(0, 6).Align();
    MovieBuilder m;
    m.Tag(2, w.bytes);
    ByteWriter big; // scaled by thousands
    big.U8(6).U16(1).U16(1).Align().Bits(1, 1).Bits(31, 5).Bits(0x3FFFFFFF, 31).Bits(0x3FFFFFFF, 31).Bits(0, 1);
    big.Bits(0, 5).Align();
    m.Tag(26, big.bytes).ShowFrame();
    MoviePlayer player(m.File(50, 50));
    ASSERT_TRUE(player.IsOpen());
    EXPECT_EQ(player.Frame(0).size(), 2'500U);
}

TEST(HostileMovie, CutAnywhereDoesNoHarm)
{
    MovieBuilder m;
    m.Background(0x123456).Box(1, 3, 3, 0xFF0000).Sprite(2, 1, MovieBuilder().Place(1, 1).ShowFrame().tags.bytes);
    m.Place(2, 1).ShowFrame().Move(1, 1, 1).ShowFrame();
    const Bytes file = m.File(4, 4);
    for (std::size_t cb = 0; cb < file.size(); ++cb)
    {
        MoviePlayer player(std::span<const std::uint8_t>(file).first(cb));
        if (player.IsOpen())
        {
            EXPECT_EQ(player.Frame(1).size(), 16U) << cb;
        }
    }
}

TEST(Budgets, OfMemoryLeaveDefinitionsOut)
{
    swf::Budget budget;
    budget.bytes = 400;
    MoviePlayer poor(OneBox().File(4, 4), budget);
    ASSERT_TRUE(poor.IsOpen());
    EXPECT_EQ(poor.Frame(0), std::vector<std::uint32_t>(16, kWhite));
}

TEST(Budgets, OfPlayingMakeTheMovieStandStillAtTheSameFrameHoweverItIsReached)
{
    MovieBuilder m; // never the same state twice
    m.Box(1, 1, 1, 0xFF0000);
    ByteWriter on;
    m.Place(1, 1);
    for (int x = 0; x < 64; ++x)
        m.Move(1, x, 0).ShowFrame();
    swf::Budget budget;
    budget.tickWork = 600;
    MoviePlayer byStep(m.File(64, 1), budget), atOnce(m.File(64, 1), budget);
    std::vector<std::uint32_t> last;
    for (std::uint32_t index = 0; index < 64; ++index)
        last = byStep.Frame(index);
    EXPECT_EQ(atOnce.Frame(63), last);
    EXPECT_EQ(last[63], kWhite);
    EXPECT_EQ(std::count(last.begin(), last.end(), kRed), 1);
    EXPECT_EQ(atOnce.Frame(0)[0], kRed);
}

TEST(Budgets, OfDrawingLeaveLaterObjectsOutAndEveryFrameHasItsOwn)
{
    MovieBuilder m;
    m.Box(1, 100, 100, 0xFF0000).Box(2, 100, 100, 0x0000FF);
    for (std::uint32_t depth = 1; depth < 400; ++depth)
        m.Place(1, depth);
    m.Place(2, 400).ShowFrame();
    swf::Budget budget;
    EXPECT_EQ(MoviePlayer(m.File(100, 100), budget).Frame(0)[0], 0xFF0000FFU);
    budget.frameWork = 0; // then as much as 256 canvases
    MoviePlayer player(m.File(100, 100), budget);
    EXPECT_EQ(player.Frame(0)[0], kRed);
    EXPECT_EQ(player.Frame(1)[0], kRed);
    budget.frameEdges = 4;
    EXPECT_EQ(MoviePlayer(m.File(100, 100), budget).Frame(0)[0], kWhite);
}
