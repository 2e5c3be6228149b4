/// @file TimelineImporter.h
/// From an OpenTimelineIO file to a project.
#pragma once

#include "host/interchange/TransferReport.h"
#include "host/project/FrameRate.h"
#include "host/project/JsonTree.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

namespace qmx::host
{
/// What the pictures of a file look like.
struct MediaShape
{
    std::uint32_t width = 0;  ///< pixels, greater than 0
    std::uint32_t height = 0; ///< pixels, greater than 0
    std::optional<FrameRate> rate;
};
/// Asked for at most one file. @return nothing when it cannot be read
using ShapeLookup = std::function<std::optional<MediaShape>(const std::filesystem::path&)>;

struct ImportOptions
{
    std::filesystem::path timelineFile;
    std::filesystem::path projectFile;
    /// What the project is to have whatever the file says.
    std::optional<std::uint32_t> width;
    std::optional<std::uint32_t> height;
    std::optional<FrameRate> frameRate;
};

/// The project that shows the same edit as a timeline. Its times are those of the timeline to 100 ns, on frames where
/// they lie beside one. The tree keeps the rules of project files but for what the timeline's own metadata of this
/// program may have made wrong, which a ProjectReader finds.
/// @param text    the timeline file
/// @param report  [in, out] what the project cannot have
/// @throw JsonError  no timeline, or one that means nothing: a rate of 0, a negative duration, …
JsonValue ImportTimeline(std::string_view text, const ImportOptions& options, const ShapeLookup& lookup,
                         TransferReport& report);
} // namespace qmx::host
