/// @file MediaProbe.h
/// Facts of media files, asked of the engine.
#pragma once

#include "engine/qmx.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace qmx::host
{
/// A camera recording, found out from its index and its first frame.
struct CameraFacts
{
    std::uint32_t width = 0; ///< pixels
    std::uint32_t height = 0;
    std::uint64_t frames = 0; ///< records of the index
    double frameRate = 30;    ///< mean over the recording, frames per second
};

/// The rate of a recording whose frames were counted: a whole number or one of the sort of 30000/1001 where that gives
/// the same duration, else the mean.
/// @param mean      frames per second, greater than 0
/// @param frames    from the first to the last  @param duration  of them, 100 ns
double LikelyRate(double mean, std::uint64_t frames, std::uint64_t duration);

/// Finds out about each file once. Needs running media services (EngineSession).
class MediaProbe
{
public:
    /// @param subject  what a HostError names as its file
    /// @param prefix   begins the reason of a HostError, ": " included; may be empty
    /// @return facts that stay in place as long as the probe does
    /// @throw HostError  ExitCode::Media: no such file, no right to read it, no video in it that can be read
    const tagVideoInfo& Video(const std::filesystem::path& path, const std::string& subject, const std::string& prefix);

    /// The same for a camera recording. @param name  ends in .mjpg or .h264
    /// @throw HostError  ExitCode::Media
    const CameraFacts& Camera(const std::filesystem::path& name, const std::string& subject, const std::string& prefix);

private:
    std::map<std::filesystem::path, tagVideoInfo> m_known;
    std::map<std::filesystem::path, CameraFacts> m_cameras;
};
} // namespace qmx::host
