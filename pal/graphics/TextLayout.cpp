#include "pal/graphics/TextLayout.h"

#include <hb-ot.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

namespace pal
{
namespace
{
constexpr double kUnits = PANGO_SCALE;            // Pango's units to the pixel
constexpr double kMaxWrapWidth = 1e6;             // pixels; Pango counts 1/1024 pixel in 31 bits
constexpr double kFarAway = 1e6;                  // pixels; Cairo's coordinates end at 2^23
constexpr double kMaxPicturePixels = 2;           // a text's pictures may have this many times the target's pixels
constexpr double kMostPicturePixels = 16'777'216; // and no more than this: 64 MiB
constexpr std::size_t kMaxPictures = 4;
constexpr int kTabEms = 4; // distance of tabulators

void PutUtf8(std::string& text, std::uint32_t c)
{
    // What is no character is shown as one that says so; Pango takes valid texts only.
    if (c == 0 || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
        c = 0xFFFD;
    char bytes[6];
    text.append(bytes, static_cast<std::size_t>(g_unichar_to_utf8(c, bytes)));
}

PangoStyle StyleOf(DWRITE_FONT_STYLE style)
{
    switch (style)
    {
    case DWRITE_FONT_STYLE_ITALIC:
        return PANGO_STYLE_ITALIC;
    case DWRITE_FONT_STYLE_OBLIQUE:
        return PANGO_STYLE_OBLIQUE;
    default:
        return PANGO_STYLE_NORMAL;
    }
}

PangoFontDescription* DescribeFont(const TextStyle& style)
{
    PangoFontDescription* const pFont = pango_font_description_new();
    pango_font_description_set_family(pFont, style.family.c_str());
    pango_font_description_set_weight(pFont, static_cast<PangoWeight>(std::max(style.weight, 100)));
    pango_font_description_set_style(pFont, StyleOf(style.style));
    // Both count nine widths from ultra-condensed, one from 1 and the other from 0.
    pango_font_description_set_stretch(pFont, static_cast<PangoStretch>(style.stretch - 1));
    pango_font_description_set_absolute_size(pFont, style.size * kUnits);
    return pFont;
}

/// Height above the baseline and below it. Space between lines belongs above.
void AddExtents(PangoFont* pFont, double& ascent, double& descent)
{
    hb_font_extents_t extents{};
    if (pFont == nullptr || !hb_font_get_h_extents(pango_font_get_hb_font(pFont), &extents))
        return;
    ascent = std::max(ascent, (extents.ascender + std::max(extents.line_gap, 0)) / kUnits);
    descent = std::max(descent, -extents.descender / kUnits);
}

bool HasColor(PangoFont* pFont)
{
    hb_face_t* const pFace = hb_font_get_face(pango_font_get_hb_font(pFont));
    return hb_ot_color_has_png(pFace) || hb_ot_color_has_layers(pFace) || hb_ot_color_has_svg(pFace);
}

bool IsSpace(std::string_view text, std::size_t at)
{
    return g_unichar_isspace(g_utf8_get_char(text.data() + at)) != FALSE;
}

int Floor(double value)
{
    return static_cast<int>(std::floor(value));
}
int Ceil(double value)
{
    return static_cast<int>(std::ceil(value));
}
double Channel(std::uint32_t color, int shift)
{
    return (color >> shift & 0xFFU) / 255.0;
}

/// The smallest rectangle of whole pixels around Pango's rectangle, moved by @p x, @p y pixels, and a rim that
/// smoothing may touch.
PixelRect PixelsAround(const PangoRectangle& ink, double x, double y)
{
    if (ink.width <= 0 || ink.height <= 0)
        return {};
    const double left = x + ink.x / kUnits;
    const double top = y + ink.y / kUnits;
    return {Floor(left) - 1, Floor(top) - 1, Ceil(left + ink.width / kUnits) + 1, Ceil(top + ink.height / kUnits) + 1};
}
} // namespace

TextLayout::TextLayout(std::shared_ptr<FontService> pFonts, TextStyle style, std::wstring_view text, float width,
                       float height)
    : m_pFonts(std::move(pFonts)), m_style(std::move(style)), m_width(width), m_height(height)
{
    Create(text);
}

TextLayout::~TextLayout()
{
    const auto lock = m_pFonts->Lock();
    DropPictures();
    g_object_unref(m_pLayout);
}

void TextLayout::Create(std::wstring_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    m_offsets.reserve(text.size() + 1);
    for (const wchar_t c : text)
    {
        m_offsets.push_back(static_cast<std::uint32_t>(bytes.size()));
        PutUtf8(bytes, static_cast<std::uint32_t>(c));
    }
    m_offsets.push_back(static_cast<std::uint32_t>(bytes.size()));

    const auto lock = m_pFonts->Lock();
    PangoContext* const pContext = m_pFonts->MakeContext();
    pango_context_set_language(pContext, pango_language_from_string(m_style.locale.c_str()));
    m_pLayout = pango_layout_new(pContext);
    g_object_unref(pContext);
    PangoFontDescription* const pFont = DescribeFont(m_style);
    pango_layout_set_font_description(m_pLayout, pFont);
    pango_font_description_free(pFont);
    PangoTabArray* const pTabs = pango_tab_array_new_with_positions(
        1, FALSE, PANGO_TAB_LEFT, static_cast<int>(std::lround(kTabEms * m_style.size * kUnits)));
    pango_layout_set_tabs(m_pLayout, pTabs);
    pango_tab_array_free(pTabs);
    pango_layout_set_auto_dir(m_pLayout, FALSE); // paragraphs run left to right, whatever they hold
    pango_layout_set_wrap(m_pLayout, PANGO_WRAP_WORD_CHAR);
    pango_layout_set_width(m_pLayout, static_cast<int>(std::min<double>(m_width, kMaxWrapWidth) * kUnits));
    pango_layout_set_text(m_pLayout, bytes.data(), static_cast<int>(bytes.size()));
}

HRESULT TextLayout::SetTextAlignment(DWRITE_TEXT_ALIGNMENT textAlignment)
{
    if (!IsAlignment(textAlignment))
        return E_INVALIDARG;
    const auto lock = m_pFonts->Lock();
    m_style.alignment = textAlignment;
    m_arranged = false;
    return S_OK;
}

HRESULT TextLayout::SetUnderline(BOOL hasUnderline, DWRITE_TEXT_RANGE textRange)
try
{
    const auto lock = m_pFonts->Lock();
    const std::size_t characters = m_offsets.size() - 1;
    const std::size_t from = std::min<std::size_t>(textRange.startPosition, characters);
    const std::size_t to = from + std::min<std::size_t>(textRange.length, characters - from);
    if (from == to)
        return S_OK;
    m_underlined.resize(characters);
    std::fill(m_underlined.begin() + static_cast<std::ptrdiff_t>(from),
              m_underlined.begin() + static_cast<std::ptrdiff_t>(to), hasUnderline != FALSE);
    PangoAttrList* const pList = pango_attr_list_new();
    for (std::size_t i = 0, end = 0; i < characters; i = end)
    {
        for (end = i + 1; end < characters && m_underlined[end] == m_underlined[i];)
            ++end;
        if (!m_underlined[i])
            continue;
        PangoAttribute* const pLine = pango_attr_underline_new(PANGO_UNDERLINE_SINGLE);
        pLine->start_index = m_offsets[i];
        pLine->end_index = m_offsets[end];
        pango_attr_list_insert(pList, pLine);
    }
    pango_layout_set_attributes(m_pLayout, pList);
    pango_attr_list_unref(pList);
    m_arranged = false;
    return S_OK;
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}

HRESULT TextLayout::GetMetrics(DWRITE_TEXT_METRICS* pTextMetrics)
try
{
    if (pTextMetrics == nullptr)
        return E_POINTER;
    const auto lock = m_pFonts->Lock();
    Arrange();
    double right = m_left;
    double fullRight = m_left;
    for (const Line& line : m_lines)
    {
        right = std::max(right, line.x + line.width);
        fullRight = std::max(fullRight, line.x + line.fullWidth);
    }
    *pTextMetrics = {};
    pTextMetrics->left = static_cast<FLOAT>(m_left);
    pTextMetrics->width = static_cast<FLOAT>(right - m_left);
    pTextMetrics->widthIncludingTrailingWhitespace = static_cast<FLOAT>(fullRight - m_left);
    pTextMetrics->height = static_cast<FLOAT>(m_lineTops);
    pTextMetrics->layoutWidth = m_width;
    pTextMetrics->layoutHeight = m_height;
    pTextMetrics->maxBidiReorderingDepth = 1;
    pTextMetrics->lineCount = static_cast<UINT32>(m_lines.size());
    return S_OK;
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}

// ---- where the lines stand ---------------------------------------------------------------------------------------

/// Brings m_lines up to date. Under the lock.
void TextLayout::Arrange()
{
    if (m_arranged)
        return;
    DropPictures();
    m_lines.clear();
    pango_layout_set_justify(m_pLayout, m_style.alignment == DWRITE_TEXT_ALIGNMENT_JUSTIFIED);
    m_lineTops = 0;
    m_left = std::numeric_limits<double>::max();
    for (GSList* pNode = pango_layout_get_lines_readonly(m_pLayout); pNode != nullptr; pNode = pNode->next)
    {
        double ascent = 0;
        double descent = 0;
        Line line = Measure(static_cast<PangoLayoutLine*>(pNode->data), ascent, descent);
        line.x = LeftOf(line.width);
        line.baseline = m_lineTops + ascent;
        m_lineTops += ascent + descent;
        m_left = std::min(m_left, line.x);
        m_lines.push_back(line);
    }
    if (m_lines.empty())
        m_left = 0;
    m_ink = FindInk();
    m_arranged = true;
}

TextLayout::Line TextLayout::Measure(PangoLayoutLine* pLine, double& ascent, double& descent)
{
    Line line;
    line.pLine = pLine;
    for (GSList* pNode = pLine->runs; pNode != nullptr; pNode = pNode->next)
    {
        PangoFont* const pFont = static_cast<PangoLayoutRun*>(pNode->data)->item->analysis.font;
        AddExtents(pFont, ascent, descent);
        line.hasColor = line.hasColor || (pFont != nullptr && HasColor(pFont));
    }
    if (ascent + descent <= 0) // a line without text is as high as one with it
    {
        PangoFontDescription* const pDescription = DescribeFont(m_style);
        PangoFont* const pFont = pango_context_load_font(pango_layout_get_context(m_pLayout), pDescription);
        AddExtents(pFont, ascent, descent);
        if (pFont != nullptr)
            g_object_unref(pFont);
        pango_font_description_free(pDescription);
    }

    PangoRectangle logical;
    pango_layout_line_get_extents(pLine, nullptr, &logical);
    line.fullWidth = logical.width / kUnits;
    const std::string_view text(pango_layout_get_text(m_pLayout));
    const auto start = static_cast<std::size_t>(pLine->start_index);
    std::size_t end = start + static_cast<std::size_t>(pLine->length);
    const std::size_t whole = end;
    while (end > start)
    {
        std::size_t last = end - 1;
        while (last > start && (static_cast<unsigned char>(text[last]) & 0xC0) == 0x80)
            --last;
        if (!IsSpace(text, last))
            break;
        end = last;
    }
    line.width = line.fullWidth;
    if (end == whole)
        return line;
    int* pRanges = nullptr;
    int ranges = 0;
    pango_layout_line_get_x_ranges(pLine, static_cast<int>(end), static_cast<int>(whole), &pRanges, &ranges);
    for (int i = 0; i < ranges; ++i)
    {
        const int* const pRange = pRanges + static_cast<std::ptrdiff_t>(i) * 2;
        line.width -= (pRange[1] - pRange[0]) / kUnits;
    }
    g_free(pRanges);
    line.width = end == start ? 0 : std::max(line.width, 0.0);
    return line;
}

double TextLayout::LeftOf(double lineWidth) const
{
    switch (m_style.alignment)
    {
    case DWRITE_TEXT_ALIGNMENT_TRAILING:
        return m_width - lineWidth;
    case DWRITE_TEXT_ALIGNMENT_CENTER:
        return (m_width - lineWidth) / 2;
    default:
        return 0;
    }
}

// ---- drawing -----------------------------------------------------------------------------------------------------

PixelRect TextLayout::FindInk() const
{
    PixelRect ink;
    for (const Line& line : m_lines)
    {
        PangoRectangle extents;
        pango_layout_line_get_extents(line.pLine, &extents, nullptr);
        const double y = std::round(line.baseline - m_lines.front().baseline);
        if (std::abs(y) < kFarAway && std::abs(line.x - m_left) < kFarAway)
            ink = Around(ink, PixelsAround(extents, line.x - m_left, y));
    }
    return ink;
}

/// Draws from the leftmost line's edge and the first baseline on, in the source colour. Under the lock, arranged.
void TextLayout::DrawLines(cairo_t* pTarget)
{
    for (const Line& line : m_lines)
    {
        const double y = std::round(line.baseline - m_lines.front().baseline);
        if (std::abs(y) >= kFarAway)
            break;
        cairo_move_to(pTarget, line.x - m_left, y);
        // Cairo moves the glyphs that it draws onto whole pixels. Outlines stay where they belong, but pictures have
        // none.
        if (line.hasColor)
            pango_cairo_show_layout_line(pTarget, line.pLine);
        else
        {
            pango_cairo_layout_line_path(pTarget, line.pLine);
            cairo_fill(pTarget);
        }
    }
}

void TextLayout::DropPictures()
{
    for (const Picture& picture : m_pictures)
        cairo_surface_destroy(picture.pSurface);
    m_pictures.clear();
}

/// @return borrowed; null when there is none in this colour.
cairo_surface_t* TextLayout::FindPicture(std::uint32_t color) const
{
    const auto found = std::find_if(m_pictures.begin(), m_pictures.end(),
                                    [color](const Picture& picture) { return picture.color == color; });
    return found != m_pictures.end() ? found->pSurface : nullptr;
}

/// Draws the text in a colour, in place of the oldest picture where there are @p maxPictures (at least 1). Under the
/// lock, arranged. @return borrowed; null when memory is short
cairo_surface_t* TextLayout::MakePicture(std::uint32_t color, std::size_t maxPictures)
{
    m_pictures.reserve(kMaxPictures);
    while (m_pictures.size() >= maxPictures)
    {
        cairo_surface_destroy(m_pictures.front().pSurface);
        m_pictures.erase(m_pictures.begin());
    }
    cairo_surface_t* const pPicture = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, m_ink.Width(), m_ink.Height());
    cairo_t* const pDrawing = cairo_create(pPicture);
    cairo_translate(pDrawing, -m_ink.left, -m_ink.top);
    cairo_set_source_rgb(pDrawing, Channel(color, 16), Channel(color, 8), Channel(color, 0));
    DrawLines(pDrawing);
    const bool good = cairo_status(pDrawing) == CAIRO_STATUS_SUCCESS;
    cairo_destroy(pDrawing);
    if (!good)
    {
        cairo_surface_destroy(pPicture);
        return nullptr;
    }
    cairo_surface_flush(pPicture);
    m_pictures.push_back({pPicture, color});
    return pPicture;
}

PixelRect TextLayout::Draw(cairo_t* pTarget, const PixelRect& bounds, float x, float y, const Ink& ink)
{
    auto lock = m_pFonts->Lock();
    Arrange();
    if (m_lines.empty() || !(std::abs(x + m_left) < kFarAway) || !(std::abs(y + m_lines.front().baseline) < kFarAway))
        return {};
    const int originX = Floor(x + m_left + 0.5);
    const int originY = Floor(y + m_lines.front().baseline + 0.5);
    const PixelRect placed{m_ink.left + originX, m_ink.top + originY, m_ink.right + originX, m_ink.bottom + originY};
    const PixelRect seen = Common(placed, bounds);
    if (m_ink.IsEmpty() || seen.IsEmpty())
        return {};

    cairo_surface_t* pPicture = FindPicture(ink.color);
    if (pPicture == nullptr)
    {
        const double allowed = std::min(kMaxPicturePixels * bounds.Width() * bounds.Height(), kMostPicturePixels);
        const double pictures = allowed / (static_cast<double>(m_ink.Width()) * m_ink.Height());
        if (pictures >= 1)
            pPicture = MakePicture(ink.color, static_cast<std::size_t>(std::min<double>(pictures, kMaxPictures)));
    }
    if (pPicture != nullptr)
    {
        lock.unlock();
        cairo_set_source_surface(pTarget, pPicture, placed.left, placed.top);
        cairo_pattern_set_filter(cairo_get_source(pTarget), CAIRO_FILTER_NEAREST);
        cairo_paint_with_alpha(pTarget, ink.alpha);
        cairo_set_source_rgb(pTarget, 0, 0, 0); // lets go of the picture
        return seen;
    }
    // Too large to keep: drawn where it is seen, as a whole, so that its opacity holds for all of it.
    cairo_save(pTarget);
    cairo_rectangle(pTarget, seen.left, seen.top, seen.Width(), seen.Height());
    cairo_clip(pTarget);
    cairo_push_group(pTarget);
    cairo_translate(pTarget, originX, originY);
    cairo_set_source_rgb(pTarget, Channel(ink.color, 16), Channel(ink.color, 8), Channel(ink.color, 0));
    DrawLines(pTarget);
    cairo_pop_group_to_source(pTarget);
    cairo_paint_with_alpha(pTarget, ink.alpha);
    cairo_restore(pTarget);
    return seen;
}
} // namespace pal
