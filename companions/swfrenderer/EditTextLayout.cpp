#include "companions/swfrenderer/EditTextLayout.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <map>
#include <optional>

namespace swf
{
namespace
{
constexpr double kGutter = 40; ///< twips between the field's edge and its text
constexpr double kSlack = 20;  ///< twips: what a line may be too long, as fields are cut to whole pixels
constexpr std::size_t kMaxLetters = 100'000, kMaxOpenTags = 64;

struct Format
{
    std::uint16_t font = 0;
    std::string face;
    bool bold = false, italic = false, kerning = false;
    double height = 240;
    Rgba colour;
    std::uint8_t align = 0;
    double left = 0, right = 0, indent = 0, leading = 0;
};
/// One character of the text; code 10 ends a paragraph.
struct Letter
{
    std::uint32_t code = 0;
    Format format;
    const Font* pFont = nullptr;
    std::uint16_t fontId = 0;
    std::uint32_t glyph = 0;
    bool hasGlyph = false;
    double advance = 0; ///< twips
};

std::uint32_t NextCode(const std::string& text, std::size_t& at)
{
    const auto byte = [&text](std::size_t i)
    { return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i])); };
    const std::uint32_t first = byte(at++);
    const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
    if (more == 0 || at + static_cast<std::size_t>(more) > text.size())
        return first;
    std::uint32_t code = first & (0x3FU >> more);
    for (int i = 0; i < more; ++i)
    {
        if ((byte(at + static_cast<std::size_t>(i)) & 0xC0) != 0x80)
            return first;
        code = code << 6 | (byte(at + static_cast<std::size_t>(i)) & 0x3F);
    }
    at += static_cast<std::size_t>(more);
    return code;
}

/// The character that stands behind an ampersand at @p at, or the ampersand.
std::uint32_t NextEntity(const std::string& text, std::size_t& at)
{
    static const std::map<std::string, std::uint32_t> kNames = {{"amp", '&'},  {"lt", '<'},    {"gt", '>'},
                                                                {"quot", '"'}, {"apos", '\''}, {"nbsp", 0xA0}};
    const std::size_t end = text.find(';', at);
    if (end == std::string::npos || end - at > 10)
        return '&';
    const std::string name = text.substr(at, end - at);
    if (name.size() > 1 && name[0] == '#')
    {
        at = end + 1;
        const bool hex = name[1] == 'x' || name[1] == 'X';
        return static_cast<std::uint32_t>(std::strtoul(name.c_str() + (hex ? 2 : 1), nullptr, hex ? 16 : 10));
    }
    const auto found = kNames.find(name);
    if (found == kNames.end())
        return '&';
    at = end + 1;
    return found->second;
}

