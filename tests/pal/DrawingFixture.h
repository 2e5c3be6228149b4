/// @file DrawingFixture.h
/// A texture to draw into, and one to read it back from.
#pragma once

#include "engine/platform/RefPtr.h"
#include "tests/support/InkBox.h"

#include <gtest/gtest.h>

#include <d2d1.h>
#include <d3d11.h>
#include <dwrite_3.h>

#include <cstring>
#include <string>
#include <vector>

namespace pal_test
{
inline D3D11_TEXTURE2D_DESC TextureDescription(UINT width, UINT height)
{
    D3D11_TEXTURE2D_DESC desc{};
    desc.Width = width;
    desc.Height = height;
    desc.MipLevels = 1;
    desc.ArraySize = 1;
    desc.Format = DXGI_FORMAT_B8G8R8A8_UNORM;
    desc.SampleDesc = {1, 0};
    desc.Usage = D3D11_USAGE_DEFAULT;
    desc.BindFlags = D3D11_BIND_RENDER_TARGET | D3D11_BIND_SHADER_RESOURCE;
    return desc;
}

inline D3D11_TEXTURE2D_DESC StagingDescription(UINT width, UINT height,
                                               UINT access = D3D11_CPU_ACCESS_READ | D3D11_CPU_ACCESS_WRITE)
{
    D3D11_TEXTURE2D_DESC desc = TextureDescription(width, height);
    desc.Usage = D3D11_USAGE_STAGING;
    desc.BindFlags = 0;
    desc.CPUAccessFlags = access;
    return desc;
}

inline D2D1_RENDER_TARGET_PROPERTIES PremultipliedTarget()
{
    D2D1_RENDER_TARGET_PROPERTIES properties{};
    properties.pixelFormat = {DXGI_FORMAT_B8G8R8A8_UNORM, D2D1_ALPHA_MODE_PREMULTIPLIED};
    properties.dpiX = properties.dpiY = 96;
    return properties;
}

class DrawingTest : public testing::Test
{
protected:
    DrawingTest()
    {
        EXPECT_EQ(D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_WARP, nullptr, D3D11_CREATE_DEVICE_BGRA_SUPPORT, nullptr,
                                    0, D3D11_SDK_VERSION, pDevice.Put(), nullptr, pContext.Put()),
                  S_OK);
        EXPECT_EQ(D2D1CreateFactory(D2D1_FACTORY_TYPE_SINGLE_THREADED, IID_ID2D1Factory, nullptr,
                                    reinterpret_cast<void**>(pFactory.Put())),
                  S_OK);
        EXPECT_EQ(DWriteCreateFactory(DWRITE_FACTORY_TYPE_SHARED, IID_IDWriteFactory4,
                                      reinterpret_cast<IUnknown**>(pText.Put())),
                  S_OK);
    }

