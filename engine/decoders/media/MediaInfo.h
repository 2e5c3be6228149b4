/// @file MediaInfo.h
/// Facts of a file before it becomes a clip. Each query opens the file, fills the caller's record and closes the file
/// again.
/// Threads : any that has started the platform's media services; each call is on its own.
#pragma once

#include "engine/decoders/media/AudioInfo.h"
#include "engine/decoders/media/VideoInfo.h"
#include "engine/platform/Export.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <string>

inline constexpr std::uint32_t kMediaHasAudio = 1; ///< tagMediaInfo::audio is valid
inline constexpr std::uint32_t kMediaHasVideo = 2; ///< tagMediaInfo::video is valid

/// Pictures and sound of a file. The layout is part of the exported interface.
struct tagMediaInfo
{
    tagVideoInfo video;        ///< zeros without pictures
    tagAudioInfo audio;        ///< zeros without sound
    std::uint32_t dwFlags = 0; ///< kMediaHas… bits
};
static_assert(sizeof(tagMediaInfo) == 88 && offsetof(tagMediaInfo, audio) == 48 &&
                  offsetof(tagMediaInfo, dwFlags) == 80,
              "fixed by the exported interface");

extern "C"
{
    /// Size, rotation, rate, pixel aspect and duration of the pictures. Reads one picture.
    /// A file named .swf, in any letter case, is a Flash movie: width, height, rate and duration are filled in, every
    /// other field stays as it was, and a movie that cannot be read is one of 0 by 0 pixels.
    /// @return false for a null @p info, without video that can be read, and when memory is short; the record may be
    ///         partly filled then.
    QMX_API bool QMXGetVideoInfo(std::wstring path, tagVideoInfo* info);
    /// Rate, channels, bits, duration and date of the sound. A date that the caller has put into the record gives way
    /// to the media's own only.
    /// @return false for a null @p info, for no media, for a file whose date is needed and that cannot be opened,
    ///         without sound, and when memory is short; the record may be partly filled then.
    QMX_API bool QMXGetAudioInfo(std::wstring path, tagAudioInfo* info);
    /// When a file, a picture for instance, was last written, in local time with the offset that holds now.
    /// @param date  written when the file's times can be read
    /// @return whether the file could be opened; false for a null @p date
    QMX_API bool QMXGetImageInfo(std::wstring path, FILETIME* date);
    /// Both queries on a record that is first filled with zeros: a video without a frame rate has 0/0 and a dFrameRate
    /// that is no number.
    /// @return whether there was something; false for a null @p info
    QMX_API bool QMXGetMediaInfo(std::wstring path, tagMediaInfo* info);
}
