#include "host/interchange/TimelineImporter.h"

#include "host/interchange/TimelineFlattener.h"
#include "host/interchange/TimelineSurvey.h"
#include "host/project/Decimal.h"
#include "host/project/JsonText.h"

#include <charconv>
#include <set>

namespace qmx::host
{
namespace
{
constexpr std::uint32_t kUsualWidth = 1920;
constexpr std::uint32_t kUsualHeight = 1080;

JsonValue RateValue(const FrameRate& rate)
{
    const std::string numerator = std::to_string(rate.Numerator());
    if (rate.Denominator() == 1)
        return JsonNumber(numerator);
    return JsonString(numerator + '/' + std::to_string(rate.Denominator()));
}

/// The rate of a project's field, or nothing when it holds none.
std::optional<FrameRate> RateOf(const JsonValue* pField)
{
    const bool isRate = pField && (pField->kind == JsonValue::Kind::Number || pField->kind == JsonValue::Kind::Text);
    return isRate ? FrameRate::Parse(pField->text) : std::nullopt;
}

/// The object of a file that holds the edit.
OtioObject FindTimeline(const OtioObject& root, TransferReport& report)
{
    if (!root.Is("SerializableCollection"))
        return root;
    std::optional<OtioObject> found;
    for (const OtioObject& child : root.Children("children"))
    {
        if (found)
            report.Add(child.Place(), child.Name(), "one more of a collection", "only the first timeline is read");
        else if (child.Is("Timeline"))
            found = child;
        else
            report.Add(child.Place(), child.Name(), "object of the kind \"" + child.Schema() + '"', "left out");
    }
    if (!found)
        throw JsonError(root.PlaceOf("children"), "hold no timeline");
    return *found;
}

class Importer
{
public:
    Importer(const ImportOptions& options, const ShapeLookup& lookup, TransferReport& report)
        : m_options(options), m_lookup(lookup),
          m_report(report), m_context{options.timelineFile.parent_path(), options.projectFile.parent_path(),
                                      FrameRate(), false, report}
    {
    }

    JsonValue Run(const OtioObject& root)
    {
        const OtioObject timeline = FindTimeline(root, m_report);
        const OtioObject top = TopOf(timeline);
        if (timeline.HasForeignMetadata() && timeline.Place() != top.Place())
            m_report.Add(timeline.Place(), timeline.Name(), "metadata", "those of other programs are left out");
        m_facts = SurveyTimeline(top, m_report);
        m_context.muteFilms = m_facts.hasSoundTrack;
        ReadStart(timeline);
        std::vector<JsonMember> members = Canvas(timeline);
        std::vector<JsonValue> tracks = Tracks(top);
        if (tracks.empty())
            throw JsonError(top.Place(), "holds no clip that can be shown");
        members.push_back({"tracks", JsonList(std::move(tracks))});
        return JsonObject(std::move(members));
    }

private:
    /// The stack of a timeline, or the object itself where a file holds no more than a track or a clip.
    static OtioObject TopOf(const OtioObject& timeline)
    {
        const std::string schema = timeline.Schema();
        if (schema == "Timeline")
        {
            const std::optional<OtioObject> tracks = timeline.Child("tracks");
            if (!tracks)
                throw JsonError(timeline.PlaceOf("tracks"), "is missing");
            if (!tracks->Is("Stack"))
                throw JsonError(tracks->PlaceOf("OTIO_SCHEMA"), "must be a stack");
            return *tracks;
        }
        if (schema == "Stack" || schema == "Track" || schema == "Clip")
            return timeline;
        throw JsonError(timeline.PlaceOf("OTIO_SCHEMA"),
                        schema.empty()
                            ? "is missing; this is no OpenTimelineIO file"
                            : "must be a timeline, a collection, a stack, a track or a clip, not \"" + schema + '"');
    }

