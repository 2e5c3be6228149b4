#include "companions/swfrenderer/Font.h"

namespace swf
{
namespace
{
constexpr std::size_t kMaxGlyphsOfText = 65'536;

/// Glyphs between consecutive offsets, the last of which ends the last glyph.
void ReadGlyphs(std::span<const std::uint8_t> base, const std::vector<std::size_t>& offsets, ReadBudget& budget,
                Font& font)
{
    for (std::size_t i = 0; i + 1 < offsets.size() && budget.Take(sizeof(Shape)); ++i)
    {
        font.glyphs.emplace_back();
        if (offsets[i] >= offsets[i + 1] || offsets[i] >= base.size())
            continue;
        CByteReader glyph(base.subspan(offsets[i], std::min(offsets[i + 1], base.size()) - offsets[i]));
        (void)ReadGlyph(glyph, budget, font.glyphs.back());
    }
}

constexpr std::size_t kEntryBytes = 64; ///< of one entry of a table by code

void ReadLayout(CByteReader& reader, std::size_t count, bool wideCodes, ReadBudget& budget, Font& font)
{
    font.ascent = reader.U16();
    font.descent = reader.U16();
    font.leading = reader.S16();
    for (std::size_t i = 0; i < count && !reader.Failed() && budget.Take(sizeof(double)); ++i)
        font.advances.push_back(reader.S16());
    for (std::size_t i = 0; i < count && !reader.Failed(); ++i)
        (void)reader.ReadRect(); // boxes of the glyphs
    for (std::uint32_t n = reader.U16(); n > 0 && !reader.Failed() && budget.Take(kEntryBytes); --n)
    {
        const std::uint32_t first = wideCodes ? reader.U16() : reader.U8();
        const std::uint32_t second = wideCodes ? reader.U16() : reader.U8();
        font.kerning[first << 16 | second] = reader.S16();
    }
}
} // namespace

bool ReadFont(CByteReader& reader, int version, ReadBudget& budget, Font& font)
{
    font.unitsPerEm = version == 3 ? 20'480 : 1'024;
    if (version == 1)
    {
        const auto base = reader.Rest();
        CByteReader table(base);
        const std::size_t first = table.U16();
        std::vector<std::size_t> offsets{first};
        for (std::size_t i = 1; i < first / 2 && !table.Failed(); ++i)
            offsets.push_back(table.U16());
        offsets.push_back(base.size());
        ReadGlyphs(base, offsets, budget, font);
        return !font.glyphs.empty();
    }
    const std::uint8_t flags = reader.U8();
    (void)reader.U8(); // language
    const auto name = reader.Take(reader.U8());
    font.name.assign(name.begin(), name.end());
    while (!font.name.empty() && font.name.back() == 0)
        font.name.pop_back();
    font.italic = (flags & 2) != 0;
    font.bold = (flags & 1) != 0;
    const std::size_t count = reader.U16();
    const bool wideOffsets = (flags & 8) != 0;
    CByteReader table = reader;
    const auto base = reader.Rest();
    std::vector<std::size_t> offsets;
    for (std::size_t i = 0; i <= count && !table.Failed(); ++i)
        offsets.push_back(wideOffsets ? table.U32() : table.U16());
    if (offsets.size() <= count || table.Failed())
        return count == 0;
    ReadGlyphs(base, offsets, budget, font);
    if (offsets[count] > base.size())
        return true;
    CByteReader codes(base.subspan(offsets[count]));
    for (std::size_t i = 0; i < count && !codes.Failed() && budget.Take(kEntryBytes); ++i)
    {
        const std::uint32_t code = (flags & 4) != 0 ? codes.U16() : codes.U8();
        if (!codes.Failed())
            font.glyphOf.emplace(code, static_cast<std::uint32_t>(i));
    }
    if ((flags & 0x80) != 0)
        ReadLayout(codes, count, (flags & 4) != 0, budget, font);
    return true;
}

bool ReadFontFile(CByteReader& reader, Font& font)
{
    const std::uint8_t flags = reader.U8();
    font.bold = (flags & 1) != 0;
    font.italic = (flags & 2) != 0;
    font.name = reader.String();
    if ((flags & 4) != 0)
        font.file = reader.Rest();
    return !reader.Failed();
}

void ReadFontInfo(CByteReader& reader, int version, ReadBudget& budget, Font& font)
{
    const auto name = reader.Take(reader.U8());
    font.name.assign(name.begin(), name.end());
    const std::uint8_t flags = reader.U8();
    font.italic = (flags & 4) != 0;
    font.bold = (flags & 2) != 0;
    if (version == 2)
        (void)reader.U8();
    const bool wide = (flags & 1) != 0 || version == 2;
    for (std::uint32_t i = 0; i < font.glyphs.size() && !reader.AtEnd() && budget.Take(kEntryBytes); ++i)
        font.glyphOf.emplace(wide ? reader.U16() : reader.U8(), i);
}

bool ReadText(CByteReader& reader, int version, ReadBudget& budget, Text& text)
{
    text.bounds = reader.ReadRect();
    text.matrix = reader.ReadMatrix();
    const std::uint32_t glyphBits = reader.U8(), advanceBits = reader.U8();
    if (glyphBits > 32 || advanceBits > 32)
        return false;
    PlacedGlyph at;
    while (!reader.Failed())
    {
        reader.Align();
        const std::uint8_t flags = reader.U8();
        if (flags == 0 || reader.Failed())
            break;
        if ((flags & 8) != 0)
            at.font = reader.U16();
        if ((flags & 4) != 0)
            at.colour = version == 2 ? reader.RgbaColour() : reader.Rgb();
        if ((flags & 1) != 0)
            at.x = reader.S16();
        if ((flags & 2) != 0)
            at.y = reader.S16();
        if ((flags & 8) != 0)
            at.height = reader.U16();
        for (std::uint32_t n = reader.U8(); n > 0 && !reader.Failed(); --n)
        {
            at.glyph = reader.UB(glyphBits);
            const std::int32_t advance = reader.SB(advanceBits);
            if (text.glyphs.size() >= kMaxGlyphsOfText || !budget.Take(sizeof(PlacedGlyph)))
                return true;
            if (!reader.Failed())
                text.glyphs.push_back(at);
            at.x += advance;
        }
    }
    return true;
}
} // namespace swf
