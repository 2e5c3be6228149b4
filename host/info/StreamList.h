/// @file StreamList.h
/// The streams of a media file, asked of the platform's source reader.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qmx::host
{
struct StreamFacts
{
    std::string kind;           ///< "video", "audio", or "other" for covers, subtitles and data
    std::string coding;         ///< "H264", "AAC", or the four characters that the file names it by; may be empty
    std::uint32_t width = 0;    ///< video: pixels as stored
    std::uint32_t height = 0;   ///< video: rows as stored
    std::uint32_t rate = 0;     ///< audio: samples per second as stored
    std::uint32_t channels = 0; ///< audio: as stored
};

/// @return in the file's order; nothing when @p path is no media file
std::vector<StreamFacts> ReadStreams(const std::wstring& path);
} // namespace qmx::host
