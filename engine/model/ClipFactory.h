/// @file ClipFactory.h
/// How the host makes clips.
#pragma once

#include "engine/clips/IQMXBaseClip.h"
#include "engine/platform/Export.h"

/// A new clip of that kind, owned by the caller until it is added to a track.
/// @return null for an unknown kind or when memory is short.
QMX_API IQMXBaseClip* CreateClipByClipType(QMXClipType type);

/// A new clip with the settings of @p source: path, duration, start time, in-point and those of its kind (video:
/// frame rate, rotation, colour key; image: rotation; title: its texts; keystroke: its labels and their place;
/// transition: copies of its clips; a copy of a camera clip starts with the factory's). Track and document ID are not
/// copied.
/// @return null for a null source, a kind that the factory does not know, or when memory is short.
QMX_API IQMXBaseClip* DuplicateClip(IQMXBaseClip* source);
