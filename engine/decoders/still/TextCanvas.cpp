#include "engine/decoders/still/TextCanvas.h"

#include "engine/platform/ReleaseAndClear.h"
#include "engine/platform/ReturnIfFailed.h"

#include <d2d1.h>
#include <d3d11.h>
#include <dwrite_3.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace
{
D2D1_COLOR_F ColorOf(std::uint32_t color, float alpha)
{
    D2D1_COLOR_F parts;
    parts.r = static_cast<float>(color >> 16 & 255U) / 255.0F;
    parts.g = static_cast<float>(color >> 8 & 255U) / 255.0F;
    parts.b = static_cast<float>(color & 255U) / 255.0F;
    parts.a = alpha;
    return parts;
}
} // namespace

/// A rectangle, or a layout with its corner at left, top.
struct CTextCanvas::Command
{
    ComPtr<IDWriteTextLayout> pLayout; ///< null for a rectangle
    float left = 0;
    float top = 0;
    float right = 0;
    float bottom = 0;
    std::uint32_t color = 0;
    float alpha = 0;
    float opacity = 0;

    bool operator==(const Command& o) const
    {
        return pLayout.Get() == o.pLayout.Get() && left == o.left && top == o.top && right == o.right &&
               bottom == o.bottom && color == o.color && alpha == o.alpha && opacity == o.opacity;
    }
};

struct CTextCanvas::KeptText
{
    std::wstring text;
    std::wstring fontName;
    TextFace face;
    ComPtr<IDWriteTextLayout> pLayout; ///< null when it could not be made
    DWRITE_TEXT_METRICS metrics;
    std::uint32_t usedIn; ///< the frame that asked for it last
};

CTextCanvas::CTextCanvas() = default;
CTextCanvas::CTextCanvas(const CTextCanvas& other) = default;
CTextCanvas& CTextCanvas::operator=(const CTextCanvas& other) = default;
CTextCanvas::~CTextCanvas() = default;

// ---- services ----------------------------------------------------------------------------------------------------

void CTextCanvas::Open(std::uint32_t width, std::uint32_t height)
{
    Close();
    m_nWidth = width;
    m_nHeight = height;
    wchar_t locale[LOCALE_NAME_MAX_LENGTH] = L"";
    GetSystemDefaultLocaleName(locale, LOCALE_NAME_MAX_LENGTH);
    m_strLocale = locale;
    if (CreateDeviceAndFactories())
        CreateTargets();
}

void CTextCanvas::Close()
{
    Release();
    m_vecTexts.clear();
    m_vecFrame.clear();
    m_nWidth = 0;
    m_nHeight = 0;
}

void CTextCanvas::Release()
{
    m_bShown = false;
    m_vecShown.clear();
    ReleaseAndClear(m_pD2DFactory);
    ReleaseAndClear(m_pDevice);
    ReleaseAndClear(m_pRenderTarget);
    ReleaseAndClear(m_pContext);
    ReleaseAndClear(m_pDWriteFactory);
    ReleaseAndClear(m_pRenderTexture);
    ReleaseAndClear(m_pStagingTexture);
    ReleaseAndClear(m_pRenderSurface);
    ReleaseAndClear(m_pStagingSurface);
}

