#include "engine/model/ClipFactory.h"

#include "engine/clips/QMXAudioClip.h"
#include "engine/clips/QMXBaseClip.h"
#include "engine/clips/QMXCameraClip.h"
#include "engine/clips/QMXColorClip.h"
#include "engine/clips/QMXImageClip.h"
#include "engine/clips/QMXKeystrokeClip.h"
#include "engine/clips/QMXTitleClip.h"
#include "engine/clips/QMXVideoClip.h"
#include "engine/model/IQMXTrack.h"
#include "tests/model/AllocationFailure.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

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
    const ClipPtr audio(CreateClipByClipType(QMXClipType_Audio));
    EXPECT_NE(dynamic_cast<CQMXAudioClip*>(audio.get()), nullptr);
    EXPECT_EQ(audio->GetClipType(), QMXClipType_Audio);
    ASSERT_NE(base, nullptr);
    EXPECT_EQ(typeid(*base), typeid(CQMXBaseClip));
    EXPECT_EQ(base->GetClipType(), QMXClipType_Base);
    EXPECT_NE(dynamic_cast<CQMXVideoClip*>(video.get()), nullptr);
    EXPECT_EQ(video->GetClipType(), QMXClipType_Video);
    EXPECT_NE(dynamic_cast<CQMXColorClip*>(color.get()), nullptr);
    EXPECT_EQ(color->GetClipType(), QMXClipType_Color);
    const ClipPtr image(CreateClipByClipType(QMXClipType_Image));
    ASSERT_NE(dynamic_cast<CQMXImageClip*>(image.get()), nullptr);
    EXPECT_EQ(image->GetClipType(), QMXClipType_Image);
    EXPECT_EQ(dynamic_cast<CQMXImageClip*>(image.get())->GetRotation(), 0U);
    const ClipPtr title(CreateClipByClipType(QMXClipType_Title));
    EXPECT_NE(dynamic_cast<CQMXTitleClip*>(title.get()), nullptr);
    EXPECT_EQ(title->GetClipType(), QMXClipType_Title);
    const ClipPtr keystroke(CreateClipByClipType(QMXClipType_Keystroke));
    auto* const placed = dynamic_cast<CQMXKeystrokeClip*>(keystroke.get());
    ASSERT_NE(placed, nullptr);
    EXPECT_EQ(placed->GetClipType(), QMXClipType_Keystroke);
    EXPECT_EQ(placed->GetKeystrokeLeft(), 0);
    EXPECT_EQ(placed->GetKeystrokeTop(), 0);
    EXPECT_EQ(placed->GetKeystrokeWidth(), 1);
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
    EXPECT_EQ(CreateClipByClipType(QMXClipType_Image), nullptr);
    EXPECT_EQ(CreateClipByClipType(QMXClipType_Camera), nullptr);
    EXPECT_EQ(CreateClipByClipType(QMXClipType_Color), nullptr);
    EXPECT_EQ(CreateClipByClipType(QMXClipType_Audio), nullptr);
    EXPECT_EQ(CreateClipByClipType(QMXClipType_Title), nullptr);
    EXPECT_EQ(CreateClipByClipType(QMXClipType_Keystroke), nullptr);
}

