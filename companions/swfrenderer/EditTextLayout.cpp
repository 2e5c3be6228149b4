#include "companions/swfrenderer/EditTextLayout.h"

#include "companions/swfrenderer/TextMarkup.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <tuple>

namespace swf
{
namespace
{
constexpr double kGutter = 40; ///< twips between the field's edge and its text
constexpr double kSlack = 20;  ///< twips: what a line may be too long, as fields are cut to whole pixels

struct Letter : MarkedCode
{
    const Font* pFont = nullptr;
    std::uint16_t fontId = 0;
    std::uint32_t glyph = 0;
    bool hasGlyph = false;
    double advance = 0; ///< twips
};

/// The movie's fonts by name and style. Looks once for every name: texts may name another font with every letter.
class CFontFinder
{
public:
    explicit CFontFinder(const Movie& movie) : m_movie(movie) {}

    /// By name and style where a face is named, else by number.
    std::uint16_t Find(const TextFormat& format)
    {
        if (format.face.empty() && !format.bold && !format.italic)
            return format.font;
        const Font* const pBase = m_movie.FindAs<Font>(format.font);
        const std::string& face = !format.face.empty() ? format.face : pBase ? pBase->name : format.face;
        const auto [at, isNew] = m_found.try_emplace({face, format.bold, format.italic});
        if (isNew)
            at->second = Search(face, format.bold, format.italic);
        return at->second.value_or(format.font);
    }

private:
    std::optional<std::uint16_t> Search(const std::string& face, bool bold, bool italic)
    {
        if (m_byName.empty())
            for (const auto& [id, character] : m_movie.characters)
                if (const Font* const p = std::get_if<Font>(&character); p && !p->glyphs.empty())
                    m_byName.emplace(p->name, std::pair(id, p)); // those of one name stay in the order of their numbers
        int best = 0;
        std::optional<std::uint16_t> found;
        const auto [first, end] = m_byName.equal_range(face);
        for (auto at = first; at != end; ++at)
        {
            const auto [id, p] = at->second;
            const int score = 1 + (p->bold == bold ? 2 : 0) + (p->italic == italic ? 1 : 0);
            if (score > best)
            {
                best = score;
                found = id;
            }
        }
        return found;
    }

    const Movie& m_movie;
    std::multimap<std::string, std::pair<std::uint16_t, const Font*>> m_byName;
    std::map<std::tuple<std::string, bool, bool>, std::optional<std::uint16_t>> m_found;
};

void Measure(Letter& letter, const Movie& movie, CFontFinder& fonts)
{
    letter.fontId = fonts.Find(*letter.pFormat);
    letter.pFont = movie.FindAs<Font>(letter.fontId);
    if (!letter.pFont)
        return;
    const auto glyph = letter.pFont->glyphOf.find(letter.code == 0xA0 ? ' ' : letter.code);
    if (glyph == letter.pFont->glyphOf.end())
        return;
    letter.hasGlyph = true;
    letter.glyph = glyph->second;
    const double scale = letter.pFormat->height / letter.pFont->unitsPerEm;
    const Font& font = *letter.pFont;
    if (letter.glyph < font.advances.size())
        letter.advance = std::floor(font.advances[letter.glyph] * scale); // whole twips: fields are cut to fit them
    else if (letter.glyph < font.glyphs.size() && !font.glyphs[letter.glyph].bounds.IsEmpty())
        letter.advance = font.glyphs[letter.glyph].bounds.xMax * scale;
}

void Kern(Letter& letter, const Letter& next)
{
    if (!letter.pFormat->kerning || !letter.hasGlyph || letter.pFont != next.pFont ||
        letter.glyph >= letter.pFont->advances.size())
        return;
    const auto pair = letter.pFont->kerning.find(letter.code << 16 | next.code);
    if (pair != letter.pFont->kerning.end())
        letter.advance = std::floor((letter.pFont->advances[letter.glyph] + pair->second) * letter.pFormat->height /
                                    letter.pFont->unitsPerEm);
}

class CLineSetter
{
public:
    CLineSetter(const EditText& edit, Text& out) : m_edit(edit), m_out(out), m_y(edit.bounds.yMin + kGutter) {}

