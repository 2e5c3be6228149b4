/// @file GeneratedMovie.h
/// Movies that chance makes of everything the format has.
#pragma once

#include "tests/companions/swfrenderer/MovieBuilder.h"

#include <cstdint>

/// A whole movie of 320 by 240 pixels and 12 frames: shapes with every kind of fill and line, morphs, bitmaps, text,
/// sprites, masks, blend modes, filters and actions. The same seed makes the same movie.
/// @param objects  on the root's first frame
Bytes GeneratedMovie(std::uint64_t seed, int objects = 8);
