#include "pal/graphics/FontService.h"

#include <dlfcn.h>

#include <new>

namespace pal
{
namespace
{
/// Pango registers its types with GObject, which never forgets them. Loaded a second time, Pango would find its own
/// names taken, so it stays when the library that this layer is part of goes.
void KeepPangoLoaded()
{
    Dl_info info;
    if (dladdr(reinterpret_cast<const void*>(&pango_cairo_font_map_new), &info) != 0)
        dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

void SaySilentlyNothing(const char*, GLogLevelFlags, const char*, void*) {}
} // namespace

std::shared_ptr<FontService> FontService::Get()
{
    static std::mutex mutex;
    static std::shared_ptr<FontService> shared; // layouts that outlive it at the end of the process hold their own
    const std::lock_guard guard(mutex);
    if (shared == nullptr)
        shared.reset(new (std::nothrow) FontService);
    return shared;
}

FontService::FontService()
{
    KeepPangoLoaded();
    constexpr auto kAll = static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE | G_LOG_LEVEL_CRITICAL);
    m_logHandler = g_log_set_handler("Pango", kAll, SaySilentlyNothing, nullptr);
    m_pFontMap = pango_cairo_font_map_new();
}

FontService::~FontService()
{
    g_object_unref(m_pFontMap);
    g_log_remove_handler("Pango", m_logHandler);
}

bool FontService::HasFonts()
{
    if (m_hasFonts)
        return true;
    PangoFontFamily** ppFamilies = nullptr;
    int families = 0;
    pango_font_map_list_families(m_pFontMap, &ppFamilies, &families);
    // Pango adds its aliases (Sans, Serif, Monospace, System-ui) even when no font stands behind them.
    for (int i = 0; i < families && !m_hasFonts; ++i)
    {
        PangoFontFace** ppFaces = nullptr;
        int faces = 0;
        pango_font_family_list_faces(ppFamilies[i], &ppFaces, &faces);
        for (int k = 0; k < faces && !m_hasFonts; ++k)
            m_hasFonts = pango_font_face_is_synthesized(ppFaces[k]) == FALSE;
        g_free(ppFaces);
    }
    g_free(ppFamilies);
    return m_hasFonts;
}

PangoContext* FontService::MakeContext()
{
    PangoContext* const pContext = pango_font_map_create_context(m_pFontMap);
    cairo_font_options_t* const pOptions = cairo_font_options_create();
    cairo_font_options_set_antialias(pOptions, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(pOptions, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(pOptions, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(pContext, pOptions);
    cairo_font_options_destroy(pOptions);
    pango_cairo_context_set_resolution(pContext, 96);
    pango_context_set_round_glyph_positions(pContext, FALSE);
    pango_context_set_base_dir(pContext, PANGO_DIRECTION_LTR);
    return pContext;
}
} // namespace pal
