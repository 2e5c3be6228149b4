#include "engine/decoders/still/ImageDecoder.h"

#include "tests/decoders/NullReference.h"
#include "tests/decoders/still/FakeImaging.h"
#include "tests/model/AllocationFailure.h"
#include "tests/model/SlotOf.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{
using ImageDecoderPtr = RefPtr<CImageDecoder>;

/// A decoder over a scripted picture "a.png". When a test is over, every object of the service has died.
class ImageDecoder : public testing::Test
{
protected:
    ImageDecoder()
    {
        CFakeImaging::Reset();
        image.frames.resize(1);
        SetSize(64, 36);
        CFakeImaging::Install(L"a.png", &image);
        prop.width = 1920;
        prop.height = 1080;
        prop.decoderType = kDecoderImage;
    }
    ~ImageDecoder() override
    {
        frame = {};
        decoder = {};
        EXPECT_EQ(CFakeImaging::LiveObjects(), 0);
        CFakeImaging::Reset();
    }
    void SetSize(UINT width, UINT height)
    {
        image.frames[0].width = width;
        image.frames[0].height = height;
    }
    bool Open() { return decoder->Initialize(prop); }
    ISampleBuffer* Get()
    {
        frame = SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(0, flag));
        return frame.Get();
    }
    /// Opens a picture of the size given and asks for its frame.
    void Show(UINT width, UINT height)
    {
        SetSize(width, height);
        ASSERT_TRUE(Open());
        ASSERT_NE(Get(), nullptr);
    }
    void ExpectSize(std::uint32_t width, std::uint32_t height, std::uint32_t ratioX, std::uint32_t ratioY)
    {
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->GetWidth(), width);
        EXPECT_EQ(frame->GetHeight(), height);
        EXPECT_EQ(frame->GetRatioX(), ratioX);
        EXPECT_EQ(frame->GetRatioY(), ratioY);
    }
    std::uint32_t Pixel(std::uint32_t index = 0) const
    {
        std::uint8_t* pixels = nullptr;
        std::uint32_t color = 0xDEADBEEFU;
        if (frame && frame->GetBuffer(&pixels, nullptr))
            std::memcpy(&color, pixels + std::size_t{index} * 4, 4);
        return color;
    }
    static std::uint32_t CountOf(ISampleBuffer* of)
    {
        const std::uint32_t count = of->AddRef();
        of->Release();
        return count - 1;
    }

    FakeImage image;
    tagDecProp prop{L"a.png", 0};
    ImageDecoderPtr decoder = ImageDecoderPtr::Adopt(new CImageDecoder);
    SampleBufferPtr frame;
    bool flag = true;
};

// ---- sizes -------------------------------------------------------------------------------------------------------

TEST_F(ImageDecoder, OddSidesAreRoundedDownBeforeThePixelsAreCopied)
{
    Show(1001, 601);
    ASSERT_EQ(CFakeImaging::Rects().size(), 1U);
    EXPECT_EQ(CFakeImaging::Rects()[0].X, 0);
    EXPECT_EQ(CFakeImaging::Rects()[0].Y, 0);
    EXPECT_EQ(CFakeImaging::Rects()[0].Width, 1000);
    EXPECT_EQ(CFakeImaging::Rects()[0].Height, 600);
    ExpectSize(1000, 600, 5, 3);
}

TEST_F(ImageDecoder, WidePictureIsFittedByItsWidth)
{
    Show(4000, 3000);
    ExpectSize(1920, 1440, 4, 3);
}

TEST_F(ImageDecoder, TallPictureIsFittedByItsHeight)
{
    Show(3000, 4000);
    ExpectSize(1440, 1920, 3, 4);
}

TEST_F(ImageDecoder, PictureOfExactlyTheLimitIsNotScaled)
{
    Show(1920, 1081);
    ExpectSize(1920, 1080, 16, 9);
    decoder = ImageDecoderPtr::Adopt(new CImageDecoder);
    Show(1081, 1920);
    ExpectSize(1080, 1920, 9, 16);
}

TEST_F(ImageDecoder, SmallPictureIsNotEnlarged)
{
    Show(64, 36);
    ExpectSize(64, 36, 16, 9);
}

