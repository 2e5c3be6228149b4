#include "companions/swfrenderer/SystemFont.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace swf
{
namespace
{
constexpr int kUnitsPerEm = 2048; ///< outlines are asked for in this size

double Value(FIXED v)
{
    return v.value + v.fract / 65'536.0;
}

/// GDI gives outlines as TrueType has them: straight and quadratic.
class CGdiFont final : public CSystemFont
{
public:
    explicit CGdiFont(const LOGFONTW& wanted) : m_dc(CreateCompatibleDC(nullptr)), m_font(CreateFontIndirectW(&wanted))
    {
        if (m_dc && m_font)
            m_before = SelectObject(m_dc, m_font);
    }
    ~CGdiFont() override
    {
        if (m_before)
            SelectObject(m_dc, m_before);
        if (m_font)
            DeleteObject(m_font);
        if (m_dc)
            DeleteDC(m_dc);
    }
    CGdiFont(const CGdiFont&) = delete;
    CGdiFont& operator=(const CGdiFont&) = delete;

    bool Measure()
    {
        TEXTMETRICW metrics{};
        if (!m_before || !GetTextMetricsW(m_dc, &metrics) || (metrics.tmPitchAndFamily & TMPF_TRUETYPE) == 0)
            return false;
        unitsPerEm = kUnitsPerEm;
        ascent = metrics.tmAscent;
        descent = metrics.tmDescent;
        return true;
    }
    bool Outline(std::uint32_t code, Shape& shape, double& advance) override
    {
        const wchar_t text = static_cast<wchar_t>(code);
        WORD index = 0xFFFF;
        if (code > 0xFFFF || GetGlyphIndicesW(m_dc, &text, 1, &index, GGI_MARK_NONEXISTING_GLYPHS) != 1 ||
            index == 0xFFFF)
            return false;
        constexpr UINT kFormat = GGO_NATIVE | GGO_UNHINTED | GGO_GLYPH_INDEX;
        const MAT2 same{{0, 1}, {0, 0}, {0, 0}, {0, 1}};
        GLYPHMETRICS metrics{};
        const DWORD cb = GetGlyphOutlineW(m_dc, index, kFormat, &metrics, 0, nullptr, &same);
        if (cb == GDI_ERROR)
            return false;
        std::vector<std::uint8_t> bytes(cb);
        if (cb != 0 && GetGlyphOutlineW(m_dc, index, kFormat, &metrics, cb, bytes.data(), &same) == GDI_ERROR)
            return false;
        COutlineBuilder builder;
        for (std::size_t at = 0; at + sizeof(TTPOLYGONHEADER) <= bytes.size();)
        {
            TTPOLYGONHEADER header{};
            std::memcpy(&header, bytes.data() + at, sizeof header);
            const std::size_t end = std::min<std::size_t>(at + header.cb, bytes.size());
            builder.Move(Value(header.pfxStart.x), Value(header.pfxStart.y));
            at += sizeof header;
            while (at + 4 <= end)
                at = AddCurve(bytes, at, end, builder);
            at = end;
        }
        shape = builder.Finish();
        advance = metrics.gmCellIncX;
        return true;
    }

private:
    /// @return where the next curve begins.
    static std::size_t AddCurve(const std::vector<std::uint8_t>& bytes, std::size_t at, std::size_t end,
                                COutlineBuilder& builder)
    {
        WORD type = 0, count = 0;
        std::memcpy(&type, bytes.data() + at, sizeof type);
        std::memcpy(&count, bytes.data() + at + 2, sizeof count);
        at += 4;
        std::vector<POINTFX> points(std::min<std::size_t>(count, (end - at) / sizeof(POINTFX)));
        if (!points.empty())
            std::memcpy(points.data(), bytes.data() + at, points.size() * sizeof(POINTFX));
        const auto x = [&points](std::size_t i) { return Value(points[i].x); };
        const auto y = [&points](std::size_t i) { return Value(points[i].y); };
        if (type == TT_PRIM_LINE)
            for (std::size_t i = 0; i < points.size(); ++i)
                builder.Line(x(i), y(i));
        else
            for (std::size_t i = 0; i + 1 < points.size(); ++i)
            {
                // Between two control points the curve goes through their middle; the last point is its end.
                const bool isLast = i + 2 == points.size();
                builder.Quadratic(x(i), y(i), isLast ? x(i + 1) : (x(i) + x(i + 1)) / 2,
                                  isLast ? y(i + 1) : (y(i) + y(i + 1)) / 2);
            }
        return count == 0 ? end : at + std::size_t{count} * sizeof(POINTFX);
    }

    HDC m_dc;
    HFONT m_font;
    HGDIOBJ m_before = nullptr;
};
} // namespace

std::unique_ptr<CSystemFont> CSystemFont::Open(const std::string& face, bool bold, bool italic)
{
    const std::string name = face == "_sans"         ? "Arial"
                             : face == "_serif"      ? "Times New Roman"
                             : face == "_typewriter" ? "Courier New"
                                                     : face;
    LOGFONTW wanted{};
    wanted.lfHeight = -kUnitsPerEm;
    wanted.lfWeight = bold ? FW_BOLD : FW_NORMAL;
    wanted.lfItalic = italic ? 1 : 0;
    wanted.lfCharSet = DEFAULT_CHARSET;
    wanted.lfOutPrecision = OUT_TT_ONLY_PRECIS;
    const int length = MultiByteToWideChar(CP_UTF8, 0, name.c_str(), -1, wanted.lfFaceName, LF_FACESIZE);
    if (length == 0)
        wanted.lfFaceName[0] = 0; // a name that is too long is nobody's
    auto pFont = std::make_unique<CGdiFont>(wanted);
    return pFont->Measure() ? std::move(pFont) : nullptr;
}

std::unique_ptr<CSystemFont> CSystemFont::OpenFile(std::span<const std::uint8_t>)
{
    return nullptr;
}
} // namespace swf
