#include "host/project/ProjectReader.h"

#include "host/HostError.h"
#include "host/project/ClipReader.h"
#include "host/project/Decimal.h"
#include "host/project/ObjectReader.h"
#include "host/project/TextFile.h"

#include <algorithm>
#include <array>
#include <map>

namespace qmx::host
{
namespace
{
using Kind = JsonValue::Kind;

BoxFractions ReadBox(const JsonValue& value, std::string place)
{
    ObjectReader reader(value, std::move(place));
    BoxFractions box;
    box.left = reader.Fraction("left", box.left);
    box.top = reader.Fraction("top", box.top);
    box.width = reader.Fraction("width", box.width);
    box.height = reader.Fraction("height", box.height);
    if (!(box.width > 0))
        reader.Fail("width", "must be greater than 0");
    if (!(box.height > 0))
        reader.Fail("height", "must be greater than 0");
    reader.Finish();
    return box;
}

void SortClips(std::vector<ProjectClip>& clips)
{
    std::stable_sort(clips.begin(), clips.end(),
                     [](const ProjectClip& a, const ProjectClip& b) { return a.start < b.start; });
    for (std::size_t i = 1; i < clips.size(); ++i)
    {
        if (clips[i - 1].End() > clips[i].start)
            throw JsonError(clips[i].place + ".start", "overlaps " + clips[i - 1].place + ", which ends at " +
                                                           SecondsText(clips[i - 1].End()) + " seconds");
    }
}

ProjectTrack ReadTrack(const JsonValue& value, std::string place, const ClipSurroundings& surroundings)
{
    ObjectReader reader(value, std::move(place));
    ProjectTrack track;
    track.place = reader.Place();
    track.id = reader.Whole("id", reader.Need("id", Kind::Number), 0, UINT64_MAX);
    if (const JsonValue* const pBox = reader.FindAny("position"))
        track.box = ReadBox(*pBox, reader.PlaceOf("position"));
    track.volume = reader.Number("volume", 1, 0, kMaxVolume);
    track.mute = reader.Flag("mute", false);
    const std::vector<JsonValue>& clips = reader.Need("clips", Kind::Array).items;
    track.clips.reserve(clips.size());
    for (std::size_t i = 0; i < clips.size(); ++i)
        track.clips.push_back(ReadClip(clips[i], reader.PlaceOf("clips[" + std::to_string(i) + ']'), surroundings));
    reader.Finish();
    SortClips(track.clips);
    return track;
}

Project ReadProject(const JsonValue& root, const std::filesystem::path& file)
{
    ObjectReader reader(root, "");
    Project project;
    project.file = file;
    const auto side = [&](std::string_view name)
    {
        const JsonValue& field = reader.Need(name, Kind::Number);
        return static_cast<std::uint32_t>(reader.Whole(name, field, 1, kMaxCanvasSide));
    };
    project.width = side("width");
    project.height = side("height");
    const std::optional<FrameRate> rate = reader.Rate("frameRate");
    if (!rate)
        reader.Fail("frameRate", "is missing");
    project.frameRate = *rate;
    const std::vector<JsonValue>& tracks = reader.Need("tracks", Kind::Array).items;
    reader.Finish();
    std::map<std::uint64_t, std::string> ids;
    for (std::size_t i = 0; i < tracks.size(); ++i)
    {
        const std::string place = "tracks[" + std::to_string(i) + ']';
        project.tracks.push_back(ReadTrack(tracks[i], place, {file.parent_path(), *rate}));
        const auto [other, isNew] = ids.emplace(project.tracks.back().id, place);
        if (!isNew)
            throw JsonError(place + ".id", std::to_string(other->first) + " is already the id of " + other->second);
    }
    if (project.Duration() == 0)
        throw JsonError("tracks", "hold no clip, so there is nothing to show");
    return project;
}
} // namespace

Project ProjectReader::ReadFile(const std::filesystem::path& file)
{
    return Parse(ReadTextFile(file, kMaxFileSize), file);
}

Project ProjectReader::Parse(std::string_view text, const std::filesystem::path& file)
{
    try
    {
        return ReadProject(ParseJson(text), file);
    }
    catch (const JsonError& error)
    {
        const std::string where = error.Path().empty() ? "" : error.Path() + ": ";
        throw HostError(ExitCode::Project, file.string(), where + error.what());
    }
}
} // namespace qmx::host
