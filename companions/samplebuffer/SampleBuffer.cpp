#include "companions/samplebuffer/SampleBuffer.h"

#include <cstring>
#include <new>

std::uint32_t SampleBytes(std::uint32_t format, std::uint32_t width, std::uint32_t height)
{
    constexpr std::uint32_t kMaxSide = 32'767;
    constexpr std::uint64_t kMaxBytes = std::uint64_t{1} << 30;
    if (width == 0 || height == 0 || width > kMaxSide || height > kMaxSide)
        return 0;
    const std::uint64_t pixels = std::uint64_t{width} * height;
    std::uint64_t cb = 0;
    if (format == kSampleFormatBgra)
        cb = pixels * 4;
    else if (format == kSampleFormatNv12)
        cb = pixels + (std::uint64_t{width} + 1) / 2 * 2 * ((std::uint64_t{height} + 1) / 2);
    return cb <= kMaxBytes ? static_cast<std::uint32_t>(cb) : 0;
}

CSampleBuffer::CSampleBuffer(CSampleBlock* pBlock, std::uint32_t format, std::uint32_t width, std::uint32_t height,
                             std::uint32_t flag)
    : m_pBlock(pBlock), m_format(format), m_flag(flag), m_width(width), m_height(height), m_ratioX(width),
      m_ratioY(height)
{
}

CSampleBuffer* CSampleBuffer::Create(CSampleBlock* pBlock, std::uint32_t format, std::uint32_t width,
                                     std::uint32_t height, std::uint32_t flag)
{
    static_assert(sizeof(CSampleBuffer) <= sizeof(CSampleBlock::object) && alignof(CSampleBuffer) <= 16);
    CSamplePool::Instance().BufferMade();
    return ::new (pBlock->object) CSampleBuffer(pBlock, format, width, height, flag);
}

bool CSampleBuffer::GetBuffer(std::uint8_t** ppData, std::uint32_t* pcbLength)
{
    if (!ppData)
        return false;
    *ppData = m_pBlock->Pixels();
    if (pcbLength)
        *pcbLength = SampleBytes(m_format, m_width, m_height);
    return true;
}

std::uint32_t CSampleBuffer::GetStride()
{
    return m_format == kSampleFormatBgra ? m_width * 4 : m_width;
}

void CSampleBuffer::SetSize(std::uint32_t width, std::uint32_t height)
{
    const std::uint32_t cb = SampleBytes(m_format, width, height);
    if (cb == 0 || cb > m_pBlock->cbPixels)
        return;
    m_width = width;
    m_height = height;
}

bool CSampleBuffer::CopyFrom(ISampleBuffer* pOther)
{
    if (!pOther || pOther->GetFormat() != m_format || pOther->GetWidth() != m_width ||
        pOther->GetHeight() != m_height || pOther->GetStride() != GetStride())
        return false;
    const std::uint32_t cb = SampleBytes(m_format, m_width, m_height);
    std::uint8_t* pSource = nullptr;
    std::uint32_t cbSource = 0;
    if (!pOther->GetBuffer(&pSource, &cbSource) || cbSource < cb)
        return false;
    if (pSource != m_pBlock->Pixels())
        std::memcpy(m_pBlock->Pixels(), pSource, cb);
    return true;
}

std::uint32_t CSampleBuffer::AddRef()
{
    return m_nRefs.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::uint32_t CSampleBuffer::Release()
{
    // Whoever ends the buffer must see everything that the others did with it before they let go.
    const std::uint32_t left = m_nRefs.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0)
    {
        CSampleBlock* const pBlock = m_pBlock;
        this->~CSampleBuffer();
        CSamplePool::Instance().BufferGone();
        CSamplePool::Instance().Return(pBlock);
    }
    return left;
}
