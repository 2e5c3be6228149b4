#include <objbase.h>
#include <propvarutil.h>

#include <cstdint>

extern "C" HRESULT PropVariantClear(PROPVARIANT* pVariant)
{
    if (pVariant == nullptr)
        return S_OK;
    if (pVariant->vt == (VT_VECTOR | VT_UI1)) // the one kind that owns memory
        CoTaskMemFree(pVariant->caub.pElems);
    PropVariantInit(pVariant);
    return S_OK;
}

extern "C" HRESULT PropVariantGetUInt16Elem(const PROPVARIANT& variant, ULONG index, USHORT* pValue)
{
    if (pValue == nullptr)
        return E_POINTER;
    *pValue = 0;
    if (variant.vt != VT_UI2 || index != 0)
        return E_INVALIDARG;
    *pValue = variant.uiVal;
    return S_OK;
}

extern "C" HRESULT PropVariantToFileTime(const PROPVARIANT& variant, PSTIME_FLAGS flags, FILETIME* pTime)
{
    if (pTime == nullptr)
        return E_POINTER;
    if (variant.vt != VT_FILETIME || flags != PSTF_UTC)
        return E_INVALIDARG;
    *pTime = variant.filetime;
    return S_OK;
}

extern "C" HRESULT PropVariantToInt64(const PROPVARIANT& variant, LONGLONG* pValue)
{
    if (pValue == nullptr)
        return E_POINTER;
    switch (variant.vt)
    {
    case VT_UI1:
        *pValue = variant.bVal;
        return S_OK;
    case VT_UI2:
        *pValue = variant.uiVal;
        return S_OK;
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
