#include "engine/clips/QMXKeystrokeClip.h"

#include "engine/clips/QMXTitleClip.h"
#include "engine/decoders/DecoderCache.h"
#include "engine/decoders/still/KeystrokeDecoder.h"
#include "tests/decoders/NullReference.h"
#include "tests/decoders/still/TextFrames.h"
#include "tests/model/AllocationFailure.h"
#include "tests/model/SlotOf.h"

#include <memory>

namespace
{
using test_support::InkBox;
using test_support::IsThere;
using text_test::Frame;
using text_test::FrameOf;
using text_test::Request;

class CQMXKeystrokeClipTest : public text_test::TextTest
{
protected:
    CQMXKeystrokeClipTest() { clip.SetLeftAndTopAndWidth(0, 0, 1); }
    ~CQMXKeystrokeClipTest() override { RemoveAllDecoders(); }

    static tagQMXKeystrokeInfo* NewItem(const std::wstring& text, std::uint64_t start)
    {
        auto* const item = new tagQMXKeystrokeInfo;
        item->text = text;
        item->startTime = start;
        item->fontName = text_test::kFamily;
        return item;
    }
    static std::size_t CountOf(CQMXKeystrokeClip& clip)
    {
        std::vector<tagQMXKeystrokeInfo*> items;
        return clip.GetKeystrokes(items).size();
    }

    CQMXKeystrokeClip clip;
};

TEST_F(CQMXKeystrokeClipTest, KeepsItsSlots)
{
    EXPECT_EQ(SlotOf(&CQMXKeystrokeClip::AddKeystroke), 31);
    EXPECT_EQ(SlotOf(&CQMXKeystrokeClip::SetLeftAndTopAndWidth), 32);
    EXPECT_EQ(SlotOf(&CQMXKeystrokeClip::GetKeystrokeTop), 33);
    EXPECT_EQ(SlotOf(&CQMXKeystrokeClip::GetKeystrokeLeft), 34);
    EXPECT_EQ(SlotOf(&CQMXKeystrokeClip::GetKeystrokeWidth), 35);
    EXPECT_EQ(SlotOf(&CQMXKeystrokeClip::GetKeystrokes), 36);
    EXPECT_EQ(clip.GetClipType(), QMXClipType_Keystroke);
}

TEST_F(CQMXKeystrokeClipTest, ThePlacementComesBackAsItWasGiven)
{
    clip.SetLeftAndTopAndWidth(10, 20, 300);
    EXPECT_EQ(clip.GetKeystrokeTop(), 20);
    EXPECT_EQ(clip.GetKeystrokeLeft(), 10);
    EXPECT_EQ(clip.GetKeystrokeWidth(), 300);
    CQMXKeystrokeClip fresh;
    EXPECT_EQ(fresh.GetKeystrokeLeft(), 0);
    EXPECT_EQ(fresh.GetKeystrokeTop(), 0);
    EXPECT_EQ(fresh.GetKeystrokeWidth(), 0);
}

TEST_F(CQMXKeystrokeClipTest, TheDecodersTimeIsThatOfTheRecording)
{
    clip.SetInPoint(5'000'000);
    clip.SetStartTime(20'000'000);
    clip.AddKeystroke(NewItem(L"A", 5'000'000));
    clip.AddKeystroke(NewItem(L"B", 5'000'001));
    ASSERT_TRUE(clip.Open(Request()));
    const InkBox one = FrameOf(clip, 20'000'000).Ink(IsThere); // asks for 5,000,000: the first label's very start
    const InkBox two = FrameOf(clip, 20'000'001).Ink(IsThere);
    EXPECT_FALSE(one.IsEmpty());
    EXPECT_GT(two.Width(), one.Width() + 10);
    EXPECT_TRUE(FrameOf(clip, 19'999'999).IsTransparent());
    // A time before the start wraps around to the end of all times, where the newest label stands.
    EXPECT_EQ(FrameOf(clip, 14'999'999).Ink(IsThere), two);
}

TEST_F(CQMXKeystrokeClipTest, GivesPremultipliedFramesToBeComposedWithTheirAlpha)
{
    clip.AddKeystroke(NewItem(L"A", 0));
    ASSERT_TRUE(clip.Open(Request()));
    FrameResult result;
    ASSERT_TRUE(clip.GetVideoFrame(0, &result));
    const SampleBufferPtr frame = SampleBufferPtr::Adopt(result.frame);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->GetWidth(), 320U);
    EXPECT_EQ(frame->GetFlag(), 1U);
    EXPECT_TRUE(frame->GetAlphaFlag());
    EXPECT_EQ(clip.GetLastFrame(), nullptr);
    EXPECT_TRUE(clip.IsAudioOpened());
}

TEST_F(CQMXKeystrokeClipTest, LabelsAndPlacementCountFromTheNextOpening)
{
    for (const std::uint64_t flags : {std::uint64_t{0}, kRequestUseCache})
    {
        CQMXKeystrokeClip late;
        late.SetLeftAndTopAndWidth(0, 0, 1);
        ASSERT_TRUE(late.Open(Request(flags)));
        late.AddKeystroke(NewItem(L"A", 0));
        late.SetLeftAndTopAndWidth(0.5F, 0.25F, 0.5F);
        EXPECT_TRUE(FrameOf(late, 0).IsTransparent());
        ASSERT_TRUE(late.Open(Request(flags)));
        EXPECT_EQ(FrameOf(late, 0).Ink(IsThere).left, 160);
        EXPECT_EQ(FrameOf(late, 0).Ink(IsThere).top, 36);
        late.SetLeftAndTopAndWidth(0, 0, 1);
        EXPECT_EQ(FrameOf(late, 0).Ink(IsThere).left, 160);
    }
}

