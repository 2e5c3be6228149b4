/// @file ShapeReader.h
/// Reading of shape definitions.
#pragma once

#include "companions/swfrenderer/ByteReader.h"
#include "companions/swfrenderer/Shape.h"

#include <cstddef>

namespace swf
{
/// What reading may still take.
struct ReadBudget
{
    std::size_t bytes = 0; ///< memory of what is read
    std::size_t steps = 0;

    /// Takes one step and @p cb bytes. @return false, taking nothing, when that is not left.
    bool Take(std::size_t cb)
    {
        if (steps == 0 || bytes < cb)
            return false;
        --steps;
        bytes -= cb;
        return true;
    }
};

/// The body of DefineShape to DefineShape4 behind the character's number. @p version is 1 to 4.
/// A shape whose records break off has the edges before that. @return false when nothing can be drawn.
bool ReadShape(CByteReader& reader, int version, ReadBudget& budget, Shape& shape);
/// One glyph: records alone, filled with style 1. @p reader is bounded to the glyph where that is known.
bool ReadGlyph(CByteReader& reader, ReadBudget& budget, Shape& shape);
/// The body of DefineMorphShape (@p version 1) and DefineMorphShape2 (2).
bool ReadMorphShape(CByteReader& reader, int version, ReadBudget& budget, MorphShape& morph);
} // namespace swf