    void ReadStart(const OtioObject& timeline)
    {
        const std::optional<OtioObject> start = timeline.Child("global_start_time");
        if (!start)
            return;
        const TimelineTime time = *timeline.Time("global_start_time");
        const std::optional<TimelineRate> rate = TimelineRate::Parse(start->Find("rate")->text);
        m_startRate = FrameRate::FromFraction(rate->numerator, rate->denominator);
        if (!time.IsZero())
            m_report.Add(start->Place(), timeline.Name(), "start of the time code", "a project starts at 0");
    }

    /// Size and rate: what was asked for, else what this program once wrote, else what the file says, else what the
    /// first media say.
    std::vector<JsonMember> Canvas(const OtioObject& timeline)
    {
        const JsonValue* const pOwn = timeline.OwnMetadata();
        const auto own = [&](const char* pName) { return pOwn ? FindMember(*pOwn, pName) : nullptr; };
        std::optional<std::uint32_t> width = CanvasSide(timeline, "x");
        std::optional<std::uint32_t> height = CanvasSide(timeline, "y");
        std::optional<FrameRate> rate = m_startRate ? m_startRate : m_facts.rate;
        const bool knowsSize =
            (width && height) || (own("width") && own("height")) || (m_options.width && m_options.height);
        if (!knowsSize || (!rate && !own("frameRate") && !m_options.frameRate))
            AskMedia(knowsSize, width, height, rate);
        if (!own("frameRate") && !rate && !m_options.frameRate)
            m_report.Add(timeline.Place(), timeline.Name(), "frame rate", "not known, so it is 30");
        m_context.rate = m_options.frameRate        ? *m_options.frameRate
                         : RateOf(own("frameRate")) ? *RateOf(own("frameRate"))
                                                    : rate.value_or(FrameRate());
        const auto side = [&](const char* pName, const std::optional<std::uint32_t>& asked,
                              const std::optional<std::uint32_t>& known, std::uint32_t otherwise)
        {
            if (!asked && own(pName))
                return *own(pName);
            return JsonNumber(std::to_string(asked ? *asked : known.value_or(otherwise)));
        };
        const bool keepsRate = !m_options.frameRate && own("frameRate");
        return {{"width", side("width", m_options.width, width, kUsualWidth)},
                {"height", side("height", m_options.height, height, kUsualHeight)},
                {"frameRate", keepsRate ? *own("frameRate") : RateValue(m_context.rate)}};
    }