    void MakeTarget(UINT width, UINT height)
    {
        const D3D11_TEXTURE2D_DESC desc = TextureDescription(width, height);
        const D3D11_TEXTURE2D_DESC staging = StagingDescription(width, height);
        ASSERT_EQ(pDevice->CreateTexture2D(&desc, nullptr, pTexture.Put()), S_OK);
        ASSERT_EQ(pDevice->CreateTexture2D(&staging, nullptr, pStaging.Put()), S_OK);
        ComPtr<IDXGISurface> pSurface;
        ASSERT_EQ(pTexture->QueryInterface(IID_PPV_ARGS(pSurface.Put())), S_OK);
        const D2D1_RENDER_TARGET_PROPERTIES properties = PremultipliedTarget();
        ASSERT_EQ(pFactory->CreateDxgiSurfaceRenderTarget(pSurface.Get(), &properties, pTarget.Put()), S_OK);
    }
    /// Copies the drawing and takes its pixels, rows without padding.
    std::vector<std::uint8_t> Read()
    {
        pContext->CopyResource(pStaging.Get(), pTexture.Get());
        return PixelsOf(*pStaging.Get());
    }
    static std::vector<std::uint8_t> PixelsOf(ID3D11Texture2D& staging)
    {
        D3D11_TEXTURE2D_DESC desc{};
        staging.GetDesc(&desc);
        ComPtr<IDXGISurface> pSurface;
        EXPECT_EQ(staging.QueryInterface(IID_PPV_ARGS(pSurface.Put())), S_OK);
        DXGI_MAPPED_RECT mapped{};
        EXPECT_EQ(pSurface->Map(&mapped, DXGI_MAP_READ), S_OK);
        std::vector<std::uint8_t> pixels(std::size_t{desc.Width} * 4 * desc.Height);
        for (UINT y = 0; mapped.pBits != nullptr && y < desc.Height; ++y)
            std::memcpy(pixels.data() + std::size_t{desc.Width} * 4 * y,
                        mapped.pBits + static_cast<std::size_t>(mapped.Pitch) * y, std::size_t{desc.Width} * 4);
        EXPECT_EQ(pSurface->Unmap(), S_OK);
        return pixels;
    }
    ComPtr<ID2D1SolidColorBrush> Brush(float r, float g, float b, float a)
    {
        ComPtr<ID2D1SolidColorBrush> pBrush;
        const D2D1_COLOR_F color{r, g, b, a};
        EXPECT_EQ(pTarget->CreateSolidColorBrush(&color, nullptr, pBrush.Put()), S_OK);
        return pBrush;
    }
    ComPtr<IDWriteTextLayout> Layout(const std::wstring& text, const wchar_t* family, float size, float width,
                                     DWRITE_TEXT_ALIGNMENT alignment = DWRITE_TEXT_ALIGNMENT_LEADING,
                                     int weight = DWRITE_FONT_WEIGHT_NORMAL,
                                     DWRITE_FONT_STYLE style = DWRITE_FONT_STYLE_NORMAL)
    {
        ComPtr<IDWriteTextFormat> pFormat;
        EXPECT_EQ(pText->CreateTextFormat(family, nullptr, static_cast<DWRITE_FONT_WEIGHT>(weight), style,
                                          DWRITE_FONT_STRETCH_NORMAL, size, L"en-US", pFormat.Put()),
                  S_OK);
        EXPECT_EQ(pFormat->SetTextAlignment(alignment), S_OK);
        ComPtr<IDWriteTextLayout> pLayout;
        EXPECT_EQ(pText->CreateTextLayout(text.data(), static_cast<UINT32>(text.size()), pFormat.Get(), width, 1000,
                                          pLayout.Put()),
                  S_OK);
        return pLayout;
    }
    static DWRITE_TEXT_METRICS MetricsOf(const ComPtr<IDWriteTextLayout>& pLayout)
    {
        DWRITE_TEXT_METRICS metrics{};
        EXPECT_EQ(pLayout->GetMetrics(&metrics), S_OK);
        return metrics;
    }
    /// Draws one layout on an empty target. @return the drawing's pixels
    std::vector<std::uint8_t> Draw(const ComPtr<IDWriteTextLayout>& pLayout, float x, float y,
                                   const ComPtr<ID2D1SolidColorBrush>& pBrush)
    {
        pTarget->BeginDraw();
        pTarget->Clear(nullptr);
        pTarget->DrawTextLayout({x, y}, pLayout.Get(), pBrush.Get(), D2D1_DRAW_TEXT_OPTIONS_NONE);
        EXPECT_EQ(pTarget->EndDraw(), S_OK);
        return Read();
    }

    ComPtr<ID3D11Device> pDevice;
    ComPtr<ID3D11DeviceContext> pContext;
    ComPtr<ID2D1Factory> pFactory;
    ComPtr<IDWriteFactory4> pText;
    ComPtr<ID3D11Texture2D> pTexture;
    ComPtr<ID3D11Texture2D> pStaging;
    ComPtr<ID2D1RenderTarget> pTarget;
};
} // namespace pal_test