std::string Lower(std::string s)
{
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

/// name="value" pairs behind the name of a tag.
std::map<std::string, std::string> Attributes(const std::string& tag)
{
    std::map<std::string, std::string> out;
    std::size_t at = tag.find(' ');
    while (at != std::string::npos && at < tag.size())
    {
        at = tag.find_first_not_of(" \t\r\n", at);
        const std::size_t equals = at == std::string::npos ? at : tag.find('=', at);
        if (equals == std::string::npos)
            break;
        const std::string name = Lower(tag.substr(at, equals - at));
        std::size_t begin = equals + 1, end = 0;
        if (begin < tag.size() && (tag[begin] == '"' || tag[begin] == '\''))
        {
            end = std::min(tag.find(tag[begin], begin + 1), tag.size());
            ++begin;
            at = end + 1;
        }
        else
            at = end = std::min(tag.find_first_of(" \t", begin), tag.size());
        out[name] = tag.substr(begin, end - begin);
    }
    return out;
}

double Number(const std::string& s, double least, double most)
{
    return std::clamp(static_cast<double>(std::strtol(s.c_str(), nullptr, 10)), least, most);
}

class CMarkupReader
{
public:
    CMarkupReader(const EditText& edit, Format base) : m_edit(edit) { m_formats.push_back(std::move(base)); }

    std::vector<Letter> Read()
    {
        const std::string& text = m_edit.text;
        for (std::size_t at = 0; at < text.size() && m_letters.size() < kMaxLetters;)
        {
            if (m_edit.isHtml && text[at] == '<')
            {
                const std::size_t end = text.find('>', at);
                if (end == std::string::npos)
                    break;
                Tag(text.substr(at + 1, end - at - 1));
                at = end + 1;
                continue;
            }
            std::uint32_t code = NextCode(text, at);
            if (m_edit.isHtml && code == '&')
                code = NextEntity(text, at);
            if (m_edit.isHtml && (code == '\r' || code == '\n'))
                continue;
            Add(code == '\r' ? 10 : code);
            if (code == '\r' && at < text.size() && text[at] == '\n')
                ++at;
        }
        if (m_edit.isHtml && !m_letters.empty() && m_letters.back().code == 10)
            m_letters.pop_back(); // the end of the last paragraph
        return std::move(m_letters);
    }

private:
    void Add(std::uint32_t code)
    {
        Letter letter;
        letter.code = m_edit.password && code != 10 ? '*' : code;
        letter.format = m_formats.back();
        m_letters.push_back(std::move(letter));
    }
    void Tag(const std::string& tag)
    {
        if (tag.empty())
            return;
        const bool closing = tag[0] == '/';
        std::string name = Lower(tag.substr(closing ? 1 : 0, tag.find_first_of(" \t/", 1) - (closing ? 1 : 0)));
        if (name == "br" || name == "sbr")
            return Add(10);
        if (closing)
        {
            if (name == "p" || name == "li")
                Add(10);
            if (m_formats.size() > 1)
                m_formats.pop_back();
            return;
        }
        if (m_formats.size() >= kMaxOpenTags)
            return;
        Format format = m_formats.back();
        auto values = Attributes(tag);
        if (name == "b")
            format.bold = true;
        else if (name == "i")
            format.italic = true;
        else if (name == "p" && values.contains("align"))
        {
            const std::string align = Lower(values["align"]);
            format.align = align == "right" ? 1 : align == "center" ? 2 : align == "justify" ? 3 : 0;
        }
        else if (name == "font")
        {
            if (values.contains("face"))
                format.face = values["face"];
            if (values.contains("kerning"))
                format.kerning = values["kerning"] != "0";
            if (values.contains("size"))
                format.height = 20 * Number(values["size"], 1, 1000);
            if (values.contains("color") && values["color"].size() == 7)
            {
                const auto rgb = std::strtoul(values["color"].c_str() + 1, nullptr, 16);
                format.colour.r = static_cast<std::uint8_t>(rgb >> 16);
                format.colour.g = static_cast<std::uint8_t>(rgb >> 8);
                format.colour.b = static_cast<std::uint8_t>(rgb);
            }
        }
        else if (name == "textformat")
        {
            for (auto [key, pValue] : {std::pair{"leftmargin", &format.left},
                                       {"rightmargin", &format.right},
                                       {"indent", &format.indent},
                                       {"leading", &format.leading}})
                if (values.contains(key))
                    *pValue = 20 * Number(values[key], -720, 720);
        }
        m_formats.push_back(std::move(format));
    }

    const EditText& m_edit;
    std::vector<Format> m_formats;
    std::vector<Letter> m_letters;
};

/// The movie's font for a format: by name and style where a face is named, else by number.
std::uint16_t FontFor(const Format& format, const Movie& movie)
{
    if (format.face.empty() && !format.bold && !format.italic)
        return format.font;
    const Font* const pBase = movie.FindAs<Font>(format.font);
    const std::string face = !format.face.empty() ? format.face : pBase ? pBase->name : std::string();
    int best = 0;
    std::uint16_t found = format.font;
    for (std::size_t id = 0; id < movie.characters.size(); ++id)
        if (const Font* const p = std::get_if<Font>(&movie.characters[id]); p && p->name == face && !p->glyphs.empty())
        {
            const int score = 1 + (p->bold == format.bold ? 2 : 0) + (p->italic == format.italic ? 1 : 0);
            if (score > best)
            {
                best = score;
                found = static_cast<std::uint16_t>(id);
            }
        }
    return found;
}

void Measure(Letter& letter, const Movie& movie)
{
    letter.fontId = FontFor(letter.format, movie);
    letter.pFont = movie.FindAs<Font>(letter.fontId);
    if (!letter.pFont)
        return;
    const auto glyph = letter.pFont->glyphOf.find(letter.code == 0xA0 ? ' ' : letter.code);
    if (glyph == letter.pFont->glyphOf.end())
        return;
    letter.hasGlyph = true;
    letter.glyph = glyph->second;
    const double scale = letter.format.height / letter.pFont->unitsPerEm;
    const Font& font = *letter.pFont;
    if (letter.glyph < font.advances.size())
        letter.advance = std::floor(font.advances[letter.glyph] * scale); // whole twips: fields are cut to fit them
    else if (letter.glyph < font.glyphs.size() && !font.glyphs[letter.glyph].bounds.IsEmpty())
        letter.advance = font.glyphs[letter.glyph].bounds.xMax * scale;
}

void Kern(Letter& letter, const Letter& next)
{
    if (!letter.format.kerning || !letter.hasGlyph || letter.pFont != next.pFont)
        return;
    const auto pair = letter.pFont->kerning.find(letter.code << 16 | next.code);
    if (pair != letter.pFont->kerning.end())
        letter.advance += std::floor(pair->second * letter.format.height / letter.pFont->unitsPerEm);
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
    double Room(const Format& format, bool first) const
    {
        return m_edit.bounds.Width() - 2 * kGutter - format.left - format.right - (first ? format.indent : 0);
    }
    /// @param next  [out] where the next line begins
    std::size_t EndOfLine(const std::vector<Letter>& letters, std::size_t begin, bool first, std::size_t& next) const
    {
        const double room = Room(letters[begin].format, first);
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
        double ascent = 0, descent = 0, width = 0, leading = letters[begin].format.leading;
        const std::size_t measured = std::max(end, begin + 1);
        std::size_t spaces = 0;
        while (end > begin && letters[end - 1].code == ' ' && !isLast)
            --end;
        for (std::size_t i = begin; i < measured && i < letters.size(); ++i)
            if (const Font* const p = letters[i].pFont)
            {
                const double scale = letters[i].format.height / p->unitsPerEm;
                ascent = std::max(ascent, (p->ascent > 0 ? p->ascent : p->unitsPerEm * 0.8) * scale);
                descent = std::max(descent, (p->ascent > 0 ? p->descent : p->unitsPerEm * 0.2) * scale);
            }
        for (std::size_t i = begin; i < end; ++i)
        {
            width += letters[i].advance;
            spaces += letters[i].code == ' ' ? 1 : 0;
        }
        const Format& format = letters[begin].format;
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
                    {letter.fontId, letter.glyph, x, m_y + ascent, letter.format.height, letter.format.colour});
            x += letter.advance + (letter.code == ' ' ? stretch : 0);
        }
        m_y += ascent + descent + leading;
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
    Format base;
    base.font = edit.font;
    base.height = edit.height;
    base.colour = edit.colour;
    base.align = edit.align;
    base.left = edit.leftMargin;
    base.right = edit.rightMargin;
    base.indent = edit.indent;
    base.leading = edit.leading;
    std::vector<Letter> letters = CMarkupReader(edit, base).Read();
    for (Letter& letter : letters)
        Measure(letter, movie);
    for (std::size_t i = 0; i + 1 < letters.size(); ++i)
        Kern(letters[i], letters[i + 1]);
    CLineSetter(edit, out).Set(letters);
    return out;
}
} // namespace swf