bool CTextCanvas::CreateDeviceAndFactories()
{
    const D3D_FEATURE_LEVEL levels[] = {D3D_FEATURE_LEVEL_11_1, D3D_FEATURE_LEVEL_11_0, D3D_FEATURE_LEVEL_10_1};
    for (const D3D_DRIVER_TYPE type : {D3D_DRIVER_TYPE_HARDWARE, D3D_DRIVER_TYPE_WARP, D3D_DRIVER_TYPE_REFERENCE})
    {
        const HRESULT hr = D3D11CreateDevice(nullptr, type, nullptr, D3D11_CREATE_DEVICE_BGRA_SUPPORT, levels, 3,
                                             D3D11_SDK_VERSION, &m_pDevice, nullptr, &m_pContext);
        if (SUCCEEDED(hr) && m_pDevice != nullptr && m_pContext != nullptr)
            break;
        ReleaseAndClear(m_pDevice);
        ReleaseAndClear(m_pContext);
    }
    if (m_pDevice == nullptr)
        return false;
    void* pFactory = nullptr;
    if (FAILED(D2D1CreateFactory(D2D1_FACTORY_TYPE_SINGLE_THREADED, IID_ID2D1Factory, nullptr, &pFactory)))
        return false;
    m_pD2DFactory = static_cast<ID2D1Factory*>(pFactory);
    // The function takes another kind of pointer than the macro gives, and not every import library has the identifier.
    const auto create = [](REFIID iid, void** ppFactory)
    { return DWriteCreateFactory(DWRITE_FACTORY_TYPE_SHARED, iid, reinterpret_cast<IUnknown**>(ppFactory)); };
    if (FAILED(create(IID_PPV_ARGS(&m_pDWriteFactory))))
        return false;
    return true;
}

/// A texture to draw into and one to read from. What fails leaves the rest missing.
void CTextCanvas::CreateTargets()
{
    D3D11_TEXTURE2D_DESC desc{};
    desc.Width = m_nWidth;
    desc.Height = m_nHeight;
    desc.MipLevels = 1;
    desc.ArraySize = 1;
    desc.Format = DXGI_FORMAT_B8G8R8A8_UNORM;
    desc.SampleDesc.Count = 1;
    desc.Usage = D3D11_USAGE_DEFAULT;
    desc.BindFlags = D3D11_BIND_RENDER_TARGET | D3D11_BIND_SHADER_RESOURCE;
    if (FAILED(m_pDevice->CreateTexture2D(&desc, nullptr, &m_pRenderTexture)) ||
        FAILED(m_pRenderTexture->QueryInterface(IID_PPV_ARGS(&m_pRenderSurface))))
        return;
    D2D1_RENDER_TARGET_PROPERTIES properties{};
    properties.type = D2D1_RENDER_TARGET_TYPE_DEFAULT;
    properties.pixelFormat.format = DXGI_FORMAT_B8G8R8A8_UNORM;
    properties.pixelFormat.alphaMode = D2D1_ALPHA_MODE_PREMULTIPLIED;
    properties.dpiX = 96;
    properties.dpiY = 96;
    properties.usage = D2D1_RENDER_TARGET_USAGE_NONE;
    properties.minLevel = D2D1_FEATURE_LEVEL_DEFAULT;
    if (FAILED(m_pD2DFactory->CreateDxgiSurfaceRenderTarget(m_pRenderSurface, &properties, &m_pRenderTarget)))
        return;
    m_pRenderTexture->GetDesc(&desc);
    desc.Usage = D3D11_USAGE_STAGING;
    desc.BindFlags = 0;
    desc.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
    if (SUCCEEDED(m_pDevice->CreateTexture2D(&desc, nullptr, &m_pStagingTexture)))
        m_pStagingTexture->QueryInterface(IID_PPV_ARGS(&m_pStagingSurface));
}

// ---- texts -------------------------------------------------------------------------------------------------------

SetText CTextCanvas::LayOut(std::wstring_view text, const std::wstring& fontName, const TextFace& face)
{
    KeptText* pKept = FindText(text, fontName, face);
    if (pKept == nullptr)
    {
        KeptText made{std::wstring(text), fontName, face, {}, {}, m_nFrame};
        if (FAILED(CreateLayout(made)))
            made.pLayout = {};
        m_vecTexts.push_back(std::move(made));
        pKept = &m_vecTexts.back();
    }
    pKept->usedIn = m_nFrame;
    m_nNextText = static_cast<std::size_t>(pKept - m_vecTexts.data()) + 1;
    return {pKept->pLayout.Get(), pKept->metrics.left, pKept->metrics.width, pKept->metrics.height};
}

