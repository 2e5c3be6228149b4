#include "pal/graphics/TextLayout.h"
#include "pal/graphics/Texture.h"

#include <d2d1.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

namespace pal
{
namespace
{
/// Taken into 0..1; 0 for what is no number.
double Clamped(float value)
{
    return value > 0 ? std::min<double>(value, 1) : 0;
}

class SolidColorBrush final : public ComObject<SolidColorBrush, ID2D1SolidColorBrush, ID2D1Brush, ID2D1Resource>
{
public:
    explicit SolidColorBrush(const D2D1_COLOR_F& color) : m_color(color) {}
    void STDMETHODCALLTYPE SetOpacity(FLOAT opacity) override { m_opacity = opacity; }

    double Alpha() const { return Clamped(m_color.a) * Clamped(m_opacity); }
    std::uint32_t Rgb() const { return Level(m_color.r) << 16 | Level(m_color.g) << 8 | Level(m_color.b); }
    double Red() const { return Clamped(m_color.r); }
    double Green() const { return Clamped(m_color.g); }
    double Blue() const { return Clamped(m_color.b); }

private:
    static std::uint32_t Level(float value) { return static_cast<std::uint32_t>(std::lround(Clamped(value) * 255)); }

    const D2D1_COLOR_F m_color;
    FLOAT m_opacity = 1;
};

struct DestroyDrawing
{
    void operator()(cairo_t* p) const { cairo_destroy(p); }
};
using Drawing = std::unique_ptr<cairo_t, DestroyDrawing>;

/// A drawing onto the pixels of @p texture; null when memory is short.
Drawing DrawingOn(Texture& texture)
{
    const PixelRect bounds = texture.Bounds();
    cairo_surface_t* const pSurface = cairo_image_surface_create_for_data(
        texture.Pixels(), CAIRO_FORMAT_ARGB32, bounds.Width(), bounds.Height(), static_cast<int>(texture.Stride()));
    Drawing drawing(cairo_create(pSurface));
    cairo_surface_destroy(pSurface); // the drawing holds it
    return cairo_status(drawing.get()) == CAIRO_STATUS_SUCCESS ? std::move(drawing) : nullptr;
}

class RenderTarget final : public ComObject<RenderTarget, ID2D1RenderTarget, ID2D1Resource>
{
public:
    RenderTarget(Texture& texture, Drawing drawing) : m_pTexture(&texture), m_drawing(std::move(drawing))
    {
        texture.AddRef();
    }

    HRESULT STDMETHODCALLTYPE CreateSolidColorBrush(const D2D1_COLOR_F* pColor,
                                                    const D2D1_BRUSH_PROPERTIES* pBrushProperties,
                                                    ID2D1SolidColorBrush** ppBrush) override
    {
        if (ppBrush == nullptr)
            return E_INVALIDARG;
        *ppBrush = nullptr;
        if (pColor == nullptr)
            return E_INVALIDARG;
        if (pBrushProperties != nullptr)
            return E_NOTIMPL;
        *ppBrush = new (std::nothrow) SolidColorBrush(*pColor);
        return *ppBrush != nullptr ? S_OK : E_OUTOFMEMORY;
    }

    void STDMETHODCALLTYPE FillRectangle(const D2D1_RECT_F* pRect, ID2D1Brush* pBrush) override
    {
        const auto* const pInk = dynamic_cast<SolidColorBrush*>(pBrush);
        if (!CanDraw(pRect != nullptr && pInk != nullptr))
            return;
        // Held near the picture first: Cairo's coordinates are narrower than a float's.
        const PixelRect bounds = m_pTexture->Bounds();
        const double left = std::clamp<double>(pRect->left, -1, bounds.right + 1);
        const double right = std::clamp<double>(pRect->right, -1, bounds.right + 1);
        const double top = std::clamp<double>(pRect->top, -1, bounds.bottom + 1);
        const double bottom = std::clamp<double>(pRect->bottom, -1, bounds.bottom + 1);
        if (!(left < right) || !(top < bottom))
            return;
        cairo_set_source_rgba(m_drawing.get(), pInk->Red(), pInk->Green(), pInk->Blue(), pInk->Alpha());
        cairo_rectangle(m_drawing.get(), left, top, right - left, bottom - top);
        cairo_fill(m_drawing.get());
        Changed({static_cast<int>(std::floor(left)), static_cast<int>(std::floor(top)),
                 static_cast<int>(std::ceil(right)), static_cast<int>(std::ceil(bottom))});
    }

