/// @file GifDecoderTest.cpp
/// What the GIF decoder decides: times, jumps, what is composed and what is scaled, over a scripted service.
#include "engine/decoders/still/GifDecoder.h"

#include "tests/decoders/still/FakeImaging.h"

#include <gtest/gtest.h>

#include <cstring>

/// The private state that the contract describes.
struct GifDecoderProbe
{
    static const std::vector<std::uint32_t>& Times(const CGifDecoder& d) { return d.m_vecFrameTimes; }
    static std::uint64_t Total(const CGifDecoder& d) { return d.m_nTotalDuration; }
    static std::uint32_t Background(const CGifDecoder& d) { return d.m_nBackgroundColor; }
    static std::uint32_t LoopCount(const CGifDecoder& d) { return d.m_nLoopCount; }
    static std::uint32_t HasLoopCount(const CGifDecoder& d) { return d.m_bHasLoopCount; }
    static std::uint32_t LoopsDone(const CGifDecoder& d) { return d.m_nLoopsDone; }
    static std::uint32_t FrameCount(const CGifDecoder& d) { return d.m_nFrameCount; }
    static std::uint32_t Delay(const CGifDecoder& d) { return d.m_nFrameDelay; }
    static std::uint32_t DisplayWidth(const CGifDecoder& d) { return d.m_nDisplayWidth; }
    static std::uint32_t DisplayHeight(const CGifDecoder& d) { return d.m_nDisplayHeight; }
    static std::uint32_t CanvasWidth(const CGifDecoder& d) { return d.m_nCanvasWidth; }
    static ISampleBuffer* Canvas(const CGifDecoder& d) { return d.m_pRaw; }
    static int IsLastFrame(const CGifDecoder& d) { return d.IsLastFrame(); }
};

namespace
{
using Probe = GifDecoderProbe;
using Frames = std::vector<UINT>;

/// A decoder over a scripted animation "a.gif" with a canvas of 8 x 4. When a test is over, all objects have died.
class GifDecoder : public testing::Test
{
protected:
    GifDecoder()
    {
        CFakeImaging::Reset();
        image.metadata = {{L"/logscrdesc/Width", CFakeWord{8}},
                          {L"/logscrdesc/Height", CFakeWord{4}},
                          {L"/logscrdesc/PixelAspectRatio", CFakeByte{0}},
                          {L"/logscrdesc/GlobalColorTableFlag", true},
                          {L"/logscrdesc/BackgroundColorIndex", CFakeByte{1}}};
        image.palette = {0xFF102030U, 0xFF405060U};
        CFakeImaging::Install(L"a.gif", &image);
        prop.width = 8;
    }
    ~GifDecoder() override
    {
        frame = {};
        decoder = {};
        EXPECT_EQ(CFakeImaging::LiveObjects(), 0);
        CFakeImaging::Reset();
    }
    /// A frame over the whole canvas whose colour tells its number.
    FakeImageFrame& AddFrame(USHORT delay, BYTE disposal = 1)
    {
        FakeImageFrame added;
        added.width = 8;
        added.height = 4;
        added.color = 0xFF000000U | static_cast<std::uint32_t>(image.frames.size());
        added.metadata = {{L"/imgdesc/Left", CFakeWord{0}},       {L"/imgdesc/Top", CFakeWord{0}},
                          {L"/imgdesc/Width", CFakeWord{8}},      {L"/imgdesc/Height", CFakeWord{4}},
                          {L"/grctlext/Delay", CFakeWord{delay}}, {L"/grctlext/Disposal", CFakeByte{disposal}}};
        image.frames.push_back(added);
        return image.frames.back();
    }
    void AddFrames(int count)
    {
        for (int i = 0; i < count; ++i)
            AddFrame(10);
    }
    bool Open() { return decoder->Initialize(prop); }
    ISampleBuffer* Get(std::uint64_t ms)
    {
        CFakeImaging::FramesCopied().clear();
        frame = SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(ms, flag));
        return frame.Get();
    }
    /// Frames composed by a request at @p ms.
    Frames ComposedAt(std::uint64_t ms)
    {
        Get(ms);
        return CFakeImaging::FramesCopied();
    }
    /// Number of the frame whose colour is at the canvas's first pixel.
    std::uint32_t Shown() const
    {
        std::uint8_t* pixels = nullptr;
        std::uint32_t color = 0;
        if (frame && frame->GetBuffer(&pixels, nullptr))
            std::memcpy(&color, pixels, 4);
        return color & 0xFFFFFF;
    }

