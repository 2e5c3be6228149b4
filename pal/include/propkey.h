/// @file propkey.h
/// Keys of properties.
#pragma once

#include <propsys.h>

/// VT_FILETIME, UTC: when the media were recorded.
inline constexpr PROPERTYKEY PKEY_Media_DateEncoded{
    {0x2E4B640DU, 0x5019, 0x46D8, {0x88, 0x81, 0x55, 0x41, 0x4C, 0xC5, 0xCA, 0xA0}}, 100};
