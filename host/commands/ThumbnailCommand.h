/// @file ThumbnailCommand.h
/// qmx thumbnail
#pragma once

#include <string>

namespace qmx::host
{
struct ThumbnailOptions
{
    std::string file; ///< video, Flash movie, picture, animation, or the name of a camera recording
    std::string output;
    std::string at = "0"; ///< seconds into the file
};

/// Writes a small picture of a media file as a PNG file. @throw HostError
void RunThumbnail(const ThumbnailOptions& options);
} // namespace qmx::host
