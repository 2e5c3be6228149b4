/// @file TextReader.h
/// Titles and keystrokes of a project file.
#pragma once

#include "host/project/ObjectReader.h"
#include "host/project/Project.h"

namespace qmx::host
{
/// Read what a clip of the kind has beyond others. @throw JsonError
void ReadTitleFields(ObjectReader& reader, ProjectClip& clip);
void ReadKeystrokeFields(ObjectReader& reader, ProjectClip& clip);
} // namespace qmx::host
