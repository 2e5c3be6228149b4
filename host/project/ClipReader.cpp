#include "host/project/ClipReader.h"

#include "host/project/Decimal.h"
#include "host/project/ObjectReader.h"
#include "host/project/TextReader.h"
#include "host/project/TransitionReader.h"

#include <algorithm>
#include <vector>

namespace qmx::host
{
namespace
{
using Kind = JsonValue::Kind;

struct NamedKind
{
    const char* pName;
    ClipKind kind;
    bool canBeSide; ///< of a transition
};
constexpr NamedKind kKinds[] = {{"video", ClipKind::Video, true},         {"camera", ClipKind::Camera, true},
                                {"image", ClipKind::Image, true},         {"color", ClipKind::Color, true},
                                {"audio", ClipKind::Audio, false},        {"title", ClipKind::Title, true},
                                {"keystroke", ClipKind::Keystroke, true}, {"transition", ClipKind::Transition, false}};

ClipKind ReadKind(ObjectReader& reader, bool isSide)
{
    const std::string& kind = reader.Need("type", Kind::Text).text;
    std::vector<std::string> known;
    for (const NamedKind& entry : kKinds)
    {
        if (isSide && !entry.canBeSide)
        {
            if (kind == entry.pName)
                reader.Fail("type", "a transition cannot lead from or to a clip of the kind " + Quoted(kind));
            continue;
        }
        if (kind == entry.pName)
            return entry.kind;
        known.push_back(Quoted(entry.pName));
    }
    std::string list;
    for (std::size_t i = 0; i < known.size(); ++i)
        list += (i == 0 ? "" : i + 1 < known.size() ? ", " : " and ") + known[i];
    reader.Fail("type", "unknown kind " + Quoted(kind) + ", the known ones are " + list);
}

/// Where the clip lies on the time line. Both ends move onto the project's frames before the duration is taken, so that
/// clips which touch still do.
void SetSpan(ObjectReader& reader, ProjectClip& clip, std::uint64_t start, std::uint64_t duration,
             const FrameRate& rate)
{
    if (duration == 0)
        reader.Fail("duration", "must be greater than 0");
    if (start + duration > kMaxTime)
        reader.Fail("duration", "ends after " + std::to_string(kMaxTime / kTimePerSecond) + " seconds");
    clip.start = rate.Snapped(start);
    const std::uint64_t end = rate.Snapped(start + duration);
    if (end <= clip.start)
        reader.Fail("duration", "must be greater than 0");
    clip.duration = end - clip.start;
}

/// What clips of a file have.
void ReadFileFields(ObjectReader& reader, ProjectClip& clip, const std::filesystem::path& folder)
{
    clip.path = folder / reader.NeedFileName("path");
    clip.inPoint = reader.Time("inPoint", 0);
}

/// What clips have that can be heard.
void ReadSoundFields(ObjectReader& reader, ProjectClip& clip)
{
    clip.volume = reader.Number("volume", 1, 0, kMaxVolume);
    clip.mute = reader.Flag("mute", false);
}

/// What clips have that show the pictures of a file.
void ReadPictureFields(ObjectReader& reader, ProjectClip& clip)
{
    if (const JsonValue* const pRotation = reader.Find("rotation", Kind::Number))
    {
        clip.rotation = static_cast<std::uint32_t>(reader.Whole("rotation", *pRotation, 0, 270));
        if (clip.rotation % 90 != 0)
            reader.Fail("rotation", "must be 0, 90, 180 or 270");
    }
}

ProjectKey ReadKey(const JsonValue& value, std::string place, const std::filesystem::path& folder)
{
    ObjectReader reader(value, std::move(place));
    ProjectKey key;
    key.place = reader.Place();
    reader.Need("color", Kind::Text);
    key.color = reader.Color("color", 0);
    key.similarity = reader.Number("similarity", key.similarity, 0, 1);
    key.smoothness = reader.Number("smoothness", key.smoothness, 0, 1);
    key.spill = reader.Number("spill", key.spill, 0, 1);
    if (reader.FindAny("background"))
        key.background = folder / reader.NeedFileName("background");
    reader.Finish();
    return key;
}

/// What videos and recordings have.
void ReadFilmFields(ObjectReader& reader, ProjectClip& clip, const std::filesystem::path& folder)
{
    clip.frameRate = reader.Rate("frameRate");
    if (const JsonValue* const pKey = reader.FindAny("key"))
        clip.key = ReadKey(*pKey, reader.PlaceOf("key"), folder);
}

/// The fields of the clip's own kind.
void ReadKindFields(ObjectReader& reader, ProjectClip& clip, const ClipSurroundings& surroundings, bool isSide)
{
    const bool isFilm = clip.kind == ClipKind::Video || clip.kind == ClipKind::Camera;
    const bool isSeen = isFilm || clip.kind == ClipKind::Image;
    if (isSeen || clip.kind == ClipKind::Audio)
        ReadFileFields(reader, clip, surroundings.folder);
    if (!isSide && (clip.kind == ClipKind::Video || clip.kind == ClipKind::Audio))
        ReadSoundFields(reader, clip);
    if (isSeen)
        ReadPictureFields(reader, clip);
    if (isFilm)
        ReadFilmFields(reader, clip, surroundings.folder);
    else if (clip.kind == ClipKind::Title)
        ReadTitleFields(reader, clip);
    else if (clip.kind == ClipKind::Keystroke)
        ReadKeystrokeFields(reader, clip);
    else if (clip.kind == ClipKind::Transition)
        ReadTransitionFields(reader, clip, surroundings);
}
} // namespace

ProjectClip ReadClip(const JsonValue& value, std::string place, const ClipSurroundings& surroundings)
{
    ObjectReader reader(value, std::move(place));
    ProjectClip clip;
    clip.place = reader.Place();
    clip.kind = ReadKind(reader, false);
    const std::uint64_t start = reader.NeedTime("start");
    SetSpan(reader, clip, start, reader.NeedTime("duration"), surroundings.rate);
    ReadKindFields(reader, clip, surroundings, false);
    reader.Finish();
    return clip;
}

ProjectClip ReadTransitionSide(const JsonValue& value, std::string place, const ClipSurroundings& surroundings,
                               std::uint64_t start, std::uint64_t duration)
{
    ObjectReader reader(value, std::move(place));
    ProjectClip clip;
    clip.place = reader.Place();
    clip.kind = ReadKind(reader, true);
    const std::uint64_t end = start + duration;
    start = reader.Time("start", start);
    SetSpan(reader, clip, start, reader.Time("duration", end > start ? end - start : 0), surroundings.rate);
    ReadKindFields(reader, clip, surroundings, true);
    reader.Finish();
    return clip;
}
} // namespace qmx::host
