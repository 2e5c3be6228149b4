#include "engine/clips/QMXImageClip.h"

#include "engine/clips/QMXVideoClip.h"
#include "engine/decoders/DecoderCache.h"
#include "engine/decoders/still/GifDecoder.h"
#include "engine/decoders/still/ImageDecoder.h"
#include "tests/decoders/NullReference.h"
#include "tests/decoders/still/FakeImaging.h"
#include "tests/model/AllocationFailure.h"
#include "tests/model/SlotOf.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
/// A clip to attach: it has pictures when it is told so.
class CShownClip : public CQMXBaseClip
{
public:
    CShownClip() : CQMXBaseClip(QMXClipType_Base) {}
    bool IsVideoOpened() override { return m_bOpened; }
    ISampleBuffer* GetLastFrame() override { return SampleBufferPtr(m_frame).Detach(); }

    bool m_bOpened = true;
    SampleBufferPtr m_frame;
};

/// An image clip over scripted files, from 1 s to 3 s of the timeline. When a test is over, every object has died.
class ImageClip : public testing::Test
{
protected:
    ImageClip()
    {
        CFakeImaging::Reset();
        image.frames.resize(1);
        image.frames[0].width = 8;
        image.frames[0].height = 4;
        for (const wchar_t* const path : {L"photo.JPG", L"a.png", L"b.jpg", L"plain"})
            CFakeImaging::Install(path, &image);
        animation = image;
        animation.metadata = {{L"/logscrdesc/Width", CFakeWord{8}},
                              {L"/logscrdesc/Height", CFakeWord{4}},
                              {L"/logscrdesc/PixelAspectRatio", CFakeByte{0}}};
        animation.frames[0].metadata = {{L"/imgdesc/Left", CFakeWord{0}},
                                        {L"/imgdesc/Top", CFakeWord{0}},
                                        {L"/imgdesc/Width", CFakeWord{8}},
                                        {L"/imgdesc/Height", CFakeWord{4}},
                                        {L"/grctlext/Delay", CFakeWord{123}}};
        animation.frames.push_back(animation.frames[0]);
        for (const wchar_t* const path : {L"anim.GIF", L"gif"})
            CFakeImaging::Install(path, &animation);
        clip->SetFilePath(L"a.png");
        clip->SetStartTime(10'000'000);
        clip->SetDuration(20'000'000);
        clip->SetTrackID(1);
        request.flags = kRequestUseCache;
        request.width = 8;
        request.height = 4;
    }
    ~ImageClip() override
    {
        clip.reset();
        frame = {};
        RemoveAllDecoders();
        EXPECT_EQ(CFakeImaging::LiveObjects(), 0);
        CFakeImaging::Reset();
    }
    ISampleBuffer* Get(std::uint64_t time)
    {
        frame = SampleBufferPtr::Adopt(clip->GetFrame(request, time, &flag));
        return frame.Get();
    }
    /// The cache's decoder of the clip; null when there is none.
    DecoderPtr Shared()
    {
        tagDecProp prop(L"", 0);
        prop.decoderType = 99; // nothing is made where there is none
        return DecoderPtr::Adopt(GetDecoder(clip->GetDecoderKey(), prop));
    }

    FakeImage image;
    FakeImage animation;
    std::unique_ptr<CQMXImageClip> clip = std::make_unique<CQMXImageClip>();
    tagRenderProp request;
    SampleBufferPtr frame;
    bool flag = false;
};

TEST_F(ImageClip, ANewClipHasNoRotationAndIsNotOpen)
{
    const CQMXImageClip fresh;
    EXPECT_EQ(clip->GetClipType(), QMXClipType_Image);
    EXPECT_EQ(clip->GetRotation(), 0U);
    EXPECT_FALSE(clip->IsVideoOpened());
    EXPECT_EQ(clip->GetLastFrame(), nullptr);
    EXPECT_TRUE(clip->IsAudioOpened()); // silent
}

TEST_F(ImageClip, ExtensionChoosesTheDecoderInAnyLetterCase)
{
    for (const bool cached : {true, false})
    {
        request.flags = cached ? kRequestUseCache : 0;
        for (const auto& [path, isGif] : {std::pair{L"photo.JPG", false},
                                          {L"anim.GIF", true},
                                          {L"gif", true},
                                          {L"a.png", false},
                                          {L"plain", false}})
        {
            clip->SetFilePath(path);
            ASSERT_NE(Get(10'000'000), nullptr) << path;
            clip->Close();
            if (!cached)
                continue;
            const DecoderPtr decoder = Shared();
            EXPECT_NE(dynamic_cast<CImageDecoder*>(decoder.Get()), nullptr);
            EXPECT_EQ(dynamic_cast<CGifDecoder*>(decoder.Get()) != nullptr, isGif);
        }
    }
}

