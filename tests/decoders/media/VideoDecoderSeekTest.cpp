#include "tests/decoders/media/VideoDecoderFixture.h"

namespace
{
using CVideoDecoderSeek = CVideoDecoderTest;
using Times = std::vector<LONGLONG>;
using Size = std::pair<std::uint32_t, std::uint32_t>;

TEST_F(CVideoDecoderSeek, FirstRequestSeeks)
{
    media.AddFrames(10, kFrame);
    EXPECT_TRUE(Open());
    EXPECT_EQ(Pixel(Get(3 * kFrame)), FakeColor(3));
    EXPECT_FALSE(ended);
    EXPECT_EQ(media.seeks, (Times{static_cast<LONGLONG>(3 * kFrame)}));
    EXPECT_EQ(media.nReads, 1); // the sample that the seek has read is the one shown
}

TEST_F(CVideoDecoderSeek, SameTimeAndRotationGivesTheSameBufferWithOneMoreReference)
{
    media.AddFrames(10, kFrame);
    EXPECT_TRUE(Open());
    ISampleBuffer* const first = Get(2 * kFrame);
    const std::uint32_t count = first->AddRef();
    const int nReads = media.nReads;
    EXPECT_EQ(Get(2 * kFrame), first);
    EXPECT_EQ(first->AddRef(), count + 2); // one of them is this call's
    first->Release();
    first->Release();
    EXPECT_EQ(media.nReads, nReads);
    EXPECT_EQ(media.seeks.size(), 1U);
}

TEST_F(CVideoDecoderSeek, LastFrameComesWithAReferenceOfItsOwn)
{
    media.AddFrames(2, kFrame);
    EXPECT_TRUE(Open());
    EXPECT_EQ(decoder->GetLastFrame(), nullptr);
    ISampleBuffer* const frame = Get(0);
    const SampleBufferPtr last = SampleBufferPtr::Adopt(decoder->GetLastFrame());
    EXPECT_EQ(last.Get(), frame);
    frames.clear();
    decoder = {};
    EXPECT_EQ(last->AddRef(), 2U);
    EXPECT_EQ(last->Release(), 1U);
}

TEST_F(CVideoDecoderSeek, OtherRotationAtTheSameTimeShowsTheSamePictureTurned)
{
    media.AddFrames(10, kFrame);
    EXPECT_TRUE(Open());
    ISampleBuffer* const upright = Get(2 * kFrame);
    decoder->SetDecoderProperty(Record(64, 90));
    ISampleBuffer* const turned = Get(2 * kFrame);
    ASSERT_NE(turned, nullptr);
    EXPECT_NE(turned, upright);
    EXPECT_EQ(Pixel(turned), FakeColor(2));
    EXPECT_EQ(turned->GetWidth(), 36U);
    EXPECT_EQ(turned->GetHeight(), 64U);
    EXPECT_EQ(Get(2 * kFrame), turned);
    decoder->SetDecoderProperty(Record(64, 0));
    EXPECT_EQ(Pixel(Get(2 * kFrame)), FakeColor(2));
}

TEST_F(CVideoDecoderSeek, OtherRotationAtTheNextTimeReadsOn)
{
    media.AddFrames(10, kFrame);
    EXPECT_TRUE(Open());
    Get(2 * kFrame);
    decoder->SetDecoderProperty(Record(64, 180));
    EXPECT_EQ(Pixel(Get(3 * kFrame)), FakeColor(3));
    EXPECT_EQ(media.seeks.size(), 1U);
}

TEST_F(CVideoDecoderSeek, OtherWidthAtTheSameTimeShowsTheSamePictureScaled)
{
    media.AddFrames(10, kFrame);
    for (const std::uint32_t rotation : {0U, 270U})
    {
        EXPECT_TRUE(Open(Record(64, rotation)));
        Get(2 * kFrame);
        decoder->SetDecoderProperty(Record(32, rotation));
        ISampleBuffer* const smaller = Get(2 * kFrame);
        ASSERT_NE(smaller, nullptr);
        EXPECT_EQ(Pixel(smaller), FakeColor(2));
        EXPECT_EQ(rotation == 0 ? smaller->GetWidth() : smaller->GetHeight(), 32U);
        EXPECT_EQ(Get(2 * kFrame), smaller);
    }
}

TEST_F(CVideoDecoderSeek, LessThanThreeFramesAheadReadsOn)
{
    media.AddFrames(20, kFrame);
    EXPECT_TRUE(Open());
    Get(kFrame);
    EXPECT_EQ(Pixel(Get(2 * kFrame)), FakeColor(2));
    EXPECT_EQ(media.nReads, 2);
    const std::uint64_t ahead = 2 * kFrame + 29 * kFrame / 10; // 2.9 intervals: shown from frame 5 on
    EXPECT_EQ(Pixel(Get(ahead)), FakeColor(5));
    EXPECT_EQ(media.nReads, 5);
    EXPECT_EQ(Pixel(Get(ahead + 3 * kFrame - 1)), FakeColor(8));
    EXPECT_EQ(media.seeks.size(), 1U);
    EXPECT_EQ(CFakeSystem::LiveBuffers(), 0); // those passed by have gone
}

TEST_F(CVideoDecoderSeek, ExactlyThreeFramesAheadSeeks)
{
    media.AddFrames(20, kFrame);
    EXPECT_TRUE(Open());
    Get(kFrame);
    EXPECT_EQ(Pixel(Get(4 * kFrame)), FakeColor(4));
    EXPECT_EQ(media.seeks, (Times{static_cast<LONGLONG>(kFrame), static_cast<LONGLONG>(4 * kFrame)}));
}

TEST_F(CVideoDecoderSeek, FrameDurationOfTheRecordDecides)
{
    media.AddFrames(100, kFrame);
    tagDecProp prop = Record();
    prop.frameDuration = 10 * kFrame;
    EXPECT_TRUE(Open(prop));
    Get(0);
    EXPECT_EQ(Pixel(Get(29 * kFrame)), FakeColor(29));
    EXPECT_EQ(media.seeks.size(), 1U);
    prop.frameDuration = 0; // no forward request is near enough then
    decoder->SetDecoderProperty(prop);
    EXPECT_EQ(Pixel(Get(30 * kFrame)), FakeColor(30));
    EXPECT_EQ(media.seeks.size(), 2U);
}

TEST_F(CVideoDecoderSeek, BackwardRequestSeeks)
{
    media.AddFrames(10, kFrame);
    EXPECT_TRUE(Open());
    Get(5 * kFrame);
    EXPECT_EQ(Pixel(Get(4 * kFrame)), FakeColor(4));
    EXPECT_EQ(Pixel(Get(4 * kFrame - 1)), FakeColor(4));
    EXPECT_EQ(media.seeks.size(), 3U);
}

TEST_F(CVideoDecoderSeek, SeekThatLandsEarlyReadsUpToTheTime)
{
    media.AddFrames(30, kFrame);
    media.seek = [](LONGLONG) { return std::size_t{0}; }; // one key frame
    EXPECT_TRUE(Open());
    EXPECT_EQ(Pixel(Get(20 * kFrame)), FakeColor(20));
    EXPECT_EQ(media.nReads, 21);
    EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
}

TEST_F(CVideoDecoderSeek, NothingIsReadAheadForTimeZero)
{
    media.AddFrames(3, kFrame);
    EXPECT_TRUE(Open());
    VideoDecoderProbe::SkipPreload(decoder, 0);
    EXPECT_EQ(media.nReads, 0);
    EXPECT_FALSE(VideoDecoderProbe::HasPending(decoder));
    EXPECT_EQ(VideoDecoderProbe::LastTime(decoder), 0U);
    EXPECT_EQ(Pixel(Get(0)), FakeColor(0));
}

TEST_F(CVideoDecoderSeek, PendingSampleIsShownOnceAndReplacedByTheNextSeek)
{
    media.AddFrames(10, kFrame);
    EXPECT_TRUE(Open());
    VideoDecoderProbe::SkipPreload(decoder, 2 * kFrame);
    EXPECT_TRUE(VideoDecoderProbe::HasPending(decoder));
    EXPECT_EQ(CFakeSystem::LiveBuffers(), 1);
    VideoDecoderProbe::SkipPreload(decoder, 4 * kFrame);
    EXPECT_EQ(CFakeSystem::LiveBuffers(), 1);
    EXPECT_EQ(Pixel(Get(4 * kFrame)), FakeColor(4));
    EXPECT_FALSE(VideoDecoderProbe::HasPending(decoder));
    EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
    VideoDecoderProbe::SkipPreload(decoder, 5 * kFrame);
    decoder = {}; // a pending sample goes with the decoder
    EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
}

TEST_F(CVideoDecoderSeek, SampleBeforeTheStartReachesNoRequest)
{
    media.AddFrames(5, kFrame, -2 * static_cast<LONGLONG>(kFrame));
    EXPECT_TRUE(Open());
    EXPECT_EQ(Pixel(Get(0)), FakeColor(2));
}

TEST_F(CVideoDecoderSeek, ReadingPastTheEndGivesTheLastFrameAgainAndSaysSo)
{
    media.AddFrames(3, kFrame);
    EXPECT_TRUE(Open());
    ISampleBuffer* const last = Get(2 * kFrame);
    EXPECT_FALSE(ended);
    EXPECT_EQ(Get(3 * kFrame), last);
    EXPECT_TRUE(ended);
    EXPECT_EQ(media.seeks.size(), 1U);
    EXPECT_EQ(Get(3 * kFrame), last); // the time has not been reached, so the end is met again
    EXPECT_TRUE(ended);
    EXPECT_EQ(Get(2 * kFrame), last);
    EXPECT_FALSE(ended);
}

TEST_F(CVideoDecoderSeek, SeekingPastTheEndGivesTheLastFrameAgainAndSaysSoOnce)
{
    media.AddFrames(3, kFrame);
    EXPECT_TRUE(Open());
    ISampleBuffer* const last = Get(0);
    EXPECT_EQ(Get(100 * kFrame), last);
    EXPECT_TRUE(ended);
    EXPECT_EQ(media.seeks.size(), 2U);
    EXPECT_FALSE(VideoDecoderProbe::HasPending(decoder));
    EXPECT_EQ(Get(100 * kFrame), last);
    EXPECT_FALSE(ended);
    EXPECT_EQ(media.seeks.size(), 2U);
}

TEST_F(CVideoDecoderSeek, PastTheEndWithoutAnEarlierFrameThereIsNone)
{
    media.AddFrames(3, kFrame);
    EXPECT_TRUE(Open());
    EXPECT_EQ(Get(100 * kFrame), nullptr);
    EXPECT_TRUE(ended);
    EXPECT_EQ(Get(0) != nullptr, true);
    EXPECT_FALSE(ended);
}

TEST_F(CVideoDecoderSeek, SeekThatReadsToTheEndKeepsNoSample)
{
    media.AddFrames(3, kFrame);
    media.seek = [](LONGLONG) { return std::size_t{0}; };
    EXPECT_TRUE(Open());
    EXPECT_EQ(Get(100 * kFrame), nullptr);
    EXPECT_TRUE(ended);
    EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
}

TEST_F(CVideoDecoderSeek, SampleThatComesWithTheEndOfAReadIsNotShown)
{
    media.AddFrames(3, kFrame);
    media.reads[2].flags = MF_SOURCE_READERF_ENDOFSTREAM;
    EXPECT_TRUE(Open());
    ISampleBuffer* const second = Get(kFrame);
    EXPECT_EQ(Get(2 * kFrame), second);
    EXPECT_TRUE(ended);
    EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
}

TEST_F(CVideoDecoderSeek, EmptyFileEndsAtOnce)
{
    EXPECT_TRUE(Open());
    EXPECT_EQ(Get(0), nullptr);
    EXPECT_TRUE(ended);
    EXPECT_EQ(Get(kFrame), nullptr);
    EXPECT_TRUE(ended);
}

/// A file in which a seek into the last second lands behind everything.
class CVideoDecoderSeekBack : public CVideoDecoderTest
{
protected:
    CVideoDecoderSeekBack()
    {
        media.AddFrames(60, kFrame);
        media.seek = [](LONGLONG time) { return time > static_cast<LONGLONG>(40 * kFrame) ? 60U : 20U; };
    }
    bool OpenWith(std::uint64_t flags)
    {
        tagDecProp prop = Record();
        prop.flags = flags;
        return Open(prop);
    }
};

TEST_F(CVideoDecoderSeekBack, StartsOneSecondEarlierWhereTheRecordAllowsIt)
{
    EXPECT_TRUE(OpenWith(kRequestSeekBack));
    const int nFlushes = media.nFlushes;
    EXPECT_EQ(Pixel(Get(50 * kFrame)), FakeColor(50));
    EXPECT_FALSE(ended);
    EXPECT_EQ(media.seeks,
              (Times{static_cast<LONGLONG>(50 * kFrame), static_cast<LONGLONG>(50 * kFrame) - 10'000'000}));
    EXPECT_EQ(media.nFlushes, nFlushes + 1);
    EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
    EXPECT_EQ(Pixel(Get(51 * kFrame)), FakeColor(51));
    EXPECT_EQ(media.seeks.size(), 2U);
}

TEST_F(CVideoDecoderSeekBack, IsNotDoneWithoutTheBit)
{
    EXPECT_TRUE(OpenWith(~kRequestSeekBack));
    EXPECT_EQ(Get(50 * kFrame), nullptr);
    EXPECT_TRUE(ended);
    EXPECT_EQ(media.seeks.size(), 1U);
}

TEST_F(CVideoDecoderSeekBack, IsNotDoneWhenTheSeekFindsSomething)
{
    EXPECT_TRUE(OpenWith(kRequestSeekBack));
    EXPECT_EQ(Pixel(Get(30 * kFrame)), FakeColor(30));
    EXPECT_EQ(media.seeks.size(), 1U);
}

TEST_F(CVideoDecoderSeekBack, NeverStartsBeforeTheFile)
{
    media.seek = [](LONGLONG time) { return time > 0 ? 60U : 0U; };
    EXPECT_TRUE(OpenWith(kRequestSeekBack));
    EXPECT_EQ(Pixel(Get(2 * kFrame)), FakeColor(2));
    EXPECT_EQ(media.seeks, (Times{static_cast<LONGLONG>(2 * kFrame), 0}));
}

TEST_F(CVideoDecoderSeekBack, AtTheEndOfTheFileFindsItsLastPicture)
{
    EXPECT_TRUE(OpenWith(kRequestSeekBack));
    EXPECT_EQ(Pixel(Get(60 * kFrame)), FakeColor(59));
    EXPECT_EQ(media.seeks.size(), 2U);
    EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
}

TEST_F(CVideoDecoderSeekBack, FarBehindTheEndFindsNothing)
{
    media.seek = {};
    EXPECT_TRUE(OpenWith(kRequestSeekBack));
    EXPECT_EQ(Get(600 * kFrame), nullptr);
    EXPECT_TRUE(ended);
    EXPECT_EQ(media.seeks.size(), 2U);
}

TEST_F(CVideoDecoderSeekBack, FollowsAReadThatBreaksOff)
{
    media.seek = {};
    EXPECT_TRUE(OpenWith(kRequestSeekBack));
    EXPECT_EQ(Pixel(Get(40 * kFrame)), FakeColor(40));
    media.reads[41].picture.reset(); // a gap in the stream
    media.reads[41].flags = MF_SOURCE_READERF_STREAMTICK;
    media.seek = [this](LONGLONG)
    {
        media.AddFrames(1, 1, static_cast<LONGLONG>(41 * kFrame));
        return std::size_t{60};
    };
    EXPECT_EQ(Pixel(Get(41 * kFrame)), FakeColor(60));
    EXPECT_EQ(media.seeks.size(), 2U);
    EXPECT_EQ(media.seeks[1], static_cast<LONGLONG>(41 * kFrame) - 10'000'000);
    EXPECT_EQ(VideoDecoderProbe::LastTime(decoder), 41 * kFrame);
}

TEST_F(CVideoDecoderSeek, GapAtTheTimeAskedForGivesNoPictureAndTheStreamGoesOn)
{
    media.AddFrames(6, kFrame);
    media.reads[2].picture.reset();
    EXPECT_TRUE(Open());
    Get(kFrame);
    EXPECT_EQ(Get(2 * kFrame), nullptr);
    EXPECT_FALSE(ended);
    EXPECT_EQ(Pixel(Get(3 * kFrame)), FakeColor(3));
}

TEST_F(CVideoDecoderSeek, FailingReadEndsTheLoop)
{
    media.AddFrames(6, kFrame);
    EXPECT_TRUE(Open());
    Get(kFrame);
    media.failing = {"ReadSample"};
    EXPECT_EQ(Get(2 * kFrame), nullptr);
    EXPECT_FALSE(ended);
    EXPECT_EQ(Get(50 * kFrame), nullptr);
    media.failing.clear();
    EXPECT_EQ(Pixel(Get(kFrame)), FakeColor(1));
}

TEST_F(CVideoDecoderSeek, ErrorFlagEndsTheLoop)
{
    media.AddFrames(2, kFrame);
    media.reads[1].picture.reset();
    media.reads[1].flags = MF_SOURCE_READERF_ERROR;
    media.endless = true;
    EXPECT_TRUE(Open());
    Get(0);
    EXPECT_EQ(Get(2 * kFrame), nullptr);
    EXPECT_EQ(media.nReads, 2);
}

TEST_F(CVideoDecoderSeek, StreamThatStandsStillIsGivenUp)
{
    media.AddFrames(3, kFrame);
    media.reads[2].picture.reset();
    media.endless = true; // the third read comes for ever
    EXPECT_TRUE(Open());
    Get(kFrame);
    EXPECT_EQ(Get(3 * kFrame), nullptr);
    EXPECT_FALSE(ended);
    EXPECT_LT(media.nReads, 2'000);
    EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
}

TEST_F(CVideoDecoderSeek, FailingSeekReadsOnFromWhereTheReaderStands)
{
    media.AddFrames(10, kFrame);
    EXPECT_TRUE(Open());
    Get(kFrame);
    media.failing = {"SetCurrentPosition"};
    EXPECT_EQ(Pixel(Get(6 * kFrame)), FakeColor(6));
}

TEST_F(CVideoDecoderSeek, TimeBeyondEveryTimestampIsPastTheEnd)
{
    media.AddFrames(10, kFrame);
    EXPECT_TRUE(Open());
    ISampleBuffer* const first = Get(0);
    const std::uint64_t wrapped = 0ULL - kFrame; // a request before the clip's start
    EXPECT_EQ(Get(wrapped), first);
    EXPECT_TRUE(ended);
    EXPECT_EQ(media.seeks.back(), -static_cast<LONGLONG>(kFrame));
    EXPECT_EQ(Pixel(Get(kFrame)), FakeColor(1));
}

TEST_F(CVideoDecoderSeek, ChangedMediaTypeSetsTheDecodedSize)
{
    media.AddFrames(6, kFrame);
    media.reads[1].newSize = {{80, 48}};
    media.reads[3].newTypeWithoutSize = true;
    EXPECT_TRUE(Open());
    Get(0);
    EXPECT_EQ(VideoDecoderProbe::DecodedSize(decoder), (Size{64, 36}));
    Get(kFrame);
    EXPECT_EQ(VideoDecoderProbe::DecodedSize(decoder), (Size{80, 48}));
    EXPECT_EQ(VideoDecoderProbe::FrameSize(decoder), (Size{64, 36}));
    Get(2 * kFrame);
    EXPECT_EQ(VideoDecoderProbe::DecodedSize(decoder), (Size{80, 48}));
    Get(3 * kFrame);
    EXPECT_EQ(VideoDecoderProbe::DecodedSize(decoder), (Size{0, 0}));
    EXPECT_EQ(media.streams.back(), 0U); // asked of the stream that the read named
}

TEST_F(CVideoDecoderSeek, MediaTypeThatCannotBeReadKeepsTheDecodedSize)
{
    media.AddFrames(2, kFrame);
    media.reads[1].newSize = {{80, 48}};
    EXPECT_TRUE(Open());
    media.failing = {"GetCurrentMediaType"};
    Get(kFrame);
    EXPECT_EQ(VideoDecoderProbe::DecodedSize(decoder), (Size{64, 36}));
}

TEST_F(CVideoDecoderSeek, MediaTypeThatChangesWhileSeekingCounts)
{
    media.AddFrames(6, kFrame);
    media.reads[1].newSize = {{80, 48}};
    media.seek = [](LONGLONG) { return std::size_t{0}; };
    EXPECT_TRUE(Open());
    Get(4 * kFrame);
    EXPECT_EQ(VideoDecoderProbe::DecodedSize(decoder), (Size{80, 48}));
}
} // namespace
