#include "host/interchange/TimelineExporter.h"

#include "host/interchange/MediaUrl.h"
#include "host/interchange/OtioObject.h"
#include "host/interchange/ProjectPieces.h"
#include "host/interchange/TimelineTime.h"
#include "host/interchange/TransitionNames.h"
#include "host/project/CameraFiles.h"
#include "host/project/Decimal.h"
#include "host/project/JsonText.h"

#include <algorithm>
#include <set>

namespace qmx::host
{
namespace
{
constexpr TimelineRate kUnitRate{kTimePerSecond, 1};

/// A time with the rate that it is written in.
struct WrittenTime
{
    TimelineTime time;
    std::int64_t count = 0;
    TimelineRate rate;
};

JsonValue Time(std::int64_t count, const TimelineRate& rate)
{
    return JsonObject({{"OTIO_SCHEMA", JsonString("RationalTime.1")},
                       {"rate", JsonNumber(rate.Text())},
                       {"value", JsonNumber(std::to_string(count) + ".0")}});
}

JsonValue Time(const WrittenTime& time)
{
    return Time(time.count, time.rate);
}

JsonValue Range(JsonValue start, JsonValue duration)
{
    return JsonObject({{"OTIO_SCHEMA", JsonString("TimeRange.1")},
                       {"duration", std::move(duration)},
                       {"start_time", std::move(start)}});
}

JsonValue Metadata(std::vector<JsonMember> own)
{
    if (own.empty())
        return JsonObject({});
    return JsonObject({{kOwnMetadata, JsonObject(std::move(own))}});
}

/// Seconds of either sign, relative to something.
JsonValue SignedSeconds(std::int64_t units)
{
    const auto size = static_cast<std::uint64_t>(units < 0 ? -units : units);
    return JsonNumber((units < 0 ? "-" : "") + SecondsText(size));
}

/// The members of an object but for some.
std::vector<JsonMember> Without(const JsonValue& object, std::initializer_list<std::string_view> names)
{
    std::vector<JsonMember> members;
    for (const JsonMember& member : object.members)
    {
        if (std::find(names.begin(), names.end(), member.name) == names.end())
            members.push_back(member);
    }
    return members;
}

std::string NamesOf(const std::vector<JsonMember>& members)
{
    std::string names;
    for (const JsonMember& member : members)
        names += (names.empty() ? "" : ", ") + member.name;
    return names;
}

class Exporter
{
public:
    Exporter(const ExportOptions& options, const LengthLookup& lookup, TransferReport& report, const FrameRate& rate)
        : m_options(options), m_lookup(lookup), m_report(report),
          m_rate(rate), m_frameRate{rate.Numerator(), rate.Denominator()}
    {
        // A rate that would read back as another one cannot carry times.
        m_usesFrames = TimelineRate::Parse(m_frameRate.Text()) == m_frameRate;
    }

    JsonValue Run(const JsonValue& project)
    {
        std::vector<JsonValue> tracks;
        const JsonValue* const pTracks = FindMember(project, "tracks");
        for (std::size_t i = 0; pTracks && i < pTracks->items.size(); ++i)
            tracks.push_back(Track(pTracks->items[i], "tracks[" + std::to_string(i) + ']'));
        JsonValue stack = Item("Stack.1", "tracks", {});
        stack.members.push_back({"children", JsonList(std::move(tracks))});
        return JsonObject({{"OTIO_SCHEMA", JsonString("Timeline.1")},
                           {"metadata", Metadata(Without(project, {"tracks"}))},
                           {"name", JsonString(NameOf(m_options.projectFile.string()))},
                           {"global_start_time", Time(0, m_usesFrames ? m_frameRate : kUnitRate)},
                           {"tracks", std::move(stack)}});
    }

private:
    /// What clips, gaps, tracks and stacks have in common; without a source range.
    static JsonValue Item(const char* pSchema, std::string name, std::vector<JsonMember> own)
    {
        return JsonObject({{"OTIO_SCHEMA", JsonString(pSchema)},
                           {"metadata", Metadata(std::move(own))},
                           {"name", JsonString(std::move(name))},
                           {"source_range", JsonNull()},
                           {"effects", JsonList({})},
                           {"markers", JsonList({})},
                           {"enabled", JsonFlag(true)}});
    }

    static void SetRange(JsonValue& item, JsonValue range)
    {
        for (JsonMember& member : item.members)
        {
            if (member.name == "source_range")
                member.value = std::move(range);
        }
    }

    /// File name without folder and extension, as far as it can stand in a JSON text.
    static std::string NameOf(const std::string& path)
    {
        const std::string name = std::filesystem::path(path).stem().string();
        return IsPlainUtf8(name) ? name : std::string();
    }

