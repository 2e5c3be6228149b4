#include "host/interchange/ProjectPieces.h"

#include "host/project/Decimal.h"

#include <algorithm>

namespace qmx::host
{
namespace
{
/// A clip with its span, on frames as a ProjectReader puts it.
struct Span
{
    const JsonValue* pClip;
    std::string place;
    std::uint64_t start;
    std::uint64_t end;
};

std::vector<Span> SortedClips(const JsonValue& track, const std::string& place, const FrameRate& rate)
{
    std::vector<Span> spans;
    const JsonValue* const pClips = FindMember(track, "clips");
    for (std::size_t i = 0; pClips && i < pClips->items.size(); ++i)
    {
        const JsonValue& clip = pClips->items[i];
        const std::uint64_t start = FieldTime(clip, "start");
        spans.push_back({&clip, place + ".clips[" + std::to_string(i) + ']', rate.Snapped(start),
                         rate.Snapped(start + FieldTime(clip, "duration"))});
    }
    std::stable_sort(spans.begin(), spans.end(), [](const Span& a, const Span& b) { return a.start < b.start; });
    return spans;
}

bool IsSame(const JsonValue& a, const JsonValue& b)
{
    if (a.kind != b.kind || a.boolean != b.boolean || a.text != b.text || a.items.size() != b.items.size() ||
        a.members.size() != b.members.size())
        return false;
    const auto sameMember = [](const JsonMember& x, const JsonMember& y)
    { return x.name == y.name && IsSame(x.value, y.value); };
    return std::equal(a.items.begin(), a.items.end(), b.items.begin(), IsSame) &&
           std::equal(a.members.begin(), a.members.end(), b.members.begin(), sameMember);
}

/// Whether two clips show the same thing the same way, their places aside; sides of transitions have no sound.
bool ShowSame(const JsonValue& a, const JsonValue& b)
{
    const auto counts = [](const JsonMember& member)
    {
        for (const char* const pOther : {"start", "duration", "inPoint", "volume", "mute"})
        {
            if (member.name == pOther)
                return false;
        }
        return true;
    };
    const auto isIn = [&](const JsonValue& object)
    {
        return [&](const JsonMember& member)
        {
            const JsonValue* const pOther = FindMember(object, member.name);
            return !counts(member) || (pOther && IsSame(*pOther, member.value));
        };
    };
    return std::all_of(a.members.begin(), a.members.end(), isIn(b)) &&
           std::all_of(b.members.begin(), b.members.end(), isIn(a));
}

bool HasInPoint(const JsonValue& clip)
{
    const std::string& type = FieldText(clip, "type");
    return type != "color" && type != "title";
}

/// Whether @p next goes on where @p previous ends, and one of them only belongs to a transition.
bool GoesOn(const TrackPiece& previous, const TrackPiece& next)
{
    if (next.pTransition || previous.isFixed || next.isFixed || (!previous.isSide && !next.isSide))
        return false;
    if (!previous.pClip || !next.pClip)
        return false; // an empty side keeps its place: it says how far the transition reaches
    return ShowSame(*previous.pClip, *next.pClip) &&
           (!HasInPoint(*next.pClip) || previous.inPoint + (previous.end - previous.start) == next.inPoint);
}

class Pieces
{
public:
    explicit Pieces(const FrameRate& rate) : m_rate(rate) {}

    void AddGap(std::uint64_t end)
    {
        if (end <= m_end)
            return;
        TrackPiece gap;
        gap.start = m_end;
        gap.end = end;
        Append(std::move(gap));
    }

    void AddClip(const Span& span)
    {
        TrackPiece piece;
        piece.pClip = span.pClip;
        piece.place = span.place;
        piece.start = span.start;
        piece.end = span.end;
        piece.inPoint = FieldTime(*span.pClip, "inPoint");
        Append(std::move(piece));
    }

