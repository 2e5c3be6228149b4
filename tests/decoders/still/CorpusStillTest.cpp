/// @file CorpusStillTest.cpp
/// Pictures and animations as they are found in the world, through the engine's decoders.
#include "engine/decoders/still/GifDecoder.h"
#include "engine/decoders/still/ImageDecoder.h"

#include "pal/kernel/PathText.h"
#include "tests/pal/imaging/OpenedImage.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/PictureCompare.h"
#include "tests/support/Process.h"

extern "C"
{
#include <libavutil/mem.h>
#include <libavutil/sha.h>
}

#include <propidl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <sstream>

using namespace test_support;
namespace fs = std::filesystem;

namespace
{
tagDecProp RecordFor(const fs::path& path, std::uint32_t width)
{
    tagDecProp prop(pal::FromPathBytes(path.native()), 0);
    prop.decoderType = kDecoderImage;
    prop.width = width;
    return prop;
}

Picture StillPicture(const fs::path& path, std::uint32_t width)
{
    const RefPtr<CImageDecoder> decoder = RefPtr<CImageDecoder>::Adopt(new CImageDecoder);
    bool flag = false;
    if (!decoder->Initialize(RecordFor(path, width)))
        return {};
    return PictureOf(SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(0, flag)).Get());
}

Picture TurnedByHalf(const Picture& picture)
{
    Picture turned = picture;
    auto* const pPixels = reinterpret_cast<std::uint32_t*>(turned.bgra.data());
    std::reverse(pPixels, pPixels + turned.bgra.size() / 4);
    return turned;
}

double MeanDifference(const Picture& a, const Picture& b)
{
    if (a.width != b.width || a.height != b.height || a.IsEmpty())
        return 255;
    double sum = 0;
    for (std::size_t i = 0; i < a.bgra.size(); ++i)
        sum += std::abs(a.bgra[i] - b.bgra[i]);
    return sum / static_cast<double>(a.bgra.size());
}

/// SHA-256 of the pixels as R, G, B, A, those of alpha 0 as zeros.
std::string HashOf(const Picture& picture)
{
    std::vector<std::uint8_t> rgba = picture.bgra;
    for (std::size_t i = 0; i < rgba.size(); i += 4)
    {
        std::swap(rgba[i], rgba[i + 2]);
        if (rgba[i + 3] == 0)
            std::fill_n(&rgba[i], 3, std::uint8_t{0});
    }
    const std::unique_ptr<AVSHA, void (*)(void*)> pSha(av_sha_alloc(), av_free);
    av_sha_init(pSha.get(), 256);
    av_sha_update(pSha.get(), rgba.data(), rgba.size());
    std::uint8_t digest[32];
    av_sha_final(pSha.get(), digest);
    std::string text;
    for (const std::uint8_t byte : digest)
    {
        constexpr char kDigits[] = "0123456789abcdef";
        text += {kDigits[byte >> 4], kDigits[byte & 15]};
    }
    return text;
}

/// Shows its canvas, which no scaling has touched.
class CCanvasGif : public CGifDecoder
{
public:
    Picture Canvas() const { return PictureOf(m_pRaw); }
};

/// Files whose references show the screen's background colour where no frame has been.
const std::set<std::string> kPaintedScreens = {"conf_overlapping_frames.gif", "conf_small_frame_big_canvas.gif",
                                               "issue_1455_undersized.gif"};

/// The canvas keeps the background's colour under its transparency.
void PaintBareScreen(Picture& canvas)
{
    for (std::size_t i = 3; i < canvas.bgra.size(); i += 4)
        canvas.bgra[i] = 255;
}

/// Times at which the frames of a file begin, in milliseconds, by the rule: the delay, 90 at least.
std::vector<std::uint64_t> FrameStarts(const fs::path& path)
{
    const OpenedImage image(path);
    std::vector<std::uint64_t> starts;
    std::uint64_t time = 0;
    for (UINT i = 0; image.IsOpen() && i < image.FrameCount(); ++i)
    {
        starts.push_back(time);
        ComPtr<IWICMetadataQueryReader> pReader;
        PROPVARIANT value;
        PropVariantInit(&value);
        const bool stated = SUCCEEDED(image.Frame(i)->GetMetadataQueryReader(pReader.Put())) &&
                            SUCCEEDED(pReader->GetMetadataByName(L"/grctlext/Delay", &value));
        time += std::max<std::uint64_t>(stated ? value.uiVal * 10U : 0, 90);
    }
    return starts;
}

/// Reference hashes: file, frame, hash.
std::map<std::string, std::map<std::size_t, std::string>> ReadFrameHashes(const fs::path& table)
{
    std::map<std::string, std::map<std::size_t, std::string>> files;
    std::ifstream stream(table);
    std::string line;
    std::getline(stream, line); // the heads of the columns
    while (std::getline(stream, line))
    {
        std::istringstream fields(line);
        std::string file;
        std::size_t frame = 0;
        std::string hash;
        fields >> file >> frame >> hash;
        files[file][frame] = hash;
    }
    return files;
}
} // namespace

