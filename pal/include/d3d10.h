/// @file d3d10.h
/// The multithread protection of a Direct3D device.
#pragma once

#include <windows.h>

struct ID3D10Multithread : public IUnknown
{
    virtual void STDMETHODCALLTYPE Enter() = 0;
    virtual void STDMETHODCALLTYPE Leave() = 0;
    /// @return the previous setting.
    virtual BOOL STDMETHODCALLTYPE SetMultithreadProtected(BOOL protect) = 0;
    virtual BOOL STDMETHODCALLTYPE GetMultithreadProtected() = 0;

protected:
    ~ID3D10Multithread() = default;
};
PAL_DECLARE_IID(ID3D10Multithread, IID_ID3D10Multithread, 0x9B7E4E00U, 0x342C, 0x4106, 0xA1, 0x9F, 0x4F, 0x27, 0x04,
                0xF6, 0x89, 0xF0);
