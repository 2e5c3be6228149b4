#include "engine/decoders/still/TitleDecoder.h"

#include "tests/decoders/NullReference.h"
#include "tests/decoders/still/TextFrames.h"
#include "tests/model/AllocationFailure.h"

#include <limits>
#include <memory>

/// Reaches the rule of placement.
struct TitleDecoderProbe
{
    static std::pair<float, float> Place(CTitleDecoder& decoder, std::uint64_t time, tagQMXTitleTextInfo& info,
                                         float layoutLeft)
    {
        float left = 0;
        float top = 0;
        decoder._CalculateLeftAndTop(left, top, time, &info, layoutLeft);
        return {left, top};
    }
};

namespace
{
using test_support::InkBox;
using test_support::IsThere;
using test_support::IsWithinAPixel;
using test_support::MeasuredText;
using text_test::Frame;
using text_test::Measure;
using text_test::Record;
using text_test::Seconds;

class CTitleDecoderTest : public text_test::TextTest
{
protected:
    CTitleDecoderTest() { decoder->Initialize(Record(640, 288, kDecoderTitle)); }

    static tagQMXTitleTextInfo Item(const std::wstring& text, float fontSize = 24)
    {
        tagQMXTitleTextInfo item;
        item.text = text;
        item.textLength = static_cast<std::uint32_t>(text.size());
        item.fontName = text_test::kFamily;
        item.fontSize = fontSize;
        return item;
    }
    void Show(std::vector<tagQMXTitleTextInfo*> items) { EXPECT_TRUE(decoder->InitializeTitleText(items, 77)); }
    Frame FrameAt(std::uint64_t time)
    {
        bool flag = true;
        Frame frame = text_test::Take(decoder->GetClipVideoFrame(time, flag));
        EXPECT_TRUE(flag) << "the flag was written";
        return frame;
    }

