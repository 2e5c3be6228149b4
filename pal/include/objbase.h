/// @file objbase.h
/// Creation of service objects by class.
#pragma once

#include <windows.h>

using LPUNKNOWN = IUnknown*;

inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154U);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110U);

extern "C"
{
    /// Makes an object of a class of this layer: CLSID_WICImagingFactory1 and CLSID_WICImagingFactory2.
    /// @param pOuter  must be null
    /// @retval REGDB_E_CLASSNOTREG  another class, or a context without CLSCTX_INPROC_SERVER
    HRESULT CoCreateInstance(REFCLSID clsid, LPUNKNOWN pOuter, DWORD context, REFIID iid, LPVOID* ppObject);
    /// Memory that service objects hand out, a PROPVARIANT's vectors among it.
    LPVOID CoTaskMemAlloc(SIZE_T cb);
    void CoTaskMemFree(LPVOID p);
}
