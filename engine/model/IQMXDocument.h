/// @file IQMXDocument.h
/// The interface of a document.
#pragma once

#include "engine/model/IQMXCleaner.h"
#include "engine/model/IQMXTrack.h"
#include "engine/platform/Export.h"

#include <cstdint>
#include <string>

/// The root of a project: its tracks in the order in which they were added.
/// Lifetime : made by CreateQMXDocument(), ended by delete. Discarded tracks go to the cleaner; WITHOUT a cleaner
///            they are not deleted: that host deletes them itself.
/// Threads  : not locked; used from the host's thread.
/// Slots    : the order of the declarations is part of the binary interface.
class QMX_API IQMXDocument
{
public:
    virtual ~IQMXDocument() = default; ///< slot 0: discards the tracks

    /// Slot 1: discards the tracks. Without @p recreate tracks can be added only after a further call with it.
    virtual void RemoveAllTracks(bool recreate) = 0;
    virtual int GetTrackCount() = 0;                       ///< slot 2
    virtual IQMXTrack* GetTrack(int index) = 0;            ///< slot 3. @return borrowed; null out of range
    virtual IQMXTrack* GetTrackByID(std::uint64_t id) = 0; ///< slot 4: the first with that ID. @return borrowed
    /// Slot 5: appends @p track, which the document then owns, and stamps the document ID on it.
    /// @return false for null, without a track list, or when memory is short: the caller then keeps the track.
    virtual bool AddTrack(IQMXTrack* track) = 0;
    virtual std::uint64_t GetDocumentID() = 0;      ///< slot 6: the document's address
    virtual void RemoveTrack(IQMXTrack* track) = 0; ///< slot 7: hands the track back; nothing when absent
    virtual void CloseAllClips() = 0;               ///< slot 8: Close() of every clip
    /// Slot 9: RemoveClipByPath() of the track with that ID. @return 0
    virtual int RemoveClipByPath(std::wstring path, std::uint64_t trackID) = 0;
};

/// @param cleaner  borrowed, outlives the document; may be null, see above.
/// @return an empty document that the caller owns; null when memory is short.
QMX_API IQMXDocument* CreateQMXDocument(IQMXCleaner* cleaner);