    RefPtr<CTitleDecoder> decoder = RefPtr<CTitleDecoder>::Adopt(new CTitleDecoder);
};

// ---- placement ---------------------------------------------------------------------------------------------------

TEST_F(CTitleDecoderTest, TextThatMovesRightIsWhereItsTimeSays)
{
    decoder->Initialize(Record(1920, 1080, kDecoderTitle));
    tagQMXTitleTextInfo item = Item(L"Hill");
    item.animation = QMXTitleAnimation_LeftToRight;
    item.x = 0.5;
    EXPECT_EQ(TitleDecoderProbe::Place(*decoder.Get(), 0, item, 0).first, -960);
    EXPECT_EQ(TitleDecoderProbe::Place(*decoder.Get(), Seconds(7.5), item, 0).first, 960);
    EXPECT_EQ(TitleDecoderProbe::Place(*decoder.Get(), Seconds(15), item, 0).first, 2880);
    EXPECT_EQ(TitleDecoderProbe::Place(*decoder.Get(), Seconds(30), item, 0).first, 6720);
    EXPECT_EQ(TitleDecoderProbe::Place(*decoder.Get(), Seconds(7.5), item, 100).first, 860);

    // And on the pixels, where it can be seen.
    Show({&item});
    const MeasuredText text = Measure("Hill", 24, 1080);
    for (const double seconds : {4.0, 7.5, 10.0})
    {
        const InkBox ink = FrameAt(Seconds(seconds)).Ink();
        EXPECT_TRUE(IsWithinAPixel(ink.left, 960 + 1920 * (seconds - 7.5) / 7.5 + text.inkLeft)) << seconds;
    }
    for (const double seconds : {0.0, 15.0, 30.0})
        EXPECT_TRUE(FrameAt(Seconds(seconds)).IsTransparent()) << seconds;
}

TEST_F(CTitleDecoderTest, EveryDirectionReadOffThePixels)
{
    const MeasuredText text = Measure("Hill", 24, 288);
    tagQMXTitleTextInfo item = Item(L"Hill");
    item.x = 0.25;
    item.y = 0.5;
    Show({&item});
    const double left = 160 + text.inkLeft;
    const double top = 144 + text.ascent + text.inkTop;
    const auto expect = [&](std::uint32_t animation, double dx, double dy)
    {
        item.animation = animation;
        // An eighth of half a pass after the middle: whole pixels, which no service moves onto others.
        const InkBox ink = FrameAt(Seconds(7.5 + 7.5 / 8)).Ink();
        EXPECT_TRUE(IsWithinAPixel(ink.left, left + dx)) << animation;
        EXPECT_TRUE(IsWithinAPixel(ink.top, top + dy)) << animation;
    };
    expect(QMXTitleAnimation_None, 0, 0);
    expect(QMXTitleAnimation_LeftToRight, 640 / 8.0, 0);
    expect(QMXTitleAnimation_TopToBottom, 0, 288 / 8.0);
    expect(QMXTitleAnimation_RightToLeft, -640 / 8.0, 0);
    expect(QMXTitleAnimation_BottomToTop, 0, -288 / 8.0);
    expect(5, 0, 0);
    expect(0xFFFFFFFFU, 0, 0);
}

TEST_F(CTitleDecoderTest, SpeedsShortenThePassAndTurnItAround)
{
    tagQMXTitleTextInfo item = Item(L"Hill");
    item.animation = QMXTitleAnimation_LeftToRight;
    const auto left = [&](std::uint32_t speed, double seconds)
    {
        item.speed = speed;
        return TitleDecoderProbe::Place(*decoder.Get(), Seconds(seconds), item, 0).first;
    };
    EXPECT_EQ(left(1, 13), 640); // the end of a pass of 13 s
    EXPECT_EQ(left(7, 0), -640);
    EXPECT_EQ(left(7, 0.5), 0);
    EXPECT_EQ(left(7, 1), 640);
    EXPECT_EQ(left(8, 0), -640); // a period of -1 s
    EXPECT_EQ(left(8, 0.5), -1280);
    EXPECT_EQ(left(8, 1), -1920);
    EXPECT_EQ(left(9, 3), -1920);
    // The product wraps around as 32 bits do: 15 - 2 * 2^31 is 15 again.
    EXPECT_EQ(left(0x80000000U, 15), 640);

    Show({&item});
    item.speed = 7;
    const MeasuredText text = Measure("Hill", 24, 288);
    EXPECT_TRUE(IsWithinAPixel(FrameAt(Seconds(0.75)).Ink().left, 320 + text.inkLeft));
    item.speed = 8;
    item.x = 2; // two frames to the right, so that it comes into sight
    EXPECT_TRUE(IsWithinAPixel(FrameAt(Seconds(0.25)).Ink().left, 320 + text.inkLeft));
}

TEST_F(CTitleDecoderTest, TimesBeyondTheSignedRangeCountAsUnsigned)
{
    tagQMXTitleTextInfo item = Item(L"Hill");
    item.animation = QMXTitleAnimation_LeftToRight;
    const float left =
        TitleDecoderProbe::Place(*decoder.Get(), std::numeric_limits<std::uint64_t>::max(), item, 0).first;
    EXPECT_NEAR(left, 640 * 2 * (18446744073709551615.0 / 1.5e8), 1e9);
    Show({&item});
    EXPECT_TRUE(FrameAt(std::numeric_limits<std::uint64_t>::max()).IsTransparent());
}

TEST_F(CTitleDecoderTest, AlignmentMovesLinesAgainstEachOtherNotTheAnchor)
{
    tagQMXTitleTextInfo item = Item(L"Hillside\nHill");
    item.x = 0.25;
    Show({&item});
    const MeasuredText wide = Measure("Hillside", 24, 288);
    const MeasuredText narrow = Measure("Hill", 24, 288);
    // Left edge of the second line for each alignment; the fifth is leading, too.
    const double offsets[] = {0, wide.width - narrow.width, (wide.width - narrow.width) / 2, 0, 0, 0};
    for (std::uint32_t alignment = 0; alignment < 6; ++alignment)
    {
        item.alignment = alignment;
        const Frame frame = FrameAt(0);
        const int half = static_cast<int>(wide.Height());
        const InkBox first = test_support::FindInk(frame.bgra.data(), 640 * 4, 640, half, test_support::IsHalfThere);
        const InkBox second =
            test_support::FindInk(frame.At(0, half), 640 * 4, 640, 288 - half, test_support::IsHalfThere);
        EXPECT_TRUE(IsWithinAPixel(first.left, 160 + wide.inkLeft)) << alignment;
        EXPECT_TRUE(IsWithinAPixel(second.left, 160 + offsets[alignment] + narrow.inkLeft)) << alignment;
    }
}

TEST_F(CTitleDecoderTest, LinesWrapAtTwiceTheFramesWidth)
{
    // On a frame 640 wide: 1,200 pixels of text stay on one line, 1,400 do not.
    std::wstring text;
    std::string utf8;
    while (Measure(utf8 + "hill", 24, 288).width < 1'200)
    {
        text += L"hill ";
        utf8 += "hill ";
    }
    tagQMXTitleTextInfo item = Item(text);
    item.x = -0.9; // the frame shows the far end of the line
    Show({&item});
    const int line = static_cast<int>(Measure("hill", 24, 288).Height());
    EXPECT_LT(FrameAt(0).Ink().bottom, line + 1);
    for (int i = 0; i < 5; ++i)
        text += L"hill ";
    item.text = text;
    item.textLength = static_cast<std::uint32_t>(text.size());
    item.x = 0;
    const Frame wrapped = FrameAt(0);
    EXPECT_GT(wrapped.Ink().bottom, line + 5);
}

// ---- looks -------------------------------------------------------------------------------------------------------

TEST_F(CTitleDecoderTest, SizesGrowWithTheFrame)
{
    decoder->Initialize(Record(1920, 1080, kDecoderTitle));
    tagQMXTitleTextInfo item = Item(L"Hill", 72);
    Show({&item});
    const InkBox ink = FrameAt(0).Ink();
    const MeasuredText text = test_support::MeasureText({"DejaVu Sans"}, "Hill", 270);
    EXPECT_TRUE(IsWithinAPixel(ink.Width(), text.inkRight - text.inkLeft));
    EXPECT_TRUE(IsWithinAPixel(ink.Height(), text.inkBottom - text.inkTop));
    EXPECT_TRUE(IsWithinAPixel(ink.top, text.ascent + text.inkTop));
}

TEST_F(CTitleDecoderTest, TheTopByteOfAColourHasNoEffect)
{
    tagQMXTitleTextInfo item = Item(L"█", 100);
    item.color = 0xFF336699U;
    Show({&item});
    const Frame frame = FrameAt(0);
    const InkBox ink = frame.Ink();
    const std::uint8_t* const pPixel = frame.At((ink.left + ink.right) / 2, (ink.top + ink.bottom) / 2);
    EXPECT_EQ(pPixel[0], 0x99);
    EXPECT_EQ(pPixel[1], 0x66);
    EXPECT_EQ(pPixel[2], 0x33);
    EXPECT_EQ(pPixel[3], 0xFF);
    item.color = 0x00336699U;
    EXPECT_EQ(FrameAt(0).bgra, frame.bgra);
}

TEST_F(CTitleDecoderTest, OpacityPremultipliesTheColour)
{
    tagQMXTitleTextInfo item = Item(L"█", 100);
    item.color = 0x336699;
    item.opacity = 0.5F;
    Show({&item});
    const Frame frame = FrameAt(0);
    EXPECT_EQ(frame.flag, 1U); // the buffer says premultiplied
    const InkBox ink = frame.Ink(IsThere);
    const std::uint8_t* const pPixel = frame.At((ink.left + ink.right) / 2, (ink.top + ink.bottom) / 2);
    EXPECT_NEAR(pPixel[0], 0x99 / 2.0, 1);
    EXPECT_NEAR(pPixel[1], 0x66 / 2.0, 1);
    EXPECT_NEAR(pPixel[2], 0x33 / 2.0, 1);
    EXPECT_NEAR(pPixel[3], 128, 1);
    item.opacity = 0;
    EXPECT_TRUE(FrameAt(0).IsTransparent());
}

TEST_F(CTitleDecoderTest, LaterItemsLieOverEarlierOnes)
{
    tagQMXTitleTextInfo below = Item(L"█", 100);
    tagQMXTitleTextInfo above = Item(L"█", 100);
    below.color = 0xFF0000;
    above.color = 0x0000FF;
    Show({&below, &above});
    const Frame frame = FrameAt(0);
    const InkBox ink = frame.Ink();
    EXPECT_EQ(frame.At((ink.left + ink.right) / 2, (ink.top + ink.bottom) / 2)[0], 0xFF);
    Show({&above, &below});
    const Frame turned = FrameAt(0);
    EXPECT_EQ(turned.At((ink.left + ink.right) / 2, (ink.top + ink.bottom) / 2)[2], 0xFF);
}

TEST_F(CTitleDecoderTest, WeightItalicsAndUnderlineReachTheFont)
{
    tagQMXTitleTextInfo item = Item(L"Hill", 48);
    Show({&item});
    const InkBox plain = FrameAt(0).Ink();
    item.fontWeight = 700;
    item.italic = true;
    const InkBox bold = FrameAt(0).Ink();
    EXPECT_GT(bold.Width(), plain.Width() + 3);
    item.fontWeight = 400;
    item.italic = false;
    item.underline = true;
    const InkBox underlined = FrameAt(0).Ink();
    EXPECT_GT(underlined.bottom, plain.bottom + 2);
    EXPECT_TRUE(IsWithinAPixel(underlined.right, Measure("Hill", 48, 288).width));
}

TEST_F(CTitleDecoderTest, OnlyTextLengthCharactersAreShown)
{
    tagQMXTitleTextInfo item = Item(L"Hillside");
    Show({&item});
    item.textLength = 4;
    EXPECT_TRUE(IsWithinAPixel(FrameAt(0).Ink().right, Measure("Hill", 24, 288).inkRight));
    item.textLength = 0;
    EXPECT_TRUE(FrameAt(0).IsTransparent());
    item.textLength = 1'000'000; // more than there are
    EXPECT_TRUE(IsWithinAPixel(FrameAt(0).Ink().right, Measure("Hillside", 24, 288).inkRight));
}

TEST_F(CTitleDecoderTest, AFamilyThatTheSystemLacksIsReplaced)
{
    tagQMXTitleTextInfo item = Item(L"Hill", 48);
    item.fontName = L"No such family";
    Show({&item});
    const InkBox ink = FrameAt(0).Ink();
    const MeasuredText text = Measure("Hill", 48, 288);
    EXPECT_NEAR(ink.Width(), text.inkRight - text.inkLeft, 0.5 * text.width);
    EXPECT_NEAR(ink.Height(), text.inkBottom - text.inkTop, 0.5 * text.Height());
}

TEST_F(CTitleDecoderTest, CharactersThatTheFontLacksComeFromAnother)
{
    if (!test_support::HasFont({"WenQuanYi Micro Hei"}))
        GTEST_SKIP() << "WenQuanYi Micro Hei is not installed";
    tagQMXTitleTextInfo item = Item(L"\u6807\u9898", 48);
    Show({&item});
    const InkBox replaced = FrameAt(0).Ink();
    item.fontName = L"WenQuanYi Micro Hei";
    const InkBox own = FrameAt(0).Ink();
    EXPECT_FALSE(own.IsEmpty());
    EXPECT_EQ(replaced.left, own.left);
    EXPECT_EQ(replaced.right, own.right);
    EXPECT_EQ(replaced.Height(), own.Height());
}

// ---- state -------------------------------------------------------------------------------------------------------

TEST_F(CTitleDecoderTest, WithoutTextsIsTransparent)
{
    Show({});
    const Frame frame = FrameAt(0);
    EXPECT_EQ(frame.width, 640U);
    EXPECT_EQ(frame.height, 288U);
    EXPECT_TRUE(frame.IsTransparent());
    Show({nullptr});
    EXPECT_TRUE(FrameAt(0).IsTransparent());
    EXPECT_EQ(decoder->GetLastFrame(), nullptr);
}

TEST_F(CTitleDecoderTest, AnotherTimeKeepsThePipelineAndTheTexts)
{
    tagQMXTitleTextInfo item = Item(L"Hill");
    Show({&item});
    tagDecProp prop = Record(640, 288, kDecoderTitle);
    prop.currentTime = 5;
    decoder->SetDecoderProperty(prop);
    EXPECT_EQ(decoder->GetProperty()->currentTime, 5U);
    EXPECT_FALSE(FrameAt(0).IsTransparent());
    EXPECT_TRUE(decoder->IsShowing({&item}));
}

TEST_F(CTitleDecoderTest, AnotherSizeRebuildsThePipelineAndForgetsTheTexts)
{
    tagQMXTitleTextInfo item = Item(L"Hill");
    Show({&item});
    decoder->SetDecoderProperty(Record(320, 288, kDecoderTitle));
    EXPECT_TRUE(decoder->IsShowing({}));
    EXPECT_EQ(FrameAt(0).width, 320U);
    EXPECT_TRUE(FrameAt(0).IsTransparent());
    Show({&item});
    EXPECT_FALSE(FrameAt(0).IsTransparent());
    decoder->SetDecoderProperty(Record(320, 144, kDecoderTitle));
    EXPECT_TRUE(FrameAt(0).IsTransparent());
    EXPECT_EQ(FrameAt(0).height, 144U);
}

TEST_F(CTitleDecoderTest, EveryFrameIsANewBuffer)
{
    tagQMXTitleTextInfo item = Item(L"Hill");
    Show({&item});
    bool flag = false;
    const SampleBufferPtr first = SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(0, flag));
    const SampleBufferPtr second = SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(0, flag));
    ASSERT_TRUE(first && second);
    EXPECT_NE(first.Get(), second.Get());
    EXPECT_EQ(first->AddRef(), 2U);
    first->Release();
    // What the host does to a frame does not show in the next one.
    std::uint8_t* pPixels = nullptr;
    std::uint32_t cb = 0;
    ASSERT_TRUE(first->GetBuffer(&pPixels, &cb));
    std::fill_n(pPixels, cb, std::uint8_t{0x55});
    EXPECT_EQ(FrameAt(0).bgra, text_test::Take(SampleBufferPtr(second).Detach()).bgra);
}

