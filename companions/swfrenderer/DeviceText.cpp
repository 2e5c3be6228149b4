#include "companions/swfrenderer/DeviceText.h"

#include "companions/swfrenderer/SystemFont.h"
#include "companions/swfrenderer/TextMarkup.h"

#include <map>
#include <optional>
#include <set>
#include <tuple>

namespace swf
{
namespace
{
constexpr std::size_t kMaxDeviceFonts = 32, kGlyphBytes = 160;
constexpr std::size_t kMaxText = std::size_t{4} << 20; ///< bytes of all fields that are looked at
constexpr std::uint16_t kLastNumber = 65'535;

class CDeviceText
{
public:
    CDeviceText(Movie& movie, ReadBudget& budget) : m_movie(movie), m_budget(budget)
    {
        for (const auto& [id, character] : movie.characters)
            if (const Font* const p = std::get_if<Font>(&character); p && !p->glyphs.empty())
                m_outlined.insert(p->name);
    }
    void Add(const EditText& edit)
    {
        if (edit.text.size() > m_textLeft)
            return;
        m_textLeft -= edit.text.size();
        const TextFormat* pLast = nullptr;
        std::set<std::uint32_t>* pCodes = nullptr;
        for (const MarkedCode& marked : ReadMarkup(edit))
        {
            if (marked.pFormat.get() != pLast)
                pCodes = CodesFor(*marked.pFormat);
            pLast = marked.pFormat.get();
            if (pCodes && marked.code >= ' ' && m_budget.Take(kGlyphBytes))
                pCodes->insert(marked.code == 0xA0 ? ' ' : marked.code);
        }
    }
    void Finish()
    {
        for (const auto& [id, codes] : m_needs)
            if (const auto at = m_movie.characters.find(id); at != m_movie.characters.end())
                if (Font* const pFont = std::get_if<Font>(&at->second))
                    FillIn(*pFont, codes);
    }

private:
    /// Where letters of a look have to be known from; null where the movie has the font.
    std::set<std::uint32_t>* CodesFor(const TextFormat& format)
    {
        const Font* const pBase = m_movie.FindAs<Font>(format.font);
        const bool plain = !format.bold && !format.italic;
        const std::string face = !format.face.empty() ? format.face : pBase ? pBase->name : std::string("_serif");
        if (m_outlined.contains(face) || (format.face.empty() && pBase && !pBase->glyphs.empty()))
            return nullptr;
        if (pBase && plain && face == pBase->name)
            return &m_needs[format.font];
        const auto [at, isNew] = m_fonts.try_emplace({face, format.bold, format.italic});
        if (isNew && m_fonts.size() <= kMaxDeviceFonts)
        {
            Font font;
            font.name = face;
            font.bold = format.bold;
            font.italic = format.italic;
            const std::uint16_t id = !m_movie.Find(format.font) && plain ? format.font : FreeNumber();
            if (m_movie.characters.try_emplace(id, std::move(font)).second)
                at->second = id;
        }
        return at->second ? &m_needs[*at->second] : nullptr;
    }
    std::uint16_t FreeNumber()
    {
        while (m_next > 0 && m_movie.Find(m_next))
            --m_next;
        return m_next;
    }
    void FillIn(Font& font, const std::set<std::uint32_t>& codes)
    {
        std::unique_ptr<CSystemFont> pSystem;
        if (!font.file.empty())
            pSystem = CSystemFont::OpenFile(font.file);
        if (!pSystem)
            pSystem = CSystemFont::Open(font.name, font.bold, font.italic);
        if (!pSystem)
            return;
        font.unitsPerEm = pSystem->unitsPerEm;
        font.ascent = pSystem->ascent;
        font.descent = pSystem->descent;
        font.advances.clear();
        font.glyphOf.clear();
        for (const std::uint32_t code : codes)
        {
            Shape shape;
            double advance = 0;
            if (!pSystem->Outline(code, shape, advance) ||
                !m_budget.Take(sizeof(Shape) + shape.layers[0].edges.size() * sizeof(Edge)))
                continue;
            font.glyphOf.emplace(code, static_cast<std::uint32_t>(font.glyphs.size()));
            font.glyphs.push_back(std::move(shape));
            font.advances.push_back(advance);
        }
    }

    Movie& m_movie;
    ReadBudget& m_budget;
    std::set<std::string> m_outlined; ///< names of fonts that the movie has
    /// Those that were added, by name, boldness and slant; none where there was no room.
    std::map<std::tuple<std::string, bool, bool>, std::optional<std::uint16_t>> m_fonts;
    std::map<std::uint16_t, std::set<std::uint32_t>> m_needs; ///< characters by number of the font
    std::uint16_t m_next = kLastNumber;
    std::size_t m_textLeft = kMaxText;
};
} // namespace

void AddDeviceGlyphs(Movie& movie, ReadBudget& budget)
{
    std::vector<const EditText*> fields; // the map grows while they are read; its entries stay where they are
    for (const auto& [id, character] : movie.characters)
        if (const EditText* const p = std::get_if<EditText>(&character))
            fields.push_back(p);
    if (fields.empty())
        return;
    CDeviceText text(movie, budget);
    for (const EditText* const p : fields)
        text.Add(*p);
    text.Finish();
}
} // namespace swf
