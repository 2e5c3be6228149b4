/// @file PropVariantElement.h
/// PropVariantGetUInt16Elem(), which mingw-w64's <propvarutil.h> leaves out although its import library has it.
#pragma once

#include <windows.h>

#include <propvarutil.h>

extern "C" HRESULT WINAPI PropVariantGetUInt16Elem(const PROPVARIANT& variant, ULONG index, USHORT* pValue);
