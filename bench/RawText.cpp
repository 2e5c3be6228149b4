#include "bench/RawText.h"

#include <cmath>
#include <cstring>

namespace qmx::bench
{
RawText::RawText(int width, int height)
    : m_width(width), m_height(height), m_pSurface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height)),
      m_pDrawing(cairo_create(m_pSurface)), m_pFonts(pango_cairo_font_map_new()),
      m_copy(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4)
{
}

RawText::~RawText()
{
    for (PangoLayout* const pLayout : m_layouts)
        g_object_unref(pLayout);
    g_object_unref(m_pFonts);
    cairo_destroy(m_pDrawing);
    cairo_surface_destroy(m_pSurface);
}

std::size_t RawText::AddLayout(const std::string& utf8, const std::string& family, double size, bool bold)
{
    PangoContext* const pContext = pango_font_map_create_context(m_pFonts);
    cairo_font_options_t* const pOptions = cairo_font_options_create();
    cairo_font_options_set_hint_style(pOptions, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(pOptions, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(pContext, pOptions);
    cairo_font_options_destroy(pOptions);
    PangoLayout* const pLayout = pango_layout_new(pContext);
    g_object_unref(pContext);
    PangoFontDescription* const pFont = pango_font_description_new();
    pango_font_description_set_family(pFont, family.c_str());
    pango_font_description_set_weight(pFont, bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_font_description_set_absolute_size(pFont, size * PANGO_SCALE);
    pango_layout_set_font_description(pLayout, pFont);
    pango_font_description_free(pFont);
    pango_layout_set_text(pLayout, utf8.c_str(), -1);
    m_layouts.push_back(pLayout);
    return m_layouts.size() - 1;
}

double RawText::WidthOf(std::size_t layout) const
{
    int width = 0;
    pango_layout_get_size(m_layouts[layout], &width, nullptr);
    return static_cast<double>(width) / PANGO_SCALE;
}

double RawText::HeightOf(std::size_t layout) const
{
    int height = 0;
    pango_layout_get_size(m_layouts[layout], nullptr, &height);
    return static_cast<double>(height) / PANGO_SCALE;
}

void RawText::Clear()
{
    cairo_surface_flush(m_pSurface);
    std::memset(cairo_image_surface_get_data(m_pSurface), 0, m_copy.size());
    cairo_surface_mark_dirty(m_pSurface);
}

void RawText::SetInk(std::uint32_t color, double alpha)
{
    const auto channel = [color](int shift) { return (color >> shift & 0xFF) / 255.0; };
    cairo_set_source_rgba(m_pDrawing, channel(16), channel(8), channel(0), alpha);
}

void RawText::FillBox(double x, double y, double width, double height, std::uint32_t color, double alpha)
{
    SetInk(color, alpha);
    cairo_rectangle(m_pDrawing, x, y, width, height);
    cairo_fill(m_pDrawing);
}

void RawText::Draw(std::size_t layout, double x, double y, std::uint32_t color, double alpha)
{
    SetInk(color, alpha);
    cairo_move_to(m_pDrawing, x, y);
    pango_cairo_show_layout(m_pDrawing, m_layouts[layout]);
}

const std::vector<std::uint8_t>& RawText::Copy()
{
    cairo_surface_flush(m_pSurface);
    std::memcpy(m_copy.data(), cairo_image_surface_get_data(m_pSurface), m_copy.size());
    return m_copy;
}
} // namespace qmx::bench
