#include "tests/decoders/still/FakeTextServices.h"

#include "engine/platform/RefPtr.h"
#include "pal/kernel/ComObject.h"
#include "tests/model/AllocationFailure.h"

#include <cstring>

FakeTextServices& FakeTextServices::Get()
{
    static FakeTextServices services;
    return services;
}

namespace
{
FakeTextServices& Services()
{
    return FakeTextServices::Get();
}

/// What the fakes themselves need is not what a test of short memory is after.
template <class T, class... Arguments> T* MakeFake(Arguments&&... arguments)
{
    const CAllocationPause pause;
    return new T(std::forward<Arguments>(arguments)...);
}
template <class T> void Note(std::vector<T>& list, T item)
{
    const CAllocationPause pause;
    list.push_back(std::move(item));
}

class PaddedTexture;

/// Counts with its texture.
class PaddedSurface final : public IDXGISurface
{
public:
    explicit PaddedSurface(PaddedTexture& texture) : m_texture(texture) {}
    ~PaddedSurface() = default;
    HRESULT QueryInterface(REFIID iid, void** ppObject) override;
    ULONG AddRef() override;
    ULONG Release() override;
    HRESULT GetDesc(DXGI_SURFACE_DESC*) override { return E_NOTIMPL; }
    HRESULT Map(DXGI_MAPPED_RECT* pRect, UINT flags) override;
    HRESULT Unmap() override;

private:
    PaddedTexture& m_texture;
};

/// A staging texture whose rows lie further apart than their pixels; what lies between is 0xEE.
class PaddedTexture final : public pal::ComObject<PaddedTexture, ID3D11Texture2D, ID3D11Resource, ID3D11DeviceChild>
{
public:
    PaddedTexture(ComPtr<ID3D11Texture2D> pReal, UINT padding) : pReal(std::move(pReal))
    {
        this->pReal->GetDesc(&desc);
        pitch = desc.Width * 4 + padding;
        bytes.assign(std::size_t{pitch} * desc.Height, 0xEE);
    }
    void GetDesc(D3D11_TEXTURE2D_DESC* pDesc) override { *pDesc = desc; }
    HRESULT QueryFurther(REFIID iid, void** ppObject)
    {
        if (iid != IID_IDXGISurface)
            return E_NOINTERFACE;
        AddRef();
        *ppObject = static_cast<IDXGISurface*>(&surface);
        return S_OK;
    }
    void TakePixels()
    {
        ComPtr<IDXGISurface> pSurface;
        DXGI_MAPPED_RECT mapped{};
        if (FAILED(pReal->QueryInterface(IID_PPV_ARGS(pSurface.Put()))) ||
            FAILED(pSurface->Map(&mapped, DXGI_MAP_READ)))
            return;
        for (UINT y = 0; y < desc.Height; ++y)
            std::memcpy(bytes.data() + std::size_t{pitch} * y,
                        mapped.pBits + static_cast<std::size_t>(mapped.Pitch) * y, std::size_t{desc.Width} * 4);
        pSurface->Unmap();
    }