TEST(CorpusOrientation, TurnedPicturesComeOutUpright)
{
    QMX_REQUIRE_CORPUS(folder, "images/exif");
    const Picture upright = StillPicture(folder / "Landscape_1.jpg", 1800);
    ASSERT_EQ(upright.width, 1800U);
    ASSERT_EQ(upright.height, 1200U);
    for (const int n : {3, 6, 8})
    {
        const Picture picture = StillPicture(folder / ("Landscape_" + std::to_string(n) + ".jpg"), 1800);
        EXPECT_LT(MeanDifference(picture, upright), 6) << n;
        EXPECT_GT(MeanDifference(TurnedByHalf(picture), upright), 20) << n; // the measure tells turns apart
    }
}

/// Left and right should change places there; top and bottom do instead, which makes half a turn of it.
TEST(CorpusOrientation, MirroredPicturesComeOutUpsideDown)
{
    QMX_REQUIRE_CORPUS(folder, "images/exif");
    const Picture turned = TurnedByHalf(StillPicture(folder / "Landscape_1.jpg", 1800));
    for (const int n : {2, 4, 5, 7})
        EXPECT_LT(MeanDifference(StillPicture(folder / ("Landscape_" + std::to_string(n) + ".jpg"), 1800), turned), 6)
            << n;
}

TEST(CorpusOrientation, SmallerPicturesKeepTheirSides)
{
    QMX_REQUIRE_CORPUS(folder, "images/exif");
    for (int n = 1; n <= 8; ++n)
    {
        const Picture picture = StillPicture(folder / ("Landscape_" + std::to_string(n) + ".jpg"), 600);
        EXPECT_EQ(picture.width, 600U) << n;
        EXPECT_EQ(picture.height, 400U) << n;
    }
    EXPECT_EQ(StillPicture(folder / "g4_orientation_6.tif", 600).width, 590U);
}

TEST(CorpusGif, ComposedFramesEqualTheReferencesAtForwardPlay)
{
    QMX_REQUIRE_CORPUS(folder, "gif");
    std::size_t files = 0;
    std::size_t frames = 0;
    for (const auto& [name, hashes] : ReadFrameHashes(folder / "FRAMES.tsv"))
    {
        const fs::path path = folder / name;
        const std::vector<std::uint64_t> starts = FrameStarts(path);
        ASSERT_FALSE(starts.empty()) << name;
        // The suite counts images without a delay as one picture with what follows; here each is a frame.
        const std::size_t merged = name.starts_with("pygif/") ? starts.size() - hashes.size() : 0;
        const RefPtr<CCanvasGif> decoder = RefPtr<CCanvasGif>::Adopt(new CCanvasGif);
        ASSERT_TRUE(decoder->Initialize(RecordFor(path, 64))) << name;
        ++files;
        for (std::size_t i = 0; i < starts.size(); ++i)
        {
            bool flag = false;
            (void)SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(starts[i], flag));
            if (i < merged || !hashes.contains(i - merged))
                continue;
            if (name == "issue_1455_undersized.gif" && i == 1)
                continue; // one decoder's reading: the screen painted, and what the frame before has left is not
            // Without a transparent colour in the file, other decoders paint the bare screen; ours stays transparent.
            Picture canvas = decoder->Canvas();
            if (kPaintedScreens.contains(name))
                PaintBareScreen(canvas);
            EXPECT_EQ(HashOf(canvas), hashes.at(i - merged)) << name << ", frame " << i;
            ++frames;
        }
    }
    EXPECT_EQ(files, 31U);
    EXPECT_EQ(frames, 487U);
}

TEST(CorpusGif, AnyOrderOfRequestsShowsWhatForwardPlayShows)
{
    QMX_REQUIRE_CORPUS(path, "gif/mixed-disposal.gif");
    const std::vector<std::uint64_t> starts = FrameStarts(path);
    std::vector<std::string> forward;
    const auto fresh = [&]
    {
        RefPtr<CCanvasGif> decoder = RefPtr<CCanvasGif>::Adopt(new CCanvasGif);
        EXPECT_TRUE(decoder->Initialize(RecordFor(path, 64)));
        return decoder;
    };
    bool flag = false;
    RefPtr<CCanvasGif> decoder = fresh();
    for (const std::uint64_t start : starts)
    {
        (void)SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(start, flag));
        forward.push_back(HashOf(decoder->Canvas()));
    }
    for (std::size_t from = 0; from < starts.size(); ++from)
    {
        for (std::size_t to = 0; to < starts.size(); ++to)
        {
            decoder = fresh();
            (void)SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(starts[from], flag));
            (void)SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(starts[to], flag));
            // A step back shows the frame before, if there is one.
            EXPECT_EQ(HashOf(decoder->Canvas()), forward[to < from && to > 0 ? to - 1 : to]) << from << " to " << to;
        }
    }
}

TEST(CorpusGif, DamagedFilesAreRefusedOrPlayedInPart)
{
    QMX_REQUIRE_CORPUS(folder, "damaged/gif");
    Watchdog watchdog(std::chrono::seconds(10));
    int files = 0;
    for (const auto& entry : fs::directory_iterator(folder))
    {
        watchdog.Step(entry.path().string());
        ++files;
        const RefPtr<CGifDecoder> decoder = RefPtr<CGifDecoder>::Adopt(new CGifDecoder);
        (void)decoder->Initialize(RecordFor(entry.path(), 320));
        bool flag = false;
        for (const std::uint64_t ms : {0ULL, 90ULL, 1'000ULL, 500ULL, ~0ULL})
            (void)SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(ms, flag));
    }
    EXPECT_EQ(files, 8);
}
