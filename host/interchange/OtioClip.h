/// @file OtioClip.h
/// From a clip of a timeline to a clip of a project.
#pragma once

#include "host/interchange/MediaUrl.h"
#include "host/interchange/OtioObject.h"
#include "host/interchange/TransferReport.h"
#include "host/project/FrameRate.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace qmx::host
{
/// What the import of every object depends on.
struct ImportContext
{
    std::filesystem::path timelineFolder; ///< where relative URLs start
    std::filesystem::path projectFolder;  ///< where a project's relative paths start
    FrameRate rate;                       ///< of the project
    bool muteFilms = false;               ///< their sound stands on tracks of its own
    TransferReport& report;
};

/// A clip of a project before it has its place on the time line.
struct ClipDraft
{
    std::string type;                 ///< "video", …
    std::string path;                 ///< as projects write it; empty for kinds without a file
    std::vector<JsonMember> settings; ///< of its kind, beyond place, path and in point
    bool takesInPoint = false;
    std::int64_t inPoint = 0; ///< time in the source at the clip's start, 100 ns; only trimming makes it matter below 0
    /// For a clip that is one side of a transition and has a span of its own: from the transition's start, 100 ns.
    std::optional<std::int64_t> sideStart;
    std::optional<std::uint64_t> sideDuration;
};

/// The active media reference of a clip, whatever version the clip has. @return nothing when there is none
std::optional<OtioObject> ActiveReference(const OtioObject& clip);

/// The part of its media that a clip shows: its source_range, else all that is available.
/// @return nothing when neither is known
std::optional<OtioRange> RangeOfClip(const OtioObject& clip);

/// @param isAudio  whether the clip stands on a track of sound
/// @return nothing when the clip can only be left out; the report then says why
std::optional<ClipDraft> DraftClip(const OtioObject& clip, bool isAudio, ImportContext& context);

/// The factor that the AudioVolume effects of an object stand for; 1 when there are none.
double GainOf(const OtioObject& object, ImportContext& context);
} // namespace qmx::host
