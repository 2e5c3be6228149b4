#include "tests/decoders/media/VideoDecoderFixture.h"

#include "tests/model/AllocationFailure.h"

#include <algorithm>

namespace
{
using Size = std::pair<std::uint32_t, std::uint32_t>;

/// A different colour for every place.
std::uint32_t Pattern(std::uint32_t x, std::uint32_t y)
{
    return 0xFF000000U | (x * 3 & 0xFFU) << 16 | (y * 5 & 0xFFU) << 8 | ((x + y) & 0xFFU);
}

/// A file of one picture.
class CVideoDecoderFrame : public CVideoDecoderTest
{
protected:
    FakePicture& AddPicture(std::uint32_t width, std::uint32_t height, LONGLONG time = 0)
    {
        FakeRead read;
        read.time = time;
        read.picture = FakePicture{width, height, true, 0, false, Pattern};
        media.reads.push_back(std::move(read));
        return *media.reads.back().picture;
    }
    /// The picture as it was painted, at the nominal size.
    static void ExpectPattern(ISampleBuffer* frame, std::uint32_t width, std::uint32_t height)
    {
        ASSERT_NE(frame, nullptr);
        ASSERT_EQ(frame->GetWidth(), width);
        ASSERT_EQ(frame->GetHeight(), height);
        for (std::uint32_t y = 0; y < height; ++y)
        {
            for (std::uint32_t x = 0; x < width; ++x)
                ASSERT_EQ(Pixel(frame, x, y), Pattern(x, y)) << x << ", " << y;
        }
    }
};

TEST_F(CVideoDecoderFrame, PictureOfTheNominalSizeIsDeliveredAsItIs)
{
    AddPicture(64, 36);
    EXPECT_TRUE(Open());
    ISampleBuffer* const frame = Get(0);
    ExpectPattern(frame, 64, 36);
    EXPECT_EQ(frame->GetFormat(), kSampleFormatBgra);
    EXPECT_EQ(frame->GetRatioX(), 16U);
    EXPECT_EQ(frame->GetRatioY(), 9U);
    EXPECT_EQ(VideoDecoderProbe::ScratchBytes(decoder), 64U * 36 * 4);
}

TEST_F(CVideoDecoderFrame, BufferWithoutPictureSideHasTightRows)
{
    AddPicture(64, 36).is2D = false;
    EXPECT_TRUE(Open());
    ExpectPattern(Get(0), 64, 36);
}

TEST_F(CVideoDecoderFrame, PaddedRowsAreReadByTheirPitch)
{
    AddPicture(64, 36).pitch = 64 * 4 + 128;
    EXPECT_TRUE(Open());
    ExpectPattern(Get(0), 64, 36);
}

TEST_F(CVideoDecoderFrame, RowsStoredBottomUpComeOutTopDown)
{
    AddPicture(64, 36).pitch = -(64 * 4 + 64);
    EXPECT_TRUE(Open());
    ExpectPattern(Get(0), 64, 36);
    VideoDecoderProbe::Close(decoder);
    media.size = {{80, 40}}; // the scratch of the smaller file is still there
    AddPicture(80, 40).pitch = -80 * 4;
    media.reads.erase(media.reads.begin());
    EXPECT_TRUE(Open(Record(80)));
    ExpectPattern(Get(0), 80, 40);
}

TEST_F(CVideoDecoderFrame, LinesAndColumnsBeyondTheNominalSizeAreCutAway)
{
    AddPicture(80, 48);
    media.reads[0].newSize = {{80, 48}};
    EXPECT_TRUE(Open());
    ExpectPattern(Get(0), 64, 36);
}

TEST_F(CVideoDecoderFrame, PictureSmallerThanTheNominalSizeIsShownWhole)
{
    media.size = {{128, 72}};
    AddPicture(64, 36);
    media.reads[0].newSize = {{64, 36}};
    EXPECT_TRUE(Open(Record(64)));
    ExpectPattern(Get(0), 64, 36);
}

TEST_F(CVideoDecoderFrame, OutputHeightFollowsTheDisplayAspectAndIsEven)
{
    struct Case
    {
        Size source;
        Size pixel;
        std::uint32_t width;
        std::uint32_t height;
    };
    for (const Case& c :
         {Case{{1920, 1080}, {1, 1}, 1280, 720}, Case{{1920, 1080}, {1, 1}, 640, 360},
          Case{{1920, 1080}, {1, 1}, 641, 360}, Case{{1920, 1080}, {1, 1}, 644, 362},
          Case{{1440, 1080}, {4, 3}, 1920, 1080}, Case{{720, 576}, {16, 15}, 768, 576},
          Case{{100, 33}, {1, 1}, 100, 32}, Case{{30, 1}, {1, 1}, 60, 2}, Case{{1080, 1920}, {1, 1}, 100, 176}})
    {
        media.size = c.source;
        media.pixelAspect = c.pixel;
        media.reads.clear();
        AddPicture(c.source.first, c.source.second);
        EXPECT_TRUE(Open(Record(c.width)));
        ISampleBuffer* const frame = Get(0);
        ASSERT_NE(frame, nullptr);
        EXPECT_EQ(frame->GetWidth(), c.width);
        EXPECT_EQ(frame->GetHeight(), c.height);
    }
}

TEST_F(CVideoDecoderFrame, RotationOfTheRecordTurnsClockwise)
{
    AddPicture(64, 36);
    for (const std::uint32_t rotation : {0U, 90U, 180U, 270U, 360U, 450U})
    {
        SCOPED_TRACE(rotation);
        EXPECT_TRUE(Open(Record(64, rotation)));
        ISampleBuffer* const frame = Get(0);
        ASSERT_NE(frame, nullptr);
        const std::uint32_t angle = rotation % 360;
        const bool bySide = angle == 90 || angle == 270;
        ASSERT_EQ(frame->GetWidth(), bySide ? 36U : 64U);
        ASSERT_EQ(frame->GetHeight(), bySide ? 64U : 36U);
        EXPECT_EQ(frame->GetRatioX(), bySide ? 9U : 16U);
        EXPECT_EQ(frame->GetRatioY(), bySide ? 16U : 9U);
        const Size topLeft = angle == 0     ? Size{0, 0}
                             : angle == 90  ? Size{0, 35}
                             : angle == 180 ? Size{63, 35}
                                            : Size{63, 0};
        EXPECT_EQ(Pixel(frame, 0, 0), Pattern(topLeft.first, topLeft.second));
    }
}

TEST_F(CVideoDecoderFrame, UnknownRotationIsTransparentAndExchanged)
{
    AddPicture(64, 36);
    EXPECT_TRUE(Open(Record(64, 45)));
    ISampleBuffer* const frame = Get(0);
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->GetWidth(), 36U);
    EXPECT_EQ(frame->GetHeight(), 64U);
    EXPECT_EQ(Pixel(frame, 3, 60), 0U);
}

