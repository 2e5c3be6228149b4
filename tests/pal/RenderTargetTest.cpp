#include "tests/pal/DrawingFixture.h"

#include <limits>

namespace
{
using test_support::FindInk;
using test_support::InkBox;
using test_support::IsThere;

class RenderTarget : public pal_test::DrawingTest
{
protected:
    RenderTarget() { MakeTarget(40, 30); }
    void Fill(D2D1_RECT_F rect, const ComPtr<ID2D1SolidColorBrush>& pBrush)
    {
        pTarget->FillRectangle(&rect, pBrush.Get());
    }
    std::uint32_t At(const std::vector<std::uint8_t>& pixels, int x, int y)
    {
        std::uint32_t value = 0;
        std::memcpy(&value, pixels.data() + (y * 40 + x) * 4, 4);
        return value;
    }
};

TEST_F(RenderTarget, IsMadeOnlyOverATextureThatCanBeDrawnInto)
{
    const auto make = [&](IDXGISurface* pSurface, const D2D1_RENDER_TARGET_PROPERTIES& properties)
    {
        ComPtr<ID2D1RenderTarget> p;
        const HRESULT hr = pFactory->CreateDxgiSurfaceRenderTarget(pSurface, &properties, p.Put());
        EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(p));
        return hr;
    };
    ComPtr<IDXGISurface> pDrawn;
    ComPtr<IDXGISurface> pRead;
    ASSERT_EQ(pTexture->QueryInterface(IID_PPV_ARGS(pDrawn.Put())), S_OK);
    ASSERT_EQ(pStaging->QueryInterface(IID_PPV_ARGS(pRead.Put())), S_OK);
    D2D1_RENDER_TARGET_PROPERTIES properties = pal_test::PremultipliedTarget();
    EXPECT_EQ(make(pDrawn.Get(), properties), S_OK);
    EXPECT_EQ(make(pRead.Get(), properties), E_INVALIDARG);
    EXPECT_EQ(make(nullptr, properties), E_INVALIDARG);
    properties.pixelFormat.alphaMode = D2D1_ALPHA_MODE_STRAIGHT;
    EXPECT_EQ(make(pDrawn.Get(), properties), D2DERR_UNSUPPORTED_PIXEL_FORMAT);
    properties = pal_test::PremultipliedTarget();
    properties.dpiX = 192;
    EXPECT_EQ(make(pDrawn.Get(), properties), E_INVALIDARG);
}

TEST_F(RenderTarget, KeepsItsTextureAlive)
{
    pTexture = {};
    pTarget->BeginDraw();
    Fill({0, 0, 40, 30}, Brush(1, 1, 1, 1));
    EXPECT_EQ(pTarget->EndDraw(), S_OK);
}

TEST_F(RenderTarget, FillsExactlyTheRectangleInPremultipliedColour)
{
    pTarget->BeginDraw();
    pTarget->Clear(nullptr);
    Fill({3, 4, 10, 9}, Brush(1, 0.5F, 0, 0.5F));
    EXPECT_EQ(pTarget->EndDraw(), S_OK);
    const std::vector<std::uint8_t> pixels = Read();
    EXPECT_EQ(FindInk(pixels.data(), 160, 40, 30, IsThere), (InkBox{3, 4, 10, 9}));
    EXPECT_NEAR(pixels[(4 * 40 + 3) * 4 + 0], 0, 1);
    EXPECT_NEAR(pixels[(4 * 40 + 3) * 4 + 1], 64, 1);
    EXPECT_NEAR(pixels[(4 * 40 + 3) * 4 + 2], 128, 1);
    EXPECT_NEAR(pixels[(4 * 40 + 3) * 4 + 3], 128, 1);
}

TEST_F(RenderTarget, SmoothsEdgesBetweenPixels)
{
    pTarget->BeginDraw();
    Fill({3.25F, 4, 10, 8.5F}, Brush(1, 1, 1, 1));
    EXPECT_EQ(pTarget->EndDraw(), S_OK);
    const std::vector<std::uint8_t> pixels = Read();
    EXPECT_NEAR(pixels[(5 * 40 + 3) * 4 + 3], 191, 2);
    EXPECT_NEAR(pixels[(8 * 40 + 5) * 4 + 3], 128, 2);
    EXPECT_EQ(pixels[(5 * 40 + 5) * 4 + 3], 255);
}

TEST_F(RenderTarget, LaysLaterDrawingOverEarlier)
{
    pTarget->BeginDraw();
    Fill({0, 0, 40, 30}, Brush(0, 0, 1, 1));
    Fill({0, 0, 20, 30}, Brush(1, 0, 0, 0.5F));
    EXPECT_EQ(pTarget->EndDraw(), S_OK);
    const std::vector<std::uint8_t> pixels = Read();
    EXPECT_EQ(At(pixels, 30, 10), 0xFF0000FFU);
    EXPECT_NEAR(pixels[0], 127, 1);
    EXPECT_NEAR(pixels[2], 128, 1);
    EXPECT_EQ(pixels[3], 255);
}

