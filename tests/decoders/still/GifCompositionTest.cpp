/// @file GifCompositionTest.cpp
/// Pictures of whole files, whose bytes are written here, through the platform's own service.
#include "engine/decoders/still/GifDecoder.h"

#include "tests/decoders/still/PictureFile.h"
#include "tests/decoders/still/TinyGif.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{
/// A picture as text: one letter a pixel (R, G, B, W, "." for transparent, "?" for anything else), rows apart.
std::string TextOf(ISampleBuffer* buffer)
{
    std::uint8_t* pixels = nullptr;
    if (buffer == nullptr || !buffer->GetBuffer(&pixels, nullptr))
        return "none";
    std::string text;
    for (std::uint32_t y = 0; y < buffer->GetHeight(); ++y)
    {
        text += y == 0 ? "" : "/";
        for (std::uint32_t x = 0; x < buffer->GetWidth(); ++x, pixels += 4)
        {
            std::uint32_t color = 0;
            std::memcpy(&color, pixels, 4);
            switch (color)
            {
            case 0xFFFF0000U:
                text += 'R';
                break;
            case 0xFF00FF00U:
                text += 'G';
                break;
            case 0xFF0000FFU:
                text += 'B';
                break;
            case 0xFFFFFFFFU:
                text += 'W';
                break;
            default:
                text += color >> 24 == 0 ? '.' : '?';
            }
        }
    }
    return text;
}

/// Plays a file at its own size.
class GifPlayer
{
public:
    explicit GifPlayer(const TinyGif& gif, std::uint32_t side = 4)
        : m_file(gif.bytes, "gif"), m_decoder(RefPtr<CGifDecoder>::Adopt(new CGifDecoder))
    {
        tagDecProp prop(m_file.Path(), 0);
        prop.width = side;
        opened = m_decoder->Initialize(prop);
    }
    std::string At(std::uint64_t ms)
    {
        bool flag = false;
        return TextOf(SampleBufferPtr::Adopt(m_decoder->GetClipVideoFrame(ms, flag)).Get());
    }

    bool opened = false;

private:
    PictureFile m_file;
    RefPtr<CGifDecoder> m_decoder;
};

TEST(GifComposition, FramesStandAtTheirPlacesAndStayWithoutDisposal)
{
    GifPlayer player(TinyGif(4, 2).Frame(0, 0, 0, 4, 2, 0).Frame(1, 1, 0, 2, 1, 1).Frame(0, 3, 1, 1, 1, 2).End());
    ASSERT_TRUE(player.opened);
    EXPECT_EQ(player.At(0), "RRRR/RRRR");
    EXPECT_EQ(player.At(100), "RGGR/RRRR");
    EXPECT_EQ(player.At(200), "RGGR/RRRB");
    EXPECT_EQ(player.At(300), "RRRR/RRRR");
}

TEST(GifComposition, DisposalToBackgroundClearsTheFramesRectangle)
{
    GifPlayer player(TinyGif(4, 2).Frame(1, 0, 0, 4, 2, 0).Frame(2, 1, 0, 2, 2, 1).Frame(1, 2, 1, 2, 1, 2).End());
    EXPECT_EQ(player.At(100), "RGGR/RGGR");
    EXPECT_EQ(player.At(200), "R..R/R.BB");
}

TEST(GifComposition, DisposalToPreviousBringsBackWhatWasBeneath)
{
    GifPlayer player(TinyGif(4, 2)
                         .Frame(1, 0, 0, 4, 2, 0)
                         .Frame(3, 1, 0, 2, 2, 1)
                         .Frame(3, 0, 1, 2, 1, 2)
                         .Frame(1, 3, 0, 1, 1, 3)
                         .End());
    EXPECT_EQ(player.At(100), "RGGR/RGGR");
    EXPECT_EQ(player.At(200), "RRRR/BBRR");
    EXPECT_EQ(player.At(300), "RRRW/RRRR");
}

TEST(GifComposition, TransparentPixelsShowWhatLiesBeneath)
{
    GifPlayer player(
        TinyGif(4, 2).Frame(1, 0, 0, 4, 2, 0).Control(10, 1, 3).Descriptor(0, 0, 4, 1).Pixels({1, 3, 3, 2}).End());
    EXPECT_EQ(player.At(100), "GRRB/RRRR");
}

TEST(GifComposition, CanvasAroundTheFramesIsTransparent)
{
    GifPlayer player(TinyGif(4, 2).Frame(1, 1, 1, 2, 1, 1).End());
    EXPECT_EQ(player.At(0), "..../.GG.");
    GifPlayer withoutPalette(TinyGif(4, 2, 0)
                                 .Descriptor(1, 1, 2, 1, 0x81, {0, 0, 255, 0, 255, 0, 255, 255, 255, 0, 0, 0})
                                 .Pixels({0, 1})
                                 .End());
    EXPECT_EQ(withoutPalette.At(0), "..../.BG.");
}

