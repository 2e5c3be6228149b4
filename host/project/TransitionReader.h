/// @file TransitionReader.h
/// Transitions of a project file.
#pragma once

#include "host/project/ClipReader.h"
#include "host/project/ObjectReader.h"

namespace qmx::host
{
/// Reads what a transition has beyond other clips. @param clip  has its span already
/// @throw JsonError
void ReadTransitionFields(ObjectReader& reader, ProjectClip& clip, const ClipSurroundings& surroundings);
} // namespace qmx::host
