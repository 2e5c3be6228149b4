/// @file mferror.h
/// Status codes of Media Foundation.
#pragma once

#include <windows.h>

inline constexpr HRESULT MF_E_NOT_INITIALIZED = static_cast<HRESULT>(0xC00D36B6U);
inline constexpr HRESULT MF_E_INVALIDMEDIATYPE = static_cast<HRESULT>(0xC00D36B4U);
inline constexpr HRESULT MF_E_INVALIDREQUEST = static_cast<HRESULT>(0xC00D36B2U);
inline constexpr HRESULT MF_E_INVALIDSTREAMNUMBER = static_cast<HRESULT>(0xC00D36B3U);
inline constexpr HRESULT MF_E_NO_MORE_TYPES = static_cast<HRESULT>(0xC00D36B9U);
inline constexpr HRESULT MF_E_INVALIDTYPE = static_cast<HRESULT>(0xC00D36BDU);
inline constexpr HRESULT MF_E_UNSUPPORTED_BYTESTREAM_TYPE = static_cast<HRESULT>(0xC00D36C4U);
inline constexpr HRESULT MF_E_ATTRIBUTENOTFOUND = static_cast<HRESULT>(0xC00D36E6U);
inline constexpr HRESULT MF_E_INVALIDINDEX = static_cast<HRESULT>(0xC00D36BFU);
inline constexpr HRESULT MF_E_TOPO_CODEC_NOT_FOUND = static_cast<HRESULT>(0xC00D5212U);
inline constexpr HRESULT MF_E_BUFFERTOOSMALL = static_cast<HRESULT>(0xC00D36B1U);
inline constexpr HRESULT MF_E_SHUTDOWN = static_cast<HRESULT>(0xC00D3E85U);
inline constexpr HRESULT MF_E_UNSUPPORTED_SERVICE = static_cast<HRESULT>(0xC00D36BAU);
