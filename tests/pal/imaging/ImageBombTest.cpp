/// @file ImageBombTest.cpp
/// Files that declare more than they hold: refused, or bounded in time and memory.
#include "tests/decoders/still/TinyGif.h"
#include "tests/pal/imaging/EncodedPictures.h"
#include "tests/pal/imaging/OpenedImage.h"
#include "tests/support/Process.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>

using namespace test_support;

namespace
{
/// Two seconds and 64 MiB over the base; a sanitizer needs more of both.
class ImageBomb : public testing::Test
{
protected:
    ImageBomb() : m_watchdog(std::chrono::seconds(kIsInstrumented ? 20 : 2))
    {
        ResetPeakResidentBytes();
        m_base = PeakResidentBytes();
    }
    ~ImageBomb() override
    {
        const std::uint64_t peak = PeakResidentBytes();
        EXPECT_TRUE(kIsInstrumented || peak < m_base + (64ULL << 20)) << peak << " over " << m_base;
    }

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    static constexpr bool kIsInstrumented = true;
#else
    static constexpr bool kIsInstrumented = false;
#endif
    Watchdog m_watchdog;
    std::uint64_t m_base;
};

Bytes Big32(std::uint32_t value)
{
    return {static_cast<std::uint8_t>(value >> 24), static_cast<std::uint8_t>(value >> 16),
            static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
}

/// @param chunks  between header and end
Bytes PngOf(std::uint32_t width, std::uint32_t height, std::uint8_t bits, std::uint8_t colorType, const Bytes& chunks)
{
    return Bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'} +
           PngChunk("IHDR", Big32(width) + Big32(height) + Bytes{bits, colorType, 0, 0, 0}) + chunks +
           PngChunk("IEND", {});
}

Bytes Deflated(std::size_t zeros)
{
    const Bytes plain(zeros);
    uLongf cb = compressBound(static_cast<uLong>(zeros));
    Bytes packed(cb);
    EXPECT_EQ(compress2(packed.data(), &cb, plain.data(), static_cast<uLong>(zeros), 9), Z_OK);
    packed.resize(cb);
    return packed;
}

TEST_F(ImageBomb, PngThatDeclaresTheLargestSideIsRefused)
{
    for (const std::uint32_t side : {65'535U, 0x7FFFFFFFU, 32'768U})
        EXPECT_FALSE(OpenedImage(PngOf(side, side, 8, 6, PngChunk("IDAT", {1, 2, 3}))).IsOpen()) << side;
    EXPECT_EQ(OpenedImage(PngOf(16'000, 16'000, 1, 0, PngChunk("IDAT", Bytes(32'000)))).Result(),
              WINCODEC_ERR_IMAGESIZEOUTOFRANGE);
}

TEST_F(ImageBomb, PngWhosePixelsUnfoldBeyondThePictureIsBounded)
{
    const Bytes packed = Deflated(30 << 20); // a picture of 8 x 8 takes 264 bytes
    m_base = PeakResidentBytes();
    const OpenedImage image(PngOf(8, 8, 8, 6, PngChunk("IDAT", packed)));
    EXPECT_FALSE(image.Pixels().IsEmpty());
}

TEST_F(ImageBomb, PngWhoseTextsUnfoldIsBounded)
{
    const Bytes packed = Deflated(30 << 20);
    Bytes chunks;
    for (int i = 0; i < 100; ++i)
        chunks = chunks + PngChunk("zTXt", Bytes{'a', 0, 0} + packed);
    chunks = chunks + PngChunk("iCCP", Bytes{'a', 0, 0} + packed) + PngChunk("IDAT", Deflated(264));
    m_base = PeakResidentBytes();
    EXPECT_FALSE(OpenedImage(PngOf(8, 8, 8, 6, chunks)).Pixels().IsEmpty());
}

TEST_F(ImageBomb, JpegThatDeclaresTheLargestSideIsRefused)
{
    Bytes jpeg = MakeJpeg(PatternPicture(16, 8));
    const Bytes marker{0xFF, 0xC0};
    const auto frame = std::search(jpeg.begin(), jpeg.end(), marker.begin(), marker.end());
    ASSERT_NE(frame, jpeg.end());
    for (int i = 5; i < 9; ++i)
        *(frame + i) = 0xFF;
    EXPECT_EQ(OpenedImage(jpeg).Result(), WINCODEC_ERR_BADHEADER); // beyond the library's own limit
}

TEST_F(ImageBomb, JpegOfHundredsOfScansIsRefused)
{
    Bytes jpeg = MakeJpeg(PatternPicture(1024, 1024), true);
    const Bytes scan{0xFF, 0xDA, 0, 8, 1, 1, 0, 1, 5, 0};
    jpeg.pop_back(); // the end of the picture
    jpeg.pop_back();
    for (int i = 0; i < 2'000; ++i)
        jpeg.insert(jpeg.end(), scan.begin(), scan.end());
    EXPECT_EQ(OpenedImage(jpeg + Bytes{0xFF, 0xD9}).Result(), WINCODEC_ERR_IMAGESIZEOUTOFRANGE);
}

TEST_F(ImageBomb, GifThatDeclaresTheLargestScreenOrFrameIsRefused)
{
    EXPECT_EQ(OpenedImage(TinyGif(65'535, 65'535).Solid(0, 0, 1, 1, 0).End().bytes).Result(),
              WINCODEC_ERR_IMAGESIZEOUTOFRANGE);
    EXPECT_EQ(OpenedImage(TinyGif(20'000, 10'000).Solid(0, 0, 1, 1, 0).End().bytes).Result(),
              WINCODEC_ERR_IMAGESIZEOUTOFRANGE);
    TinyGif gif(4, 4);
    gif.Descriptor(0, 0, 65'535, 65'535).Pixels({0, 0});
    const OpenedImage image(gif.End().bytes);
    ASSERT_TRUE(image.IsOpen());
    EXPECT_FALSE(image.Frame(0));
}

TEST_F(ImageBomb, GifOfTenThousandFramesIsReadInTime)
{
    TinyGif gif(64, 64);
    for (int i = 0; i < 10'000; ++i)
        gif.Control(1, 1).Solid(0, 0, 2, 2, 1);
    const OpenedImage image(gif.End().bytes);
    ASSERT_TRUE(image.IsOpen());
    EXPECT_EQ(image.FrameCount(), 10'000U);
    EXPECT_EQ(image.Pixels(9'999).width, 2U);
}

TEST_F(ImageBomb, OtherFormatsThatDeclareTheLargestSideAreRefused)
{
    // TIFF: one directory of the size, one strip.
    Bytes tiff = Bytes{'I', 'I', '*', 0} + Little32({8}) + Little16({8});
    for (const auto& [tag, value] : {std::pair<std::uint32_t, std::uint32_t>{256, 65'535},
                                     {257, 65'535},
                                     {258, 8},
                                     {259, 1},
                                     {262, 1},
                                     {273, 8},
                                     {278, 65'535},
                                     {279, 100}})
        tiff = tiff + Little16({tag, 4}) + Little32({1, value});
    EXPECT_EQ(OpenedImage(tiff + Little32({0}) + Bytes(100)).Result(), WINCODEC_ERR_IMAGESIZEOUTOFRANGE);
    // WebP, lossless: 14 bits for each side.
    const Bytes webp = Bytes{'R', 'I', 'F', 'F'} + Little32({30}) + Bytes{'W', 'E', 'B', 'P', 'V', 'P', '8', 'L'} +
                       Little32({18}) + Bytes{0x2F, 0xFF, 0xFF, 0xFF, 0x0F} + Bytes(13);
    EXPECT_FALSE(OpenedImage(webp).IsOpen());
    const Bytes bmp = Bytes{'B', 'M'} + Little32({0, 0, 54, 40, 30'000, 30'000}) + Little16({1, 1}) +
                      Little32({0, 0, 0, 0, 0, 0}) + Bytes(100);
    EXPECT_EQ(OpenedImage(bmp).Result(), WINCODEC_ERR_IMAGESIZEOUTOFRANGE);
}
} // namespace
