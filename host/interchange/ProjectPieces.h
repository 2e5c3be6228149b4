/// @file ProjectPieces.h
/// A track of a project as timelines have it: pieces in a row, with transitions over their cuts.
#pragma once

#include "host/project/FrameRate.h"
#include "host/project/JsonTree.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qmx::host
{
/// One piece of a track: a clip, a side of a transition, both where one goes on with the other, or nothing at all.
struct TrackPiece
{
    const JsonValue* pClip = nullptr;       ///< of the project; null: nothing is shown
    std::string place;                      ///< of the clip, "tracks[0].clips[1].from"
    std::uint64_t start = 0;                ///< 100 ns
    std::uint64_t end = 0;                  ///< 100 ns
    std::uint64_t inPoint = 0;              ///< time in the source at the start, 100 ns
    bool isSide = false;                    ///< shown by transitions only
    bool isFixed = false;                   ///< a side with a span of its own, which joins nothing
    const JsonValue* pTransition = nullptr; ///< the one over the cut at the start, or null
    std::string transitionPlace;
    std::uint64_t transitionStart = 0; ///< 100 ns
    std::uint64_t transitionEnd = 0;   ///< 100 ns
};

/// The pieces of a track, from 0 to the end of the last clip without holes.
/// @param track  of a project that a ProjectReader accepts
/// @param place  of the track, "tracks[0]"
std::vector<TrackPiece> PiecesOfTrack(const JsonValue& track, const std::string& place, const FrameRate& rate);

/// The text of a field, or an empty one. @param object  of a project
const std::string& FieldText(const JsonValue& object, const char* pName);
/// The time in a field, 100 ns; 0 when it is absent.
std::uint64_t FieldTime(const JsonValue& object, const char* pName);
} // namespace qmx::host
