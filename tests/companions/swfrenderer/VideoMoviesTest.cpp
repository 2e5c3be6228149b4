/// @file VideoMoviesTest.cpp
/// Videos inside movies: the right picture at every frame, and what happens where their work is used up.
#include "companions/swfrenderer/VideoEntries.h"
#include "tests/companions/TestSeed.h"
#include "tests/companions/swfrenderer/EncodedVideo.h"
#include "tests/companions/swfrenderer/MoviePlayer.h"
#include "tests/companions/swfrenderer/VideoMovie.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{
constexpr int kBlocks = 10, kWidth = kBlocks * 16, kHeight = 16;
constexpr std::uint32_t kFrames = 60;
constexpr std::uint32_t kWhite = 0xFFFFFFFFU;

int LumaAt(std::uint32_t frame)
{
    return 21 + static_cast<int>(frame) * 3; // never 128
}
/// Grey of video range in full range.
int GreyOf(int luma)
{
    return std::clamp((luma - 16) * 255 / 219, 0, 255);
}
/// A whole picture at first, then one macroblock after the other.
Bytes PacketAt(std::uint32_t frame)
{
    return frame == 0 ? GreyPacket(kWidth, kHeight, LumaAt(0))
                      : ChangePacket(kWidth, kHeight, static_cast<int>(frame % kBlocks), LumaAt(frame));
}
/// Brightness of every macroblock at @p frame of the video.
std::vector<int> ExpectedAt(std::uint32_t frame)
{
    std::vector<int> levels(kBlocks, GreyOf(LumaAt(0)));
    for (std::uint32_t i = 1; i <= frame; ++i)
        levels[i % kBlocks] = GreyOf(LumaAt(i));
    return levels;
}
/// The video as number 1, and nothing on the stage.
MovieBuilder VideoMovie()
{
    MovieBuilder m;
    AddVideo(m, 1, kWidth, kHeight);
    for (std::uint32_t i = 0; i < kFrames; ++i)
        AddVideoFrame(m, 1, i, PacketAt(i));
    return m;
}
Bytes PlayingMovie()
{
    MovieBuilder m = VideoMovie();
    PlaceVideo(m, 1, 1, 0).ShowFrame();
    for (std::uint32_t i = 1; i < kFrames; ++i)
        TurnVideo(m, 1, i).ShowFrame();
    return m.File(kWidth, kHeight);
}
std::uint32_t PixelAt(const std::vector<std::uint32_t>& pixels, int block, int row = 0)
{
    return pixels.at(static_cast<std::size_t>((row * 16 + 8) * kWidth + block * 16 + 8));
}
void ExpectPicture(const std::vector<std::uint32_t>& pixels, std::uint32_t frame, int row = 0)
{
    const std::vector<int> levels = ExpectedAt(frame);
    for (int block = 0; block < kBlocks; ++block)
        EXPECT_NEAR(static_cast<int>(PixelAt(pixels, block, row) & 255), levels[static_cast<std::size_t>(block)], 2)
            << "frame " << frame << ", block " << block << ", row " << row;
}
} // namespace

TEST(VideosInMovies, ShowTheRightFrameInAnyOrder)
{
    MoviePlayer player(PlayingMovie());
    ASSERT_TRUE(player.IsOpen());
    for (std::uint32_t frame = 0; frame < kFrames; ++frame)
        ExpectPicture(player.Frame(frame), frame);
    ExpectPicture(player.Frame(kFrames + 7), 7); // the movie begins again
    TestRandom random;
    for (int i = 0; i < 200; ++i)
    {
        const std::uint32_t frame = random.Between(0, kFrames - 1);
        ExpectPicture(player.Frame(frame), frame);
    }
}

