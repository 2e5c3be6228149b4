#include "pal/media/MediaSource.h"
#include "pal/media/MediaFile.h"

#include <mferror.h>
#include <propkey.h>

#include <new>

namespace pal
{
// ---- properties ----------------------------------------------------------------------------------------------------

HRESULT FileProperties::GetValue(REFPROPERTYKEY key, PROPVARIANT* pValue)
{
    if (pValue == nullptr)
        return E_POINTER;
    PropVariantInit(pValue);
    if (key == PKEY_Media_DateEncoded && m_dateEncoded)
    {
        pValue->vt = VT_FILETIME;
        pValue->filetime = {static_cast<DWORD>(*m_dateEncoded), static_cast<DWORD>(*m_dateEncoded >> 32)};
    }
    return S_OK;
}

// ---- the source ----------------------------------------------------------------------------------------------------

HRESULT MediaSource::Shutdown()
{
    return m_isShutDown.exchange(true) ? MF_E_SHUTDOWN : S_OK;
}

HRESULT MediaSource::QueryFurther(REFIID iid, void** ppObject)
{
    if (iid != IID_IMFGetService)
        return E_NOINTERFACE;
    AddRef();
    *ppObject = static_cast<IMFGetService*>(&m_services);
    return S_OK;
}

HRESULT MediaSource::Services::QueryInterface(REFIID iid, void** ppObject)
{
    return m_source.QueryInterface(iid, ppObject);
}

HRESULT MediaSource::Services::GetService(REFGUID service, REFIID iid, LPVOID* ppObject)
{
    if (ppObject == nullptr)
        return E_POINTER;
    *ppObject = nullptr;
    if (m_source.m_isShutDown)
        return MF_E_SHUTDOWN;
    if (service != MF_PROPERTY_HANDLER_SERVICE)
        return MF_E_UNSUPPORTED_SERVICE;
    auto* const pProperties = new (std::nothrow) FileProperties(m_source.m_dateEncoded);
    if (pProperties == nullptr)
        return E_OUTOFMEMORY;
    const HRESULT hr = pProperties->QueryInterface(iid, ppObject);
    pProperties->Release();
    return hr;
}

// ---- the resolver --------------------------------------------------------------------------------------------------

namespace
{
class SourceResolver final : public ComObject<SourceResolver, IMFSourceResolver>
{
public:
    HRESULT STDMETHODCALLTYPE CreateObjectFromURL(LPCWSTR url, DWORD flags, IPropertyStore*,
                                                  MF_OBJECT_TYPE* pObjectType, IUnknown** ppObject) override
    {
        if (url == nullptr || pObjectType == nullptr || ppObject == nullptr)
            return E_POINTER;
        *pObjectType = MF_OBJECT_INVALID;
        *ppObject = nullptr;
        if (flags != MF_RESOLUTION_MEDIASOURCE)
            return E_INVALIDARG;
        try
        {
            MediaFile file;
            const HRESULT hr = file.OpenHeader(url);
            if (FAILED(hr))
                return hr;
            *ppObject = new MediaSource(file.GetCreationDate());
            *pObjectType = MF_OBJECT_MEDIASOURCE;
            return S_OK;
        }
        catch (const std::bad_alloc&)
        {
            return E_OUTOFMEMORY;
        }
    }
};
} // namespace
} // namespace pal

extern "C" HRESULT MFCreateSourceResolver(IMFSourceResolver** ppResolver)
{
    if (ppResolver == nullptr)
        return E_POINTER;
    *ppResolver = new (std::nothrow) pal::SourceResolver;
    return *ppResolver != nullptr ? S_OK : E_OUTOFMEMORY;
}