TEST_F(CTitleDecoderTest, ChangesToAnItemShowInTheNextFrame)
{
    tagQMXTitleTextInfo item = Item(L"Hill");
    Show({&item});
    const Frame before = FrameAt(0);
    item.text = L"Dale";
    const Frame after = FrameAt(0);
    EXPECT_NE(after.bgra, before.bgra);
    item.text = L"Hill";
    EXPECT_EQ(FrameAt(0).bgra, before.bgra);
    item.color = 0xFF00FF;
    EXPECT_NE(FrameAt(0).bgra, before.bgra);
}

TEST_F(CTitleDecoderTest, RandomAccessGivesTheSameFramesAsPlayingOn)
{
    tagQMXTitleTextInfo mover = Item(L"Moving", 40);
    mover.animation = QMXTitleAnimation_LeftToRight;
    tagQMXTitleTextInfo faller = Item(L"Falling", 30);
    faller.animation = QMXTitleAnimation_TopToBottom;
    faller.opacity = 0.6F;
    faller.x = 0.4;
    Show({&mover, &faller});
    std::vector<Frame> frames;
    for (int n = 0; n < 16; ++n)
        frames.push_back(FrameAt(Seconds(n)));
    for (const std::size_t n : {7U, 3U, 15U, 3U, 3U, 0U, 8U, 9U, 2U})
        EXPECT_EQ(FrameAt(Seconds(static_cast<double>(n))).bgra, frames[n].bgra) << n;
    // A decoder of its own that has shown nothing before.
    const RefPtr<CTitleDecoder> fresh = RefPtr<CTitleDecoder>::Adopt(new CTitleDecoder);
    fresh->Initialize(Record(640, 288, kDecoderTitle));
    fresh->InitializeTitleText({&mover, &faller}, 0);
    bool flag = false;
    EXPECT_EQ(text_test::Take(fresh->GetClipVideoFrame(Seconds(9), flag)).bgra, frames[9].bgra);
}

