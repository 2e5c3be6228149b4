#include "tests/support/FrameStripReader.h"

#include "tests/support/FrameStripCode.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace test_support;

namespace
{
/// A grey picture with the strip of @p number.
Picture NumberedPictureOf(std::uint32_t width, std::uint32_t height, std::uint16_t number)
{
    Picture picture{width, height, std::vector<std::uint8_t>(static_cast<std::size_t>(width) * height * 4, 128)};
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x)
        {
            const std::uint32_t column = x * 16 / width, row = y * 16 / width;
            if (row < kStripRows)
                for (std::size_t channel = 0; channel < 3; ++channel)
                    picture.bgra[(static_cast<std::size_t>(y) * width + x) * 4 + channel] =
                        FrameStripBit(number, column, row) ? 235 : 16;
        }
    return picture;
}

void Turn(Picture& picture) // by half a turn
{
    for (std::size_t i = 0, j = picture.bgra.size() - 4; i < j; i += 4, j -= 4)
        std::swap_ranges(picture.bgra.begin() + static_cast<std::ptrdiff_t>(i),
                         picture.bgra.begin() + static_cast<std::ptrdiff_t>(i) + 4,
                         picture.bgra.begin() + static_cast<std::ptrdiff_t>(j));
}
} // namespace

TEST(ReadFrameStrip, ReadsEveryBitOfTheNumber)
{
    for (const std::uint32_t number : {0U, 1U, 2U, 255U, 256U, 17'999U, 32'768U, 35'999U, 65'535U})
        EXPECT_EQ(ReadFrameStrip(NumberedPictureOf(192, 108, static_cast<std::uint16_t>(number))), number);
}

TEST(ReadFrameStrip, ReadsWidthsThatAreNoMultipleOfSixteen)
{
    for (std::uint32_t width = 128; width < 210; ++width)
        EXPECT_EQ(ReadFrameStrip(NumberedPictureOf(width, 100, 4711)), 4711U) << width;
}

TEST(ReadFrameStrip, RefusesABlankPicture)
{
    for (const int level : {0, 16, 128, 235, 255})
    {
        Picture blank{192, 108, std::vector<std::uint8_t>(192 * 108 * 4, static_cast<std::uint8_t>(level))};
        EXPECT_FALSE(ReadFrameStrip(blank)) << level;
    }
    EXPECT_FALSE(ReadFrameStrip(Picture{}));
}

TEST(ReadFrameStrip, RefusesAMixtureOfNeighbouringPictures)
{
    for (std::uint16_t number = 0; number < 500; ++number)
    {
        Picture mixed = NumberedPictureOf(192, 108, number);
        const Picture next = NumberedPictureOf(192, 108, static_cast<std::uint16_t>(number + 1));
        for (std::size_t i = 0; i < mixed.bgra.size(); ++i)
            mixed.bgra[i] = static_cast<std::uint8_t>((mixed.bgra[i] + next.bgra[i]) / 2);
        EXPECT_FALSE(ReadFrameStrip(mixed)) << number;
    }
}

TEST(ReadFrameStrip, RefusesTwoPicturesTornApartBetweenTheRows)
{
    for (std::uint16_t number = 0; number < 500; ++number)
    {
        Picture torn = NumberedPictureOf(192, 108, number);
        const Picture next = NumberedPictureOf(192, 108, static_cast<std::uint16_t>(number + 1));
        std::copy(next.bgra.begin() + 192 * 12 * 4, next.bgra.end(), torn.bgra.begin() + 192 * 12 * 4);
        EXPECT_FALSE(ReadFrameStrip(torn)) << number;
    }
}

TEST(ReadFrameStrip, RefusesAPictureUpsideDown)
{
    Picture picture = NumberedPictureOf(192, 108, 1234);
    Turn(picture);
    EXPECT_FALSE(ReadFrameStrip(picture));
}
