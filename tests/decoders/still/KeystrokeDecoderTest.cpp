#include "engine/decoders/still/KeystrokeDecoder.h"

#include "tests/decoders/NullReference.h"
#include "tests/decoders/still/TextFrames.h"

#include <limits>

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

class CKeystrokeDecoderTest : public text_test::TextTest
{
protected:
    CKeystrokeDecoderTest()
    {
        decoder->Initialize(Record(640, 288, kDecoderKeystroke));
        decoder->InitializeLeftAndTopAndWidth(0, 0, 1);
    }

    /// A label whose box is of the colour with this number in blue.
    static tagQMXKeystrokeInfo Key(double start, const std::wstring& text, std::uint32_t boxColor, double end = 0)
    {
        tagQMXKeystrokeInfo key;
        key.startTime = Seconds(start);
        key.endTime = Seconds(end);
        key.text = text;
        key.fontName = text_test::kFamily;
        key.fontSize = 20;
        key.backColor = boxColor;
        return key;
    }
    void Show(std::vector<tagQMXKeystrokeInfo>& keys)
    {
        std::vector<tagQMXKeystrokeInfo*> items;
        for (tagQMXKeystrokeInfo& key : keys)
            items.push_back(&key);
        EXPECT_TRUE(decoder->InitializeKeystrokeText(items, 77));
    }
    Frame FrameAt(std::uint64_t time)
    {
        bool flag = true;
        Frame frame = text_test::Take(decoder->GetClipVideoFrame(time, flag));
        EXPECT_TRUE(flag) << "the flag was written";
        return frame;
    }
    /// Box of the pixels of one colour, opaque or nearly.
    static InkBox BoxOf(const Frame& frame, std::uint32_t color)
    {
        return frame.Ink(
            [color](const std::uint8_t* pPixel)
            {
                const auto isNear = [](std::uint8_t level, std::uint32_t wanted)
                { return std::abs(static_cast<int>(level) - static_cast<int>(wanted & 0xFF)) <= 2; };
                return pPixel[3] > 250 && isNear(pPixel[0], color) && isNear(pPixel[1], color >> 8) &&
                       isNear(pPixel[2], color >> 16);
            });
    }
    /// Which of the colours are to be seen, by the left edges of their boxes.
    static std::vector<std::uint32_t> Seen(const Frame& frame, std::initializer_list<std::uint32_t> colors)
    {
        std::vector<std::pair<int, std::uint32_t>> found;
        for (const std::uint32_t color : colors)
        {
            if (const InkBox box = BoxOf(frame, color); !box.IsEmpty())
                found.emplace_back(box.left, color);
        }
        std::sort(found.begin(), found.end());
        std::vector<std::uint32_t> order;
        for (const auto& [left, color] : found)
            order.push_back(color);
        return order;
    }

    static constexpr std::uint32_t kRed = 0x800000, kGreen = 0x008000, kBlue = 0x000080, kGrey = 0x808080,
                                   kPurple = 0x800080;
    RefPtr<CKeystrokeDecoder> decoder = RefPtr<CKeystrokeDecoder>::Adopt(new CKeystrokeDecoder);
};

// ---- which labels ------------------------------------------------------------------------------------------------

TEST_F(CKeystrokeDecoderTest, ShowsTheNewestLabelAndThoseThatCameShortlyBefore)
{
    std::vector<tagQMXKeystrokeInfo> keys = {Key(0, L"A", kRed), Key(1, L"B", kGreen), Key(5, L"C", kBlue),
                                             Key(6, L"D", kGrey), Key(6.5, L"E", kPurple)};
    Show(keys);
    const auto at = [&](double seconds) {
        return Seen(FrameAt(Seconds(seconds)), {kRed, kGreen, kBlue, kGrey, kPurple});
    };
    EXPECT_EQ(at(7), (std::vector<std::uint32_t>{kBlue, kGrey, kPurple}));
    EXPECT_EQ(at(0.5), (std::vector<std::uint32_t>{kRed}));
    EXPECT_EQ(at(4.9), (std::vector<std::uint32_t>{kRed, kGreen}));
    EXPECT_EQ(at(5), (std::vector<std::uint32_t>{kBlue})); // from the start time itself on
    EXPECT_EQ(at(1000), (std::vector<std::uint32_t>{kBlue, kGrey, kPurple}));

    keys[4].endTime = Seconds(6.8);
    EXPECT_EQ(at(7), (std::vector<std::uint32_t>{kBlue, kGrey}));
    EXPECT_EQ(at(6.7), (std::vector<std::uint32_t>{kBlue, kGrey, kPurple}));
}