    /// A side of the canvas that newer timelines carry. @param pAxis  "x" or "y"
    static std::optional<std::uint32_t> CanvasSide(const OtioObject& timeline, const char* pAxis)
    {
        const JsonValue* const pSize = timeline.Find("canvas_size");
        const JsonValue* const pSide = pSize ? FindMember(*pSize, pAxis) : nullptr;
        const std::optional<Decimal> side =
            pSide && pSide->kind == JsonValue::Kind::Number ? Decimal::Parse(pSide->text) : std::nullopt;
        const std::optional<std::uint64_t> pixels = side && !side->IsNegative() ? side->Scaled(0) : std::nullopt;
        if (!pixels || *pixels == 0 || *pixels > 16'384)
            return std::nullopt;
        return static_cast<std::uint32_t>(*pixels);
    }

    void AskMedia(bool knowsSize, std::optional<std::uint32_t>& width, std::optional<std::uint32_t>& height,
                  std::optional<FrameRate>& rate)
    {
        std::string reason;
        const std::optional<MediaLocation> location =
            m_facts.url ? LocationOfUrl(*m_facts.url, NativePathStyle(), reason) : std::nullopt;
        const std::optional<MediaShape> shape =
            location && m_lookup ? m_lookup(m_context.timelineFolder / location->path) : std::nullopt;
        if (shape && !rate)
            rate = shape->rate;
        if (knowsSize)
            return;
        if (shape)
        {
            width = shape->width;
            height = shape->height;
            return;
        }
        m_report.Add("", "", "size of the pictures",
                     "not known, so it is " + std::to_string(m_options.width.value_or(kUsualWidth)) + " x " +
                         std::to_string(m_options.height.value_or(kUsualHeight)));
    }

    std::vector<JsonValue> Tracks(const OtioObject& top)
    {
        TimelineFlattener flattener(m_context);
        ShownPart all;
        all.end = flattener.DurationOf(top);
        if (const std::optional<OtioRange> range = top.Range("source_range"); range && top.Is("Stack"))
        {
            all.begin = range->start;
            all.end = range->start + range->duration;
        }
        const std::vector<OtioObject> layers =
            top.Is("Stack") ? top.Children("children") : std::vector<OtioObject>{top};
        TakeIds(layers);
        std::vector<JsonValue> tracks;
        for (const OtioObject& layer : layers)
        {
            std::vector<ClipRow> rows = flattener.Flatten(layer, all);
            const bool keepsEmpty = layer.OwnMetadata() != nullptr && rows.empty() && layer.Flag("enabled", true);
            if (keepsEmpty)
                rows.emplace_back(); // as the project had it
            bool isFirst = true;
            for (ClipRow& row : rows)
            {
                if (row.empty() && !keepsEmpty)
                    continue;
                tracks.push_back(TrackOf(layer, std::move(row), isFirst));
                isFirst = false;
            }
        }
        bool hasClips = false;
        for (const JsonValue& track : tracks)
            hasClips |= !FindMember(track, "clips")->items.empty();
        return hasClips ? std::move(tracks) : std::vector<JsonValue>();
    }

    static std::optional<std::uint64_t> OwnId(const OtioObject& layer)
    {
        const JsonValue* const pOwn = layer.OwnMetadata();
        const JsonValue* const pId = pOwn ? FindMember(*pOwn, "id") : nullptr;
        if (!pId || pId->kind != JsonValue::Kind::Number)
            return std::nullopt;
        std::uint64_t id = 0;
        const char* const pEnd = pId->text.data() + pId->text.size();
        const auto [at, error] = std::from_chars(pId->text.data(), pEnd, id);
        return error == std::errc() && at == pEnd ? std::optional(id) : std::nullopt;
    }

    void TakeIds(const std::vector<OtioObject>& layers)
    {
        for (const OtioObject& layer : layers)
        {
            if (const std::optional<std::uint64_t> id = OwnId(layer))
                m_ids.insert(*id);
        }
    }

    std::uint64_t NewId()
    {
        while (!m_ids.insert(m_nextId).second)
            ++m_nextId;
        return m_nextId;
    }

    JsonValue TrackOf(const OtioObject& layer, ClipRow row, bool isFirst)
    {
        std::optional<std::uint64_t> id = isFirst ? OwnId(layer) : std::nullopt;
        if (id && !m_given.insert(*id).second)
            id.reset(); // two objects say the same
        std::vector<JsonMember> members{{"id", JsonNumber(std::to_string(id ? *id : NewId()))}};
        const JsonValue* const pOwn = layer.OwnMetadata();
        if (pOwn && layer.Is("Track"))
        {
            for (const JsonMember& member : pOwn->members)
            {
                if (member.name != "id" && member.name != "clips")
                    members.push_back(member);
            }
        }
        else if (layer.Is("Track"))
        {
            if (const double gain = GainOf(layer, m_context); gain != 1)
                members.push_back({"volume", JsonNumber(NumberText(gain))});
        }
        std::vector<JsonValue> clips;
        clips.reserve(row.size());
        for (PlacedClip& clip : row)
            clips.push_back(std::move(clip.json));
        members.push_back({"clips", JsonList(std::move(clips))});
        return JsonObject(std::move(members));
    }

    const ImportOptions& m_options;
    const ShapeLookup& m_lookup;
    TransferReport& m_report;
    ImportContext m_context;
    TimelineFacts m_facts;
    std::optional<FrameRate> m_startRate;
    std::set<std::uint64_t> m_ids;   // taken
    std::set<std::uint64_t> m_given; // by objects that say their own
    std::uint64_t m_nextId = 1;
};
} // namespace

JsonValue ImportTimeline(std::string_view text, const ImportOptions& options, const ShapeLookup& lookup,
                         TransferReport& report)
{
    const JsonValue tree = ParseOtio(text);
    return Importer(options, lookup, report).Run(OtioObject(tree, ""));
}
} // namespace qmx::host
