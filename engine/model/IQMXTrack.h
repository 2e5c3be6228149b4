/// @file IQMXTrack.h
/// The interface of a track.
#pragma once

#include "engine/clips/IQMXBaseClip.h"
#include "engine/platform/Export.h"

#include <cstdint>
#include <string>

/// A kind of track, chosen by the host: stored and handed back, never looked at.
enum QMXTrackType : std::uint32_t
{
};

/// Picture-in-picture position of a track: stored and handed back, never looked at.
/// The host reads it as fractions of the canvas.
struct tagPIPPOSITION
{
    double left = 0;   ///< of the canvas's width
    double top = 0;    ///< of its height
    double width = 0;  ///< of its width
    double height = 0; ///< of its height
};
static_assert(sizeof(tagPIPPOSITION) == 32, "passed by value across the exported interface");

/// One layer of a project: clips in ascending order of their start times, which do not overlap.
/// Lifetime : made by CreateQMXTrack(), ended by delete; deletes its clips.
/// Threads  : not locked; used from the host's thread, destroyed there or on the cleaner thread.
/// Slots    : the order of the declarations is part of the binary interface.
class QMX_API IQMXTrack
{
public:
    virtual ~IQMXTrack() = default; ///< slot 0: deletes every clip

    virtual void RemoveAllClips() = 0;                               ///< slot 1: deletes every clip
    virtual void SetTrackType(QMXTrackType type) = 0;                ///< slot 2
    virtual QMXTrackType GetTrackType() = 0;                         ///< slot 3
    virtual void SetPIPPosition(const tagPIPPOSITION& position) = 0; ///< slot 4
    virtual void SetDocumentID(std::uint64_t id) = 0;                ///< slot 5: set by the document
    virtual std::uint64_t GetDocumentID() = 0;                       ///< slot 6
    virtual tagPIPPOSITION GetPIPPosition() = 0;                     ///< slot 7
    virtual void SetTrackID(std::uint64_t id) = 0;                   ///< slot 8
    virtual const std::uint64_t& GetTrackID() = 0;                   ///< slot 9
    /// Slot 10: the clip that covers @p time, start <= time < end; with @p inclusiveEnd also time == end, so that of
    /// two clips that touch the earlier wins. @return borrowed, or null.
    virtual IQMXBaseClip* GetClipAtTime(std::uint64_t time, bool inclusiveEnd) = 0;
    /// Slot 11: appends @p clip, which the track then owns, and stamps the document ID on it.
    /// @return false for null, or when memory is short: the caller then keeps the clip.
    virtual bool AddClip(IQMXBaseClip* clip) = 0;
    virtual void RemoveClip(IQMXBaseClip* clip) = 0; ///< slot 12: hands the clip back; nothing when absent
    virtual IQMXBaseClip* GetClip(int index) = 0;    ///< slot 13. @return borrowed; null out of range
    virtual int GetClipCount() = 0;                  ///< slot 14
    /// Slot 15: deletes the first clip whose path equals @p path exactly. @return 0
    virtual int RemoveClipByPath(std::wstring path) = 0;
    virtual void SetTrackFlags(std::uint32_t flags) = 0; ///< slot 16: the host's; never looked at
    virtual std::uint32_t GetTrackFlags() = 0;           ///< slot 17
    /// Slot 18: GetFrame() of the clip that covers @p time. @return one reference, or null.
    virtual ISampleBuffer* GetFrameAtTime(tagRenderProp& request, std::uint64_t time, bool* flag) = 0;
    /// Slot 19: GetFrame() of the clip at @p index. @return one reference, or null.
    virtual ISampleBuffer* GetFrameByIndex(tagRenderProp& request, int index, std::uint64_t time, bool* flag) = 0;
};

/// @return a track that the caller owns until it is added to a document; null when memory is short.
QMX_API IQMXTrack* CreateQMXTrack(std::uint64_t trackID, QMXTrackType type, std::uint64_t documentID,
                                  tagPIPPOSITION position);
