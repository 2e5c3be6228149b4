/// @file mfidl.h
/// Attributes of media sources.
#pragma once

#include <mfobjects.h>

/// UINT64, 100 ns: duration of a presentation.
inline constexpr GUID MF_PD_DURATION{0x6C990D33U, 0xBB8E, 0x477A, {0x85, 0x98, 0x0D, 0x5D, 0x96, 0xFC, 0xD8, 0x8A}};
