#include "host/interchange/TimelineFlattener.h"

#include "host/interchange/TransitionNames.h"
#include "host/project/Decimal.h"
#include "host/project/JsonText.h"

#include <algorithm>

namespace qmx::host
{
namespace
{
const TimelineTime& Earlier(const TimelineTime& a, const TimelineTime& b)
{
    return b < a ? b : a;
}

const TimelineTime& Later(const TimelineTime& a, const TimelineTime& b)
{
    return a < b ? b : a;
}

TimelineTime Sum(const OtioObject& object, const TimelineTime& a, const TimelineTime& b)
{
    const TimelineTime sum = a + b;
    if (sum.IsTooLong())
        throw JsonError(object.Place(),
                        "ends after " + std::to_string(TimelineTime::kMaxSeconds) + " seconds of its timeline");
    return sum;
}

bool IsComposition(const std::string& schema)
{
    return schema == "Track" || schema == "Stack";
}

/// Seconds with as many decimals as they need.
JsonValue SecondsNumber(std::uint64_t time)
{
    std::string text = SecondsText(time);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return JsonNumber(std::move(text));
}

/// Whether a field of a transition follows from the timeline.
bool IsPlaceField(std::string_view name)
{
    return name == "type" || name == "start" || name == "duration" || name == "from" || name == "to";
}

/// Path, in point and settings of a clip, in the order in which projects have them.
void AddContents(std::vector<JsonMember>& members, const ClipDraft& draft, std::int64_t inPoint, bool isHeard)
{
    if (!draft.path.empty())
        members.push_back({"path", JsonString(draft.path)});
    if (draft.takesInPoint && inPoint > 0)
        members.push_back({"inPoint", SecondsNumber(static_cast<std::uint64_t>(inPoint))});
    for (const JsonMember& member : draft.settings)
    {
        if (isHeard || (member.name != "volume" && member.name != "mute"))
            members.push_back(member);
    }
}
} // namespace

void TimelineFlattener::Report(const OtioObject& object, const std::string& what, const std::string& why)
{
    m_context.report.Add(object.Place(), object.Name(), what, why);
}

ClipRow& TimelineFlattener::Row(std::size_t index)
{
    if (m_rows.size() <= index)
        m_rows.resize(index + 1);
    return m_rows[index];
}

TimelineTime TimelineFlattener::DurationOf(const OtioObject& object)
{
    const std::string schema = object.Schema();
    if (schema == "Clip")
    {
        const std::optional<OtioRange> range = RangeOfClip(object);
        return range ? range->duration : TimelineTime();
    }
    if (const std::optional<OtioRange> range = object.Range("source_range"))
        return range->duration;
    if (!IsComposition(schema))
        return {};
    const auto known = m_durations.find(&object.Value());
    if (known != m_durations.end())
        return known->second;
    TimelineTime duration;
    for (const OtioObject& child : object.Children("children"))
    {
        if (child.Is("Transition"))
            continue; // lies over its neighbours
        const TimelineTime length = DurationOf(child);
        duration = schema == "Track" ? Sum(child, duration, length) : Later(duration, length);
    }
    m_durations.emplace(&object.Value(), duration);
    return duration;
}

/// A time of an object as 100 ns of the project; negative before its start.
std::int64_t TimelineFlattener::FloorUnits(const OtioObject& object, const ShownPart& part,
                                           const TimelineTime& time) const
{
    return Sum(object, part.at, time - part.begin).FloorUnits();
}

/// The same, on a frame where it lies beside one: what a project makes of the start or end of a clip.
std::int64_t TimelineFlattener::Units(const OtioObject& object, const ShownPart& part, const TimelineTime& time) const
{
    const std::int64_t units = FloorUnits(object, part, time);
    return units < 0 ? units : static_cast<std::int64_t>(m_context.rate.Snapped(static_cast<std::uint64_t>(units)));
}

std::vector<ClipRow> TimelineFlattener::Flatten(const OtioObject& child, const ShownPart& stack)
{
    m_rows.clear();
    const TimelineTime length = DurationOf(child);
    Slot slot{child, {}, length, {}, length, std::nullopt};
    ShownPart part = stack;
    part.row = 0;
    if (child.Is("Clip") && child.Flag("enabled", true))
        slot.draft = DraftClip(child, stack.isAudio, m_context);
    PlaceSlot(slot, part);
    for (ClipRow& row : m_rows)
        std::stable_sort(row.begin(), row.end(),
                         [](const PlacedClip& a, const PlacedClip& b) { return a.start < b.start; });
    return std::move(m_rows);
}

/// Places what a slot still shows inside its track or stack. @return rows that were taken
std::size_t TimelineFlattener::PlaceSlot(const Slot& slot, const ShownPart& part)
{
    const TimelineTime from = Later(slot.shownFrom, part.begin);
    const TimelineTime to = Earlier(slot.shownTo, part.end);
    const std::string schema = slot.object.Schema();
    if (schema != "Gap" && !slot.object.Flag("enabled", true))
    {
        Report(slot.object, "is turned off", "left out");
        return 1;
    }
    if (schema == "Clip")
    {
        if (!RangeOfClip(slot.object))
            Report(slot.object, "clip without a range",
                   "neither it nor its media say how long it is, so it is left out");
        if (slot.draft && from < to)
            PlaceClip(slot, from, to, part);
        return 1;
    }
    if (schema == "Gap" || to < from)
        return 1;
    if (!IsComposition(schema))
    {
        Report(slot.object, "object of the kind \"" + schema + '"', "left out");
        return 1;
    }
    if (!(from < to))
        return 1;
    const std::optional<OtioRange> range = slot.object.Range("source_range");
    const TimelineTime origin = range ? range->start : TimelineTime(); // own time at the slot's start
    ShownPart inner = part;
    inner.begin = origin + (from - slot.start);
    inner.end = origin + (to - slot.start);
    inner.at = Sum(slot.object, part.at, from - part.begin);
    return Place(slot.object, inner);
}

std::size_t TimelineFlattener::Place(const OtioObject& object, const ShownPart& part)
{
    if (object.Is("Stack"))
        return PlaceStack(object, part);
    const std::string kind = object.Text("kind");
    if (!kind.empty() && kind != "Video" && kind != "Audio")
    {
        Report(object, "track of the kind \"" + kind + '"', "left out");
        return 1;
    }
    ShownPart inner = part;
    inner.isAudio = kind == "Audio";
    return PlaceTrack(object, inner);
}

std::size_t TimelineFlattener::PlaceStack(const OtioObject& stack, const ShownPart& part)
{
    std::size_t rows = 0;
    for (const OtioObject& child : stack.Children("children"))
    {
        const TimelineTime length = DurationOf(child);
        ShownPart inner = part;
        inner.row = part.row + rows;
        Slot slot{child, {}, length, {}, length, std::nullopt};
        if (child.Is("Clip") && child.Flag("enabled", true))
            slot.draft = DraftClip(child, part.isAudio, m_context);
        rows += PlaceSlot(slot, inner);
    }
    return std::max<std::size_t>(rows, 1);
}

std::size_t TimelineFlattener::PlaceTrack(const OtioObject& track, const ShownPart& part)
{
    std::vector<Slot> slots;
    std::vector<Join> joins;
    ReadTrack(track, part, slots, joins);
    std::vector<const Join*> shown;
    std::size_t latest = SIZE_MAX; // slot behind the transition before
    for (Join& join : joins)
    {
        if (join.next == latest)
            Report(join.transition, "second transition of a cut", "left out");
        else if (CheckJoin(join, slots, part) && FitJoin(join, slots, part))
            shown.push_back(&join);
        latest = join.next;
    }
    std::size_t rows = 1;
    for (const Slot& slot : slots)
        rows = std::max(rows, PlaceSlot(slot, part));
    for (const Join* const pJoin : shown)
        PlaceJoin(*pJoin, slots, part);
    return rows;
}

void TimelineFlattener::ReadTrack(const OtioObject& track, const ShownPart& part, std::vector<Slot>& slots,
                                  std::vector<Join>& joins)
{
    TimelineTime end;
    for (const OtioObject& child : track.Children("children"))
    {
        if (child.Is("Transition"))
        {
            const auto offset = [&](const char* pName)
            {
                const TimelineTime time = child.Time(pName).value_or(TimelineTime());
                if (time.IsNegative())
                    throw JsonError(child.PlaceOf(pName), "must not be negative");
                return time;
            };
            joins.push_back({child, slots.size(), end, offset("in_offset"), offset("out_offset")});
            continue;
        }
        const TimelineTime start = end;
        end = Sum(child, end, DurationOf(child));
        Slot slot{child, start, end, start, end, std::nullopt};
        const bool isSeen = start < part.end && part.begin < end;
        if (isSeen && child.Is("Clip") && child.Flag("enabled", true))
            slot.draft = DraftClip(child, part.isAudio, m_context);
        slots.push_back(std::move(slot));
    }
}

/// Whether a transition can be one in a project; reports why not.
bool TimelineFlattener::CheckJoin(const Join& join, const std::vector<Slot>& slots, const ShownPart& part)
{
    const auto refuse = [&](const char* pWhat)
    {
        Report(join.transition, pWhat, "becomes a cut");
        return false;
    };
    if (part.isAudio)
        return refuse("transition of sounds");
    const Slot* const pFrom = join.next > 0 ? &slots[join.next - 1] : nullptr;
    const Slot* const pTo = join.next < slots.size() ? &slots[join.next] : nullptr;
    bool isSeen = false;
    for (const Slot* const pSide : {pFrom, pTo})
    {
        if (!pSide)
            continue;
        if (IsComposition(pSide->object.Schema()))
            return refuse("transition of a nested sequence");
        if (pSide->draft && pSide->draft->type == "audio")
            return refuse("transition of sounds");
        isSeen |= pSide->draft.has_value();
    }
    if (!isSeen)
        return refuse("transition between things that are not seen");
    return true;
}

/// Gives a transition its share of its neighbours. @return false when there is none that is shown whole
bool TimelineFlattener::FitJoin(Join& join, std::vector<Slot>& slots, const ShownPart& part)
{
    const TimelineTime none;
    Slot* const pFrom = join.next > 0 ? &slots[join.next - 1] : nullptr;
    Slot* const pTo = join.next < slots.size() ? &slots[join.next] : nullptr;
    const TimelineTime before = pFrom ? pFrom->shownTo - pFrom->shownFrom : none;
    const TimelineTime behind = pTo ? pTo->end - pTo->start : none;
    const TimelineTime unit = TimelineTime::FromUnits(1); // less comes from rounding to it
    if (before + unit < join.in || behind + unit < join.out)
        Report(join.transition, "reaches beyond its neighbours", "shortened");
    join.in = Earlier(join.in, before);
    join.out = Earlier(join.out, behind);
    const auto refuse = [&](const char* pWhat)
    {
        Report(join.transition, pWhat, "becomes a cut");
        return false;
    };
    if (!(none < join.in + join.out))
        return refuse("transition without length");
    if (join.cut - join.in < part.begin || part.end < join.cut + join.out)
        return refuse("transition at the edge of what is shown");
    if (pFrom)
        pFrom->shownTo = join.cut - join.in;
    if (pTo)
        pTo->shownFrom = join.cut + join.out;
    return true;
}

void TimelineFlattener::PlaceClip(const Slot& slot, TimelineTime from, TimelineTime to, const ShownPart& part)
{
    const ClipDraft& draft = *slot.draft;
    const std::int64_t start = Units(slot.object, part, from);
    const std::int64_t end = Units(slot.object, part, to);
    if (end <= start)
    {
        if (from == slot.start && to == slot.end) // otherwise a splinter that a transition left
            Report(slot.object, "clip shorter than 100 ns", "left out");
        return;
    }
    std::vector<JsonMember> members{{"type", JsonString(draft.type)},
                                    {"start", SecondsNumber(static_cast<std::uint64_t>(start))},
                                    {"duration", SecondsNumber(static_cast<std::uint64_t>(end - start))}};
    const std::int64_t shift = from == slot.start ? 0 : start - FloorUnits(slot.object, part, slot.start);
    AddContents(members, draft, draft.inPoint + shift, true);
    Row(part.row).push_back({static_cast<std::uint64_t>(start), JsonObject(std::move(members))});
}

/// One side of a transition. @param shift  from the slot's start to where the side's span begins, 100 ns
JsonValue TimelineFlattener::SideOf(const Slot& slot, std::int64_t shift, std::uint64_t joinStart) const
{
    const ClipDraft& draft = *slot.draft;
    std::vector<JsonMember> members{{"type", JsonString(draft.type)}};
    if (draft.sideStart)
    {
        const std::int64_t start = static_cast<std::int64_t>(joinStart) + *draft.sideStart;
        members.push_back({"start", SecondsNumber(static_cast<std::uint64_t>(std::max<std::int64_t>(start, 0)))});
        shift = 0;
    }
    if (draft.sideDuration)
        members.push_back({"duration", SecondsNumber(*draft.sideDuration)});
    AddContents(members, draft, draft.inPoint + shift, false);
    return JsonObject(std::move(members));
}

void TimelineFlattener::PlaceJoin(const Join& join, const std::vector<Slot>& slots, const ShownPart& part)
{
    const std::int64_t start = Units(join.transition, part, join.cut - join.in);
    const std::int64_t end = Units(join.transition, part, join.cut + join.out);
    if (end <= start)
    {
        Report(join.transition, "transition shorter than 100 ns", "becomes a cut");
        return;
    }
    std::vector<JsonMember> members{{"type", JsonString("transition")},
                                    {"start", SecondsNumber(static_cast<std::uint64_t>(start))},
                                    {"duration", SecondsNumber(static_cast<std::uint64_t>(end - start))}};
    const JsonValue* const pOwn = join.transition.OwnMetadata();
    if (pOwn)
    {
        for (const JsonMember& member : pOwn->members)
        {
            if (!IsPlaceField(member.name))
                members.push_back(member);
        }
    }
    else
    {
        const std::string type = join.transition.Text("transition_type");
        const EffectMatch match = MatchEffect(type, join.transition.Name());
        if (!match.isExact)
            Report(join.transition, "transition of the type \"" + type + '"',
                   std::string("becomes the effect ") + match.pEffect);
        members.push_back({"module", JsonString("qmx_transitions")});
        members.push_back({"effect", JsonString(match.pEffect)});
    }
    // The to clip's span begins in the middle, where its pictures begin to move; with one progress for all at the
    // start.
    const bool hasProgress = pOwn && FindMember(*pOwn, "progress");
    const std::int64_t middle = hasProgress ? start : start + (end - start) / 2;
    const auto add = [&](const char* pName, const Slot& slot, std::int64_t shift)
    {
        if (slot.draft)
            members.push_back({pName, SideOf(slot, shift, static_cast<std::uint64_t>(start))});
    };
    if (join.next > 0)
    {
        const Slot& slot = slots[join.next - 1];
        const bool isWhole = slot.start == join.cut - join.in;
        add("from", slot, isWhole ? 0 : start - FloorUnits(slot.object, part, slot.start));
    }
    if (join.next < slots.size())
        add("to", slots[join.next], middle - FloorUnits(join.transition, part, join.cut));
    Row(part.row).push_back({static_cast<std::uint64_t>(start), JsonObject(std::move(members))});
}
} // namespace qmx::host