CTextCanvas::KeptText* CTextCanvas::FindText(std::wstring_view text, const std::wstring& fontName, const TextFace& face)
{
    const auto isIt = [&](const KeptText& kept)
    { return kept.face == face && kept.text == text && kept.fontName == fontName; };
    const auto begin = m_vecTexts.begin();
    const auto next = begin + static_cast<std::ptrdiff_t>(std::min(m_nNextText, m_vecTexts.size()));
    auto found = std::find_if(next, m_vecTexts.end(), isIt);
    if (found == m_vecTexts.end())
    {
        found = std::find_if(begin, next, isIt);
        if (found == next)
            return nullptr;
    }
    return &*found;
}

HRESULT CTextCanvas::CreateLayout(KeptText& kept)
{
    if (m_pDWriteFactory == nullptr)
        return E_UNEXPECTED;
    ComPtr<IDWriteTextFormat> pFormat;
    QMX_RETURN_IF_FAILED(CreateFormat(kept, pFormat.Put()));
    const auto length = static_cast<UINT32>(kept.text.size());
    QMX_RETURN_IF_FAILED(m_pDWriteFactory->CreateTextLayout(
        kept.text.c_str(), length, pFormat.Get(), kept.face.maxWidth, kept.face.maxHeight, kept.pLayout.Put()));
    if (kept.face.underline)
        QMX_RETURN_IF_FAILED(kept.pLayout->SetUnderline(TRUE, DWRITE_TEXT_RANGE{0, length}));
    return kept.pLayout->GetMetrics(&kept.metrics);
}

HRESULT CTextCanvas::CreateFormat(const KeptText& kept, IDWriteTextFormat** ppFormat)
{
    // Later factories have an operation of the same name, which hides this one.
    IDWriteFactory& factory = *m_pDWriteFactory;
    ComPtr<IDWriteFontCollection> pFonts;
    QMX_RETURN_IF_FAILED(factory.GetSystemFontCollection(pFonts.Put(), FALSE));
    // Weights that no enumeration holds are refused here, not cast.
    if (kept.face.weight == 0 || kept.face.weight > 999)
        return E_INVALIDARG;
    const DWRITE_FONT_STYLE style = kept.face.italic ? DWRITE_FONT_STYLE_ITALIC : DWRITE_FONT_STYLE_NORMAL;
    QMX_RETURN_IF_FAILED(
        factory.CreateTextFormat(kept.fontName.c_str(), pFonts.Get(), static_cast<DWRITE_FONT_WEIGHT>(kept.face.weight),
                                 style, DWRITE_FONT_STRETCH_NORMAL, kept.face.size, m_strLocale.c_str(), ppFormat));
    constexpr DWRITE_TEXT_ALIGNMENT kAlignments[] = {DWRITE_TEXT_ALIGNMENT_LEADING, DWRITE_TEXT_ALIGNMENT_TRAILING,
                                                     DWRITE_TEXT_ALIGNMENT_CENTER, DWRITE_TEXT_ALIGNMENT_JUSTIFIED};
    return kept.face.alignment < std::size(kAlignments)
               ? (*ppFormat)->SetTextAlignment(kAlignments[kept.face.alignment])
               : S_OK;
}

// ---- frames ------------------------------------------------------------------------------------------------------

void CTextCanvas::BeginFrame()
{
    ++m_nFrame;
    m_nNextText = 0;
    m_vecFrame.clear();
}

void CTextCanvas::ClearFrame()
{
    m_vecFrame.clear();
}

void CTextCanvas::AddRectangle(float left, float top, float right, float bottom, std::uint32_t color, float alpha)
{
    m_vecFrame.push_back({{}, left, top, right, bottom, color, alpha, 1});
}

void CTextCanvas::AddText(const SetText& text, float left, float top, std::uint32_t color, float alpha, float opacity)
{
    if (text.pLayout != nullptr)
        m_vecFrame.push_back({ComPtr<IDWriteTextLayout>::Retain(text.pLayout), left, top, 0, 0, color, alpha, opacity});
}