TEST_F(CTitleDecoderTest, NullReferencesAndWildValuesDoNoHarm)
{
    EXPECT_TRUE(decoder->Initialize(NullReference<const tagDecProp>()));
    decoder->SetDecoderProperty(NullReference<const tagDecProp>());
    EXPECT_TRUE(decoder->InitializeTitleText(NullReference<const std::vector<tagQMXTitleTextInfo*>>(), 0));
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinite = std::numeric_limits<float>::infinity();
    tagQMXTitleTextInfo item = Item(L"Hill");
    Show({&item});
    for (const float size : {0.0F, -24.0F, kNone, kInfinite, 1e30F})
    {
        item.fontSize = size;
        EXPECT_TRUE(FrameAt(0).IsTransparent()) << size;
    }
    item = Item(L"Hill");
    for (const double x : {1e300, -1e300, std::numeric_limits<double>::quiet_NaN()})
    {
        item.x = x;
        EXPECT_TRUE(FrameAt(0).IsTransparent()) << x;
    }
    item = Item(L"Hill");
    item.opacity = kNone;
    EXPECT_TRUE(FrameAt(0).IsTransparent());
    item = Item(L"Hill");
    for (const std::uint32_t weight : {0U, 1000U, 0xFFFFFFFFU})
    {
        item.fontWeight = weight;
        EXPECT_TRUE(FrameAt(0).IsTransparent()) << weight;
    }
}

