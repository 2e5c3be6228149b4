#include <propvarutil.h>

#include <cstdint>

extern "C" HRESULT PropVariantClear(PROPVARIANT* pVariant)
{
    if (pVariant != nullptr)
        PropVariantInit(pVariant); // none of the kinds declared owns memory
    return S_OK;
}

extern "C" HRESULT PropVariantToInt64(const PROPVARIANT& variant, LONGLONG* pValue)
{
    if (pValue == nullptr)
        return E_POINTER;
    switch (variant.vt)
    {
    case VT_I4:
        *pValue = variant.lVal;
        return S_OK;
    case VT_UI4:
        *pValue = variant.ulVal;
        return S_OK;
    case VT_I8:
        *pValue = variant.hVal.QuadPart;
        return S_OK;
    case VT_UI8:
        if (variant.uhVal.QuadPart > static_cast<UINT64>(INT64_MAX))
            return E_INVALIDARG;
        *pValue = static_cast<LONGLONG>(variant.uhVal.QuadPart);
        return S_OK;
    default:
        return E_INVALIDARG;
    }
}
