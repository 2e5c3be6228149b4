#include "tests/clips/VideoClipFixture.h"

#include "tests/clips/PooledFrames.h"
#include "tests/decoders/NullReference.h"
#include "tests/model/AllocationFailure.h"
#include "tests/model/SlotOf.h"

#include <limits>

namespace
{
TEST_F(CQMXVideoClipTest, NewOneHasTheDefaults)
{
    CQMXVideoClip fresh;
    EXPECT_EQ(fresh.GetClipType(), QMXClipType_Video);
    EXPECT_EQ(fresh.GetRotation(), 0U);
    EXPECT_EQ(fresh.GetFrameRate(), 30.0);
    EXPECT_FALSE(fresh.IsTransparentColorOn());
    EXPECT_EQ(fresh.GetTransparentColor(), nullptr);
    EXPECT_FALSE(fresh.IsVideoOpened());
    EXPECT_EQ(fresh.GetLastFrame(), nullptr);
    EXPECT_TRUE(fresh.Close());
}

TEST_F(CQMXVideoClipTest, CopyTakesRotationAndRateOfAVideoClipOnly)
{
    clip->SetRotation(90);
    clip->SetFrameRate(25);
    clip->SetStartTime(7);
    CQMXVideoClip copy;
    copy.CopyFrom(clip.get());
    EXPECT_EQ(copy.GetRotation(), 90U);
    EXPECT_EQ(copy.GetFrameRate(), 25);
    EXPECT_EQ(copy.GetStartTime(), 7U);
    EXPECT_EQ(copy.GetFilePath(), L"clip.mp4");

    CQMXBaseClip other(QMXClipType_Camera);
    other.SetStartTime(8);
    copy.CopyFrom(&other);
    copy.CopyFrom(nullptr);
    EXPECT_EQ(copy.GetStartTime(), 7U);
    CQMXBaseClip pretender(QMXClipType_Video);
    copy.CopyFrom(&pretender);
    EXPECT_EQ(copy.GetStartTime(), 7U);
}

// ---- open ----------------------------------------------------------------------------------------------------------

TEST_F(CQMXVideoClipTest, OpenGivesTheDecoderEverythingTheClipKnows)
{
    clip->SetStartTime(1'000);
    clip->SetInPoint(500);
    clip->SetDuration(9'000);
    clip->SetRotation(180);
    clip->SetFrameRate(60);
    request.flags = kRequestUseCache | kRequestSeekBack | 0x100;
    request.time = 3'000;
    EXPECT_TRUE(clip->Open(request));
    const tagDecProp& prop = *SharedDecoder()->GetProperty();
    EXPECT_EQ(prop.flags, request.flags);
    EXPECT_EQ(prop.filePath, L"clip.mp4");
    EXPECT_EQ(prop.inPoint, 500U);
    EXPECT_EQ(prop.outPoint, 9'500U);
    EXPECT_EQ(prop.currentTime, 2'500U);
    EXPECT_EQ(prop.frameRate, 60.0);
    EXPECT_EQ(prop.frameDuration, 166'666U);
    EXPECT_EQ(prop.rotation, 180U);
    EXPECT_EQ(prop.decoderType, kDecoderVideo);
    EXPECT_EQ(prop.width, 64U);
    EXPECT_EQ(prop.height, 36U);
}

TEST_F(CQMXVideoClipTest, WithoutTheCacheBitItHasADecoderOfItsOwn)
{
    EXPECT_TRUE(clip->Open(request));
    EXPECT_TRUE(clip->IsVideoOpened());
    EXPECT_EQ(CFakeSystem::LiveReaders(), 1);
    EXPECT_EQ(SharedDecoder(), nullptr);
    EXPECT_TRUE(clip->Close());
    EXPECT_FALSE(clip->IsVideoOpened());
    EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
}

TEST_F(CQMXVideoClipTest, WithTheCacheBitClipsOfOneFileAndTrackShareADecoder)
{
    request.flags = kRequestUseCache;
    CQMXVideoClip other;
    other.CopyFrom(clip.get());
    other.SetTrackID(1);
    EXPECT_TRUE(clip->Open(request));
    EXPECT_TRUE(other.Open(request));
    EXPECT_EQ(CFakeSystem::ReadersMade(), 1);
    clip->Close();
    other.Close();
    EXPECT_EQ(CFakeSystem::LiveReaders(), 1); // the cache's
    other.SetTrackID(2);
    EXPECT_TRUE(other.Open(request));
    EXPECT_EQ(CFakeSystem::ReadersMade(), 2);
}

TEST_F(CQMXVideoClipTest, DecoderOfAnotherKindUnderItsKeyIsNotTaken)
{
    // The cache makes no second kind for this path, so the check itself is asked.
    const DecoderPtr foreign = DecoderPtr::Adopt(GetDecoder(L"k", tagDecProp(L"clip.mp4", 0)));
    tagDecProp asTitle(L"", 0);
    asTitle.decoderType = kDecoderTitle;
    EXPECT_FALSE(IsDecoderFor(foreign.Get(), asTitle));
}

TEST_F(CQMXVideoClipTest, OpenedTwiceGivesTheFirstDecoderBack)
{
    EXPECT_TRUE(clip->Open(request));
    EXPECT_TRUE(clip->Open(request));
    EXPECT_EQ(CFakeSystem::LiveReaders(), 1);
    EXPECT_EQ(CFakeSystem::ReadersMade(), 2);
}

TEST_F(CQMXVideoClipTest, OwnDecoderThatCannotOpenIsKeptAndGivesBlankFrames)
{
    clip->SetFilePath(L"nothing.mp4");
    EXPECT_FALSE(clip->Open(request));
    EXPECT_TRUE(clip->IsVideoOpened());
    ASSERT_NE(Get(0), nullptr);
    EXPECT_EQ(Pixel(frame.Get()), 0U);
    EXPECT_EQ(frame->GetWidth(), 64U);
    EXPECT_EQ(frame->GetHeight(), 36U);
}

TEST_F(CQMXVideoClipTest, SharedDecoderThatCannotOpenIsNoFailure)
{
    clip->SetFilePath(L"nothing.mp4");
    request.flags = kRequestUseCache;
    EXPECT_TRUE(clip->Open(request));
    EXPECT_EQ(Pixel(Get(0)), 0U);
}

TEST_F(CQMXVideoClipTest, NullRequestAndNullResultAreRefused)
{
    EXPECT_TRUE(clip->Open(request));
    EXPECT_FALSE(clip->Open(NullReference<const tagRenderProp>()));
    EXPECT_TRUE(clip->IsVideoOpened()); // nothing was touched
    EXPECT_FALSE(clip->GetVideoFrame(0, nullptr));
}

TEST_F(CQMXVideoClipTest, ShortMemoryFailsTheOpenAndTheNextOneWorks)
{
    clip->SetFilePath(L"a path that is longer than what fits into a string without memory.mp4");
    CFakeSystem::Install(clip->GetFilePath(), &media);
    for (const std::uint64_t flags : {std::uint64_t{0}, kRequestUseCache})
    {
        request.flags = flags;
        for (int allowed = 0;; ++allowed)
        {
            ASSERT_LT(allowed, 200);
            bool refused = false;
            {
                const CAllocationFailure failure(allowed);
                clip->Open(request);
                refused = CAllocationFailure::Happened();
            }
            clip->Close();
            RemoveAllDecoders();
            EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
            if (!refused)
                break;
        }
        EXPECT_EQ(Pixel(Get(0)), FakeColor(0));
        clip->Close();
    }
    CFakeSystem::Install(clip->GetFilePath(), nullptr);
}

// ---- frames --------------------------------------------------------------------------------------------------------

TEST_F(CQMXVideoClipTest, EveryRequestLandsOnAFrameBoundary)
{
    clip->SetStartTime(5'000'000);
    clip->SetInPoint(10 * kFrame);
    EXPECT_EQ(Pixel(Get(5'000'000)), FakeColor(10));
    EXPECT_EQ(media.seeks.back(), static_cast<LONGLONG>(10 * kFrame));
    EXPECT_EQ(Pixel(Get(5'000'000 + 20 * kFrame + 1)), FakeColor(30));
    EXPECT_EQ(media.seeks.back(), static_cast<LONGLONG>(30 * kFrame));
    EXPECT_EQ(Pixel(Get(5'000'000 + 5 * kFrame - 1)), FakeColor(14));
    EXPECT_EQ(media.seeks.back(), static_cast<LONGLONG>(14 * kFrame));
    EXPECT_FALSE(flag);
}

TEST_F(CQMXVideoClipTest, TimeBeforeTheStartWrapsAroundAndIsPastTheEndOfTheFile)
{
    clip->SetStartTime(10'000'000);
    Get(10'000'000);
    ISampleBuffer* const first = frame.Get();
    EXPECT_EQ(Get(0), first);
    EXPECT_TRUE(flag);
    EXPECT_LT(media.seeks.back(), 0); // no place in the file
}

TEST_F(CQMXVideoClipTest, FrameRateOfZeroAlwaysShowsTheStart)
{
    clip->SetFrameRate(0);
    EXPECT_EQ(Pixel(Get(10'000'000)), FakeColor(0));
    EXPECT_EQ(media.seeks, std::vector<LONGLONG>{0});
}

TEST_F(CQMXVideoClipTest, FrameRateTooHighForADurationIsNoDivisionByZero)
{
    clip->SetFrameRate(1e9);
    EXPECT_EQ(Pixel(Get(2 * kFrame)), FakeColor(2));
    EXPECT_EQ(Pixel(Get(2 * kFrame)), FakeColor(2));
}

TEST_F(CQMXVideoClipTest, MissingFrameDurationIsPutIntoTheDecodersRecord)
{
    request.flags = kRequestUseCache;
    clip->SetFrameRate(60);
    EXPECT_TRUE(clip->Open(request));
    SharedDecoder()->GetProperty()->frameDuration = 0;
    EXPECT_NE(Get(0), nullptr);
    EXPECT_EQ(SharedDecoder()->GetProperty()->frameDuration, 166'666U);
}

TEST_F(CQMXVideoClipTest, ClipsOfOneDecoderEachShowTheirOwnPicture)
{
    request.flags = kRequestUseCache;
    CQMXVideoClip other;
    other.CopyFrom(clip.get());
    other.SetTrackID(1);
    other.SetRotation(90);
    for (int round = 0; round < 3; ++round)
    {
        request.width = 64;
        ASSERT_NE(Get(0), nullptr);
        EXPECT_EQ(frame->GetWidth(), 64U);
        EXPECT_EQ(Pixel(frame.Get()), FakeColor(0));
        request.width = 32;
        ASSERT_NE(Get(other, 0), nullptr);
        EXPECT_EQ(frame->GetWidth(), 18U);
        EXPECT_EQ(frame->GetHeight(), 32U);
        EXPECT_EQ(Pixel(frame.Get()), FakeColor(0));
    }
    EXPECT_EQ(CFakeSystem::ReadersMade(), 1);
}

TEST_F(CQMXVideoClipTest, MissingFrameIsSuccessWithoutAFrameAndClosesTheClip)
{
    media.reads.clear();
    EXPECT_TRUE(clip->Open(request));
    FrameResult result;
    result.frame = reinterpret_cast<ISampleBuffer*>(this);
    EXPECT_TRUE(clip->GetVideoFrame(0, &result));
    EXPECT_EQ(result.frame, nullptr);
    EXPECT_TRUE(result.flag);
    EXPECT_EQ(Get(0), nullptr);
    EXPECT_TRUE(flag);
    EXPECT_FALSE(clip->IsVideoOpened());
    EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
}

TEST_F(CQMXVideoClipTest, ClosedClipHasNoFrame)
{
    FrameResult result;
    EXPECT_FALSE(clip->GetVideoFrame(0, &result));
    EXPECT_EQ(result.frame, nullptr);
}

TEST_F(CQMXVideoClipTest, AlphaFollowsTheExtension)
{
    for (const auto& [path, alpha] : {std::pair<const wchar_t*, bool>{L"clip.mp4", false},
                                      {L"clip.MOV", true},
                                      {L"clip.mov", true},
                                      {L"clip.png", true},
                                      {L"clip.GIF", true},
                                      {L"mov", true},
                                      {L"clip.mov.mp4", false},
                                      {L"clip", false},
                                      {L"clip.movie", false}})
    {
        CFakeSystem::Install(path, &media);
        clip->SetFilePath(path);
        clip->Close();
        ASSERT_NE(Get(0), nullptr);
        EXPECT_EQ(frame->GetAlphaFlag(), alpha) << path;
        CFakeSystem::Install(path, nullptr);
    }
    clip->Close();
}

TEST_F(CQMXVideoClipTest, LastFrameIsTheDecoders)
{
    EXPECT_TRUE(clip->Open(request));
    EXPECT_EQ(clip->GetLastFrame(), nullptr);
    Get(0);
    const SampleBufferPtr last = SampleBufferPtr::Adopt(clip->GetLastFrame());
    EXPECT_EQ(last.Get(), frame.Get());
    clip->Close();
    EXPECT_EQ(clip->GetLastFrame(), nullptr);
}

TEST_F(CQMXVideoClipTest, OpenOnlyRequestOpensAndReadsNothing)
{
    request.flags = kRequestOpenOnly;
    EXPECT_EQ(Get(0), nullptr);
    EXPECT_TRUE(clip->IsVideoOpened());
    EXPECT_EQ(media.nReads, 0);
}

// ---- attachment ----------------------------------------------------------------------------------------------------

class CQMXVideoClipAttachment : public CQMXVideoClipTest
{
protected:
    CQMXVideoClipAttachment()
    {
        attached.m_frame = MakePicture(8, 4, 0xFF0000FFU);
        attached.m_frame->SetRatioX(2);
        attached.m_frame->SetRatioY(1);
        clip->SetAttachment(0, &attached);
    }
    void TearDown() override
    {
        attached.m_frame = {};
        CQMXVideoClipTest::TearDown();
    }
    CPictureClip attached;
};

TEST_F(CQMXVideoClipAttachment, ItsLastFrameIsShownAndNoDecoderMade)
{
    EXPECT_TRUE(clip->IsVideoOpened());
    EXPECT_TRUE(clip->Open(request));
    EXPECT_EQ(CFakeSystem::ReadersMade(), 0);
    EXPECT_EQ(Get(0), attached.m_frame.Get());
    EXPECT_EQ(CountOf(frame.Get()), 2U);
    EXPECT_EQ(clip->GetLastFrame(), nullptr); // that is a decoder's
}

TEST_F(CQMXVideoClipAttachment, DoesNotCountWhenTheRequestSaysSo)
{
    request.flags = kRequestNoAttachment;
    EXPECT_TRUE(clip->Open(request));
    EXPECT_EQ(CFakeSystem::ReadersMade(), 1);
    EXPECT_EQ(Pixel(Get(0)), FakeColor(0));
    clip->Close();
    EXPECT_FALSE(clip->IsVideoOpened());
}

TEST_F(CQMXVideoClipAttachment, DoesNotCountWithoutPictures)
{
    attached.m_bOpened = false;
    EXPECT_FALSE(clip->IsVideoOpened());
    EXPECT_EQ(Pixel(Get(0)), FakeColor(0));
}

TEST_F(CQMXVideoClipAttachment, OnlyIndexZeroCounts)
{
    clip->SetAttachment(1, nullptr);
    EXPECT_TRUE(clip->IsVideoOpened());
    clip->SetAttachment(0, nullptr);
    EXPECT_FALSE(clip->IsVideoOpened());
    clip->SetAttachment(-1, &attached);
    EXPECT_FALSE(clip->IsVideoOpened());
}

TEST_F(CQMXVideoClipAttachment, WithoutLastFrameThereIsNone)
{
    attached.m_frame = {};
    FrameResult result;
    EXPECT_FALSE(clip->GetVideoFrame(0, &result));
    EXPECT_EQ(result.frame, nullptr);
}

TEST_F(CQMXVideoClipAttachment, RotationMakesATurnedCopy)
{
    std::uint8_t* pixels = nullptr;
    ASSERT_TRUE(attached.m_frame->GetBuffer(&pixels, nullptr));
    const std::uint32_t marked = 0xFF00FF00U;
    std::memcpy(pixels, &marked, 4); // top left
    for (const bool alpha : {false, true})
    {
        attached.m_frame->SetAlphaFlag(alpha);
        for (const std::uint32_t rotation : {90U, 180U, 270U})
        {
            SCOPED_TRACE(rotation);
            clip->SetRotation(rotation);
            ASSERT_NE(Get(0), nullptr);
            EXPECT_NE(frame.Get(), attached.m_frame.Get());
            const bool upright = rotation == 180;
            EXPECT_EQ(frame->GetWidth(), upright ? 8U : 4U);
            EXPECT_EQ(frame->GetHeight(), upright ? 4U : 8U);
            EXPECT_EQ(frame->GetRatioX(), upright ? 2U : 1U);
            EXPECT_EQ(frame->GetRatioY(), upright ? 1U : 2U);
            EXPECT_EQ(frame->GetAlphaFlag(), alpha);
            const auto [x, y] = rotation == 90    ? std::pair{3U, 0U}
                                : rotation == 180 ? std::pair{7U, 3U}
                                                  : std::pair{0U, 7U};
            EXPECT_EQ(Pixel(frame.Get(), x, y), marked);
            EXPECT_EQ(CountOf(attached.m_frame.Get()), 1U);
        }
    }
}

TEST_F(CQMXVideoClipAttachment, UnknownRotationGivesATransparentPictureOfExchangedSize)
{
    clip->SetRotation(45);
    ASSERT_NE(Get(0), nullptr);
    EXPECT_EQ(frame->GetWidth(), 4U);
    EXPECT_EQ(frame->GetHeight(), 8U);
    for (std::uint32_t y = 0; y < 8; ++y)
        EXPECT_EQ(Pixel(frame.Get(), 3, y), 0U);
}

TEST_F(CQMXVideoClipAttachment, TurnedCopyThatCannotBeMadeIsAFailure)
{
    clip->SetRotation(90);
    FrameResult result;
    {
        const auto held = HoldPooled(4, 8);
        const CAllocationFailure failure;
        EXPECT_FALSE(clip->GetVideoFrame(0, &result));
    }
    EXPECT_EQ(result.frame, nullptr);
    EXPECT_EQ(CountOf(attached.m_frame.Get()), 1U);

    attached.m_frame = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatNv12, 8, 4, 0));
    EXPECT_FALSE(clip->GetVideoFrame(0, &result)); // only BGRA can be turned
}

TEST_F(CQMXVideoClipAttachment, RingOfClipsHasNoPictures)
{
    CQMXVideoClip other;
    other.SetAttachment(0, clip.get());
    clip->SetAttachment(0, &other);
    EXPECT_FALSE(clip->IsVideoOpened());
    clip->SetAttachment(0, clip.get());
    EXPECT_FALSE(clip->IsVideoOpened());
}

TEST_F(CQMXVideoClipAttachment, ChainOfClipsShowsTheFirstOnesDecoder)
{
    CQMXVideoClip next;
    attached.m_bOpened = false;
    next.SetAttachment(0, clip.get());
    ASSERT_NE(Get(0), nullptr);
    EXPECT_TRUE(next.IsVideoOpened());
    FrameResult result;
    EXPECT_TRUE(next.GetVideoFrame(0, &result));
    EXPECT_EQ(SampleBufferPtr::Adopt(result.frame).Get(), frame.Get());
}

// ---- thumbnail -----------------------------------------------------------------------------------------------------

TEST_F(CQMXVideoClipTest, ThumbnailIsSixHundredAndFortyWideAndLeavesTheClipClosed)
{
    const SampleBufferPtr thumbnail = SampleBufferPtr::Adopt(clip->GetThumbnail(0.5625));
    ASSERT_TRUE(thumbnail);
    EXPECT_EQ(thumbnail->GetWidth(), 640U);
    EXPECT_EQ(thumbnail->GetHeight(), 360U);
    EXPECT_EQ(Pixel(thumbnail.Get()), FakeColor(0));
    EXPECT_FALSE(clip->IsVideoOpened());
    EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
    EXPECT_EQ(SharedDecoder(), nullptr);
}

TEST_F(CQMXVideoClipTest, ThumbnailAsksForTheHeightOfItsAspectTruncated)
{
    clip->SetFilePath(L"nothing.mp4"); // a blank frame has the size that was asked for
    for (const auto& [aspect, height] : {std::pair{0.5625, 360U}, {0.75, 480U}, {1.0 / 3.0, 213U}})
    {
        const SampleBufferPtr thumbnail = SampleBufferPtr::Adopt(clip->GetThumbnail(aspect));
        ASSERT_TRUE(thumbnail);
        EXPECT_EQ(thumbnail->GetWidth(), 640U);
        EXPECT_EQ(thumbnail->GetHeight(), height);
    }
    for (const double aspect : {0.0, -1.0, 1e300, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_EQ(clip->GetThumbnail(aspect), nullptr) << aspect;
}

TEST(CQMXVideoClipSlots, AreWhereTheBinaryInterfaceHasThem)
{
    EXPECT_EQ(SlotOf(&CQMXVideoClip::GetRotation), 31);
    EXPECT_EQ(SlotOf(&CQMXVideoClip::SetRotation), 32);
    EXPECT_EQ(SlotOf(&CQMXVideoClip::GetFrameRate), 33);
    EXPECT_EQ(SlotOf(&CQMXVideoClip::SetFrameRate), 34);
    EXPECT_EQ(SlotOf(&CQMXVideoClip::GetThumbnail), 35);
    EXPECT_EQ(SlotOf(&CQMXVideoClip::SetTransparentColor), 36);
    EXPECT_EQ(SlotOf(&CQMXVideoClip::PrepareBackground), 37);
    EXPECT_EQ(SlotOf(&CQMXVideoClip::ApplyTransparentColor), 38);
    EXPECT_EQ(SlotOf(&CQMXVideoClip::ClearTransparentColor), 39);
    EXPECT_EQ(SlotOf(&CQMXVideoClip::GetTransparentColor), 40);
    EXPECT_EQ(SlotOf(&CQMXVideoClip::IsTransparentColorOn), 41);
    EXPECT_EQ(SlotOf(&CQMXVideoClip::GetFrame), 29);
}
} // namespace
