#include "pal/imaging/FlipRotator.h"

#include "tests/pal/imaging/EncodedPictures.h"
#include "tests/pal/imaging/OpenedImage.h"
#include "tests/support/PictureCompare.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace test_support;

namespace
{
/// The definition, pixel by pixel: turned clockwise, then flipped.
Picture Transformed(const Picture& source, UINT options)
{
    const UINT turns = options & 3;
    const bool isQuarter = turns % 2 != 0;
    const std::uint32_t width = isQuarter ? source.height : source.width;
    const std::uint32_t height = isQuarter ? source.width : source.height;
    Picture result{width, height, std::vector<std::uint8_t>(source.bgra.size())};
    for (std::uint32_t y = 0; y < source.height; ++y)
    {
        for (std::uint32_t x = 0; x < source.width; ++x)
        {
            std::uint32_t toX = x;
            std::uint32_t toY = y;
            if (turns == 1) // the top row becomes the right-hand column
                toX = source.height - 1 - y, toY = x;
            else if (turns == 2)
                toX = source.width - 1 - x, toY = source.height - 1 - y;
            else if (turns == 3)
                toX = y, toY = source.width - 1 - x;
            if (options & WICBitmapTransformFlipHorizontal)
                toX = width - 1 - toX;
            if (options & WICBitmapTransformFlipVertical)
                toY = height - 1 - toY;
            std::copy_n(source.At(x, y), 4, &result.bgra[(std::size_t{toY} * width + toX) * 4]);
        }
    }
    return result;
}

ComPtr<IWICBitmapFlipRotator> MakeRotator(IWICBitmapSource& source, UINT options)
{
    ComPtr<IWICBitmapFlipRotator> pRotator;
    EXPECT_EQ(MakeImagingFactory()->CreateBitmapFlipRotator(pRotator.Put()), S_OK);
    EXPECT_EQ(pRotator->Initialize(&source, static_cast<WICBitmapTransformOptions>(options)), S_OK);
    return pRotator;
}

const UINT kFlips[] = {0, WICBitmapTransformFlipHorizontal, WICBitmapTransformFlipVertical,
                       WICBitmapTransformFlipHorizontal | WICBitmapTransformFlipVertical};

TEST(FlipRotator, TurnsAndFlipsEveryPixelToItsPlace)
{
    for (const auto& [width, height] : {std::pair{1U, 1U}, {1U, 7U}, {5U, 3U}, {67U, 41U}, {100U, 200U}})
    {
        const Picture picture = PatternPicture(width, height, -1);
        const OpenedImage image(MakePng(picture));
        const ComPtr<IWICBitmapFrameDecode> pFrame = image.Frame();
        ASSERT_TRUE(pFrame);
        for (UINT turns = 0; turns < 4; ++turns)
            for (const UINT flips : kFlips)
                EXPECT_TRUE(PicturesMatch(PixelsOf(*MakeRotator(*pFrame.Get(), turns | flips).Get()),
                                          Transformed(picture, turns | flips), {},
                                          "turn " + std::to_string(turns | flips)));
    }
}

TEST(FlipRotator, PartsOfThePictureAreThoseOfTheWhole)
{
    const Picture picture = PatternPicture(13, 8, -1);
    const OpenedImage image(MakePng(picture));
    const ComPtr<IWICBitmapFrameDecode> pFrame = image.Frame();
    ASSERT_TRUE(pFrame);
    for (UINT turns = 0; turns < 4; ++turns)
    {
        for (const UINT flips : kFlips)
        {
            const ComPtr<IWICBitmapFlipRotator> pRotator = MakeRotator(*pFrame.Get(), turns | flips);
            const Picture whole = PixelsOf(*pRotator.Get());
            const WICRect rect{2, 1, 5, 6};
            std::vector<std::uint8_t> part(6 * 32, 0xA5); // rows of 20 bytes, 12 between them
            ASSERT_EQ(pRotator->CopyPixels(&rect, 32, static_cast<UINT>(part.size()), part.data()), S_OK);
            for (std::uint32_t y = 0; y < 6; ++y)
            {
                ASSERT_TRUE(std::equal(&part[y * 32], &part[y * 32 + 20], whole.At(2, 1 + y))) << (turns | flips);
                ASSERT_EQ(std::count(&part[y * 32 + 20], &part[y * 32 + 32], 0xA5), 12);
            }
        }
    }
}

TEST(FlipRotator, OneOverAnotherIsBothInTurn)
{
    const Picture picture = PatternPicture(9, 4, -1);
    const OpenedImage image(MakePng(picture));
    const ComPtr<IWICBitmapFrameDecode> pFrame = image.Frame();
    ASSERT_TRUE(pFrame);
    const ComPtr<IWICBitmapFlipRotator> pTurned = MakeRotator(*pFrame.Get(), WICBitmapTransformRotate270);
    const ComPtr<IWICBitmapFlipRotator> pFlipped = MakeRotator(*pTurned.Get(), WICBitmapTransformFlipVertical);
    EXPECT_TRUE(PicturesMatch(
        PixelsOf(*pFlipped.Get()),
        Transformed(Transformed(picture, WICBitmapTransformRotate270), WICBitmapTransformFlipVertical), {}, "both"));
}

TEST(FlipRotator, RefusesWhatItCannotDo)
{
    ComPtr<IWICBitmapFlipRotator> pRotator;
    ASSERT_EQ(MakeImagingFactory()->CreateBitmapFlipRotator(pRotator.Put()), S_OK);
    UINT width = 0;
    UINT height = 0;
    BYTE pixel[4];
    EXPECT_EQ(pRotator->GetSize(&width, &height), WINCODEC_ERR_NOTINITIALIZED);
    EXPECT_EQ(pRotator->CopyPixels(nullptr, 4, 4, pixel), WINCODEC_ERR_NOTINITIALIZED);
    EXPECT_EQ(pRotator->Initialize(nullptr, WICBitmapTransformRotate90), E_INVALIDARG);
    const OpenedImage image(MakePng(PatternPicture(2, 2)));
    EXPECT_EQ(pRotator->Initialize(image.Frame().Get(), static_cast<WICBitmapTransformOptions>(0x20)), E_INVALIDARG);
    EXPECT_EQ(pRotator->Initialize(image.Frame().Get(), WICBitmapTransformRotate90), S_OK);
    EXPECT_EQ(pRotator->GetSize(nullptr, &height), E_INVALIDARG);
}
} // namespace
