#include "engine/platform/JpegFrames.h"
#include "engine/platform/SampleBuffer.h"
#include "tests/companions/TestSeed.h"
#include "tests/companions/jpegframes/TestJpeg.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <memory>
#include <utility>

namespace
{
using Bytes = std::vector<std::uint8_t>;

struct DecoderCloser
{
    void operator()(void* p) const { JPGDestroyDecoder(p); }
};
using Decoder = std::unique_ptr<void, DecoderCloser>;

/// A decoded picture with its pixels; empty when there was none.
class Decoded
{
public:
    Decoded(const Decoder& decoder, Bytes bytes)
        : m_pInfo(JPGDecodeFrame(decoder.get(), bytes.data(), static_cast<int>(bytes.size())))
    {
    }
    Decoded(const Decoded&) = delete;
    Decoded& operator=(const Decoded&) = delete;
    ~Decoded()
    {
        if (m_pInfo)
            FreeSamplePixels(m_pInfo->pData);
        std::free(m_pInfo);
    }
    explicit operator bool() const { return m_pInfo != nullptr; }
    const tagSampleInfo& operator*() const { return *m_pInfo; }
    const tagSampleInfo* operator->() const { return m_pInfo; }
    const std::uint8_t* At(std::uint32_t x, std::uint32_t y) const
    {
        return m_pInfo->pData + std::size_t{y} * m_pInfo->nStride + std::size_t{x} * 4;
    }
    tagSampleInfo* Get() const { return m_pInfo; }

private:
    tagSampleInfo* m_pInfo;
};

/// Smooth in both directions, so that it may be compared after any scaling.
std::uint32_t Slope(double x, double y)
{
    const auto level = [](double v) { return static_cast<std::uint32_t>(std::lround(20 + 200 * v)); };
    return level(x) << 16 | level(y) << 8 | level((x + y) / 2);
}

Bytes SlopeJpeg(std::uint32_t width, std::uint32_t height, int subsampling = TJSAMP_444, int flags = 0)
{
    return MakeJpeg(
        width, height, [&](std::uint32_t x, std::uint32_t y) { return Slope((x + 0.5) / width, (y + 0.5) / height); },
        subsampling, flags);
}

void ExpectSlope(const Decoded& picture, int tolerance)
{
    for (std::uint32_t y = 0; y < picture->nHeight; ++y)
    {
        for (std::uint32_t x = 0; x < picture->nWidth; ++x)
        {
            const std::uint32_t expected = Slope((x + 0.5) / picture->nWidth, (y + 0.5) / picture->nHeight);
            const std::uint8_t* const p = picture.At(x, y);
            for (int channel = 0; channel < 3; ++channel)
                ASSERT_NEAR(p[channel], (expected >> (8 * channel)) & 255, tolerance) << x << ", " << y;
            ASSERT_EQ(p[3], 255);
        }
    }
}

TEST(JpegFrames, DecodesAtItsOwnSizeWhenNoneIsAskedFor)
{
    for (const auto& [width, height] : {std::pair{64U, 48U}, {61U, 47U}, {1U, 1U}, {17U, 200U}})
    {
        for (const int subsampling : {TJSAMP_444, TJSAMP_422, TJSAMP_420})
        {
            const Decoder decoder(JPGCreateDecoder(0, 0));
            const Decoded picture(decoder, SlopeJpeg(width, height, subsampling));
            ASSERT_TRUE(picture);
            EXPECT_EQ(picture->nWidth, width);
            EXPECT_EQ(picture->nHeight, height);
            EXPECT_EQ(picture->nStride, width * 4);
            EXPECT_EQ(picture->nAspectX, 16U);
            EXPECT_EQ(picture->nAspectY, 9U);
            EXPECT_EQ(picture->nBitsPerPixel, 32U);
            if (width > 8 && height > 8)
                ExpectSlope(picture, subsampling == TJSAMP_444 ? 6 : 12);
        }
    }
}

TEST(JpegFrames, DecodesToExactlyTheSizeAskedFor)
{
    const Bytes jpeg = SlopeJpeg(320, 180);
    for (const auto& [width, height] : {std::pair{320, 180},
                                        {160, 90},
                                        {161, 91},
                                        {200, 100},
                                        {40, 23},
                                        {39, 23},
                                        {7, 5},
                                        {1, 1},
                                        {321, 180},
                                        {640, 360},
                                        {100, 180},
                                        {320, 11},
                                        {500, 37}})
    {
        const Decoder decoder(JPGCreateDecoder(width, height));
        const Decoded picture(decoder, jpeg);
        ASSERT_TRUE(picture) << width << " x " << height;
        EXPECT_EQ(picture->nWidth, static_cast<std::uint32_t>(width));
        EXPECT_EQ(picture->nHeight, static_cast<std::uint32_t>(height));
        if (width > 30 && height > 20)
            ExpectSlope(picture, 5);
    }
}

TEST(JpegFrames, TakesTheSizeOfTheJpegWhenOneSideIsZero)
{
    const Bytes jpeg = SlopeJpeg(32, 24);
    for (const auto& [width, height] : {std::pair{16, 0}, {0, 16}})
    {
        const Decoded picture(Decoder(JPGCreateDecoder(width, height)), jpeg);
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->nWidth, 32U);
        EXPECT_EQ(picture->nHeight, 24U);
    }
}

