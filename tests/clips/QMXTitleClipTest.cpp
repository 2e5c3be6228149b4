#include "engine/clips/QMXTitleClip.h"

#include "engine/clips/QMXColorClip.h"
#include "engine/clips/QMXKeystrokeClip.h"
#include "engine/decoders/DecoderCache.h"
#include "engine/decoders/still/TitleDecoder.h"
#include "tests/decoders/NullReference.h"
#include "tests/decoders/still/TextFrames.h"
#include "tests/model/AllocationFailure.h"
#include "tests/model/SlotOf.h"

#include <memory>

namespace
{
using text_test::Frame;
using text_test::FrameOf;
using text_test::Request;

class CQMXTitleClipTest : public text_test::TextTest
{
protected:
    CQMXTitleClipTest()
    {
        clip.SetStartTime(20'000'000);
        clip.SetDuration(100'000'000);
    }
    ~CQMXTitleClipTest() override { RemoveAllDecoders(); }

    static tagQMXTitleTextInfo* NewItem(const std::wstring& text, std::uint32_t animation = 0)
    {
        auto* const item = new tagQMXTitleTextInfo;
        item->text = text;
        item->textLength = static_cast<std::uint32_t>(text.size());
        item->fontName = text_test::kFamily;
        item->animation = animation;
        return item;
    }
    static std::size_t CountOf(CQMXTitleClip& clip)
    {
        std::vector<tagQMXTitleTextInfo*> items;
        return clip.GetTitleTexts(items).size();
    }

    CQMXTitleClip clip;
};

TEST_F(CQMXTitleClipTest, KeepsItsSlots)
{
    EXPECT_EQ(SlotOf(&CQMXTitleClip::GetDecoderKey), 30);
    EXPECT_EQ(SlotOf(&CQMXTitleClip::AddTitleText), 31);
    EXPECT_EQ(SlotOf(&CQMXTitleClip::GetTitleTexts), 32);
    EXPECT_EQ(clip.GetClipType(), QMXClipType_Title);
}

TEST_F(CQMXTitleClipTest, GivesPremultipliedFramesToBeComposedWithTheirAlpha)
{
    clip.AddTitleText(NewItem(L"Hill"));
    EXPECT_FALSE(clip.IsVideoOpened());
    ASSERT_TRUE(clip.Open(Request()));
    EXPECT_TRUE(clip.IsVideoOpened());
    FrameResult result;
    ASSERT_TRUE(clip.GetVideoFrame(20'000'000, &result));
    const SampleBufferPtr frame = SampleBufferPtr::Adopt(result.frame);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->GetWidth(), 320U);
    EXPECT_EQ(frame->GetHeight(), 144U);
    EXPECT_EQ(frame->GetFlag(), 1U);
    EXPECT_TRUE(frame->GetAlphaFlag());
    EXPECT_EQ(clip.GetLastFrame(), nullptr);
    EXPECT_TRUE(clip.IsAudioOpened()); // silence
}

TEST_F(CQMXTitleClipTest, TheDecodersTimeRunsFromTheClipsStartWithoutTheInPoint)
{
    clip.SetInPoint(50'000'000);
    clip.AddTitleText(NewItem(L"Hill", QMXTitleAnimation_LeftToRight));
    ASSERT_TRUE(clip.Open(Request()));
    const RefPtr<CTitleDecoder> decoder = RefPtr<CTitleDecoder>::Adopt(new CTitleDecoder);
    tagDecProp prop(std::wstring(), 0);
    prop.width = 320;
    prop.height = 144;
    decoder->Initialize(prop);
    std::vector<tagQMXTitleTextInfo*> items;
    decoder->InitializeTitleText(clip.GetTitleTexts(items), 0);
    for (const std::uint64_t time : {0U, 80'000'000U})
    {
        bool flag = false;
        const Frame expected = text_test::Take(decoder->GetClipVideoFrame(time, flag));
        EXPECT_EQ(expected.IsTransparent(), time == 0);
        EXPECT_EQ(FrameOf(clip, 20'000'000 + time).bgra, expected.bgra);
    }
}