TEST_F(CKeystrokeDecoderTest, ALabelIsStillActiveAtItsEnd)
{
    std::vector<tagQMXKeystrokeInfo> keys = {Key(1, L"A", kRed, 2)};
    Show(keys);
    EXPECT_TRUE(FrameAt(Seconds(1) - 1).IsTransparent());
    EXPECT_FALSE(FrameAt(Seconds(1)).IsTransparent());
    EXPECT_FALSE(FrameAt(Seconds(2)).IsTransparent());
    EXPECT_TRUE(FrameAt(Seconds(2) + 1).IsTransparent());
}

TEST_F(CKeystrokeDecoderTest, LabelsTwoSecondsApartBelongTogetherAndATickMoreParts)
{
    std::vector<tagQMXKeystrokeInfo> keys = {Key(1, L"A", kRed), Key(3, L"B", kGreen)};
    Show(keys);
    EXPECT_EQ(Seen(FrameAt(Seconds(3)), {kRed, kGreen}), (std::vector<std::uint32_t>{kRed, kGreen}));
    --keys[0].startTime;
    EXPECT_EQ(Seen(FrameAt(Seconds(3)), {kRed, kGreen}), (std::vector<std::uint32_t>{kGreen}));
}

TEST_F(CKeystrokeDecoderTest, OnlyTheNewestLabelHasToBeActive)
{
    // The green one has ended and is no longer the newest; the red one has ended and is drawn with it nevertheless.
    std::vector<tagQMXKeystrokeInfo> keys = {Key(1, L"A", kRed, 1.5), Key(2, L"B", kBlue, 9),
                                             Key(3, L"C", kGreen, 3.5)};
    Show(keys);
    EXPECT_EQ(Seen(FrameAt(Seconds(4)), {kRed, kBlue, kGreen}), (std::vector<std::uint32_t>{kRed, kBlue}));
    EXPECT_EQ(Seen(FrameAt(Seconds(3.2)), {kRed, kBlue, kGreen}), (std::vector<std::uint32_t>{kRed, kBlue, kGreen}));
}

TEST_F(CKeystrokeDecoderTest, NothingIsShownBeforeTheFirstLabelOrWithoutAny)
{
    std::vector<tagQMXKeystrokeInfo> keys = {Key(1, L"A", kRed)};
    Show(keys);
    EXPECT_TRUE(FrameAt(0).IsTransparent());
    keys.clear();
    Show(keys);
    const Frame frame = FrameAt(Seconds(5));
    EXPECT_EQ(frame.width, 640U);
    EXPECT_TRUE(frame.IsTransparent());
    EXPECT_EQ(decoder->GetLastFrame(), nullptr);
}

// ---- where they stand --------------------------------------------------------------------------------------------

TEST_F(CKeystrokeDecoderTest, BoxesAndTextsAreWhereTheArithmeticPutsThem)
{
    decoder->Initialize(Record(1920, 1080, kDecoderKeystroke));
    decoder->InitializeLeftAndTopAndWidth(0.1F, 0.25F, 0.9F);
    std::vector<tagQMXKeystrokeInfo> keys = {Key(0, L"HH", kRed), Key(1, L"Hill", kGreen)};
    Show(keys);
    const Frame frame = FrameAt(Seconds(1));
    const MeasuredText first = Measure("HH", 20, 1080);
    const MeasuredText second = Measure("Hill", 20, 1080);
    // 75 and 37.5 pixels of padding; the text 37.5 and 18.75 inside; 75 whole pixels between the boxes.
    const InkBox red = BoxOf(frame, kRed);
    EXPECT_TRUE(IsWithinAPixel(red.left, 192));
    EXPECT_TRUE(IsWithinAPixel(red.top, 270));
    EXPECT_TRUE(IsWithinAPixel(red.right, 192 + 75 + first.width));
    EXPECT_TRUE(IsWithinAPixel(red.bottom, 270 + 37.5 + first.Height()));
    const InkBox green = BoxOf(frame, kGreen);
    const double next = 192 + 75 + first.width + 75;
    EXPECT_TRUE(IsWithinAPixel(green.left, next));
    EXPECT_TRUE(IsWithinAPixel(green.top, 270));
    EXPECT_TRUE(IsWithinAPixel(green.right, next + 75 + second.width));
    const auto isText = [](const std::uint8_t* pPixel)
    { return pPixel[0] > 160 && pPixel[1] > 160 && pPixel[2] > 160; };
    const InkBox text = frame.Ink(isText);
    EXPECT_TRUE(IsWithinAPixel(text.left, 192 + 37.5 + first.inkLeft));
    EXPECT_TRUE(IsWithinAPixel(text.top, 270 + 18.75 + second.ascent + second.inkTop));
    EXPECT_TRUE(IsWithinAPixel(text.right, next + 37.5 + second.inkRight));
}

