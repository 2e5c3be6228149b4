/// @file DamagedImageTest.cpp
/// Files of every format, cut and overwritten: refused or partly shown, never a fault, a hang or a flood of memory.
#include "tests/pal/imaging/OpenedImage.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/Process.h"
#include "tests/support/Random.h"

#include <propidl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

using namespace test_support;

namespace
{
constexpr std::uint64_t kMemoryLimit = 512ULL << 20;
constexpr std::chrono::seconds kStepLimit{20};

using Bytes = std::vector<std::uint8_t>;

/// Everything that a reader asks of a file.
void Exercise(const Bytes& bytes)
{
    const OpenedImage image(bytes);
    if (!image.IsOpen())
        return;
    const UINT count = std::min(image.FrameCount(), 20U);
    for (UINT i = 0; i < count; ++i)
    {
        (void)image.Pixels(i);
        (void)image.Orientation(i);
    }
}

class DamagedImage : public testing::TestWithParam<const char*>
{
protected:
    void SetUp() override
    {
        QMX_REQUIRE_CORPUS(path, GetParam());
        std::ifstream file(path, std::ios::binary);
        m_bytes.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        ASSERT_FALSE(m_bytes.empty());
        ResetPeakResidentBytes();
        m_base = PeakResidentBytes();
    }
    void TearDown() override { EXPECT_LT(PeakResidentBytes(), m_base + kMemoryLimit); }

    Bytes m_bytes;
    std::uint64_t m_base = 0;
};

std::string NameOf(const testing::TestParamInfo<const char*>& info)
{
    std::string name = info.param;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}
} // namespace

TEST_P(DamagedImage, OverwrittenAnywhereIsRefusedOrPartlyShown)
{
    constexpr int kMutations = 200;
    Random random;
    Watchdog watchdog(kStepLimit);
    for (int mutation = 0; mutation < kMutations; ++mutation)
    {
        watchdog.Step(std::string(GetParam()) + ", overwriting " + std::to_string(mutation) +
                      " with QMX_TEST_SEED=" + std::to_string(random.Seed()));
        Bytes damaged = m_bytes;
        const std::uint64_t head = std::min<std::uint64_t>(m_bytes.size(), 256); // half of the hits go there
        for (std::uint64_t hits = 1 + random.Below(8); hits > 0; --hits)
            damaged[random.Below(random.Below(2) == 0 ? head : m_bytes.size())] =
                static_cast<std::uint8_t>(random.Below(256));
        Exercise(damaged);
    }
}

TEST_P(DamagedImage, CutAnywhereIsRefusedOrPartlyShown)
{
    constexpr std::size_t kCuts = 50;
    Watchdog watchdog(kStepLimit);
    for (std::size_t cut = 1; cut <= kCuts; ++cut)
    {
        Bytes part = m_bytes;
        part.resize(m_bytes.size() * cut / (kCuts + 1));
        watchdog.Step(std::string(GetParam()) + " cut after " + std::to_string(part.size()) + " bytes");
        Exercise(part);
    }
}

INSTANTIATE_TEST_SUITE_P(Files, DamagedImage,
                         testing::Values("images/jpeg/progressive3.jpg", "images/jpeg/jpg-cmyk-1.jpg",
                                         "images/exif/hopper_orientation_6.jpg", "images/png/basi6a16.png",
                                         "images/png/tp1n3p08.png", "images/bmp/pal4rle.bmp", "images/bmp/pal8v5.bmp",
                                         "images/bmp/rgb16-565.bmp", "images/ico/hopper.ico",
                                         "images/ico/bmp-24bpp-mask.ico",
                                         "images/tiff/blue-purple-pink.lzwcompressed.tiff",
                                         "images/tiff/video-001-tile-64x64.tiff", "images/tiff/multipage.tiff",
                                         "images/tiff/bw-gopher_ccittGroup4.tiff", "images/webp/test.webp",
                                         "images/webp/gopher-doc.with-alpha.lossless.webp", "gif/mixed-disposal.gif",
                                         "gif/pygif/interlace.gif"),
                         NameOf);