TEST(VideosInMovies, ShowSeveralOfTheirFramesAtOnce)
{
    const std::uint32_t numbers[] = {40, 7, 59, 0, 7, 65'535};
    MovieBuilder m = VideoMovie();
    for (std::uint32_t i = 0; i < 6; ++i)
        PlaceVideo(m, 1, i + 1, numbers[i], 0, static_cast<int>(i) * 16);
    const auto pixels = MoviePlayer(m.ShowFrame().File(kWidth, 6 * 16)).Frame(0);
    ASSERT_FALSE(pixels.empty());
    for (int row = 0; row < 6; ++row)
        ExpectPicture(pixels, std::min(numbers[row], kFrames - 1), row);
}

TEST(VideosInMovies, StandStillWhereTheirWorkIsUsedUpHoweverAFrameIsReached)
{
    swf::Budget budget;
    budget.videoWork = 800'000; // enough for the beginning
    const Bytes file = PlayingMovie();
    MoviePlayer forth(file, budget), back(file, budget);
    std::vector<std::vector<std::uint32_t>> pictures;
    for (std::uint32_t frame = 0; frame < kFrames; ++frame)
        pictures.push_back(forth.Frame(frame));
    std::uint32_t last = 0; // that could be reached
    while (last + 1 < kFrames && pictures[last + 1] != pictures[last])
        ++last;
    EXPECT_GT(last, 5U);
    EXPECT_LT(last, kFrames - 5);
    for (std::uint32_t frame = 0; frame < kFrames; ++frame)
        ExpectPicture(pictures[frame], std::min(frame, last));
    for (std::uint32_t frame = kFrames; frame-- > 0;)
        EXPECT_EQ(back.Frame(frame), pictures[frame]) << frame;
    for (std::uint32_t frame = 0; frame < kFrames; frame += 13)
        EXPECT_EQ(MoviePlayer(file, budget).Frame(frame), pictures[frame]) << frame;
}

TEST(VideosInMovies, AreEnteredAtTheNearestWholePicture)
{
    constexpr std::uint32_t kKeyDistance = 20, kLast = 20'000;
    MovieBuilder m;
    AddVideo(m, 1, kWidth, kHeight);
    for (std::uint32_t i = 0; i <= kLast; ++i)
        AddVideoFrame(m, 1, i, i % kKeyDistance == 0 ? PacketAt(0) : PacketAt(i % kKeyDistance));
    constexpr std::uint32_t kShown[] = {5, kLast - 1, 19, kLast, 10'013};
    PlaceVideo(m, 1, 1, kShown[0]).ShowFrame();
    for (const std::uint32_t number : kShown)
        TurnVideo(m, 1, number).ShowFrame();
    swf::Budget budget;
    budget.videoWork = 800'000; // far too little to reach them from the beginning
    MoviePlayer player(m.File(kWidth, kHeight), budget);
    for (std::uint32_t frame = 1; frame <= std::size(kShown); ++frame)
        ExpectPicture(player.Frame(frame), kShown[frame - 1] % kKeyDistance);
}

TEST(VideosInMovies, LookTheSameWhereverTheyAreEntered)
{
    constexpr int kVideoWidth = 192, kVideoHeight = 64, kCount = 70;
    struct
    {
        AVCodecID id;
        AVPixelFormat format;
        std::uint32_t number; ///< of the codec in the movie
    } const kinds[] = {{AV_CODEC_ID_FLV1, AV_PIX_FMT_YUV420P, 2},
                       {AV_CODEC_ID_FLASHSV, AV_PIX_FMT_BGR24, 3},
                       {AV_CODEC_ID_FLASHSV2, AV_PIX_FMT_BGR24, 6}};
    for (const auto& kind : kinds)
    {
        const EncodedVideo video(kind.id, kind.format, kVideoWidth, kVideoHeight, kCount, 20);
        ASSERT_EQ(video.pictures.size(), static_cast<std::size_t>(kCount)) << kind.number;
        swf::VideoStream stream;
        stream.codec = kind.number;
        stream.frames.assign(video.packets.begin(), video.packets.end());
        ASSERT_EQ(swf::EntriesOf(stream), (std::vector<std::uint32_t>{0, 20, 40, 60})) << kind.number;

        MovieBuilder m;
        AddVideo(m, 1, kVideoWidth, kVideoHeight, kind.number);
        for (std::uint32_t i = 0; i < kCount; ++i)
            AddVideoFrame(m, 1, i, video.packets[i]);
        PlaceVideo(m, 1, 1, 0).ShowFrame();
        for (std::uint32_t i = 1; i < kCount; ++i)
            TurnVideo(m, 1, i).ShowFrame();
        MoviePlayer player(m.File(kVideoWidth, kVideoHeight));
        TestRandom random;
        for (std::uint32_t i = 0; i < 3 * kCount; ++i)
        {
            const std::uint32_t frame = i < kCount ? i : random.Between(0, kCount - 1);
            const auto pixels = player.Frame(frame);
            ASSERT_EQ(pixels.size(), video.pictures[frame].size());
            int most = 0;
            for (std::size_t at = 0; at < pixels.size(); ++at)
            {
                const int sample = video.pictures[frame][at];
                const int expected = kind.format == AV_PIX_FMT_BGR24 ? sample : GreyOf(sample);
                most = std::max(most, std::abs(static_cast<int>(pixels[at] & 255) - expected));
            }
            EXPECT_LE(most, kind.format == AV_PIX_FMT_BGR24 ? 0 : 1) << kind.number << ", frame " << frame;
        }
    }
}

TEST(VideosInMovies, AreNotShownWithoutWorkForThem)
{
    swf::Budget budget;
    budget.videoWork = 0;
    const auto pixels = MoviePlayer(PlayingMovie(), budget).Frame(5);
    EXPECT_EQ(static_cast<std::size_t>(std::count(pixels.begin(), pixels.end(), kWhite)), pixels.size());
}

TEST(VideosInMovies, KeepThePictureTheyHaveWhereSeekingBackCostsTooMuch)
{
    MovieBuilder m = VideoMovie();
    for (std::uint32_t i = 0; i < 4; ++i)
        PlaceVideo(m, 1, i + 1, i % 2 == 0 ? 10 : 5, 0, static_cast<int>(i) * 16);
    swf::Budget budget;
    budget.videoWork = 1'200'000; // there, back, and not once more
    const Bytes file = m.ShowFrame().File(kWidth, 4 * 16);
    const auto pixels = MoviePlayer(file, budget).Frame(0);
    ASSERT_FALSE(pixels.empty());
    ExpectPicture(pixels, 10, 0);
    ExpectPicture(pixels, 5, 1);
    ExpectPicture(pixels, 10, 2); // on from 5
    ExpectPicture(pixels, 10, 3);
}

TEST(VideosInMovies, AreEightAtOnceInEveryFrame)
{
    constexpr std::uint32_t kStreams = 12;
    MovieBuilder m;
    for (std::uint32_t id = 1; id <= kStreams; ++id)
        AddVideoFrame(AddVideo(m, id, kWidth, kHeight), id, 0, GreyPacket(kWidth, kHeight, 20 + static_cast<int>(id)));
    for (std::uint32_t id = 1; id <= kStreams; ++id)
        PlaceVideo(m, id, id, 0, 0, static_cast<int>(id - 1) * 16);
    m.ShowFrame();
    for (std::uint32_t depth = 1; depth <= 8; ++depth) // those behind them come into view
        m.Tag(28, ByteWriter().U16(depth).bytes);
    m.ShowFrame();
    MoviePlayer player(m.File(kWidth, kStreams * 16));
    for (const std::uint32_t frame : {0U, 1U, 0U})
    {
        const auto pixels = player.Frame(frame);
        ASSERT_FALSE(pixels.empty());
        for (int row = 0; row < static_cast<int>(kStreams); ++row)
            if ((row < 8) == (frame == 0))
                EXPECT_NEAR(static_cast<int>(PixelAt(pixels, 0, row) & 255), GreyOf(21 + row), 2)
                    << frame << ' ' << row;
            else
                EXPECT_EQ(PixelAt(pixels, 0, row), kWhite) << frame << ' ' << row;
    }
}

TEST(VideosInMovies, LeaveOutPicturesLargerThanTheStreamAndThoseThatAreBroken)
{
    MovieBuilder m;
    AddVideo(m, 1, kWidth, kHeight);
    AddVideoFrame(m, 1, 0, GreyPacket(kWidth, kHeight, 60));
    AddVideoFrame(m, 1, 1, GreyPacket(kWidth * 4, kHeight * 4, 90));
    AddVideoFrame(m, 1, 2, Bytes{1, 2, 3});
    PlaceVideo(m, 1, 1, 0).ShowFrame();
    TurnVideo(m, 1, 1).ShowFrame();
    TurnVideo(m, 1, 2).ShowFrame();
    MoviePlayer player(m.File(kWidth, kHeight));
    testing::internal::CaptureStderr();
    for (const std::uint32_t frame : {2U, 0U, 1U})
        EXPECT_NEAR(static_cast<int>(PixelAt(player.Frame(frame), 3) & 255), GreyOf(60), 2) << frame;
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
