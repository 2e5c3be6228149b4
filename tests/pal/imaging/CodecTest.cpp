/// @file CodecTest.cpp
/// What each format's decoder does with files whose bytes are made here.
#include "tests/pal/imaging/EncodedPictures.h"
#include "tests/pal/imaging/OpenedImage.h"
#include "tests/support/PictureCompare.h"

#include <propidl.h>

#include <gtest/gtest.h>

#include <algorithm>

using namespace test_support;

namespace
{
/// Pixels as hexadecimal AARRGGBB, rows apart.
std::vector<std::vector<std::uint32_t>> ColorsOf(const Picture& picture)
{
    std::vector<std::vector<std::uint32_t>> rows(picture.IsEmpty() ? 0 : picture.height);
    for (std::uint32_t y = 0; y < rows.size(); ++y)
    {
        for (std::uint32_t x = 0; x < picture.width; ++x)
        {
            const std::uint8_t* const p = picture.At(x, y);
            rows[y].push_back(static_cast<std::uint32_t>(p[3]) << 24 | static_cast<std::uint32_t>(p[2]) << 16 |
                              static_cast<std::uint32_t>(p[1]) << 8 | p[0]);
        }
    }
    return rows;
}
using Rows = std::vector<std::vector<std::uint32_t>>;

constexpr std::uint32_t kRed = 0xFFFF0000U;
constexpr std::uint32_t kGreen = 0xFF00FF00U;
constexpr std::uint32_t kBlue = 0xFF0000FFU;
constexpr std::uint32_t kWhite = 0xFFFFFFFFU;

// ---- orientation -------------------------------------------------------------------------------------------------

TEST(Orientation, IsReadFromEveryFormatThatCarriesIt)
{
    const Picture picture = PatternPicture(16, 8);
    for (USHORT n = 1; n <= 8; ++n)
    {
        for (const bool bigEndian : {false, true})
        {
            const Bytes block = ExifBlock(n, bigEndian);
            EXPECT_EQ(OpenedImage(JpegWithExif(MakeJpeg(picture), block)).Orientation(), n);
            EXPECT_EQ(OpenedImage(PngWithExif(MakePng(picture), block, false)).Orientation(), n);
            EXPECT_EQ(OpenedImage(PngWithExif(MakePng(picture), block, true)).Orientation(), n);
            EXPECT_EQ(OpenedImage(ExtendedWebp(MakeWebp(picture), 16, 8, block)).Orientation(), n);
            const Bytes marked = Bytes{'E', 'x', 'i', 'f', 0, 0} + block;
            EXPECT_EQ(OpenedImage(ExtendedWebp(MakeWebp(picture), 16, 8, marked)).Orientation(), n);
        }
        TiffOptions options;
        options.orientation = n;
        const OpenedImage tiff(MakeTiff(picture, options));
        EXPECT_EQ(tiff.Orientation(), n);
        EXPECT_TRUE(PicturesMatch(tiff.Pixels(), picture, {}, "stored")); // as it is stored, whatever it is turned to
    }
}

TEST(Orientation, IsNotThereWhenTheFileDoesNotSayOrSaysNonsense)
{
    const Picture picture = PatternPicture(16, 8);
    EXPECT_EQ(OpenedImage(MakeJpeg(picture)).Orientation(), 0);
    EXPECT_EQ(OpenedImage(MakePng(picture)).Orientation(), 0);
    EXPECT_EQ(OpenedImage(MakeWebp(picture)).Orientation(), 0);
    EXPECT_EQ(OpenedImage(MakeTiff(picture)).Orientation(), 0);
    for (const std::uint16_t n : std::initializer_list<std::uint16_t>{0, 9, 256, 65535})
        EXPECT_EQ(OpenedImage(JpegWithExif(MakeJpeg(picture), ExifBlock(n))).Orientation(), 0) << n;
    Bytes block = ExifBlock(6);
    for (std::size_t cb = 0; cb < block.size(); ++cb) // cut anywhere: the picture still opens
    {
        const OpenedImage image(
            JpegWithExif(MakeJpeg(picture), Bytes(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(cb))));
        EXPECT_TRUE(image.IsOpen());
        EXPECT_FALSE(image.Pixels().IsEmpty());
    }
}

TEST(Orientation, IsAFramesPropertyUnderAnyLetterCase)
{
    const OpenedImage image(JpegWithExif(MakeJpeg(PatternPicture(8, 8)), ExifBlock(6)));
    ComPtr<IWICMetadataQueryReader> pReader;
    ASSERT_EQ(image.Frame()->GetMetadataQueryReader(pReader.Put()), S_OK);
    PROPVARIANT value;
    PropVariantInit(&value);
    EXPECT_EQ(pReader->GetMetadataByName(L"system.photo.ORIENTATION", &value), S_OK);
    EXPECT_EQ(value.vt, VT_UI2);
    EXPECT_EQ(value.uiVal, 6);
    PropVariantInit(&value);
    EXPECT_EQ(pReader->GetMetadataByName(L"System.Photo.Orientation", nullptr), S_OK);
    EXPECT_EQ(pReader->GetMetadataByName(L"System.Photo.ISOSpeed", &value), WINCODEC_ERR_PROPERTYNOTFOUND);
    EXPECT_EQ(value.vt, VT_EMPTY);
    EXPECT_EQ(pReader->GetMetadataByName(nullptr, &value), E_INVALIDARG);
    GUID format = GUID_NULL;
    EXPECT_EQ(pReader->GetContainerFormat(&format), S_OK);
    EXPECT_EQ(format, GUID_ContainerFormatJpeg);
    EXPECT_EQ(image->GetMetadataQueryReader(pReader.Put()), WINCODEC_ERR_UNSUPPORTEDOPERATION);
}

// ---- JPEG --------------------------------------------------------------------------------------------------------

TEST(JpegFile, BaselineAndProgressiveGiveThePicture)
{
    const Picture flat{16, 8, std::vector<std::uint8_t>(16 * 8 * 4, 200)};
    for (const bool progressive : {false, true})
    {
        Picture expected = flat;
        for (std::size_t i = 3; i < expected.bgra.size(); i += 4)
            expected.bgra[i] = 255;
        EXPECT_TRUE(PicturesMatch(OpenedImage(MakeJpeg(flat, progressive)).Pixels(), expected, {1, 0}, "flat"));
    }
}

TEST(JpegFile, InksOfAnAdobeProgramAreTakenAsInverted)
{
    Bytes inks;
    for (int i = 0; i < 64; ++i)
        inks = inks + Bytes{255, 0, 255, 128}; // full light in cyan and yellow, none in magenta, half in black
    const Picture picture = OpenedImage(MakeCmykJpeg(8, 8, inks)).Pixels();
    ASSERT_FALSE(picture.IsEmpty());
    EXPECT_NEAR(picture.At(3, 3)[2], 128, 3); // red
    EXPECT_NEAR(picture.At(3, 3)[1], 0, 3);
    EXPECT_NEAR(picture.At(3, 3)[0], 128, 3);
    EXPECT_EQ(picture.At(3, 3)[3], 255);
}

TEST(JpegFile, TwelveBitsAreRefused)
{
    Bytes jpeg = MakeJpeg(PatternPicture(16, 8));
    const Bytes marker{0xFF, 0xC0};
    const auto frame = std::search(jpeg.begin(), jpeg.end(), marker.begin(), marker.end());
    ASSERT_NE(frame, jpeg.end());
    *(frame + 4) = 12;
    EXPECT_EQ(OpenedImage(jpeg).Result(), WINCODEC_ERR_BADHEADER);
}

TEST(JpegFile, CutPictureIsShownInPart)
{
    Bytes jpeg = MakeJpeg(PatternPicture(64, 64));
    jpeg.resize(jpeg.size() * 3 / 4);
    EXPECT_FALSE(OpenedImage(jpeg).Pixels().IsEmpty());
}

// ---- PNG ---------------------------------------------------------------------------------------------------------

TEST(PngFile, InterlacedOrNotGivesEveryPixel)
{
    for (const auto& [width, height] : {std::pair{1U, 1U}, {2U, 3U}, {33U, 17U}})
    {
        const Picture picture = PatternPicture(width, height, -1);
        EXPECT_TRUE(PicturesMatch(OpenedImage(MakePng(picture)).Pixels(), picture, {}, "plain"));
        EXPECT_TRUE(PicturesMatch(OpenedImage(MakePng(picture, true)).Pixels(), picture, {}, "interlaced"));
    }
}

TEST(PngFile, RowsBeforeTheDamageStayAndTheOthersAreTransparent)
{
    Picture picture = PatternPicture(97, 200, -1);
    std::uint32_t noise = 1; // does not compress, so the pixels are spread over many chunks
    for (std::uint8_t& byte : picture.bgra)
        byte = static_cast<std::uint8_t>((noise = noise * 1'664'525 + 1'013'904'223) >> 24);
    Bytes png = MakePng(picture);
    png.resize(png.size() / 2);
    const Picture part = OpenedImage(png).Pixels();
    ASSERT_FALSE(part.IsEmpty());
    EXPECT_TRUE(std::equal(part.At(0, 0), part.At(0, 1), picture.At(0, 0)));
    EXPECT_EQ(std::count(part.At(0, 199), part.At(0, 199) + 97 * 4, 0), 97 * 4);
}

// ---- TIFF --------------------------------------------------------------------------------------------------------

TEST(TiffFile, StraightAlphaComesThroughToTheBitAndMultipliedColorsAreDivided)
{
    const Picture picture = PatternPicture(13, 7, -1);
    EXPECT_TRUE(PicturesMatch(OpenedImage(MakeTiff(picture)).Pixels(), picture, {}, "straight"));
    EXPECT_TRUE(PicturesMatch(OpenedImage(MakeTiff(picture)).Pixels(), picture, {}, "straight again"));
    Picture half{1, 1, {50, 25, 100, 128}}; // of 100, 50, 199 or 200
    TiffOptions options;
    options.extraSample = 1;
    const Picture divided = OpenedImage(MakeTiff(half, options)).Pixels();
    EXPECT_EQ(ColorsOf(divided), (Rows{{0x80C73264U}}));
}

TEST(TiffFile, TileFarLargerThanThePictureIsRefused)
{
    TiffOptions options;
    options.tile = 4096; // 64 MiB for a picture of 8 x 8
    EXPECT_EQ(OpenedImage(MakeTiff(PatternPicture(8, 8), options)).Result(), WINCODEC_ERR_IMAGESIZEOUTOFRANGE);
    options.tile = 64;
    EXPECT_EQ(OpenedImage(MakeTiff(PatternPicture(8, 8), options)).Result(), S_OK);
}

// ---- WebP --------------------------------------------------------------------------------------------------------

TEST(WebpFile, AnimationShowsItsFirstFrameOnItsCanvas)
{
    const Picture frame = PatternPicture(6, 4, -1);
    const OpenedImage image(ExtendedWebp(MakeWebp(frame), 20, 10, {}, true, 8, 2, 6, 4));
    ASSERT_TRUE(image.IsOpen());
    EXPECT_EQ(image.FrameCount(), 1U);
    const Picture shown = image.Pixels();
    ASSERT_EQ(shown.width, 20U);
    ASSERT_EQ(shown.height, 10U);
    for (std::uint32_t y = 0; y < 10; ++y)
    {
        for (std::uint32_t x = 0; x < 20; ++x)
        {
            const bool inside = x >= 8 && x < 14 && y >= 2 && y < 6;
            const std::uint8_t* const pExpected = inside ? frame.At(x - 8, y - 2) : nullptr;
            for (int c = 0; c < 4 && (!inside || pExpected[3] != 0); ++c) // colours of nothing may differ
                ASSERT_EQ(shown.At(x, y)[c], inside ? pExpected[c] : 0) << x << ", " << y;
        }
    }
}

TEST(WebpFile, CutPictureIsShownInPartOrNotAtAll)
{
    const Bytes webp = MakeWebp(PatternPicture(64, 64));
    for (std::size_t cb = 0; cb < webp.size(); cb += 7)
        (void)OpenedImage(Bytes(webp.begin(), webp.begin() + static_cast<std::ptrdiff_t>(cb)));
    EXPECT_FALSE(OpenedImage(webp).Pixels().IsEmpty());
}

// ---- BMP ---------------------------------------------------------------------------------------------------------

/// A bitmap file. @param height  below zero: rows from the top  @param between  masks and palette
Bytes MakeBmp(std::int32_t width, std::int32_t height, std::uint32_t bits, std::uint32_t compression,
              const Bytes& between, const Bytes& pixels, std::uint32_t colors = 0)
{
    const auto offset = static_cast<std::uint32_t>(14 + 40 + between.size());
    return Bytes{'B', 'M'} + Little32({offset + static_cast<std::uint32_t>(pixels.size()), 0, offset}) +
           Little32({40, static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)}) + Little16({1, bits}) +
           Little32({compression, 0, 2835, 2835, colors, 0}) + between + pixels;
}

const Bytes kFourColors{0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0, 255, 255, 255, 0}; // red, green, blue, white

TEST(BmpFile, PalettesOfEveryDepth)
{
    const Rows expected{{kWhite, kRed, kGreen}, {kRed, kGreen, kRed}}; // rows are stored from the bottom
    EXPECT_EQ(ColorsOf(OpenedImage(MakeBmp(3, 2, 8, 0, kFourColors, {0, 1, 0, 9, 3, 0, 1, 9}, 4)).Pixels()), expected);
    EXPECT_EQ(ColorsOf(OpenedImage(MakeBmp(3, 2, 4, 0, kFourColors, {0x01, 0x0F, 0, 0, 0x30, 0x1F, 0, 0}, 4)).Pixels()),
              expected);
    EXPECT_EQ(ColorsOf(OpenedImage(MakeBmp(3, 2, 2, 0, kFourColors, {0x10, 0, 0, 0, 0xC4, 0, 0, 0}, 4)).Pixels()),
              expected);
    const Bytes twoColors(kFourColors.begin(), kFourColors.begin() + 8);
    EXPECT_EQ(ColorsOf(OpenedImage(MakeBmp(3, 1, 1, 0, twoColors, {0xA0, 0, 0, 0}, 2)).Pixels()),
              (Rows{{kGreen, kRed, kGreen}}));
    EXPECT_EQ(ColorsOf(OpenedImage(MakeBmp(2, 1, 8, 0, kFourColors, {3, 200, 0, 0}, 4)).Pixels()),
              (Rows{{kWhite, 0xFF000000U}})); // an index beyond the palette
}

TEST(BmpFile, DirectColors)
{
    EXPECT_EQ(ColorsOf(OpenedImage(MakeBmp(1, -2, 24, 0, {}, {1, 2, 3, 0, 4, 5, 6, 0})).Pixels()),
              (Rows{{0xFF030201U}, {0xFF060504U}})); // a negative height: from the top
    EXPECT_EQ(ColorsOf(OpenedImage(MakeBmp(1, 1, 32, 0, {}, {1, 2, 3, 4})).Pixels()), (Rows{{0xFF030201U}}));
    // Five bits become eight by repetition: 1 is 00001 and then 00001000, 16 is 10000 and then 10000100.
    EXPECT_EQ(ColorsOf(OpenedImage(MakeBmp(2, 1, 16, 0, {}, Little16({0x7FFF, 1U << 10 | 16 << 5 | 31}))).Pixels()),
              (Rows{{kWhite, 0xFF0884FFU}}));
    const Bytes masks565 = Little32({0xF800, 0x07E0, 0x001F});
    EXPECT_EQ(ColorsOf(OpenedImage(MakeBmp(2, 1, 16, 3, masks565, Little16({0x07E0, 0xF81F}))).Pixels()),
              (Rows{{kGreen, 0xFFFF00FFU}}));
    const Bytes masksWithAlpha = Little32({0xFF, 0xFF00, 0xFF0000, 0xFF000000U});
    EXPECT_EQ(ColorsOf(OpenedImage(MakeBmp(1, 1, 32, 6, masksWithAlpha, {1, 2, 3, 4})).Pixels()),
              (Rows{{0x04010203U}}));
    const Bytes deepMasks = Little32({0x3FFU << 20, 0x3FFU << 10, 0x3FF}); // ten bits each
    EXPECT_EQ(
        ColorsOf(OpenedImage(MakeBmp(1, 1, 32, 3, deepMasks, Little32({0x3FFU << 20 | 2U << 10 | 512}))).Pixels()),
        (Rows{{0xFFFF0080U}}));
}

TEST(BmpFile, RunLengthsWithStepsAside)
{
    // Two green; a step of two to the right and one up; as they are: blue, white, red and a byte of padding; the end.
    const Bytes runs{2, 1, 0, 2, 2, 1, 0, 3, 2, 3, 0, 0, 0, 1};
    EXPECT_EQ(ColorsOf(OpenedImage(MakeBmp(7, 2, 8, 1, kFourColors, runs, 4)).Pixels()),
              (Rows{{0, 0, 0, 0, kBlue, kWhite, kRed}, {kGreen, kGreen, 0, 0, 0, 0, 0}}));
    // Half bytes: five of 1, 3 in turn; the end of the row; three as they are.
    const Bytes halves{5, 0x13, 0, 0, 0, 3, 0x01, 0x20, 0, 1};
    EXPECT_EQ(ColorsOf(OpenedImage(MakeBmp(5, 2, 4, 2, kFourColors, halves, 4)).Pixels()),
              (Rows{{kRed, kGreen, kBlue, 0, 0}, {kGreen, kWhite, kGreen, kWhite, kGreen}}));
    // Runs that go on outside are cut.
    EXPECT_EQ(
        ColorsOf(OpenedImage(MakeBmp(2, 1, 8, 1, kFourColors, {255, 2, 255, 1, 0, 2, 255, 255, 9, 0}, 4)).Pixels()),
        (Rows{{kBlue, kBlue}}));
}

TEST(BmpFile, CoreHeader)
{
    const Bytes file = Bytes{'B', 'M'} + Little32({0, 0, 14 + 12 + 6}) + Little32({12}) + Little16({2, 1, 1, 1}) +
                       Bytes{0, 0, 255, 255, 0, 0} + Bytes{0x40, 0, 0, 0};
    EXPECT_EQ(ColorsOf(OpenedImage(file).Pixels()), (Rows{{kRed, kBlue}}));
}

TEST(BmpFile, HeadersThatMeanNothingAreRefused)
{
    const Bytes pixels(64, 0);
    EXPECT_FALSE(OpenedImage(MakeBmp(0, 1, 24, 0, {}, pixels)).IsOpen());
    EXPECT_FALSE(OpenedImage(MakeBmp(-1, 1, 24, 0, {}, pixels)).IsOpen());
    EXPECT_FALSE(OpenedImage(MakeBmp(1, 0, 24, 0, {}, pixels)).IsOpen());
    EXPECT_FALSE(OpenedImage(MakeBmp(1, INT32_MIN, 24, 0, {}, pixels)).IsOpen());
    for (const std::uint32_t bits : {0, 3, 15, 48, 64})
        EXPECT_FALSE(OpenedImage(MakeBmp(1, 1, bits, 0, {}, pixels)).IsOpen()) << bits;
    EXPECT_FALSE(OpenedImage(MakeBmp(1, 1, 24, 4, {}, pixels)).IsOpen()); // a JPEG picture inside
    EXPECT_FALSE(OpenedImage(MakeBmp(1, 1, 24, 1, {}, pixels)).IsOpen());
    EXPECT_FALSE(OpenedImage(MakeBmp(1, -1, 8, 1, kFourColors, pixels)).IsOpen()); // run lengths go upwards
}

TEST(BmpFile, MissingRowsAreTransparent)
{
    EXPECT_EQ(ColorsOf(OpenedImage(MakeBmp(1, 2, 24, 0, {}, {1, 2, 3, 0})).Pixels()), (Rows{{0}, {0xFF030201U}}));
    EXPECT_TRUE(OpenedImage(MakeBmp(2, 2, 24, 0, {}, {1, 2, 3})).Pixels().IsEmpty());
}

// ---- icons -------------------------------------------------------------------------------------------------------

/// An icon of the entries given; sizes in the directory are left at 0, the entries know their own.
Bytes MakeIcon(const std::vector<Bytes>& entries)
{
    Bytes file = Little16({0, 1, static_cast<std::uint32_t>(entries.size())});
    auto offset = static_cast<std::uint32_t>(6 + 16 * entries.size());
    for (const Bytes& entry : entries)
    {
        file = file + Bytes(8, 0) + Little32({static_cast<std::uint32_t>(entry.size()), offset});
        offset += static_cast<std::uint32_t>(entry.size());
    }
    for (const Bytes& entry : entries)
        file = file + entry;
    return file;
}

/// The header of a bitmap of 2 x 1 as icons hold it: the height counts the mask too.
Bytes IconDib(std::uint32_t bits, const Bytes& pixels)
{
    return Little32({40, 2, 2}) + Little16({1, bits}) + Little32({0, 0, 0, 0, 0, 0}) + pixels;
}

TEST(IconFile, MaskHidesPixels)
{
    const Bytes mask{0x40, 0, 0, 0};
    EXPECT_EQ(ColorsOf(OpenedImage(MakeIcon({IconDib(24, Bytes{1, 2, 3, 4, 5, 6, 0, 0} + mask)})).Pixels()),
              (Rows{{0xFF030201U, 0}}));
}

TEST(IconFile, AlphaThatSaysSomethingCountsInsteadOfTheMask)
{
    const Bytes mask{0x40, 0, 0, 0};
    EXPECT_EQ(ColorsOf(OpenedImage(MakeIcon({IconDib(32, Bytes{1, 2, 3, 0, 4, 5, 6, 128} + mask)})).Pixels()),
              (Rows{{0x00030201U, 0x80060504U}}));
    EXPECT_EQ(ColorsOf(OpenedImage(MakeIcon({IconDib(32, Bytes{1, 2, 3, 0, 4, 5, 6, 0} + mask)})).Pixels()),
              (Rows{{0xFF030201U, 0}}));
}

TEST(IconFile, LargestEntryComesFirstAndDamagedOnesAreLeftOut)
{
    const Bytes small = IconDib(24, Bytes(12, 0));
    const Bytes large = MakePng(PatternPicture(9, 5, -1));
    const OpenedImage image(MakeIcon({small, Bytes{1, 2, 3}, large}));
    ASSERT_TRUE(image.IsOpen());
    EXPECT_EQ(image.FrameCount(), 2U);
    EXPECT_TRUE(PicturesMatch(image.Pixels(0), PatternPicture(9, 5, -1), {}, "large"));
    EXPECT_EQ(image.Pixels(1).width, 2U);
    EXPECT_FALSE(OpenedImage(MakeIcon({Bytes{1, 2, 3}})).IsOpen());
}
} // namespace
