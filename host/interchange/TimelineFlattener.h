/// @file TimelineFlattener.h
/// From tracks and stacks inside each other to rows of clips.
#pragma once

#include "host/interchange/OtioClip.h"
#include "host/interchange/OtioObject.h"
#include "host/project/JsonTree.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace qmx::host
{
/// A clip as a project file has it.
struct PlacedClip
{
    std::uint64_t start = 0; ///< 100 ns
    JsonValue json;
};

/// Clips by start time that do not overlap: what a track of a project can hold.
using ClipRow = std::vector<PlacedClip>;

/// The part of an object that is shown, and where.
struct ShownPart
{
    TimelineTime begin;   ///< in the object's own time
    TimelineTime end;     ///< likewise, not before begin
    TimelineTime at;      ///< where begin lies on the project's time line
    std::size_t row = 0;  ///< of the lowest clips
    bool isAudio = false; ///< of the nearest track around the object
};

/// Places the clips of one object after another. A track inside a track continues its row, a stack inside one takes as
/// many rows as it has layers, beginning with the row of what it stands in.
class TimelineFlattener
{
public:
    explicit TimelineFlattener(ImportContext& context) : m_context(context) {}

    /// How long an object is; 0 when that is not known.
    TimelineTime DurationOf(const OtioObject& object);

    /// Rows for the part of a stack's child that the stack shows, the lowest first; none when nothing is to be seen.
    /// @param stack  the part of the stack that is shown; its row counts for nothing
    std::vector<ClipRow> Flatten(const OtioObject& child, const ShownPart& stack);

private:
    /// An object of a track with its span in the track's time.
    struct Slot
    {
        OtioObject object;
        TimelineTime start;
        TimelineTime end;
        TimelineTime shownFrom; ///< transitions take the rest
        TimelineTime shownTo;
        std::optional<ClipDraft> draft; ///< of a clip that can be shown
    };
    struct Join
    {
        OtioObject transition;
        std::size_t next; ///< index of the slot behind the cut
        TimelineTime cut;
        TimelineTime in;  ///< before the cut
        TimelineTime out; ///< behind it
    };

    std::size_t Place(const OtioObject& object, const ShownPart& part);
    std::size_t PlaceTrack(const OtioObject& track, const ShownPart& part);
    std::size_t PlaceStack(const OtioObject& stack, const ShownPart& part);
    std::size_t PlaceSlot(const Slot& slot, const ShownPart& part);
    void ReadTrack(const OtioObject& track, const ShownPart& part, std::vector<Slot>& slots, std::vector<Join>& joins);
    bool CheckJoin(const Join& join, const std::vector<Slot>& slots, const ShownPart& part);
    bool FitJoin(Join& join, std::vector<Slot>& slots, const ShownPart& part);
    void PlaceClip(const Slot& slot, TimelineTime from, TimelineTime to, const ShownPart& part);
    void PlaceJoin(const Join& join, const std::vector<Slot>& slots, const ShownPart& part);
    JsonValue SideOf(const Slot& slot, std::int64_t shift, std::uint64_t joinStart) const;
    std::int64_t FloorUnits(const OtioObject& object, const ShownPart& part, const TimelineTime& time) const;
    std::int64_t Units(const OtioObject& object, const ShownPart& part, const TimelineTime& time) const;
    void Report(const OtioObject& object, const std::string& what, const std::string& why);
    ClipRow& Row(std::size_t index);

    ImportContext& m_context;
    std::vector<ClipRow> m_rows;
    std::unordered_map<const JsonValue*, TimelineTime> m_durations; ///< of compositions
};
} // namespace qmx::host
