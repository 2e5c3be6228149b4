#include "engine/clips/QMXColorClip.h"

#include "engine/model/IQMXDocument.h"
#include "tests/clips/PooledFrames.h"
#include "tests/decoders/NullReference.h"
#include "tests/model/AllocationFailure.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
class CQMXColorClipTest : public testing::Test
{
protected:
    CQMXColorClipTest()
    {
        clip.SetStartTime(100);
        clip.SetDuration(50);
    }
    static tagRenderProp Request(std::uint32_t width, std::uint32_t height)
    {
        tagRenderProp request;
        request.width = width;
        request.height = height;
        return request;
    }
    static SampleBufferPtr FrameOf(CQMXColorClip& clip, std::uint64_t time, bool* flag = nullptr)
    {
        FrameResult result;
        EXPECT_TRUE(clip.GetVideoFrame(time, &result));
        if (flag != nullptr)
            *flag = result.flag;
        return SampleBufferPtr::Adopt(result.frame);
    }
    static std::uint32_t CountOf(const SampleBufferPtr& frame)
    {
        const std::uint32_t count = frame->AddRef();
        frame->Release();
        return count - 1;
    }

    CQMXColorClip clip;
};

TEST_F(CQMXColorClipTest, GivesOpaqueBlackOfTheRequestedSize)
{
    EXPECT_EQ(clip.GetClipType(), QMXClipType_Color);
    EXPECT_FALSE(clip.IsVideoOpened());
    EXPECT_TRUE(clip.Open(Request(33, 7)));
    EXPECT_TRUE(clip.IsVideoOpened());
    const SampleBufferPtr frame = FrameOf(clip, 100);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->GetWidth(), 33U);
    EXPECT_EQ(frame->GetHeight(), 7U);
    std::uint8_t* pixels = nullptr;
    std::uint32_t cb = 0;
    ASSERT_TRUE(frame->GetBuffer(&pixels, &cb));
    ASSERT_EQ(cb, 33U * 7 * 4);
    for (std::uint32_t n = 0; n < cb; ++n)
        ASSERT_EQ(pixels[n], n % 4 == 3 ? 255 : 0);
}

TEST_F(CQMXColorClipTest, OpenedTwiceAtOneSizeMakesOneBuffer)
{
    EXPECT_TRUE(clip.Open(Request(1920, 1080)));
    const SampleBufferPtr first = FrameOf(clip, 100);
    EXPECT_TRUE(clip.Open(Request(1920, 1080)));
    EXPECT_EQ(FrameOf(clip, 149).Get(), first.Get());
    EXPECT_EQ(CountOf(first), 2U);
}

TEST_F(CQMXColorClipTest, OtherSizeMakesANewBuffer)
{
    EXPECT_TRUE(clip.Open(Request(1920, 1080)));
    const SampleBufferPtr first = FrameOf(clip, 100);
    EXPECT_TRUE(clip.Open(Request(1280, 720)));
    const SampleBufferPtr second = FrameOf(clip, 100);
    EXPECT_NE(second.Get(), first.Get());
    EXPECT_EQ(second->GetWidth(), 1280U);
    EXPECT_EQ(second->GetHeight(), 720U);
    EXPECT_EQ(CountOf(first), 1U); // the clip has let go of it
}

TEST_F(CQMXColorClipTest, FlagTellsTimesOutsideTheClip)
{
    EXPECT_TRUE(clip.Open(Request(4, 4)));
    for (const auto& [time, outside] :
         {std::pair<std::uint64_t, bool>{99, true}, {100, false}, {149, false}, {150, true}, {0, true}, {~0ULL, true}})
    {
        bool flag = !outside;
        FrameOf(clip, time, &flag);
        EXPECT_EQ(flag, outside) << time;
    }
}

TEST_F(CQMXColorClipTest, UnopenedClipAndNullResultGiveFalse)
{
    FrameResult result;
    EXPECT_FALSE(clip.GetVideoFrame(100, &result));
    EXPECT_EQ(result.frame, nullptr);
    EXPECT_TRUE(clip.Open(Request(4, 4)));
    EXPECT_FALSE(clip.GetVideoFrame(100, nullptr));
    EXPECT_FALSE(clip.Open(NullReference<const tagRenderProp>()));
}

TEST_F(CQMXColorClipTest, CloseKeepsTheFrame)
{
    EXPECT_TRUE(clip.Open(Request(4, 4)));
    EXPECT_TRUE(clip.Close());
    EXPECT_TRUE(clip.IsVideoOpened());
    EXPECT_TRUE(FrameOf(clip, 100));
}

