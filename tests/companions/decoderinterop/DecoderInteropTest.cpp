#include "engine/platform/DecoderInterop.h"
#include "companions/decoderinterop/FrameTimes.h"
#include "companions/decoderinterop/FrameWindow.h"
#include "pal/media/MediaStatistics.h"
#include "tests/companions/TestSeed.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/FrameStripReader.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/MetaFile.h"
#include "tests/support/ReferenceFilm.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <optional>

namespace fs = std::filesystem;
using namespace test_support;

namespace
{
std::uint64_t Decoded()
{
    return pal::GetMediaStatistics().picturesDecoded;
}

/// Number in the strip of an NV12 frame; none for null.
std::optional<std::uint32_t> NumberOf(const SampleBufferPtr& frame)
{
    std::uint8_t* pPixels = nullptr;
    if (!frame || frame->GetFormat() != kSampleFormatNv12 || !frame->GetBuffer(&pPixels, nullptr))
        return std::nullopt;
    return ReadFrameStrip(pPixels, frame->GetWidth(), frame->GetHeight(), frame->GetWidth());
}

/// A film and an index of it: one record for every picture that a plain decoder finds.
class Recording
{
public:
    explicit Recording(const fs::path& path)
        : m_film(ReadNumberedFilm(path)), m_media(path), m_meta(ScratchFolder() / "interop.meta")
    {
        std::vector<MetaRecord> records;
        for (const NumberedPicture& picture : m_film.pictures)
            records.push_back({static_cast<std::uint64_t>(std::llround(picture.time * 1e7)), 0, 0});
        Index(records);
    }
    void Index(const std::vector<MetaRecord>& records, std::size_t cbExtra = 0)
    {
        WriteMeta(m_meta, records, cbExtra);
        m_pInterop.reset(DecoderInterop::CreateDecoder(EnginePath(m_media), EnginePath(m_meta)));
    }
    void RemoveIndex()
    {
        fs::remove(m_meta);
        m_pInterop.reset(DecoderInterop::CreateDecoder(EnginePath(m_media), EnginePath(m_meta)));
    }
    bool IsOpen() const { return m_pInterop != nullptr && m_film.fault.empty(); }
    std::size_t GetCount() const { return m_film.pictures.size(); }
    SampleBufferPtr Get(std::uint64_t n) { return SampleBufferPtr::Adopt(m_pInterop->GetSample(n)); }
    testing::AssertionResult IsRight(std::size_t n)
    {
        const std::optional<std::uint32_t> number = NumberOf(Get(n));
        if (number == m_film.pictures[n].number)
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << "frame " << n << " shows " << (number ? std::to_string(*number) : std::string("nothing to read"))
               << ", not " << m_film.pictures[n].number;
    }

private:
    MediaServices m_services;
    NumberedFilm m_film;
    fs::path m_media;
    fs::path m_meta;
    std::unique_ptr<DecoderInterop> m_pInterop;
};

class DecoderInteropFilm : public testing::TestWithParam<const char*>
{
};

TEST_P(DecoderInteropFilm, GivesEveryFrameByItsNumber)
{
    QMX_REQUIRE_MEDIA(path, GetParam());
    Recording recording(path);
    ASSERT_TRUE(recording.IsOpen());
    const std::size_t count = recording.GetCount();
    for (std::size_t n = 0; n < count; ++n)
        ASSERT_TRUE(recording.IsRight(n)) << "in order";
    EXPECT_FALSE(recording.Get(count));
    for (std::size_t n = count; n-- > 0;)
        ASSERT_TRUE(recording.IsRight(n)) << "in reverse";
    TestRandom random;
    for (int i = 0; i < 60; ++i)
        ASSERT_TRUE(recording.IsRight(random.Between(0, static_cast<std::uint32_t>(count) - 1))) << "at random";
    for (std::size_t n = 0; n < count; n += 3)
        ASSERT_TRUE(recording.IsRight(n)) << "with steps of three";
}

INSTANTIATE_TEST_SUITE_P(Films, DecoderInteropFilm,
                         testing::Values("h264-bframes-30.mp4", "h264-bframes-5994.mp4", "h264-open-gop-25.mp4",
                                         "h264-edit-list-30.mp4", "rotated-90-30.mp4", "rotated-180-30.mp4",
                                         "h264-444-odd-25.mp4", "mpeg4-odd-30.mp4", "vfr-irregular.mp4"),
                         [](const auto& instance)
                         {
                             std::string name = instance.param;
                             for (char& c : name)
                                 c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
                             return name;
                         });

TEST(DecoderInterop, ExchangesTheSizeOfAFilmThatLiesOnItsSide)
{
    QMX_REQUIRE_MEDIA(path, "rotated-90-30.mp4");
    Recording recording(path);
    const std::optional<tagVideoInfo> info = VideoInfoOf(path);
    ASSERT_TRUE(recording.IsOpen() && info);
    const SampleBufferPtr frame = recording.Get(0);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->GetWidth(), info->nWidth);
    EXPECT_EQ(frame->GetHeight(), info->nHeight);
}