TEST(DuplicateClip, TakesTheCommonSettingsButNoIdentity)
{
    for (const QMXClipType type :
         {QMXClipType_Base, QMXClipType_Video, QMXClipType_Camera, QMXClipType_Image, QMXClipType_Audio,
          QMXClipType_Color, QMXClipType_Transition, QMXClipType_Title, QMXClipType_Keystroke})
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

TEST(DuplicateClip, OfATitleClipCopiesEveryFieldOfItsTexts)
{
    CQMXTitleClip source;
    for (int n = 0; n < 2; ++n)
    {
        auto* const item = new tagQMXTitleTextInfo;
        item->fontSize = 12.5F;
        item->color = 0x12345678;
        item->opacity = 0.25F;
        item->fontWeight = 300;
        item->italic = true;
        item->underline = true;
        item->textLength = 3;
        item->x = 0.125;
        item->y = 0.75;
        item->speed = 7;
        item->alignment = 2;
        item->fontName = L"a family with a long name";
        item->text = n == 0 ? L"first" : L"second";
        item->animation = QMXTitleAnimation_BottomToTop;
        source.AddTitleText(item);
    }
    const ClipPtr copy(DuplicateClip(&source));
    auto* const title = dynamic_cast<CQMXTitleClip*>(copy.get());
    ASSERT_NE(title, nullptr);
    std::vector<tagQMXTitleTextInfo*> from;
    std::vector<tagQMXTitleTextInfo*> to;
    source.GetTitleTexts(from);
    title->GetTitleTexts(to);
    ASSERT_EQ(to.size(), 2U);
    for (std::size_t i = 0; i < 2; ++i)
    {
        EXPECT_NE(to[i], from[i]);
        EXPECT_EQ(to[i]->fontSize, 12.5F);
        EXPECT_EQ(to[i]->color, 0x12345678U);
        EXPECT_EQ(to[i]->opacity, 0.25F);
        EXPECT_EQ(to[i]->fontWeight, 300U);
        EXPECT_TRUE(to[i]->italic);
        EXPECT_TRUE(to[i]->underline);
        EXPECT_EQ(to[i]->textLength, 3U);
        EXPECT_EQ(to[i]->x, 0.125);
        EXPECT_EQ(to[i]->y, 0.75);
        EXPECT_EQ(to[i]->speed, 7U);
        EXPECT_EQ(to[i]->alignment, 2U);
        EXPECT_EQ(to[i]->fontName, from[i]->fontName);
        EXPECT_EQ(to[i]->text, from[i]->text);
        EXPECT_EQ(to[i]->animation, 4U);
    }
}

TEST(DuplicateClip, OfAKeystrokeClipTakesPlacementAndLabels)
{
    CQMXKeystrokeClip source;
    source.SetLeftAndTopAndWidth(0.25F, 0.5F, 0.75F);
    auto* const item = new tagQMXKeystrokeInfo;
    item->startTime = 1;
    item->endTime = 2;
    item->fontSize = 3;
    item->textColor = 4;
    item->backColor = 5;
    item->textAlpha = 6;
    item->backAlpha = 7;
    item->hostData1 = 8;
    item->hostData2 = 9;
    item->text = L"Ctrl + C";
    item->fontName = L"a family with a long name";
    source.AddKeystroke(item);
    const ClipPtr copy(DuplicateClip(&source));
    auto* const keystroke = dynamic_cast<CQMXKeystrokeClip*>(copy.get());
    ASSERT_NE(keystroke, nullptr);
    EXPECT_EQ(keystroke->GetKeystrokeLeft(), 0.25F);
    EXPECT_EQ(keystroke->GetKeystrokeTop(), 0.5F);
    EXPECT_EQ(keystroke->GetKeystrokeWidth(), 0.75F);
    std::vector<tagQMXKeystrokeInfo*> items;
    ASSERT_EQ(keystroke->GetKeystrokes(items).size(), 1U);
    EXPECT_NE(items[0], item);
    EXPECT_EQ(items[0]->startTime, 1U);
    EXPECT_EQ(items[0]->endTime, 2U);
    EXPECT_EQ(items[0]->fontSize, 3);
    EXPECT_EQ(items[0]->textColor, 4U);
    EXPECT_EQ(items[0]->backColor, 5U);
    EXPECT_EQ(items[0]->textAlpha, 6);
    EXPECT_EQ(items[0]->backAlpha, 7);
    EXPECT_EQ(items[0]->hostData1, 8U);
    EXPECT_EQ(items[0]->hostData2, 9U);
    EXPECT_EQ(items[0]->text, L"Ctrl + C");
    EXPECT_EQ(items[0]->fontName, L"a family with a long name");
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

TEST(DuplicateClip, OfAnImageClipTakesTheRotation)
{
    CQMXImageClip source;
    source.SetRotation(90);
    const ClipPtr copy(DuplicateClip(&source));
    auto* const image = dynamic_cast<CQMXImageClip*>(copy.get());
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->GetRotation(), 90U);
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