    /// The count of frames for a span when it reads back to the wanted end, else one of 100 ns.
    /// @param from  where the span begins, as a reader adds it up   @param end  where it has to end, 100 ns
    WrittenTime SpanTo(const TimelineTime& from, std::uint64_t end) const
    {
        WrittenTime span;
        const auto wanted = static_cast<std::int64_t>(end);
        if (m_usesFrames)
        {
            span.rate = m_frameRate;
            span.count = (TimelineTime::FromUnits(end) - from).NearestCount(m_frameRate);
            span.time = TimelineTime::FromCount(span.count, m_frameRate);
            if ((from + span.time).FloorUnits() == wanted)
                return span;
        }
        span.rate = kUnitRate;
        span.count = wanted - from.FloorUnits();
        span.time = TimelineTime::FromCount(span.count, kUnitRate);
        return span;
    }

    /// A time in media: frames when they read back, else 100 ns.
    WrittenTime MediaTime(std::uint64_t units) const
    {
        WrittenTime result{TimelineTime::FromUnits(units), static_cast<std::int64_t>(units), kUnitRate};
        if (!m_usesFrames)
            return result;
        const std::int64_t count = result.time.NearestCount(m_frameRate);
        const TimelineTime frames = TimelineTime::FromCount(count, m_frameRate);
        if (frames.NearestUnits() == result.count)
            result = {frames, count, m_frameRate};
        return result;
    }

    JsonValue Track(const JsonValue& track, const std::string& place)
    {
        const std::vector<JsonMember> own = Without(track, {"clips"});
        const std::vector<TrackPiece> pieces = PiecesOfTrack(track, place, m_rate);
        const bool isAudio = IsAudio(pieces, place);
        ReportOwn(Without(track, {"clips", "id"}), place);
        std::vector<JsonValue> children;
        TimelineTime position; // as a reader adds it up
        for (const TrackPiece& piece : pieces)
        {
            if (piece.pTransition)
                children.push_back(Transition(piece, position));
            const WrittenTime duration = SpanTo(position, piece.end);
            children.push_back(piece.pClip ? Clip(piece, duration) : Gap(duration));
            position = position + duration.time;
        }
        JsonValue result = Item("Track.1", "Track " + FieldText(track, "id"), own);
        result.members.push_back({"kind", JsonString(isAudio ? "Audio" : "Video")});
        result.members.push_back({"children", JsonList(std::move(children))});
        return result;
    }

    /// A track of sound holds nothing that is seen.
    bool IsAudio(const std::vector<TrackPiece>& pieces, const std::string& place)
    {
        std::size_t heard = 0;
        std::size_t clips = 0;
        for (const TrackPiece& piece : pieces)
        {
            clips += piece.pClip ? 1 : 0;
            heard += piece.pClip && FieldText(*piece.pClip, "type") == "audio" ? 1 : 0;
        }
        if (heard != 0 && heard != clips)
            m_report.Add(place, "", "audio clips among pictures", "their track is one of pictures to other programs");
        return clips != 0 && heard == clips;
    }

    void ReportOwn(const std::vector<JsonMember>& members, const std::string& place)
    {
        if (!members.empty())
            m_report.Add(place, "", NamesOf(members), "only qmx reads it");
    }

    JsonValue Gap(const WrittenTime& duration) const
    {
        JsonValue gap = Item("Gap.1", "", {});
        SetRange(gap, Range(Time(0, duration.rate), Time(duration)));
        return gap;
    }

    JsonValue Transition(const TrackPiece& piece, const TimelineTime& cut)
    {
        const JsonValue& transition = *piece.pTransition;
        const std::string effect = EffectName(FieldText(transition, "effect"));
        const std::string module = FieldText(transition, "module");
        const bool isOurs = module.empty() || module == "qmx_transitions";
        const bool isDissolve = isOurs && (effect.empty() || effect == EffectName("0"));
        std::vector<JsonMember> own = Without(transition, {"type", "start", "duration", "from", "to"});
        if (!isDissolve)
            m_report.Add(piece.transitionPlace, "", "effect \"" + effect + '"', "other programs may show another one");
        if (FindMember(transition, "progress"))
            m_report.Add(piece.transitionPlace, "", "progress", "only qmx reads it");
        // The start is read as the cut less the offset, so the offset is what a span from the start to the cut would
        // be.
        const TimelineTime start = TimelineTime::FromUnits(piece.transitionStart);
        WrittenTime in{cut - start, 0, m_frameRate};
        in.count = in.time.NearestCount(m_frameRate);
        in.time = TimelineTime::FromCount(in.count, m_frameRate);
        if (!m_usesFrames || (cut - in.time).FloorUnits() != static_cast<std::int64_t>(piece.transitionStart))
            in = {{}, cut.FloorUnits() - static_cast<std::int64_t>(piece.transitionStart), kUnitRate};
        const WrittenTime out = SpanTo(cut, piece.transitionEnd);
        return JsonObject(
            {{"OTIO_SCHEMA", JsonString("Transition.1")},
             {"metadata", JsonObject({{kOwnMetadata, JsonObject(std::move(own))}})}, // empty says enough too
             {"name", JsonString(isDissolve ? EffectName("0") : effect)},
             {"in_offset", Time(in)},
             {"out_offset", Time(out)},
             {"transition_type", JsonString(isDissolve ? kDissolveType : kCustomType)}});
    }

