#include "engine/platform/PixelUtility.h"
#include "engine/platform/SampleBuffer.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace
{
constexpr std::uint32_t kStale = 0x01020304;

SampleBufferPtr MakeFrame(std::uint32_t width, std::uint32_t height, std::uint32_t color)
{
    auto frame = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, width, height, 0));
    std::uint8_t* pixels = nullptr;
    frame->GetBuffer(&pixels, nullptr);
    for (std::uint32_t i = 0; i < width * height; ++i)
        std::memcpy(pixels + std::size_t{i} * 4, &color, 4);
    return frame;
}

/// A target and what a letter box left in it.
class LetterBox : public testing::Test
{
protected:
    bool Fit(ISampleBuffer* pFrame, std::uint32_t width, std::uint32_t height, std::uint32_t boxWidth = 0,
             std::uint32_t boxHeight = 0)
    {
        m_width = width;
        m_pixels.assign(std::size_t{width} * height + 1, kStale); // one more than may be written
        const bool done = DoLetterBoxBGRATranspanrentEx(pFrame, reinterpret_cast<std::uint8_t*>(m_pixels.data()),
                                                        boxWidth, boxHeight, width, height, kScaleArea);
        EXPECT_EQ(m_pixels.back(), kStale);
        return done;
    }
    std::uint32_t At(std::uint32_t x, std::uint32_t y) const { return m_pixels[std::size_t{y} * m_width + x]; }
    /// The picture of @p color fills exactly this box; around it is transparent black.
    void ExpectBox(std::uint32_t color, std::uint32_t left, std::uint32_t top, std::uint32_t width,
                   std::uint32_t height)
    {
        for (std::uint32_t i = 0; i + 1 < m_pixels.size(); ++i)
        {
            const std::uint32_t x = i % m_width;
            const std::uint32_t y = i / m_width;
            const bool inside = x >= left && x < left + width && y >= top && y < top + height;
            ASSERT_EQ(At(x, y), inside ? color : 0U) << x << ", " << y;
        }
    }

    static constexpr std::uint32_t kColor = 0x80402010;

private:
    std::uint32_t m_width = 0;
    std::vector<std::uint32_t> m_pixels;
};

TEST_F(LetterBox, AFrameOfTheSizeIsUsedAsItStands)
{
    const auto frame = MakeFrame(32, 18, kColor);
    EXPECT_FALSE(Fit(frame.Get(), 32, 18));
    EXPECT_EQ(At(5, 5), kStale);
}

TEST_F(LetterBox, AnotherSizeOfTheShapeFillsTheArea)
{
    const auto frame = MakeFrame(64, 36, kColor);
    EXPECT_TRUE(Fit(frame.Get(), 32, 18));
    ExpectBox(kColor, 0, 0, 32, 18);
}

TEST_F(LetterBox, ATallFrameStandsInTheMiddle)
{
    const auto frame = MakeFrame(9, 18, kColor);
    EXPECT_TRUE(Fit(frame.Get(), 32, 18));
    ExpectBox(kColor, 11, 0, 9, 18);
}

TEST_F(LetterBox, AWideFrameLiesInTheMiddle)
{
    const auto frame = MakeFrame(64, 16, kColor);
    EXPECT_TRUE(Fit(frame.Get(), 32, 18));
    ExpectBox(kColor, 0, 5, 32, 8);
}

TEST_F(LetterBox, TheDisplayAspectCountsNotTheSize)
{
    const auto frame = MakeFrame(32, 18, kColor);
    frame->SetRatioX(1);
    frame->SetRatioY(1);
    EXPECT_FALSE(Fit(frame.Get(), 32, 18)); // the size fits
    EXPECT_TRUE(Fit(frame.Get(), 40, 20));
    ExpectBox(kColor, 10, 0, 20, 20);
    frame->SetRatioX(0);
    EXPECT_TRUE(Fit(frame.Get(), 32, 36)); // no aspect: the size's
    ExpectBox(kColor, 0, 9, 32, 18);
}

TEST_F(LetterBox, ABoxStandsInTheMiddleOfTheArea)
{
    const auto frame = MakeFrame(32, 18, kColor);
    EXPECT_TRUE(Fit(frame.Get(), 32, 18, 16, 18)); // the size fits, and still there is a box
    ExpectBox(kColor, 8, 4, 16, 9);
    EXPECT_TRUE(Fit(frame.Get(), 32, 18, 1'000, 1'000)); // cut to the area
    ExpectBox(kColor, 0, 0, 32, 18);
}

TEST_F(LetterBox, ExtremeShapesKeepOnePixel)
{
    const auto frame = MakeFrame(32, 18, kColor);
    frame->SetRatioX(0xFFFFFFFF);
    frame->SetRatioY(1);
    EXPECT_TRUE(Fit(frame.Get(), 10, 7));
    ExpectBox(kColor, 0, 3, 10, 1);
    frame->SetRatioX(1);
    frame->SetRatioY(0xFFFFFFFF);
    EXPECT_TRUE(Fit(frame.Get(), 10, 7));
    ExpectBox(kColor, 4, 0, 1, 7);
}

TEST_F(LetterBox, WhatIsNoPictureLeavesTheAreaBlank)
{
    EXPECT_TRUE(Fit(nullptr, 8, 6));
    ExpectBox(0, 0, 0, 0, 0);
    const auto planes = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatNv12, 32, 18, 0));
    EXPECT_TRUE(Fit(planes.Get(), 8, 6));
    ExpectBox(0, 0, 0, 0, 0);
}

TEST_F(LetterBox, AnAreaThatCannotBeIsRefused)
{
    const auto frame = MakeFrame(32, 18, kColor);
    std::uint32_t pixel = kStale;
    auto* const bytes = reinterpret_cast<std::uint8_t*>(&pixel);
    EXPECT_FALSE(DoLetterBoxBGRATranspanrentEx(frame.Get(), nullptr, 0, 0, 8, 6, kScaleArea));
    EXPECT_FALSE(DoLetterBoxBGRATranspanrentEx(frame.Get(), bytes, 0, 0, 0, 6, kScaleArea));
    EXPECT_FALSE(DoLetterBoxBGRATranspanrentEx(frame.Get(), bytes, 0, 0, 40'000, 1, kScaleArea));
    EXPECT_EQ(pixel, kStale);
}
} // namespace
