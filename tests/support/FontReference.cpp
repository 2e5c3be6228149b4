#include "tests/support/FontReference.h"

#include <fontconfig/fontconfig.h>
#include <hb.h>

#include <algorithm>
#include <limits>
#include <memory>

namespace test_support
{
namespace
{
constexpr double kScale = 1024; // HarfBuzz's units to the pixel

int IntegerOf(FcPattern* pFont, const char* pObject)
{
    double value = 0;
    return FcPatternGetDouble(pFont, pObject, 0, &value) == FcResultMatch ? static_cast<int>(value) : 0;
}

/// File of the font; empty when there is none.
std::string FindFontFile(const FontName& font)
{
    const int weight = FcWeightFromOpenType(font.weight);
    FcPattern* const pPattern = FcPatternCreate();
    FcPatternAddString(pPattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(font.family.c_str()));
    FcPatternAddInteger(pPattern, FC_WEIGHT, weight);
    FcPatternAddInteger(pPattern, FC_SLANT, font.italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcConfigSubstitute(nullptr, pPattern, FcMatchPattern);
    FcDefaultSubstitute(pPattern);
    FcResult result = FcResultNoMatch;
    FcPattern* const pFound = FcFontMatch(nullptr, pPattern, &result);
    FcPatternDestroy(pPattern);
    std::string file;
    FcChar8* pText = nullptr;
    for (int i = 0; pFound != nullptr && FcPatternGetString(pFound, FC_FAMILY, i, &pText) == FcResultMatch; ++i)
    {
        FcChar8* pFile = nullptr;
        if (font.family == reinterpret_cast<const char*>(pText) && IntegerOf(pFound, FC_WEIGHT) == weight &&
            (IntegerOf(pFound, FC_SLANT) != FC_SLANT_ROMAN) == font.italic &&
            FcPatternGetString(pFound, FC_FILE, 0, &pFile) == FcResultMatch)
            file = reinterpret_cast<const char*>(pFile);
    }
    if (pFound != nullptr)
        FcPatternDestroy(pFound);
    return file;
}
} // namespace

bool HasFont(const FontName& font)
{
    return !FindFontFile(font).empty();
}

MeasuredText MeasureText(const FontName& font, std::string_view utf8, double size)
{
    MeasuredText measured;
    hb_blob_t* const pBlob = hb_blob_create_from_file_or_fail(FindFontFile(font).c_str());
    if (pBlob == nullptr)
        return measured;
    hb_face_t* const pFace = hb_face_create(pBlob, 0);
    hb_font_t* const pFont = hb_font_create(pFace);
    const int scale = static_cast<int>(size * kScale);
    hb_font_set_scale(pFont, scale, scale);
    hb_buffer_t* const pBuffer = hb_buffer_create();
    hb_buffer_add_utf8(pBuffer, utf8.data(), static_cast<int>(utf8.size()), 0, static_cast<int>(utf8.size()));
    hb_buffer_guess_segment_properties(pBuffer);
    hb_shape(pFont, pBuffer, nullptr, 0);

    unsigned count = 0;
    const hb_glyph_info_t* const pGlyphs = hb_buffer_get_glyph_infos(pBuffer, &count);
    const hb_glyph_position_t* const pPositions = hb_buffer_get_glyph_positions(pBuffer, &count);
    constexpr double kFar = std::numeric_limits<double>::max();
    double left = kFar;
    double top = kFar;
    double right = -kFar;
    double bottom = -kFar;
    for (unsigned i = 0; i < count; ++i)
    {
        hb_glyph_extents_t extents{};
        if (hb_font_get_glyph_extents(pFont, pGlyphs[i].codepoint, &extents) && extents.width != 0)
        {
            const double x = measured.width + (pPositions[i].x_offset + extents.x_bearing) / kScale;
            const double y = -(pPositions[i].y_offset + extents.y_bearing) / kScale;
            left = std::min(left, x);
            right = std::max(right, x + extents.width / kScale);
            top = std::min(top, y);
            bottom = std::max(bottom, y - extents.height / kScale); // heights count upward
        }
        measured.width += pPositions[i].x_advance / kScale;
    }
    if (left < right)
    {
        measured.inkLeft = left;
        measured.inkTop = top;
        measured.inkRight = right;
        measured.inkBottom = bottom;
    }
    hb_font_extents_t line{};
    hb_font_get_h_extents(pFont, &line);
    measured.ascent = (line.ascender + std::max(line.line_gap, 0)) / kScale;
    measured.descent = -line.descender / kScale;

    hb_buffer_destroy(pBuffer);
    hb_font_destroy(pFont);
    hb_face_destroy(pFace);
    hb_blob_destroy(pBlob);
    return measured;
}
} // namespace test_support
