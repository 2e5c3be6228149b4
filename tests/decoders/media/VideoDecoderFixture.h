/// @file VideoDecoderFixture.h
/// What the tests of the video decoder share.
#pragma once

#include "engine/decoders/media/VideoDecoder.h"
#include "tests/decoders/media/FakeMedia.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

/// Looks into a decoder.
struct VideoDecoderProbe
{
    using Decoder = RefPtr<CVideoDecoder>;

    static std::uint64_t LastTime(const Decoder& d) { return d->m_llLastTime; }
    static bool IsOpen(const Decoder& d) { return d->m_pReader != nullptr; }
    static bool HasPending(const Decoder& d) { return d->m_pPendingSample != nullptr; }
    static bool HasDevice(const Decoder& d) { return d->m_pD3DDevice != nullptr; }
    static std::pair<std::uint32_t, std::uint32_t> FrameSize(const Decoder& d)
    {
        return {d->m_nFrameWidth, d->m_nFrameHeight};
    }
    static std::pair<std::uint32_t, std::uint32_t> DecodedSize(const Decoder& d)
    {
        return {d->m_nDecodedWidth, d->m_nDecodedHeight};
    }
    static std::pair<std::uint32_t, std::uint32_t> PixelAspect(const Decoder& d)
    {
        return {d->m_nPixelAspectX, d->m_nPixelAspectY};
    }
    static std::pair<std::uint32_t, std::uint32_t> DisplayAspect(const Decoder& d)
    {
        return {d->m_nDisplayAspectX, d->m_nDisplayAspectY};
    }
    static std::size_t ScratchBytes(const Decoder& d) { return d->m_vecFrameBuffer.size(); }
    static std::uint32_t StreamIndex() { return CVideoDecoder::m_dwStreamIdx; }
    static void SkipPreload(const Decoder& d, std::uint64_t time) { d->_SkipPreload(time); }
    static void Close(const Decoder& d) { d->_InternalClose(); }
    static IMFSample* TakePending(const Decoder& d) { return std::exchange(d->m_pPendingSample, nullptr); }
    static bool Crop(const Decoder& d, IMFSample* pSample, std::uint8_t* pTarget, std::uint32_t cb)
    {
        return d->_CropFrame(pSample, pTarget, cb);
    }
    static HRESULT Convert(const Decoder& d, IMFMediaType* pType, const GUID& subtype, IMFMediaType** ppOut)
    {
        return d->_ConvertVideoTypeToUncompressedType(pType, subtype, ppOut);
    }
};

constexpr std::uint64_t kFrame = 333'333; // 100 ns; the record's own default

/// A decoder over a scripted file of 64 x 36 pixels, 30 frames a second. When a test is over, every object has died
/// and every lock is undone.
class CVideoDecoderTest : public testing::Test
{
protected:
    CVideoDecoderTest() { CFakeSystem::Install(L"fake.mp4", &media); }
    ~CVideoDecoderTest() override
    {
        CFakeSystem::Install(L"fake.mp4", nullptr);
        CFakeSystem::HasDevice() = false;
        CFakeSystem::FailingFunctions().clear();
    }
    void SetUp() override
    {
        ASSERT_EQ(CFakeSystem::LiveReaders() + CFakeSystem::LiveBuffers() + CFakeSystem::OpenLocks(), 0);
        m_before = PoolInfo().nLive;
    }
    void TearDown() override
    {
        frames.clear();
        decoder = {};
        EXPECT_EQ(CFakeSystem::LiveReaders(), 0);
        EXPECT_EQ(CFakeSystem::LiveBuffers(), 0);
        EXPECT_EQ(CFakeSystem::LiveDevices(), 0);
        EXPECT_EQ(CFakeSystem::OpenLocks(), 0);
        EXPECT_EQ(PoolInfo().nLive, m_before);
    }

    static tagSampleBufferPoolInfo PoolInfo()
    {
        tagSampleBufferPoolInfo info;
        GetSampleBufferPoolInfo(&info);
        return info;
    }
    tagDecProp Record(std::uint32_t width = 64, std::uint32_t rotation = 0) const
    {
        tagDecProp prop(L"fake.mp4", 0);
        prop.width = width;
        prop.height = 1'000; // never looked at while a file is open
        prop.rotation = rotation;
        return prop;
    }
    bool Open() { return Open(Record()); }
    bool Open(const tagDecProp& prop) { return decoder->Initialize(prop); }

    /// The picture at @p time; the fixture keeps the reference. The end-of-stream flag goes to #ended.
    ISampleBuffer* Get(std::uint64_t time)
    {
        ended = true; // must be written
        SampleBufferPtr frame = SampleBufferPtr::Adopt(decoder->GetClipVideoFrame(time, ended));
        frames.push_back(frame);
        return frame.Get();
    }
    /// Pixel (x, y) of a frame whose rows are as wide as it is.
    static std::uint32_t Pixel(ISampleBuffer* frame, std::uint32_t x = 0, std::uint32_t y = 0)
    {
        std::uint8_t* pixels = nullptr;
        std::uint32_t cb = 0;
        if (frame == nullptr || !frame->GetBuffer(&pixels, &cb))
            return 0xDEADBEEFU;
        std::uint32_t color = 0;
        std::memcpy(&color, pixels + (std::size_t{y} * frame->GetWidth() + x) * 4, 4);
        return color;
    }

    FakeMedia media;
    RefPtr<CVideoDecoder> decoder = RefPtr<CVideoDecoder>::Adopt(new CVideoDecoder);
    std::vector<SampleBufferPtr> frames;
    bool ended = false;

private:
    std::uint64_t m_before = 0;
};