    void STDMETHODCALLTYPE DrawTextLayout(D2D1_POINT_2F origin, IDWriteTextLayout* pTextLayout,
                                          ID2D1Brush* pDefaultForegroundBrush, D2D1_DRAW_TEXT_OPTIONS) override
    {
        auto* const pLayout = dynamic_cast<TextLayout*>(pTextLayout);
        const auto* const pInk = dynamic_cast<SolidColorBrush*>(pDefaultForegroundBrush);
        if (!CanDraw(pLayout != nullptr && pInk != nullptr))
            return;
        try
        {
            Changed(
                pLayout->Draw(m_drawing.get(), m_pTexture->Bounds(), origin.x, origin.y, {pInk->Rgb(), pInk->Alpha()}));
        }
        catch (const std::bad_alloc&)
        {
            Note(E_OUTOFMEMORY);
        }
    }

    void STDMETHODCALLTYPE Clear(const D2D1_COLOR_F* pClearColor) override
    {
        if (!CanDraw(true))
            return;
        cairo_surface_flush(cairo_get_target(m_drawing.get()));
        m_pTexture->Clear();
        cairo_surface_mark_dirty(cairo_get_target(m_drawing.get()));
        if (pClearColor == nullptr || !(pClearColor->a > 0))
            return;
        const SolidColorBrush brush(*pClearColor);
        cairo_set_source_rgba(m_drawing.get(), brush.Red(), brush.Green(), brush.Blue(), brush.Alpha());
        cairo_paint(m_drawing.get());
        Changed(m_pTexture->Bounds());
    }

    void STDMETHODCALLTYPE BeginDraw() override
    {
        m_result = m_isDrawing ? D2DERR_WRONG_STATE : S_OK;
        m_isDrawing = true;
    }

    HRESULT STDMETHODCALLTYPE EndDraw(D2D1_TAG* pTag1, D2D1_TAG* pTag2) override
    {
        if (pTag1 != nullptr)
            *pTag1 = 0;
        if (pTag2 != nullptr)
            *pTag2 = 0;
        if (!m_isDrawing)
            return D2DERR_WRONG_STATE;
        m_isDrawing = false;
        cairo_surface_flush(cairo_get_target(m_drawing.get()));
        if (cairo_status(m_drawing.get()) != CAIRO_STATUS_SUCCESS) // a drawing that failed once stays so
            Note(D2DERR_RECREATE_TARGET);
        return m_result;
    }

private:
    /// Notes what is wrong with a drawing call.
    bool CanDraw(bool goodArguments)
    {
        if (!m_isDrawing)
            return false;
        if (!goodArguments)
            Note(E_INVALIDARG);
        return goodArguments;
    }
    void Note(HRESULT hr)
    {
        if (SUCCEEDED(m_result))
            m_result = hr;
    }
    void Changed(const PixelRect& rect) { m_pTexture->AddContent(rect); }

    std::unique_ptr<Texture, ReleaseObject> m_pTexture;
    Drawing m_drawing; // ends before the pixels do
    bool m_isDrawing = false;
    HRESULT m_result = S_OK;
};

class DrawingFactory final : public ComObject<DrawingFactory, ID2D1Factory>
{
public:
    HRESULT STDMETHODCALLTYPE CreateDxgiSurfaceRenderTarget(IDXGISurface* pSurface,
                                                            const D2D1_RENDER_TARGET_PROPERTIES* pProperties,
                                                            ID2D1RenderTarget** ppRenderTarget) override
    {
        if (ppRenderTarget == nullptr)
            return E_INVALIDARG;
        *ppRenderTarget = nullptr;
        Texture* const pTexture = TextureOf(pSurface);
        const auto isDensity = [](float dpi) { return dpi == 96 || dpi == 0; };
        if (pTexture == nullptr || pProperties == nullptr || !isDensity(pProperties->dpiX) ||
            !isDensity(pProperties->dpiY) || (pTexture->Description().BindFlags & D3D11_BIND_RENDER_TARGET) == 0)
            return E_INVALIDARG;
        const DXGI_FORMAT format = pProperties->pixelFormat.format;
        if ((format != DXGI_FORMAT_UNKNOWN && format != pTexture->Description().Format) ||
            pProperties->pixelFormat.alphaMode != D2D1_ALPHA_MODE_PREMULTIPLIED)
            return D2DERR_UNSUPPORTED_PIXEL_FORMAT;
        Drawing drawing = DrawingOn(*pTexture);
        if (drawing != nullptr)
            *ppRenderTarget = new (std::nothrow) RenderTarget(*pTexture, std::move(drawing));
        return *ppRenderTarget != nullptr ? S_OK : E_OUTOFMEMORY;
    }
};
} // namespace
} // namespace pal

extern "C" HRESULT D2D1CreateFactory(D2D1_FACTORY_TYPE, REFIID iid, const D2D1_FACTORY_OPTIONS*, void** ppFactory)
{
    if (ppFactory == nullptr)
        return E_POINTER;
    *ppFactory = nullptr;
    auto* const pFactory = new (std::nothrow) pal::DrawingFactory;
    if (pFactory == nullptr)
        return E_OUTOFMEMORY;
    const HRESULT hr = pFactory->QueryInterface(iid, ppFactory);
    pFactory->Release();
    return hr;
}