TEST_F(RenderTarget, OpacityMultipliesTheBrushsAlphaAndStaysInRange)
{
    const auto drawn = [&](float alpha, float opacity)
    {
        const ComPtr<ID2D1SolidColorBrush> pBrush = Brush(1, 1, 1, alpha);
        pBrush->SetOpacity(opacity);
        pTarget->BeginDraw();
        pTarget->Clear(nullptr);
        Fill({0, 0, 40, 30}, pBrush);
        EXPECT_EQ(pTarget->EndDraw(), S_OK);
        return static_cast<int>(Read()[3]);
    };
    EXPECT_NEAR(drawn(1, 0.5F), 128, 1);
    EXPECT_NEAR(drawn(0.5F, 0.5F), 64, 1);
    EXPECT_EQ(drawn(1, 7), 255);
    EXPECT_EQ(drawn(1, -1), 0);
    EXPECT_EQ(drawn(1, std::numeric_limits<float>::quiet_NaN()), 0);
}

TEST_F(RenderTarget, ClearRemovesAllThatWasDrawnAndTakesAColour)
{
    pTarget->BeginDraw();
    Fill({0, 0, 40, 30}, Brush(1, 1, 1, 1));
    pTarget->Clear(nullptr);
    Fill({20, 20, 21, 21}, Brush(1, 1, 1, 1));
    EXPECT_EQ(pTarget->EndDraw(), S_OK);
    const std::vector<std::uint8_t> dot = Read();
    EXPECT_EQ(FindInk(dot.data(), 160, 40, 30, IsThere), (InkBox{20, 20, 21, 21}));

    const D2D1_COLOR_F green{0, 1, 0, 1};
    pTarget->BeginDraw();
    pTarget->Clear(&green);
    EXPECT_EQ(pTarget->EndDraw(), S_OK);
    const std::vector<std::uint8_t> pixels = Read();
    EXPECT_EQ(At(pixels, 0, 0), 0xFF00FF00U);
    EXPECT_EQ(At(pixels, 39, 29), 0xFF00FF00U);
}

TEST_F(RenderTarget, DrawsBetweenBeginAndEndOnly)
{
    Fill({0, 0, 40, 30}, Brush(1, 1, 1, 1));
    EXPECT_EQ(pTarget->EndDraw(), D2DERR_WRONG_STATE);
    EXPECT_EQ(Read(), std::vector<std::uint8_t>(40 * 30 * 4, 0));
    pTarget->BeginDraw();
    pTarget->BeginDraw();
    EXPECT_EQ(pTarget->EndDraw(), D2DERR_WRONG_STATE);
    pTarget->BeginDraw();
    EXPECT_EQ(pTarget->EndDraw(), S_OK);
}

TEST_F(RenderTarget, ReportsWrongArgumentsWhenTheDrawingEnds)
{
    pTarget->BeginDraw();
    pTarget->FillRectangle(nullptr, Brush(1, 1, 1, 1).Get());
    pTarget->DrawTextLayout({0, 0}, nullptr, nullptr);
    EXPECT_EQ(pTarget->EndDraw(), E_INVALIDARG);
    pTarget->BeginDraw();
    EXPECT_EQ(pTarget->EndDraw(), S_OK);
}

TEST_F(RenderTarget, RectanglesWithoutMeasureOrSenseDrawNothingWrong)
{
    constexpr float kInfinite = std::numeric_limits<float>::infinity();
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    pTarget->BeginDraw();
    Fill({10, 10, 5, 20}, Brush(1, 1, 1, 1));
    Fill({kNone, kNone, kNone, kNone}, Brush(1, 1, 1, 1));
    Fill({-1e30F, 5, -1e20F, 1e30F}, Brush(1, 1, 1, 1));
    EXPECT_EQ(pTarget->EndDraw(), S_OK);
    EXPECT_EQ(Read(), std::vector<std::uint8_t>(40 * 30 * 4, 0));
    pTarget->BeginDraw();
    Fill({-kInfinite, -kInfinite, kInfinite, 10}, Brush(1, 1, 1, 1));
    EXPECT_EQ(pTarget->EndDraw(), S_OK);
    const std::vector<std::uint8_t> pixels = Read();
    EXPECT_EQ(FindInk(pixels.data(), 160, 40, 30, IsThere), (InkBox{0, 0, 40, 10}));
}

TEST(Direct2D, RefusesInterfacesThatItDoesNotHave)
{
    auto* p = reinterpret_cast<void*>(0x10);
    EXPECT_EQ(D2D1CreateFactory(D2D1_FACTORY_TYPE_SINGLE_THREADED, IID_ID2D1Brush, nullptr, &p), E_NOINTERFACE);
    EXPECT_EQ(p, nullptr);
    IUnknown* pUnknown = nullptr;
    EXPECT_EQ(DWriteCreateFactory(DWRITE_FACTORY_TYPE_SHARED, IID_ID2D1Brush, &pUnknown), E_NOINTERFACE);
    EXPECT_EQ(pUnknown, nullptr);
}
} // namespace
