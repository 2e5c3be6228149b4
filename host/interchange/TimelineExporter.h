/// @file TimelineExporter.h
/// From a project to an OpenTimelineIO file.
#pragma once

#include "host/interchange/TransferReport.h"
#include "host/project/JsonTree.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace qmx::host
{
/// Asked for every media file of a project, once for each clip.
/// @param type  of the clip, "video", "camera" or "audio"
/// @param path  as the project means it; of a recording its name
/// @return how long the media are, 100 ns, or nothing when they cannot be read
using LengthLookup = std::function<std::optional<std::uint64_t>(const std::string& type, const std::filesystem::path&)>;

struct ExportOptions
{
    std::filesystem::path projectFile;
    std::filesystem::path timelineFile;
};

/// The timeline of a project. Every time reads back as it is to 100 ns; whatever timelines have no place for is written
/// into metadata under "qmx", so that ImportTimeline() makes the same project of it.
/// @param project  a tree that a ProjectReader accepts
/// @param report   [in, out] what other programs will not see
JsonValue ExportTimeline(const JsonValue& project, const ExportOptions& options, const LengthLookup& lookup,
                         TransferReport& report);
} // namespace qmx::host