TEST_F(CQMXColorClipTest, CopiesShareTheFrameWithAReferenceEach)
{
    EXPECT_TRUE(clip.Open(Request(4, 4)));
    const SampleBufferPtr frame = FrameOf(clip, 100);
    auto copy = std::make_unique<CQMXColorClip>();
    EXPECT_TRUE(copy->Open(Request(8, 8)));
    const SampleBufferPtr replaced = FrameOf(*copy, 0);
    copy->CopyFrom(&clip);
    EXPECT_EQ(copy->GetStartTime(), 100U);
    EXPECT_EQ(CountOf(replaced), 1U);
    EXPECT_EQ(FrameOf(*copy, 100).Get(), frame.Get());
    EXPECT_EQ(CountOf(frame), 3U);
    copy->CopyFrom(copy.get());
    EXPECT_EQ(CountOf(frame), 3U);
    copy->CopyFrom(nullptr);
    EXPECT_EQ(CountOf(frame), 3U);
    copy.reset();
    EXPECT_EQ(CountOf(frame), 2U);
    EXPECT_TRUE(clip.Open(Request(5, 5)));
    EXPECT_EQ(CountOf(frame), 1U);
}

TEST_F(CQMXColorClipTest, CopyOfAnotherKindHasNoFrame)
{
    EXPECT_TRUE(clip.Open(Request(4, 4)));
    const SampleBufferPtr frame = FrameOf(clip, 100);
    CQMXBaseClip other(QMXClipType_Base);
    clip.CopyFrom(&other);
    EXPECT_EQ(CountOf(frame), 1U);
    EXPECT_FALSE(clip.IsVideoOpened());
}

TEST_F(CQMXColorClipTest, SizeThatCannotBeMadeIsRefused)
{
    for (const auto& [width, height] :
         {std::pair{0U, 4U}, std::pair{4U, 0U}, std::pair{32'768U, 4U}, std::pair{0xFFFFFFFFU, 0xFFFFFFFFU}})
    {
        EXPECT_FALSE(clip.Open(Request(width, height)));
        tagRenderProp request = Request(width, height);
        EXPECT_EQ(clip.GetFrame(request, 100, nullptr), nullptr);
    }
    const auto held = HoldPooled(4, 4);
    const CAllocationFailure failure;
    EXPECT_FALSE(clip.Open(Request(4, 4)));
}

TEST_F(CQMXColorClipTest, StaysSilent)
{
    std::uint8_t byte = 0xAA;
    std::uint8_t* block = &byte;
    std::uint32_t size = 1;
    EXPECT_TRUE(clip.IsAudioOpened());
    EXPECT_EQ(clip.ReadAudio(&block, &size), 1U);
    EXPECT_EQ(byte, 0);
}

TEST(ColorTrack, AnswersAnyTimeFromTheDocumentDownToTheBuffer)
{
    const std::unique_ptr<IQMXCleaner> cleaner(CreateQMXCleaner());
    const std::unique_ptr<IQMXDocument> document(CreateQMXDocument(cleaner.get()));
    IQMXTrack* const track = CreateQMXTrack(1, QMXTrackType{}, 0, tagPIPPOSITION{});
    ASSERT_TRUE(document->AddTrack(track));
    for (std::uint64_t n = 0; n < 3; ++n)
    {
        auto clip = std::make_unique<CQMXColorClip>();
        clip->SetStartTime(n * 1'000);
        clip->SetDuration(1'000);
        ASSERT_TRUE(track->AddClip(clip.release()));
    }
    for (const std::uint64_t time : {0, 999, 1'000, 2'999})
    {
        tagRenderProp request;
        request.width = 64;
        request.height = 36;
        bool flag = true;
        const SampleBufferPtr frame =
            SampleBufferPtr::Adopt(document->GetTrackByID(1)->GetFrameAtTime(request, time, &flag));
        ASSERT_TRUE(frame);
        EXPECT_FALSE(flag);
        std::uint8_t* pixels = nullptr;
        ASSERT_TRUE(frame->GetBuffer(&pixels, nullptr));
        EXPECT_EQ(pixels[3], 255);
    }
    tagRenderProp request;
    EXPECT_EQ(track->GetFrameAtTime(request, 3'000, nullptr), nullptr);
}
} // namespace
