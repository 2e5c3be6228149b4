#include "host/project/ProjectReader.h"

#include "host/HostError.h"
#include "host/project/Decimal.h"
#include "host/project/JsonTree.h"
#include "host/system/Platform.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <map>

namespace qmx::host
{
namespace
{
using Kind = JsonValue::Kind;

constexpr double kMaxFraction = 16; // of the canvas, for boxes and their corners
constexpr std::array kLaterKinds{"transition"};
constexpr std::array kLaterFields{"key"};

std::string Quoted(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

/// A number of the engine and its name in project files.
struct NamedNumber
{
    const char* pName;
    std::uint32_t value;
};
constexpr std::array<NamedNumber, 4> kAlignments{{{"leading", 0}, {"trailing", 1}, {"center", 2}, {"justified", 3}}};
constexpr std::array<NamedNumber, 5> kAnimations{{{"none", QMXTitleAnimation_None},
                                                  {"leftToRight", QMXTitleAnimation_LeftToRight},
                                                  {"topToBottom", QMXTitleAnimation_TopToBottom},
                                                  {"rightToLeft", QMXTitleAnimation_RightToLeft},
                                                  {"bottomToTop", QMXTitleAnimation_BottomToTop}}};
constexpr double kMaxFontSize = 1'000; // pixels on a frame of 288 rows

/// One object of the file with the fields that were asked for; Finish() refuses what nobody asked for.
class ObjectReader
{
public:
    ObjectReader(const JsonValue& value, std::string place) : m_value(value), m_place(std::move(place))
    {
        if (value.kind != Kind::Object)
            throw JsonError(m_place, std::string("must be an object, not ") + KindName(value.kind));
        m_known.reserve(value.members.size());
    }

    const std::string& Place() const { return m_place; }
    std::string PlaceOf(std::string_view name) const { return (m_place.empty() ? "" : m_place + '.').append(name); }
    [[noreturn]] void Fail(std::string_view name, const std::string& reason) const
    {
        throw JsonError(PlaceOf(name), reason);
    }

    /// The field, or null when it is absent.
    const JsonValue* Find(std::string_view name, Kind kind)
    {
        const JsonValue* const pField = FindAny(name);
        if (pField && pField->kind != kind)
            Fail(name, std::string("must be ") + KindName(kind) + ", not " + KindName(pField->kind));
        return pField;
    }
    const JsonValue& Need(std::string_view name, Kind kind)
    {
        const JsonValue* const pField = Find(name, kind);
        if (!pField)
            Fail(name, "is missing");
        return *pField;
    }
    const JsonValue* FindAny(std::string_view name)
    {
        m_known.push_back(name);
        const auto same = [&](const JsonMember& member) { return member.name == name; };
        const auto it = std::find_if(m_value.members.begin(), m_value.members.end(), same);
        return it == m_value.members.end() ? nullptr : &it->value;
    }

    std::uint64_t Whole(std::string_view name, const JsonValue& field, std::uint64_t lowest,
                        std::uint64_t highest) const
    {
        std::uint64_t value = 0;
        const char* const pEnd = field.text.data() + field.text.size();
        const auto [at, error] = std::from_chars(field.text.data(), pEnd, value);
        if (error != std::errc() || at != pEnd || value < lowest || value > highest)
            Fail(name, "must be a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest) +
                           ", not " + field.text);
        return value;
    }
    /// Seconds as 100-ns units, rounded to the nearest; 0 when absent.
    std::uint64_t Time(std::string_view name, const JsonValue* pField) const
    {
        if (!pField)
            return 0;
        const std::optional<Decimal> decimal = Decimal::Parse(pField->text);
        if (!decimal || decimal->IsNegative())
            Fail(name, "must not be negative");
        const std::optional<std::uint64_t> time = decimal->Scaled(7);
        if (!time || *time > kMaxTime)
            Fail(name, "must not be greater than " + std::to_string(kMaxTime / kTimePerSecond) + " seconds");
        return *time;
    }
    double Fraction(std::string_view name, double otherwise)
    {
        return Number(name, otherwise, -kMaxFraction, kMaxFraction);
    }
    /// @param lowest, highest  small whole numbers
    double Number(std::string_view name, double otherwise, double lowest, double highest)
    {
        const JsonValue* const pField = Find(name, Kind::Number);
        if (!pField)
            return otherwise;
        double value = 0;
        const char* const pEnd = pField->text.data() + pField->text.size();
        const auto [at, error] = std::from_chars(pField->text.data(), pEnd, value);
        if (error == std::errc::result_out_of_range)
            value = 0; // a denormal; too large ones do not come through the parser
        if (!(value >= lowest && value <= highest))
            Fail(name, "must lie between " + std::to_string(static_cast<int>(lowest)) + " and " +
                           std::to_string(static_cast<int>(highest)));
        return value;
    }
    float Float(std::string_view name, float otherwise, double lowest, double highest)
    {
        return static_cast<float>(Number(name, otherwise, lowest, highest));
    }
    bool Flag(std::string_view name, bool otherwise)
    {
        const JsonValue* const pField = Find(name, Kind::Boolean);
        return pField ? pField->boolean : otherwise;
    }
    std::uint32_t WholeOr(std::string_view name, std::uint32_t otherwise, std::uint32_t highest)
    {
        const JsonValue* const pField = Find(name, Kind::Number);
        return pField ? static_cast<std::uint32_t>(Whole(name, *pField, 0, highest)) : otherwise;
    }
    std::wstring Characters(std::string_view name)
    {
        const JsonValue* const pField = Find(name, Kind::Text);
        return pField ? EngineText(pField->text) : std::wstring();
    }
    /// "#rrggbb" as 0x00RRGGBB.
    std::uint32_t Color(std::string_view name, std::uint32_t otherwise)
    {
        const JsonValue* const pField = Find(name, Kind::Text);
        if (!pField)
            return otherwise;
        std::uint32_t value = 0;
        const char* const pBegin = pField->text.data() + 1;
        const char* const pEnd = pField->text.data() + pField->text.size();
        if (pField->text.size() != 7 || pField->text[0] != '#' || std::from_chars(pBegin, pEnd, value, 16).ptr != pEnd)
            Fail(name, "must be a colour like \"#1e90ff\", not " + Quoted(pField->text));
        return value;
    }
    /// One of some names, or their number.
    template <std::size_t N>
    std::uint32_t Choice(std::string_view name, const std::array<NamedNumber, N>& names, std::uint32_t otherwise)
    {
        const JsonValue* const pField = FindAny(name);
        if (!pField)
            return otherwise;
        std::string known;
        for (const NamedNumber& entry : names)
        {
            const bool isIt = pField->kind == Kind::Text
                                  ? pField->text == entry.pName
                                  : pField->kind == Kind::Number && pField->text == std::to_string(entry.value);
            if (isIt)
                return entry.value;
            known += (known.empty() ? "" : ", ") + Quoted(entry.pName) + " (" + std::to_string(entry.value) + ')';
        }
        Fail(name, "must be one of " + known);
    }
    std::optional<FrameRate> Rate(std::string_view name)
    {
        const JsonValue* const pField = FindAny(name);
        if (!pField)
            return std::nullopt;
        if (pField->kind != Kind::Number && pField->kind != Kind::Text)
            Fail(name, std::string("must be a number or a text like \"30000/1001\", not ") + KindName(pField->kind));
        const std::optional<FrameRate> rate = FrameRate::Parse(pField->text);
        if (!rate)
            Fail(name, "must be a rate from 0.001 to 1000 frames per second, a number or a fraction like "
                       "\"30000/1001\" with terms up to 1000000");
        return rate;
    }

    void Finish() const
    {
        for (const auto& [name, field] : m_value.members)
        {
            if (std::find(m_known.begin(), m_known.end(), name) == m_known.end())
                Fail(name, "unknown field");
        }
    }

private:
    const JsonValue& m_value;
    std::string m_place;
    std::vector<std::string_view> m_known; // names of literals
};

ClipKind ReadKind(ObjectReader& reader)
{
    const std::string& kind = reader.Need("type", Kind::Text).text;
    if (kind == "video")
        return ClipKind::Video;
    if (kind == "camera")
        return ClipKind::Camera;
    if (kind == "image")
        return ClipKind::Image;
    if (kind == "color")
        return ClipKind::Color;
    if (kind == "audio")
        return ClipKind::Audio;
    if (kind == "title")
        return ClipKind::Title;
    if (kind == "keystroke")
        return ClipKind::Keystroke;
    if (std::find(kLaterKinds.begin(), kLaterKinds.end(), kind) != kLaterKinds.end())
        reader.Fail("type", "clips of the kind " + Quoted(kind) + " are not supported yet");
    reader.Fail("type",
                "unknown kind " + Quoted(kind) +
                    ", the known ones are \"video\", \"camera\", \"image\", \"color\", \"audio\", \"title\" and "
                    "\"keystroke\"");
}

/// What clips of a file have.
void ReadFileFields(ObjectReader& reader, ProjectClip& clip, const std::filesystem::path& folder)
{
    const std::string& path = reader.Need("path", Kind::Text).text;
    if (path.empty() || path.find('\0') != std::string::npos)
        reader.Fail("path", "must name a file");
    clip.path = folder / path;
    clip.inPoint = reader.Time("inPoint", reader.Find("inPoint", Kind::Number));
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

void ReadVideoFields(ObjectReader& reader, ProjectClip& clip)
{
    clip.frameRate = reader.Rate("frameRate");
    for (const char* const pName : kLaterFields)
    {
        if (reader.FindAny(pName))
            reader.Fail(pName, "not supported yet");
    }
}

tagQMXTitleTextInfo ReadText(const JsonValue& value, std::string place)
{
    ObjectReader reader(value, std::move(place));
    tagQMXTitleTextInfo info;
    reader.Need("text", Kind::Text);
    info.text = reader.Characters("text");
    info.textLength = reader.WholeOr("textLength", static_cast<std::uint32_t>(info.text.size()), UINT32_MAX);
    info.fontName = reader.Characters("fontName");
    info.fontSize = reader.Float("fontSize", info.fontSize, 0, kMaxFontSize);
    info.fontWeight = reader.WholeOr("fontWeight", info.fontWeight, 999);
    if (info.fontWeight == 0)
        reader.Fail("fontWeight", "must be greater than 0");
    info.italic = reader.Flag("italic", false);
    info.underline = reader.Flag("underline", false);
    info.color = reader.Color("color", info.color);
    info.opacity = reader.Float("opacity", info.opacity, 0, 1);
    info.x = reader.Fraction("x", 0);
    info.y = reader.Fraction("y", 0);
    info.alignment = reader.Choice("alignment", kAlignments, 0);
    info.animation = reader.Choice("animation", kAnimations, QMXTitleAnimation_None);
    info.speed = reader.WholeOr("speed", 0, 1'000);
    reader.Finish();
    return info;
}

tagQMXKeystrokeInfo ReadKeystroke(const JsonValue& value, std::string place)
{
    ObjectReader reader(value, std::move(place));
    tagQMXKeystrokeInfo info;
    reader.Need("text", Kind::Text);
    info.text = reader.Characters("text");
    info.startTime = reader.Time("startTime", &reader.Need("startTime", Kind::Number));
    const JsonValue* const pEnd = reader.Find("endTime", Kind::Number);
    info.endTime = reader.Time("endTime", pEnd);
    if (pEnd && info.endTime != 0 && info.endTime < info.startTime)
        reader.Fail("endTime", "must not be less than startTime");
    info.fontName = reader.Characters("fontName");
    info.fontSize = reader.Float("fontSize", info.fontSize, 0, kMaxFontSize);
    info.textColor = reader.Color("textColor", info.textColor);
    info.backColor = reader.Color("backColor", info.backColor);
    info.textAlpha = reader.Float("textAlpha", info.textAlpha, 0, 1);
    info.backAlpha = reader.Float("backAlpha", info.backAlpha, 0, 1);
    for (const auto& [pName, pValue] : {std::pair{"hostData1", &info.hostData1}, {"hostData2", &info.hostData2}})
    {
        if (const JsonValue* const pField = reader.Find(pName, Kind::Number))
            *pValue = reader.Whole(pName, *pField, 0, UINT64_MAX);
    }
    reader.Finish();
    return info;
}

void ReadTitleFields(ObjectReader& reader, ProjectClip& clip)
{
    const std::vector<JsonValue>& texts = reader.Need("texts", Kind::Array).items;
    clip.texts.reserve(texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i)
        clip.texts.push_back(ReadText(texts[i], reader.PlaceOf("texts[" + std::to_string(i) + ']')));
}

void ReadKeystrokeFields(ObjectReader& reader, ProjectClip& clip)
{
    clip.inPoint = reader.Time("inPoint", reader.Find("inPoint", Kind::Number));
    clip.strip.left = static_cast<float>(reader.Fraction("left", clip.strip.left));
    clip.strip.top = static_cast<float>(reader.Fraction("top", clip.strip.top));
    clip.strip.width = static_cast<float>(reader.Fraction("width", clip.strip.width));
    const std::vector<JsonValue>& keystrokes = reader.Need("keystrokes", Kind::Array).items;
    clip.keystrokes.reserve(keystrokes.size());
    for (std::size_t i = 0; i < keystrokes.size(); ++i)
    {
        const std::string place = reader.PlaceOf("keystrokes[" + std::to_string(i) + ']');
        clip.keystrokes.push_back(ReadKeystroke(keystrokes[i], place));
        if (i > 0 && clip.keystrokes[i].startTime < clip.keystrokes[i - 1].startTime)
            throw JsonError(place + ".startTime", "must not be less than that of the keystroke before");
    }
}

/// The fields of the clip's own kind.
void ReadKindFields(ObjectReader& reader, ProjectClip& clip, const std::filesystem::path& folder)
{
    const bool isHeard = clip.kind == ClipKind::Video || clip.kind == ClipKind::Audio;
    const bool isFilm = clip.kind == ClipKind::Video || clip.kind == ClipKind::Camera;
    const bool isSeen = isFilm || clip.kind == ClipKind::Image;
    if (isHeard || isSeen)
        ReadFileFields(reader, clip, folder);
    if (isHeard)
        ReadSoundFields(reader, clip);
    if (isSeen)
        ReadPictureFields(reader, clip);
    if (isFilm)
        ReadVideoFields(reader, clip);
    else if (clip.kind == ClipKind::Title)
        ReadTitleFields(reader, clip);
    else if (clip.kind == ClipKind::Keystroke)
        ReadKeystrokeFields(reader, clip);
}

ProjectClip ReadClip(const JsonValue& value, std::string place, const std::filesystem::path& folder,
                     const FrameRate& rate)
{
    ObjectReader reader(value, std::move(place));
    ProjectClip clip;
    clip.place = reader.Place();
    clip.kind = ReadKind(reader);
    const std::uint64_t start = reader.Time("start", &reader.Need("start", Kind::Number));
    const std::uint64_t duration = reader.Time("duration", &reader.Need("duration", Kind::Number));
    if (duration == 0)
        reader.Fail("duration", "must be greater than 0");
    if (start + duration > kMaxTime)
        reader.Fail("duration", "ends after " + std::to_string(kMaxTime / kTimePerSecond) + " seconds");
    // Both ends move onto the project's frames before the duration is taken, so that clips which touch still do.
    clip.start = rate.Snapped(start);
    const std::uint64_t end = rate.Snapped(start + duration);
    if (end <= clip.start)
        reader.Fail("duration", "must be greater than 0");
    clip.duration = end - clip.start;
    ReadKindFields(reader, clip, folder);
    reader.Finish();
    return clip;
}

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

ProjectTrack ReadTrack(const JsonValue& value, std::string place, const std::filesystem::path& folder,
                       const FrameRate& rate)
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
        track.clips.push_back(ReadClip(clips[i], reader.PlaceOf("clips[" + std::to_string(i) + ']'), folder, rate));
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
        project.tracks.push_back(ReadTrack(tracks[i], place, file.parent_path(), *rate));
        const auto [other, isNew] = ids.emplace(project.tracks.back().id, place);
        if (!isNew)
            throw JsonError(place + ".id", std::to_string(other->first) + " is already the id of " + other->second);
    }
    if (project.Duration() == 0)
        throw JsonError("tracks", "hold no clip, so there is nothing to show");
    return project;
}

std::string ReadText(const std::filesystem::path& file)
{
    const auto fail = [&](const std::string& reason) { return HostError(ExitCode::Project, file.string(), reason); };
    std::error_code error;
    if (std::filesystem::is_directory(file, error))
        throw fail("is a folder");
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw fail(std::string("cannot be read: ") + std::strerror(errno));
    std::string text;
    std::array<char, 65536> part;
    do
    {
        stream.read(part.data(), static_cast<std::streamsize>(part.size()));
        text.append(part.data(), static_cast<std::size_t>(stream.gcount()));
        if (text.size() > ProjectReader::kMaxFileSize)
            throw fail("is larger than 16 MiB");
    } while (stream);
    if (stream.bad())
        throw fail("cannot be read");
    return text;
}
} // namespace

Project ProjectReader::ReadFile(const std::filesystem::path& file)
{
    return Parse(ReadText(file), file);
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
