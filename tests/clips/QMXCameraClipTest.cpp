#include "engine/clips/QMXCameraClip.h"

#include "engine/decoders/DecoderCache.h"
#include "engine/decoders/media/CameraClipDecoder.h"
#include "engine/model/ClipFactory.h"
#include "tests/clips/VideoClipFixture.h"
#include "tests/support/CameraRecording.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

namespace
{
constexpr std::uint64_t kStart = 50'000'000;

/// A clip over a recording of twenty flat grey frames, frame n of level 10 n + 20.
class CQMXCameraClipTest : public testing::Test
{
protected:
    CQMXCameraClipTest()
    {
        for (std::uint32_t n = 0; n < 20; ++n)
            recording.Add(MakeJpeg(32, 24, [n](std::uint32_t, std::uint32_t) { return (10 * n + 20) * 0x010101U; }));
        recording.Write();
        clip->SetFilePath(recording.Name());
        clip->SetStartTime(kStart);
        clip->SetDuration(20'000'000);
        clip->SetTrackID(1);
        request.flags = kRequestUseCache;
        request.width = 32;
        request.height = 24;
    }
    void TearDown() override
    {
        clip.reset();
        frame = {};
        RemoveAllDecoders();
        EXPECT_EQ(LiveFrames(), m_nFramesBefore);
    }
    static std::uint64_t LiveFrames()
    {
        tagSampleBufferPoolInfo info;
        GetSampleBufferPoolInfo(&info);
        return info.nLive;
    }
    /// Number of the frame shown at @p time; -1 for none. A second request gets past the one that repeats.
    int NumberAt(std::uint64_t time)
    {
        frame = {};
        SampleBufferPtr::Adopt(clip->GetFrame(request, time, &flag));
        frame = SampleBufferPtr::Adopt(clip->GetFrame(request, time, &flag));
        return frame ? static_cast<int>(std::lround((Pixel(frame.Get())[0] - 20) / 10.0)) : -1;
    }
    static const std::uint8_t* Pixel(ISampleBuffer* pFrame, std::uint32_t x = 0, std::uint32_t y = 0)
    {
        std::uint8_t* pixels = nullptr;
        pFrame->GetBuffer(&pixels, nullptr);
        return pixels + (std::size_t{y} * pFrame->GetWidth() + x) * 4;
    }
    static SampleBufferPtr MakePicture(std::uint32_t width, std::uint32_t height, std::uint32_t color)
    {
        SampleBufferPtr made = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, width, height, 0));
        std::uint8_t* pixels = nullptr;
        made->GetBuffer(&pixels, nullptr);
        for (std::uint32_t n = 0; n < width * height; ++n)
            std::memcpy(pixels + std::size_t{n} * 4, &color, 4);
        return made;
    }
    static tagTransparentColorInfo GreenKey()
    {
        tagTransparentColorInfo info{};
        info.dSimilarity = 0.2;
        info.nColor[1] = 255;
        info.bKeyOnly = 1;
        return info;
    }
    IDecoder* Decoder()
    {
        tagDecProp none(L"", 0);
        none.decoderType = 99; // nothing is made where there is none
        return DecoderPtr::Adopt(GetDecoder(clip->GetDecoderKey(), none)).Get();
    }

private:
    const std::uint64_t m_nFramesBefore = LiveFrames();
    const test_support::TemporaryFolder m_folder;

protected:
    test_support::CameraRecording recording{m_folder.Path(), "cam"};
    std::unique_ptr<CQMXCameraClip> clip = std::make_unique<CQMXCameraClip>();
    tagRenderProp request;
    SampleBufferPtr frame;
    bool flag = false;
};

TEST_F(CQMXCameraClipTest, StartsWithTheVideoClipsSettings)
{
    EXPECT_EQ(clip->GetClipType(), QMXClipType_Camera);
    EXPECT_EQ(clip->GetRotation(), 0U);
    EXPECT_EQ(clip->GetFrameRate(), 30.0);
    EXPECT_FALSE(clip->IsTransparentColorOn());
    EXPECT_EQ(clip->GetTransparentColor(), nullptr);
    EXPECT_FALSE(clip->IsVideoOpened());
}