TEST_F(ImageDecoder, TargetSideThatTruncatesToAnOddNumberIsRoundedDown)
{
    // 3840 x 2164 by 1920 gives 1082.0; 3550 x 2000 gives 1081.69…, which is 1081 and then 1080.
    Show(3550, 2000);
    ExpectSize(1920, 1080, 16, 9);
    const double exact = 2000.0 / 3550.0 * 1920.0;
    EXPECT_EQ(static_cast<int>(exact), 1081);
}

TEST_F(ImageDecoder, QuarterTurnExchangesTheDeclaredSizeAndAspect)
{
    prop.rotation = 90;
    Show(3840, 2160);
    ExpectSize(1080, 1920, 9, 16);
    prop.rotation = 270;
    decoder->SetDecoderProperty(prop);
    Get();
    ExpectSize(1080, 1920, 9, 16);
    prop.rotation = 180;
    decoder->SetDecoderProperty(prop);
    Get();
    ExpectSize(1920, 1080, 16, 9);
}

TEST_F(ImageDecoder, UnknownAngleGivesATransparentFrame)
{
    image.frames[0].color = 0xFF112233U;
    prop.rotation = 45;
    Show(64, 36);
    EXPECT_EQ(Pixel(), 0U);
}

TEST_F(ImageDecoder, PictureWithoutPixelsLeftGivesNoFrame)
{
    for (const auto& [width, height] : {std::pair<UINT, UINT>{1, 1}, {1, 100}, {100, 1}, {0, 0}})
    {
        SetSize(width, height);
        ASSERT_TRUE(Open());
        EXPECT_EQ(Get(), nullptr) << width << " x " << height;
    }
    SetSize(8000, 2); // 0.48 rows
    ASSERT_TRUE(Open());
    EXPECT_EQ(Get(), nullptr);
    prop.width = 0;
    SetSize(64, 36);
    ASSERT_TRUE(Open());
    EXPECT_EQ(Get(), nullptr);
}

TEST_F(ImageDecoder, OverLargePictureGivesNoFrame)
{
    SetSize(40'000, 40'000);
    ASSERT_TRUE(Open());
    EXPECT_EQ(Get(), nullptr);
    EXPECT_EQ(decoder->GetLastFrame(), nullptr);
}

// ---- rebuild or reuse --------------------------------------------------------------------------------------------

TEST_F(ImageDecoder, InitializeDecodesNothing)
{
    EXPECT_TRUE(Open());
    EXPECT_EQ(CFakeImaging::FilesOpened(), 1);
    EXPECT_TRUE(CFakeImaging::FramesCopied().empty());
    EXPECT_EQ(decoder->GetLastFrame(), nullptr);
}

TEST_F(ImageDecoder, FrameIsMadeOnceAndCarriesOneReferenceForEachCaller)
{
    Show(64, 36);
    const SampleBufferPtr first = frame;
    EXPECT_EQ(CountOf(first.Get()), 3U); // the decoder's and two here
    for (std::uint64_t time : {0ULL, 40ULL, ~0ULL})
    {
        frame = SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(time, flag));
        EXPECT_EQ(frame.Get(), first.Get());
    }
    EXPECT_EQ(SampleBufferPtr::Adopt(decoder->GetLastFrame()).Get(), first.Get());
    EXPECT_EQ(CountOf(first.Get()), 3U);
    EXPECT_EQ(CFakeImaging::FramesCopied(), std::vector<UINT>{0});
    EXPECT_EQ(CFakeImaging::FilesOpened(), 1);
    EXPECT_TRUE(flag); // never written
}

TEST_F(ImageDecoder, RecordEqualInPathRotationAndSizeDoesNotRebuild)
{
    Show(64, 36);
    const SampleBufferPtr first = frame;
    tagDecProp same = prop;
    same.currentTime = 77;
    same.inPoint = 5;
    same.flags = 0;
    decoder->SetDecoderProperty(same);
    EXPECT_EQ(decoder->GetProperty()->currentTime, prop.currentTime); // not even taken
    EXPECT_EQ(Get(), first.Get());
    EXPECT_EQ(CFakeImaging::FramesCopied().size(), 1U);
    decoder->SetDecoderProperty(*decoder->GetProperty());
    EXPECT_EQ(Get(), first.Get());
}