TEST_F(CQMXTitleClipTest, WithoutTextsOpensAndIsTransparent)
{
    ASSERT_TRUE(clip.Open(Request()));
    EXPECT_TRUE(FrameOf(clip, 20'000'000).IsTransparent());
}

TEST_F(CQMXTitleClipTest, TextsThatAreAddedLaterShowWhenItIsOpenedAgain)
{
    for (const std::uint64_t flags : {std::uint64_t{0}, kRequestUseCache})
    {
        CQMXTitleClip late;
        ASSERT_TRUE(late.Open(Request(flags)));
        late.AddTitleText(NewItem(L"Hill"));
        EXPECT_TRUE(FrameOf(late, 0).IsTransparent());
        ASSERT_TRUE(late.Open(Request(flags)));
        EXPECT_FALSE(FrameOf(late, 0).IsTransparent());
    }
}

TEST_F(CQMXTitleClipTest, CopyingTwiceDoublesTheTexts)
{
    CQMXTitleClip source;
    source.SetFilePath(L"a path");
    source.AddTitleText(NewItem(L"one"));
    source.AddTitleText(NewItem(L"two"));
    std::vector<tagQMXTitleTextInfo*> from;
    source.GetTitleTexts(from);
    from[0]->underline = true;
    from[1]->textLength = 0;
    clip.CopyFrom(&source);
    EXPECT_EQ(clip.GetFilePath(), L"a path");
    EXPECT_EQ(CountOf(clip), 2U);
    clip.CopyFrom(&source);
    std::vector<tagQMXTitleTextInfo*> items;
    ASSERT_EQ(clip.GetTitleTexts(items).size(), 4U);
    EXPECT_TRUE(items[0]->underline);
    EXPECT_EQ(items[2]->text, L"one");
    EXPECT_EQ(items[3]->text, L""); // of a text without length nothing is taken
    EXPECT_NE(items[0], from[0]);
    source.CopyFrom(&source);
    EXPECT_EQ(CountOf(source), 4U);
}

TEST_F(CQMXTitleClipTest, CopyingOtherClipsTakesTheirCommonSettingsOnly)
{
    CQMXColorClip color;
    color.SetInPoint(5);
    clip.AddTitleText(NewItem(L"mine"));
    clip.CopyFrom(&color);
    EXPECT_EQ(clip.GetInPoint(), 5U);
    EXPECT_EQ(CountOf(clip), 1U);
    clip.CopyFrom(nullptr);
    EXPECT_EQ(clip.GetInPoint(), 5U);
}

TEST_F(CQMXTitleClipTest, ClosingGivesTheDecoderBack)
{
    clip.AddTitleText(NewItem(L"Hill"));
    ASSERT_TRUE(clip.Open(Request(kRequestUseCache)));
    const DecoderPtr decoder = DecoderPtr::Adopt(GetDecoder(clip.GetDecoderKey(), tagDecProp(std::wstring(), 0)));
    EXPECT_EQ(decoder->AddRef(), 4U);
    decoder->Release();
    EXPECT_TRUE(clip.Close());
    EXPECT_EQ(decoder->AddRef(), 3U);
    decoder->Release();
    EXPECT_FALSE(clip.IsVideoOpened());
    FrameResult result;
    EXPECT_FALSE(clip.GetVideoFrame(0, &result));
    EXPECT_EQ(result.frame, nullptr);
}

