/// @file SampleBuffer.h
/// The frame buffer object.
#pragma once

#include "companions/samplebuffer/SamplePool.h"
#include "engine/platform/SampleBuffer.h"

#include <atomic>
#include <cstdint>

/// Bytes of a picture's rows.
/// @return 0 for an unknown format, a zero or over-large size (side > 32,767, more than 1 GiB).
std::uint32_t SampleBytes(std::uint32_t format, std::uint32_t width, std::uint32_t height);

/// Lives in the head of the storage that it owns, see CSampleBlock.
class CSampleBuffer final : public ISampleBuffer
{
public:
    /// Makes the owner of @p pBlock, which holds at least SampleBytes(format, width, height) of pixels.
    /// @return one reference.
    static CSampleBuffer* Create(CSampleBlock* pBlock, std::uint32_t format, std::uint32_t width, std::uint32_t height,
                                 std::uint32_t flag);

    bool GetBuffer(std::uint8_t** ppData, std::uint32_t* pcbLength) override;
    std::uint32_t GetStride() override;
    std::uint32_t GetFlag() override { return m_flag; }
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    void Reserved8() override {}
    void Reserved9() override {}
    void Reserved10() override {}
    std::uint32_t GetWidth() override { return m_width; }
    std::uint32_t GetHeight() override { return m_height; }
    std::uint32_t GetRatioX() override { return m_ratioX; }
    std::uint32_t GetRatioY() override { return m_ratioY; }
    void SetRatioX(std::uint32_t x) override { m_ratioX = x; }
    void SetRatioY(std::uint32_t y) override { m_ratioY = y; }
    void SetSize(std::uint32_t width, std::uint32_t height) override;
    void Reserved18() override {}
    std::uint32_t GetFormat() override { return m_format; }
    void Reserved20() override {}
    bool CopyFrom(ISampleBuffer* pOther) override;
    std::uint32_t AddRef() override;
    std::uint32_t Release() override;
    void SetAlphaFlag(bool hasAlpha) override { m_hasAlpha = hasAlpha; }
    bool GetAlphaFlag() override { return m_hasAlpha; }

private:
    CSampleBuffer(CSampleBlock* pBlock, std::uint32_t format, std::uint32_t width, std::uint32_t height,
                  std::uint32_t flag);
    ~CSampleBuffer() override = default;

    CSampleBlock* const m_pBlock; // owned; holds this object as well
    std::atomic<std::uint32_t> m_nRefs = 1;
    const std::uint32_t m_format;
    const std::uint32_t m_flag;
    std::uint32_t m_width;
    std::uint32_t m_height;
    std::uint32_t m_ratioX;
    std::uint32_t m_ratioY;
    bool m_hasAlpha = false;
};
