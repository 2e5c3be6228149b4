#include "companions/pixelutility/kernels/YuvToBgra.h"
#include "engine/platform/PixelUtility.h"
#include "tests/companions/pixelutility/TestImage.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace
{
/// An NV12 picture whose memory ends with its last sample.
class Nv12Image
{
public:
    Nv12Image(std::uint32_t width, std::uint32_t height, TestRandom& random)
        : m_cb(std::size_t{width} * height + std::size_t{(width + 1) / 2} * 2 * ((height + 1) / 2)),
          m_pBytes(std::make_unique<std::uint8_t[]>(m_cb))
    {
        for (std::size_t i = 0; i < m_cb; ++i)
            m_pBytes[i] = random.Byte();
        m_info.pData = m_pBytes.get();
        m_info.nWidth = width;
        m_info.nHeight = height;
        m_info.nStride = width * 4; // as callers fill it in
    }
    const tagSampleInfo& Info() const { return m_info; }
    std::uint8_t* Bytes() { return m_pBytes.get(); }

    /// Converted sample by sample by the scalar twin of the kernel.
    TestImage Converted(qmx::kernels::YuvMatrix matrix) const
    {
        qmx::kernels::YuvPicture picture;
        picture.pY = m_pBytes.get();
        picture.pU = picture.pY + std::size_t{m_info.nWidth} * m_info.nHeight;
        picture.strideY = static_cast<std::ptrdiff_t>(m_info.nWidth);
        picture.strideU = static_cast<std::ptrdiff_t>((m_info.nWidth + 1) / 2 * 2);
        picture.width = static_cast<int>(m_info.nWidth);
        picture.height = static_cast<int>(m_info.nHeight);
        picture.interleavedChroma = true;
        picture.matrix = matrix;
        TestImage image(m_info.nWidth, m_info.nHeight);
        EXPECT_TRUE(ConvertYuvToBgraScalar(picture, image.Info().pData, image.Info().nStride));
        return image;
    }

private:
    std::size_t m_cb;
    std::unique_ptr<std::uint8_t[]> m_pBytes;
    tagSampleInfo m_info;
};

struct Sizes
{
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t targetWidth;
    std::uint32_t targetHeight;
};

const std::vector<Sizes> kSizes = {
    {192, 108, 192, 108},   {61, 47, 61, 47},
    {1, 1, 1, 1},           {2, 3, 2, 3}, // the same size, odd ones too
    {320, 180, 200, 112},   {321, 181, 160, 90},
    {100, 300, 33, 100},                       // smaller
    {64, 36, 160, 90},      {61, 47, 122, 99}, // larger
    {40, 120, 80, 60},      {120, 40, 60, 80}, // one axis smaller, one larger
    {1, 1, 9, 9},           {9, 9, 1, 1},
    {3, 1, 1, 5},           {5, 700, 5, 3}, // next to nothing, many taps
    {1'300, 722, 640, 360}, {1'280, 720, 1'280, 720},
    {2'000, 90, 2'000, 90}, // several bands and steps
};

/// The size before the turn, tight rows after it.
bool Convert(const tagSampleInfo& source, const Sizes& s, const TestImage& target, std::uint32_t angle,
             std::uint32_t mode)
{
    tagSampleInfo to = target.Info();
    to.nWidth = s.targetWidth;
    to.nHeight = s.targetHeight;
    to.nStride = s.targetWidth * 4;
    return ScaleAndConvertNV12(&source, &to, angle, mode);
}

TEST(ScaleAndConvertNV12, EqualsConvertingScalingAndTurningOneAfterTheOther)
{
    TestRandom random;
    for (const Sizes& s : kSizes)
    {
        const Nv12Image source(s.width, s.height, random);
        const TestImage converted =
            source.Converted(s.height >= 720 ? qmx::kernels::YuvMatrix::Bt709 : qmx::kernels::YuvMatrix::Bt601);
        for (const std::uint32_t mode : {kScaleBilinear, kScaleArea})
        {
            const TestImage scaled(s.targetWidth, s.targetHeight);
            const tagSampleInfo from = converted.Info();
            const tagSampleInfo to = scaled.Info();
            ASSERT_TRUE(ScaleAndRotateBGRA(&from, &to, 0, mode));
            for (const std::uint32_t angle : {0U, 90U, 180U, 270U})
            {
                const TestImage expected = Turned(scaled, angle);
                const TestImage actual(expected.Width(), expected.Height());
                ASSERT_TRUE(Convert(source.Info(), s, actual, angle, mode));
                ASSERT_EQ(actual.Bytes(), expected.Bytes())
                    << s.width << " x " << s.height << " to " << s.targetWidth << " x " << s.targetHeight << ", angle "
                    << angle << ", mode " << mode;
            }
        }
    }
}

TEST(ScaleAndConvertNV12, KeepsWithinTheRowsOfItsTarget)
{
    TestRandom random;
    const Nv12Image source(61, 47, random);
    for (const Sizes& s : {Sizes{61, 47, 61, 47}, Sizes{61, 47, 30, 20}})
    {
        const TestImage tight(s.targetWidth, s.targetHeight);
        ASSERT_TRUE(Convert(source.Info(), s, tight, 0, kScaleBilinear));
        TestImage target(s.targetWidth, s.targetHeight, 12);
        const tagSampleInfo to = target.Info();
        ASSERT_TRUE(ScaleAndConvertNV12(&source.Info(), &to, 0, kScaleBilinear));
        EXPECT_TRUE(target.GapsAreUntouched());
        for (std::uint32_t y = 0; y < s.targetHeight; ++y)
            for (std::uint32_t x = 0; x < s.targetWidth; ++x)
                ASSERT_EQ(target.At(x, y), tight.At(x, y));
    }
}

TEST(ScaleAndConvertNV12, TakesTheMatrixThatGoesWithTheHeight)
{
    TestRandom random;
    for (const std::uint32_t height : {718U, 720U})
    {
        Nv12Image source(6, height, random);
        // Rec. BT.601 and BT.709 red, limited range: 65 + 16 = 81, 90, 240 and 63, 102, 240.
        const bool hd = height >= 720;
        const std::size_t luma = std::size_t{6} * height;
        for (std::size_t i = 0; i < luma; ++i)
            source.Bytes()[i] = hd ? 63 : 81;
        for (std::size_t i = luma; i < luma * 3 / 2; i += 2)
        {
            source.Bytes()[i] = hd ? 102 : 90;
            source.Bytes()[i + 1] = 240;
        }
        const TestImage target(6, height);
        ASSERT_TRUE(Convert(source.Info(), {6, height, 6, height}, target, 0, kScaleBilinear));
        const TestPixel red = target.At(4, 4);
        EXPECT_NEAR(red[0], 0, 2);
        EXPECT_NEAR(red[1], 0, 2);
        EXPECT_NEAR(red[2], 255, 2);
        EXPECT_EQ(red[3], 255);
    }
}

TEST(ScaleAndConvertNV12, ClearsTheTargetForAnAngleItCannotTurnBy)
{
    TestRandom random;
    const Nv12Image source(16, 12, random);
    for (const std::uint32_t angle : {1U, 45U, 91U, 360U})
    {
        TestImage target(8, 6, 4);
        target.Fill({1, 2, 3, 4});
        const tagSampleInfo to = target.Info();
        EXPECT_FALSE(ScaleAndConvertNV12(&source.Info(), &to, angle, kScaleBilinear));
        for (std::uint32_t y = 0; y < 6; ++y)
            for (std::uint32_t x = 0; x < 8; ++x)
                EXPECT_EQ(target.At(x, y), (TestPixel{0, 0, 0, 0}));
        EXPECT_TRUE(target.GapsAreUntouched());
    }
}

TEST(ScaleAndConvertNV12, RefusesDescriptorsItCannotUse)
{
    TestRandom random;
    const Nv12Image source(16, 12, random);
    TestImage target(8, 6);
    target.Fill({1, 2, 3, 4});
    const std::vector<std::uint8_t> before = target.Bytes();
    const tagSampleInfo to = target.Info();
    EXPECT_FALSE(ScaleAndConvertNV12(nullptr, &to, 0, 1));
    EXPECT_FALSE(ScaleAndConvertNV12(&source.Info(), nullptr, 0, 1));
    tagSampleInfo bad = source.Info();
    bad.pData = nullptr;
    EXPECT_FALSE(ScaleAndConvertNV12(&bad, &to, 0, 1));
    for (const auto& [width, height] : {std::pair{0U, 12U}, {16U, 0U}, {32'768U, 2U}, {2U, 32'768U}})
    {
        bad = source.Info();
        bad.nWidth = width;
        bad.nHeight = height;
        EXPECT_FALSE(ScaleAndConvertNV12(&bad, &to, 0, 1));
    }
    EXPECT_EQ(target.Bytes(), before);
}
} // namespace
