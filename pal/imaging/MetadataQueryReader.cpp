#include "pal/imaging/MetadataQueryReader.h"

#include <new>

namespace pal
{
HRESULT MetadataQueryReader::GetContainerFormat(GUID* pFormat)
{
    if (pFormat == nullptr)
        return E_INVALIDARG;
    *pFormat = m_pCodec->ContainerFormat();
    return S_OK;
}

HRESULT MetadataQueryReader::GetMetadataByName(LPCWSTR name, PROPVARIANT* pValue)
{
    if (name == nullptr)
        return E_INVALIDARG;
    try
    {
        PROPVARIANT value;
        PropVariantInit(&value);
        HRESULT hr = WINCODEC_ERR_PROPERTYNOTFOUND;
        const bool asksOrientation = _wcsicmp(name, L"System.Photo.Orientation") == 0;
        const USHORT orientation = asksOrientation && m_frame ? m_pCodec->Orientation(*m_frame) : USHORT{0};
        if (orientation != 0)
        {
            value.vt = VT_UI2;
            value.uiVal = orientation;
            hr = S_OK;
        }
        else if (!asksOrientation)
        {
            hr = m_pCodec->Query(m_frame ? &*m_frame : nullptr, name, value);
        }
        if (pValue != nullptr && SUCCEEDED(hr))
            *pValue = value;
        else
            PropVariantClear(&value);
        return hr;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
}
} // namespace pal
