#include "tests/clips/VideoClipFixture.h"

#include "tests/clips/PooledFrames.h"
#include "tests/model/AllocationFailure.h"

namespace
{
constexpr std::uint32_t kGreen = 0xFF00FF00U;
constexpr std::uint32_t kRed = 0xFFFF0000U;
constexpr std::uint32_t kBlue = 0xFF0000FFU;

/// Every picture of the file is green on the left and red on the right.
class CQMXVideoClipKey : public CQMXVideoClipTest
{
protected:
    CQMXVideoClipKey()
    {
        for (FakeRead& read : media.reads)
            read.picture->pixel = [](std::uint32_t x, std::uint32_t) { return x < 32 ? kGreen : kRed; };
        green.nColor[1] = 255; // R, G, B
        green.dSimilarity = 0.2;
        green.dSmoothness = 0.05;
    }
    void TearDown() override
    {
        backdrop = {};
        CQMXVideoClipTest::TearDown();
    }
    /// Settings with the backdrop; the reference they carry is the receiver's.
    tagTransparentColorInfo WithBackdrop()
    {
        tagTransparentColorInfo info = green;
        info.pBackground = SampleBufferPtr(backdrop).Detach();
        return info;
    }
    static std::uint32_t AlphaAt(ISampleBuffer* of, std::uint32_t x) { return Pixel(of, x, 10) >> 24; }