TEST(JpegFrames, FollowsAStreamWhoseSizeChanges)
{
    const Decoder decoder(JPGCreateDecoder(48, 36));
    for (const std::uint32_t side : {64U, 200U, 24U, 48U, 96U})
    {
        const Decoded picture(decoder, SlopeJpeg(side, side));
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->nWidth, 48U);
        ExpectSlope(picture, 6);
    }
}

TEST(JpegFrames, ReadsProgressiveAndGreyPictures)
{
    const Decoder decoder(JPGCreateDecoder(0, 0));
    const Decoded progressive(decoder, SlopeJpeg(64, 64, TJSAMP_444, TJFLAG_PROGRESSIVE));
    ASSERT_TRUE(progressive);
    ExpectSlope(progressive, 4);
    const Decoded grey(decoder, MakeJpeg(
                                    16, 16, [](std::uint32_t, std::uint32_t) { return 0x808080U; }, TJSAMP_GRAY));
    ASSERT_TRUE(grey);
    EXPECT_NEAR(grey.At(8, 8)[0], 128, 1);
    EXPECT_NEAR(grey.At(8, 8)[2], 128, 1);
}

TEST(JpegFrames, RefusesArgumentsThatMakeNoSense)
{
    EXPECT_EQ(JPGCreateDecoder(-1, 10), nullptr);
    EXPECT_EQ(JPGCreateDecoder(10, -1), nullptr);
    EXPECT_EQ(JPGCreateDecoder(32'768, 10), nullptr);
    JPGDestroyDecoder(nullptr);
    const Decoder decoder(JPGCreateDecoder(0, 0));
    Bytes jpeg = SlopeJpeg(16, 16);
    EXPECT_EQ(JPGDecodeFrame(nullptr, jpeg.data(), static_cast<int>(jpeg.size())), nullptr);
    EXPECT_EQ(JPGDecodeFrame(decoder.get(), nullptr, 100), nullptr);
    EXPECT_EQ(JPGDecodeFrame(decoder.get(), jpeg.data(), 0), nullptr);
    EXPECT_EQ(JPGDecodeFrame(decoder.get(), jpeg.data(), -1), nullptr);
}

TEST(JpegFrames, GivesNothingForDataThatStopsEarly)
{
    for (const int flags : {0, int{TJFLAG_PROGRESSIVE}})
    {
        const Bytes jpeg = SlopeJpeg(40, 40, TJSAMP_420, flags);
        for (const int side : {0, 40, 17})
        {
            const Decoder decoder(JPGCreateDecoder(side, side));
            for (std::size_t cb = 1; cb < jpeg.size(); ++cb)
                ASSERT_FALSE(Decoded(decoder, Bytes(jpeg.begin(), jpeg.begin() + static_cast<std::ptrdiff_t>(cb))))
                    << cb << " of " << jpeg.size() << " bytes";
            EXPECT_TRUE(Decoded(decoder, jpeg)) << "the decoder lives on";
        }
    }
}

TEST(JpegFrames, SurvivesDamagedData)
{
    TestRandom random;
    const Bytes whole = SlopeJpeg(64, 48, TJSAMP_420);
    const Decoder decoder(JPGCreateDecoder(30, 20));
    for (int round = 0; round < 2'000; ++round)
    {
        Bytes jpeg = whole;
        const std::uint32_t errors = random.Between(1, 8);
        for (std::uint32_t i = 0; i < errors; ++i)
            jpeg[random.Between(0, static_cast<std::uint32_t>(jpeg.size()) - 1)] = random.Byte();
        const Decoded picture(decoder, jpeg);
        if (picture)
        {
            ASSERT_EQ(picture->nWidth, 30U);
            ASSERT_EQ(picture->nHeight, 20U);
        }
    }
}

/// Overwrites the size in the frame header (FF C0: length, precision, height, width).
Bytes WithClaimedSize(Bytes jpeg, std::uint32_t width, std::uint32_t height)
{
    for (std::size_t i = 0; i + 9 < jpeg.size(); ++i)
    {
        if (jpeg[i] == 0xFF && (jpeg[i + 1] == 0xC0 || jpeg[i + 1] == 0xC2))
        {
            jpeg[i + 5] = static_cast<std::uint8_t>(height >> 8);
            jpeg[i + 6] = static_cast<std::uint8_t>(height);
            jpeg[i + 7] = static_cast<std::uint8_t>(width >> 8);
            jpeg[i + 8] = static_cast<std::uint8_t>(width);
            break;
        }
    }
    return jpeg;
}

TEST(JpegFrames, TakesNoMemoryForClaimsThatAreTooLarge)
{
    for (const int flags : {0, int{TJFLAG_PROGRESSIVE}})
    {
        const Bytes jpeg = SlopeJpeg(16, 16, TJSAMP_420, flags);
        tagSampleBufferPoolInfo before;
        GetSampleBufferPoolInfo(&before);
        for (const auto& [width, height] : {std::pair{65'500U, 65'500U},
                                            {32'767U, 32'767U},
                                            {6'001U, 6'001U},
                                            {32'768U, 8U},
                                            {8U, 32'768U},
                                            {0U, 16U},
                                            {16U, 0U}})
        {
            EXPECT_FALSE(Decoded(Decoder(JPGCreateDecoder(16, 16)), WithClaimedSize(jpeg, width, height)));
            EXPECT_FALSE(Decoded(Decoder(JPGCreateDecoder(0, 0)), WithClaimedSize(jpeg, width, height)));
        }
        tagSampleBufferPoolInfo after;
        GetSampleBufferPoolInfo(&after);
        EXPECT_EQ(after.nHits + after.nMisses, before.nHits + before.nMisses);
    }
}

TEST(JpegFrames, PixelsCanBecomeAFrameBuffer)
{
    const Decoder decoder(JPGCreateDecoder(20, 10));
    Bytes jpeg = SlopeJpeg(64, 48);
    tagSampleInfo* const pInfo = JPGDecodeFrame(decoder.get(), jpeg.data(), static_cast<int>(jpeg.size()));
    ASSERT_NE(pInfo, nullptr);
    std::uint8_t* const pPixels = pInfo->pData;
    const SampleBufferPtr frame = SampleBufferPtr::Adopt(CreateSampleBufferEx(32, pInfo));
    std::free(pInfo);
    ASSERT_TRUE(frame);
    std::uint8_t* pData = nullptr;
    frame->GetBuffer(&pData, nullptr);
    EXPECT_EQ(pData, pPixels);
    EXPECT_EQ(frame->GetWidth(), 20U);
}

TEST(JpegFrames, RecyclesTheMemoryOfItsPictures)
{
    const Decoder decoder(JPGCreateDecoder(100, 80));
    const Bytes jpeg = SlopeJpeg(160, 120);
    {
        const Decoded first(decoder, jpeg);
        ASSERT_TRUE(first);
    }
    tagSampleBufferPoolInfo before;
    GetSampleBufferPoolInfo(&before);
    for (int i = 0; i < 20; ++i)
        ASSERT_TRUE(Decoded(decoder, jpeg));
    tagSampleBufferPoolInfo after;
    GetSampleBufferPoolInfo(&after);
    EXPECT_EQ(after.nMisses, before.nMisses);
    EXPECT_EQ(after.nHits, before.nHits + 20);
}
} // namespace
