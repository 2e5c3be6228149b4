/// @file EditTextLayout.h
/// Setting of dynamic text in the fonts of the movie.
#pragma once

#include "companions/swfrenderer/Movie.h"

namespace swf
{
/// Lines of @p edit, with the subset of HTML that text fields know: p, br, sbr, li, b, i, font (face, size, color) and
/// textformat. Characters that the movie's fonts do not have are left out. Throws std::bad_alloc.
Text LayOut(const EditText& edit, const Movie& movie);
} // namespace swf
