#include "tests/support/FontReference.h"

#include <windows.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

namespace test_support
{
namespace
{
struct GdiDeleter
{
    void operator()(HDC context) const { DeleteDC(context); }
    void operator()(HFONT font) const { DeleteObject(font); }
};
using Context = std::unique_ptr<std::remove_pointer_t<HDC>, GdiDeleter>;
using Font = std::unique_ptr<std::remove_pointer_t<HFONT>, GdiDeleter>;

std::wstring Wide(std::string_view utf8)
{
    std::wstring wide(utf8.size(), L'\0'); // never longer in UTF-16
    const int length = static_cast<int>(utf8.size());
    wide.resize(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), length)));
    return wide;
}

int CALLBACK FindIt(const LOGFONTW* pFont, const TEXTMETRICW*, DWORD, LPARAM parameter)
{
    auto& wanted = *reinterpret_cast<FontName*>(parameter);
    const bool same = pFont->lfWeight == wanted.weight && (pFont->lfItalic != 0) == wanted.italic;
    return same ? 0 : 1; // 0 ends the enumeration, and is what it answers then
}

/// A font as large as its own design units, which no grid moves.
Font MakeFont(HDC context, const FontName& name)
{
    const auto make = [&](int size)
    {
        return Font(CreateFontW(-size, 0, 0, 0, name.weight, name.italic ? TRUE : FALSE, FALSE, FALSE, DEFAULT_CHARSET,
                                OUT_TT_ONLY_PRECIS, CLIP_DEFAULT_PRECIS, ANTIALIASED_QUALITY, DEFAULT_PITCH,
                                Wide(name.family).c_str()));
    };
    Font any = make(1000);
    SelectObject(context, any.get());
    OUTLINETEXTMETRICW metrics{};
    const bool known = GetOutlineTextMetricsW(context, sizeof(metrics), &metrics) != 0;
    Font font = make(known ? static_cast<int>(metrics.otmEMSquare) : 1000);
    SelectObject(context, font.get());
    return font;
}
} // namespace

bool HasFont(const FontName& font)
{
    const Context context(CreateCompatibleDC(nullptr));
    LOGFONTW wanted{};
    wanted.lfCharSet = DEFAULT_CHARSET;
    const std::wstring family = Wide(font.family);
    std::copy_n(family.data(), std::min<std::size_t>(family.size(), LF_FACESIZE - 1), wanted.lfFaceName);
    FontName parameter = font;
    return EnumFontFamiliesExW(context.get(), &wanted, FindIt, reinterpret_cast<LPARAM>(&parameter), 0) == 0;
}

MeasuredText MeasureText(const FontName& font, std::string_view utf8, double size)
{
    MeasuredText measured;
    if (!HasFont(font))
        return measured;
    const Context context(CreateCompatibleDC(nullptr));
    const Font selected = MakeFont(context.get(), font);
    OUTLINETEXTMETRICW metrics{};
    if (GetOutlineTextMetricsW(context.get(), sizeof(metrics), &metrics) == 0)
        return measured;
    const double scale = size / metrics.otmEMSquare;
    constexpr double kFar = std::numeric_limits<double>::max();
    double left = kFar;
    double top = kFar;
    double right = -kFar;
    double bottom = -kFar;
    for (const wchar_t c : Wide(utf8))
    {
        const MAT2 upright{{0, 1}, {0, 0}, {0, 0}, {0, 1}};
        GLYPHMETRICS glyph{};
        if (GetGlyphOutlineW(context.get(), c, GGO_METRICS | GGO_UNHINTED, &glyph, 0, nullptr, &upright) == GDI_ERROR)
            return {};
        if (c != L' ')
        {
            const double x = measured.width + glyph.gmptGlyphOrigin.x * scale;
            const double y = -glyph.gmptGlyphOrigin.y * scale;
            left = std::min(left, x);
            right = std::max(right, x + glyph.gmBlackBoxX * scale);
            top = std::min(top, y);
            bottom = std::max(bottom, y + glyph.gmBlackBoxY * scale);
        }
        measured.width += glyph.gmCellIncX * scale;
    }
    if (left < right)
    {
        measured.inkLeft = left;
        measured.inkTop = top;
        measured.inkRight = right;
        measured.inkBottom = bottom;
    }
    measured.ascent = (metrics.otmMacAscent + static_cast<int>(metrics.otmMacLineGap)) * scale;
    measured.descent = -metrics.otmMacDescent * scale;
    return measured;
}
} // namespace test_support
