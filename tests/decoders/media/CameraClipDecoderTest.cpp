#include "engine/platform/PixelUtility.h"
#include "tests/decoders/media/CameraDecoderFixture.h"

#include <algorithm>
#include <type_traits>

namespace fs = std::filesystem;
using namespace test_support;

namespace
{
static_assert(std::is_copy_assignable_v<CCameraClipDecoder>);

// ---- opening -----------------------------------------------------------------------------------------------------

TEST_F(CameraDecoder, OpensARecordingByTheNameOfAFileThatNeedNotExist)
{
    recording.Write();
    EXPECT_TRUE(Open());
    EXPECT_EQ(NumberAt(0), 0U);
    EXPECT_FALSE(flag);
}

TEST_F(CameraDecoder, FailsForNamesThatAreNoRecordings)
{
    recording.Write();
    const std::wstring name = recording.Name();
    const std::wstring stem = name.substr(0, name.size() - 5);
    for (const std::wstring& path :
         {stem + L".H264", stem + L".MJPG", stem + L".Mjpg", stem + L".mjpeg", stem + L".mjp", stem + L".mov",
          stem + L".meta", stem + L".", stem, std::wstring(L"cam.mjpg"), std::wstring(L"mjpg"), std::wstring(),
          name + L"x", stem + L".mjpg.mjpg"})
        EXPECT_FALSE(Open(path));
    const fs::path folder = ScratchFolder() / "dotted.mjpg";
    fs::create_directories(folder);
    EXPECT_FALSE(Open((folder / "cam").make_preferred().wstring())) << "the dot is the folder's";
}

TEST_F(CameraDecoder, FailsWithoutAnIndex)
{
    recording.Write();
    fs::remove(recording.Meta());
    EXPECT_FALSE(Open());
    EXPECT_EQ(Ask(0), nullptr);
    EXPECT_TRUE(flag) << "a decoder that is not open is at its end";
}

TEST_F(CameraDecoder, FailsForASizeThatNoPictureHas)
{
    recording.Write();
    prop.width = 40'000;
    EXPECT_FALSE(Open());
    EXPECT_EQ(Ask(0), nullptr);
    prop.width = 0xFFFFFFFFU;
    EXPECT_FALSE(Open());
}

TEST_F(CameraDecoder, CanBeOpenedAfterAFailure)
{
    recording.Write();
    EXPECT_FALSE(Open(L"nowhere"));
    prop.filePath = recording.Name();
    EXPECT_TRUE(decoder->Initialize(prop));
    EXPECT_EQ(NumberAt(2), 2U);
}

TEST_F(CameraDecoder, OpensOnce)
{
    recording.Write();
    ASSERT_TRUE(Open());
    tagDecProp other(L"elsewhere", 5);
    other.width = 10;
    EXPECT_TRUE(decoder->Initialize(other));
    EXPECT_EQ(*decoder->GetProperty(), prop) << "the record is not taken again";
    EXPECT_EQ(NumberAt(1), 1U);
}

TEST_F(CameraDecoder, GivesNothingWhereTheMediaFileIsMissing)
{
    recording.Write();
    fs::remove(recording.Media());
    EXPECT_TRUE(Open()) << "found out with the first frame";
    EXPECT_EQ(Ask(0), nullptr);
    EXPECT_FALSE(flag);
    EXPECT_EQ(decoder->GetLastFrame(), nullptr);
}

TEST_F(CameraDecoder, FailsForAnH264RecordingWithoutItsMedia)
{
    recording.Write();
    const std::wstring name = recording.Name();
    EXPECT_FALSE(Open(name.substr(0, name.size() - 4) + L"h264"));
}

// ---- frames ------------------------------------------------------------------------------------------------------

TEST_F(CameraDecoder, ReadsFrameNFromRecordN)
{
    // The frames lie in the media file in another order than in time.
    std::reverse(recording.records.begin(), recording.records.end());
    recording.Write();
    ASSERT_TRUE(Open());
    for (const std::uint32_t n : {0U, 9U, 4U, 5U, 1U})
        EXPECT_EQ(SureNumberAt(n), 9 - n);
}

TEST_F(CameraDecoder, RepeatsThePreviousFrameBehindTheLastRecord)
{
    recording.Write();
    ASSERT_TRUE(Open());
    EXPECT_EQ(Ask(10), nullptr) << "there is none before";
    EXPECT_EQ(NumberAt(9), 9U);
    const SampleBufferPtr last = frame;
    for (const std::uint64_t n : {10ULL, 11ULL, 1'000'000ULL, 10ULL})
    {
        EXPECT_EQ(Ask(n), last.Get());
        EXPECT_FALSE(flag) << "the failure is not signalled otherwise";
    }
    EXPECT_EQ(SureNumberAt(3), 3U);
}

TEST_F(CameraDecoder, DecodesEverySecondRequest)
{
    recording.Write();
    ASSERT_TRUE(Open());
    EXPECT_EQ(NumberAt(0), 0U);
    const SampleBufferPtr first = frame;
    EXPECT_EQ(Ask(1), first.Get()) << "the same buffer once more";
    EXPECT_EQ(NumberAt(2), 2U);
    EXPECT_EQ(NumberAt(3), 2U);
    EXPECT_EQ(NumberAt(3), 3U) << "asked again, it is decoded";
    EXPECT_EQ(NumberAt(3), 3U) << "and kept";
    EXPECT_EQ(NumberAt(4), 3U) << "a kept frame leaves the turn as it was";
    EXPECT_EQ(NumberAt(5), 5U);
}

TEST_F(CameraDecoder, AFailureTakesNoTurn)
{
    recording.records[1].length = 0;
    recording.Write();
    ASSERT_TRUE(Open());
    EXPECT_EQ(NumberAt(0), 0U);
    EXPECT_EQ(NumberAt(1), 0U) << "skipped";
    EXPECT_EQ(NumberAt(1), 0U) << "failed";
    EXPECT_EQ(NumberAt(2), 2U) << "decoded at once";
}

TEST_F(CameraDecoder, DecodesAnewWhenTheRotationChanges)
{
    recording.Write();
    ASSERT_TRUE(Open());
    const SampleBufferPtr upright = SampleBufferPtr::Retain(Ask(3));
    for (const std::uint32_t rotation : {90U, 180U, 270U, 0U, 90U})
    {
        const SampleBufferPtr before = frame;
        Rotate(rotation);
        ASSERT_NE(Ask(3), nullptr);
        EXPECT_NE(frame.Get(), before.Get());
        const bool side = rotation % 180 != 0;
        EXPECT_EQ(frame->GetWidth(), side ? 48U : 64U);
        EXPECT_EQ(frame->GetHeight(), side ? 64U : 48U);
        tagSampleInfo source;
        upright->GetBuffer(&source.pData, nullptr);
        source.nWidth = 64;
        source.nHeight = 48;
        source.nStride = 256;
        Picture expected{frame->GetWidth(), frame->GetHeight(), std::vector<std::uint8_t>(64 * 48 * 4)};
        tagSampleInfo target;
        target.pData = expected.bgra.data();
        target.nWidth = expected.width;
        target.nHeight = expected.height;
        target.nStride = expected.width * 4;
        ASSERT_TRUE(RotateBGRA(&source, &target, rotation));
        EXPECT_EQ(PictureOf(frame.Get()).bgra, expected.bgra) << rotation;
    }
}

TEST_F(CameraDecoder, AChangedRotationCountsAlsoForAnotherFrame)
{
    recording.Write();
    ASSERT_TRUE(Open());
    EXPECT_EQ(NumberAt(0), 0U);
    Rotate(180);
    Ask(5); // would have been the turn to repeat
    Rotate(0);
    EXPECT_EQ(NumberAt(5), 5U);
}

TEST_F(CameraDecoder, AnAngleBetweenLeavesATransparentPicture)
{
    recording.Write();
    prop.rotation = 45;
    ASSERT_TRUE(Open());
    ASSERT_NE(Ask(0), nullptr);
    EXPECT_EQ(frame->GetWidth(), 48U);
    EXPECT_EQ(frame->GetHeight(), 64U);
    const Picture picture = PictureOf(frame.Get());
    EXPECT_TRUE(std::all_of(picture.bgra.begin(), picture.bgra.end(), [](std::uint8_t b) { return b == 0; }));
}

TEST_F(CameraDecoder, DecodesToTheSizeAskedForWhenItWasOpened)
{
    recording.Write();
    prop.width = 33;
    prop.height = 99;
    ASSERT_TRUE(Open());
    ASSERT_NE(Ask(0), nullptr);
    EXPECT_EQ(frame->GetWidth(), 33U);
    EXPECT_EQ(frame->GetHeight(), 99U);
    decoder->GetProperty()->width = 64; // too late
    decoder->GetProperty()->rotation = 90;
    ASSERT_NE(Ask(0), nullptr);
    EXPECT_EQ(frame->GetWidth(), 99U);
    EXPECT_EQ(frame->GetHeight(), 33U);
}

TEST_F(CameraDecoder, KeepsTheRecordingsOwnSizeWhenNoneIsAskedFor)
{
    recording = CameraRecording(ScratchFolder(), "odd");
    recording.AddNumbered(97, 61, 2);
    recording.Write();
    prop.width = prop.height = 0;
    ASSERT_TRUE(Open());
    EXPECT_EQ(NumberAt(1), 1U);
    EXPECT_EQ(frame->GetWidth(), 97U);
    EXPECT_EQ(frame->GetHeight(), 61U);
    Rotate(270);
    ASSERT_NE(Ask(1), nullptr);
    EXPECT_EQ(frame->GetWidth(), 61U);
}

TEST_F(CameraDecoder, LeavesFramesAsDecodedWhenTheFlagSaysSo)
{
    recording.Write();
    prop.flags = kRequestNoAttachment;
    prop.rotation = 90;
    ASSERT_TRUE(Open());
    EXPECT_EQ(NumberAt(4), 4U);
    EXPECT_EQ(frame->GetWidth(), 64U);
}

TEST_F(CameraDecoder, HandsOutItsLastFrame)
{
    recording.Write();
    ASSERT_TRUE(Open());
    EXPECT_EQ(decoder->GetLastFrame(), nullptr);
    Ask(2);
    EXPECT_EQ(SampleBufferPtr::Adopt(decoder->GetLastFrame()).Get(), frame.Get());
}

// ---- records and data that are wrong -------------------------------------------------------------------------------

TEST_F(CameraDecoder, ComputesThePlaceOfARecordIn32Bits)
{
    // Byte 8 of the index read as a record: its offset is the first record's length, its length the next one's time.
    const std::vector<MetaRecord> usual = recording.records;
    recording.records[0].length = usual[7].offset;
    recording.records[1].time = usual[7].length;
    recording.Write();
    ASSERT_TRUE(Open());
    EXPECT_EQ(SureNumberAt(0x1'0000'0002ULL), 2U) << "2^32 + 2 is frame 2";
    EXPECT_EQ(SureNumberAt(178'956'971), 7U) << "178,956,971 * 24 = 2^32 + 8";
    EXPECT_EQ(SureNumberAt(3), 3U);
    EXPECT_EQ(SureNumberAt(89'478'486), 3U) << "2^31 and more lie before the file";
    EXPECT_EQ(SureNumberAt(~std::uint64_t{0}), 3U) << "-24 too";
}

TEST_F(CameraDecoder, TakesTheLowHalfOfADataOffset)
{
    recording.records[1].offset += std::uint64_t{1} << 32;
    recording.records[2].offset += 0xABCDEF01ULL << 32;
    recording.records[3].offset |= std::uint64_t{1} << 31;
    recording.Write();
    ASSERT_TRUE(Open());
    EXPECT_EQ(SureNumberAt(1), 1U);
    EXPECT_EQ(SureNumberAt(2), 2U);
    EXPECT_EQ(SureNumberAt(3), 2U) << "an offset of 2 GiB or more cannot be reached";
}

TEST_F(CameraDecoder, RepeatsThePreviousFrameForPlacesOutsideTheFile)
{
    recording.records[1].offset = recording.media.size();
    recording.records[2].offset = recording.media.size() - 1;
    recording.records[3].offset = 0x7FFFFFFF;
    recording.records[4].offset = ~std::uint64_t{0};
    recording.records[5].length = 0;
    recording.records[6].length = std::uint64_t{1} << 63;
    recording.records[7].length = ~std::uint64_t{0};
    recording.records[8].length = 0x80000000;
    recording.records[9].length = 0x7FFFFFFF;
    recording.Write();
    ASSERT_TRUE(Open());
    EXPECT_EQ(NumberAt(0), 0U);
    for (std::uint64_t n = 1; n < 10; ++n)
        EXPECT_EQ(SureNumberAt(n), 0U) << n;
}

TEST_F(CameraDecoder, RepeatsThePreviousFrameForDamagedData)
{
    recording.records[1].length /= 2; // ends early
    recording.records[2].length -= 2; // without its end marker
    recording.records[3].offset += 1; // begins late
    const MetaRecord& zeros = recording.records[4];
    std::fill_n(recording.media.begin() + static_cast<std::ptrdiff_t>(zeros.offset), zeros.length, std::uint8_t{0});
    recording.Write();
    ASSERT_TRUE(Open());
    EXPECT_EQ(NumberAt(0), 0U);
    for (std::uint64_t n = 1; n < 5; ++n)
        EXPECT_EQ(SureNumberAt(n), 0U) << n;
    EXPECT_EQ(SureNumberAt(5), 5U);
}

TEST_F(CameraDecoder, CountsOnlyWholeRecords)
{
    recording.records.resize(2);
    recording.Write(23);
    ASSERT_TRUE(Open());
    EXPECT_EQ(NumberAt(1), 1U);
    EXPECT_EQ(SureNumberAt(2), 1U);
}

TEST_F(CameraDecoder, GivesNothingOfAnEmptyIndex)
{
    recording.records.clear();
    for (const std::size_t cb : {std::size_t{0}, std::size_t{23}})
    {
        recording.Write(cb);
        ASSERT_TRUE(Open());
        EXPECT_EQ(Ask(0), nullptr);
        EXPECT_EQ(Ask(0), nullptr);
        EXPECT_FALSE(flag);
    }
}
} // namespace