    void AddTransition(const Span& span)
    {
        const JsonValue* const pTo = FindMember(*span.pClip, "to");
        // Where the to clip's own span begins: in the middle, but with one progress for all pictures at the start.
        const bool hasProgress = FindMember(*span.pClip, "progress") != nullptr;
        const std::uint64_t middle = span.start + (span.end - span.start) / 2;
        const std::uint64_t anchor = hasProgress ? span.start : middle;
        const std::uint64_t toInPoint = pTo ? FieldTime(*pTo, "inPoint") : 0;
        const std::uint64_t cut =
            CutOf(span, middle, pTo && HasInPoint(*pTo) ? anchor - std::min(anchor, toInPoint) : 0);
        TrackPiece from = Side(span, "from");
        from.start = span.start;
        from.end = cut;
        Append(std::move(from));
        TrackPiece to = Side(span, "to");
        to.start = cut;
        to.end = span.end;
        if (!pTo || !FindMember(*pTo, "start"))
            to.inPoint += cut - anchor; // wraps around to what is meant
        to.pTransition = span.pClip;
        to.transitionPlace = span.place;
        to.transitionStart = span.start;
        to.transitionEnd = span.end;
        Append(std::move(to));
    }

    std::uint64_t End() const { return m_end; }
    std::vector<TrackPiece> Take() { return std::move(m_pieces); }

private:
    /// Where the cut lies: on a frame at the middle or beside it, else in the middle itself.
    /// @param earliest  the to clip has no pictures for an earlier cut; not behind the middle
    std::uint64_t CutOf(const Span& span, std::uint64_t middle, std::uint64_t earliest) const
    {
        const std::uint64_t next = m_rate.FramesBefore(middle);
        const auto isFree = [&](std::uint64_t time)
        { return time > span.start && time < span.end && time >= earliest; };
        if (m_rate.TimeOfFrame(next) == middle)
            return middle;
        if (next > 0 && isFree(m_rate.TimeOfFrame(next - 1)))
            return m_rate.TimeOfFrame(next - 1);
        return isFree(m_rate.TimeOfFrame(next)) ? m_rate.TimeOfFrame(next) : middle;
    }

    static TrackPiece Side(const Span& span, const char* pName)
    {
        TrackPiece piece;
        piece.isSide = true;
        piece.pClip = FindMember(*span.pClip, pName);
        piece.place = span.place + '.' + pName;
        if (!piece.pClip)
            return piece;
        piece.inPoint = FieldTime(*piece.pClip, "inPoint");
        piece.isFixed = FindMember(*piece.pClip, "start") || FindMember(*piece.pClip, "duration");
        return piece;
    }

    void Append(TrackPiece piece)
    {
        m_end = piece.end;
        if (m_pieces.empty() || !GoesOn(m_pieces.back(), piece))
        {
            m_pieces.push_back(std::move(piece));
            return;
        }
        TrackPiece& last = m_pieces.back();
        last.end = piece.end;
        if (last.isSide && !piece.isSide) // the clip says more than the transition's side
        {
            last.pClip = piece.pClip;
            last.place = piece.place;
        }
        last.isSide &= piece.isSide;
    }

    FrameRate m_rate;
    std::uint64_t m_end = 0;
    std::vector<TrackPiece> m_pieces;
};
} // namespace

const std::string& FieldText(const JsonValue& object, const char* pName)
{
    static const std::string none;
    const JsonValue* const pField = FindMember(object, pName);
    return pField ? pField->text : none;
}

std::uint64_t FieldTime(const JsonValue& object, const char* pName)
{
    const std::optional<Decimal> decimal = Decimal::Parse(FieldText(object, pName));
    return decimal ? decimal->Scaled(7).value_or(0) : 0;
}

std::vector<TrackPiece> PiecesOfTrack(const JsonValue& track, const std::string& place, const FrameRate& rate)
{
    Pieces pieces(rate);
    for (const Span& span : SortedClips(track, place, rate))
    {
        pieces.AddGap(span.start);
        if (FieldText(*span.pClip, "type") == "transition")
            pieces.AddTransition(span);
        else
            pieces.AddClip(span);
    }
    return pieces.Take();
}
} // namespace qmx::host
