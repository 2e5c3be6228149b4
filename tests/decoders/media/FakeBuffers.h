/// @file FakeBuffers.h
/// The memory that the scripted source reader hands out.
#pragma once

#include "tests/decoders/media/FakeMedia.h"
#include "tests/model/AllocationFailure.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace fake_media
{
/// One operation at a time, with all the memory it needs: short memory is for the code under test.
class CScope
{
public:
    explicit CScope(const FakeMedia& media) : m_guard(media.lock) {}

private:
    CAllocationPause m_pause;
    std::lock_guard<std::mutex> m_guard;
};

/// Count of references for objects of one interface; more identifiers through Find().
template <class Derived, class Interface> class Counted : public Interface
{
public:
    explicit Counted(std::atomic<int>& live) : m_live(live) { ++m_live; }
    virtual ~Counted() { --m_live; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override
    {
        *ppObject = iid == IID_IUnknown ? static_cast<Interface*>(this) : static_cast<Derived*>(this)->Find(iid);
        if (*ppObject == nullptr)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_count; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = --m_count;
        if (left == 0)
            delete this;
        return left;
    }

private:
    std::atomic<ULONG> m_count{1};
    std::atomic<int>& m_live;
};

// ---- picture memory --------------------------------------------------------------------------------------------

class FakeBuffer;

/// The picture side of a buffer; counts with it.
class FakeBuffer2D final : public IMF2DBuffer
{
public:
    explicit FakeBuffer2D(FakeBuffer& owner) : m_owner(owner) {}
    ~FakeBuffer2D() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE Lock2D(BYTE** ppScanline0, LONG* pPitch) override;
    HRESULT STDMETHODCALLTYPE Unlock2D() override;
    HRESULT STDMETHODCALLTYPE GetScanline0AndPitch(BYTE**, LONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsContiguousFormat(BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetContiguousLength(DWORD* pcbLength) override;
    HRESULT STDMETHODCALLTYPE ContiguousCopyTo(BYTE*, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ContiguousCopyFrom(const BYTE*, DWORD) override { return E_NOTIMPL; }

private:
    FakeBuffer& m_owner;
};

class FakeBuffer final : public Counted<FakeBuffer, IMFMediaBuffer>
{
public:
    FakeBuffer(const FakePicture& picture, const FakeMedia& media)
        : Counted(CFakeSystem::LiveBuffers()), m_picture(picture), m_media(media), m_side(*this)
    {
        const std::uint32_t cbRow = picture.width * 4;
        m_pitch = picture.pitch != 0 ? picture.pitch : static_cast<std::int32_t>(cbRow);
        const auto cbStep = static_cast<std::size_t>(std::abs(m_pitch));
        const std::size_t rows = picture.height;
        // Rows lie a pitch apart, and nothing follows the last row.
        m_bytes.resize((rows != 0 ? (rows - 1) * cbStep : 0) + std::min<std::size_t>(cbRow, cbStep));
        if (picture.truncated)
            m_bytes.resize(m_bytes.size() - 4);
        m_bytes.shrink_to_fit();
        for (std::uint32_t y = 0; y < rows; ++y)
        {
            for (std::uint32_t x = 0; x < picture.width; ++x)
            {
                const std::size_t at = (m_pitch < 0 ? rows - 1 - y : y) * cbStep + std::size_t{x} * 4;
                const std::uint32_t color = picture.pixel(x, y);
                if (at + 4 <= m_bytes.size())
                    std::memcpy(m_bytes.data() + at, &color, 4);
            }
        }
    }

    void* Find(REFIID iid)
    {
        if (iid == IID_IMFMediaBuffer)
            return static_cast<IMFMediaBuffer*>(this);
        return iid == IID_IMF2DBuffer && m_picture.is2D ? static_cast<IMF2DBuffer*>(&m_side) : nullptr;
    }
    HRESULT STDMETHODCALLTYPE Lock(BYTE** ppBuffer, DWORD* pcbMaxLength, DWORD* pcbCurrentLength) override
    {
        const CScope scope(m_media);
        if (m_media.failing.count("Lock") != 0)
            return E_FAIL;
        ++CFakeSystem::OpenLocks();
        *ppBuffer = m_bytes.data();
        if (pcbMaxLength != nullptr)
            *pcbMaxLength = static_cast<DWORD>(m_bytes.size());
        if (pcbCurrentLength != nullptr)
            *pcbCurrentLength = static_cast<DWORD>(m_bytes.size());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Unlock() override
    {
        --CFakeSystem::OpenLocks();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetCurrentLength(DWORD* pcb) override
    {
        *pcb = static_cast<DWORD>(m_bytes.size());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetCurrentLength(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMaxLength(DWORD* pcb) override { return GetCurrentLength(pcb); }

    HRESULT LockPicture(BYTE** ppScanline0, LONG* pPitch)
    {
        const CScope scope(m_media);
        if (m_media.failing.count("Lock2D") != 0)
            return E_FAIL;
        ++CFakeSystem::OpenLocks();
        const std::size_t rows = m_picture.height;
        *ppScanline0 = m_bytes.data() + (m_pitch < 0 ? (rows - 1) * static_cast<std::size_t>(-m_pitch) : 0);
        *pPitch = m_pitch;
        return S_OK;
    }
    HRESULT ContiguousLength(DWORD* pcb) const
    {
        const CScope scope(m_media);
        if (m_media.failing.count("GetContiguousLength") != 0)
            return E_FAIL;
        *pcb = m_picture.width * 4 * m_picture.height - (m_picture.truncated ? 4 : 0);
        return S_OK;
    }

private:
    const FakePicture m_picture;
    const FakeMedia& m_media;
    FakeBuffer2D m_side;
    std::int32_t m_pitch = 0;
    std::vector<BYTE> m_bytes;
};

inline HRESULT FakeBuffer2D::QueryInterface(REFIID iid, void** ppObject)
{
    return m_owner.QueryInterface(iid, ppObject);
}
inline ULONG FakeBuffer2D::AddRef()
{
    return m_owner.AddRef();
}
inline ULONG FakeBuffer2D::Release()
{
    return m_owner.Release();
}
inline HRESULT FakeBuffer2D::Lock2D(BYTE** ppScanline0, LONG* pPitch)
{
    return m_owner.LockPicture(ppScanline0, pPitch);
}
inline HRESULT FakeBuffer2D::Unlock2D()
{
    return m_owner.Unlock();
}
inline HRESULT FakeBuffer2D::GetContiguousLength(DWORD* pcbLength)
{
    return m_owner.ContiguousLength(pcbLength);
}

/// A block of sound.
class FakeBytes final : public Counted<FakeBytes, IMFMediaBuffer>
{
public:
    FakeBytes(const std::vector<std::uint8_t>& bytes, const FakeMedia& media)
        : Counted(CFakeSystem::LiveBuffers()), m_media(media), m_bytes(bytes)
    {
        m_bytes.shrink_to_fit();
    }
    void* Find(REFIID iid) { return iid == IID_IMFMediaBuffer ? static_cast<IMFMediaBuffer*>(this) : nullptr; }
    HRESULT STDMETHODCALLTYPE Lock(BYTE** ppBuffer, DWORD* pcbMaxLength, DWORD* pcbCurrentLength) override
    {
        const CScope scope(m_media);
        if (m_media.failing.count("Lock") != 0)
            return E_FAIL;
        ++CFakeSystem::OpenLocks();
        *ppBuffer = m_bytes.data();
        if (pcbMaxLength != nullptr)
            *pcbMaxLength = static_cast<DWORD>(m_bytes.size());
        return pcbCurrentLength != nullptr ? GetCurrentLength(pcbCurrentLength) : S_OK;
    }
    HRESULT STDMETHODCALLTYPE Unlock() override
    {
        --CFakeSystem::OpenLocks();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetCurrentLength(DWORD* pcb) override
    {
        *pcb = static_cast<DWORD>(m_bytes.size());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetCurrentLength(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMaxLength(DWORD* pcb) override { return GetCurrentLength(pcb); }

private:
    const FakeMedia& m_media;
    std::vector<BYTE> m_bytes;
};
} // namespace fake_media