    FakeImage image;
    tagDecProp prop{L"a.gif", 0};
    RefPtr<CGifDecoder> decoder = RefPtr<CGifDecoder>::Adopt(new CGifDecoder);
    SampleBufferPtr frame;
    bool flag = true;
};

// ---- times -------------------------------------------------------------------------------------------------------

TEST_F(GifDecoder, DelaysLast90MillisecondsAtLeast)
{
    AddFrame(0);
    AddFrame(5);
    AddFrame(100);
    ASSERT_TRUE(Open());
    EXPECT_EQ(Probe::Times(*decoder.Get()), (std::vector<std::uint32_t>{0, 90, 180, 1180}));
    EXPECT_EQ(Probe::Total(*decoder.Get()), 1180U);
    EXPECT_EQ(Probe::Delay(*decoder.Get()), 90U);
}

TEST_F(GifDecoder, TimesAddUpAndTheAnimationRepeats)
{
    AddFrame(10);
    AddFrame(20);
    AddFrame(30);
    ASSERT_TRUE(Open());
    EXPECT_EQ(Probe::Times(*decoder.Get()), (std::vector<std::uint32_t>{0, 100, 300, 600}));
    EXPECT_EQ(Probe::Total(*decoder.Get()), 600U);
    for (const auto& [ms, number] :
         {std::pair{0U, 0U}, {99U, 0U}, {100U, 1U}, {299U, 1U}, {300U, 2U}, {599U, 2U}, {600U, 0U}, {650U, 0U}})
    {
        Get(ms);
        EXPECT_EQ(Shown(), number) << ms;
    }
    EXPECT_TRUE(flag); // never written
}

TEST_F(GifDecoder, FrameWithoutADelayLasts90MillisecondsAndOneOfAWrongTypeOrUnreadableNone)
{
    AddFrame(20);
    AddFrame(20).metadata.erase(L"/grctlext/Delay");
    AddFrame(20).metadata[L"/grctlext/Delay"] = CFakeLong{20};
    AddFrame(20).hasReader = false;
    AddFrame(20).canBeGot = false;
    AddFrame(30);
    ASSERT_TRUE(Open());
    EXPECT_EQ(Probe::Times(*decoder.Get()), (std::vector<std::uint32_t>{0, 200, 290, 290, 290, 290, 590}));
}

TEST_F(GifDecoder, FlagOfTheRecordLeavesTheTimesUnread)
{
    AddFrames(3);
    prop.flags = kRequestNoTimeTable;
    ASSERT_TRUE(Open());
    EXPECT_TRUE(Probe::Times(*decoder.Get()).empty());
    ASSERT_NE(Get(250), nullptr);
    EXPECT_EQ(Shown(), 0U);
}

// ---- jumps -------------------------------------------------------------------------------------------------------

TEST_F(GifDecoder, OpeningComposesTheFirstFrameAndARequestForItNothing)
{
    AddFrames(3);
    ASSERT_TRUE(Open());
    EXPECT_EQ(CFakeImaging::FramesCopied(), Frames{0});
    EXPECT_EQ(ComposedAt(0), Frames{});
    EXPECT_EQ(Shown(), 0U);
    EXPECT_EQ(decoder->GetLastFrame()->Release(), 2U);
}

TEST_F(GifDecoder, ForwardComposesEveryFrameOnTheWayOnce)
{
    AddFrames(6);
    ASSERT_TRUE(Open());
    EXPECT_EQ(ComposedAt(100), Frames{1});
    EXPECT_EQ(ComposedAt(150), Frames{});
    EXPECT_EQ(ComposedAt(450), (Frames{2, 3, 4}));
    EXPECT_EQ(Shown(), 4U);
    EXPECT_EQ(Probe::IsLastFrame(*decoder.Get()), 0);
    EXPECT_EQ(ComposedAt(500), Frames{5});
    EXPECT_EQ(Probe::IsLastFrame(*decoder.Get()), 1);
}

TEST_F(GifDecoder, BackwardJumpShowsTheFrameBeforeAndTheNextRequestAheadCatchesUp)
{
    AddFrames(6);
    ASSERT_TRUE(Open());
    Get(300);
    EXPECT_EQ(Shown(), 3U);
    EXPECT_EQ(ComposedAt(250), (Frames{0, 1})); // inside frame 2
    EXPECT_EQ(Shown(), 1U);
    EXPECT_EQ(ComposedAt(210), Frames{});
    EXPECT_EQ(ComposedAt(300), (Frames{2, 3}));
    EXPECT_EQ(Shown(), 3U);
}

