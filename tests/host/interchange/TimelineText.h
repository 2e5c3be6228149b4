/// @file TimelineText.h
/// Builders of OpenTimelineIO texts and the two ways between them and projects, for tests.
#pragma once

#include "host/interchange/TimelineExporter.h"
#include "host/interchange/TimelineImporter.h"
#include "host/project/JsonText.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace qmx::host::timeline
{
inline std::string Join(const std::vector<std::string>& parts)
{
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : ", ") + part;
    return text;
}

inline std::string Time(const std::string& value, const std::string& rate)
{
    return R"({"OTIO_SCHEMA": "RationalTime.1", "value": )" + value + R"(, "rate": )" + rate + "}";
}

inline std::string Range(const std::string& start, const std::string& duration, const std::string& rate)
{
    return R"({"OTIO_SCHEMA": "TimeRange.1", "start_time": )" + Time(start, rate) + R"(, "duration": )" +
           Time(duration, rate) + "}";
}

inline std::string File(const std::string& url, const std::string& available = "null")
{
    return R"({"OTIO_SCHEMA": "ExternalReference.1", "target_url": ")" + url + R"(", "available_range": )" + available +
           "}";
}

/// @param more  further members, each with a comma in front
inline std::string Clip(const std::string& reference, const std::string& range, const std::string& more = "")
{
    return R"({"OTIO_SCHEMA": "Clip.2", "media_references": {"DEFAULT_MEDIA": )" + reference +
           R"(}, "active_media_reference_key": "DEFAULT_MEDIA", "source_range": )" + range + more + "}";
}

inline std::string Gap(const std::string& duration, const std::string& rate)
{
    return R"({"OTIO_SCHEMA": "Gap.1", "source_range": )" + Range("0", duration, rate) + "}";
}

inline std::string Dissolve(const std::string& in, const std::string& out, const std::string& rate,
                            const std::string& more = "")
{
    return R"({"OTIO_SCHEMA": "Transition.1", "transition_type": "SMPTE_Dissolve", "in_offset": )" + Time(in, rate) +
           R"(, "out_offset": )" + Time(out, rate) + more + "}";
}

inline std::string Track(const std::vector<std::string>& children, const std::string& kind = "Video",
                         const std::string& more = "")
{
    return R"({"OTIO_SCHEMA": "Track.1", "kind": ")" + kind + R"(", "children": [)" + Join(children) + "]" + more + "}";
}

inline std::string Stack(const std::vector<std::string>& children, const std::string& more = "")
{
    return R"({"OTIO_SCHEMA": "Stack.1", "children": [)" + Join(children) + "]" + more + "}";
}

inline std::string Timeline(const std::vector<std::string>& tracks, const std::string& more = "")
{
    return R"({"OTIO_SCHEMA": "Timeline.1", "tracks": )" + Stack(tracks) + more + "}";
}

inline std::optional<MediaShape> SmallMedia(const std::filesystem::path&)
{
    return MediaShape{64, 48, std::nullopt};
}

/// Options that leave nothing to find out.
inline ImportOptions KnownCanvas()
{
    ImportOptions options;
    options.width = 64;
    options.height = 48;
    options.frameRate = FrameRate::FromFraction(25, 1);
    return options;
}

/// A project made of a timeline, with the report.
struct Imported
{
    explicit Imported(const std::string& text, const ImportOptions& options = {},
                      const ShapeLookup& lookup = SmallMedia)
    {
        TransferReport losses;
        tree = ImportTimeline(text, options, lookup, losses);
        project = nlohmann::json::parse(JsonText(tree, 2));
        report = losses.Lines();
    }

    const nlohmann::json& Clip(std::size_t index, std::size_t track = 0) const
    {
        return project.at("tracks").at(track).at("clips").at(index);
    }
    std::size_t ClipCount(std::size_t track = 0) const { return project.at("tracks").at(track).at("clips").size(); }
    /// Whether a line of the report holds all the words.
    bool Reports(const std::vector<std::string>& words) const
    {
        for (const std::string& line : report)
        {
            bool all = true;
            for (const std::string& word : words)
                all &= line.find(word) != std::string::npos;
            if (all)
                return true;
        }
        return false;
    }

    JsonValue tree;
    nlohmann::json project;
    std::vector<std::string> report;
};

/// A timeline made of a project, with the report.
struct Exported
{
    explicit Exported(const JsonValue& project, const ExportOptions& options = {}, const LengthLookup& lookup = {})
    {
        TransferReport losses;
        text = JsonText(ExportTimeline(project, options, lookup, losses), 4);
        timeline = nlohmann::json::parse(text);
        report = losses.Lines();
    }

    const nlohmann::json& Child(std::size_t index, std::size_t track = 0) const
    {
        return timeline.at("tracks").at("children").at(track).at("children").at(index);
    }

    std::string text;
    nlohmann::json timeline;
    std::vector<std::string> report;
};
} // namespace qmx::host::timeline