TEST_F(CQMXCameraClipTest, AsksForFramesByNumber)
{
    EXPECT_EQ(NumberAt(kStart), 0);
    EXPECT_EQ(NumberAt(kStart + 1'000'000), 3) << "1,000,000 / 333,333";
    EXPECT_EQ(NumberAt(kStart + 999'998), 2);
    EXPECT_EQ(NumberAt(kStart + 999'999), 3);
    clip->SetInPoint(333'333);
    EXPECT_EQ(NumberAt(kStart + 1'000'000), 4);
    EXPECT_FALSE(flag);
}

TEST_F(CQMXCameraClipTest, CountsFramesAtItsOwnRate)
{
    clip->SetFrameRate(10);
    EXPECT_EQ(NumberAt(kStart + 3'000'000), 3);
    EXPECT_EQ(NumberAt(kStart + 3'999'999), 3);
}

TEST_F(CQMXCameraClipTest, AHugeNumberFromATimeBeforeTheStartShowsNothingNew)
{
    EXPECT_EQ(NumberAt(kStart + 1'000'000), 3);
    const int shown = NumberAt(kStart - 1);
    EXPECT_EQ(shown, 3);
}

TEST_F(CQMXCameraClipTest, ARateOfZeroShowsTheFirstFrame)
{
    clip->SetFrameRate(0);
    EXPECT_EQ(NumberAt(kStart + 5'000'000), 0);
}

TEST_F(CQMXCameraClipTest, FillsADurationOfZeroIn)
{
    EXPECT_EQ(NumberAt(kStart), 0);
    Decoder()->GetProperty()->frameDuration = 0;
    EXPECT_EQ(NumberAt(kStart + 1'000'000), 3);
}

TEST_F(CQMXCameraClipTest, WithoutAPathItDoesNotOpenAndKeepsItsDecoder)
{
    request.time = kStart;
    EXPECT_TRUE(clip->Open(request));
    EXPECT_TRUE(clip->IsVideoOpened());
    clip->SetFilePath(L"");
    EXPECT_FALSE(clip->Open(request));
    EXPECT_TRUE(clip->IsVideoOpened());
    FrameResult result;
    EXPECT_TRUE(clip->GetVideoFrame(kStart, &result));
    EXPECT_NE(result.frame, nullptr);
    frame = SampleBufferPtr::Adopt(result.frame);
    clip->Close();
    EXPECT_FALSE(clip->IsVideoOpened());
}

TEST_F(CQMXCameraClipTest, FillsTheDecodersRecord)
{
    clip->SetInPoint(7);
    clip->SetRotation(90);
    clip->SetFrameRate(25);
    request.time = kStart + 3;
    ASSERT_TRUE(clip->Open(request));
    const tagDecProp& prop = *Decoder()->GetProperty();
    EXPECT_NE(dynamic_cast<CCameraClipDecoder*>(Decoder()), nullptr);
    EXPECT_EQ(prop.filePath, recording.Name());
    EXPECT_EQ(prop.inPoint, 7U);
    EXPECT_EQ(prop.outPoint, 20'000'007U);
    EXPECT_EQ(prop.currentTime, 10U);
    EXPECT_EQ(prop.frameRate, 25.0);
    EXPECT_EQ(prop.frameDuration, 400'000U);
    EXPECT_EQ(prop.rotation, 90U);
    EXPECT_EQ(prop.decoderType, kDecoderCamera);
    EXPECT_EQ(prop.width, 32U);
    EXPECT_EQ(prop.height, 24U);
}

TEST_F(CQMXCameraClipTest, OpensADecoderOfItsOwnWithoutTheCache)
{
    request.flags = 0;
    EXPECT_EQ(NumberAt(kStart), 0);
    EXPECT_EQ(Decoder(), nullptr);
    clip->SetFilePath(L"nothing.mjpg");
    EXPECT_FALSE(clip->Open(request));
}

TEST_F(CQMXCameraClipTest, ClosesWhenNoFrameComes)
{
    recording.records.clear();
    recording.Write();
    EXPECT_EQ(NumberAt(kStart), -1);
    EXPECT_FALSE(clip->IsVideoOpened());
}

TEST_F(CQMXCameraClipTest, RefusesNullResults)
{
    EXPECT_FALSE(clip->GetVideoFrame(0, nullptr));
}

TEST_F(CQMXCameraClipTest, TurnsItsFrames)
{
    clip->SetRotation(90);
    EXPECT_EQ(NumberAt(kStart), 0);
    EXPECT_EQ(frame->GetWidth(), 24U);
    EXPECT_EQ(frame->GetHeight(), 32U);
}

TEST_F(CQMXCameraClipTest, ANameDecidesNothingAboutAlpha)
{
    EXPECT_EQ(NumberAt(kStart), 0);
    EXPECT_FALSE(frame->GetAlphaFlag());
}

TEST_F(CQMXCameraClipTest, KeysItsFramesAndLeavesTheDecodersAlone)
{
    const tagTransparentColorInfo info = GreenKey();
    clip->SetTransparentColor(true, &info);
    EXPECT_EQ(NumberAt(kStart), 0);
    EXPECT_TRUE(frame->GetAlphaFlag());
    EXPECT_EQ(Pixel(frame.Get())[3], 255) << "grey is not keyed";
    EXPECT_EQ(SampleBufferPtr::Adopt(clip->GetLastFrame()).Get(), frame.Get());
    clip->SetTransparentColor(false, nullptr);
    EXPECT_EQ(NumberAt(kStart), 0);
    EXPECT_FALSE(frame->GetAlphaFlag());
}

TEST_F(CQMXCameraClipTest, KeysATurnedFrameOfAnAttachedClipAtItsTurnedSize)
{
    CPictureClip attached;
    attached.m_frame = MakePicture(40, 20, 0xFF00FF00U); // green
    attached.m_frame->SetAlphaFlag(true);
    attached.m_frame->SetRatioX(3);
    attached.m_frame->SetRatioY(1);
    clip->SetAttachment(0, &attached);
    clip->SetRotation(90);
    frame = SampleBufferPtr::Adopt(clip->GetFrame(request, kStart, &flag));
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->GetWidth(), 20U);
    EXPECT_EQ(frame->GetHeight(), 40U);
    EXPECT_FALSE(frame->GetAlphaFlag()) << "not carried over";
    EXPECT_EQ(frame->GetRatioX(), 20U) << "not carried over";
    EXPECT_EQ(frame->GetRatioY(), 40U);

    tagTransparentColorInfo info = GreenKey();
    clip->SetTransparentColor(true, &info);
    frame = SampleBufferPtr::Adopt(clip->GetFrame(request, kStart, &flag));
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->GetWidth(), 20U);
    EXPECT_TRUE(frame->GetAlphaFlag());
    for (const auto& [x, y] : {std::pair{0U, 0U}, {19U, 39U}})
        EXPECT_EQ(Pixel(frame.Get(), x, y)[3], 0);
    EXPECT_EQ(Pixel(attached.m_frame.Get())[3], 255) << "the attached clip keeps its picture";

    attached.m_frame = {};
    FrameResult result;
    EXPECT_FALSE(clip->GetVideoFrame(kStart, &result));
    EXPECT_EQ(result.frame, nullptr);
    clip->SetAttachment(0, nullptr);
}

TEST_F(CQMXCameraClipTest, KeysAnAttachedFrameThatIsNotTurned)
{
    CPictureClip attached;
    attached.m_frame = MakePicture(40, 20, 0xFF00FF00U);
    clip->SetAttachment(0, &attached);
    frame = SampleBufferPtr::Adopt(clip->GetFrame(request, kStart, &flag));
    EXPECT_EQ(frame.Get(), attached.m_frame.Get()) << "as it is";
    const tagTransparentColorInfo info = GreenKey();
    clip->SetTransparentColor(true, &info);
    frame = SampleBufferPtr::Adopt(clip->GetFrame(request, kStart, &flag));
    ASSERT_TRUE(frame);
    EXPECT_EQ(Pixel(frame.Get())[3], 0);
    clip->SetAttachment(0, nullptr);
}

TEST_F(CQMXCameraClipTest, OpenTakesNoNoticeOfAnAttachedClip)
{
    CPictureClip attached;
    clip->SetAttachment(0, &attached);
    ASSERT_TRUE(clip->Open(request));
    EXPECT_NE(Decoder(), nullptr);
    clip->SetAttachment(0, nullptr);
}

TEST_F(CQMXCameraClipTest, CopiesFromCameraClipsOnly)
{
    CQMXVideoClip video;
    video.SetRotation(90);
    video.SetFrameRate(12);
    video.SetFilePath(L"v.mp4");
    clip->CopyFrom(&video);
    clip->CopyFrom(nullptr);
    EXPECT_EQ(clip->GetRotation(), 0U);
    EXPECT_EQ(clip->GetFrameRate(), 30.0);
    EXPECT_EQ(clip->GetFilePath(), recording.Name());
    CQMXCameraClip camera;
    camera.SetRotation(270);
    camera.SetFrameRate(12);
    camera.SetFilePath(L"c.mjpg");
    camera.SetInPoint(5);
    clip->CopyFrom(&camera);
    EXPECT_EQ(clip->GetRotation(), 270U);
    EXPECT_EQ(clip->GetFrameRate(), 12.0);
    EXPECT_EQ(clip->GetFilePath(), L"c.mjpg");
    EXPECT_EQ(clip->GetInPoint(), 5U);
    video.CopyFrom(&camera);
    EXPECT_EQ(video.GetRotation(), 90U) << "nor the other way";
}

TEST_F(CQMXCameraClipTest, ACopyKeepsTheFactorysSettings)
{
    clip->SetRotation(90);
    clip->SetFrameRate(12);
    const tagTransparentColorInfo info = GreenKey();
    clip->SetTransparentColor(true, &info);
    const std::unique_ptr<IQMXBaseClip> copy(DuplicateClip(clip.get()));
    auto* const camera = dynamic_cast<CQMXCameraClip*>(copy.get());
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->GetFilePath(), recording.Name());
    EXPECT_EQ(camera->GetStartTime(), kStart);
    EXPECT_EQ(camera->GetRotation(), 0U);
    EXPECT_EQ(camera->GetFrameRate(), 30.0);
    EXPECT_FALSE(camera->IsTransparentColorOn());
}

TEST_F(CQMXCameraClipTest, TwoClipsOfOneRecordingEachShowTheirOwnPicture)
{
    CQMXCameraClip other;
    other.SetFilePath(recording.Name());
    other.SetTrackID(1);
    other.SetStartTime(kStart);
    other.SetRotation(180);
    EXPECT_EQ(NumberAt(kStart + 333'333), 1);
    const SampleBufferPtr turned = SampleBufferPtr::Adopt(other.GetFrame(request, kStart, nullptr));
    ASSERT_TRUE(turned);
    EXPECT_NE(turned.Get(), frame.Get());
    EXPECT_EQ(NumberAt(kStart + 333'333), 1);
}
} // namespace
