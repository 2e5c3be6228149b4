#include "host/output/VideoEncoder.h"

#include "host/HostError.h"
#include "tests/host/DecodedVideo.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

extern "C"
{
#include <libavutil/pixfmt.h>
}

namespace qmx::host
{
namespace
{
Canvas Filled(std::uint32_t width, std::uint32_t height, std::uint32_t pixel)
{
    Canvas canvas(width, height);
    for (std::uint32_t y = 0; y < height; ++y)
    {
        for (std::uint32_t x = 0; x < width; ++x)
            std::memcpy(canvas.Row(y) + std::size_t{x} * 4, &pixel, 4);
    }
    return canvas;
}

EncoderSettings Settings(std::uint32_t width, std::uint32_t height, const char* pRate)
{
    return {width, height, FrameRate::Parse(pRate).value(), 0, "ultrafast"};
}

DecodedVideo Encode(const test_support::TemporaryFolder& folder, const EncoderSettings& settings, std::uint32_t pixel,
                    int frames)
{
    const std::filesystem::path file = folder.Path() / "a.mp4";
    const Canvas canvas = Filled(settings.width, settings.height, pixel);
    VideoEncoder encoder(file, settings);
    for (int i = 0; i < frames; ++i)
        encoder.Write(canvas);
    encoder.Finish();
    return DecodedVideo(file);
}

TEST(VideoEncoder, TheStreamSaysWhatItIs)
{
    const test_support::TemporaryFolder folder;
    const DecodedVideo video = Encode(folder, Settings(64, 48, "30"), 0xFF000000U, 5);
    ASSERT_TRUE(video.readable);
    EXPECT_EQ(video.codec, "h264");
    EXPECT_EQ(video.width, 64);
    EXPECT_EQ(video.height, 48);
    EXPECT_EQ(video.colorRange, AVCOL_RANGE_MPEG);
    EXPECT_EQ(video.colorSpace, AVCOL_SPC_BT709);
    EXPECT_EQ(video.colorPrimaries, AVCOL_PRI_BT709);
    EXPECT_EQ(video.colorTransfer, AVCOL_TRC_BT709);
    EXPECT_TRUE(video.indexInFront);
    EXPECT_EQ(video.frames.size(), 5U);
    EXPECT_EQ(folder.FileCount(), 1U);
}

TEST(VideoEncoder, FrameTimesAndDurationAreExactForEveryRate)
{
    for (const char* const pRate : {"30", "30000/1001", "24000/1001", "25", "12.5", "1/3", "999.999", "7/3"})
    {
        const test_support::TemporaryFolder folder;
        const EncoderSettings settings = Settings(16, 16, pRate);
        const DecodedVideo video = Encode(folder, settings, 0xFF808080U, 10);
        ASSERT_EQ(video.frames.size(), 10U) << pRate;
        // pts * base = n * den / num, in whole numbers.
        const std::int64_t num = settings.frameRate.Numerator();
        const std::int64_t den = settings.frameRate.Denominator();
        for (std::size_t i = 0; i < 10; ++i)
            ASSERT_EQ(video.frames[i].pts * video.timeBaseNum * num,
                      static_cast<std::int64_t>(i) * den * video.timeBaseDen)
                << pRate;
        EXPECT_EQ(video.duration * video.timeBaseNum * num, 10 * den * video.timeBaseDen) << pRate;
        EXPECT_EQ(video.frameRateNum * den, num * video.frameRateDen) << pRate;
    }
}

TEST(VideoEncoder, ColoursFollowTheBt709FormulaWithinOneLevel)
{
    for (const std::uint32_t pixel :
         {0xFF000000U, 0xFFFFFFFFU, 0xFFFF0000U, 0xFF00FF00U, 0xFF0000FFU, 0xFFFFFF00U, 0xFF123456U, 0xFFC08040U})
    {
        const test_support::TemporaryFolder folder;
        const DecodedVideo video = Encode(folder, Settings(32, 32, "30"), pixel, 1);
        ASSERT_EQ(video.frames.size(), 1U);
        const double r = (pixel >> 16 & 255) / 255.0;
        const double g = (pixel >> 8 & 255) / 255.0;
        const double b = (pixel & 255) / 255.0;
        const double luma = 0.2126 * r + 0.7152 * g + 0.0722 * b;
        const double expectedY = 16 + 219 * luma;
        const double expectedU = 128 + 224 * (b - luma) / 1.8556;
        const double expectedV = 128 + 224 * (r - luma) / 1.5748;
        const DecodedVideo::Frame& frame = video.frames[0];
        for (const std::uint8_t y : frame.y)
            ASSERT_NEAR(y, expectedY, 1.0) << std::hex << pixel;
        for (const std::uint8_t u : frame.u)
            ASSERT_NEAR(u, expectedU, 1.0) << std::hex << pixel;
        for (const std::uint8_t v : frame.v)
            ASSERT_NEAR(v, expectedV, 1.0) << std::hex << pixel;
    }
}

TEST(VideoEncoder, FramesKeepTheirOrder)
{
    const test_support::TemporaryFolder folder;
    const std::filesystem::path file = folder.Path() / "a.mp4";
    EncoderSettings settings = Settings(64, 64, "30");
    settings.preset = "medium"; // with B-frames and look-ahead
    settings.crf = 10;
    VideoEncoder encoder(file, settings);
    for (std::uint32_t i = 0; i < 60; ++i)
        encoder.Write(Filled(64, 64, 0xFF000000U | (i * 4) * 0x010101U));
    encoder.Finish();
    const DecodedVideo video(file);
    ASSERT_EQ(video.frames.size(), 60U);
    for (std::size_t i = 0; i < 60; ++i)
        EXPECT_NEAR(video.frames[i].y[0], 16 + 219 * (static_cast<double>(i) * 4) / 255, 2.0) << i;
}

TEST(VideoEncoder, TheSmallestPictureWorks)
{
    const test_support::TemporaryFolder folder;
    EXPECT_EQ(Encode(folder, Settings(2, 2, "30"), 0xFFFFFFFFU, 3).frames.size(), 3U);
}

TEST(VideoEncoder, NothingIsLeftBehindWithoutFinish)
{
    const test_support::TemporaryFolder folder;
    {
        VideoEncoder encoder(folder.Path() / "a.mp4", Settings(64, 64, "30"));
        encoder.Write(Filled(64, 64, 0xFF00FF00U));
    }
    EXPECT_EQ(folder.FileCount(), 0U);
}

TEST(VideoEncoder, AColonInTheNameIsJustACharacter)
{
    const test_support::TemporaryFolder folder;
    const std::filesystem::path file = folder.Path() / "pipe:1 \xFF%d.mp4";
    VideoEncoder encoder(file, Settings(16, 16, "30"));
    encoder.Write(Filled(16, 16, 0xFF00FF00U));
    encoder.Finish();
    EXPECT_EQ(DecodedVideo(file).frames.size(), 1U);
}
} // namespace
} // namespace qmx::host
