/// @file PictureFacts.h
/// Facts of picture files, asked of the platform's imaging service.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qmx::host
{
struct PictureFacts
{
    std::string format;      ///< "JPEG", "PNG", "GIF", "TIFF", "WebP", "BMP" or "ICO"
    std::uint32_t width = 0; ///< pixels, upright as the orientation says; of a GIF the logical screen
    std::uint32_t height = 0;
    std::uint32_t orientation = 1;       ///< EXIF orientation, 1 where the file does not say
    std::uint32_t frames = 1;            ///< frames of an animation, pages, entries of an icon
    double duration = 0;                 ///< seconds of one round of an animation as the engine plays it; 0 for stills
    std::vector<std::uint32_t> delays;   ///< of the frames of a GIF, milliseconds as stored
    std::optional<std::uint32_t> rounds; ///< how often a GIF plays, as it says itself; 0: for ever
};

/// @return nothing when @p path is no picture that can be opened
std::optional<PictureFacts> ReadPictureFacts(const std::wstring& path);

/// True when there is something to see in the first frame of @p path.
bool CanBeDecoded(const std::wstring& path);
} // namespace qmx::host
