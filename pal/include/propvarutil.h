/// @file propvarutil.h
/// Conversions out of a PROPVARIANT.
#pragma once

#include <propidl.h>

enum tagPSTIME_FLAGS
{
    PSTF_UTC = 0
};
using PSTIME_FLAGS = int;

extern "C"
{
    /// Any integer kind as 64 signed bits. @retval E_INVALIDARG not an integer, or too large
    HRESULT PropVariantToInt64(const PROPVARIANT& variant, LONGLONG* pValue);
    /// Element @p index of a VT_UI2; a single value counts as its element 0.
    /// @retval E_INVALIDARG another kind, or no such element; *pValue is 0 then
    HRESULT PropVariantGetUInt16Elem(const PROPVARIANT& variant, ULONG index, USHORT* pValue);
    /// A VT_FILETIME. @param flags  PSTF_UTC: as it is kept
    /// @retval E_INVALIDARG another kind, or another flag; *pTime is not touched then
    HRESULT PropVariantToFileTime(const PROPVARIANT& variant, PSTIME_FLAGS flags, FILETIME* pTime);
}
