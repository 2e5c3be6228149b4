// Camera recordings that claim too much, and H.264 ones, which take films that are made elsewhere.
#include "tests/decoders/media/CameraDecoderFixture.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/Process.h"

#include <cmath>
#include <fstream>

namespace fs = std::filesystem;
using namespace test_support;

namespace
{
void WriteAt(const fs::path& path, std::uint64_t offset, const std::vector<std::uint8_t>& bytes)
{
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(offset));
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

TEST_F(CameraDecoder, CannotReachBeyondTwoGibibytes)
{
    constexpr std::uint64_t kTwoGiB = std::uint64_t{1} << 31;
    constexpr std::uint64_t kFourGiB = std::uint64_t{1} << 32;
    const std::vector<std::uint8_t> late = NumberedJpeg(64, 48, 77);
    const std::uint64_t lastPlace = kTwoGiB - late.size();
    recording.records[1] = {0, lastPlace, late.size()};
    recording.records[2] = {0, kTwoGiB, late.size()};
    recording.records[3].offset += kFourGiB; // a frame stands there, but the one 4 GiB before it is read
    recording.Write();
    fs::resize_file(recording.Media(), kFourGiB + recording.media.size()); // a hole
    WriteAt(recording.Media(), lastPlace, late);
    WriteAt(recording.Media(), kTwoGiB, NumberedJpeg(64, 48, 88));
    WriteAt(recording.Media(), recording.records[3].offset, NumberedJpeg(64, 48, 99));
    ASSERT_TRUE(Open());
    EXPECT_EQ(NumberAt(0), 0U);
    EXPECT_EQ(SureNumberAt(1), 77U) << "the last frame before the limit";
    EXPECT_EQ(SureNumberAt(2), 77U) << "nothing behind it";
    EXPECT_EQ(SureNumberAt(3), 3U);
    fs::remove(recording.Media());
}

TEST_F(CameraDecoder, TakesNoMoreMemoryThanTheFileHolds)
{
    recording.records[1].length = 0x7FFFFFFF;
    recording.records[2].length = std::uint64_t{1} << 62;
    recording.Write();
    ASSERT_TRUE(Open());
    EXPECT_EQ(NumberAt(0), 0U);
    ResetPeakResidentBytes();
    const std::uint64_t before = ResidentBytes();
    EXPECT_EQ(SureNumberAt(1), 0U);
    EXPECT_EQ(SureNumberAt(2), 0U);
    EXPECT_LT(PeakResidentBytes(), before + (16U << 20));
}

/// An H.264 recording: a film, and an index of constant steps.
class CameraDecoderH264 : public CameraDecoder
{
protected:
    bool OpenFilm(const fs::path& film, std::size_t count, double rate)
    {
        const fs::path folder = ScratchFolder() / "h264";
        fs::create_directories(folder);
        std::error_code error;
        fs::remove(folder / "cam.mp4", error);
        fs::create_symlink(film, folder / "cam.mp4");
        std::vector<MetaRecord> records(count);
        for (std::size_t n = 0; n < count; ++n)
            records[n].time = static_cast<std::uint64_t>(std::floor(static_cast<double>(n) * 1e7 / rate));
        WriteMeta(folder / "cam.meta", records);
        return Open(EnginePath(folder / "cam.h264"));
    }

    MediaServices services;
};

TEST_F(CameraDecoderH264, ShowsEveryFrameInTheRecordingsShape)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    const std::optional<tagVideoInfo> info = VideoInfoOf(film);
    ASSERT_TRUE(info);
    prop.width = info->nWidth - 1;
    prop.height = 7; // not looked at
    ASSERT_TRUE(OpenFilm(film, 300, 30));
    const auto height =
        static_cast<std::uint32_t>(std::trunc(static_cast<double>(prop.width) * info->nHeight / info->nWidth));
    for (std::uint32_t n = 0; n < 300; ++n)
    {
        ASSERT_EQ(NumberAt(n), n) << "no request is skipped";
        ASSERT_EQ(frame->GetWidth(), prop.width);
        ASSERT_EQ(frame->GetHeight(), height);
        ASSERT_EQ(frame->GetFormat(), kSampleFormatBgra);
        ASSERT_FALSE(flag);
    }
    const SampleBufferPtr last = frame;
    EXPECT_EQ(Ask(300), last.Get());
    EXPECT_FALSE(flag);
    EXPECT_EQ(Ask(299), last.Get()) << "asked again";
    for (std::uint32_t n = 299; n-- > 0;)
        ASSERT_EQ(NumberAt(n), n);
}

TEST_F(CameraDecoderH264, TurnsFrames)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    prop.width = 160;
    ASSERT_TRUE(OpenFilm(film, 300, 30));
    ASSERT_EQ(NumberAt(5), 5U);
    const Picture upright = PictureOf(frame.Get());
    for (const std::uint32_t rotation : {90U, 180U, 270U})
    {
        Rotate(rotation);
        const SampleBufferPtr before = frame;
        ASSERT_NE(Ask(5), nullptr);
        EXPECT_NE(frame.Get(), before.Get());
        const Picture turned = PictureOf(frame.Get());
        ASSERT_EQ(turned.width, rotation == 180 ? upright.width : upright.height);
        ASSERT_EQ(turned.height, rotation == 180 ? upright.height : upright.width);
        for (std::uint32_t y = 0; y < upright.height; ++y)
        {
            for (std::uint32_t x = 0; x < upright.width; ++x)
            {
                const std::uint32_t toX = rotation == 90    ? upright.height - 1 - y
                                          : rotation == 270 ? y
                                                            : upright.width - 1 - x;
                const std::uint32_t toY = rotation == 90    ? x
                                          : rotation == 270 ? upright.width - 1 - x
                                                            : upright.height - 1 - y;
                ASSERT_TRUE(std::equal(upright.At(x, y), upright.At(x, y) + 4, turned.At(toX, toY)));
            }
        }
    }
    Rotate(45);
    ASSERT_NE(Ask(5), nullptr);
    const Picture blank = PictureOf(frame.Get());
    EXPECT_EQ(blank.width, upright.height);
    EXPECT_TRUE(std::all_of(blank.bgra.begin(), blank.bgra.end(), [](std::uint8_t b) { return b == 0; }));
}

TEST_F(CameraDecoderH264, LeavesFramesAsDecodedWhenTheFlagSaysSo)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    prop.flags = kRequestNoAttachment;
    prop.width = 160;
    ASSERT_TRUE(OpenFilm(film, 300, 30));
    ASSERT_NE(Ask(0), nullptr);
    EXPECT_EQ(frame->GetFormat(), kSampleFormatNv12);
}

TEST_F(CameraDecoderH264, GivesNothingForAWidthOfZero)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    prop.width = 0;
    ASSERT_TRUE(OpenFilm(film, 300, 30));
    EXPECT_EQ(Ask(0), nullptr);
}

TEST_F(CameraDecoderH264, FailsForTheExtensionInCapitals)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    ASSERT_TRUE(OpenFilm(film, 300, 30));
    EXPECT_FALSE(Open(EnginePath(ScratchFolder() / "h264" / "cam.H264")));
}
} // namespace