TEST_F(CKeystrokeDecoderTest, GapsAreWholePixelsWherePaddingsAreNot)
{
    // 300 rows: 20.83 pixels of padding, but (300 * 20) / 288 = 20 between the boxes.
    decoder->Initialize(Record(640, 300, kDecoderKeystroke));
    decoder->InitializeLeftAndTopAndWidth(0, 0, 1);
    std::vector<tagQMXKeystrokeInfo> keys;
    for (int n = 0; n < 10; ++n)
        keys.push_back(Key(0.1 * n, L"", n % 2 == 0 ? kRed : kGreen));
    Show(keys);
    const Frame frame = FrameAt(Seconds(1));
    const InkBox last = BoxOf(frame, kGreen);
    const double step = 300 * 20.0 / 288 + 20;
    EXPECT_TRUE(IsWithinAPixel(BoxOf(frame, kRed).left, 0));
    EXPECT_TRUE(IsWithinAPixel(last.left, step));
    EXPECT_TRUE(IsWithinAPixel(last.right, 9 * step + 300 * 20.0 / 288)); // 0.83 a box would be 7.5 in all
}

TEST_F(CKeystrokeDecoderTest, ALabelThatWouldOverrunTheStripStartsItAnew)
{
    decoder->InitializeLeftAndTopAndWidth(0.25F, 0.5F, 0.35F);
    std::vector<tagQMXKeystrokeInfo> keys = {Key(0, L"Shift", kRed), Key(0.5, L"Ctrl", kGreen),
                                             Key(1, L"Delete", kBlue), Key(1.5, L"Z", kGrey)};
    Show(keys);
    EXPECT_EQ(Seen(FrameAt(Seconds(0.5)), {kRed, kGreen, kBlue}), (std::vector<std::uint32_t>{kRed, kGreen}));
    const Frame wrapped = FrameAt(Seconds(1));
    EXPECT_EQ(Seen(wrapped, {kRed, kGreen, kBlue}), (std::vector<std::uint32_t>{kBlue}));
    EXPECT_TRUE(IsWithinAPixel(BoxOf(wrapped, kBlue).left, 160));
    EXPECT_TRUE(IsWithinAPixel(BoxOf(wrapped, kBlue).top, 144));
    const Frame after = FrameAt(Seconds(1.5));
    EXPECT_EQ(Seen(after, {kRed, kGreen, kBlue, kGrey}), (std::vector<std::uint32_t>{kBlue, kGrey}));
}

TEST_F(CKeystrokeDecoderTest, TheStripIsFullByTenReferencePixelsRoundedDown)
{
    // 1080 rows: the test adds 37, not 37.5. The first box leaves x at w + 150; the second text needs x + w + 37.
    decoder->Initialize(Record(1920, 1080, kDecoderKeystroke));
    std::vector<tagQMXKeystrokeInfo> keys = {Key(0, L"HH", kRed), Key(1, L"HH", kGreen)};
    Show(keys);
    const double width = Measure("HH", 20, 1080).width;
    const double needed = width + 75 + 75 + width + 37;
    const auto shown = [&](double strip)
    {
        decoder->InitializeLeftAndTopAndWidth(0, 0, static_cast<float>(strip / 1920));
        return Seen(FrameAt(Seconds(1)), {kRed, kGreen}).size();
    };
    EXPECT_EQ(shown(needed + 0.4), 2U); // with 37.5 it would be one
    EXPECT_EQ(shown(needed - 0.4), 1U);
}

TEST_F(CKeystrokeDecoderTest, ALabelWiderThanTheStripIsShownAlone)
{
    decoder->InitializeLeftAndTopAndWidth(0.1F, 0, 0.01F);
    std::vector<tagQMXKeystrokeInfo> keys = {Key(0, L"A", kRed), Key(1, L"B", kGreen)};
    Show(keys);
    EXPECT_EQ(Seen(FrameAt(Seconds(1)), {kRed, kGreen}), (std::vector<std::uint32_t>{kGreen}));
    EXPECT_TRUE(IsWithinAPixel(BoxOf(FrameAt(Seconds(1)), kGreen).left, 64));
}

// ---- looks -------------------------------------------------------------------------------------------------------

TEST_F(CKeystrokeDecoderTest, ColoursAndAlphasOfTextAndBoxAreTheirOwn)
{
    std::vector<tagQMXKeystrokeInfo> keys = {Key(0, L"█", 0xFF336699U)};
    keys[0].backAlpha = 0.5F;
    keys[0].textColor = 0xFFCC8844U;
    Show(keys);
    Frame frame = FrameAt(0);
    EXPECT_EQ(frame.flag, 1U);
    const std::uint8_t* pBox = frame.At(3, 3);
    EXPECT_NEAR(pBox[0], 0x99 / 2.0, 1);
    EXPECT_NEAR(pBox[1], 0x66 / 2.0, 1);
    EXPECT_NEAR(pBox[2], 0x33 / 2.0, 1);
    EXPECT_NEAR(pBox[3], 128, 1);
    const InkBox text = BoxOf(frame, 0xCC8844);
    ASSERT_FALSE(text.IsEmpty());
    // A half transparent text over a half transparent box.
    keys[0].textAlpha = 0.5F;
    frame = FrameAt(0);
    const std::uint8_t* const pText = frame.At((text.left + text.right) / 2, (text.top + text.bottom) / 2);
    EXPECT_NEAR(pText[0], 0x44 / 2.0 + 0x99 / 4.0, 2);
    EXPECT_NEAR(pText[3], 192, 2);
    keys[0].textAlpha = 0;
    keys[0].backAlpha = 0;
    EXPECT_TRUE(FrameAt(0).IsTransparent());
}

