#include "host/compose/PictureLayer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace qmx::host
{
namespace
{
using Pixels = std::vector<std::uint8_t>;

/// A picture whose pixels are numbered in their blue; each has the alpha 128.
SampleBufferPtr Numbered(std::uint32_t width, std::uint32_t height, bool hasAlpha, std::uint32_t flag = 0)
{
    SampleBufferPtr pPicture = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, width, height, flag));
    std::uint8_t* pPixels = nullptr;
    EXPECT_TRUE(pPicture->GetBuffer(&pPixels, nullptr));
    for (std::uint32_t i = 0; i < width * height; ++i)
    {
        const std::uint8_t pixel[4] = {static_cast<std::uint8_t>(i + 1), 0, 0, 128};
        std::copy_n(pixel, 4, pPixels + std::size_t{i} * 4);
    }
    pPicture->SetAlphaFlag(hasAlpha);
    return pPicture;
}

Pixels PixelsOf(ISampleBuffer& picture)
{
    std::uint8_t* pPixels = nullptr;
    std::uint32_t length = 0;
    EXPECT_TRUE(picture.GetBuffer(&pPixels, &length));
    return {pPixels, pPixels + std::size_t{picture.GetWidth()} * picture.GetHeight() * 4};
}

TEST(CentredPicture, ASmallPictureStandsInTheMiddleOfATransparentOne)
{
    const SampleBufferPtr pSource = Numbered(2, 1, true);
    const SampleBufferPtr pResult = CentredPicture(*pSource.Get(), 5, 3);
    ASSERT_TRUE(pResult);
    EXPECT_EQ(pResult->GetWidth(), 5U);
    EXPECT_EQ(pResult->GetHeight(), 3U);
    EXPECT_EQ(pResult->GetRatioX() * 3, pResult->GetRatioY() * 5);
    Pixels expected(5 * 3 * 4);
    const std::uint8_t pixels[8] = {1, 0, 0, 128, 2, 0, 0, 128};
    std::copy_n(pixels, 8, expected.begin() + (5 + 1) * 4); // row 1, the odd pixel to the right
    EXPECT_EQ(PixelsOf(*pResult.Get()), expected);
}

TEST(CentredPicture, ALargePictureIsCut)
{
    const SampleBufferPtr pSource = Numbered(4, 3, true);
    const SampleBufferPtr pResult = CentredPicture(*pSource.Get(), 2, 1);
    ASSERT_TRUE(pResult);
    EXPECT_EQ(PixelsOf(*pResult.Get()), (Pixels{6, 0, 0, 128, 7, 0, 0, 128}));
}

TEST(CentredPicture, AlphaCountsAsThePictureSays)
{
    EXPECT_EQ(PixelsOf(*CentredPicture(*Numbered(1, 1, false).Get(), 1, 1).Get()), (Pixels{1, 0, 0, 255}));
    EXPECT_EQ(PixelsOf(*CentredPicture(*Numbered(1, 1, true).Get(), 1, 1).Get()), (Pixels{1, 0, 0, 128}));
    EXPECT_EQ(PixelsOf(*CentredPicture(*Numbered(1, 1, true, 1).Get(), 1, 1).Get()), (Pixels{2, 0, 0, 128}));
}

TEST(CentredPicture, OtherFormatsGiveNone)
{
    const SampleBufferPtr pNv12 = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatNv12, 4, 4, 0));
    ASSERT_TRUE(pNv12);
    EXPECT_FALSE(CentredPicture(*pNv12.Get(), 4, 4));
}
} // namespace
} // namespace qmx::host
