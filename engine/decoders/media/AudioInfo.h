/// @file AudioInfo.h
/// Facts of the sound of a file.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

/// Filled in place; a field that cannot be determined keeps what the caller put there. The layout is part of the
/// exported interface.
struct tagAudioInfo
{
    std::uint32_t nSamplesPerSec = 0; ///< as stored
    std::uint32_t nChannels = 0;      ///< as stored
    std::uint32_t nBitsPerSample = 0; ///< as stored; compressed sound has none
    double dDuration = 0;             ///< seconds, of the whole file
    /// 100 ns since 1601: when the media were recorded, in UTC, where the file says so; else when the file was last
    /// written, in local time.
    FILETIME ftDate = {};
};
static_assert(sizeof(tagAudioInfo) == 32 && offsetof(tagAudioInfo, dDuration) == 16 &&
                  offsetof(tagAudioInfo, ftDate) == 24,
              "fixed by the exported interface");