    void Set(const std::vector<Letter>& letters)
    {
        std::size_t begin = 0;
        bool firstOfParagraph = true;
        while (begin < letters.size())
        {
            std::size_t next = 0;
            const std::size_t end = EndOfLine(letters, begin, firstOfParagraph, next);
            Line(letters, begin, end, firstOfParagraph, next == letters.size() || letters[next - 1].code == 10);
            firstOfParagraph = letters[next - 1].code == 10;
            begin = next;
        }
    }

private:
    double Room(const TextFormat& format, bool first) const
    {
        return m_edit.bounds.Width() - 2 * kGutter - format.left - format.right - (first ? format.indent : 0);
    }
    /// @param next  [out] where the next line begins
    std::size_t EndOfLine(const std::vector<Letter>& letters, std::size_t begin, bool first, std::size_t& next) const
    {
        const double room = Room(*letters[begin].pFormat, first);
        double width = 0;
        std::size_t afterSpace = 0;
        for (std::size_t i = begin; i < letters.size(); ++i)
        {
            if (letters[i].code == 10)
            {
                next = i + 1;
                return i;
            }
            width += letters[i].advance;
            const bool isSpace = letters[i].code == ' ';
            if (m_edit.wordWrap && m_edit.multiline && !isSpace && width > room + kSlack && i > begin)
            {
                next = afterSpace > begin ? afterSpace : i;
                return next;
            }
            if (isSpace)
                afterSpace = i + 1;
        }
        next = letters.size();
        return next;
    }
    void Line(const std::vector<Letter>& letters, std::size_t begin, std::size_t end, bool first, bool isLast)
    {
        double ascent = 0, descent = 0, width = 0, leading = letters[begin].pFormat->leading;
        const std::size_t measured = std::max(end, begin + 1);
        std::size_t spaces = 0;
        while (end > begin && letters[end - 1].code == ' ' && !isLast)
            --end;
        for (std::size_t i = begin; i < measured && i < letters.size(); ++i)
            if (const Font* const p = letters[i].pFont)
            {
                const double scale = letters[i].pFormat->height / p->unitsPerEm;
                // Whole twips, as the advances: the baseline of a line is where players have it.
                ascent = std::max(ascent, std::floor((p->ascent > 0 ? p->ascent : p->unitsPerEm * 0.8) * scale));
                descent = std::max(descent, std::floor((p->ascent > 0 ? p->descent : p->unitsPerEm * 0.2) * scale));
            }
        for (std::size_t i = begin; i < end; ++i)
        {
            width += letters[i].advance;
            spaces += letters[i].code == ' ' ? 1 : 0;
        }
        const TextFormat& format = *letters[begin].pFormat;
        const double rest = Room(format, first) - width;
        double x = m_edit.bounds.xMin + kGutter + format.left + (first ? format.indent : 0);
        if (format.align == 1)
            x += rest;
        else if (format.align == 2)
            x += rest / 2;
        const double stretch =
            format.align == 3 && !isLast && spaces > 0 && rest > 0 ? rest / static_cast<double>(spaces) : 0;
        for (std::size_t i = begin; i < end; ++i)
        {
            const Letter& letter = letters[i];
            if (letter.hasGlyph)
                m_out.glyphs.push_back(
                    {letter.fontId, letter.glyph, x, m_y + ascent, letter.pFormat->height, letter.pFormat->colour});
            const double next = x + letter.advance + (letter.code == ' ' ? stretch : 0);
            if (letter.pFormat->underline)
                Underline(*letter.pFormat, x, next, m_y + ascent);
            x = next;
        }
        m_y += ascent + descent + leading;
    }

    /// One bar under letters of one look that stand side by side.
    void Underline(const TextFormat& format, double left, double right, double baseline)
    {
        const double top = baseline + format.height / 12;
        const Rect bar{left, top, right, top + std::max(20.0, format.height / 20)};
        if (!m_out.bars.empty())
        {
            TextBar& last = m_out.bars.back();
            if (last.box.xMax == left && last.box.yMin == top && last.colour == format.colour)
            {
                last.box.xMax = right;
                return;
            }
        }
        m_out.bars.push_back({bar, format.colour});
    }

    const EditText& m_edit;
    Text& m_out;
    double m_y; ///< twips: top of the next line
};
} // namespace

Text LayOut(const EditText& edit, const Movie& movie)
{
    Text out;
    out.bounds = edit.bounds;
    std::vector<Letter> letters;
    CFontFinder fonts(movie);
    for (MarkedCode& marked : ReadMarkup(edit))
    {
        letters.emplace_back();
        static_cast<MarkedCode&>(letters.back()) = std::move(marked);
        Measure(letters.back(), movie, fonts);
    }
    for (std::size_t i = 0; i + 1 < letters.size(); ++i)
        Kern(letters[i], letters[i + 1]);
    CLineSetter(edit, out).Set(letters);
    return out;
}

std::size_t LayoutBytes(const EditText& edit)
{
    return edit.text.size() + std::min(edit.text.size(), kMaxLetters) * (sizeof(PlacedGlyph) + sizeof(TextBar));
}
} // namespace swf
