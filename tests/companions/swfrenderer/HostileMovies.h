/// @file HostileMovies.h
/// Movies made to cost as much as they can: of reading, of playing, of drawing.
#pragma once

#include "tests/companions/swfrenderer/MovieBuilder.h"

#include <ostream>
#include <vector>

struct HostileMovie
{
    const char* name;                  ///< one word
    Bytes (*make)();                   ///< the whole file
    std::vector<std::uint32_t> frames; ///< worth asking for
};
inline void PrintTo(const HostileMovie& movie, std::ostream* pStream)
{
    *pStream << movie.name;
}

/// Each opens.
const std::vector<HostileMovie>& HostileMovies();

/// A red square of @p side pixels with 2^20 edges: its left side goes to and fro by a pixel.
Bytes SquareOfAMillionEdges(int side);
/// Edges across the stage of 20 by 20 pixels that come back to their start after four.
Bytes EdgesAcross(int count);
/// One frame whose tags begin with @p tag again and again, 64 MiB in all, packed.
Bytes TagsWithoutEnd(const Bytes& tag);