    ComPtr<ID3D11Texture2D> pReal;
    D3D11_TEXTURE2D_DESC desc{};
    UINT pitch = 0;
    std::vector<BYTE> bytes;
    PaddedSurface surface{*this};
};

HRESULT PaddedSurface::QueryInterface(REFIID iid, void** ppObject)
{
    return m_texture.QueryInterface(iid, ppObject);
}
ULONG PaddedSurface::AddRef()
{
    return m_texture.AddRef();
}
ULONG PaddedSurface::Release()
{
    return m_texture.Release();
}
HRESULT PaddedSurface::Map(DXGI_MAPPED_RECT* pRect, UINT)
{
    if (Services().Fails("Map"))
        return E_FAIL;
    ++Services().maps;
    *pRect = {static_cast<INT>(m_texture.pitch), m_texture.bytes.data()};
    return S_OK;
}
HRESULT PaddedSurface::Unmap()
{
    ++Services().unmaps;
    return S_OK;
}

class Context final : public pal::ComObject<Context, ID3D11DeviceContext, ID3D11DeviceChild>
{
public:
    explicit Context(ComPtr<ID3D11DeviceContext> pReal) : m_pReal(std::move(pReal)) {}
    void CopyResource(ID3D11Resource* pTo, ID3D11Resource* pFrom) override
    {
        ++Services().copies;
        auto* const pPadded = dynamic_cast<PaddedTexture*>(pTo);
        m_pReal->CopyResource(pPadded != nullptr ? pPadded->pReal.Get() : pTo, pFrom);
        if (pPadded != nullptr)
            pPadded->TakePixels();
    }

private:
    ComPtr<ID3D11DeviceContext> m_pReal;
};

class Device final : public pal::ComObject<Device, ID3D11Device>
{
public:
    explicit Device(ComPtr<ID3D11Device> pReal) : m_pReal(std::move(pReal)) {}
    HRESULT CreateTexture2D(const D3D11_TEXTURE2D_DESC* pDesc, const D3D11_SUBRESOURCE_DATA* pData,
                            ID3D11Texture2D** ppTexture) override
    {
        const bool staging = pDesc->Usage == D3D11_USAGE_STAGING;
        Note(Services().textures, *pDesc);
        if (Services().Fails(staging ? "CreateStagingTexture" : "CreateTexture2D"))
            return E_FAIL;
        const HRESULT hr = m_pReal->CreateTexture2D(pDesc, pData, ppTexture);
        if (SUCCEEDED(hr) && staging && (Services().rowPadding != 0 || Services().Fails("Map")))
            *ppTexture = MakeFake<PaddedTexture>(ComPtr<ID3D11Texture2D>::Adopt(*ppTexture), Services().rowPadding);
        return hr;
    }
    D3D_FEATURE_LEVEL GetFeatureLevel() override { return m_pReal->GetFeatureLevel(); }
    UINT GetCreationFlags() override { return m_pReal->GetCreationFlags(); }

private:
    ComPtr<ID3D11Device> m_pReal;
};

class RenderTarget final : public pal::ComObject<RenderTarget, ID2D1RenderTarget, ID2D1Resource>
{
public:
    explicit RenderTarget(ComPtr<ID2D1RenderTarget> pReal) : m_pReal(std::move(pReal)) {}
    HRESULT CreateSolidColorBrush(const D2D1_COLOR_F* pColor, const D2D1_BRUSH_PROPERTIES* pProperties,
                                  ID2D1SolidColorBrush** ppBrush) override
    {
        if (Services().Fails("CreateSolidColorBrush"))
            return E_FAIL;
        ++Services().brushes;
        return m_pReal->CreateSolidColorBrush(pColor, pProperties, ppBrush);
    }
    void FillRectangle(const D2D1_RECT_F* pRect, ID2D1Brush* pBrush) override { m_pReal->FillRectangle(pRect, pBrush); }
    void DrawTextLayout(D2D1_POINT_2F origin, IDWriteTextLayout* pLayout, ID2D1Brush* pBrush,
                        D2D1_DRAW_TEXT_OPTIONS options) override
    {
        m_pReal->DrawTextLayout(origin, pLayout, pBrush, options);
    }
    void Clear(const D2D1_COLOR_F* pColor) override { m_pReal->Clear(pColor); }
    void BeginDraw() override { m_pReal->BeginDraw(); }
    HRESULT EndDraw(D2D1_TAG* pTag1, D2D1_TAG* pTag2) override
    {
        ++Services().draws;
        const HRESULT hr = m_pReal->EndDraw(pTag1, pTag2);
        std::vector<HRESULT>& scripted = Services().endDraw;
        if (scripted.empty())
            return hr;
        const HRESULT answer = scripted.front();
        scripted.erase(scripted.begin());
        return answer;
    }

private:
    ComPtr<ID2D1RenderTarget> m_pReal;
};

class Factory final : public pal::ComObject<Factory, ID2D1Factory>
{
public:
    explicit Factory(ComPtr<ID2D1Factory> pReal) : m_pReal(std::move(pReal)) {}
    HRESULT CreateDxgiSurfaceRenderTarget(IDXGISurface* pSurface, const D2D1_RENDER_TARGET_PROPERTIES* pProperties,
                                          ID2D1RenderTarget** ppTarget) override
    {
        if (Services().Fails("CreateDxgiSurfaceRenderTarget"))
            return E_FAIL;
        Note(Services().targets, *pProperties);
        const HRESULT hr = m_pReal->CreateDxgiSurfaceRenderTarget(pSurface, pProperties, ppTarget);
        if (SUCCEEDED(hr))
            *ppTarget = MakeFake<RenderTarget>(ComPtr<ID2D1RenderTarget>::Adopt(*ppTarget));
        return hr;
    }

private:
    ComPtr<ID2D1Factory> m_pReal;
};

class TextFactory final : public pal::ComObject<TextFactory, IDWriteFactory4, IDWriteFactory>
{
public:
    explicit TextFactory(ComPtr<IDWriteFactory4> pReal) : m_pReal(std::move(pReal)) {}
    HRESULT GetSystemFontCollection(IDWriteFontCollection** ppFonts, BOOL check) override
    {
        *ppFonts = nullptr;
        return Services().Fails("GetSystemFontCollection") ? E_FAIL : m_pReal->GetSystemFontCollection(ppFonts, check);
    }
    HRESULT CreateTextFormat(const WCHAR* family, IDWriteFontCollection* pFonts, DWRITE_FONT_WEIGHT weight,
                             DWRITE_FONT_STYLE style, DWRITE_FONT_STRETCH stretch, FLOAT size, const WCHAR* locale,
                             IDWriteTextFormat** ppFormat) override
    {
        *ppFormat = nullptr;
        {
            const CAllocationPause pause;
            Services().formats.push_back({family, weight, style, size, locale});
        }
        if (Services().Fails("CreateTextFormat") || Services().missingFamily.count(family) != 0)
            return DWRITE_E_NOFONT;
        return m_pReal->CreateTextFormat(family, pFonts, weight, style, stretch, size, locale, ppFormat);
    }
    HRESULT CreateTextLayout(const WCHAR* pString, UINT32 length, IDWriteTextFormat* pFormat, FLOAT maxWidth,
                             FLOAT maxHeight, IDWriteTextLayout** ppLayout) override
    {
        *ppLayout = nullptr;
        {
            const CAllocationPause pause;
            Services().layouts.push_back({std::wstring(pString, length), maxWidth, maxHeight});
        }
        if (Services().Fails("CreateTextLayout"))
            return DWRITE_E_NOFONT;
        return m_pReal->CreateTextLayout(pString, length, pFormat, maxWidth, maxHeight, ppLayout);
    }

private:
    ComPtr<IDWriteFactory4> m_pReal;
};
} // namespace

