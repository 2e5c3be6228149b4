/// @file ClipReader.h
/// Clips of a project file.
#pragma once

#include "host/project/FrameRate.h"
#include "host/project/JsonTree.h"
#include "host/project/Project.h"

#include <filesystem>
#include <string>

namespace qmx::host
{
/// What the reading of a clip depends on.
struct ClipSurroundings
{
    std::filesystem::path folder; ///< where paths start
    FrameRate rate;               ///< of the project
};

/// Reads one clip of a track. @param place  where it stands in the file, "tracks[1].clips[0]"
/// @throw JsonError
ProjectClip ReadClip(const JsonValue& value, std::string place, const ClipSurroundings& surroundings);

/// Reads a clip that a transition leads from or to. Its kind is one that is seen and no transition; it has no sound.
/// @param start, duration  those of the clip unless it says otherwise, 100 ns
/// @throw JsonError
ProjectClip ReadTransitionSide(const JsonValue& value, std::string place, const ClipSurroundings& surroundings,
                               std::uint64_t start, std::uint64_t duration);
} // namespace qmx::host