TEST_F(ImageClip, FlashPathGivesTheCachesFlashDecoderOrAStillPicturesDecoderOfItsOwn)
{
    CFakeImaging::Install(L"a.swf", &image);
    clip->SetFilePath(L"a.swf");
    request.flags |= kRequestUseCache;
    EXPECT_EQ(Get(10'000'000), nullptr); // the picture is no movie
    clip->Close();
    request.flags &= ~kRequestUseCache;
    ASSERT_NE(Get(10'000'000), nullptr);
    EXPECT_TRUE(frame->GetAlphaFlag());
}

TEST_F(ImageClip, PicturesOfSomeKindsCarryTheAlphaFlag)
{
    for (const auto& [path, alpha] :
         {std::pair{L"photo.JPG", false}, {L"a.png", true}, {L"anim.GIF", true}, {L"b.jpg", false}, {L"plain", false}})
    {
        clip->SetFilePath(path);
        ASSERT_NE(Get(10'000'000), nullptr);
        EXPECT_EQ(frame->GetAlphaFlag(), alpha) << path;
        clip->Close();
    }
}

TEST_F(ImageClip, TimesAreAskedForInMillisecondsOfTheSource)
{
    clip->SetFilePath(L"anim.GIF"); // its second frame begins at 1230 ms
    const auto asksFor = [&](std::uint64_t time)
    {
        CFakeImaging::FramesCopied().clear();
        Get(time);
        return CFakeImaging::FramesCopied();
    };
    Get(10'000'000);
    EXPECT_EQ(asksFor(10'000'000 + 12'299'999), std::vector<UINT>{});  // 1229.9999
    EXPECT_EQ(asksFor(10'000'000 + 12'345'678), std::vector<UINT>{1}); // 1234
    clip->Close();
    RemoveAllDecoders();
    clip->SetInPoint(12'300'000);
    EXPECT_EQ(asksFor(10'000'000), (std::vector<UINT>{0, 1}));
    clip->SetInPoint(0);
    EXPECT_EQ(asksFor(10'000'000 - 10'000), std::vector<UINT>{}); // 2^64 - 10'000 is in some round's second frame
}

TEST_F(ImageClip, FlagTellsThatTheTimeLiesOutsideTheClip)
{
    for (const auto& [time, outside] : {std::pair<std::uint64_t, bool>{9'999'999, true},
                                        {10'000'000, false},
                                        {29'999'999, false},
                                        {30'000'000, true}})
    {
        ASSERT_NE(Get(time), nullptr);
        EXPECT_EQ(flag, outside) << time;
    }
    image.frames.clear();
    clip->SetFilePath(L"b.jpg");
    clip->Close();
    FrameResult result{nullptr, false};
    ASSERT_TRUE(clip->Open(request));
    EXPECT_TRUE(clip->GetVideoFrame(30'000'000, &result)); // without a frame too
    EXPECT_EQ(result.frame, nullptr);
    EXPECT_TRUE(result.flag);
}

TEST_F(ImageClip, RecordIsFilledFromClipAndRequest)
{
    clip->SetInPoint(500);
    clip->SetRotation(270);
    request.flags = kRequestUseCache | kRequestNoTimeTable;
    request.time = 10'000'100;
    ASSERT_TRUE(clip->Open(request));
    const DecoderPtr decoder = Shared();
    ASSERT_TRUE(decoder);
    tagDecProp expected(L"a.png", 500);
    expected.flags = request.flags;
    expected.currentTime = 600;
    expected.outPoint = 20'000'500;
    expected.rotation = 270;
    expected.decoderType = kDecoderImage;
    expected.width = 8;
    expected.height = 4;
    EXPECT_EQ(*decoder->GetProperty(), expected);
}

TEST_F(ImageClip, OpenTwiceKeepsTheDecoder)
{
    ASSERT_TRUE(clip->Open(request));
    clip->SetFilePath(L"b.jpg");
    ASSERT_TRUE(clip->Open(request));
    EXPECT_EQ(CFakeImaging::FilesOpened(), 1);
    EXPECT_TRUE(clip->Close());
    EXPECT_FALSE(clip->IsVideoOpened());
    ASSERT_TRUE(clip->Open(request));
    EXPECT_EQ(CFakeImaging::FilesOpened(), 2);
}

TEST_F(ImageClip, FileThatCannotBeReadOpensAndGivesNoPicture)
{
    clip->SetFilePath(L"none.png");
    for (const std::uint64_t flags : {kRequestUseCache, std::uint64_t{0}})
    {
        request.flags = flags;
        EXPECT_TRUE(clip->Open(request));
        EXPECT_TRUE(clip->IsVideoOpened());
        EXPECT_EQ(Get(10'000'000), nullptr);
        EXPECT_FALSE(clip->IsVideoOpened()); // it has closed itself
    }
    EXPECT_FALSE(clip->Open(NullReference<const tagRenderProp>()));
    EXPECT_FALSE(clip->GetVideoFrame(0, nullptr));
    FrameResult result;
    EXPECT_FALSE(clip->GetVideoFrame(0, &result)); // not open
}

TEST_F(ImageClip, RotationIsTheDecodersAndSurvivesClosing)
{
    clip->SetRotation(90);
    ASSERT_NE(Get(10'000'000), nullptr);
    EXPECT_EQ(frame->GetWidth(), 4U);
    EXPECT_EQ(frame->GetHeight(), 8U);
    EXPECT_EQ(SampleBufferPtr::Adopt(clip->GetLastFrame()).Get(), frame.Get());
    clip->Close();
    EXPECT_EQ(clip->GetRotation(), 90U);
    EXPECT_EQ(clip->GetLastFrame(), nullptr);
}

TEST_F(ImageClip, ClipsThatShareADecoderEachGetTheirOwnPicture)
{
    CQMXImageClip other;
    other.CopyFrom(clip.get());
    other.SetTrackID(1);
    other.SetRotation(90);
    ASSERT_NE(Get(10'000'000), nullptr);
    const SampleBufferPtr turned = SampleBufferPtr::Adopt(other.GetFrame(request, 10'000'000, nullptr));
    EXPECT_EQ(CFakeImaging::FilesOpened(), 1);
    EXPECT_EQ(turned->GetWidth(), 4U);
    ASSERT_NE(Get(10'000'001), nullptr);
    EXPECT_EQ(frame->GetWidth(), 8U);
}

TEST_F(ImageClip, AnotherKindOfDecoderUnderTheKeyIsNotTaken)
{
    tagDecProp prop(L"a.png", 0);
    prop.decoderType = kDecoderVideo;
    const DecoderPtr video = DecoderPtr::Adopt(GetDecoder(clip->GetDecoderKey(), prop));
    ASSERT_TRUE(video);
    ASSERT_NE(Get(10'000'000), nullptr);
    EXPECT_EQ(frame->GetWidth(), 8U);
    EXPECT_EQ(dynamic_cast<CImageDecoder*>(Shared().Get()), nullptr);
}

TEST_F(ImageClip, AttachedClipIsShownWhileItHasPictures)
{
    CShownClip attached;
    attached.m_frame = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, 2, 2, 0));
    clip->SetRotation(90);
    clip->SetAttachment(1, &attached);
    EXPECT_FALSE(clip->IsVideoOpened());
    clip->SetAttachment(0, &attached);
    EXPECT_TRUE(clip->IsVideoOpened());
    EXPECT_EQ(Get(10'000'000), attached.m_frame.Get()); // as it is: no turn, no decision about the alpha
    EXPECT_EQ(CFakeImaging::FilesOpened(), 0);

    FrameResult result;
    attached.m_frame = {};
    EXPECT_FALSE(clip->GetVideoFrame(10'000'000, &result));
    attached.m_bOpened = false;
    ASSERT_NE(Get(10'000'000), nullptr);
    EXPECT_EQ(CFakeImaging::FilesOpened(), 1);
    clip->Close();
    attached.m_bOpened = true;
    request.flags |= kRequestNoAttachment;
    ASSERT_TRUE(clip->Open(request));
    EXPECT_TRUE(clip->GetVideoFrame(10'000'000, &result));
    EXPECT_EQ(SampleBufferPtr::Adopt(result.frame)->GetWidth(), 4U);
    clip->SetAttachment(0, nullptr);
}