    tagTransparentColorInfo green;
    SampleBufferPtr backdrop = MakePicture(64, 36, kBlue);
};

TEST_F(CQMXVideoClipKey, KeyOnlyMakesTheKeyColorTransparentAndKeepsTheRest)
{
    green.bKeyOnly = 1;
    clip->SetTransparentColor(true, &green);
    ASSERT_NE(Get(0), nullptr);
    EXPECT_TRUE(frame->GetAlphaFlag());
    EXPECT_EQ(AlphaAt(frame.Get(), 5), 0U);
    EXPECT_EQ(Pixel(frame.Get(), 60, 10), kRed);
    EXPECT_EQ(frame->GetRatioX(), 16U);
    EXPECT_EQ(frame->GetRatioY(), 9U);
}

TEST_F(CQMXVideoClipKey, BackgroundShowsThroughTheKeyedPixels)
{
    const tagTransparentColorInfo info = WithBackdrop();
    clip->SetTransparentColor(true, &info);
    ASSERT_NE(Get(0), nullptr);
    EXPECT_EQ(Pixel(frame.Get(), 5, 10), kBlue);
    EXPECT_EQ(Pixel(frame.Get(), 60, 10), kRed);
    EXPECT_TRUE(frame->GetAlphaFlag());
}

TEST_F(CQMXVideoClipKey, WithoutBackgroundItIsKeyOnly)
{
    clip->SetTransparentColor(true, &green);
    ASSERT_NE(Get(0), nullptr);
    EXPECT_EQ(AlphaAt(frame.Get(), 5), 0U);
    EXPECT_EQ(AlphaAt(frame.Get(), 60), 255U);
}

TEST_F(CQMXVideoClipKey, KeyOnlyDrawsNoBackground)
{
    tagTransparentColorInfo info = WithBackdrop();
    info.bKeyOnly = 1;
    clip->SetTransparentColor(true, &info);
    ASSERT_NE(Get(0), nullptr);
    EXPECT_EQ(AlphaAt(frame.Get(), 5), 0U);
}

TEST_F(CQMXVideoClipKey, SwitchedOffItLeavesThePictureAlone)
{
    clip->SetTransparentColor(false, &green);
    EXPECT_FALSE(clip->IsTransparentColorOn());
    ASSERT_NE(Get(0), nullptr);
    EXPECT_EQ(Pixel(frame.Get(), 5, 10), kGreen);
    EXPECT_FALSE(frame->GetAlphaFlag());
}

TEST_F(CQMXVideoClipKey, WithoutSettingsItIsSwitchedOff)
{
    clip->SetTransparentColor(true, nullptr);
    EXPECT_TRUE(clip->IsTransparentColorOn());
    ASSERT_NE(Get(0), nullptr);
    EXPECT_EQ(Pixel(frame.Get(), 5, 10), kGreen);
    EXPECT_FALSE(frame->GetAlphaFlag());
    clip->PrepareBackground(8, 8);
    clip->ApplyTransparentColor(nullptr, 8, 8);
    clip->ClearTransparentColor();
}

TEST_F(CQMXVideoClipKey, NullSettingsTurnThePassOnWithTheFormerOnes)
{
    clip->SetTransparentColor(false, &green);
    clip->SetTransparentColor(true, nullptr);
    ASSERT_NE(clip->GetTransparentColor(), nullptr);
    EXPECT_EQ(*clip->GetTransparentColor(), green);
    ASSERT_NE(Get(0), nullptr);
    EXPECT_EQ(AlphaAt(frame.Get(), 5), 0U);
}

TEST_F(CQMXVideoClipKey, SettingsAreCopiedFieldByField)
{
    tagTransparentColorInfo info = WithBackdrop();
    info.dSpill = 0.5;
    info.nReserved36 = 36;
    info.nReserved40 = 40;
    info.nReserved44 = 44;
    info.nOption = 1;
    clip->SetTransparentColor(true, &info);
    EXPECT_NE(clip->GetTransparentColor(), &info);
    EXPECT_EQ(*clip->GetTransparentColor(), info);
}

TEST_F(CQMXVideoClipKey, SettingsHoldTheOneReferenceTheyWereGiven)
{
    tagTransparentColorInfo info = WithBackdrop();
    clip->SetTransparentColor(true, &info);
    EXPECT_EQ(CountOf(backdrop.Get()), 2U);
    clip->SetTransparentColor(true, clip->GetTransparentColor()); // its own settings
    EXPECT_EQ(CountOf(backdrop.Get()), 2U);
    EXPECT_EQ(clip->GetTransparentColor()->pBackground, backdrop.Get());
    info = WithBackdrop();
    clip->SetTransparentColor(true, &info); // replaces: one reference goes, one comes
    EXPECT_EQ(CountOf(backdrop.Get()), 2U);
    clip->ClearTransparentColor();
    EXPECT_EQ(clip->GetTransparentColor(), nullptr);
    EXPECT_EQ(CountOf(backdrop.Get()), 1U);
    info = WithBackdrop();
    clip->SetTransparentColor(true, &info);
    Get(0);
    clip.reset();
    EXPECT_EQ(CountOf(backdrop.Get()), 1U);
}

TEST_F(CQMXVideoClipKey, ShortMemoryForSettingsReleasesTheirBackground)
{
    const tagTransparentColorInfo info = WithBackdrop();
    {
        const CAllocationFailure failure;
        clip->SetTransparentColor(true, &info);
    }
    EXPECT_EQ(clip->GetTransparentColor(), nullptr);
    EXPECT_EQ(CountOf(backdrop.Get()), 1U);
}

TEST_F(CQMXVideoClipKey, DecodersFrameStaysAsItWas)
{
    request.flags = kRequestUseCache;
    clip->SetTransparentColor(true, &green);
    Get(0);
    const SampleBufferPtr keyed = frame;
    const SampleBufferPtr decoded = SampleBufferPtr::Adopt(SharedDecoder()->GetLastFrame());
    EXPECT_NE(decoded.Get(), keyed.Get());
    EXPECT_EQ(Pixel(decoded.Get(), 5, 10), kGreen);
    const SampleBufferPtr last = SampleBufferPtr::Adopt(clip->GetLastFrame());
    EXPECT_EQ(last.Get(), keyed.Get());
}

TEST_F(CQMXVideoClipKey, SameTimeAndSettingsGiveTheSameBuffer)
{
    clip->SetTransparentColor(true, &green);
    Get(0);
    const SampleBufferPtr first = frame;
    EXPECT_EQ(Get(0), first.Get());
    EXPECT_NE(Get(kFrame), first.Get());
}

TEST_F(CQMXVideoClipKey, ChangedSettingsKeyThePictureAnew)
{
    clip->SetTransparentColor(true, &green);
    Get(0);
    EXPECT_EQ(AlphaAt(frame.Get(), 5), 0U);
    tagTransparentColorInfo red = green;
    red.nColor[0] = 255;
    red.nColor[1] = 0;
    clip->SetTransparentColor(true, &red);
    Get(0);
    EXPECT_EQ(Pixel(frame.Get(), 5, 10), kGreen);
    EXPECT_EQ(AlphaAt(frame.Get(), 60), 0U);
    clip->GetTransparentColor()->nColor[0] = 0; // written in place
    clip->GetTransparentColor()->nColor[1] = 255;
    Get(0);
    EXPECT_EQ(AlphaAt(frame.Get(), 5), 0U);
    clip->SetTransparentColor(false, nullptr);
    Get(0);
    EXPECT_EQ(Pixel(frame.Get(), 5, 10), kGreen);
}

TEST_F(CQMXVideoClipKey, NewBackgroundReplacesThePreparedOne)
{
    tagTransparentColorInfo info = WithBackdrop();
    clip->SetTransparentColor(true, &info);
    Get(0);
    backdrop = MakePicture(64, 36, 0xFF00FFFFU);
    info = WithBackdrop();
    clip->SetTransparentColor(true, &info);
    Get(0);
    EXPECT_EQ(Pixel(frame.Get(), 5, 10), 0xFF00FFFFU);
}

TEST_F(CQMXVideoClipKey, BackgroundOfAnotherSizeIsScaled)
{
    backdrop = MakePicture(10, 10, kBlue);
    const tagTransparentColorInfo info = WithBackdrop();
    clip->SetTransparentColor(true, &info);
    ASSERT_NE(Get(0), nullptr);
    EXPECT_EQ(Pixel(frame.Get(), 5, 10), kBlue);
    EXPECT_EQ(CountOf(backdrop.Get()), 2U); // what is prepared is a copy
}

TEST_F(CQMXVideoClipKey, BackgroundOfTheRightSizeIsTakenAsItIs)
{
    const tagTransparentColorInfo info = WithBackdrop();
    clip->SetTransparentColor(true, &info);
    EXPECT_EQ(clip->PrepareBackground(64, 36), backdrop.Get());
    EXPECT_EQ(CountOf(backdrop.Get()), 3U);
    EXPECT_EQ(clip->PrepareBackground(64, 36), backdrop.Get());
    EXPECT_EQ(CountOf(backdrop.Get()), 3U); // the one held before has gone back
    ISampleBuffer* const scaled = clip->PrepareBackground(32, 18);
    ASSERT_NE(scaled, nullptr);
    EXPECT_EQ(scaled->GetWidth(), 32U);
    EXPECT_EQ(scaled->GetHeight(), 18U);
    EXPECT_EQ(CountOf(backdrop.Get()), 2U);
}

TEST_F(CQMXVideoClipKey, BackgroundIsTurnedWithTheClip)
{
    std::uint8_t* pixels = nullptr;
    ASSERT_TRUE(backdrop->GetBuffer(&pixels, nullptr));
    for (std::uint32_t n = 0; n < 64 * 36; ++n) // the left half white
    {
        const std::uint32_t color = n % 64 < 32 ? 0xFFFFFFFFU : kBlue;
        std::memcpy(pixels + std::size_t{n} * 4, &color, 4);
    }
    const tagTransparentColorInfo info = WithBackdrop();
    clip->SetTransparentColor(true, &info);
    for (const auto& [rotation, white] : {std::pair{90U, true}, {180U, false}, {270U, false}})
    {
        SCOPED_TRACE(rotation);
        clip->SetRotation(rotation);
        const std::uint32_t width = rotation == 180 ? 64 : 36;
        const std::uint32_t height = rotation == 180 ? 36 : 64;
        ISampleBuffer* const prepared = clip->PrepareBackground(width, height);
        ASSERT_NE(prepared, nullptr);
        EXPECT_EQ(prepared->GetWidth(), width);
        EXPECT_EQ(prepared->GetHeight(), height);
        EXPECT_EQ(Pixel(prepared, 1, 1), white ? 0xFFFFFFFFU : kBlue); // clockwise: left becomes top
        EXPECT_EQ(Pixel(prepared, width - 2, height - 2), white ? kBlue : 0xFFFFFFFFU);
    }
    clip->SetRotation(45);
    ISampleBuffer* const unknown = clip->PrepareBackground(36, 64);
    ASSERT_NE(unknown, nullptr);
    EXPECT_EQ(Pixel(unknown, 1, 1), 0U);
}

TEST_F(CQMXVideoClipKey, BackgroundThatCannotBePreparedIsNone)
{
    tagTransparentColorInfo info = WithBackdrop();
    clip->SetTransparentColor(true, &info);
    EXPECT_EQ(clip->PrepareBackground(0, 36), nullptr);
    EXPECT_EQ(clip->PrepareBackground(32'768, 36), nullptr);
    {
        const auto held = HoldPooled(10, 10);
        const CAllocationFailure failure;
        EXPECT_EQ(clip->PrepareBackground(10, 10), nullptr);
    }
    backdrop = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatNv12, 64, 36, 0));
    info = WithBackdrop();
    clip->SetTransparentColor(true, &info);
    EXPECT_EQ(clip->PrepareBackground(64, 36), nullptr);
    ASSERT_NE(Get(0), nullptr);
    EXPECT_EQ(AlphaAt(frame.Get(), 5), 0U);
    clip->GetTransparentColor()->pBackground = nullptr;
    EXPECT_EQ(clip->PrepareBackground(64, 36), nullptr);
    frame = {};
    backdrop->Release(); // the reference that the settings held
}

TEST_F(CQMXVideoClipKey, OpeningASharedDecoderOrAnAttachmentPreparesTheBackground)
{
    const tagTransparentColorInfo info = WithBackdrop();
    clip->SetTransparentColor(true, &info);
    EXPECT_TRUE(clip->Open(request)); // a decoder of its own: prepared with the first frame
    EXPECT_EQ(CountOf(backdrop.Get()), 2U);
    request.flags = kRequestUseCache;
    EXPECT_TRUE(clip->Open(request));
    EXPECT_EQ(CountOf(backdrop.Get()), 3U);
    clip->PrepareBackground(8, 8);
    EXPECT_EQ(CountOf(backdrop.Get()), 2U);
    CPictureClip attached;
    clip->SetAttachment(0, &attached);
    EXPECT_TRUE(clip->Open(request));
    EXPECT_EQ(CountOf(backdrop.Get()), 3U);
}

TEST_F(CQMXVideoClipKey, AttachedPicturesAreNotKeyed)
{
    CPictureClip attached;
    attached.m_frame = MakePicture(64, 36, kGreen);
    clip->SetAttachment(0, &attached);
    clip->SetTransparentColor(true, &green);
    EXPECT_EQ(Pixel(Get(0), 5, 10), kGreen);
    frame = {};
}

TEST_F(CQMXVideoClipKey, AnyPictureCanBeKeyedInPlace)
{
    const tagTransparentColorInfo info = WithBackdrop();
    clip->SetTransparentColor(true, &info);
    for (const std::uint32_t side : {8U, 16U}) // the prepared background follows the size
    {
        const SampleBufferPtr picture = MakePicture(side, side, kGreen);
        std::uint8_t* pixels = nullptr;
        ASSERT_TRUE(picture->GetBuffer(&pixels, nullptr));
        clip->ApplyTransparentColor(pixels, side, side);
        EXPECT_EQ(Pixel(picture.Get(), side - 1, side - 1), kBlue);
    }
}

TEST_F(CQMXVideoClipKey, KeyColorIsRedGreenBlue)
{
    tagTransparentColorInfo info = green;
    info.bKeyOnly = 1;
    info.nColor[0] = 255;
    info.nColor[1] = 0;
    clip->SetTransparentColor(true, &info);
    const SampleBufferPtr red = MakePicture(8, 8, kRed);
    const SampleBufferPtr blue = MakePicture(8, 8, kBlue);
    for (const SampleBufferPtr& picture : {red, blue})
    {
        std::uint8_t* pixels = nullptr;
        ASSERT_TRUE(picture->GetBuffer(&pixels, nullptr));
        clip->ApplyTransparentColor(pixels, 8, 8);
    }
    EXPECT_EQ(Pixel(red.Get()) >> 24, 0U);
    EXPECT_EQ(Pixel(blue.Get()) >> 24, 255U);
}

TEST_F(CQMXVideoClipKey, TurnedPictureIsKeyedAtItsTurnedSize)
{
    backdrop = MakePicture(36, 64, kBlue);
    const tagTransparentColorInfo info = WithBackdrop();
    clip->SetTransparentColor(true, &info);
    clip->SetRotation(90);
    ASSERT_NE(Get(0), nullptr);
    EXPECT_EQ(frame->GetWidth(), 36U);
    EXPECT_EQ(frame->GetHeight(), 64U);
    EXPECT_EQ(Pixel(frame.Get(), 10, 5), kBlue); // the left half is the top now
    EXPECT_EQ(Pixel(frame.Get(), 10, 60), kRed);
    EXPECT_EQ(frame->GetRatioX(), 9U);
}

TEST_F(CQMXVideoClipKey, ShortMemoryGivesNoPictureRatherThanOneThatIsNotKeyed)
{
    clip->SetTransparentColor(true, &green);
    for (int allowed = 0;; ++allowed)
    {
        ASSERT_LT(allowed, 100);
        EXPECT_TRUE(clip->Open(request));
        const auto held = HoldPooled(64, 36);
        FrameResult result;
        bool refused = false;
        {
            const CAllocationFailure failure(allowed);
            EXPECT_TRUE(clip->GetVideoFrame(0, &result));
            refused = CAllocationFailure::Happened();
        }
        frame = SampleBufferPtr::Adopt(result.frame);
        EXPECT_EQ(static_cast<bool>(frame), !refused);
        if (!refused)
            break;
    }
    EXPECT_EQ(AlphaAt(frame.Get(), 5), 0U);
}
} // namespace
