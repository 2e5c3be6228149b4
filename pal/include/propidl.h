/// @file propidl.h
/// PROPVARIANT with the kinds of value the engine meets.
#pragma once

#include <windows.h>

using VARTYPE = USHORT;

enum VARENUM : VARTYPE
{
    VT_EMPTY = 0,
    VT_I4 = 3,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_FILETIME = 64
};

struct PROPVARIANT
{
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union
    {
        LONG lVal;
        ULONG ulVal;
        LARGE_INTEGER hVal;
        FILETIME filetime;
        ULARGE_INTEGER uhVal;
    };
};

inline void PropVariantInit(PROPVARIANT* pVariant)
{
    *pVariant = PROPVARIANT{};
}
/// Frees what the variant holds and makes it VT_EMPTY.
extern "C" HRESULT PropVariantClear(PROPVARIANT* pVariant);