TEST_F(ImageClip, ClipsAttachedToEachOtherHaveNoPictures)
{
    CQMXImageClip other;
    other.SetAttachment(0, clip.get());
    clip->SetAttachment(0, &other);
    EXPECT_FALSE(clip->IsVideoOpened());
    clip->SetAttachment(0, nullptr);
}

TEST_F(ImageClip, CopyTakesTheRotationOfClipsThatHaveOne)
{
    CQMXVideoClip video;
    video.SetRotation(180);
    video.SetFilePath(L"v.mp4");
    clip->CopyFrom(&video);
    EXPECT_EQ(clip->GetRotation(), 180U);
    EXPECT_EQ(clip->GetFilePath(), L"v.mp4");
    CQMXBaseClip base(QMXClipType_Base);
    clip->CopyFrom(&base);
    EXPECT_EQ(clip->GetRotation(), 180U);
    clip->CopyFrom(nullptr);
    CQMXImageClip image;
    image.SetRotation(90);
    clip->CopyFrom(&image);
    EXPECT_EQ(clip->GetRotation(), 90U);
    EXPECT_EQ(clip->GetClipType(), QMXClipType_Image);
}

TEST_F(ImageClip, ShortMemoryNeverCrashes)
{
    for (int allowed = 0;; ++allowed)
    {
        ASSERT_LT(allowed, 300);
        bool refused = false;
        {
            const CAllocationFailure failure(allowed);
            EXPECT_TRUE(clip->Open(request));
            refused = CAllocationFailure::Happened();
        }
        clip->Close();
        RemoveAllDecoders();
        if (!refused)
            break;
    }
}

TEST(ImageClipSlots, RotationStandsBehindTheBaseClips)
{
    EXPECT_EQ(SlotOf(&CQMXImageClip::GetRotation), 31);
    EXPECT_EQ(SlotOf(&CQMXImageClip::SetRotation), 32);
}
} // namespace
