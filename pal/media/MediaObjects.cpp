#include "pal/media/Attributes.h"

#include <mfapi.h>
#include <mferror.h>
#include <mfidl.h>

#include <new>

namespace pal
{
namespace
{
class Attributes final : public AttributesImpl<ComObject<Attributes, IMFAttributes>>
{
};

class MediaType final : public AttributesImpl<ComObject<MediaType, IMFMediaType, IMFAttributes>>
{
public:
    HRESULT STDMETHODCALLTYPE GetMajorType(GUID* pMajorType) override { return GetGUID(MF_MT_MAJOR_TYPE, pMajorType); }
};
} // namespace
} // namespace pal

extern "C" HRESULT MFCreateAttributes(IMFAttributes** ppAttributes, UINT32)
{
    if (ppAttributes == nullptr)
        return E_POINTER;
    *ppAttributes = new (std::nothrow) pal::Attributes;
    return *ppAttributes != nullptr ? S_OK : E_OUTOFMEMORY;
}

extern "C" HRESULT MFCreateMediaType(IMFMediaType** ppType)
{
    if (ppType == nullptr)
        return E_POINTER;
    *ppType = new (std::nothrow) pal::MediaType;
    return *ppType != nullptr ? S_OK : E_OUTOFMEMORY;
}

extern "C" HRESULT MFGetService(IUnknown* pObject, REFGUID service, REFIID iid, LPVOID* ppObject)
{
    if (pObject == nullptr || ppObject == nullptr)
        return E_POINTER;
    *ppObject = nullptr;
    IMFGetService* pServices = nullptr;
    if (FAILED(pObject->QueryInterface(IID_PPV_ARGS(&pServices))))
        return MF_E_UNSUPPORTED_SERVICE;
    const HRESULT hr = pServices->GetService(service, iid, ppObject);
    pServices->Release();
    return hr;
}