TEST_F(GifDecoder, BackwardJumpToTheFirstFrameShowsIt)
{
    AddFrames(4);
    ASSERT_TRUE(Open());
    Get(300);
    EXPECT_EQ(ComposedAt(0), Frames{0});
    EXPECT_EQ(Shown(), 0U);
    Get(300);
    EXPECT_EQ(ComposedAt(100), Frames{0}); // at least one, and frame 1 is a jump of one
    EXPECT_EQ(Shown(), 0U);
    EXPECT_EQ(ComposedAt(200), (Frames{1, 2}));
}

TEST_F(GifDecoder, NextRoundStartsAtTheFirstFrame)
{
    AddFrames(3);
    ASSERT_TRUE(Open());
    EXPECT_EQ(Probe::LoopsDone(*decoder.Get()), 1U);
    Get(200);
    EXPECT_EQ(ComposedAt(300), Frames{0});
    EXPECT_EQ(Probe::LoopsDone(*decoder.Get()), 2U);
    EXPECT_EQ(ComposedAt(400), Frames{1});
}

TEST_F(GifDecoder, SingleFrameIsComposedOnce)
{
    AddFrame(10);
    ASSERT_TRUE(Open());
    for (const std::uint64_t ms : {0ULL, 99ULL, 100ULL, 12'345ULL, ~0ULL})
        EXPECT_EQ(ComposedAt(ms), Frames{}) << ms;
}

// ---- the file as a whole -----------------------------------------------------------------------------------------

TEST_F(GifDecoder, BackgroundIsThePalettesColorMadeTransparent)
{
    AddFrame(10);
    ASSERT_TRUE(Open());
    EXPECT_EQ(Probe::Background(*decoder.Get()), 0x00405060U);
}

TEST_F(GifDecoder, WithoutAPaletteOrWithAWrongIndexTheBackgroundIsTransparentBlack)
{
    AddFrame(10);
    image.metadata[L"/logscrdesc/GlobalColorTableFlag"] = false;
    EXPECT_TRUE(Open());
    EXPECT_EQ(Probe::Background(*decoder.Get()), 0U);
    image.metadata[L"/logscrdesc/GlobalColorTableFlag"] = true;
    image.metadata[L"/logscrdesc/BackgroundColorIndex"] = CFakeByte{2};
    EXPECT_TRUE(Open());
    EXPECT_EQ(Probe::Background(*decoder.Get()), 0U);
    image.metadata[L"/logscrdesc/BackgroundColorIndex"] = CFakeWord{1};
    EXPECT_TRUE(Open());
    EXPECT_EQ(Probe::Background(*decoder.Get()), 0U);
    image.metadata[L"/logscrdesc/BackgroundColorIndex"] = CFakeByte{1};
    image.palette.clear();
    EXPECT_TRUE(Open());
    EXPECT_EQ(Probe::Background(*decoder.Get()), 0U);
}

TEST_F(GifDecoder, PixelAspectShapesTheDisplaySize)
{
    AddFrame(10);
    const auto expectDisplay = [&](BYTE aspect, std::uint32_t width, std::uint32_t height)
    {
        image.metadata[L"/logscrdesc/PixelAspectRatio"] = CFakeByte{aspect};
        ASSERT_TRUE(Open());
        EXPECT_EQ(Probe::DisplayWidth(*decoder.Get()), width) << int{aspect};
        EXPECT_EQ(Probe::DisplayHeight(*decoder.Get()), height) << int{aspect};
        EXPECT_EQ(Probe::Canvas(*decoder.Get())->GetRatioX(), width); // not reduced
        EXPECT_EQ(Probe::Canvas(*decoder.Get())->GetRatioY(), height);
    };
    expectDisplay(0, 8, 4);
    expectDisplay(49, 8, 4);  // (49 + 15) / 64 = 1
    expectDisplay(113, 8, 2); // 2
    expectDisplay(17, 4, 4);  // 0.5
    expectDisplay(255, 8, 0); // 4.2: 0.95 rows, truncated
}

TEST_F(GifDecoder, LoopCountIsReadFromEitherExtensionAndChangesNothing)
{
    AddFrames(2);
    const auto bytesOf = [](const char* text) { return std::vector<BYTE>(text, text + std::strlen(text)); };
    const auto expectCount = [&](const char* identifier, std::vector<BYTE> data, std::uint32_t count)
    {
        image.metadata[L"/appext/application"] = bytesOf(identifier);
        image.metadata[L"/appext/data"] = std::move(data);
        ASSERT_TRUE(Open());
        EXPECT_EQ(Probe::LoopCount(*decoder.Get()), count) << identifier;
        EXPECT_EQ(Probe::HasLoopCount(*decoder.Get()), count != 0 ? 1U : 0U);
    };
    expectCount("NETSCAPE2.0", {3, 1, 5, 1, 0}, 261);
    expectCount("ANIMEXTS1.0", {3, 1, 7, 0, 0}, 7);
    expectCount("NETSCAPE2.0", {3, 1, 0, 0, 0}, 0);
    expectCount("NETSCAPE2.0", {3, 2, 7, 0, 0}, 0); // another sub-block
    expectCount("NETSCAPE2.0", {0, 1, 7, 0}, 0);
    expectCount("NETSCAPE2.0", {3, 1, 7}, 0);
    expectCount("NETSCAPE2.1", {3, 1, 7, 0, 0}, 0);
    expectCount("NETSCAPE", {3, 1, 7, 0, 0}, 0);
    image.metadata[L"/appext/application"] = CFakeWord{7};
    EXPECT_TRUE(Open());
    image.metadata[L"/appext/application"] = bytesOf("NETSCAPE2.0");
    image.metadata[L"/appext/data"] = std::vector<BYTE>{3, 1, 1, 0, 0}; // once
    EXPECT_TRUE(Open());
    EXPECT_EQ(ComposedAt(150), Frames{1});
    EXPECT_EQ(ComposedAt(200 * 50), Frames{0});
}

TEST_F(GifDecoder, WithoutAScreenSizeItDoesNotOpenAndGivesNoFrame)
{
    AddFrames(2);
    image.metadata[L"/logscrdesc/Height"] = CFakeByte{4};
    EXPECT_FALSE(Open());
    EXPECT_EQ(Get(150), nullptr);
    EXPECT_EQ(decoder->GetLastFrame(), nullptr);
}

TEST_F(GifDecoder, WithoutAPixelAspectItDoesNotOpenButShowsWhatItCan)
{
    AddFrames(2);
    image.metadata.erase(L"/logscrdesc/PixelAspectRatio");
    EXPECT_FALSE(Open());
    EXPECT_EQ(ComposedAt(150), (Frames{0, 1}));
    EXPECT_EQ(Shown(), 1U);
}

TEST_F(GifDecoder, MissingFileOrServiceGivesNoFrame)
{
    prop.filePath = L"none.gif";
    EXPECT_FALSE(Open());
    EXPECT_EQ(Probe::FrameCount(*decoder.Get()), 0U);
    EXPECT_EQ(Get(0), nullptr);
    CFakeImaging::FactoryFails() = true;
    EXPECT_FALSE(Open());
    EXPECT_EQ(Get(0), nullptr);
}

TEST_F(GifDecoder, FileWithoutFramesOpensAndShowsItsEmptyCanvas)
{
    EXPECT_TRUE(Open());
    ASSERT_NE(Get(0), nullptr);
    EXPECT_EQ(Shown(), 0x405060U);
}

TEST_F(GifDecoder, OverLargeScreenGivesNoFrame)
{
    AddFrame(10);
    image.metadata[L"/logscrdesc/Width"] = CFakeWord{65535};
    image.metadata[L"/logscrdesc/Height"] = CFakeWord{65535};
    EXPECT_FALSE(Open());
    EXPECT_EQ(Get(0), nullptr);
}

// ---- frames that cannot be composed ------------------------------------------------------------------------------

TEST_F(GifDecoder, FrameThatCannotBeDecodedStopsTheRequestAndTheCanvasIsShown)
{
    AddFrames(4);
    image.frames[2].canBeCopied = false;
    ASSERT_TRUE(Open());
    EXPECT_EQ(ComposedAt(350), (Frames{1, 2}));
    EXPECT_EQ(Shown(), 1U);
    EXPECT_EQ(ComposedAt(0), Frames{0});
    EXPECT_EQ(Shown(), 0U);
}

TEST_F(GifDecoder, FrameWithoutARectangleStopsTheRequest)
{
    for (const wchar_t* const name : {L"/imgdesc/Left", L"/imgdesc/Top", L"/imgdesc/Width", L"/imgdesc/Height"})
    {
        image.frames.clear();
        AddFrames(3);
        image.frames[1].metadata.erase(name);
        ASSERT_TRUE(Open());
        Get(250);
        EXPECT_EQ(Shown(), 0U);
    }
}

TEST_F(GifDecoder, UnknownDisposalStopsTheNextFrame)
{
    AddFrame(10);
    AddFrame(10, 4);
    AddFrame(10);
    ASSERT_TRUE(Open());
    Get(250);
    EXPECT_EQ(Shown(), 1U);
}

TEST_F(GifDecoder, DisposalOfAnotherTypeCountsAsNone)
{
    AddFrame(10);
    AddFrame(10).metadata[L"/grctlext/Disposal"] = CFakeWord{4};
    AddFrame(10);
    ASSERT_TRUE(Open());
    Get(250);
    EXPECT_EQ(Shown(), 2U);
}

// ---- scaling -----------------------------------------------------------------------------------------------------

TEST_F(GifDecoder, ComposedFrameIsEnlargedAndARepeatedOneIsNot)
{
    AddFrames(3);
    prop.width = 16;
    ASSERT_TRUE(Open());
    Get(0); // composed by opening, and the first to be finished
    EXPECT_EQ(frame->GetWidth(), 16U);
    EXPECT_EQ(frame->GetHeight(), 8U);
    Get(50);
    EXPECT_EQ(frame->GetWidth(), 8U);
    const SampleBufferPtr again = frame;
    EXPECT_EQ(Get(60), again.Get()); // made once
    Get(100);
    EXPECT_EQ(frame->GetWidth(), 16U);
    Get(110);
    EXPECT_EQ(frame->GetWidth(), 8U);
}

TEST_F(GifDecoder, CanvasThatIsLargerIsMadeSmallerAlways)
{
    AddFrames(3);
    prop.width = 4;
    ASSERT_TRUE(Open());
    Get(0);
    const SampleBufferPtr first = frame;
    EXPECT_EQ(frame->GetWidth(), 4U);
    EXPECT_EQ(frame->GetHeight(), 2U);
    EXPECT_EQ(Get(50), first.Get());
    Get(100);
    EXPECT_EQ(frame->GetWidth(), 4U);
}

TEST_F(GifDecoder, CanvasOfTheAskedSizeKeepsItExactly)
{
    image.metadata[L"/logscrdesc/Width"] = CFakeWord{98}; // 2 / 98 * 98 falls below 2
    image.metadata[L"/logscrdesc/Height"] = CFakeWord{2};
    AddFrame(10);
    prop.width = 98;
    ASSERT_TRUE(Open());
    for (int i = 0; i < 2; ++i)
    {
        ASSERT_NE(Get(0), nullptr);
        EXPECT_EQ(frame->GetWidth(), 98U);
        EXPECT_EQ(frame->GetHeight(), 2U);
    }
}

TEST_F(GifDecoder, ChangedRecordOnlyScalesAnew)
{
    AddFrames(3);
    ASSERT_TRUE(Open());
    Get(100);
    prop.width = 4;
    prop.rotation = 90;
    decoder->SetDecoderProperty(prop);
    EXPECT_EQ(ComposedAt(100), Frames{});
    EXPECT_EQ(frame->GetWidth(), 2U);
    EXPECT_EQ(frame->GetHeight(), 4U);
    EXPECT_EQ(Shown(), 1U);
    EXPECT_EQ(CFakeImaging::FilesOpened(), 1);
}

TEST_F(GifDecoder, ChangedPathPlaysTheOtherFile)
{
    AddFrames(3);
    FakeImage other = image;
    other.frames[0].color = 0xFF0000AAU;
    other.metadata[L"/logscrdesc/Width"] = CFakeWord{6};
    CFakeImaging::Install(L"b.gif", &other);
    ASSERT_TRUE(Open());
    Get(200);
    prop.filePath = L"b.gif";
    decoder->SetDecoderProperty(prop);
    Get(0);
    EXPECT_EQ(Shown(), 0xAAU);
    EXPECT_EQ(Probe::CanvasWidth(*decoder.Get()), 6U);
}
} // namespace
