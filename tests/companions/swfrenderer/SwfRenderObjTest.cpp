/// @file SwfRenderObjTest.cpp
/// Containers, timelines and edges, by movies of a few bytes.
#include "tests/companions/swfrenderer/MovieBuilder.h"
#include "tests/companions/swfrenderer/MoviePlayer.h"
#include "tests/companions/swfrenderer/PackedMovie.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{
constexpr std::uint32_t kRed = 0xFFFF0000U, kWhite = 0xFFFFFFFFU, kBlue = 0xFF0000FFU;

/// 4 by 1 pixels, a red one that goes right by one pixel a frame, three frames.
MovieBuilder Walker()
{
    MovieBuilder m;
    m.Box(1, 1, 1, 0xFF0000).Place(1, 1).ShowFrame().Move(1, 1, 0).ShowFrame().Move(1, 2, 0).ShowFrame();
    return m;
}

std::size_t RedAt(const std::vector<std::uint32_t>& pixels)
{
    return static_cast<std::size_t>(std::find(pixels.begin(), pixels.end(), kRed) - pixels.begin());
}
} // namespace

TEST(SwfRenderObj, TellsWhatTheMovieSaysOfItself)
{
    const MoviePlayer player(Walker().File(4, 1));
    ASSERT_TRUE(player.IsOpen());
    tagSWFMovieInfo info;
    ASSERT_EQ(player->GetMovieInfo(&info), S_OK);
    // Copies: the record is packed, and references to its doubles would not be aligned.
    EXPECT_EQ(double{info.dWidth}, 4);
    EXPECT_EQ(double{info.dHeight}, 1);
    EXPECT_EQ(double{info.dFrameRate}, 25);
    EXPECT_EQ(info.nFrameCount, 3U);
    EXPECT_EQ(info.nVersion, 8U);
    info.cbSize = 60;
    EXPECT_EQ(player->GetMovieInfo(&info), E_INVALIDARG);
    EXPECT_EQ(player->GetMovieInfo(nullptr), E_INVALIDARG);
}

