/// @file VideoClipFixture.h
/// What the tests of the video clip share.
#pragma once

#include "engine/clips/QMXVideoClip.h"
#include "engine/decoders/DecoderCache.h"
#include "engine/decoders/IDecoder.h"
#include "tests/decoders/media/FakeMedia.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>

/// A clip to attach: it has pictures when it is told so.
class CPictureClip : public CQMXBaseClip
{
public:
    CPictureClip() : CQMXBaseClip(QMXClipType_Base) {}
    bool IsVideoOpened() override { return m_bOpened; }
    ISampleBuffer* GetLastFrame() override { return SampleBufferPtr(m_frame).Detach(); }

    bool m_bOpened = true;
    SampleBufferPtr m_frame;
};

/// A video clip over a scripted file of 64 x 36 pixels, 30 frames a second: 0 s .. 2 s of the timeline show it from
/// its start. When a test is over, every object has died.
class CQMXVideoClipTest : public testing::Test
{
protected:
    CQMXVideoClipTest()
    {
        media.AddFrames(90, kFrame);
        CFakeSystem::Install(L"clip.mp4", &media);
        clip->SetFilePath(L"clip.mp4");
        clip->SetDuration(20'000'000);
        clip->SetTrackID(1);
        request.width = 64;
        request.height = 36;
    }
    ~CQMXVideoClipTest() override { CFakeSystem::Install(L"clip.mp4", nullptr); }
    void SetUp() override
    {
        ASSERT_EQ(CFakeSystem::LiveReaders() + CFakeSystem::LiveBuffers(), 0);
        CFakeSystem::ReadersMade() = 0;
    }
    void TearDown() override
    {
        clip.reset();
        frame = {};
        RemoveAllDecoders();
        EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
        EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
        EXPECT_EQ(LiveFrames(), m_nFramesBefore);
    }

    static std::uint64_t LiveFrames()
    {
        tagSampleBufferPoolInfo info;
        GetSampleBufferPoolInfo(&info);
        return info.nLive;
    }
    /// The picture at @p time by way of GetFrame(); kept in #frame, its flag in #flag.
    ISampleBuffer* Get(std::uint64_t time) { return Get(*clip, time); }
    ISampleBuffer* Get(CQMXVideoClip& of, std::uint64_t time)
    {
        frame = SampleBufferPtr::Adopt(of.GetFrame(request, time, &flag));
        return frame.Get();
    }
    static std::uint32_t Pixel(ISampleBuffer* of, std::uint32_t x = 0, std::uint32_t y = 0)
    {
        std::uint8_t* pixels = nullptr;
        std::uint32_t color = 0xDEADBEEFU;
        if (of != nullptr && of->GetBuffer(&pixels, nullptr))
            std::memcpy(&color, pixels + (std::size_t{y} * of->GetWidth() + x) * 4, 4);
        return color;
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
    static std::uint32_t CountOf(ISampleBuffer* of)
    {
        const std::uint32_t count = of->AddRef();
        of->Release();
        return count - 1;
    }
    /// The cache's decoder of the clip, borrowed from it; null when there is none.
    IDecoder* SharedDecoder()
    {
        const tagDecProp none(L"", 0);
        tagDecProp prop = none;
        prop.decoderType = 99; // nothing is made where there is none
        return DecoderPtr::Adopt(GetDecoder(clip->GetDecoderKey(), prop)).Get();
    }

    static constexpr std::uint64_t kFrame = 333'333;

    FakeMedia media;
    std::unique_ptr<CQMXVideoClip> clip = std::make_unique<CQMXVideoClip>();
    tagRenderProp request;
    SampleBufferPtr frame;
    bool flag = false;

private:
    const std::uint64_t m_nFramesBefore = LiveFrames(); // before the fixtures below make theirs
};
