/// @file CorpusImageTest.cpp
/// Pictures as they are found in the world, against what another decoder makes of the same files.
#include "tests/pal/imaging/OpenedImage.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/PictureCompare.h"
#include "tests/support/Process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>

using namespace test_support;
namespace fs = std::filesystem;

namespace
{
fs::path ImageFolder()
{
    return CorpusFolder() / "images";
}

/// Files of the collection without the references that lie beside them.
std::vector<std::string> ImageNames()
{
    std::vector<std::string> names;
    if (!fs::exists(ImageFolder()))
        return names;
    for (const auto& entry : fs::recursive_directory_iterator(ImageFolder()))
    {
        const std::string name = fs::relative(entry.path(), ImageFolder()).string();
        if (entry.is_regular_file() && name.find(".expected.png") == std::string::npos)
            names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool IsJpeg(const std::string& name)
{
    return fs::path(name).extension() == ".jpg";
}

/// ImageMagick's readings of all files, made by one process: raw BGRA of each first picture.
class OtherDecoder
{
public:
    OtherDecoder() : m_folder(ScratchFolder() / "other")
    {
        const std::string program = QMX_CONVERT_PROGRAM;
        if (program.empty())
            return;
        fs::create_directories(m_folder);
        std::string command = '"' + program + '"';
        for (const std::string& name : ImageNames())
        {
            // A gamma in the file must not turn its levels into others.
            const std::string levels = fs::path(name).extension() == ".png" ? " -set colorspace sRGB" : "";
            command += " \\( \"" + (ImageFolder() / name).string() + "[0]\"" + levels +
                       " -alpha set -depth 8 -write \"bgra:" + FileOf(name).string() + "\" +delete \\)";
        }
        // What it cannot read it complains about, and goes on.
        (void)std::system((command + " xc:black null: >/dev/null 2>&1").c_str());
    }
    /// Nothing when the program is not there or cannot read the file.
    std::vector<std::uint8_t> Read(const std::string& name) const
    {
        std::ifstream file(FileOf(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

private:
    fs::path FileOf(std::string name) const
    {
        std::replace(name.begin(), name.end(), '/', '_');
        return m_folder / (name + ".bgra");
    }

    fs::path m_folder;
};

/// Levels that count as equal: inverse transforms round differently, and so do 16 bits that become 8.
std::uint32_t ToleranceOf(const std::string& name)
{
    return IsJpeg(name) ? 2 : name == "png/basi6a16.png" || name == "png/basn4a16.png" ? 1 : 0;
}

/// Files of which the other decoder shows something else, and what tells us right.
const std::map<std::string, std::string> kOtherIsWrong = {
    {"bmp/rgb32bf.bmp", "it takes the unused byte for an alpha; the picture is that of bmp/rgb24.bmp"},
    {"bmp/V5_A8_R8_G8_B8_Rgb.bmp", "it leaves the alpha mask out; there is a reference"},
    {"ico/multiple_entries_with_different_bit_depth.ico", "it shows the first entry; there is a reference"},
    {"tiff/cmyk-4c-8b.tiff", "it clips inks differently; the collection states the mean"},
};

/// Transparent pixels have no colour.
void ClearTransparent(Picture& picture)
{
    for (std::size_t i = 0; i < picture.bgra.size(); i += 4)
    {
        if (picture.bgra[i + 3] == 0)
            std::fill_n(&picture.bgra[i], 4, std::uint8_t{0});
    }
}

} // namespace

/// One test for all files, as one process of the other decoder reads them all.
TEST(CorpusImages, EqualWhatAnotherDecoderReads)
{
    QMX_REQUIRE_CORPUS(folder, "images");
    const OtherDecoder other;
    std::size_t compared = 0;
    for (const std::string& name : ImageNames())
    {
        const OpenedImage image(folder / name);
        EXPECT_TRUE(image.IsOpen()) << name;
        Picture actual = image.IsOpen() ? image.Pixels() : Picture();
        EXPECT_FALSE(actual.IsEmpty()) << name;
        Picture expected{actual.width, actual.height, other.Read(name)};
        if (kOtherIsWrong.contains(name) || expected.IsEmpty() || actual.IsEmpty())
            continue;
        ASSERT_EQ(expected.bgra.size(), actual.bgra.size()) << name;
        ClearTransparent(actual);
        ClearTransparent(expected);
        EXPECT_TRUE(PicturesMatch(actual, expected, {ToleranceOf(name), 0}, name));
        ++compared;
    }
    if (compared == 0)
        GTEST_SKIP() << "no program convert to compare with";
    EXPECT_EQ(compared, ImageNames().size() - kOtherIsWrong.size());
}

TEST(CorpusImages, EqualTheReferencesBesideThem)
{
    QMX_REQUIRE_CORPUS(folder, "images");
    std::size_t compared = 0;
    for (const std::string& name : ImageNames())
    {
        const fs::path reference = fs::path(folder / name).replace_extension(".expected.png");
        if (!fs::exists(reference))
            continue;
        std::optional<Picture> expected = ReadPng(reference);
        ASSERT_TRUE(expected) << name;
        Picture actual = OpenedImage(folder / name).Pixels();
        ClearTransparent(actual);
        ClearTransparent(*expected);
        EXPECT_TRUE(PicturesMatch(actual, *expected, {IsJpeg(name) ? 3U : 0U, 0}, name + " reference"));
        ++compared;
    }
    EXPECT_EQ(compared, 17U);
}

TEST(CorpusImageFacts, OrientationsAreThoseOfTheFiles)
{
    QMX_REQUIRE_CORPUS(folder, "images/exif");
    for (USHORT n = 1; n <= 8; ++n)
        EXPECT_EQ(OpenedImage(folder / ("Landscape_" + std::to_string(n) + ".jpg")).Orientation(), n);
    EXPECT_EQ(OpenedImage(folder / "hopper_orientation_5.jpg").Orientation(), 5);
    EXPECT_EQ(OpenedImage(folder / "g4_orientation_1.tif").Orientation(), 1);
    EXPECT_EQ(OpenedImage(folder / "g4_orientation_6.tif").Orientation(), 6);
    EXPECT_EQ(OpenedImage(folder / "invalid-exif.jpg").Orientation(), 0); // damaged: the file does not say
}

TEST(CorpusImageFacts, UnusedByteOfABitmapIsNoAlpha)
{
    QMX_REQUIRE_CORPUS(folder, "images/bmp");
    const Picture expected = OpenedImage(folder / "rgb24.bmp").Pixels();
    EXPECT_TRUE(PicturesMatch(OpenedImage(folder / "rgb32bf.bmp").Pixels(), expected, {}, "rgb32bf"));
}

TEST(CorpusImageFacts, InksOfATiffPictureMixToItsMean)
{
    QMX_REQUIRE_CORPUS(path, "images/tiff/cmyk-4c-8b.tiff");
    const MeanColour mean = MeanOf(OpenedImage(path).Pixels());
    EXPECT_NEAR(mean.r, 149.4, 2);
    EXPECT_NEAR(mean.g, 115.3, 2);
    EXPECT_NEAR(mean.b, 66.1, 2);
}

TEST(CorpusImageFacts, PagesAndEntriesAreCounted)
{
    QMX_REQUIRE_CORPUS(folder, "images");
    const OpenedImage pages(folder / "tiff/multipage.tiff");
    ASSERT_EQ(pages.FrameCount(), 3U);
    for (UINT i = 0; i < 3; ++i)
        EXPECT_FALSE(pages.Pixels(i).IsEmpty());
    EXPECT_FALSE(pages.Frame(3));
    const OpenedImage entries(folder / "ico/multiple_entries_with_different_bit_depth.ico");
    EXPECT_GT(entries.FrameCount(), 1U);
    std::uint32_t width = ~0U;
    for (UINT i = 0; i < entries.FrameCount(); ++i)
    {
        const Picture picture = entries.Pixels(i);
        EXPECT_LE(picture.width, width) << "the largest come first";
        width = picture.width;
    }
}

/// Nothing here may crash, hang or take memory without bounds; files that are invalid on purpose are refused.
TEST(CorpusDamagedImages, AreRefusedOrPartlyShown)
{
    constexpr std::uint64_t kMemoryLimit = 512ULL << 20;
    const std::set<std::string> invalid = {"xcrn0g04.png",   "xd0n2c08.png",           "xhdn0g08.png", "reallybig.bmp",
                                           "Bad_height.bmp", "decompression_bomb.ico", "max_size.jpg", "crash.ico"};
    Watchdog watchdog(std::chrono::seconds(10));
    ResetPeakResidentBytes();
    std::size_t files = 0;
    std::size_t refused = 0;
    for (const char* const kind : {"bmp", "gif", "ico", "jpeg", "png", "tiff"})
    {
        QMX_REQUIRE_CORPUS(folder, std::string("damaged/") + kind);
        for (const auto& entry : fs::directory_iterator(folder))
        {
            watchdog.Step(entry.path().string());
            ++files;
            const OpenedImage image(entry.path());
            if (invalid.contains(entry.path().filename().string()))
            {
                EXPECT_FALSE(image.IsOpen()) << entry.path();
                ++refused;
            }
            for (UINT i = 0; image.IsOpen() && i < image.FrameCount(); ++i)
            {
                (void)image.Pixels(i);
                (void)image.Orientation(i);
            }
        }
    }
    EXPECT_EQ(files, 26U);
    EXPECT_EQ(refused, invalid.size());
    EXPECT_LT(PeakResidentBytes(), kMemoryLimit);
}
