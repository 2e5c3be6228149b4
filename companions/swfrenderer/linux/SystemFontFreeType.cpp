#include "companions/swfrenderer/SystemFont.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

namespace swf
{
namespace
{
struct LibraryClose
{
    void operator()(FT_Library p) const { FT_Done_FreeType(p); }
};
struct FaceClose
{
    void operator()(FT_Face p) const { FT_Done_Face(p); }
};
struct PatternClose
{
    void operator()(FcPattern* p) const { FcPatternDestroy(p); }
};
using Library = std::unique_ptr<FT_LibraryRec_, LibraryClose>;
using Pattern = std::unique_ptr<FcPattern, PatternClose>;

COutlineBuilder& Builder(void* p)
{
    return *static_cast<COutlineBuilder*>(p);
}
int MoveTo(const FT_Vector* to, void* p)
{
    Builder(p).Move(static_cast<double>(to->x), static_cast<double>(to->y));
    return 0;
}
int LineTo(const FT_Vector* to, void* p)
{
    Builder(p).Line(static_cast<double>(to->x), static_cast<double>(to->y));
    return 0;
}
int ConicTo(const FT_Vector* c, const FT_Vector* to, void* p)
{
    Builder(p).Quadratic(static_cast<double>(c->x), static_cast<double>(c->y), static_cast<double>(to->x),
                         static_cast<double>(to->y));
    return 0;
}
int CubicTo(const FT_Vector* c, const FT_Vector* d, const FT_Vector* to, void* p)
{
    Builder(p).Cubic(static_cast<double>(c->x), static_cast<double>(c->y), static_cast<double>(d->x),
                     static_cast<double>(d->y), static_cast<double>(to->x), static_cast<double>(to->y));
    return 0;
}

class CFreeTypeFont final : public CSystemFont
{
public:
    bool OpenPath(const char* path, long index)
    {
        FT_Face face = nullptr;
        return Start() && FT_New_Face(m_library.get(), path, index, &face) == 0 && Take(face);
    }
    bool OpenMemory(std::span<const std::uint8_t> file)
    {
        FT_Face face = nullptr;
        return Start() &&
               FT_New_Memory_Face(m_library.get(), file.data(), static_cast<FT_Long>(file.size()), 0, &face) == 0 &&
               Take(face);
    }
    bool Outline(std::uint32_t code, Shape& shape, double& advance) override
    {
        const FT_UInt glyph = FT_Get_Char_Index(m_face.get(), code);
        if (glyph == 0 || FT_Load_Glyph(m_face.get(), glyph, FT_LOAD_NO_SCALE | FT_LOAD_NO_HINTING) != 0 ||
            m_face->glyph->format != FT_GLYPH_FORMAT_OUTLINE)
            return false;
        const FT_Outline_Funcs functions{MoveTo, LineTo, ConicTo, CubicTo, 0, 0};
        COutlineBuilder builder;
        if (FT_Outline_Decompose(&m_face->glyph->outline, &functions, &builder) != 0)
            return false;
        shape = builder.Finish();
        advance = static_cast<double>(m_face->glyph->metrics.horiAdvance);
        return true;
    }

private:
    bool Start()
    {
        FT_Library library = nullptr;
        if (FT_Init_FreeType(&library) != 0)
            return false;
        m_library.reset(library);
        return true;
    }
    bool Take(FT_Face face)
    {
        m_face.reset(face);
        if (!FT_IS_SCALABLE(face) || face->units_per_EM == 0)
            return false;
        unitsPerEm = face->units_per_EM;
        ascent = face->ascender;
        descent = -face->descender;
        return true;
    }

    Library m_library; ///< outlives the face
    std::unique_ptr<FT_FaceRec_, FaceClose> m_face;
};
} // namespace

std::unique_ptr<CSystemFont> CSystemFont::Open(const std::string& face, bool bold, bool italic)
{
    const char* const family = face == "_sans"         ? "sans-serif"
                               : face == "_serif"      ? "serif"
                               : face == "_typewriter" ? "monospace"
                                                       : face.c_str();
    const Pattern wanted(FcPatternCreate());
    if (!wanted)
        return nullptr;
    FcPatternAddString(wanted.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(family));
    FcPatternAddInteger(wanted.get(), FC_WEIGHT, bold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
    FcPatternAddInteger(wanted.get(), FC_SLANT, italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddBool(wanted.get(), FC_SCALABLE, FcTrue);
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultNoMatch;
    const Pattern found(FcFontMatch(nullptr, wanted.get(), &result));
    FcChar8* path = nullptr; // borrowed
    int index = 0;
    if (!found || FcPatternGetString(found.get(), FC_FILE, 0, &path) != FcResultMatch)
        return nullptr;
    (void)FcPatternGetInteger(found.get(), FC_INDEX, 0, &index);
    auto pFont = std::make_unique<CFreeTypeFont>();
    return pFont->OpenPath(reinterpret_cast<const char*>(path), index) ? std::move(pFont) : nullptr;
}

std::unique_ptr<CSystemFont> CSystemFont::OpenFile(std::span<const std::uint8_t> file)
{
    auto pFont = std::make_unique<CFreeTypeFont>();
    return pFont->OpenMemory(file) ? std::move(pFont) : nullptr;
}
} // namespace swf
