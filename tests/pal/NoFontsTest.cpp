// What text services answer on a system without a single font.
#include "engine/platform/RefPtr.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <dwrite_3.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace
{
TEST(TextWithoutFonts, IsRefusedQuietly)
{
    const test_support::TemporaryFolder folder;
    const std::string path = folder.Path().string();
    std::filesystem::create_directory(path + "/empty");
    const std::filesystem::path config = folder.Write(
        "fonts.conf", "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"fonts.dtd\"><fontconfig><dir>" + path +
                          "/empty</dir><cachedir>" + path + "/cache</cachedir></fontconfig>");
    setenv("FONTCONFIG_FILE", config.c_str(), 1);

    ComPtr<IDWriteFactory4> pText;
    ASSERT_EQ(
        DWriteCreateFactory(DWRITE_FACTORY_TYPE_SHARED, IID_IDWriteFactory4, reinterpret_cast<IUnknown**>(pText.Put())),
        S_OK);
    ComPtr<IDWriteFontCollection> pFonts;
    EXPECT_EQ(pText->GetSystemFontCollection(pFonts.Put(), FALSE), S_OK);
    ComPtr<IDWriteTextFormat> pFormat;
    ASSERT_EQ(pText->CreateTextFormat(L"DejaVu Sans", pFonts.Get(), DWRITE_FONT_WEIGHT_NORMAL, DWRITE_FONT_STYLE_NORMAL,
                                      DWRITE_FONT_STRETCH_NORMAL, 20, L"en-US", pFormat.Put()),
              S_OK);
    ComPtr<IDWriteTextLayout> pLayout;
    testing::internal::CaptureStderr();
    EXPECT_EQ(pText->CreateTextLayout(L"text", 4, pFormat.Get(), 100, 100, pLayout.Put()), DWRITE_E_NOFONT);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(pLayout);
}
} // namespace