TEST_F(CVideoDecoderFrame, TurnedPhoneVideoComesOutUpright)
{
    media.rotation = 90;
    AddPicture(36, 64); // asked for the exchanged size, the reader delivers upright frames
    EXPECT_TRUE(Open(Record(36)));
    EXPECT_EQ(media.outputSize, (Size{36, 64}));
    ISampleBuffer* const frame = Get(0);
    ExpectPattern(frame, 36, 64);
    EXPECT_EQ(frame->GetRatioX(), 9U);
    EXPECT_EQ(frame->GetRatioY(), 16U);
}

TEST_F(CVideoDecoderFrame, ScalingModeFollowsTheCacheBit)
{
    // Columns alternate between black and white: averaging gives grey, bilinear sampling does not.
    FakePicture& picture = AddPicture(64, 36);
    picture.pixel = [](std::uint32_t x, std::uint32_t) { return x % 4 == 0 ? 0xFFFFFFFFU : 0xFF000000U; };
    tagDecProp prop = Record(16);
    prop.flags = 0;
    EXPECT_TRUE(Open(prop));
    const std::uint32_t averaged = Pixel(Get(0), 8, 3) & 0xFFU;
    EXPECT_NEAR(averaged, 64, 3);
    prop.flags = kRequestUseCache;
    EXPECT_TRUE(Open(prop));
    const std::uint32_t sampled = Pixel(Get(0), 8, 3) & 0xFFU;
    EXPECT_GT(std::max(sampled, averaged) - std::min(sampled, averaged), 20U);
}

TEST_F(CVideoDecoderFrame, BufferThatEndsEarlyGivesNoPicture)
{
    for (const bool is2D : {true, false})
    {
        media.reads.clear();
        FakePicture& picture = AddPicture(64, 36);
        picture.is2D = is2D;
        picture.truncated = true;
        EXPECT_TRUE(Open());
        EXPECT_EQ(Get(0), nullptr);
        EXPECT_FALSE(ended);
        EXPECT_EQ(VideoDecoderProbe::LastTime(decoder), 0U);
    }
}