TEST_F(CQMXTitleClipTest, ClipsThatShareADecoderShowTheirOwnTexts)
{
    auto first = std::make_unique<CQMXTitleClip>();
    CQMXTitleClip second;
    first->AddTitleText(NewItem(L"First"));
    second.AddTitleText(NewItem(L"Second"));
    // What each shows alone.
    ASSERT_TRUE(first->Open(Request()) && second.Open(Request()));
    const Frame ofFirst = FrameOf(*first, 0);
    const Frame ofSecond = FrameOf(second, 0);
    ASSERT_NE(ofFirst.bgra, ofSecond.bgra);

    ASSERT_EQ(first->GetDecoderKey(), second.GetDecoderKey());
    ASSERT_TRUE(first->Open(Request(kRequestUseCache)));
    ASSERT_TRUE(second.Open(Request(kRequestUseCache)));
    for (int round = 0; round < 3; ++round)
    {
        EXPECT_EQ(FrameOf(*first, 0).bgra, ofFirst.bgra);
        EXPECT_EQ(FrameOf(second, 0).bgra, ofSecond.bgra);
    }
    // At another size, too.
    ASSERT_TRUE(second.Open(Request(kRequestUseCache, 200)));
    EXPECT_EQ(FrameOf(*first, 0).bgra, ofFirst.bgra);
    EXPECT_EQ(FrameOf(second, 0).width, 200U);
    EXPECT_FALSE(FrameOf(second, 0).IsTransparent());
    // And when the other's texts are gone.
    FrameOf(*first, 0);
    first.reset();
    EXPECT_FALSE(FrameOf(second, 0).IsTransparent());
}

TEST_F(CQMXTitleClipTest, TakesADecoderOfItsOwnWhereTheCacheHasOneOfAnotherKind)
{
    CQMXKeystrokeClip keystrokes;
    ASSERT_TRUE(keystrokes.Open(Request(kRequestUseCache)));
    ASSERT_EQ(keystrokes.GetDecoderKey(), clip.GetDecoderKey());
    clip.AddTitleText(NewItem(L"Hill"));
    ASSERT_TRUE(clip.Open(Request(kRequestUseCache)));
    EXPECT_FALSE(FrameOf(clip, 20'000'000).IsTransparent());
}

TEST_F(CQMXTitleClipTest, ThePathPlaysNoPartInWhichDecoderItIs)
{
    clip.SetFilePath(L"a.gif");
    clip.AddTitleText(NewItem(L"Hill"));
    ASSERT_TRUE(clip.Open(Request(kRequestUseCache)));
    EXPECT_FALSE(FrameOf(clip, 20'000'000).IsTransparent());
}

TEST_F(CQMXTitleClipTest, FramesComeThroughTheTemplateOperation)
{
    clip.AddTitleText(NewItem(L"Hill"));
    tagRenderProp request = Request(kRequestUseCache);
    bool flag = true;
    const Frame frame = text_test::Take(clip.GetFrame(request, 30'000'000, &flag));
    EXPECT_FALSE(frame.IsTransparent());
    EXPECT_FALSE(flag);
    EXPECT_EQ(request.time, 30'000'000U);
    // A request without a size gives no frame, and the clip closes.
    tagRenderProp nothing = Request(0, 0);
    clip.Close();
    EXPECT_EQ(clip.GetFrame(nothing, 30'000'000, &flag), nullptr);
    EXPECT_FALSE(clip.IsVideoOpened());
}

TEST_F(CQMXTitleClipTest, NullsAndShortMemoryDoNoHarm)
{
    EXPECT_FALSE(clip.Open(NullReference<const tagRenderProp>()));
    EXPECT_FALSE(clip.GetVideoFrame(0, nullptr));
    clip.AddTitleText(nullptr);
    EXPECT_EQ(CountOf(clip), 0U);
    auto* const item = NewItem(L"lost");
    {
        const CAllocationFailure failure;
        clip.AddTitleText(item);
        EXPECT_FALSE(clip.Open(Request()));
    }
    EXPECT_EQ(CountOf(clip), 0U);
    clip.AddTitleText(NewItem(L"kept"));
    CQMXTitleClip copy;
    {
        const CAllocationFailure failure;
        copy.CopyFrom(&clip);
    }
    EXPECT_EQ(CountOf(copy), 0U);
}
} // namespace
