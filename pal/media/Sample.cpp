#include "pal/media/Attributes.h"

#include <mfapi.h>

#include <cstring>
#include <new>
#include <vector>

namespace pal
{
namespace
{
class MemoryBuffer final : public ComObject<MemoryBuffer, IMFMediaBuffer>
{
public:
    explicit MemoryBuffer(DWORD cbMax) : m_bytes(cbMax) {}

    HRESULT STDMETHODCALLTYPE Lock(BYTE** ppBuffer, DWORD* pcbMaxLength, DWORD* pcbCurrentLength) override
    {
        if (ppBuffer == nullptr)
            return E_POINTER;
        *ppBuffer = m_bytes.data();
        if (pcbMaxLength != nullptr)
            *pcbMaxLength = static_cast<DWORD>(m_bytes.size());
        if (pcbCurrentLength != nullptr)
            *pcbCurrentLength = m_cbCurrent;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Unlock() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetCurrentLength(DWORD* pcbCurrentLength) override
    {
        if (pcbCurrentLength == nullptr)
            return E_POINTER;
        *pcbCurrentLength = m_cbCurrent;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetCurrentLength(DWORD cbCurrentLength) override
    {
        if (cbCurrentLength > m_bytes.size())
            return E_INVALIDARG;
        m_cbCurrent = cbCurrentLength;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetMaxLength(DWORD* pcbMaxLength) override
    {
        if (pcbMaxLength == nullptr)
            return E_POINTER;
        *pcbMaxLength = static_cast<DWORD>(m_bytes.size());
        return S_OK;
    }

private:
    std::vector<BYTE> m_bytes;
    DWORD m_cbCurrent = 0;
};

class Sample final : public AttributesImpl<ComObject<Sample, IMFSample, IMFAttributes>>
{
public:
    ~Sample()
    {
        for (IMFMediaBuffer* const pBuffer : m_buffers)
            pBuffer->Release();
    }
    HRESULT STDMETHODCALLTYPE GetSampleTime(LONGLONG* pTime) override { return Get(m_time, pTime); }
    HRESULT STDMETHODCALLTYPE SetSampleTime(LONGLONG time) override
    {
        m_time = time;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetSampleDuration(LONGLONG* pDuration) override { return Get(m_duration, pDuration); }
    HRESULT STDMETHODCALLTYPE SetSampleDuration(LONGLONG duration) override
    {
        m_duration = duration;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetBufferCount(DWORD* pCount) override
    {
        return Get(static_cast<DWORD>(m_buffers.size()), pCount);
    }
    HRESULT STDMETHODCALLTYPE GetBufferByIndex(DWORD index, IMFMediaBuffer** ppBuffer) override
    {
        if (ppBuffer == nullptr)
            return E_POINTER;
        *ppBuffer = index < m_buffers.size() ? m_buffers[index] : nullptr;
        if (*ppBuffer == nullptr)
            return E_INVALIDARG;
        (*ppBuffer)->AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ConvertToContiguousBuffer(IMFMediaBuffer** ppBuffer) override
    {
        if (ppBuffer == nullptr)
            return E_POINTER;
        *ppBuffer = nullptr;
        if (m_buffers.empty())
            return E_UNEXPECTED;
        const HRESULT hr = m_buffers.size() == 1 ? S_OK : Join();
        return SUCCEEDED(hr) ? GetBufferByIndex(0, ppBuffer) : hr;
    }
    HRESULT STDMETHODCALLTYPE AddBuffer(IMFMediaBuffer* pBuffer) override
    {
        if (pBuffer == nullptr)
            return E_POINTER;
        try
        {
            m_buffers.push_back(pBuffer);
        }
        catch (const std::bad_alloc&)
        {
            return E_OUTOFMEMORY;
        }
        pBuffer->AddRef();
        return S_OK;
    }

private:
    template <class T> static HRESULT Get(T value, T* pValue)
    {
        if (pValue == nullptr)
            return E_POINTER;
        *pValue = value;
        return S_OK;
    }
    /// Replaces several buffers by one that holds their bytes in a row.
    HRESULT Join();

    LONGLONG m_time = 0;
    LONGLONG m_duration = 0;
    std::vector<IMFMediaBuffer*> m_buffers; // owns one reference each
};

HRESULT Sample::Join()
{
    std::uint64_t cbAll = 0;
    for (IMFMediaBuffer* const pBuffer : m_buffers)
    {
        DWORD cb = 0;
        const HRESULT hr = pBuffer->GetCurrentLength(&cb);
        if (FAILED(hr))
            return hr;
        cbAll += cb;
    }
    if (cbAll > UINT32_MAX)
        return E_OUTOFMEMORY;
    IMFMediaBuffer* pJoined = nullptr;
    HRESULT hr = MFCreateMemoryBuffer(static_cast<DWORD>(cbAll), &pJoined);
    if (FAILED(hr))
        return hr;
    BYTE* pTarget = nullptr;
    pJoined->Lock(&pTarget, nullptr, nullptr);
    DWORD cbDone = 0;
    for (IMFMediaBuffer* const pBuffer : m_buffers)
    {
        BYTE* pSource = nullptr;
        DWORD cb = 0;
        hr = pBuffer->Lock(&pSource, nullptr, &cb);
        if (FAILED(hr) || cb > cbAll - cbDone)
        {
            pJoined->Release();
            return FAILED(hr) ? hr : E_UNEXPECTED;
        }
        if (cb != 0)
            std::memcpy(pTarget + cbDone, pSource, cb);
        cbDone += cb;
        pBuffer->Unlock();
    }
    pJoined->Unlock();
    pJoined->SetCurrentLength(cbDone);
    for (IMFMediaBuffer* const pBuffer : m_buffers)
        pBuffer->Release();
    m_buffers.assign(1, pJoined);
    return S_OK;
}
} // namespace
} // namespace pal

extern "C" HRESULT MFCreateSample(IMFSample** ppSample)
{
    if (ppSample == nullptr)
        return E_POINTER;
    *ppSample = new (std::nothrow) pal::Sample;
    return *ppSample != nullptr ? S_OK : E_OUTOFMEMORY;
}

extern "C" HRESULT MFCreateMemoryBuffer(DWORD cbMaxLength, IMFMediaBuffer** ppBuffer)
{
    if (ppBuffer == nullptr)
        return E_POINTER;
    *ppBuffer = nullptr;
    try
    {
        *ppBuffer = new pal::MemoryBuffer(cbMaxLength);
        return S_OK;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
}
