#include "tests/pal/imaging/OpenedImage.h"

#include <gtest/gtest.h>

namespace
{
ComPtr<IWICPalette> MakePalette(std::vector<WICColor> colors)
{
    ComPtr<IWICPalette> pPalette;
    EXPECT_EQ(MakeImagingFactory()->CreatePalette(pPalette.Put()), S_OK);
    if (!colors.empty())
    {
        EXPECT_EQ(pPalette->InitializeCustom(colors.data(), static_cast<UINT>(colors.size())), S_OK);
    }
    return pPalette;
}

TEST(Palette, GivesBackAsManyColorsAsAreAskedForAndThere)
{
    const ComPtr<IWICPalette> pPalette = MakePalette({1, 2, 3});
    UINT count = 0;
    WICColor colors[4] = {};
    EXPECT_EQ(pPalette->GetColorCount(&count), S_OK);
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(pPalette->GetColors(2, colors, &count), S_OK);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(colors[2], 0U);
    EXPECT_EQ(pPalette->GetColors(4, colors, &count), S_OK);
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(colors[2], 3U);
    const ComPtr<IWICPalette> pCopy = MakePalette({});
    EXPECT_EQ(pCopy->InitializeFromPalette(pPalette.Get()), S_OK);
    EXPECT_EQ(pCopy->GetColorCount(&count), S_OK);
    EXPECT_EQ(count, 3U);
}

TEST(Palette, HoldsOneTo256Colors)
{
    const ComPtr<IWICPalette> pPalette = MakePalette({});
    std::vector<WICColor> colors(257);
    EXPECT_EQ(pPalette->InitializeCustom(colors.data(), 0), E_INVALIDARG);
    EXPECT_EQ(pPalette->InitializeCustom(colors.data(), 257), E_INVALIDARG);
    EXPECT_EQ(pPalette->InitializeCustom(nullptr, 1), E_INVALIDARG);
    EXPECT_EQ(pPalette->InitializeCustom(colors.data(), 256), S_OK);
    EXPECT_EQ(pPalette->InitializePredefined(WICBitmapPaletteTypeCustom, FALSE), E_NOTIMPL);
}

TEST(Palette, KnowsGreyBlackAndWhiteAndTransparent)
{
    BOOL result = FALSE;
    const auto answers = [&](const std::vector<WICColor>& colors)
    {
        const ComPtr<IWICPalette> pPalette = MakePalette(colors);
        std::vector<bool> list;
        EXPECT_EQ(pPalette->IsBlackWhite(&result), S_OK);
        list.push_back(result != FALSE);
        EXPECT_EQ(pPalette->IsGrayscale(&result), S_OK);
        list.push_back(result != FALSE);
        EXPECT_EQ(pPalette->HasAlpha(&result), S_OK);
        list.push_back(result != FALSE);
        return list;
    };
    EXPECT_EQ(answers({0xFF000000U, 0xFFFFFFFFU}), (std::vector<bool>{true, true, false}));
    EXPECT_EQ(answers({0xFF000000U, 0xFF808080U}), (std::vector<bool>{false, true, false}));
    EXPECT_EQ(answers({0xFF000000U, 0xFF80807FU, 0x00FFFFFFU}), (std::vector<bool>{false, false, true}));
    EXPECT_EQ(MakePalette({})->HasAlpha(&result), WINCODEC_ERR_NOTINITIALIZED);
}
} // namespace