extern "C"
{
    HRESULT __real_D3D11CreateDevice(IDXGIAdapter*, D3D_DRIVER_TYPE, HMODULE, UINT, const D3D_FEATURE_LEVEL*, UINT,
                                     UINT, ID3D11Device**, D3D_FEATURE_LEVEL*, ID3D11DeviceContext**);
    HRESULT __real_D2D1CreateFactory(D2D1_FACTORY_TYPE, REFIID, const D2D1_FACTORY_OPTIONS*, void**);
    HRESULT __real_DWriteCreateFactory(DWRITE_FACTORY_TYPE, REFIID, IUnknown**);

    HRESULT __wrap_D3D11CreateDevice(IDXGIAdapter* pAdapter, D3D_DRIVER_TYPE type, HMODULE software, UINT flags,
                                     const D3D_FEATURE_LEVEL* pLevels, UINT levels, UINT sdkVersion,
                                     ID3D11Device** ppDevice, D3D_FEATURE_LEVEL* pLevel,
                                     ID3D11DeviceContext** ppContext)
    {
        {
            const CAllocationPause pause;
            Services().devices.push_back({type, flags, {pLevels, pLevels + levels}, sdkVersion});
        }
        if (Services().Fails("D3D11CreateDevice") || Services().noDevice.count(type) != 0)
            return E_FAIL;
        const HRESULT hr = __real_D3D11CreateDevice(pAdapter, type, software, flags, pLevels, levels, sdkVersion,
                                                    ppDevice, pLevel, ppContext);
        if (SUCCEEDED(hr))
        {
            *ppDevice = MakeFake<Device>(ComPtr<ID3D11Device>::Adopt(*ppDevice));
            *ppContext = MakeFake<Context>(ComPtr<ID3D11DeviceContext>::Adopt(*ppContext));
        }
        return hr;
    }
    HRESULT __wrap_D2D1CreateFactory(D2D1_FACTORY_TYPE type, REFIID iid, const D2D1_FACTORY_OPTIONS* pOptions,
                                     void** ppFactory)
    {
        if (Services().Fails("D2D1CreateFactory"))
            return E_FAIL;
        const HRESULT hr = __real_D2D1CreateFactory(type, iid, pOptions, ppFactory);
        if (SUCCEEDED(hr))
            *ppFactory = MakeFake<Factory>(ComPtr<ID2D1Factory>::Adopt(static_cast<ID2D1Factory*>(*ppFactory)));
        return hr;
    }
    HRESULT __wrap_DWriteCreateFactory(DWRITE_FACTORY_TYPE type, REFIID iid, IUnknown** ppFactory)
    {
        if (Services().Fails("DWriteCreateFactory"))
            return E_FAIL;
        const HRESULT hr = __real_DWriteCreateFactory(type, iid, ppFactory);
        if (SUCCEEDED(hr))
            *ppFactory =
                MakeFake<TextFactory>(ComPtr<IDWriteFactory4>::Adopt(static_cast<IDWriteFactory4*>(*ppFactory)));
        return hr;
    }
}
