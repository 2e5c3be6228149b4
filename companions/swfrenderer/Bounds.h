/// @file Bounds.h
/// How much room an object takes.
#pragma once

#include "companions/swfrenderer/Stage.h"

namespace swf
{
/// The box around an object and all that is inside it, without its filters.
/// @param matrix  from the object's own twips to the units wanted
Rect BoundsOf(const Movie& movie, const Instance& object, const Matrix& matrix);
} // namespace swf
