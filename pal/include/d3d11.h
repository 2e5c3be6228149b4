/// @file d3d11.h
/// Direct3D 11 as far as the engine uses it: a device that media components share, and textures to draw into.
#pragma once

#include <dxgi.h>

struct IDXGIAdapter;

enum D3D_DRIVER_TYPE
{
    D3D_DRIVER_TYPE_UNKNOWN = 0,
    D3D_DRIVER_TYPE_HARDWARE = 1,
    D3D_DRIVER_TYPE_REFERENCE = 2,
    D3D_DRIVER_TYPE_NULL = 3,
    D3D_DRIVER_TYPE_SOFTWARE = 4,
    D3D_DRIVER_TYPE_WARP = 5
};
enum D3D_FEATURE_LEVEL
{
    D3D_FEATURE_LEVEL_10_0 = 0xA000,
    D3D_FEATURE_LEVEL_10_1 = 0xA100,
    D3D_FEATURE_LEVEL_11_0 = 0xB000,
    D3D_FEATURE_LEVEL_11_1 = 0xB100
};
inline constexpr UINT D3D11_SDK_VERSION = 7;
inline constexpr UINT D3D11_CREATE_DEVICE_BGRA_SUPPORT = 0x20;
inline constexpr UINT D3D11_CREATE_DEVICE_VIDEO_SUPPORT = 0x800;

enum D3D11_USAGE : int
{
    D3D11_USAGE_DEFAULT = 0,   ///< drawn into
    D3D11_USAGE_IMMUTABLE = 1, ///< not supported here
    D3D11_USAGE_DYNAMIC = 2,   ///< not supported here
    D3D11_USAGE_STAGING = 3    ///< copied to and from, and mapped
};
enum D3D11_BIND_FLAG : UINT
{
    D3D11_BIND_SHADER_RESOURCE = 0x8,
    D3D11_BIND_RENDER_TARGET = 0x20
};
enum D3D11_CPU_ACCESS_FLAG : UINT
{
    D3D11_CPU_ACCESS_WRITE = 0x10000,
    D3D11_CPU_ACCESS_READ = 0x20000
};

struct D3D11_TEXTURE2D_DESC
{
    UINT Width;
    UINT Height;
    UINT MipLevels;
    UINT ArraySize;
    DXGI_FORMAT Format;
    DXGI_SAMPLE_DESC SampleDesc;
    D3D11_USAGE Usage;
    UINT BindFlags;
    UINT CPUAccessFlags;
    UINT MiscFlags;
};

struct D3D11_SUBRESOURCE_DATA
{
    const void* pSysMem;
    UINT SysMemPitch;
    UINT SysMemSlicePitch;
};

struct ID3D11DeviceChild : public IUnknown
{
protected:
    ~ID3D11DeviceChild() = default;
};
PAL_DECLARE_IID(ID3D11DeviceChild, IID_ID3D11DeviceChild, 0x1841E5C8U, 0x16B0, 0x489B, 0xBC, 0xC8, 0x44, 0xCF, 0xB0,
                0xD5, 0xDE, 0xAE);

struct ID3D11Resource : public ID3D11DeviceChild
{
protected:
    ~ID3D11Resource() = default;
};
PAL_DECLARE_IID(ID3D11Resource, IID_ID3D11Resource, 0xDC8E63F3U, 0xD12B, 0x4952, 0xB4, 0x7B, 0x5E, 0x45, 0x02, 0x6A,
                0x86, 0x2D);

/// A picture in memory. Answers QueryInterface for IDXGISurface as well.
struct ID3D11Texture2D : public ID3D11Resource
{
    virtual void STDMETHODCALLTYPE GetDesc(D3D11_TEXTURE2D_DESC* pDesc) = 0;

protected:
    ~ID3D11Texture2D() = default;
};
PAL_DECLARE_IID(ID3D11Texture2D, IID_ID3D11Texture2D, 0x6F15AAF2U, 0xD208, 0x4E89, 0x9A, 0xB4, 0x48, 0x95, 0x35, 0xD3,
                0x4F, 0x9C);

struct ID3D11DeviceContext : public ID3D11DeviceChild
{
    /// Copies every pixel. Nothing happens when the two differ in size, are one, or one of them is mapped.
    virtual void STDMETHODCALLTYPE CopyResource(ID3D11Resource* pDestination, ID3D11Resource* pSource) = 0;

protected:
    ~ID3D11DeviceContext() = default;
};
PAL_DECLARE_IID(ID3D11DeviceContext, IID_ID3D11DeviceContext, 0xC0BFA96CU, 0xE089, 0x44FB, 0x8E, 0xAF, 0x26, 0xF8, 0x79,
                0x61, 0x90, 0xDA);

struct ID3D11Device : public IUnknown
{
    /// Makes a picture, transparent black. Here: DXGI_FORMAT_B8G8R8A8_UNORM, sides of 1 to 16,384 pixels, one mip
    /// level, one element, one sample, default usage (bound as render target or shader resource) or staging (CPU
    /// access).
    /// @param pInitialData  must be null (E_NOTIMPL).  @param ppTexture  null only checks the description: S_FALSE.
    /// @retval E_INVALIDARG  any other description.  @retval E_OUTOFMEMORY  memory is short
    virtual HRESULT STDMETHODCALLTYPE CreateTexture2D(const D3D11_TEXTURE2D_DESC* pDesc,
                                                      const D3D11_SUBRESOURCE_DATA* pInitialData,
                                                      ID3D11Texture2D** ppTexture) = 0;
    virtual D3D_FEATURE_LEVEL STDMETHODCALLTYPE GetFeatureLevel() = 0;
    virtual UINT STDMETHODCALLTYPE GetCreationFlags() = 0;

protected:
    ~ID3D11Device() = default;
};
PAL_DECLARE_IID(ID3D11Device, IID_ID3D11Device, 0xDB6F6DDBU, 0xAC77, 0x4E88, 0x82, 0x53, 0x81, 0x9D, 0xF9, 0xBB, 0xF1,
                0x40);

/// Makes a device and its context; either out-pointer may be null. A hardware device needs hardware that this layer can
/// drive: without it the call answers DXGI_ERROR_UNSUPPORTED and null. D3D_DRIVER_TYPE_WARP always succeeds: its
/// textures are plain memory.
extern "C" HRESULT D3D11CreateDevice(IDXGIAdapter* pAdapter, D3D_DRIVER_TYPE driverType, HMODULE software, UINT flags,
                                     const D3D_FEATURE_LEVEL* pFeatureLevels, UINT featureLevels, UINT sdkVersion,
                                     ID3D11Device** ppDevice, D3D_FEATURE_LEVEL* pFeatureLevel,
                                     ID3D11DeviceContext** ppImmediateContext);