TEST_F(ImageDecoder, ChangeOfRotationWidthOrHeightRebuildsOnceAtTheNextRequest)
{
    Show(64, 36);
    std::size_t made = 1;
    for (std::uint32_t tagDecProp::*const field : {&tagDecProp::rotation, &tagDecProp::width, &tagDecProp::height})
    {
        const SampleBufferPtr before = frame;
        prop.*field += 180;
        decoder->SetDecoderProperty(prop);
        EXPECT_EQ(SampleBufferPtr::Adopt(decoder->GetLastFrame()).Get(), before.Get());
        EXPECT_NE(Get(), before.Get());
        Get();
        EXPECT_EQ(CFakeImaging::FramesCopied().size(), ++made);
    }
    EXPECT_EQ(CFakeImaging::FilesOpened(), 1);
}

TEST_F(ImageDecoder, ChangeOfPathOpensTheOtherFile)
{
    FakeImage other;
    other.frames.resize(1);
    other.frames[0].width = 20;
    other.frames[0].height = 10;
    CFakeImaging::Install(L"b.png", &other);
    Show(64, 36);
    prop.filePath = L"b.png";
    decoder->SetDecoderProperty(prop);
    Get();
    ExpectSize(20, 10, 2, 1);
    EXPECT_EQ(CFakeImaging::FilesOpened(), 2);
    prop.filePath = L"none.png";
    decoder->SetDecoderProperty(prop);
    EXPECT_EQ(Get(), nullptr);
    prop.filePath = L"a.png";
    decoder->SetDecoderProperty(prop);
    Get();
    ExpectSize(64, 36, 16, 9);
}

// ---- orientation -------------------------------------------------------------------------------------------------

constexpr UINT kFlip = WICBitmapTransformFlipVertical;

TEST_F(ImageDecoder, OrientationsAreTurnedAndFlippedByTheTable)
{
    const std::vector<std::pair<USHORT, std::vector<UINT>>> table = {
        {0, {WICBitmapTransformRotate0}},          {1, {}},
        {2, {WICBitmapTransformRotate0, kFlip}},   {3, {WICBitmapTransformRotate180}},
        {4, {WICBitmapTransformRotate180, kFlip}}, {5, {WICBitmapTransformRotate90, kFlip}},
        {6, {WICBitmapTransformRotate90}},         {7, {WICBitmapTransformRotate270, kFlip}},
        {8, {WICBitmapTransformRotate270}},        {9, {WICBitmapTransformRotate0}},
        {34, {WICBitmapTransformRotate0}}, // 32 + 2: the mask of flips ends at 7
        {65535, {WICBitmapTransformRotate0}},
    };
    for (const auto& [orientation, transforms] : table)
    {
        image.frames[0].metadata[L"System.Photo.Orientation"] = CFakeWord{orientation};
        CFakeImaging::Rotations().clear();
        Show(64, 36);
        EXPECT_EQ(CFakeImaging::Rotations(), transforms) << orientation;
        decoder = ImageDecoderPtr::Adopt(new CImageDecoder);
    }
}

TEST_F(ImageDecoder, OrientationOfAnotherTypeOrWithoutAReaderCountsAsUpright)
{
    image.frames[0].metadata[L"System.Photo.Orientation"] = CFakeLong{6};
    Show(64, 36);
    EXPECT_TRUE(CFakeImaging::Rotations().empty());
    image.frames[0].hasReader = false;
    decoder = ImageDecoderPtr::Adopt(new CImageDecoder);
    Show(64, 36);
    EXPECT_TRUE(CFakeImaging::Rotations().empty());
}

TEST_F(ImageDecoder, FailedFirstTransformLeavesThePictureAndTheSecondIsTried)
{
    image.frames[0].metadata[L"System.Photo.Orientation"] = CFakeWord{5};
    CFakeImaging::RotatorFails() = 1;
    Show(64, 36);
    EXPECT_EQ(CFakeImaging::Rotations(), (std::vector<UINT>{WICBitmapTransformRotate90, kFlip}));
    ExpectSize(64, 36, 16, 9); // the quarter turn did not happen
}

TEST_F(ImageDecoder, FailedSecondTransformKeepsTheFirst)
{
    image.frames[0].metadata[L"System.Photo.Orientation"] = CFakeWord{7};
    CFakeImaging::RotatorFails() = 2;
    Show(64, 36);
    ExpectSize(36, 64, 9, 16);
}

// ---- failures ----------------------------------------------------------------------------------------------------