TEST(GifComposition, LocalPaletteCountsForItsFrameOnly)
{
    GifPlayer player(TinyGif(4, 2)
                         .Control(10, 1)
                         .Descriptor(0, 0, 4, 1, 0x81, {0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 255})
                         .Pixels({0, 1, 2, 3})
                         .Frame(1, 0, 1, 4, 1, 0)
                         .End());
    EXPECT_EQ(player.At(0), "BBBB/....");
    EXPECT_EQ(player.At(100), "BBBB/RRRR");
}

TEST(GifComposition, InterlacedRowsComeIntoOrder)
{
    // Rows are stored 0, 8, 4, 2, 6, 10, 1, 3, 5, 7, 9: here each holds its number's two lowest bits.
    TinyGif::Bytes rows;
    for (const int row : {0, 8, 4, 2, 6, 10, 1, 3, 5, 7, 9})
        rows.insert(rows.end(), 2, static_cast<std::uint8_t>(row % 4));
    GifPlayer player(TinyGif(2, 12).Control(10, 1).Descriptor(0, 0, 2, 11, 0x40).Pixels(rows).End(), 12);
    EXPECT_EQ(player.At(0), "RR/GG/BB/WW/RR/GG/BB/WW/RR/GG/BB/..");
}

TEST(GifComposition, FrameThatReachesOutsideTheScreenIsCutAndSoIsItsDisposal)
{
    GifPlayer player(TinyGif(4, 2).Frame(1, 0, 0, 4, 2, 0).Frame(2, 3, 1, 5, 5, 1).Frame(1, 100, 100, 2, 2, 2).End());
    EXPECT_EQ(player.At(100), "RRRR/RRRG");
    EXPECT_EQ(player.At(200), "RRRR/RRR.");
}

TEST(GifComposition, SavedCanvasOfTheFirstFrameInALaterRoundIsThatOfTheLastFrame)
{
    GifPlayer player(TinyGif(4, 2).Frame(3, 0, 0, 2, 1, 0).Frame(1, 2, 1, 2, 1, 1).Frame(1, 0, 1, 1, 1, 2).End());
    EXPECT_EQ(player.At(0), "RR../....");
    EXPECT_EQ(player.At(100), "..../..GG"); // restored to the empty canvas
    EXPECT_EQ(player.At(200), "..../B.GG");
    EXPECT_EQ(player.At(300), "RR../....");
    EXPECT_EQ(player.At(400), "..../B.GG"); // restored to what the round before has left
}

TEST(GifComposition, AfterAStepBackTheFrameBeforeIsShown)
{
    TinyGif gif(4, 2);
    for (std::uint8_t color = 0; color < 4; ++color)
        gif.Frame(1, color, 0, 1, 2, color);
    GifPlayer player(gif.End());
    EXPECT_EQ(player.At(300), "RGBW/RGBW");
    EXPECT_EQ(player.At(250), "RG../RG..");
    EXPECT_EQ(player.At(300), "RGBW/RGBW");
    EXPECT_EQ(player.At(0), "R.../R...");
}

TEST(GifComposition, FileWithoutATrailerOrCutInAFramePlaysWhatIsThere)
{
    TinyGif gif(32, 32);
    gif.Frame(1, 0, 0, 32, 32, 0).Frame(1, 0, 0, 32, 32, 1);
    const std::string red(32, 'R');
    const std::string green(32, 'G');
    GifPlayer whole(gif, 32);
    EXPECT_EQ(whole.At(0).substr(0, 32), red);
    EXPECT_EQ(whole.At(100).substr(31 * 33), green);
    gif.bytes.resize(gif.bytes.size() - 20); // in the last of its three blocks of codes
    GifPlayer cut(gif, 32);
    EXPECT_EQ(cut.At(0).substr(31 * 33), red);
    EXPECT_EQ(cut.At(100).substr(0, 32), green);
    EXPECT_EQ(cut.At(100).substr(31 * 33), red); // what the frame lacks is transparent
}

TEST(GifComposition, TenThousandFramesAreComposedOnceEach)
{
    TinyGif gif(16, 16);
    for (int i = 0; i < 10'000; ++i)
        gif.Control(1, 1).Solid(static_cast<std::uint16_t>(i % 16), 0, 1, 16, static_cast<std::uint8_t>(i & 3));
    GifPlayer player(gif.End(), 16);
    ASSERT_TRUE(player.opened);
    EXPECT_EQ(player.At(9'999 * 90).substr(0, 16), "RGBWRGBWRGBWRGBW");
    EXPECT_EQ(player.At(0).substr(0, 16), "R...............");
}

TEST(GifComposition, HeaderAloneIsRefused)
{
    EXPECT_FALSE(GifPlayer(TinyGif(4, 2).End()).opened);
    EXPECT_EQ(GifPlayer(TinyGif(4, 2).End()).At(0), "none");
}
} // namespace
