#include "engine/model/ClipFactory.h"

#include "engine/clips/QMXBaseClip.h"
#include "engine/clips/QMXCameraClip.h"
#include "engine/clips/QMXColorClip.h"
#include "engine/clips/QMXVideoClip.h"
#include "engine/model/IQMXTrack.h"
#include "tests/model/AllocationFailure.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
using ClipPtr = std::unique_ptr<IQMXBaseClip>;

std::uint32_t CountOf(ISampleBuffer* frame)
{
    const std::uint32_t count = frame->AddRef();
    frame->Release();
    return count - 1;
}

TEST(CreateClipByClipType, MakesTheClassOfEachKind)
{
    const ClipPtr base(CreateClipByClipType(QMXClipType_Base));
    const ClipPtr video(CreateClipByClipType(QMXClipType_Video));
    const ClipPtr color(CreateClipByClipType(QMXClipType_Color));
    ASSERT_NE(base, nullptr);
    EXPECT_EQ(typeid(*base), typeid(CQMXBaseClip));
    EXPECT_EQ(base->GetClipType(), QMXClipType_Base);
    EXPECT_NE(dynamic_cast<CQMXVideoClip*>(video.get()), nullptr);
    EXPECT_EQ(video->GetClipType(), QMXClipType_Video);
    EXPECT_NE(dynamic_cast<CQMXColorClip*>(color.get()), nullptr);
    EXPECT_EQ(color->GetClipType(), QMXClipType_Color);
    const ClipPtr made(CreateClipByClipType(QMXClipType_Camera));
    auto* const camera = dynamic_cast<CQMXCameraClip*>(made.get());
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->GetClipType(), QMXClipType_Camera);
    EXPECT_EQ(camera->GetFrameRate(), 30.0);
    EXPECT_EQ(camera->GetRotation(), 0U);
}

TEST(CreateClipByClipType, UnknownKindGivesNull)
{
    EXPECT_EQ(CreateClipByClipType(static_cast<QMXClipType>(9)), nullptr);
    EXPECT_EQ(CreateClipByClipType(static_cast<QMXClipType>(0xFFFFFFFFU)), nullptr);
}

TEST(CreateClipByClipType, ShortMemoryGivesNull)
{
    const CAllocationFailure failure;
    EXPECT_EQ(CreateClipByClipType(QMXClipType_Base), nullptr);
    EXPECT_EQ(CreateClipByClipType(QMXClipType_Video), nullptr);
    EXPECT_EQ(CreateClipByClipType(QMXClipType_Camera), nullptr);
    EXPECT_EQ(CreateClipByClipType(QMXClipType_Color), nullptr);
}

TEST(DuplicateClip, TakesTheCommonSettingsButNoIdentity)
{
    for (const QMXClipType type : {QMXClipType_Base, QMXClipType_Video, QMXClipType_Camera, QMXClipType_Color})
    {
        const std::unique_ptr<IQMXTrack> track(CreateQMXTrack(3, QMXTrackType{}, 4, tagPIPPOSITION{}));
        IQMXBaseClip* const source = CreateClipByClipType(type);
        ASSERT_TRUE(track->AddClip(source));
        source->SetTrackID(3);
        source->SetFilePath(L"a.mp4");
        source->SetStartTime(10);
        source->SetInPoint(20);
        source->SetDuration(30);
        const ClipPtr copy(DuplicateClip(source));
        ASSERT_NE(copy, nullptr);
        EXPECT_EQ(copy->GetClipType(), type);
        EXPECT_EQ(copy->GetTrackID(), ~0ULL);
        EXPECT_EQ(copy->GetDocumentID(), 0U);
        EXPECT_EQ(copy->GetFilePath(), L"a.mp4");
        EXPECT_EQ(copy->GetStartTime(), 10U);
        EXPECT_EQ(copy->GetInPoint(), 20U);
        EXPECT_EQ(copy->GetDuration(), 30U);
        EXPECT_EQ(source->GetDocumentID(), 4U);
    }
}

