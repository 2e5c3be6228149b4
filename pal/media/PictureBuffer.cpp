#include "pal/media/PictureBuffer.h"
#include "pal/kernel/ComObject.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace pal
{
namespace
{
class PictureBuffer;

/// The 2D face of a picture buffer; references count on the buffer.
class Picture2D final : public IMF2DBuffer
{
public:
    explicit Picture2D(PictureBuffer& owner) : m_owner(owner) {}
    ~Picture2D() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE Lock2D(BYTE** ppScanline0, LONG* pPitch) override;
    HRESULT STDMETHODCALLTYPE Unlock2D() override;
    HRESULT STDMETHODCALLTYPE GetScanline0AndPitch(BYTE** ppScanline0, LONG* pPitch) override;
    HRESULT STDMETHODCALLTYPE IsContiguousFormat(BOOL* pIsContiguous) override;
    HRESULT STDMETHODCALLTYPE GetContiguousLength(DWORD* pcbLength) override;
    HRESULT STDMETHODCALLTYPE ContiguousCopyTo(BYTE* pDestination, DWORD cbDestination) override;
    HRESULT STDMETHODCALLTYPE ContiguousCopyFrom(const BYTE*, DWORD) override { return E_NOTIMPL; }

private:
    PictureBuffer& m_owner;
};

class PictureBuffer final : public ComObject<PictureBuffer, IMFMediaBuffer>
{
public:
    PictureBuffer(std::shared_ptr<AVFrame> pFrame, std::shared_ptr<PictureConverter> pConverter)
        : m_pFrame(std::move(pFrame)), m_pConverter(std::move(pConverter)), m_2d(*this)
    {
    }
    ~PictureBuffer() { ReleasePixels(); }

    HRESULT QueryFurther(REFIID iid, void** ppObject)
    {
        if (iid != IID_IMF2DBuffer)
            return E_NOINTERFACE;
        AddRef();
        *ppObject = static_cast<IMF2DBuffer*>(&m_2d);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Lock(BYTE** ppBuffer, DWORD* pcbMaxLength, DWORD* pcbCurrentLength) override
    {
        if (ppBuffer == nullptr)
            return E_POINTER;
        *ppBuffer = nullptr;
        const HRESULT hr = LockPixels();
        if (FAILED(hr))
            return hr;
        *ppBuffer = m_pixels.get();
        if (pcbMaxLength != nullptr)
            *pcbMaxLength = Length();
        if (pcbCurrentLength != nullptr)
            *pcbCurrentLength = Length();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Unlock() override
    {
        if (m_locks == 0)
            return E_UNEXPECTED;
        if (--m_locks == 0)
            ReleasePixels();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetCurrentLength(DWORD* pcbCurrentLength) override
    {
        return GetMaxLength(pcbCurrentLength);
    }
    HRESULT STDMETHODCALLTYPE SetCurrentLength(DWORD cbCurrentLength) override
    {
        return cbCurrentLength == Length() ? S_OK : E_INVALIDARG;
    }
    HRESULT STDMETHODCALLTYPE GetMaxLength(DWORD* pcbMaxLength) override
    {
        if (pcbMaxLength == nullptr)
            return E_POINTER;
        *pcbMaxLength = Length();
        return S_OK;
    }

    /// Converts into memory of the caller, where the picture has not been converted for a lock anyway.
    HRESULT CopyPixels(BYTE* pDestination)
    {
        if (m_pixels)
            std::memcpy(pDestination, m_pixels.get(), Length());
        else if (!m_pConverter->Convert(*m_pFrame, pDestination))
            return E_FAIL;
        return S_OK;
    }

    const PictureFormat& GetFormat() const { return m_pConverter->GetFormat(); }
    DWORD Length() const { return static_cast<DWORD>(GetFormat().Bytes()); }
    BYTE* Pixels() const { return m_pixels.get(); }

private:
    HRESULT LockPixels()
    {
        if (m_locks++ > 0)
            return S_OK;
        const std::size_t cb = GetFormat().Bytes();
        m_pixels = m_pConverter->GetPool().Take(cb);
        if (m_pixels && m_pConverter->Convert(*m_pFrame, m_pixels.get()))
            return S_OK;
        m_locks = 0;
        const HRESULT hr = m_pixels ? E_FAIL : E_OUTOFMEMORY;
        ReleasePixels();
        return hr;
    }
    void ReleasePixels()
    {
        if (m_pixels)
            m_pConverter->GetPool().GiveBack(std::move(m_pixels), GetFormat().Bytes());
    }

    std::shared_ptr<AVFrame> m_pFrame;
    std::shared_ptr<PictureConverter> m_pConverter;
    Picture2D m_2d;
    PixelPool::Block m_pixels;
    unsigned m_locks = 0;
};

HRESULT Picture2D::QueryInterface(REFIID iid, void** ppObject)
{
    return m_owner.QueryInterface(iid, ppObject);
}
ULONG Picture2D::AddRef()
{
    return m_owner.AddRef();
}
ULONG Picture2D::Release()
{
    return m_owner.Release();
}
HRESULT Picture2D::Lock2D(BYTE** ppScanline0, LONG* pPitch)
{
    if (pPitch == nullptr)
        return E_POINTER;
    *pPitch = static_cast<LONG>(m_owner.GetFormat().Stride());
    return m_owner.Lock(ppScanline0, nullptr, nullptr);
}
HRESULT Picture2D::Unlock2D()
{
    return m_owner.Unlock();
}
HRESULT Picture2D::GetScanline0AndPitch(BYTE** ppScanline0, LONG* pPitch)
{
    if (ppScanline0 == nullptr || pPitch == nullptr)
        return E_POINTER;
    *ppScanline0 = m_owner.Pixels();
    *pPitch = static_cast<LONG>(m_owner.GetFormat().Stride());
    return *ppScanline0 != nullptr ? S_OK : E_UNEXPECTED;
}
HRESULT Picture2D::IsContiguousFormat(BOOL* pIsContiguous)
{
    if (pIsContiguous == nullptr)
        return E_POINTER;
    *pIsContiguous = TRUE;
    return S_OK;
}
HRESULT Picture2D::GetContiguousLength(DWORD* pcbLength)
{
    return m_owner.GetMaxLength(pcbLength);
}
HRESULT Picture2D::ContiguousCopyTo(BYTE* pDestination, DWORD cbDestination)
{
    if (pDestination == nullptr)
        return E_POINTER;
    if (cbDestination < m_owner.Length())
        return E_INVALIDARG;
    return m_owner.CopyPixels(pDestination);
}
} // namespace

HRESULT CreatePictureBuffer(std::shared_ptr<AVFrame> pFrame, std::shared_ptr<PictureConverter> pConverter,
                            IMFMediaBuffer** ppBuffer)
{
    *ppBuffer = new (std::nothrow) PictureBuffer(std::move(pFrame), std::move(pConverter));
    return *ppBuffer != nullptr ? S_OK : E_OUTOFMEMORY;
}
} // namespace pal
