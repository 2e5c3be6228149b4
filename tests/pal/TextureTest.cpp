#include "tests/pal/DrawingFixture.h"

namespace
{
using pal_test::StagingDescription;
using pal_test::TextureDescription;

class Texture : public pal_test::DrawingTest
{
protected:
    HRESULT Try(const D3D11_TEXTURE2D_DESC& desc)
    {
        auto* pRaw = reinterpret_cast<ID3D11Texture2D*>(0x10);
        const HRESULT hr = pDevice->CreateTexture2D(&desc, nullptr, &pRaw);
        EXPECT_EQ(SUCCEEDED(hr), pRaw != nullptr);
        if (pRaw != nullptr)
            pRaw->Release();
        return hr;
    }
    ComPtr<ID3D11Texture2D> Make(const D3D11_TEXTURE2D_DESC& desc)
    {
        ComPtr<ID3D11Texture2D> pMade;
        EXPECT_EQ(pDevice->CreateTexture2D(&desc, nullptr, pMade.Put()), S_OK);
        return pMade;
    }
    static ComPtr<IDXGISurface> SurfaceOf(const ComPtr<ID3D11Texture2D>& p)
    {
        ComPtr<IDXGISurface> pSurface;
        EXPECT_EQ(p->QueryInterface(IID_PPV_ARGS(pSurface.Put())), S_OK);
        return pSurface;
    }
};

TEST_F(Texture, DefaultAndStagingOnesAreMadeWithTheirDescription)
{
    const ComPtr<ID3D11Texture2D> p = Make(TextureDescription(33, 7));
    D3D11_TEXTURE2D_DESC desc{};
    p->GetDesc(&desc);
    EXPECT_EQ(desc.Width, 33U);
    EXPECT_EQ(desc.Height, 7U);
    EXPECT_EQ(desc.BindFlags, 0x28U);
    DXGI_SURFACE_DESC surface{};
    EXPECT_EQ(SurfaceOf(p)->GetDesc(&surface), S_OK);
    EXPECT_EQ(surface.Width, 33U);
    EXPECT_EQ(surface.Format, DXGI_FORMAT_B8G8R8A8_UNORM);
    // The description of a texture, changed as a staging one's, is one.
    desc.Usage = D3D11_USAGE_STAGING;
    desc.BindFlags = 0;
    desc.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
    EXPECT_EQ(Try(desc), S_OK);
    EXPECT_EQ(pDevice->CreateTexture2D(&desc, nullptr, nullptr), S_FALSE);
}

TEST_F(Texture, RefusesWhatItCannotBe)
{
    const auto with = [](auto change)
    {
        D3D11_TEXTURE2D_DESC desc = TextureDescription(16, 16);
        change(desc);
        return desc;
    };
    EXPECT_EQ(Try(with([](auto& d) { d.Width = 0; })), E_INVALIDARG);
    EXPECT_EQ(Try(with([](auto& d) { d.Height = 0; })), E_INVALIDARG);
    EXPECT_EQ(Try(with([](auto& d) { d.Width = 16'385; })), E_INVALIDARG);
    EXPECT_EQ(Try(with([](auto& d) { d.Height = 0xFFFFFFFFU; })), E_INVALIDARG);
    EXPECT_EQ(Try(with([](auto& d) { d.MipLevels = 2; })), E_INVALIDARG);
    EXPECT_EQ(Try(with([](auto& d) { d.ArraySize = 2; })), E_INVALIDARG);
    EXPECT_EQ(Try(with([](auto& d) { d.SampleDesc.Count = 4; })), E_INVALIDARG);
    EXPECT_EQ(Try(with([](auto& d) { d.Format = DXGI_FORMAT_R8G8B8A8_UNORM; })), E_INVALIDARG);
    EXPECT_EQ(Try(with([](auto& d) { d.BindFlags = 0; })), E_INVALIDARG);
    EXPECT_EQ(Try(with([](auto& d) { d.CPUAccessFlags = D3D11_CPU_ACCESS_READ; })), E_INVALIDARG);
    EXPECT_EQ(Try(with([](auto& d) { d.Usage = D3D11_USAGE_STAGING; })), E_INVALIDARG);
    EXPECT_EQ(pDevice->CreateTexture2D(nullptr, nullptr, pTexture.Put()), E_INVALIDARG);
    const D3D11_SUBRESOURCE_DATA data{};
    const D3D11_TEXTURE2D_DESC desc = TextureDescription(16, 16);
    EXPECT_EQ(pDevice->CreateTexture2D(&desc, &data, pTexture.Put()), E_NOTIMPL);
    EXPECT_FALSE(pTexture);
}

TEST_F(Texture, TheSurfaceSharesTheTexturesCount)
{
    ComPtr<ID3D11Texture2D> p = Make(TextureDescription(4, 4));
    const ComPtr<IDXGISurface> pSurface = SurfaceOf(p);
    p->AddRef();
    EXPECT_EQ(p->Release(), 2U);
    ComPtr<ID3D11Texture2D> pSame;
    EXPECT_EQ(pSurface->QueryInterface(IID_PPV_ARGS(pSame.Put())), S_OK);
    EXPECT_EQ(pSame.Get(), p.Get());
    p = {};
    pSame = {};
    DXGI_SURFACE_DESC desc{};
    EXPECT_EQ(pSurface->GetDesc(&desc), S_OK); // still alive
}

TEST_F(Texture, MapsAsItsAccessAllowsAndOnceAtATime)
{
    DXGI_MAPPED_RECT mapped{};
    EXPECT_EQ(SurfaceOf(Make(TextureDescription(4, 4)))->Map(&mapped, DXGI_MAP_READ), E_INVALIDARG);
    const ComPtr<IDXGISurface> p = SurfaceOf(Make(StagingDescription(4, 4, D3D11_CPU_ACCESS_READ)));
    EXPECT_EQ(p->Unmap(), DXGI_ERROR_INVALID_CALL);
    EXPECT_EQ(p->Map(nullptr, DXGI_MAP_READ), E_INVALIDARG);
    EXPECT_EQ(p->Map(&mapped, 0), E_INVALIDARG);
    EXPECT_EQ(p->Map(&mapped, DXGI_MAP_READ | DXGI_MAP_WRITE), E_INVALIDARG);
    EXPECT_EQ(mapped.pBits, nullptr);
    ASSERT_EQ(p->Map(&mapped, DXGI_MAP_READ), S_OK);
    EXPECT_GE(mapped.Pitch, 16);
    EXPECT_EQ(mapped.pBits[63], 0); // made transparent
    DXGI_MAPPED_RECT again{};
    EXPECT_EQ(p->Map(&again, DXGI_MAP_READ), DXGI_ERROR_INVALID_CALL);
    EXPECT_EQ(p->Unmap(), S_OK);
    EXPECT_EQ(p->Map(&again, DXGI_MAP_READ), S_OK);
    EXPECT_EQ(again.pBits, mapped.pBits);
}

TEST_F(Texture, ACopyTakesOverEveryPixelAlsoThoseThatHaveBecomeTransparent)
{
    const ComPtr<ID3D11Texture2D> pFrom = Make(StagingDescription(5, 3));
    const ComPtr<ID3D11Texture2D> pTo = Make(StagingDescription(5, 3));
    const ComPtr<ID3D11Texture2D> pEmpty = Make(StagingDescription(5, 3));
    const ComPtr<IDXGISurface> pSurface = SurfaceOf(pFrom);
    DXGI_MAPPED_RECT mapped{};
    ASSERT_EQ(pSurface->Map(&mapped, DXGI_MAP_WRITE), S_OK);
    for (int n = 0; n < 60; ++n)
        mapped.pBits[n] = static_cast<BYTE>(n + 1);
    pContext->CopyResource(pTo.Get(), pFrom.Get()); // mapped: nothing happens
    EXPECT_EQ(PixelsOf(*pTo.Get()), std::vector<std::uint8_t>(60, 0));
    EXPECT_EQ(pSurface->Unmap(), S_OK);
    pContext->CopyResource(pTo.Get(), pFrom.Get());
    EXPECT_EQ(PixelsOf(*pTo.Get()), PixelsOf(*pFrom.Get()));
    EXPECT_EQ(PixelsOf(*pTo.Get())[59], 60);
    pContext->CopyResource(pTo.Get(), pEmpty.Get());
    EXPECT_EQ(PixelsOf(*pTo.Get()), std::vector<std::uint8_t>(60, 0));
}

TEST_F(Texture, ACopyBetweenUnequalTexturesDoesNothing)
{
    const ComPtr<ID3D11Texture2D> p = Make(StagingDescription(5, 3));
    pContext->CopyResource(p.Get(), Make(StagingDescription(3, 5)).Get());
    pContext->CopyResource(p.Get(), nullptr);
    pContext->CopyResource(nullptr, p.Get());
    pContext->CopyResource(p.Get(), p.Get());
    EXPECT_EQ(PixelsOf(*p.Get()), std::vector<std::uint8_t>(60, 0));
}
} // namespace
