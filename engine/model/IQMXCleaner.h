/// @file IQMXCleaner.h
/// The interface of the cleaner.
#pragma once

#include "engine/model/IQMXTrack.h"
#include "engine/platform/Export.h"

#include <vector>

/// A garbage item: an allocated list of tracks, some of which may be null.
using QMXTrackList = std::vector<IQMXTrack*>;

/// Deletes discarded tracks on a thread of its own.
/// Lifetime : made by CreateQMXCleaner(), ended by delete; outlives every document that holds it.
/// Threads  : AddGarbage() from any thread.
/// Slots    : the order of the declarations is part of the binary interface.
class QMX_API IQMXCleaner
{
public:
    virtual ~IQMXCleaner() = default; ///< slot 0: returns when everything queued has been deleted

    /// Slot 1: takes @p item over, deletes its tracks in order and then the list. Returns at once.
    virtual void AddGarbage(QMXTrackList* item) = 0;
};

/// @return a running cleaner that the caller owns; null when memory is short.
QMX_API IQMXCleaner* CreateQMXCleaner();