TEST(DuplicateClip, OfAVideoClipTakesRateRotationAndColorKey)
{
    SampleBufferPtr background = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, 4, 4, 0));
    CQMXVideoClip source;
    source.SetFrameRate(25);
    source.SetRotation(270);
    tagTransparentColorInfo info;
    info.pBackground = SampleBufferPtr(background).Detach(); // the clip takes this reference over
    info.dSimilarity = 0.25;
    info.nColor[1] = 255;
    info.nReserved44 = 9;
    source.SetTransparentColor(true, &info);
    EXPECT_EQ(CountOf(background.Get()), 2U);

    ClipPtr copy(DuplicateClip(&source));
    auto* const video = dynamic_cast<CQMXVideoClip*>(copy.get());
    ASSERT_NE(video, nullptr);
    EXPECT_EQ(video->GetFrameRate(), 25);
    EXPECT_EQ(video->GetRotation(), 270U);
    EXPECT_TRUE(video->IsTransparentColorOn());
    ASSERT_NE(video->GetTransparentColor(), nullptr);
    EXPECT_NE(video->GetTransparentColor(), source.GetTransparentColor());
    EXPECT_EQ(*video->GetTransparentColor(), info);
    EXPECT_EQ(CountOf(background.Get()), 3U);
    copy.reset();
    EXPECT_EQ(CountOf(background.Get()), 2U);
    source.ClearTransparentColor();
    EXPECT_EQ(CountOf(background.Get()), 1U);
}

TEST(DuplicateClip, OfAVideoClipWithoutColorKeyHasNone)
{
    CQMXVideoClip source;
    source.SetTransparentColor(true, nullptr);
    const ClipPtr copy(DuplicateClip(&source));
    auto* const video = dynamic_cast<CQMXVideoClip*>(copy.get());
    ASSERT_NE(video, nullptr);
    EXPECT_TRUE(video->IsTransparentColorOn());
    EXPECT_EQ(video->GetTransparentColor(), nullptr);
}

TEST(DuplicateClip, OfAColorClipHasNoFrameYet)
{
    CQMXColorClip source;
    tagRenderProp request;
    request.width = 4;
    request.height = 4;
    EXPECT_TRUE(source.Open(request));
    const ClipPtr copy(DuplicateClip(&source));
    ASSERT_NE(copy, nullptr);
    EXPECT_FALSE(copy->IsVideoOpened());
    FrameResult result;
    EXPECT_FALSE(copy->GetVideoFrame(0, &result));
}

TEST(DuplicateClip, OfNothingOrOfAnUnknownKindIsNull)
{
    EXPECT_EQ(DuplicateClip(nullptr), nullptr);
    CQMXBaseClip unknown(static_cast<QMXClipType>(77));
    EXPECT_EQ(DuplicateClip(&unknown), nullptr);
}

TEST(DuplicateClip, OfAClipThatOnlySaysItIsVideoTakesTheCommonSettings)
{
    CQMXBaseClip pretender(QMXClipType_Video);
    pretender.SetDuration(30);
    const ClipPtr copy(DuplicateClip(&pretender));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetDuration(), 30U);
}

TEST(DuplicateClip, ShortMemoryGivesNullOrAWholeCopyAndLosesNoReference)
{
    SampleBufferPtr background = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, 4, 4, 0));
    CQMXVideoClip source;
    tagTransparentColorInfo info;
    info.pBackground = SampleBufferPtr(background).Detach();
    source.SetTransparentColor(true, &info);
    for (int allowed = 0;; ++allowed)
    {
        ASSERT_LT(allowed, 50);
        ClipPtr copy;
        bool refused = false;
        {
            const CAllocationFailure failure(allowed);
            copy.reset(DuplicateClip(&source));
            refused = CAllocationFailure::Happened();
        }
        copy.reset();
        EXPECT_EQ(CountOf(background.Get()), 2U);
        if (!refused)
            break;
    }
}
} // namespace
