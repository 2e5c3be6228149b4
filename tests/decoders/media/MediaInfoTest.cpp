/// @file MediaInfoTest.cpp
/// The queries' decisions, over a scripted source reader and source resolver and a file on the disk.
#include "tests/decoders/media/MediaInfoFixture.h"

#include "tests/model/AllocationFailure.h"

#include <cmath>

namespace
{
using QMXGetAudioInfoTest = MediaInfoTest;
using QMXGetVideoInfoTest = MediaInfoTest;
using QMXGetImageInfoTest = MediaInfoTest;
using QMXGetMediaInfoTest = MediaInfoTest;

/// A record that shows which fields were written.
tagAudioInfo Marked()
{
    tagAudioInfo info;
    info.nSamplesPerSec = 11;
    info.nChannels = 12;
    info.nBitsPerSample = 13;
    info.dDuration = 14;
    return info;
}

bool HasFormatOfMark(const tagAudioInfo& info)
{
    return info.nSamplesPerSec == 11 && info.nChannels == 12 && info.nBitsPerSample == 13;
}
} // namespace

// ---- sound ---------------------------------------------------------------------------------------------------------

TEST_F(QMXGetAudioInfoTest, FillsEveryField)
{
    media.duration = 25'000'000;
    media.recorded = kRecorded;
    tagAudioInfo info = Marked();
    EXPECT_TRUE(QMXGetAudioInfo(Path(), &info));
    EXPECT_EQ(info.nSamplesPerSec, 48'000U);
    EXPECT_EQ(info.nChannels, 2U);
    EXPECT_EQ(info.nBitsPerSample, 16U);
    EXPECT_EQ(info.dDuration, 2.5);
    EXPECT_EQ(Ticks(info.ftDate), kRecorded);
    EXPECT_EQ(media.nReads, 0);
    EXPECT_EQ(media.selections, (std::vector<std::pair<DWORD, BOOL>>{{0xFFFFFFFEU, FALSE}, {0xFFFFFFFDU, TRUE}}));
    EXPECT_EQ(media.streams, std::vector<DWORD>{0xFFFFFFFDU});
    EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
}

TEST_F(QMXGetAudioInfoTest, LeavesWhatTheStreamDoesNotSay)
{
    media.sound = {{}, {}, {}, {}, {}, {}};
    tagAudioInfo info = Marked();
    EXPECT_TRUE(QMXGetAudioInfo(Path(), &info));
    EXPECT_TRUE(HasFormatOfMark(info));
    EXPECT_EQ(info.dDuration, 14);
    media.sound.rate = 8'000;
    media.sound.channels = 1;
    EXPECT_TRUE(QMXGetAudioInfo(Path(), &info)); // as compressed sound, which has no bits
    EXPECT_EQ(info.nSamplesPerSec, 8'000U);
    EXPECT_EQ(info.nChannels, 1U);
    EXPECT_EQ(info.nBitsPerSample, 13U);
}

TEST_F(QMXGetAudioInfoTest, TellsTheMediasOwnDateAsItIs)
{
    media.recorded = kRecorded;
    RemoveFile(); // not needed for it
    tagAudioInfo info;
    EXPECT_TRUE(QMXGetAudioInfo(Path(), &info));
    EXPECT_EQ(Ticks(info.ftDate), kRecorded);
    EXPECT_EQ(media.nSources, 1);
    EXPECT_EQ(media.nShutdowns, 1);
}

TEST_F(QMXGetAudioInfoTest, TellsTheLocalDateOfAFileWithoutOneOfItsOwn)
{
    tagAudioInfo info;
    EXPECT_TRUE(QMXGetAudioInfo(Path(), &info));
    EXPECT_EQ(Ticks(info.ftDate), LocalDate());
    EXPECT_EQ(media.nShutdowns, media.nSources);
}

TEST_F(QMXGetAudioInfoTest, DateOfZeroIsNone)
{
    media.recorded = 0;
    tagAudioInfo info;
    EXPECT_TRUE(QMXGetAudioInfo(Path(), &info));
    EXPECT_EQ(Ticks(info.ftDate), LocalDate());
}

TEST_F(QMXGetAudioInfoTest, CallersDateGivesWayToTheMediasOnly)
{
    RemoveFile(); // a file that would have to be opened now would fail the query
    tagAudioInfo info;
    info.ftDate = {5, 0};
    EXPECT_TRUE(QMXGetAudioInfo(Path(), &info));
    EXPECT_EQ(Ticks(info.ftDate), 5U);
    media.recorded = kRecorded;
    EXPECT_TRUE(QMXGetAudioInfo(Path(), &info));
    EXPECT_EQ(Ticks(info.ftDate), kRecorded);
}

TEST_F(QMXGetAudioInfoTest, EveryFailureOnTheWayToTheMediasDateIsSilent)
{
    media.recorded = kRecorded;
    for (const char* const operation :
         {"CreateObjectFromURL", "IMFMediaSource", "IMFGetService", "GetService", "GetValue"})
    {
        SCOPED_TRACE(operation);
        media.failing = {operation};
        tagAudioInfo info;
        EXPECT_TRUE(QMXGetAudioInfo(Path(), &info));
        EXPECT_EQ(Ticks(info.ftDate), LocalDate());
        EXPECT_EQ(info.nSamplesPerSec, 48'000U);
        ExpectNothingOpen();
    }
    media.failing.clear();
    CFakeSystem::FailingFunctions() = {"MFCreateSourceResolver"};
    tagAudioInfo info;
    EXPECT_TRUE(QMXGetAudioInfo(Path(), &info));
    EXPECT_EQ(Ticks(info.ftDate), LocalDate());
    CFakeSystem::FailingFunctions().clear();
    media.recordedIsNumber = true;
    EXPECT_TRUE(QMXGetAudioInfo(Path(), &(info = {})));
    EXPECT_EQ(Ticks(info.ftDate), LocalDate());
}

TEST_F(QMXGetAudioInfoTest, FileThatVanishesOnTheWayIsAFailureAlthoughTheMediaWereRead)
{
    media.duration = 10'000'000;
    media.onResolve = [&] { RemoveFile(); };
    tagAudioInfo info = Marked();
    EXPECT_FALSE(QMXGetAudioInfo(Path(), &info));
    EXPECT_EQ(info.dDuration, 1); // partly filled
    EXPECT_TRUE(HasFormatOfMark(info));
    EXPECT_EQ(Ticks(info.ftDate), 0U);
    ExpectNothingOpen();
    // With a date of its own it need not be there any more.
    WriteFile();
    media.recorded = kRecorded;
    EXPECT_TRUE(QMXGetAudioInfo(Path(), &info));
}

TEST_F(QMXGetAudioInfoTest, FolderInTheFilesPlaceIsAFailure)
{
    RemoveFile();
    std::filesystem::create_directory(Path());
    tagAudioInfo info;
    EXPECT_FALSE(QMXGetAudioInfo(Path(), &info));
}

TEST_F(QMXGetAudioInfoTest, FileThatIsNoMediaIsAFailureThatTouchesNothing)
{
    media.failing = {"Open"};
    media.duration = 10;
    tagAudioInfo info = Marked();
    EXPECT_FALSE(QMXGetAudioInfo(Path(), &info));
    EXPECT_TRUE(HasFormatOfMark(info));
    EXPECT_EQ(info.dDuration, 14);
    EXPECT_EQ(Ticks(info.ftDate), 0U);
    EXPECT_EQ(media.nSources, 0);
    EXPECT_FALSE(QMXGetAudioInfo(L"", &info));
    EXPECT_FALSE(QMXGetAudioInfo(L"no such file.mp3", &info));
}

TEST_F(QMXGetAudioInfoTest, FileWithoutSoundIsAFailureThatKnowsDurationAndDate)
{
    media.duration = 10'000'000;
    media.recorded = kRecorded;
    for (const char* const operation : {"DeselectAll", "Select", "GetNativeMediaType"})
    {
        SCOPED_TRACE(operation);
        media.failing = {operation};
        tagAudioInfo info = Marked();
        EXPECT_FALSE(QMXGetAudioInfo(Path(), &info));
        EXPECT_TRUE(HasFormatOfMark(info));
        EXPECT_EQ(info.dDuration, 1);
        EXPECT_EQ(Ticks(info.ftDate), kRecorded);
        ExpectNothingOpen();
    }
}

TEST_F(QMXGetAudioInfoTest, NullRecordIsAFailure)
{
    EXPECT_FALSE(QMXGetAudioInfo(Path(), nullptr));
    EXPECT_TRUE(media.selections.empty());
}

// ---- pictures of a film --------------------------------------------------------------------------------------------

TEST_F(QMXGetVideoInfoTest, TellsWhatTheDecoderFindsAndClosesTheFile)
{
    media.AddFrames(2, 1);
    media.size = {1920, 1080};
    media.rotation = 90;
    media.frameRate = {30'000, 1'001};
    media.pixelAspect = {4, 3};
    media.duration = 40'000'000;
    CFakeSystem::HasDevice() = true;
    tagVideoInfo info;
    EXPECT_TRUE(QMXGetVideoInfo(Path(), &info));
    EXPECT_EQ(info.nWidth, 1080U);
    EXPECT_EQ(info.nHeight, 1920U);
    EXPECT_EQ(info.nRotation, 90U);
    EXPECT_EQ(info.nFrameRateNum, 30'000U);
    EXPECT_EQ(info.nFrameRateDen, 1'001U);
    EXPECT_EQ(info.dFrameRate, 30'000.0 / 1'001.0);
    EXPECT_EQ(info.nPixelAspectX, 4U);
    EXPECT_EQ(info.nPixelAspectY, 3U);
    EXPECT_EQ(info.dDuration, 4);
    EXPECT_EQ(media.nReads, 1);
    ExpectNothingOpen();
}

TEST_F(QMXGetVideoInfoTest, FilmWithoutAPictureIsAFailure)
{
    tagVideoInfo info;
    EXPECT_FALSE(QMXGetVideoInfo(Path(), &info)); // opens, but its first read meets the end
    ExpectNothingOpen();
    media.AddFrames(1, 1);
    EXPECT_TRUE(QMXGetVideoInfo(Path(), &info));
    media.failing = {"Open"};
    EXPECT_FALSE(QMXGetVideoInfo(Path(), &info));
    EXPECT_FALSE(QMXGetVideoInfo(L"no such film.mp4", &info));
    EXPECT_FALSE(QMXGetVideoInfo(L"", &info));
}

TEST_F(QMXGetVideoInfoTest, NullRecordIsAFailure)
{
    EXPECT_FALSE(QMXGetVideoInfo(Path(), nullptr));
    EXPECT_FALSE(QMXGetVideoInfo(L"movie.swf", nullptr));
    EXPECT_TRUE(media.selections.empty());
}

TEST_F(QMXGetVideoInfoTest, NameThatEndsInSwfInAnyCaseIsAFlashMovie)
{
    // 64 by 48 pixels, 25.5 frames a second, two empty frames.
    const unsigned char movie[] = {0x46, 0x57, 0x53, 0x0A, 0x19, 0x00, 0x00, 0x00, 0x60, 0x00, 0x28, 0x00, 0x00,
                                   0x1E, 0x00, 0x80, 0x19, 0x02, 0x00, 0x40, 0x00, 0x40, 0x00, 0x00, 0x00};
    const test_support::TemporaryFolder folder;
    for (const char* const pName : {"a.SWF", "b.swf", "c.mp4.Swf", "swf"}) // the last: a name without an extension
    {
        const std::filesystem::path path = folder.Path() / pName;
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(movie), static_cast<std::streamsize>(sizeof movie));
        const std::wstring name = path.wstring();
        tagVideoInfo info;
        info.nRotation = 21;
        info.nFrameRateNum = 22;
        info.nFrameRateDen = 23;
        info.nPixelAspectX = 24;
        info.nPixelAspectY = 25;
        // The whole name counts where there is no dot: a folder before it makes it another one.
        const bool isFlash = std::string(pName) != "swf";
        ASSERT_EQ(QMXGetVideoInfo(name, &info), isFlash) << pName;
        EXPECT_EQ(info.nWidth, isFlash ? 64U : 0U);
        EXPECT_EQ(info.nHeight, isFlash ? 48U : 0U);
        EXPECT_EQ(info.dFrameRate, isFlash ? 25.5 : 0);
        EXPECT_EQ(info.dDuration, isFlash ? 2 / 25.5 : 0);
        EXPECT_EQ(info.nRotation, 21U);
        EXPECT_EQ(info.nFrameRateNum, 22U);
        EXPECT_EQ(info.nFrameRateDen, 23U);
        EXPECT_EQ(info.nPixelAspectX, 24U);
        EXPECT_EQ(info.nPixelAspectY, 25U);
    }
    EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
}

TEST_F(QMXGetVideoInfoTest, FlashMovieThatCannotBeReadHasNoSize)
{
    for (const wchar_t* const pName : {L"no such movie.swf", L"swf"})
    {
        tagVideoInfo info;
        info.nWidth = info.nHeight = 7;
        EXPECT_TRUE(QMXGetVideoInfo(pName, &info)); // nobody looks whether it could be opened
        EXPECT_EQ(info.nWidth, 0U);
        EXPECT_EQ(info.nHeight, 0U);
        EXPECT_EQ(info.dFrameRate, 0);
        EXPECT_TRUE(std::isnan(info.dDuration));
    }
}

// ---- pictures ------------------------------------------------------------------------------------------------------

TEST_F(QMXGetImageInfoTest, TellsTheLocalDateOfAnyFile)
{
    FILETIME date = {1, 2};
    EXPECT_TRUE(QMXGetImageInfo(Path(), &date)); // its content is not looked at
    EXPECT_EQ(Ticks(date), LocalDate());
    EXPECT_EQ(media.nSources, 0);
    EXPECT_TRUE(media.streams.empty());
}

TEST_F(QMXGetImageInfoTest, FileThatCannotBeOpenedIsAFailureThatTouchesNothing)
{
    FILETIME date = {1, 2};
    RemoveFile();
    EXPECT_FALSE(QMXGetImageInfo(Path(), &date));
    std::filesystem::create_directory(Path());
    EXPECT_FALSE(QMXGetImageInfo(Path(), &date));
    EXPECT_FALSE(QMXGetImageInfo(L"", &date));
    EXPECT_EQ(date.dwLowDateTime, 1U);
    EXPECT_EQ(date.dwHighDateTime, 2U);
}

TEST_F(QMXGetImageInfoTest, NullDateIsAFailure)
{
    EXPECT_FALSE(QMXGetImageInfo(Path(), nullptr));
}

// ---- both ----------------------------------------------------------------------------------------------------------

TEST_F(QMXGetMediaInfoTest, TellsOfPicturesAndSound)
{
    media.AddFrames(1, 1);
    media.recorded = kRecorded;
    tagMediaInfo info;
    EXPECT_TRUE(QMXGetMediaInfo(Path(), &info));
    EXPECT_EQ(info.dwFlags, kMediaHasAudio | kMediaHasVideo);
    EXPECT_EQ(info.dwFlags, 3U);
    EXPECT_EQ(info.video.nWidth, 64U);
    EXPECT_EQ(info.audio.nChannels, 2U);
    EXPECT_EQ(Ticks(info.audio.ftDate), kRecorded);
    ExpectNothingOpen();
}

TEST_F(QMXGetMediaInfoTest, SoundAloneIsOne)
{
    tagMediaInfo info;
    EXPECT_TRUE(QMXGetMediaInfo(Path(), &info)); // no picture can be read
    EXPECT_EQ(info.dwFlags, 1U);
}

TEST_F(QMXGetMediaInfoTest, PicturesAloneAreTwo)
{
    media.AddFrames(1, 1);
    media.onResolve = [&] { RemoveFile(); }; // fails the query for sound
    tagMediaInfo info;
    EXPECT_TRUE(QMXGetMediaInfo(Path(), &info));
    EXPECT_EQ(info.dwFlags, 2U);
}

TEST_F(QMXGetMediaInfoTest, NothingIsZero)
{
    media.failing = {"Open"};
    tagMediaInfo info;
    info.dwFlags = 3;
    EXPECT_FALSE(QMXGetMediaInfo(Path(), &info));
    EXPECT_EQ(info.dwFlags, 0U);
}

TEST_F(QMXGetMediaInfoTest, EveryByteIsZeroBeforeItIsUsed)
{
    unsigned char bytes[sizeof(tagMediaInfo) + 1];
    std::memset(bytes, 0xA5, sizeof bytes);
    alignas(tagMediaInfo) unsigned char record[sizeof(tagMediaInfo)];
    std::memcpy(record, bytes, sizeof record);
    EXPECT_FALSE(QMXGetMediaInfo(L"no such file", reinterpret_cast<tagMediaInfo*>(record)));
    for (const unsigned char byte : record)
        EXPECT_EQ(byte, 0);
}

TEST_F(QMXGetMediaInfoTest, FilmWithoutAFrameRateHasOneThatIsNoNumber)
{
    media.AddFrames(1, 1);
    media.frameRate.reset();
    tagMediaInfo info;
    info.video.nFrameRateNum = 25;
    info.video.nFrameRateDen = 1;
    EXPECT_TRUE(QMXGetMediaInfo(Path(), &info));
    EXPECT_EQ(info.video.nFrameRateNum, 0U);
    EXPECT_EQ(info.video.nFrameRateDen, 0U);
    EXPECT_TRUE(std::isnan(info.video.dFrameRate));
}

TEST_F(QMXGetMediaInfoTest, NullRecordIsAFailure)
{
    EXPECT_FALSE(QMXGetMediaInfo(Path(), nullptr));
    EXPECT_TRUE(media.selections.empty());
}

TEST_F(QMXGetMediaInfoTest, ShortMemoryIsAFailureWithEveryReferenceBack)
{
    media.AddFrames(1, 1);
    media.recorded = kRecorded;
    int refusals = 0;
    for (int allowed = 0;; ++allowed)
    {
        std::wstring path = Path();
        tagMediaInfo info;
        bool happened = false;
        {
            const CAllocationFailure failure(allowed);
            QMXGetMediaInfo(std::move(path), &info);
            happened = CAllocationFailure::Happened();
        }
        ExpectNothingOpen();
        if (!happened)
        {
            EXPECT_EQ(info.dwFlags, 3U);
            break;
        }
        ++refusals;
        ASSERT_LT(allowed, 1'000);
    }
    EXPECT_GT(refusals, 0);
}
