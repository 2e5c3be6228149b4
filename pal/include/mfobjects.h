/// @file mfobjects.h
/// Media Foundation objects: attributes, media types, samples and buffers.
#pragma once

#include <windows.h>

struct PROPVARIANT;

/// A set of values keyed by GUID. Getters answer MF_E_ATTRIBUTENOTFOUND for an absent key and
/// MF_E_INVALIDTYPE for a key that holds another type.
struct IMFAttributes : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetUINT32(REFGUID key, UINT32* pValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetUINT64(REFGUID key, UINT64* pValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDouble(REFGUID key, double* pValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetGUID(REFGUID key, GUID* pValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetUnknown(REFGUID key, REFIID iid, void** ppObject) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteItem(REFGUID key) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteAllItems() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetUINT32(REFGUID key, UINT32 value) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetUINT64(REFGUID key, UINT64 value) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDouble(REFGUID key, double value) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetGUID(REFGUID key, REFGUID value) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetUnknown(REFGUID key, IUnknown* pObject) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetCount(UINT32* pCount) = 0;
    /// Replaces everything in @p pDestination by the items of this set.
    virtual HRESULT STDMETHODCALLTYPE CopyAllItems(IMFAttributes* pDestination) = 0;

protected:
    ~IMFAttributes() = default;
};
PAL_DECLARE_IID(IMFAttributes, IID_IMFAttributes, 0x2CD2D921U, 0xC447, 0x44A7, 0xA1, 0x3C, 0x4A, 0xDA, 0xBF, 0xC2, 0x47,
                0xE3);

struct IMFMediaType : public IMFAttributes
{
    virtual HRESULT STDMETHODCALLTYPE GetMajorType(GUID* pMajorType) = 0;

protected:
    ~IMFMediaType() = default;
};
PAL_DECLARE_IID(IMFMediaType, IID_IMFMediaType, 0x44AE0FA8U, 0xEA31, 0x4109, 0x8D, 0x2E, 0x4C, 0xAE, 0x49, 0x97, 0xC5,
                0x55);

/// A block of media memory. Lock and Unlock come in pairs, from one thread at a time.
struct IMFMediaBuffer : public IUnknown
{
    /// Contiguous view of the memory, valid until Unlock().
    virtual HRESULT STDMETHODCALLTYPE Lock(BYTE** ppBuffer, DWORD* pcbMaxLength, DWORD* pcbCurrentLength) = 0;
    virtual HRESULT STDMETHODCALLTYPE Unlock() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetCurrentLength(DWORD* pcbCurrentLength) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetCurrentLength(DWORD cbCurrentLength) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMaxLength(DWORD* pcbMaxLength) = 0;

protected:
    ~IMFMediaBuffer() = default;
};
PAL_DECLARE_IID(IMFMediaBuffer, IID_IMFMediaBuffer, 0x045FA593U, 0x8799, 0x42B8, 0xBC, 0x8D, 0x89, 0x68, 0xC6, 0x45,
                0x35, 0x07);

/// Picture memory with a row pitch. Reached from an IMFMediaBuffer through QueryInterface.
struct IMF2DBuffer : public IUnknown
{
    /// Top row and bytes from one row to the next, valid until Unlock2D().
    virtual HRESULT STDMETHODCALLTYPE Lock2D(BYTE** ppScanline0, LONG* pPitch) = 0;
    virtual HRESULT STDMETHODCALLTYPE Unlock2D() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetScanline0AndPitch(BYTE** ppScanline0, LONG* pPitch) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsContiguousFormat(BOOL* pIsContiguous) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetContiguousLength(DWORD* pcbLength) = 0;
    virtual HRESULT STDMETHODCALLTYPE ContiguousCopyTo(BYTE* pDestination, DWORD cbDestination) = 0;
    virtual HRESULT STDMETHODCALLTYPE ContiguousCopyFrom(const BYTE* pSource, DWORD cbSource) = 0;

protected:
    ~IMF2DBuffer() = default;
};
PAL_DECLARE_IID(IMF2DBuffer, IID_IMF2DBuffer, 0x7DC9D5F9U, 0x9ED9, 0x44EC, 0x9B, 0xBF, 0x06, 0x00, 0xBB, 0x58, 0x9F,
                0xBB);

/// Time-stamped media data. Times are counts of 100 ns.
struct IMFSample : public IMFAttributes
{
    virtual HRESULT STDMETHODCALLTYPE GetSampleTime(LONGLONG* pTime) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSampleTime(LONGLONG time) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSampleDuration(LONGLONG* pDuration) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSampleDuration(LONGLONG duration) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBufferCount(DWORD* pCount) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBufferByIndex(DWORD index, IMFMediaBuffer** ppBuffer) = 0;
    /// One buffer that holds the whole sample; a sample of one buffer hands out that buffer.
    virtual HRESULT STDMETHODCALLTYPE ConvertToContiguousBuffer(IMFMediaBuffer** ppBuffer) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddBuffer(IMFMediaBuffer* pBuffer) = 0;

protected:
    ~IMFSample() = default;
};
PAL_DECLARE_IID(IMFSample, IID_IMFSample, 0xC40A00F2U, 0xB93A, 0x4D80, 0xAE, 0x8C, 0x5A, 0x1C, 0x63, 0x4F, 0x58, 0xE4);

/// Shares a Direct3D device with media components.
struct IMFDXGIDeviceManager : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE CloseDeviceHandle(HANDLE device) = 0;
    virtual HRESULT STDMETHODCALLTYPE ResetDevice(IUnknown* pDevice, UINT resetToken) = 0;

protected:
    ~IMFDXGIDeviceManager() = default;
};
PAL_DECLARE_IID(IMFDXGIDeviceManager, IID_IMFDXGIDeviceManager, 0xEB533D5DU, 0x2DB6, 0x40F8, 0x97, 0xA9, 0x49, 0x46,
                0x92, 0x01, 0x4F, 0x07);
