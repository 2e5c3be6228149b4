/// @file d2d1.h
/// Direct2D: drawing onto a DXGI surface.
#pragma once

#include <dcommon.h>

struct IDWriteTextLayout;

using D2D1_POINT_2F = D2D_POINT_2F;
using D2D1_RECT_F = D2D_RECT_F;
using D2D1_COLOR_F = D2D_COLOR_F;
using D2D1_TAG = UINT64;

inline constexpr HRESULT D2DERR_WRONG_STATE = static_cast<HRESULT>(0x88990001U);
inline constexpr HRESULT D2DERR_UNSUPPORTED_OPERATION = static_cast<HRESULT>(0x88990003U);
inline constexpr HRESULT D2DERR_RECREATE_TARGET = static_cast<HRESULT>(0x8899000CU);
/// Direct2D's own name for the pixel format error, which Windows shares with its imaging component.
inline constexpr HRESULT D2DERR_UNSUPPORTED_PIXEL_FORMAT = static_cast<HRESULT>(0x88982F80U);

enum D2D1_FACTORY_TYPE : int
{
    D2D1_FACTORY_TYPE_SINGLE_THREADED = 0,
    D2D1_FACTORY_TYPE_MULTI_THREADED = 1
};
enum D2D1_RENDER_TARGET_TYPE : int
{
    D2D1_RENDER_TARGET_TYPE_DEFAULT = 0,
    D2D1_RENDER_TARGET_TYPE_SOFTWARE = 1,
    D2D1_RENDER_TARGET_TYPE_HARDWARE = 2
};
enum D2D1_RENDER_TARGET_USAGE : int
{
    D2D1_RENDER_TARGET_USAGE_NONE = 0
};
enum D2D1_FEATURE_LEVEL : int
{
    D2D1_FEATURE_LEVEL_DEFAULT = 0
};
enum D2D1_DRAW_TEXT_OPTIONS : int
{
    D2D1_DRAW_TEXT_OPTIONS_NONE = 0
};

struct D2D1_FACTORY_OPTIONS;
struct D2D1_BRUSH_PROPERTIES;

struct D2D1_RENDER_TARGET_PROPERTIES
{
    D2D1_RENDER_TARGET_TYPE type;
    D2D1_PIXEL_FORMAT pixelFormat;
    FLOAT dpiX;
    FLOAT dpiY;
    D2D1_RENDER_TARGET_USAGE usage;
    D2D1_FEATURE_LEVEL minLevel;
};

struct ID2D1Resource : public IUnknown
{
protected:
    ~ID2D1Resource() = default;
};
PAL_DECLARE_IID(ID2D1Resource, IID_ID2D1Resource, 0x2CD90691U, 0x12E2, 0x11DC, 0x9F, 0xED, 0x00, 0x11, 0x43, 0xA0, 0x55,
                0xF9);

struct ID2D1Brush : public ID2D1Resource
{
    /// @param opacity  0..1, multiplies the colour's alpha; what lies outside is taken into the range
    virtual void STDMETHODCALLTYPE SetOpacity(FLOAT opacity) = 0;

protected:
    ~ID2D1Brush() = default;
};
PAL_DECLARE_IID(ID2D1Brush, IID_ID2D1Brush, 0x2CD906A8U, 0x12E2, 0x11DC, 0x9F, 0xED, 0x00, 0x11, 0x43, 0xA0, 0x55,
                0xF9);

struct ID2D1SolidColorBrush : public ID2D1Brush
{
protected:
    ~ID2D1SolidColorBrush() = default;
};
PAL_DECLARE_IID(ID2D1SolidColorBrush, IID_ID2D1SolidColorBrush, 0x2CD906A9U, 0x12E2, 0x11DC, 0x9F, 0xED, 0x00, 0x11,
                0x43, 0xA0, 0x55, 0xF9);

/// Draws source-over onto a surface. Drawing happens between BeginDraw() and EndDraw(), which reports what went wrong
/// in between. Coordinates are pixels from the upper left corner of the surface.
struct ID2D1RenderTarget : public ID2D1Resource
{
    /// @param pBrushProperties  must be null (E_NOTIMPL): opacity 1, no transform
    virtual HRESULT STDMETHODCALLTYPE CreateSolidColorBrush(const D2D1_COLOR_F* pColor,
                                                            const D2D1_BRUSH_PROPERTIES* pBrushProperties,
                                                            ID2D1SolidColorBrush** ppBrush) = 0;
    /// Edges that lie between pixels are smoothed.
    virtual void STDMETHODCALLTYPE FillRectangle(const D2D1_RECT_F* pRect, ID2D1Brush* pBrush) = 0;
    /// Draws a layout whose box has its upper left corner at @p origin. Baselines snap to whole rows; so, here, does
    /// the text horizontally. Coloured glyphs come out in their colours, whatever the options.
    virtual void STDMETHODCALLTYPE DrawTextLayout(D2D1_POINT_2F origin, IDWriteTextLayout* pTextLayout,
                                                  ID2D1Brush* pDefaultForegroundBrush,
                                                  D2D1_DRAW_TEXT_OPTIONS options = D2D1_DRAW_TEXT_OPTIONS_NONE) = 0;
    /// Makes every pixel @p pClearColor; transparent black for null.
    virtual void STDMETHODCALLTYPE Clear(const D2D1_COLOR_F* pClearColor = nullptr) = 0;
    virtual void STDMETHODCALLTYPE BeginDraw() = 0;
    /// @param pTag1, pTag2  set to 0; may be null
    /// @return the first error since BeginDraw(); D2DERR_WRONG_STATE without one
    virtual HRESULT STDMETHODCALLTYPE EndDraw(D2D1_TAG* pTag1 = nullptr, D2D1_TAG* pTag2 = nullptr) = 0;

protected:
    ~ID2D1RenderTarget() = default;
};
PAL_DECLARE_IID(ID2D1RenderTarget, IID_ID2D1RenderTarget, 0x2CD90694U, 0x12E2, 0x11DC, 0x9F, 0xED, 0x00, 0x11, 0x43,
                0xA0, 0x55, 0xF9);

struct ID2D1Factory : public IUnknown
{
    /// @param pProperties  premultiplied DXGI_FORMAT_B8G8R8A8_UNORM (or unknown, for the surface's own), 96 DPI or 0.
    /// @retval E_INVALIDARG  no surface of this layer, or one of a texture that is no render target
    /// @retval D2DERR_UNSUPPORTED_PIXEL_FORMAT  any other format
    virtual HRESULT STDMETHODCALLTYPE CreateDxgiSurfaceRenderTarget(IDXGISurface* pSurface,
                                                                    const D2D1_RENDER_TARGET_PROPERTIES* pProperties,
                                                                    ID2D1RenderTarget** ppRenderTarget) = 0;

protected:
    ~ID2D1Factory() = default;
};
PAL_DECLARE_IID(ID2D1Factory, IID_ID2D1Factory, 0x06152247U, 0x6F50, 0x465A, 0x92, 0x45, 0x11, 0x8B, 0xFD, 0x3B, 0x60,
                0x07);

/// @param pOptions  may be null; they have no effect here
extern "C" HRESULT D2D1CreateFactory(D2D1_FACTORY_TYPE factoryType, REFIID iid, const D2D1_FACTORY_OPTIONS* pOptions,
                                     void** ppFactory);
