/// @file CameraFiles.h
/// The files that make a camera recording.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace qmx::host
{
/// Where a frame lies, as the index of a recording has it.
struct CameraRecord
{
    std::uint64_t time = 0;   ///< 100 ns
    std::uint64_t offset = 0; ///< of the frame's data in the media file
    std::uint64_t length = 0; ///< bytes

    static constexpr std::uint64_t kBytes = 24;
};

/// Files of the recording that @p name stands for: its name with another extension.
std::filesystem::path CameraMediaPath(const std::filesystem::path& name);
std::filesystem::path CameraIndexPath(const std::filesystem::path& name);
/// Whether @p name ends in .mjpg or .h264, in small letters.
bool IsCameraName(const std::filesystem::path& name);
bool IsMotionJpegName(const std::filesystem::path& name);
/// @p name as the engine takes it: with its folder.
std::wstring CameraEnginePath(const std::filesystem::path& name);
} // namespace qmx::host