TEST_F(CTitleDecoderTest, ADecoderWithoutASizeHasNoFrames)
{
    const RefPtr<CTitleDecoder> fresh = RefPtr<CTitleDecoder>::Adopt(new CTitleDecoder);
    bool flag = false;
    EXPECT_EQ(fresh->GetClipVideoFrame(0, flag), nullptr);
    EXPECT_TRUE(fresh->Initialize(Record(0, 288, kDecoderTitle)));
    EXPECT_EQ(fresh->GetClipVideoFrame(0, flag), nullptr);
    EXPECT_TRUE(fresh->Initialize(Record(0xFFFFFFFFU, 0xFFFFFFFFU, kDecoderTitle)));
    EXPECT_EQ(fresh->GetClipVideoFrame(0, flag), nullptr);
    // Too wide for a texture, not for a buffer.
    EXPECT_TRUE(fresh->Initialize(Record(20'000, 2, kDecoderTitle)));
    EXPECT_TRUE(text_test::Take(fresh->GetClipVideoFrame(0, flag)).IsTransparent());
}

TEST_F(CTitleDecoderTest, ACopyOfADecoderThatIsNotOpenWorksByItself)
{
    tagQMXTitleTextInfo item = Item(L"Hill");
    const RefPtr<CTitleDecoder> source = RefPtr<CTitleDecoder>::Adopt(new CTitleDecoder);
    source->InitializeTitleText({&item}, 7);
    const RefPtr<CTitleDecoder> copy = RefPtr<CTitleDecoder>::Adopt(new CTitleDecoder(*source.Get()));
    EXPECT_TRUE(copy->IsShowing({&item}));
    copy->Initialize(Record(640, 288, kDecoderTitle));
    copy->InitializeTitleText({&item}, 7);
    bool flag = false;
    EXPECT_FALSE(text_test::Take(copy->GetClipVideoFrame(0, flag)).IsTransparent());
    EXPECT_EQ(source->GetClipVideoFrame(0, flag), nullptr);
}

TEST_F(CTitleDecoderTest, ShortMemoryGivesNoFrameAndNoHarm)
{
    tagQMXTitleTextInfo item = Item(L"A text that is long enough to need memory of its own");
    Show({&item});
    const std::vector<tagQMXTitleTextInfo*> items = {&item};
    bool refused = true;
    for (int allowed = 0; refused && allowed < 100; ++allowed)
    {
        const RefPtr<CTitleDecoder> fresh = RefPtr<CTitleDecoder>::Adopt(new CTitleDecoder);
        const tagDecProp prop = Record(64, 32, kDecoderTitle);
        const CAllocationFailure failure(allowed);
        bool flag = false;
        fresh->Initialize(prop);
        fresh->InitializeTitleText(items, 0);
        const SampleBufferPtr frame = SampleBufferPtr::Adopt(fresh->GetClipVideoFrame(0, flag));
        refused = CAllocationFailure::Happened();
    }
    EXPECT_FALSE(refused);
    EXPECT_FALSE(FrameAt(0).IsTransparent());
}
} // namespace