ISampleBuffer* CTextCanvas::EndFrame()
{
    std::erase_if(m_vecTexts, [this](const KeptText& kept) { return kept.usedIn != m_nFrame; });
    SampleBufferPtr frame = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, m_nWidth, m_nHeight, 1));
    std::uint8_t* pPixels = nullptr;
    std::uint32_t cb = 0;
    if (!frame || !frame->GetBuffer(&pPixels, &cb))
        return nullptr;
    if (!ShowFrame() || !CopyPixels(*frame.Get()))
        std::memset(pPixels, 0, cb);
    return frame.Detach();
}

/// Brings the frame onto the staging texture. @return false when that is not possible.
bool CTextCanvas::ShowFrame()
{
    if (m_pStagingSurface == nullptr)
        return false;
    if (m_bShown && m_vecShown == m_vecFrame)
        return true;
    HRESULT hr = DrawFrame();
    if (hr == static_cast<HRESULT>(D2DERR_RECREATE_TARGET)) // an unsigned macro in some headers
    {
        // The device is gone: another driver, another screen. Layouts belong to no device.
        Release();
        if (!CreateDeviceAndFactories())
            return false;
        CreateTargets();
        hr = m_pStagingSurface != nullptr ? DrawFrame() : E_FAIL;
    }
    if (FAILED(hr))
        return false;
    m_vecShown.swap(m_vecFrame);
    m_bShown = true;
    return true;
}

HRESULT CTextCanvas::DrawFrame()
{
    m_bShown = false;
    const D2D1_COLOR_F transparent = ColorOf(0, 0);
    m_pRenderTarget->BeginDraw();
    m_pRenderTarget->Clear(&transparent);
    for (const Command& command : m_vecFrame)
        Execute(command);
    QMX_RETURN_IF_FAILED(m_pRenderTarget->EndDraw(nullptr, nullptr));
    m_pContext->CopyResource(m_pStagingTexture, m_pRenderTexture);
    return S_OK;
}

void CTextCanvas::Execute(const Command& command)
{
    ComPtr<ID2D1SolidColorBrush> pBrush;
    const D2D1_COLOR_F color = ColorOf(command.color, command.alpha);
    if (FAILED(m_pRenderTarget->CreateSolidColorBrush(&color, nullptr, pBrush.Put())))
        return;
    pBrush->SetOpacity(command.opacity);
    if (command.pLayout)
    {
        D2D1_POINT_2F origin;
        origin.x = command.left;
        origin.y = command.top;
        m_pRenderTarget->DrawTextLayout(origin, command.pLayout.Get(), pBrush.Get(), D2D1_DRAW_TEXT_OPTIONS_NONE);
        return;
    }
    D2D1_RECT_F rect;
    rect.left = command.left;
    rect.top = command.top;
    rect.right = command.right;
    rect.bottom = command.bottom;
    m_pRenderTarget->FillRectangle(&rect, pBrush.Get());
}

/// The staging texture's rows may lie further apart than the frame's.
bool CTextCanvas::CopyPixels(ISampleBuffer& frame)
{
    std::uint8_t* pTo = nullptr;
    std::uint32_t cb = 0;
    const std::size_t cbRow = std::size_t{m_nWidth} * 4;
    if (!frame.GetBuffer(&pTo, &cb) || cbRow * m_nHeight > cb)
        return false;
    DXGI_MAPPED_RECT mapped{};
    if (FAILED(m_pStagingSurface->Map(&mapped, DXGI_MAP_READ)))
        return false;
    const bool wide = mapped.pBits != nullptr && mapped.Pitch > 0 && static_cast<std::size_t>(mapped.Pitch) >= cbRow;
    if (wide && static_cast<std::size_t>(mapped.Pitch) == cbRow)
        std::memcpy(pTo, mapped.pBits, cbRow * m_nHeight);
    else if (wide)
    {
        const BYTE* pFrom = mapped.pBits;
        for (std::uint32_t y = 0; y < m_nHeight; ++y, pFrom += mapped.Pitch, pTo += cbRow)
            std::memcpy(pTo, pFrom, cbRow);
    }
    m_pStagingSurface->Unmap();
    return wide;
}