TEST_F(CVideoDecoderFrame, BufferOfAnotherShapeGivesNoPicture)
{
    struct Case
    {
        std::uint32_t width;
        std::uint32_t height;
        std::int32_t pitch;
        bool is2D;
    };
    for (const Case& c : {Case{64, 35, 0, true}, Case{64, 35, 64 * 4 + 256, true}, Case{64, 35, 0, false},
                          Case{63, 36, 0, true}, Case{32, 72, 0, true}, Case{64, 36, 16, true},
                          Case{64, 20, -64 * 4, true}, Case{1, 1, 0, true}, Case{1, 1, 0, false}})
    {
        SCOPED_TRACE(c.width);
        media.reads.clear();
        FakePicture& picture = AddPicture(c.width, c.height);
        picture.pitch = c.pitch;
        picture.is2D = c.is2D;
        EXPECT_TRUE(Open());
        EXPECT_EQ(Get(0), nullptr);
    }
}

TEST_F(CVideoDecoderFrame, BufferShorterThanItsMediaTypeSaysGivesNoPicture)
{
    AddPicture(80, 20);
    media.reads[0].newSize = {{80, 48}};
    AddPicture(80, 20, kFrame);
    media.reads[1].newTypeWithoutSize = true;
    EXPECT_TRUE(Open());
    EXPECT_EQ(Get(0), nullptr);
    EXPECT_EQ(Get(kFrame), nullptr);
}

TEST_F(CVideoDecoderFrame, PixelsThatCannotBeLockedGiveNoPicture)
{
    AddPicture(64, 36);
    AddPicture(64, 36, kFrame).is2D = false;
    EXPECT_TRUE(Open());
    for (const char* const operation : {"Lock2D", "GetContiguousLength"})
    {
        SCOPED_TRACE(operation);
        media.failing = {operation};
        EXPECT_EQ(Get(0), nullptr);
        EXPECT_EQ(CFakeSystem::OpenLocks(), 0);
        EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
        VideoDecoderProbe::SkipPreload(decoder, 0);
    }
    media.failing = {"Lock"};
    EXPECT_NE(Get(0), nullptr);
    EXPECT_EQ(Get(kFrame), nullptr);
    EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
}

TEST_F(CVideoDecoderFrame, SampleWithoutBufferGivesNoPicture)
{
    FakeRead read;
    read.emptySample = true;
    media.reads.push_back(read);
    EXPECT_TRUE(Open());
    EXPECT_EQ(Get(0), nullptr);
    EXPECT_FALSE(ended);
}

TEST_F(CVideoDecoderFrame, FailedPictureLeavesTheLastOneWhereItWas)
{
    AddPicture(64, 36);
    AddPicture(64, 36, kFrame).truncated = true;
    EXPECT_TRUE(Open());
    ISampleBuffer* const first = Get(0);
    EXPECT_EQ(Get(kFrame), nullptr);
    frames.push_back(SampleBufferPtr::Adopt(decoder->GetLastFrame()));
    EXPECT_EQ(frames.back().Get(), first);
}

