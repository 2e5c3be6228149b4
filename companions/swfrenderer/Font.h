/// @file Font.h
/// Fonts that movies bring along, and text set in them.
#pragma once

#include "companions/swfrenderer/ShapeReader.h"

#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace swf
{
struct Font
{
    std::string name;
    bool bold = false, italic = false;
    std::span<const std::uint8_t> file; ///< OpenType, of the fourth kind of fonts alone; borrowed from the movie
    double unitsPerEm = 1024;
    double ascent = 0, descent = 0, leading = 0; ///< units
    std::vector<Shape> glyphs;
    std::vector<double> advances;                             ///< units, one per glyph where the font has a layout
    std::unordered_map<std::uint32_t, double> kerning;        ///< units, by first code << 16 | second code
    std::unordered_map<std::uint32_t, std::uint32_t> glyphOf; ///< by character code
};

/// The body of DefineFont (@p version 1), DefineFont2 and DefineFont3 behind the character's number.
bool ReadFont(CByteReader& reader, int version, ReadBudget& budget, Font& font);
/// The body of DefineFont4 behind the character's number: a name and perhaps a font file.
bool ReadFontFile(CByteReader& reader, Font& font);
/// The body of DefineFontInfo (@p version 1) and DefineFontInfo2 behind the font's number: character codes.
void ReadFontInfo(CByteReader& reader, int version, ReadBudget& budget, Font& font);

/// One glyph where it stands.
struct PlacedGlyph
{
    std::uint16_t font = 0;
    std::uint32_t glyph = 0;
    double x = 0, y = 0; ///< twips, of the baseline
    double height = 0;   ///< twips per em
    Rgba colour;
};

/// A filled box, twips.
struct TextBar
{
    Rect box;
    Rgba colour;
};

struct Text
{
    Rect bounds;
    Matrix matrix;
    std::vector<PlacedGlyph> glyphs;
    std::vector<TextBar> bars; ///< underlines
};

/// The body of DefineText (@p version 1) and DefineText2 behind the character's number.
bool ReadText(CByteReader& reader, int version, ReadBudget& budget, Text& text);
} // namespace swf
