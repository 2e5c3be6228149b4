/// @file DeviceText.h
/// Text in fonts whose outlines the movie does not have.
#pragma once

#include "companions/swfrenderer/Movie.h"
#include "companions/swfrenderer/ShapeReader.h"

namespace swf
{
/// Gives the movie the letters that its text fields need from fonts without outlines: from the font file that such a
/// font carries, else from the system's font of that name. What no font has stays out. Throws std::bad_alloc.
void AddDeviceGlyphs(Movie& movie, ReadBudget& budget);
} // namespace swf