TEST_F(ImageDecoder, WithoutAFactoryOrAFileItDoesNotOpenAndGivesNoFrames)
{
    CFakeImaging::FactoryFails() = true;
    EXPECT_FALSE(Open());
    EXPECT_EQ(Get(), nullptr);
    CFakeImaging::FactoryFails() = false;
    prop.filePath = L"none.png";
    EXPECT_FALSE(Open());
    EXPECT_EQ(Get(), nullptr);
    EXPECT_EQ(decoder->GetLastFrame(), nullptr);
    EXPECT_EQ(decoder->GetProperty()->filePath, L"none.png");
}

TEST_F(ImageDecoder, MissingFrameGivesNull)
{
    image.frames[0].canBeGot = false;
    ASSERT_TRUE(Open());
    EXPECT_EQ(Get(), nullptr);
    EXPECT_EQ(decoder->GetLastFrame(), nullptr);
}

TEST_F(ImageDecoder, NeverInitializedGivesNull)
{
    EXPECT_EQ(Get(), nullptr);
    EXPECT_EQ(decoder->GetLastFrame(), nullptr);
}

TEST_F(ImageDecoder, OtherPixelFormatsAreConvertedAndKeptWhereThatFails)
{
    Show(64, 36);
    EXPECT_EQ(CFakeImaging::Converted(), 0);
    image.frames[0].format = GUID_WICPixelFormat24bppBGR;
    decoder = ImageDecoderPtr::Adopt(new CImageDecoder);
    Show(64, 36);
    EXPECT_EQ(CFakeImaging::Converted(), 1);
    CFakeImaging::ConversionFails() = true;
    decoder = ImageDecoderPtr::Adopt(new CImageDecoder);
    Show(64, 36);
    EXPECT_EQ(CFakeImaging::Converted(), 2);
}

TEST_F(ImageDecoder, PixelsThatCannotBeDecodedAreTransparentBlack)
{
    image.frames[0].color = 0xFFFFFFFFU;
    Show(64, 36); // its memory is what the next frame is made in
    frame = {};
    image.frames[0].canBeCopied = false;
    decoder = ImageDecoderPtr::Adopt(new CImageDecoder);
    Show(64, 36);
    for (std::uint32_t i = 0; i < 64 * 36; ++i)
        ASSERT_EQ(Pixel(i), 0U);
}

TEST_F(ImageDecoder, NullRecordsAreRefused)
{
    EXPECT_FALSE(decoder->Initialize(NullReference<const tagDecProp>()));
    Show(64, 36);
    decoder->SetDecoderProperty(NullReference<const tagDecProp>());
    EXPECT_NE(Get(), nullptr);
}

TEST_F(ImageDecoder, ShortMemoryAtOpeningIsARefusal)
{
    prop.filePath.assign(50, L'x');
    const CAllocationFailure failure;
    EXPECT_FALSE(decoder->Initialize(prop));
}

/// Gives the tests what only derived decoders see.
class COpenImageDecoder : public CImageDecoder
{
public:
    using CImageDecoder::CImageDecoder;
    COpenImageDecoder() = default;
    COpenImageDecoder(const COpenImageDecoder&) = default;
    COpenImageDecoder& operator=(const COpenImageDecoder&) = default;
    bool NeedsProcess() { return IsNeedProcess(); }
    IWICBitmapDecoder* File() const { return m_pBitmapDecoder; }
};

TEST_F(ImageDecoder, CopiesShareTheOpenFile)
{
    const RefPtr<COpenImageDecoder> original = RefPtr<COpenImageDecoder>::Adopt(new COpenImageDecoder);
    ASSERT_TRUE(original->Initialize(prop));
    const RefPtr<COpenImageDecoder> copy = RefPtr<COpenImageDecoder>::Adopt(new COpenImageDecoder(*original.Get()));
    EXPECT_EQ(copy->File(), original->File());
    const RefPtr<COpenImageDecoder> assigned = RefPtr<COpenImageDecoder>::Adopt(new COpenImageDecoder);
    *assigned.Get() = *original.Get();
    EXPECT_EQ(assigned->File(), original->File());
    frame = SampleBufferPtr::Adopt(assigned->GetClipVideoFrame(0, flag));
    ExpectSize(64, 36, 16, 9);
    EXPECT_FALSE(assigned->NeedsProcess()); // the raw frame has gone
}

TEST(ImageDecoderSlots, NeedOfScalingIsTheEighth)
{
    struct Access : CImageDecoder
    {
        static auto Slot() { return &Access::IsNeedProcess; }
    };
    EXPECT_EQ(SlotOf(Access::Slot()), 8);
}
} // namespace
