/// @file EditTextLayout.h
/// Setting of dynamic text in the fonts of the movie.
#pragma once

#include "companions/swfrenderer/Movie.h"

namespace swf
{
/// Lines of @p edit. Characters that the movie's fonts do not have are left out. Throws std::bad_alloc.
Text LayOut(const EditText& edit, const Movie& movie);
/// The memory that a field and its lines take at most.
std::size_t LayoutBytes(const EditText& edit);
} // namespace swf
