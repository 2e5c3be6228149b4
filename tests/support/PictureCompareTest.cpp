#include "tests/support/PictureCompare.h"

#include "tests/support/MediaFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace test_support;

namespace
{
Picture Ramp()
{
    Picture picture{16, 8, std::vector<std::uint8_t>(16 * 8 * 4)};
    for (std::size_t i = 0; i < picture.bgra.size(); ++i)
        picture.bgra[i] = static_cast<std::uint8_t>(i);
    return picture;
}

void SetEnvironment(const char* name, const std::string& value)
{
#if defined(_WIN32)
    _putenv_s(name, value.c_str()); // an empty value removes the name
#else
    setenv(name, value.c_str(), 1);
#endif
}

/// Comparisons of one test leave their pictures in a scratch folder.
class PicturesMatchTest : public testing::Test
{
protected:
    void SetUp() override { SetEnvironment("QMX_TEST_OUTPUT", (ScratchFolder() / "compare").string()); }
    void TearDown() override { SetEnvironment("QMX_TEST_OUTPUT", ""); }
};
} // namespace

TEST_F(PicturesMatchTest, EqualPicturesMatch)
{
    EXPECT_TRUE(PicturesMatch(Ramp(), Ramp(), {}, "equal"));
}

TEST_F(PicturesMatchTest, DifferenceOfTheToleranceMatchesAndOneMoreDoesNot)
{
    Picture other = Ramp();
    other.bgra[40] = static_cast<std::uint8_t>(other.bgra[40] + 3);
    EXPECT_TRUE(PicturesMatch(other, Ramp(), {3, 0}, "within"));
    EXPECT_FALSE(PicturesMatch(other, Ramp(), {2, 0}, "beyond"));
    EXPECT_TRUE(PicturesMatch(other, Ramp(), {2, 1}, "outlier"));
}

TEST_F(PicturesMatchTest, AlphaCountsAsEveryChannel)
{
    Picture other = Ramp();
    other.bgra[3] = static_cast<std::uint8_t>(other.bgra[3] + 1);
    EXPECT_FALSE(PicturesMatch(other, Ramp(), {}, "alpha"));
}

TEST_F(PicturesMatchTest, OtherSizeOrNoPictureNeverMatches)
{
    Picture narrow = Ramp();
    narrow.width = 8;
    narrow.height = 16;
    EXPECT_FALSE(PicturesMatch(narrow, Ramp(), {255, 1000}, "size"));
    EXPECT_FALSE(PicturesMatch(Picture{}, Ramp(), {255, 1000}, "none"));
    EXPECT_FALSE(PicturesMatch(Picture{}, Picture{}, {255, 1000}, "neither"));
}

TEST_F(PicturesMatchTest, FailureSaysWhereAndLeavesThreePictures)
{
    Picture other = Ramp();
    other.bgra[4 * (16 * 5 + 9)] = static_cast<std::uint8_t>(other.bgra[4 * (16 * 5 + 9)] + 7);
    const testing::AssertionResult result = PicturesMatch(other, Ramp(), {}, "a place/and a slash");
    EXPECT_NE(std::string(result.message()).find("by 7 at 9, 5"), std::string::npos) << result.message();
    const std::filesystem::path base = ComparisonFolder() / "a-place-and-a-slash";
    const std::optional<Picture> actual = ReadPng(std::filesystem::path(base).concat("-actual.png"));
    const std::optional<Picture> expected = ReadPng(std::filesystem::path(base).concat("-expected.png"));
    ASSERT_TRUE(actual && expected);
    EXPECT_EQ(actual->bgra, other.bgra);
    EXPECT_EQ(expected->bgra, Ramp().bgra);
    const std::optional<Picture> difference = ReadPng(std::filesystem::path(base).concat("-difference.png"));
    ASSERT_TRUE(difference);
    EXPECT_EQ(difference->At(9, 5)[0], 56);
    EXPECT_EQ(difference->At(8, 5)[0], 0);
}

TEST(MeanOf, AveragesEachChannel)
{
    const Picture picture{2, 1, {10, 20, 30, 255, 20, 40, 60, 0}};
    const MeanColour mean = MeanOf(picture);
    EXPECT_DOUBLE_EQ(mean.b, 15);
    EXPECT_DOUBLE_EQ(mean.g, 30);
    EXPECT_DOUBLE_EQ(mean.r, 45);
}