TEST(DecoderInterop, CountsByTheRateWhereThereAreNoRecords)
{
    for (const char* const name : {"h264-bframes-30.mp4", "h264-bframes-23976.mp4"})
    {
        QMX_REQUIRE_MEDIA(path, name);
        Recording recording(path);
        recording.RemoveIndex();
        ASSERT_TRUE(recording.IsOpen());
        for (const std::size_t n : {0U, 1U, 2U, 100U, 259U, 258U, 7U})
            EXPECT_TRUE(recording.IsRight(n)) << "no file";
        EXPECT_FALSE(recording.Get(recording.GetCount()));
        EXPECT_FALSE(recording.Get(~std::uint64_t{0}));
        EXPECT_FALSE(recording.Get(std::uint64_t{1} << 63));
        EXPECT_TRUE(recording.IsRight(5)) << "after the end";
        recording.Index({});
        EXPECT_TRUE(recording.IsRight(31)) << "an empty file";
        recording.Index({}, 23);
        EXPECT_TRUE(recording.IsRight(32)) << "less than a record";
    }
}

TEST(DecoderInterop, EndsWithTheLastWholeRecord)
{
    QMX_REQUIRE_MEDIA(path, "h264-bframes-30.mp4");
    Recording recording(path);
    recording.Index({{0, 0, 0}, {333'333, 0, 0}, {666'666, 0, 0}}, 17);
    EXPECT_TRUE(recording.IsRight(2));
    EXPECT_FALSE(recording.Get(3));
    EXPECT_FALSE(recording.Get(~std::uint64_t{0}));
    EXPECT_TRUE(recording.IsRight(1));
}

TEST(DecoderInterop, FollowsTheRecordsWhateverTheirOrder)
{
    QMX_REQUIRE_MEDIA(path, "h264-bframes-30.mp4");
    Recording recording(path);
    const std::uint64_t end = 100'000'000; // of the film
    recording.Index({{30'000'000, 0, 0},
                     {0, 0, 0},
                     {end, 0, 0},
                     {std::uint64_t{1} << 63, 0, 0},
                     {~std::uint64_t{0}, 0, 0},
                     {99'666'666, 0, 0},
                     {10'000'000, 0, 0},
                     {10'000'100, 0, 0},
                     {9'999'950, 0, 0}});
    EXPECT_EQ(NumberOf(recording.Get(0)), 90U);
    EXPECT_EQ(NumberOf(recording.Get(1)), 0U);
    EXPECT_FALSE(recording.Get(2));
    EXPECT_FALSE(recording.Get(3));
    EXPECT_FALSE(recording.Get(4));
    EXPECT_EQ(NumberOf(recording.Get(5)), 299U);
    EXPECT_EQ(NumberOf(recording.Get(6)), 30U);
    EXPECT_EQ(NumberOf(recording.Get(7)), 30U) << "ten microseconds late are rounding";
    EXPECT_EQ(NumberOf(recording.Get(8)), 30U);
}

