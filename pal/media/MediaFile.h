/// @file MediaFile.h
/// A local media container, opened and examined.
#pragma once

#include "pal/media/AvPointers.h"

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>

namespace pal
{
class MediaFile
{
public:
    /// Opens @p path. Only regular local files and only media containers are accepted: text, playlists and devices
    /// that the demuxing library knows beside them are refused.
    /// @retval HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED)
    /// @retval MF_E_UNSUPPORTED_BYTESTREAM_TYPE no media container, or one without a stream that can be used
    [[nodiscard]] HRESULT Open(const std::wstring& path);
    /// The same without looking at the streams: enough for what the file says about itself.
    [[nodiscard]] HRESULT OpenHeader(const std::wstring& path);

    AVFormatContext* GetFormat() const { return m_pFormat.get(); }
    /// The first stream of a kind that is no attached picture; null when there is none.
    AVStream* FindStream(AVMediaType type) const;
    /// Presentation time at which the file starts, in units of @p timeBase. It is 0 for the reader's clients.
    std::int64_t GetStart(AVRational timeBase) const;
    /// Length in 100 ns; 0 when the container does not tell.
    std::uint64_t GetDuration() const;
    /// When the media were recorded, as the container says; 100 ns since 1 January 1601 UTC.
    std::optional<std::uint64_t> GetCreationDate() const;
    /// True when that length was reckoned from the size of the file and its bit rate.
    bool IsDurationGuessed() const { return m_pFormat->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE; }

private:
    AvFormatPtr m_pFormat;
};

/// Clockwise angle (0, 90, 180, 270) that makes the stream's stored picture upright. A mirrored display matrix gives
/// the angle of its rotation part.
std::uint32_t GetStreamRotation(const AVStream& stream);
} // namespace pal
