#include "engine/decoders/Decoder.h"

#include "engine/platform/NullReference.h"

#include <new>

CDecoder::CDecoder() : m_prop(std::wstring(), 0)
{
    m_prop.flags = 0;
    m_prop.outPoint = 0;
    m_prop.frameRate = 0;
    m_prop.frameDuration = 0;
}

CDecoder::CDecoder(const CDecoder& other) : IDecoder(other), m_nRefCount(other.m_nRefCount.load()), m_prop(other.m_prop)
{
}

CDecoder& CDecoder::operator=(const CDecoder& other)
{
    if (this != &other)
    {
        m_nRefCount.store(other.m_nRefCount.load());
        m_prop = other.m_prop;
    }
    return *this;
}

CDecoder::~CDecoder() = default;

bool CDecoder::Initialize(const tagDecProp& prop)
{
    if (IsNullReference(&prop))
        return false;
    try
    {
        m_prop = prop;
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

void CDecoder::SetDecoderProperty(const tagDecProp& prop)
{
    CDecoder::Initialize(prop);
}

tagDecProp* CDecoder::GetProperty()
{
    return &m_prop;
}

ISampleBuffer* CDecoder::GetClipVideoFrame(std::uint64_t /*time*/, bool& /*flag*/)
{
    return nullptr;
}

ISampleBuffer* CDecoder::GetLastFrame()
{
    return nullptr;
}

std::uint32_t CDecoder::AddRef()
{
    return m_nRefCount.fetch_add(1, std::memory_order_relaxed) + 1;
}

std::uint32_t CDecoder::Release()
{
    const std::uint32_t left = m_nRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0)
        delete this;
    return left;
}
