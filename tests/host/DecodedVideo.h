/// @file DecodedVideo.h
/// Video files read back, independently of what wrote them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace qmx::host
{
/// The first video stream of a file, decoded whole; small files only.
struct DecodedVideo
{
    /// One 4:2:0 picture, planes tight.
    struct Frame
    {
        std::int64_t pts = 0; ///< in units of the time base
        std::vector<std::uint8_t> y, u, v;
    };

    explicit DecodedVideo(const std::filesystem::path& file);

    bool readable = false;
    std::string codec; ///< "h264"
    int width = 0;
    int height = 0;
    int timeBaseNum = 0;
    int timeBaseDen = 0;
    int frameRateNum = 0; ///< average
    int frameRateDen = 0;
    std::int64_t duration = 0; ///< of the stream, in units of the time base
    int colorRange = 0;        ///< AVColorRange and the like
    int colorSpace = 0;
    int colorPrimaries = 0;
    int colorTransfer = 0;
    bool indexInFront = false; ///< "moov" stands before "mdat"
    std::vector<Frame> frames;
};
} // namespace qmx::host
