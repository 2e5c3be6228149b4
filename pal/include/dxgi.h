/// @file dxgi.h
/// DXGI: pixel formats and surfaces.
#pragma once

#include <windows.h>

inline constexpr HRESULT DXGI_ERROR_INVALID_CALL = static_cast<HRESULT>(0x887A0001U);
inline constexpr HRESULT DXGI_ERROR_UNSUPPORTED = static_cast<HRESULT>(0x887A0004U);
inline constexpr HRESULT DXGI_ERROR_DEVICE_REMOVED = static_cast<HRESULT>(0x887A0005U);

enum DXGI_FORMAT : int
{
    DXGI_FORMAT_UNKNOWN = 0,
    DXGI_FORMAT_R8G8B8A8_UNORM = 28,
    DXGI_FORMAT_B8G8R8A8_UNORM = 87 ///< bytes B, G, R, A
};

struct DXGI_SAMPLE_DESC
{
    UINT Count;
    UINT Quality;
};

struct DXGI_SURFACE_DESC
{
    UINT Width;
    UINT Height;
    DXGI_FORMAT Format;
    DXGI_SAMPLE_DESC SampleDesc;
};

struct DXGI_MAPPED_RECT
{
    INT Pitch;   ///< bytes from one row to the next
    BYTE* pBits; ///< first row
};

inline constexpr UINT DXGI_MAP_READ = 1;
inline constexpr UINT DXGI_MAP_WRITE = 2;
inline constexpr UINT DXGI_MAP_DISCARD = 4;

struct IDXGIObject : public IUnknown
{
protected:
    ~IDXGIObject() = default;
};
PAL_DECLARE_IID(IDXGIObject, IID_IDXGIObject, 0xAEC22FB8U, 0x76F3, 0x4639, 0x9B, 0xE0, 0x28, 0xEB, 0x43, 0xA6, 0x7A,
                0x2E);

struct IDXGIDeviceSubObject : public IDXGIObject
{
protected:
    ~IDXGIDeviceSubObject() = default;
};
PAL_DECLARE_IID(IDXGIDeviceSubObject, IID_IDXGIDeviceSubObject, 0x3D3E0379U, 0xF9DE, 0x4D58, 0xBB, 0x6C, 0x18, 0xD6,
                0x29, 0x92, 0xF1, 0xA6);

/// The pixels of a texture. Map and Unmap come in pairs, from one thread at a time.
struct IDXGISurface : public IDXGIDeviceSubObject
{
    virtual HRESULT STDMETHODCALLTYPE GetDesc(DXGI_SURFACE_DESC* pDesc) = 0;
    /// @param mapFlags  DXGI_MAP_READ or DXGI_MAP_WRITE, or both, as the texture's CPU access allows.
    /// @retval E_INVALIDARG  no flag, or one that the texture does not allow
    /// @retval DXGI_ERROR_INVALID_CALL  mapped already
    virtual HRESULT STDMETHODCALLTYPE Map(DXGI_MAPPED_RECT* pLockedRect, UINT mapFlags) = 0;
    /// @retval DXGI_ERROR_INVALID_CALL  not mapped
    virtual HRESULT STDMETHODCALLTYPE Unmap() = 0;

protected:
    ~IDXGISurface() = default;
};
PAL_DECLARE_IID(IDXGISurface, IID_IDXGISurface, 0xCAFCB56CU, 0x6AC3, 0x4889, 0xBF, 0x47, 0x9E, 0x23, 0xBB, 0xD2, 0x60,
                0xEC);