// ---- state -------------------------------------------------------------------------------------------------------

TEST_F(CKeystrokeDecoderTest, AnotherTimeKeepsEverythingAnotherSizeForgetsLabelsAndCorner)
{
    decoder->InitializeLeftAndTopAndWidth(0.25F, 0.25F, 0.5F);
    std::vector<tagQMXKeystrokeInfo> keys = {Key(0, L"A", kRed)};
    Show(keys);
    tagDecProp prop = Record(640, 288, kDecoderKeystroke);
    prop.currentTime = 5;
    decoder->SetDecoderProperty(prop);
    EXPECT_EQ(decoder->GetProperty()->currentTime, 5U);
    EXPECT_TRUE(IsWithinAPixel(BoxOf(FrameAt(0), kRed).left, 160));

    prop.width = 320;
    decoder->SetDecoderProperty(prop);
    EXPECT_TRUE(decoder->IsShowing({}));
    EXPECT_TRUE(FrameAt(0).IsTransparent());
    Show(keys);
    const Frame frame = FrameAt(0);
    EXPECT_TRUE(IsWithinAPixel(BoxOf(frame, kRed).left, 0));
    EXPECT_TRUE(IsWithinAPixel(BoxOf(frame, kRed).top, 0));
    // The strip has kept its length: half of 320 pixels hold one label of these, not two.
    keys.push_back(Key(1, L"Backspace", kGreen));
    Show(keys);
    EXPECT_EQ(Seen(FrameAt(Seconds(1)), {kRed, kGreen}), (std::vector<std::uint32_t>{kGreen}));
}

TEST_F(CKeystrokeDecoderTest, ALabelThatCannotBeSetIsLeftOut)
{
    std::vector<tagQMXKeystrokeInfo> keys = {Key(0, L"A", kRed), Key(0.5, L"B", kGreen), Key(1, L"C", kBlue)};
    keys[1].fontSize = -1;
    Show(keys);
    EXPECT_EQ(Seen(FrameAt(Seconds(1)), {kRed, kGreen, kBlue}), (std::vector<std::uint32_t>{kRed, kBlue}));
}

TEST_F(CKeystrokeDecoderTest, NullReferencesAndWildValuesDoNoHarm)
{
    EXPECT_TRUE(decoder->Initialize(NullReference<const tagDecProp>()));
    decoder->SetDecoderProperty(NullReference<const tagDecProp>());
    EXPECT_TRUE(decoder->InitializeKeystrokeText(NullReference<const std::vector<tagQMXKeystrokeInfo*>>(), 0));
    std::vector<tagQMXKeystrokeInfo> keys = {Key(0, L"A", kRed), Key(1, L"B", kGreen)};
    EXPECT_TRUE(decoder->InitializeKeystrokeText({nullptr, &keys[0], nullptr, &keys[1], nullptr}, 0));
    EXPECT_EQ(Seen(FrameAt(Seconds(1)), {kRed, kGreen}), (std::vector<std::uint32_t>{kGreen}));
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    Show(keys);
    for (const float value : {kNone, 1e30F, -1e30F, std::numeric_limits<float>::infinity()})
    {
        decoder->InitializeLeftAndTopAndWidth(value, 0, 1);
        EXPECT_TRUE(FrameAt(Seconds(1)).IsTransparent()) << value;
        decoder->InitializeLeftAndTopAndWidth(0, value, 1);
        EXPECT_TRUE(FrameAt(Seconds(1)).IsTransparent()) << value;
        decoder->InitializeLeftAndTopAndWidth(0, 0, value);
        FrameAt(Seconds(1));
    }
    // Start times that run backward: the difference wraps around and parts the labels.
    std::vector<tagQMXKeystrokeInfo> backward = {Key(5, L"A", kRed), Key(1, L"B", kGreen)};
    decoder->InitializeLeftAndTopAndWidth(0, 0, 1);
    Show(backward);
    EXPECT_EQ(Seen(FrameAt(Seconds(6)), {kRed, kGreen}), (std::vector<std::uint32_t>{kGreen}));
}
} // namespace