TEST(DecoderInterop, RefusesWhatIsNoMedia)
{
    const MediaServices services;
    const fs::path text = ScratchFolder() / "text.mp4";
    std::ofstream(text) << "no film\n";
    EXPECT_EQ(DecoderInterop::CreateDecoder(EnginePath(text), L""), nullptr);
    EXPECT_EQ(DecoderInterop::CreateDecoder(EnginePath(ScratchFolder() / "absent.mp4"), L""), nullptr);
    EXPECT_EQ(DecoderInterop::CreateDecoder(L"", L""), nullptr);
    EXPECT_EQ(DecoderInterop::CreateDecoder(EnginePath(ScratchFolder()), L""), nullptr);
}

TEST(DecoderInterop, DecodesEveryFrameOnceInOrder)
{
    QMX_REQUIRE_MEDIA(path, "h264-bframes-30.mp4");
    Recording recording(path);
    ASSERT_TRUE(recording.IsRight(0));
    const std::uint64_t decoded = Decoded();
    const std::uint64_t seeks = pal::GetMediaStatistics().seeks;
    for (std::size_t n = 0; n < 100; ++n)
    {
        ASSERT_TRUE(recording.IsRight(n));
        ASSERT_TRUE(recording.IsRight(n)) << "asked again";
    }
    EXPECT_LE(Decoded() - decoded, 101U);
    EXPECT_EQ(pal::GetMediaStatistics().seeks, seeks);
}

TEST(DecoderInterop, StepsBackwardForLessThanFourDecodedFramesOnAverage)
{
    for (const char* const name : {"h264-bframes-30.mp4", "long-1080p.mp4"})
    {
        QMX_REQUIRE_MEDIA(path, name);
        const MediaServices services;
        const std::unique_ptr<DecoderInterop> pInterop(DecoderInterop::CreateDecoder(EnginePath(path), L""));
        ASSERT_NE(pInterop, nullptr);
        constexpr std::uint64_t kFrom = 290;
        ASSERT_TRUE(SampleBufferPtr::Adopt(pInterop->GetSample(kFrom)));
        const std::uint64_t decoded = Decoded();
        for (std::uint64_t n = kFrom; n-- > 10;)
            ASSERT_TRUE(SampleBufferPtr::Adopt(pInterop->GetSample(n)));
        EXPECT_LE(Decoded() - decoded, (kFrom - 10) * 4) << name;
    }
}

TEST(DecoderInterop, KeepsABoundedNumberOfFrames)
{
    QMX_REQUIRE_MEDIA(path, "h264-bframes-30.mp4");
    tagSampleBufferPoolInfo info;
    GetSampleBufferPoolInfo(&info);
    const std::uint64_t before = info.nLive;
    {
        Recording recording(path);
        for (std::size_t n = 0; n < 200; ++n)
            ASSERT_TRUE(recording.Get(n));
        GetSampleBufferPoolInfo(&info);
        EXPECT_LE(info.nLive - before, CFrameWindow::kForwardFrames);
        for (std::size_t n = 200; n-- > 0;)
            ASSERT_TRUE(recording.Get(n));
        GetSampleBufferPoolInfo(&info);
        EXPECT_LE(info.nLive - before, CFrameWindow::kMaxFrames);
    }
    GetSampleBufferPoolInfo(&info);
    EXPECT_EQ(info.nLive, before);
}

TEST(DecoderInterop, MovesFullRangeSamplesIntoTheLimitedRange)
{
    QMX_REQUIRE_MEDIA(full, "grid-bt709-pc-420p8.mp4");
    const MediaServices services;
    const std::unique_ptr<DecoderInterop> pInterop(DecoderInterop::CreateDecoder(EnginePath(full), L""));
    ASSERT_NE(pInterop, nullptr);
    const SampleBufferPtr frame = SampleBufferPtr::Adopt(pInterop->GetSample(0));
    std::uint8_t* pPixels = nullptr;
    std::uint32_t cb = 0;
    ASSERT_TRUE(frame && frame->GetBuffer(&pPixels, &cb));
    const std::size_t cbLuma = std::size_t{frame->GetWidth()} * frame->GetHeight();
    std::uint8_t most = 0;
    std::uint8_t least = 255;
    for (std::size_t i = 0; i < cb; ++i)
    {
        most = std::max(most, pPixels[i]);
        least = std::min(least, pPixels[i]);
        ASSERT_LE(pPixels[i], i < cbLuma ? 235 : 240);
    }
    EXPECT_EQ(least, 16);
    EXPECT_EQ(most, 240);
}

