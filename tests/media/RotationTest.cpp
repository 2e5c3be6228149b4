/// @file RotationTest.cpp
/// Films that ask to be turned come out upright. That their pictures are the right ones is tested with all the others.
#include "tests/support/ClipFixture.h"
#include "tests/support/FrameStripReader.h"
#include "tests/support/MediaFolder.h"

#include <gtest/gtest.h>

#include <ostream>

using namespace test_support;

namespace
{
struct TurnedFilm
{
    const char* name;
    std::uint32_t rotation, width, height; ///< upright
};
void PrintTo(const TurnedFilm& film, std::ostream* pStream)
{
    *pStream << film.name;
}

class TurnedFilmTest : public testing::TestWithParam<TurnedFilm>
{
protected:
    MediaServices m_services;
};

bool IsNear(const std::uint8_t* pBgra, std::uint32_t rgb)
{
    const auto close = [](int a, int b) { return std::abs(a - b) <= 24; };
    return close(pBgra[2], static_cast<int>(rgb >> 16)) && close(pBgra[1], static_cast<int>(rgb >> 8 & 255)) &&
           close(pBgra[0], static_cast<int>(rgb & 255));
}
} // namespace

TEST_P(TurnedFilmTest, ReportsItsUprightSize)
{
    QMX_REQUIRE_MEDIA(path, GetParam().name);
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->nRotation, GetParam().rotation);
    EXPECT_EQ(info->nWidth, GetParam().width);
    EXPECT_EQ(info->nHeight, GetParam().height);
}

TEST_P(TurnedFilmTest, DeliversFramesOfItsUprightSize)
{
    QMX_REQUIRE_MEDIA(path, GetParam().name);
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    ASSERT_TRUE(info);
    const SampleBufferPtr pBuffer = ClipFixture(path, *info).BufferAt(0, nullptr);
    ASSERT_TRUE(pBuffer);
    EXPECT_EQ(pBuffer->GetWidth(), GetParam().width);
    EXPECT_EQ(pBuffer->GetHeight(), GetParam().height);
    // The display aspect is that of the upright picture, in lowest terms.
    EXPECT_EQ(pBuffer->GetRatioX() * GetParam().height, pBuffer->GetRatioY() * GetParam().width);
}

INSTANTIATE_TEST_SUITE_P(
    Films, TurnedFilmTest,
    testing::Values(TurnedFilm{"phone-rotated.mp4", 90, 1080, 1920}, TurnedFilm{"rotated-90-30.mp4", 90, 128, 208},
                    TurnedFilm{"rotated-180-30.mp4", 180, 208, 128}, TurnedFilm{"rotated-270-30.mp4", 270, 128, 208}),
    [](const auto& info)
    { return "Film" + std::to_string(info.index) + "TurnedBy" + std::to_string(info.param.rotation); });

/// The phone's film: an arrow to the sky, the sun on the right, grass below.
TEST(PhoneFilm, StandsUpright)
{
    const MediaServices services;
    QMX_REQUIRE_MEDIA(path, "phone-rotated.mp4");
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    ASSERT_TRUE(info);
    const Picture picture = ClipFixture(path, *info).FrameAt(0).picture;
    ASSERT_EQ(picture.width, 1080U);
    ASSERT_EQ(picture.height, 1920U);
    EXPECT_TRUE(IsNear(picture.At(540, 190), 0xD8352A)) << "the arrow's shaft";
    EXPECT_TRUE(IsNear(picture.At(480, 160), 0xD8352A)) << "the left half of its head";
    EXPECT_TRUE(IsNear(picture.At(805, 745), 0xFFF1B8)) << "the sun";
    EXPECT_FALSE(IsNear(picture.At(275, 745), 0xFFF1B8)) << "a mirrored sun";
    EXPECT_TRUE(IsNear(picture.At(20, 1900), 0x3C6B3A)) << "the grass";
}