    JsonValue Clip(const TrackPiece& piece, const WrittenTime& duration)
    {
        const JsonValue& clip = *piece.pClip;
        const std::string& type = FieldText(clip, "type");
        std::vector<JsonMember> own = Without(clip, {"start", "duration", "inPoint", "path"});
        if (piece.isFixed)
            own.push_back({"side", SideSpan(piece)});
        RebaseBackground(own, m_options.projectFile.parent_path(), m_options.timelineFile.parent_path());
        const std::vector<JsonMember> settings = Without(clip, {"type", "start", "duration", "inPoint", "path"});
        const std::string& path = FieldText(clip, "path");
        JsonValue item = Item("Clip.2", path.empty() ? type : NameOf(path), std::move(own));
        if (type == "title" || type == "keystroke")
            m_report.Add(piece.place, "", type, "only qmx makes its pictures");
        else
            ReportOwn(settings, piece.place);
        SetRange(item, Range(Time(MediaTime(piece.inPoint)), Time(duration)));
        JsonValue reference = path.empty() ? Generator(type) : File(piece, type, path);
        item.members.push_back({"media_references", JsonObject({{"DEFAULT_MEDIA", std::move(reference)}})});
        item.members.push_back({"active_media_reference_key", JsonString("DEFAULT_MEDIA")});
        return item;
    }

    /// The span that a side of a transition has of its own, its start counted from the transition's.
    static JsonValue SideSpan(const TrackPiece& piece)
    {
        std::vector<JsonMember> span;
        // The transition of a from clip stands behind it: its start is the piece's own.
        const std::uint64_t origin = piece.pTransition ? piece.transitionStart : piece.start;
        if (FindMember(*piece.pClip, "start"))
            span.push_back({"start", SignedSeconds(static_cast<std::int64_t>(FieldTime(*piece.pClip, "start")) -
                                                   static_cast<std::int64_t>(origin))});
        if (FindMember(*piece.pClip, "duration"))
            span.push_back({"duration", SignedSeconds(static_cast<std::int64_t>(FieldTime(*piece.pClip, "duration")))});
        return JsonObject(std::move(span));
    }

    static JsonValue Reference(const char* pSchema, JsonValue available)
    {
        return JsonObject({{"OTIO_SCHEMA", JsonString(pSchema)},
                           {"metadata", JsonObject({})},
                           {"name", JsonString("")},
                           {"available_range", std::move(available)},
                           {"available_image_bounds", JsonNull()}});
    }

    static JsonValue Generator(const std::string& type)
    {
        JsonValue reference = Reference("GeneratorReference.1", JsonNull());
        const bool isColor = type == "color";
        reference.members.push_back({"generator_kind", JsonString(isColor ? "SolidColor" : type)});
        std::vector<JsonMember> parameters;
        if (isColor)
            parameters.push_back({"color", JsonString("#000000")});
        reference.members.push_back({"parameters", JsonObject(std::move(parameters))});
        return reference;
    }

    JsonValue File(const TrackPiece& piece, const std::string& type, const std::string& path)
    {
        const std::filesystem::path folder = m_options.projectFile.parent_path();
        JsonValue available;
        if (type != "image")
        {
            const std::optional<std::uint64_t> length =
                m_lookup ? m_lookup(type, folder / path) : std::optional<std::uint64_t>();
            if (length && *length <= kMaxTime)
                available = Range(Time(0, m_usesFrames ? m_frameRate : kUnitRate), Time(MediaTime(*length)));
            else if (m_unread.insert(path).second)
                m_report.Add(piece.place, "", "length of \"" + path + '"',
                             "the media cannot be read, so it is left open");
        }
        std::string target = path;
        if (type == "camera")
        {
            target = CameraMediaPath(path).generic_string();
            if (IsMotionJpegName(path))
                m_report.Add(piece.place, "", "recording \"" + path + '"', "its media are no film that others read");
        }
        target = RebasedPath(target, folder, m_options.timelineFile.parent_path());
        JsonValue reference = Reference("ExternalReference.1", std::move(available));
        reference.members.push_back({"target_url", JsonString(UrlOfPath(target, NativePathStyle()))});
        return reference;
    }

    const ExportOptions& m_options;
    const LengthLookup& m_lookup;
    TransferReport& m_report;
    FrameRate m_rate;
    TimelineRate m_frameRate;
    bool m_usesFrames = false;
    std::set<std::string> m_unread; ///< media that have been reported
};
} // namespace

JsonValue ExportTimeline(const JsonValue& project, const ExportOptions& options, const LengthLookup& lookup,
                         TransferReport& report)
{
    const FrameRate rate = FrameRate::Parse(FieldText(project, "frameRate")).value_or(FrameRate());
    return Exporter(options, lookup, report, rate).Run(project);
}
} // namespace qmx::host