// ---- parts -------------------------------------------------------------------------------------------------------

SampleBufferPtr SmallFrame()
{
    return SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatNv12, 2, 2, 0));
}

TEST(CFrameWindow, FindsTheFirstFrameAtOrAfterATime)
{
    CFrameWindow window(1);
    const SampleBufferPtr a = SmallFrame();
    const SampleBufferPtr b = SmallFrame();
    window.Add(a, 100, 99);
    window.Add(b, 200, 100);
    EXPECT_EQ(window.Find(99).Get(), nullptr) << "an earlier frame may lie before";
    EXPECT_EQ(window.Find(100).Get(), a.Get());
    EXPECT_EQ(window.Find(101).Get(), b.Get());
    EXPECT_EQ(window.Find(200).Get(), b.Get());
    EXPECT_EQ(window.Find(201).Get(), nullptr);
}

TEST(CFrameWindow, KeepsManyFramesOnlyOnTheWayBack)
{
    CFrameWindow window(1);
    for (int i = 1; i <= 100; ++i)
        window.Add(SmallFrame(), i, i - 1);
    EXPECT_FALSE(window.Find(100 - static_cast<int>(CFrameWindow::kForwardFrames)));
    EXPECT_TRUE(window.Find(101 - static_cast<int>(CFrameWindow::kForwardFrames)));
    window.Keep(true);
    EXPECT_EQ(window.GetCapacity(), CFrameWindow::kMaxFrames);
    for (int i = 101; i <= 300; ++i)
        window.Add(SmallFrame(), i, i - 1);
    EXPECT_FALSE(window.Find(300 - static_cast<int>(CFrameWindow::kMaxFrames)));
    EXPECT_TRUE(window.Find(301 - static_cast<int>(CFrameWindow::kMaxFrames)));
    window.Keep(false);
    EXPECT_FALSE(window.Find(250));
    EXPECT_TRUE(window.Find(300));
}

TEST(CFrameWindow, KeepsFewerOfLargeFrames)
{
    CFrameWindow window(CFrameWindow::kMaxBytes / 10);
    window.Keep(true);
    EXPECT_EQ(window.GetCapacity(), 10U);
    CFrameWindow huge(CFrameWindow::kMaxBytes * 2);
    huge.Keep(true);
    EXPECT_EQ(huge.GetCapacity(), CFrameWindow::kForwardFrames);
}

TEST(CFrameTimes, ReadsTheFirstFieldOfEveryWholeRecord)
{
    const fs::path path = ScratchFolder() / "times.meta";
    WriteMeta(path, {{1, 2, 3}, {0x0102030405060708U, 9, 9}, {~std::uint64_t{0}, 0, 0}}, 23);
    CFrameTimes times(EnginePath(path));
    EXPECT_TRUE(times.HasRecords());
    EXPECT_EQ(times.GetCount(), 3U);
    EXPECT_EQ(times.TimeOf(1), 0x0102030405060708U);
    EXPECT_EQ(times.TimeOf(0), 1U);
    EXPECT_EQ(times.TimeOf(2), ~std::uint64_t{0});
    EXPECT_EQ(times.TimeOf(3), std::nullopt);
    EXPECT_EQ(times.TimeOf(~std::uint64_t{0}), std::nullopt);
    EXPECT_FALSE(CFrameTimes(EnginePath(ScratchFolder() / "absent.meta")).HasRecords());
}
} // namespace