TEST_F(CVideoDecoderFrame, WidthThatIsZeroOrTooLargeGivesNoPicture)
{
    AddPicture(64, 36);
    for (const std::uint32_t width : {0U, 1U, 32'768U, 0xFFFFFFFFU})
    {
        EXPECT_TRUE(Open(Record(width)));
        EXPECT_EQ(Get(0), nullptr) << width;
    }
}

TEST_F(CVideoDecoderFrame, PictureTooFlatForTwoRowsGivesNone)
{
    media.size = {{6'000, 2}};
    AddPicture(6'000, 2);
    EXPECT_TRUE(Open(Record(1'280)));
    EXPECT_EQ(Get(0), nullptr);
}

TEST_F(CVideoDecoderFrame, NewFrameTakesOneBufferAndLeavesOneAlive)
{
    media.AddFrames(20, kFrame);
    EXPECT_TRUE(Open());
    const std::uint64_t before = PoolInfo().nLive;
    const auto made = [this]
    {
        const tagSampleBufferPoolInfo info = PoolInfo();
        return info.nHits + info.nMisses;
    };
    const std::uint64_t madeBefore = made();
    for (std::uint64_t n = 0; n < 20; ++n)
    {
        Get(n * kFrame);
        frames.clear();
        EXPECT_EQ(PoolInfo().nLive, before + 1);
    }
    EXPECT_EQ(made(), madeBefore + 20);
}

TEST_F(CVideoDecoderFrame, ShortMemoryGivesNoPictureAndLosesNothing)
{
    for (LONGLONG n = 0; n < 100; ++n)
        AddPicture(64, 36, n * static_cast<LONGLONG>(kFrame));
    EXPECT_TRUE(Open());
    int allowed = 0;
    for (;; ++allowed)
    {
        ASSERT_LT(allowed, 100);
        bool flag = false;
        bool refused = false;
        SampleBufferPtr frame;
        {
            const CAllocationFailure failure(allowed);
            const auto time = static_cast<std::uint64_t>(allowed) * kFrame;
            frame = SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(time, flag));
            refused = CAllocationFailure::Happened();
        }
        EXPECT_EQ(CFakeSystem::OpenLocks(), 0);
        EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
        if (!refused)
        {
            EXPECT_TRUE(frame);
            break;
        }
    }
    EXPECT_GT(allowed, 0);
}

/// Raw pixels of the sample that the reader stands at.
class CVideoDecoderCrop : public CVideoDecoderFrame
{
protected:
    bool Crop(std::vector<std::uint8_t>& target)
    {
        VideoDecoderProbe::SkipPreload(decoder, 1);
        return VideoDecoderProbe::Crop(decoder, VideoDecoderProbe::TakePending(decoder), target.data(),
                                       static_cast<std::uint32_t>(target.size()));
    }
    static std::uint32_t At(const std::vector<std::uint8_t>& bytes, std::uint32_t x, std::uint32_t y)
    {
        std::uint32_t color = 0;
        std::memcpy(&color, bytes.data() + (std::size_t{y} * 64 + x) * 4, 4);
        return color;
    }
    std::vector<std::uint8_t> target = std::vector<std::uint8_t>(std::size_t{64} * 36 * 4);
};

TEST_F(CVideoDecoderCrop, CopiesWholePicturesOfTheNominalSize)
{
    for (const bool is2D : {true, false})
    {
        media.reads.clear();
        AddPicture(64, 36, 1).is2D = is2D;
        EXPECT_TRUE(Open());
        std::fill(target.begin(), target.end(), std::uint8_t{0});
        EXPECT_TRUE(Crop(target));
        EXPECT_EQ(At(target, 0, 0), Pattern(0, 0));
        EXPECT_EQ(At(target, 63, 35), Pattern(63, 35));
        EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
        EXPECT_EQ(CFakeSystem::OpenLocks(), 0);
    }
}

TEST_F(CVideoDecoderCrop, CutsAwayWhatLiesBeyondTheNominalSize)
{
    AddPicture(80, 48, 1);
    media.reads[0].newSize = {{80, 48}};
    EXPECT_TRUE(Open());
    EXPECT_TRUE(Crop(target));
    EXPECT_EQ(At(target, 63, 0), Pattern(63, 0));
    EXPECT_EQ(At(target, 0, 1), Pattern(0, 1));
    EXPECT_EQ(At(target, 63, 35), Pattern(63, 35));
}

TEST_F(CVideoDecoderCrop, ReadsPaddedRowsByTheirPitch)
{
    AddPicture(64, 36, 1).pitch = 512;
    EXPECT_TRUE(Open());
    EXPECT_TRUE(Crop(target));
    EXPECT_EQ(At(target, 0, 1), Pattern(0, 1));
    EXPECT_EQ(At(target, 63, 35), Pattern(63, 35));
}

TEST_F(CVideoDecoderCrop, StopsAtTheEndOfASmallTarget)
{
    target.assign(10, 0xAA);
    AddPicture(64, 36, 1);
    EXPECT_TRUE(Open());
    EXPECT_TRUE(Crop(target)); // one copy, bounded by the target
    std::uint32_t color = 0;
    std::memcpy(&color, target.data() + 4, 4);
    EXPECT_EQ(color, Pattern(1, 0));

    media.reads.clear();
    AddPicture(64, 36, 1).pitch = 512;
    target.assign(64 * 4 * 2 + 9, 0xAA); // two rows fit
    EXPECT_TRUE(Open());
    EXPECT_TRUE(Crop(target));
    EXPECT_EQ(At(target, 63, 1), Pattern(63, 1));
    EXPECT_EQ(target.back(), 0xAA);
}

TEST_F(CVideoDecoderCrop, RefusesBuffersThatAreTooSmallAndConsumesTheSample)
{
    AddPicture(64, 20, 1).pitch = 512;
    EXPECT_TRUE(Open());
    EXPECT_FALSE(Crop(target));
    EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
    EXPECT_EQ(CFakeSystem::OpenLocks(), 0);
    EXPECT_FALSE(VideoDecoderProbe::Crop(decoder, nullptr, target.data(), 1));
    VideoDecoderProbe::SkipPreload(decoder, 1);
    EXPECT_FALSE(VideoDecoderProbe::Crop(decoder, VideoDecoderProbe::TakePending(decoder), nullptr, 1));
    EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
}
} // namespace