TEST(SwfRenderObj, PlaysAndBeginsAgainInWhateverOrderItIsAsked)
{
    MoviePlayer player(Walker().File(4, 1));
    for (const std::uint32_t index : {0U, 2U, 1U, 5U, 3U, 0U, 4'000'000'000U, 7U})
        EXPECT_EQ(RedAt(player.Frame(index)), index % 3) << index;
}

TEST(SwfRenderObj, OpensAllThreeContainers)
{
    const Bytes body = Walker().Body(4, 1);
    const auto length = static_cast<std::uint32_t>(body.size() + 8);
    MoviePlayer zipped(ZlibMovie(body, length));
    EXPECT_EQ(RedAt(zipped.Frame(2)), 2U);

    MoviePlayer squeezed(LzmaMovie(body, length));
    EXPECT_EQ(RedAt(squeezed.Frame(1)), 1U);
}

TEST(SwfRenderObj, UnpacksNoMoreThanTheHeaderStates)
{
    MovieBuilder tail = Walker();
    tail.Background(0x0000FF).ShowFrame();
    const Bytes body = tail.Body(4, 1);
    const auto length = static_cast<std::uint32_t>(Walker().Body(4, 1).size() + 8 - 2); // without the end tag
    MoviePlayer player(ZlibMovie(body, length));
    ASSERT_TRUE(player.IsOpen());
    EXPECT_EQ(player->GetFrameCount(), 3U);
}

TEST(SwfRenderObj, RefusesWhatIsNoMovie)
{
    Bytes file = Walker().File(4, 1);
    EXPECT_FALSE(MoviePlayer(Bytes()).IsOpen());
    EXPECT_FALSE(MoviePlayer(Bytes(file.begin(), file.begin() + 12)).IsOpen());
    file[0] = 'G';
    EXPECT_FALSE(MoviePlayer(file).IsOpen());
    file[0] = 'F';
    file[3] = 51;
    EXPECT_FALSE(MoviePlayer(file).IsOpen());
    file[3] = 50;
    EXPECT_TRUE(MoviePlayer(file).IsOpen());
    EXPECT_FALSE(MoviePlayer(MovieBuilder().Background(0).File(4, 1)).IsOpen()) << "no frame";
    EXPECT_FALSE(MoviePlayer(Walker().File(0, 1)).IsOpen());
}

TEST(SwfRenderObj, TurnsTheRowsByHalfATurnWhenAskedTo)
{
    MoviePlayer player(Walker().File(4, 1));
    EXPECT_EQ(RedAt(player.Frame(0)), 0U);
    player->SetRenderFlag(kSWFRenderHalfTurn);
    EXPECT_EQ(RedAt(player.Frame(0)), 3U);
}

TEST(SwfRenderObj, ScalesTheStageToTheSizeAskedFor)
{
    MoviePlayer player(Walker().File(4, 1));
    player->SetRenderSize(8, 2);
    const auto pixels = player.Frame(1);
    ASSERT_EQ(pixels.size(), 16U);
    EXPECT_EQ(std::count(pixels.begin(), pixels.end(), kRed), 4);
    EXPECT_EQ(pixels[2], kRed);
    EXPECT_EQ(pixels[8 + 3], kRed);
}

TEST(SwfRenderObj, RefusesSizesBeyondTheLimits)
{
    MoviePlayer player(Walker().File(4, 1));
    player->SetRenderSize(20'000, 10);
    EXPECT_TRUE(player.Frame(0).empty());
    player->SetRenderSize(16'000, 16'000);
    EXPECT_TRUE(player.Frame(0).empty());
    player->SetRenderSize(0, 0);
    EXPECT_EQ(player.Frame(0).size(), 4U);
}

TEST(SwfRenderObj, LeavesNoSeamBetweenNeighboursOfAShape)
{
    // A blue and a red half of a square, met at a steep diagonal: no white of the background may show through.
    ByteWriter w;
    w.U16(1).Rect(0, 400, 0, 400).U8(2).U8(0).U8(255).U8(0).U8(0).U8(0).U8(0).U8(0).U8(255).U8(0);
    w.Bits(2, 4).Bits(0, 4);
    w.Style(0, 0, 0, 1)
        .Line(130, 0)
        .Style(130, 0, 2, 1)
        .Line(137, 400)
        .Style(267, 400, 0, 1)
        .Line(-267, 0)
        .Line(0, -400);
    w.Style(130, 0, 0, 2).Line(270, 0).Line(0, 400).Line(-133, 0).Bits(0, 6).Align();
    MovieBuilder m;
    m.Tag(2, w.bytes).Place(1, 1).ShowFrame();
    MoviePlayer player(m.File(20, 20));
    std::size_t mixed = 0;
    for (const std::uint32_t p : player.Frame(0))
    {
        const std::uint32_t red = p >> 16 & 255, green = p >> 8 & 255, blue = p & 255;
        EXPECT_EQ(green, 0U);
        EXPECT_NEAR(red + blue, 255, 1);
        mixed += red != 0 && blue != 0 ? 1 : 0;
    }
    EXPECT_GT(mixed, 15U);
}

TEST(SwfRenderObj, CoversPixelsByTheirExactArea)
{
    MovieBuilder m;
    m.Background(0).Box(1, 1, 1, 0xFFFFFF);
    m.Tag(26, ByteWriter().U8(6).U16(1).U16(1).Translation(15, 5).bytes).ShowFrame(); // 3/4 and 1/4 of a pixel
    MoviePlayer player(m.File(2, 2));
    const auto pixels = player.Frame(0);
    ASSERT_EQ(pixels.size(), 4U);
    EXPECT_NEAR(pixels[0] & 255, 255 * 0.25 * 0.75, 1);
    EXPECT_NEAR(pixels[1] & 255, 255 * 0.75 * 0.75, 1);
    EXPECT_NEAR(pixels[2] & 255, 255 * 0.25 * 0.25, 1);
    EXPECT_NEAR(pixels[3] & 255, 255 * 0.75 * 0.25, 1);
}

TEST(SwfRenderObj, KeepsSpritesRunningWhileTheRootLoops)
{
    // The sprite has two frames, the root three; the sprite is made by the first and lives on.
    const MovieBuilder inner = MovieBuilder().Place(1, 1).ShowFrame().Move(1, 1, 0).ShowFrame();
    MovieBuilder m;
    m.Box(1, 1, 1, 0xFF0000).Sprite(2, 2, inner.tags.bytes).Place(2, 1).ShowFrame().ShowFrame().ShowFrame();
    MoviePlayer player(m.File(4, 1));
    for (std::uint32_t index = 0; index < 12; ++index)
        EXPECT_EQ(RedAt(player.Frame(index)), index % 2) << index;
}

TEST(SwfRenderObj, ObeysStopAndGotoOfFrames)
{
    MovieBuilder stops;
    stops.Box(1, 1, 1, 0xFF0000).Place(1, 1).ShowFrame().Move(1, 1, 0);
    stops.Tag(12, {0x07, 0x00}).ShowFrame().Move(1, 2, 0).ShowFrame(); // stop
    MoviePlayer stopped(stops.File(4, 1));
    EXPECT_EQ(RedAt(stopped.Frame(9)), 1U);

    MovieBuilder jumps;
    jumps.Box(1, 1, 1, 0xFF0000).Place(1, 1).ShowFrame().Move(1, 1, 0).ShowFrame().Move(1, 2, 0);
    jumps.Tag(12, {0x81, 0x02, 0x00, 0x01, 0x00, 0x06, 0x00}).ShowFrame(); // to the second frame, and play
    MoviePlayer jumped(jumps.File(4, 1));
    const std::uint32_t expected[] = {0, 1, 1, 1};
    for (std::uint32_t index = 0; index < 4; ++index)
        EXPECT_EQ(RedAt(jumped.Frame(index)), expected[index]) << index;
}

TEST(SwfRenderObj, SetsPropertiesByConstantValues)
{
    MovieBuilder m;
    ByteWriter named; // placed with a name
    named.U8(0x26).U16(1).U16(2).Translation(0, 0).Raw({'a', 0});
    m.Box(1, 1, 1, 0xFF0000).Sprite(2, 1, MovieBuilder().Place(1, 1).ShowFrame().tags.bytes).Tag(26, named.bytes);
    ByteWriter actions; // push "a", 0 (x), 3; set property
    const Bytes pushed = ByteWriter().U8(0).Raw({'a', 0}).U8(7).U32(0).U8(7).U32(3).bytes;
    actions.U8(0x96).U16(static_cast<std::uint32_t>(pushed.size())).Raw(pushed).U8(0x23).U8(0);
    m.Tag(12, actions.bytes).ShowFrame();
    MoviePlayer player(m.File(4, 1));
    EXPECT_EQ(RedAt(player.Frame(0)), 3U);
}

TEST(SwfRenderObj, ShowsWhiteWhereNoBackgroundIsSet)
{
    MoviePlayer player(Walker().File(4, 1));
    EXPECT_EQ(player.Frame(0)[3], kWhite);
    MoviePlayer blue(MovieBuilder().Background(0x0000FF).ShowFrame().File(1, 1));
    EXPECT_EQ(blue.Frame(0)[0], kBlue);
}

TEST(SwfRenderObj, AnswersWithoutAMovie)
{
    const auto pMovie = RefPtr<ISWFRenderObj>::Adopt(CreateSWFRenderObj());
    const tagSWFFrameInfo* pInfo = nullptr;
    const std::uint8_t* pPixels = nullptr;
    tagSWFMovieInfo info;
    EXPECT_EQ(pMovie->RenderFrame(0, &pInfo, &pPixels), E_FAIL);
    EXPECT_EQ(pMovie->RenderFrame(0, nullptr, &pPixels), E_POINTER);
    EXPECT_EQ(pMovie->GetMovieInfo(&info), E_FAIL);
    EXPECT_EQ(pMovie->OpenMovie(nullptr), E_INVALIDARG);
    EXPECT_EQ(pMovie->OpenMovie(L"no such movie.swf"), E_FAIL);
    EXPECT_EQ(pMovie->GetFrameCount(), 0U);
}
