/// @file mfidl.h
/// Media sources: their attributes, their services, and the resolver that makes them.
#pragma once

#include <mfobjects.h>

struct IPropertyStore;

/// UINT64, 100 ns: duration of a presentation.
inline constexpr GUID MF_PD_DURATION{0x6C990D33U, 0xBB8E, 0x477A, {0x85, 0x98, 0x0D, 0x5D, 0x96, 0xFC, 0xD8, 0x8A}};

/// Service of a media source: the properties of its file, as an IPropertyStore.
inline constexpr GUID MF_PROPERTY_HANDLER_SERVICE{
    0xA3FACE02U, 0x32B8, 0x41DD, {0x90, 0xE7, 0x5F, 0xEF, 0x7C, 0x89, 0x91, 0xB5}};

enum MF_OBJECT_TYPE
{
    MF_OBJECT_MEDIASOURCE = 0,
    MF_OBJECT_BYTESTREAM = 1,
    MF_OBJECT_INVALID = 2
};

inline constexpr DWORD MF_RESOLUTION_MEDIASOURCE = 1;

/// A file as the source of streams. Here it tells about its file and delivers none: the source reader does.
struct IMFMediaSource : public IUnknown
{
    /// Gives up what the source holds; called before the last Release(). @retval MF_E_SHUTDOWN  already done
    virtual HRESULT STDMETHODCALLTYPE Shutdown() = 0;

protected:
    ~IMFMediaSource() = default;
};
PAL_DECLARE_IID(IMFMediaSource, IID_IMFMediaSource, 0x279A808DU, 0xAEC7, 0x40C8, 0x9C, 0x6B, 0xA6, 0xB4, 0x92, 0xC7,
                0x8A, 0x66);

/// Asks an object for what it offers beside its own interfaces.
struct IMFGetService : public IUnknown
{
    /// @retval MF_E_UNSUPPORTED_SERVICE  @retval E_NOINTERFACE  the service has no such interface
    virtual HRESULT STDMETHODCALLTYPE GetService(REFGUID service, REFIID iid, LPVOID* ppObject) = 0;

protected:
    ~IMFGetService() = default;
};
PAL_DECLARE_IID(IMFGetService, IID_IMFGetService, 0xFA993888U, 0x4383, 0x415A, 0xA9, 0x30, 0xDD, 0x47, 0x2A, 0x8C, 0xF6,
                0xF7);

/// Makes media sources of addresses.
struct IMFSourceResolver : public IUnknown
{
    /// @param url          path of a local file
    /// @param flags        MF_RESOLUTION_MEDIASOURCE
    /// @param pProperties  borrowed; may be null
    /// @param pObjectType  [out] MF_OBJECT_MEDIASOURCE
    /// @param ppObject     [out] one reference; ask it for IMFMediaSource
    virtual HRESULT STDMETHODCALLTYPE CreateObjectFromURL(LPCWSTR url, DWORD flags, IPropertyStore* pProperties,
                                                          MF_OBJECT_TYPE* pObjectType, IUnknown** ppObject) = 0;

protected:
    ~IMFSourceResolver() = default;
};
PAL_DECLARE_IID(IMFSourceResolver, IID_IMFSourceResolver, 0xFBE5A32DU, 0xA497, 0x4B61, 0xBB, 0x85, 0x97, 0xB1, 0xA8,
                0x48, 0xA6, 0xE3);

extern "C"
{
    HRESULT MFCreateSourceResolver(IMFSourceResolver** ppResolver);
    /// Asks @p pObject, which is borrowed, through its IMFGetService.
    /// @retval MF_E_UNSUPPORTED_SERVICE  it has no such service, or none at all
    HRESULT MFGetService(IUnknown* pObject, REFGUID service, REFIID iid, LPVOID* ppObject);
}
