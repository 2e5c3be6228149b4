/// @file d3d11.h
/// Direct3D 11 as far as the engine uses it: creating a device that media components share.
#pragma once

#include <windows.h>

struct IDXGIAdapter;
struct ID3D11DeviceContext;

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
inline constexpr HRESULT DXGI_ERROR_UNSUPPORTED = static_cast<HRESULT>(0x887A0004U);

struct ID3D11Device : public IUnknown
{
    virtual D3D_FEATURE_LEVEL STDMETHODCALLTYPE GetFeatureLevel() = 0;
    virtual UINT STDMETHODCALLTYPE GetCreationFlags() = 0;

protected:
    ~ID3D11Device() = default;
};
PAL_DECLARE_IID(ID3D11Device, IID_ID3D11Device, 0xDB6F6DDBU, 0xAC77, 0x4E88, 0x82, 0x53, 0x81, 0x9D, 0xF9, 0xBB, 0xF1,
                0x40);

/// Makes a device. A hardware device needs hardware that this layer can drive: without it the call answers
/// DXGI_ERROR_UNSUPPORTED and null. D3D_DRIVER_TYPE_WARP always succeeds: its textures are plain memory.
extern "C" HRESULT D3D11CreateDevice(IDXGIAdapter* pAdapter, D3D_DRIVER_TYPE driverType, HMODULE software, UINT flags,
                                     const D3D_FEATURE_LEVEL* pFeatureLevels, UINT featureLevels, UINT sdkVersion,
                                     ID3D11Device** ppDevice, D3D_FEATURE_LEVEL* pFeatureLevel,
                                     ID3D11DeviceContext** ppImmediateContext);
