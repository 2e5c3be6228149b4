/// @file FakeSource.cpp
/// The scripted source resolver: media sources of the files of CFakeSystem, and their property stores.
#include "tests/decoders/media/FakeBuffers.h"

#include <mferror.h>
#include <propkey.h>
#include <propsys.h>

using namespace fake_media;

namespace
{
class FakeProperties final : public Counted<FakeProperties, IPropertyStore>
{
public:
    explicit FakeProperties(FakeMedia& media) : Counted(CFakeSystem::LiveSources()), m_media(media) {}

    void* Find(REFIID iid) { return iid == IID_IPropertyStore ? static_cast<IPropertyStore*>(this) : nullptr; }

    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* pValue) override
    {
        const CScope scope(m_media);
        PropVariantInit(pValue);
        if (m_media.failing.count("GetValue") != 0)
            return E_FAIL;
        if (key.fmtid != PKEY_Media_DateEncoded.fmtid || key.pid != PKEY_Media_DateEncoded.pid || !m_media.recorded)
            return S_OK;
        if (m_media.recordedIsNumber)
        {
            pValue->vt = VT_UI8;
            pValue->uhVal.QuadPart = *m_media.recorded;
            return S_OK;
        }
        pValue->vt = VT_FILETIME;
        pValue->filetime = {static_cast<DWORD>(*m_media.recorded), static_cast<DWORD>(*m_media.recorded >> 32)};
        return S_OK;
    }
#if defined(_WIN32)
    HRESULT STDMETHODCALLTYPE GetCount(DWORD*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetAt(DWORD, PROPERTYKEY*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY, REFPROPVARIANT) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Commit() override
    {
        return E_NOTIMPL;
    }
#endif

private:
    FakeMedia& m_media;
};

class FakeSource;

/// The services of a source; counts with it.
class FakeServices final : public IMFGetService
{
public:
    explicit FakeServices(FakeSource& source) : m_source(source) {}
    ~FakeServices() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE GetService(REFGUID service, REFIID iid, LPVOID* ppObject) override;

private:
    FakeSource& m_source;
};

class FakeSource final : public Counted<FakeSource, IMFMediaSource>
{
public:
    explicit FakeSource(FakeMedia& media) : Counted(CFakeSystem::LiveSources()), m_media(media), m_services(*this)
    {
        ++m_media.nSources;
    }

    void* Find(REFIID iid)
    {
        if (iid == IID_IMFMediaSource && !Fails("IMFMediaSource"))
            return static_cast<IMFMediaSource*>(this);
        return iid == IID_IMFGetService && !Fails("IMFGetService") ? static_cast<IMFGetService*>(&m_services) : nullptr;
    }
    HRESULT STDMETHODCALLTYPE Shutdown() override
    {
        const CScope scope(m_media);
        ++m_media.nShutdowns;
        return S_OK;
    }
#if defined(_WIN32)
    HRESULT STDMETHODCALLTYPE GetEvent(DWORD, IMFMediaEvent**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE BeginGetEvent(IMFAsyncCallback*, IUnknown*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE EndGetEvent(IMFAsyncResult*, IMFMediaEvent**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE QueueEvent(MediaEventType, REFGUID, HRESULT, const PROPVARIANT*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetCharacteristics(DWORD*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreatePresentationDescriptor(IMFPresentationDescriptor**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Start(IMFPresentationDescriptor*, const GUID*, const PROPVARIANT*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Stop() override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Pause() override
    {
        return E_NOTIMPL;
    }
#endif

    HRESULT MakeProperties(REFGUID service, REFIID iid, void** ppObject)
    {
        *ppObject = nullptr;
        if (service != MF_PROPERTY_HANDLER_SERVICE || Fails("GetService"))
            return MF_E_UNSUPPORTED_SERVICE;
        const CAllocationPause pause;
        auto* const pProperties = new FakeProperties(m_media);
        const HRESULT hr = pProperties->QueryInterface(iid, ppObject);
        pProperties->Release();
        return hr;
    }

private:
    bool Fails(const char* operation) const
    {
        const CScope scope(m_media);
        return m_media.failing.count(operation) != 0;
    }

    FakeMedia& m_media;
    FakeServices m_services;
};

HRESULT FakeServices::QueryInterface(REFIID iid, void** ppObject)
{
    return m_source.QueryInterface(iid, ppObject);
}
ULONG FakeServices::AddRef()
{
    return m_source.AddRef();
}
ULONG FakeServices::Release()
{
    return m_source.Release();
}
HRESULT FakeServices::GetService(REFGUID service, REFIID iid, LPVOID* ppObject)
{
    return m_source.MakeProperties(service, iid, ppObject);
}

class FakeResolver final : public Counted<FakeResolver, IMFSourceResolver>
{
public:
    FakeResolver() : Counted(CFakeSystem::LiveSources()) {}

    void* Find(REFIID iid) { return iid == IID_IMFSourceResolver ? static_cast<IMFSourceResolver*>(this) : nullptr; }

    HRESULT STDMETHODCALLTYPE CreateObjectFromURL(LPCWSTR url, DWORD flags, IPropertyStore* pProperties,
                                                  MF_OBJECT_TYPE* pObjectType, IUnknown** ppObject) override
    {
        *pObjectType = MF_OBJECT_INVALID;
        *ppObject = nullptr;
        if (flags != static_cast<DWORD>(MF_RESOLUTION_MEDIASOURCE) || pProperties != nullptr)
            return E_INVALIDARG;
        FakeMedia* const media = CFakeSystem::Find(url);
        if (media == nullptr)
            return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
        const CScope scope(*media);
        if (media->onResolve)
            media->onResolve();
        if (media->failing.count("CreateObjectFromURL") != 0)
            return MF_E_UNSUPPORTED_BYTESTREAM_TYPE;
        *pObjectType = MF_OBJECT_MEDIASOURCE;
        *ppObject = new FakeSource(*media);
        return S_OK;
    }
#if defined(_WIN32)
    HRESULT STDMETHODCALLTYPE CreateObjectFromByteStream(IMFByteStream*, LPCWSTR, DWORD, IPropertyStore*,
                                                         MF_OBJECT_TYPE*, IUnknown**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE BeginCreateObjectFromURL(LPCWSTR, DWORD, IPropertyStore*, IUnknown**, IMFAsyncCallback*,
                                                       IUnknown*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE EndCreateObjectFromURL(IMFAsyncResult*, MF_OBJECT_TYPE*, IUnknown**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE BeginCreateObjectFromByteStream(IMFByteStream*, LPCWSTR, DWORD, IPropertyStore*,
                                                              IUnknown**, IMFAsyncCallback*, IUnknown*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE EndCreateObjectFromByteStream(IMFAsyncResult*, MF_OBJECT_TYPE*, IUnknown**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CancelObjectCreation(IUnknown*) override
    {
        return E_NOTIMPL;
    }
#endif
};
} // namespace

extern "C" HRESULT WINAPI MFCreateSourceResolver(IMFSourceResolver** ppResolver)
{
    *ppResolver = nullptr;
    if (CFakeSystem::Fails("MFCreateSourceResolver"))
        return E_FAIL;
    const CAllocationPause pause;
    *ppResolver = new FakeResolver;
    return S_OK;
}

#if defined(_WIN32)
/// Wine's property system lacks it, and ends a program that calls it.
extern "C" HRESULT WINAPI PropVariantToFileTime(const PROPVARIANT& variant, int flags, FILETIME* pTime)
{
    if (variant.vt != VT_FILETIME || flags != 0)
        return E_INVALIDARG;
    *pTime = variant.filetime;
    return S_OK;
}
#endif