TEST_F(CQMXKeystrokeClipTest, CopyingAddsTheLabelsAndLeavesThePlacement)
{
    CQMXKeystrokeClip source;
    source.SetLeftAndTopAndWidth(0.5F, 0.5F, 0.5F);
    source.SetDuration(99);
    source.AddKeystroke(NewItem(L"A", 7));
    std::vector<tagQMXKeystrokeInfo*> from;
    source.GetKeystrokes(from);
    from[0]->hostData1 = 11;
    from[0]->hostData2 = 12;
    clip.SetLeftAndTopAndWidth(0.1F, 0.2F, 0.3F);
    clip.CopyFrom(&source);
    clip.CopyFrom(&source);
    EXPECT_EQ(clip.GetDuration(), 99U);
    EXPECT_EQ(clip.GetKeystrokeLeft(), 0.1F);
    EXPECT_EQ(clip.GetKeystrokeTop(), 0.2F);
    EXPECT_EQ(clip.GetKeystrokeWidth(), 0.3F);
    std::vector<tagQMXKeystrokeInfo*> items;
    ASSERT_EQ(clip.GetKeystrokes(items).size(), 2U);
    EXPECT_NE(items[1], from[0]);
    EXPECT_EQ(items[1]->text, L"A");
    EXPECT_EQ(items[1]->startTime, 7U);
    EXPECT_EQ(items[1]->hostData1, 11U);
    EXPECT_EQ(items[1]->hostData2, 12U);
    CQMXTitleClip title;
    title.SetDuration(5);
    clip.CopyFrom(&title);
    clip.CopyFrom(nullptr);
    EXPECT_EQ(clip.GetDuration(), 5U);
    EXPECT_EQ(CountOf(clip), 2U);
}

TEST_F(CQMXKeystrokeClipTest, ClipsThatShareADecoderShowTheirOwnLabelsInTheirOwnPlace)
{
    auto first = std::make_unique<CQMXKeystrokeClip>();
    first->SetLeftAndTopAndWidth(0.25F, 0.5F, 0.5F);
    first->AddKeystroke(NewItem(L"A", 0));
    clip.AddKeystroke(NewItem(L"Control", 0));
    ASSERT_TRUE(first->Open(Request()) && clip.Open(Request()));
    const Frame ofFirst = FrameOf(*first, 0);
    const Frame ofClip = FrameOf(clip, 0);
    ASSERT_NE(ofFirst.bgra, ofClip.bgra);
    ASSERT_TRUE(first->Open(Request(kRequestUseCache)) && clip.Open(Request(kRequestUseCache)));
    for (int round = 0; round < 3; ++round)
    {
        EXPECT_EQ(FrameOf(*first, 0).bgra, ofFirst.bgra);
        EXPECT_EQ(FrameOf(clip, 0).bgra, ofClip.bgra);
    }
    ASSERT_TRUE(first->Open(Request(kRequestUseCache, 200)));
    EXPECT_EQ(FrameOf(*first, 0).Ink(IsThere).left, 50);
    EXPECT_EQ(FrameOf(clip, 0).bgra, ofClip.bgra);
    first.reset();
    EXPECT_EQ(FrameOf(clip, 0).bgra, ofClip.bgra);
}

TEST_F(CQMXKeystrokeClipTest, TakesADecoderOfItsOwnWhereTheCacheHasOneOfAnotherKind)
{
    CQMXTitleClip title;
    ASSERT_TRUE(title.Open(Request(kRequestUseCache)));
    ASSERT_EQ(title.GetDecoderKey(), clip.GetDecoderKey());
    clip.AddKeystroke(NewItem(L"A", 0));
    ASSERT_TRUE(clip.Open(Request(kRequestUseCache)));
    EXPECT_FALSE(FrameOf(clip, 0).IsTransparent());
}

TEST_F(CQMXKeystrokeClipTest, ClosingGivesTheDecoderBack)
{
    ASSERT_TRUE(clip.Open(Request(kRequestUseCache)));
    const DecoderPtr decoder = DecoderPtr::Adopt(GetDecoder(clip.GetDecoderKey(), tagDecProp(std::wstring(), 0)));
    EXPECT_TRUE(clip.Close());
    EXPECT_EQ(decoder->AddRef(), 3U);
    decoder->Release();
    EXPECT_FALSE(clip.IsVideoOpened());
    FrameResult result;
    EXPECT_FALSE(clip.GetVideoFrame(0, &result));
}

TEST_F(CQMXKeystrokeClipTest, NullsAndShortMemoryDoNoHarm)
{
    EXPECT_FALSE(clip.Open(NullReference<const tagRenderProp>()));
    EXPECT_FALSE(clip.GetVideoFrame(0, nullptr));
    clip.AddKeystroke(nullptr);
    auto* const item = NewItem(L"lost", 0);
    {
        const CAllocationFailure failure;
        clip.AddKeystroke(item);
        EXPECT_FALSE(clip.Open(Request()));
    }
    EXPECT_EQ(CountOf(clip), 0U);
}
} // namespace
