/// @file propidl.h
/// PROPVARIANT with the kinds of value the engine meets.
#pragma once

#include <windows.h>

using VARTYPE = USHORT;
using VARIANT_BOOL = SHORT;

inline constexpr VARIANT_BOOL VARIANT_TRUE = -1;
inline constexpr VARIANT_BOOL VARIANT_FALSE = 0;

enum VARENUM : VARTYPE
{
    VT_EMPTY = 0,
    VT_I4 = 3,
    VT_BOOL = 11,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_FILETIME = 64,
    VT_VECTOR = 0x1000 ///< with another kind: a counted array of it
};

/// Bytes of a VT_VECTOR | VT_UI1; pElems is CoTaskMemAlloc()'s and belongs to the variant.
struct CAUB
{
    ULONG cElems;
    BYTE* pElems;
};

struct PROPVARIANT
{
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union
    {
        BYTE bVal;
        USHORT uiVal;
        VARIANT_BOOL boolVal;
        LONG lVal;
        ULONG ulVal;
        LARGE_INTEGER hVal;
        FILETIME filetime;
        ULARGE_INTEGER uhVal;
        CAUB caub;
    };
};

inline void PropVariantInit(PROPVARIANT* pVariant)
{
    *pVariant = PROPVARIANT{};
}
/// Frees what the variant holds and makes it VT_EMPTY.
extern "C" HRESULT PropVariantClear(PROPVARIANT* pVariant);
