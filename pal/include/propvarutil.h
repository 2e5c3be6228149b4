/// @file propvarutil.h
/// Conversions out of a PROPVARIANT.
#pragma once

#include <propidl.h>

/// Any integer kind as 64 signed bits. @retval E_INVALIDARG not an integer, or too large
extern "C" HRESULT PropVariantToInt64(const PROPVARIANT& variant, LONGLONG* pValue);
