/// @file CameraDecoderFixture.h
/// A camera clip decoder over a recording of the test's own.
#pragma once

#include "engine/decoders/media/CameraClipDecoder.h"
#include "engine/platform/SampleBuffer.h"
#include "tests/support/CameraRecording.h"
#include "tests/support/FrameStripReader.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/Picture.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

/// Ten numbered frames of 64 x 48 pixels, asked for at their own size. Each test finds its own folder's files.
class CameraDecoder : public testing::Test
{
protected:
    CameraDecoder() { recording.AddNumbered(64, 48, 10); }
    void TearDown() override
    {
        frame = {};
        decoder = {};
        EXPECT_EQ(LiveFrames(), m_nFramesBefore);
    }

    static std::uint64_t LiveFrames()
    {
        tagSampleBufferPoolInfo info;
        GetSampleBufferPoolInfo(&info);
        return info.nLive;
    }
    bool Open() { return Open(recording.Name()); }
    bool Open(const std::wstring& path)
    {
        prop.filePath = path;
        decoder = RefPtr<CCameraClipDecoder>::Adopt(new CCameraClipDecoder);
        return decoder->Initialize(prop);
    }
    void Rotate(std::uint32_t rotation) { decoder->GetProperty()->rotation = rotation; }
    /// Frame @p n as it comes; kept in #frame, its flag in #flag.
    ISampleBuffer* Ask(std::uint64_t n)
    {
        flag = true;
        frame = SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(n, flag));
        return frame.Get();
    }
    static std::optional<std::uint32_t> NumberOf(ISampleBuffer* pFrame)
    {
        return pFrame != nullptr ? test_support::ReadFrameStrip(test_support::PictureOf(pFrame)) : std::nullopt;
    }
    std::optional<std::uint32_t> NumberAt(std::uint64_t n) { return NumberOf(Ask(n)); }
    /// The same past the request that shows the picture before it once more.
    std::optional<std::uint32_t> SureNumberAt(std::uint64_t n)
    {
        Ask(n);
        return NumberAt(n);
    }

    test_support::CameraRecording recording{test_support::ScratchFolder(), "cam"};
    tagDecProp prop = MakeProp();
    RefPtr<CCameraClipDecoder> decoder;
    SampleBufferPtr frame;
    bool flag = false;

private:
    static tagDecProp MakeProp()
    {
        tagDecProp made(L"", 0);
        made.decoderType = kDecoderCamera;
        made.width = 64;
        made.height = 48;
        return made;
    }
    const std::uint64_t m_nFramesBefore = LiveFrames();
};
