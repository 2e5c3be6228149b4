/// @file ShapeReader.h
/// Reading of shape definitions.
#pragma once

#include "companions/swfrenderer/ByteReader.h"
#include "companions/swfrenderer/Shape.h"

#include <cstddef>

namespace swf
{
/// Edges that shapes may still have.
struct EdgeBudget
{
    std::size_t left = 0;
};

/// The body of DefineShape to DefineShape4 behind the character's number. @p version is 1 to 4.
/// A shape whose records break off has the edges before that. @return false when nothing can be drawn.
bool ReadShape(CByteReader& reader, int version, EdgeBudget& budget, Shape& shape);
/// One glyph: records alone, filled with style 1. @p reader is bounded to the glyph where that is known.
bool ReadGlyph(CByteReader& reader, EdgeBudget& budget, Shape& shape);
/// The body of DefineMorphShape (@p version 1) and DefineMorphShape2 (2).
bool ReadMorphShape(CByteReader& reader, int version, EdgeBudget& budget, MorphShape& morph);
} // namespace swf
