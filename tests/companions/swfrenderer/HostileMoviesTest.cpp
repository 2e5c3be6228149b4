/// @file HostileMoviesTest.cpp
/// Movies made to cost too much. Each is refused, or drawn in part; the time limit of the test program is the judge.
#include "tests/companions/swfrenderer/MovieBuilder.h"
#include "tests/companions/swfrenderer/MoviePlayer.h"

#include <gtest/gtest.h>

#include <zlib.h>

TEST(HostileMovies, ABombIsCutAtTheStatedLengthAndAHugeLengthIsRefused)
{
    MovieBuilder m;
    m.ShowFrame();
    Bytes body = m.Body(4, 4);
    const std::size_t honest = body.size();
    body.resize(std::size_t{100} << 20, 0); // packs a thousandfold
    Bytes packed(compressBound(static_cast<uLong>(body.size())));
    uLongf cb = static_cast<uLongf>(packed.size());
    compress2(packed.data(), &cb, body.data(), static_cast<uLong>(body.size()), 1);
    packed.resize(cb);
    const auto wrap = [&packed](std::uint32_t length)
    { return ByteWriter().U8('C').U8('W').U8('S').U8(8).U32(length).Raw(packed).bytes; };
    EXPECT_TRUE(MoviePlayer(wrap(static_cast<std::uint32_t>(honest + 8))).IsOpen());
    EXPECT_FALSE(MoviePlayer(wrap(0xFFFFFFFF)).IsOpen());
}

TEST(HostileMovies, ASpriteInsideItselfEnds)
{
    MovieBuilder m;
    m.Box(1, 4, 4, 0xFF0000);
    m.Sprite(2, 1, MovieBuilder().Place(1, 1).Place(2, 2).Place(2, 3).ShowFrame().tags.bytes);
    m.Place(2, 1).ShowFrame();
    MoviePlayer player(m.File(4, 4));
    ASSERT_TRUE(player.IsOpen());
    EXPECT_EQ(player.Frame(3).size(), 16U);
}

TEST(HostileMovies, TenThousandSpritesInsideEachOtherAreDrawnInPart)
{
    MovieBuilder m;
    m.Box(1, 4, 4, 0xFF0000);
    for (std::uint32_t id = 2; id < 10'002; ++id)
        m.Sprite(id, 1, MovieBuilder().Place(id - 1, 1).ShowFrame().tags.bytes);
    m.Place(10'001, 1).ShowFrame();
    MoviePlayer player(m.File(4, 4));
    ASSERT_TRUE(player.IsOpen());
    EXPECT_EQ(player.Frame(5).size(), 16U);
}

TEST(HostileMovies, AShapeOfAMillionEdgesIsReadAndDoesNotHoldTheFrameUp)
{
    ByteWriter w;
    w.U16(1).Rect(0, 400, 0, 400).U8(1).U8(0).U8(255).U8(0).U8(0).U8(0).Bits(2, 4).Bits(0, 4).Style(0, 0, 0, 1);
    for (int i = 0; i < (1 << 20); ++i)
        w.Line(i % 2 == 0 ? 400 : -400, i % 4 < 2 ? 399 : -399);
    w.Bits(0, 6).Align();
    MovieBuilder m;
    m.Tag(2, w.bytes).Place(1, 1).ShowFrame();
    MoviePlayer player(m.File(20, 20));
    ASSERT_TRUE(player.IsOpen());
    EXPECT_EQ(player.Frame(0).size(), 400U);
}

TEST(HostileMovies, ABitmapOf65535SquaredIsLeftOut)
{
    ByteWriter w;
    w.U16(1).U8(5).U16(65'535).U16(65'535).Raw({0x78, 0x9C, 0x03, 0x00, 0x00, 0x00, 0x00, 0x01});
    MovieBuilder m;
    m.Tag(20, w.bytes).Place(1, 1).ShowFrame();
    MoviePlayer player(m.File(4, 4));
    ASSERT_TRUE(player.IsOpen());
    EXPECT_EQ(player.Frame(0).size(), 16U);
}

TEST(HostileMovies, FramesThatSendEachOtherOnForEverAreLeftAlone)
{
    MovieBuilder m;
    m.Box(1, 1, 1, 0xFF0000).Place(1, 1);
    m.Tag(12, {0x81, 0x02, 0x00, 0x01, 0x00, 0x06, 0x00}).ShowFrame(); // the first to the second
    m.Tag(12, {0x81, 0x02, 0x00, 0x00, 0x00, 0x06, 0x00}).ShowFrame(); // and back
    MoviePlayer player(m.File(4, 1));
    ASSERT_TRUE(player.IsOpen());
    EXPECT_EQ(player.Frame(1'000'000).size(), 4U);
}

TEST(HostileMovies, CoordinatesBeyondEverythingAreDrawnInPart)
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

TEST(HostileMovies, AMovieCutAnywhereDoesNoHarm)
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
