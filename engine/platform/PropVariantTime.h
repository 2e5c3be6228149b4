/// @file PropVariantTime.h
/// PropVariantToFileTime(), which mingw-w64's <propvarutil.h> leaves out although its import library has it.
#pragma once

#include <windows.h>

#include <propvarutil.h>

inline constexpr int kFileTimeUtc = 0; ///< the system's PSTF_UTC: the time as it is kept

extern "C" HRESULT WINAPI PropVariantToFileTime(const PROPVARIANT& variant, int flags, FILETIME* pTime);
