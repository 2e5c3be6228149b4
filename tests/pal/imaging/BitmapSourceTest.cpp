/// @file BitmapSourceTest.cpp
/// The objects of the Imaging Component: making them, and what copying pixels checks.
#include "tests/pal/imaging/EncodedPictures.h"
#include "tests/pal/imaging/OpenedImage.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/PictureCompare.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace test_support;

namespace
{
TEST(CoCreateInstance, MakesTheFactoryUnderBothItsNamesAndNothingElse)
{
    ComPtr<IWICImagingFactory> pFactory;
    const GUID other{1, 2, 3, {}};
    void** const pp = pal::VoidPtr(pFactory.Put());
    for (const CLSID& id : {CLSID_WICImagingFactory1, CLSID_WICImagingFactory2})
    {
        EXPECT_EQ(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory, pp), S_OK);
        EXPECT_TRUE(pFactory);
        pFactory.Put();
        EXPECT_EQ(CoCreateInstance(id, nullptr, 4, IID_IWICImagingFactory, pp), REGDB_E_CLASSNOTREG);
        EXPECT_EQ(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IWICPalette, pp), E_NOINTERFACE);
        EXPECT_EQ(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IWICPalette, nullptr), E_POINTER);
    }
    EXPECT_EQ(CoCreateInstance(other, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory, pp), REGDB_E_CLASSNOTREG);
    const ComPtr<IWICImagingFactory> pOuter = MakeImagingFactory();
    EXPECT_EQ(CoCreateInstance(CLSID_WICImagingFactory2, pOuter.Get(), CLSCTX_INPROC_SERVER, IID_IUnknown, pp),
              CLASS_E_NOAGGREGATION);
    EXPECT_FALSE(pFactory);
}

TEST(CreateDecoderFromFilename, RefusesWhatIsNoPicture)
{
    const ComPtr<IWICImagingFactory> pFactory = MakeImagingFactory();
    ComPtr<IWICBitmapDecoder> pDecoder;
    EXPECT_EQ(pFactory->CreateDecoderFromFilename(nullptr, nullptr, GENERIC_READ, WICDecodeMetadataCacheOnLoad,
                                                  pDecoder.Put()),
              E_INVALIDARG);
    EXPECT_EQ(pFactory->CreateDecoderFromFilename(L"a", nullptr, 0, WICDecodeMetadataCacheOnLoad, pDecoder.Put()),
              E_INVALIDARG);
    EXPECT_EQ(OpenedImage(ScratchFolder() / "none.png").Result(), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(OpenedImage(ScratchFolder()).Result(), HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(OpenedImage(std::filesystem::path("/dev/zero")).Result(), HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(OpenedImage(Bytes{}).Result(), WINCODEC_ERR_COMPONENTNOTFOUND);
    EXPECT_EQ(OpenedImage(Bytes{'t', 'e', 'x', 't'}).Result(), WINCODEC_ERR_COMPONENTNOTFOUND);
}

TEST(CreateDecoderFromFilename, TheContentDecidesNotTheName)
{
    const OpenedImage image(MakeJpeg(PatternPicture(8, 8)));
    GUID format = GUID_NULL;
    ASSERT_TRUE(image.IsOpen());
    EXPECT_EQ(image->GetContainerFormat(&format), S_OK);
    EXPECT_EQ(format, GUID_ContainerFormatJpeg);
}

class CopyPixels : public testing::Test
{
protected:
    HRESULT Copy(const WICRect& rect, UINT stride, UINT cb) { return m_pFrame->CopyPixels(&rect, stride, cb, m_bytes); }

    const Picture m_picture = PatternPicture(6, 5, -1);
    const OpenedImage m_image{MakePng(m_picture)};
    const ComPtr<IWICBitmapFrameDecode> m_pFrame = m_image.Frame();
    BYTE m_bytes[6 * 5 * 4] = {};
};

TEST_F(CopyPixels, ChecksTheRectangle)
{
    EXPECT_EQ(Copy({0, 0, 6, 5}, 24, 120), S_OK);
    for (const WICRect& rect : {WICRect{-1, 0, 1, 1},
                                {0, -1, 1, 1},
                                {0, 0, 0, 1},
                                {0, 0, 1, 0},
                                {0, 0, -1, 1},
                                {0, 0, 7, 1},
                                {0, 0, 1, 6},
                                {6, 0, 1, 1},
                                {0, 5, 1, 1},
                                {5, 4, 2, 1},
                                {0, 0, INT32_MAX, 1},
                                {INT32_MAX, 0, INT32_MAX, 1}})
        EXPECT_EQ(Copy(rect, 24, 120), E_INVALIDARG)
            << rect.X << ' ' << rect.Y << ' ' << rect.Width << ' ' << rect.Height;
}

TEST_F(CopyPixels, ChecksTheBuffer)
{
    EXPECT_EQ(Copy({0, 0, 6, 5}, 23, 120), E_INVALIDARG);
    EXPECT_EQ(Copy({0, 0, 6, 5}, 0, 120), E_INVALIDARG);
    EXPECT_EQ(Copy({0, 0, 6, 5}, 24, 119), WINCODEC_ERR_INSUFFICIENTBUFFER);
    EXPECT_EQ(Copy({0, 0, 6, 5}, 0x80000000U, 120), E_INVALIDARG);
    EXPECT_EQ(Copy({0, 0, 6, 5}, 0x7FFFFFFFU, 120), WINCODEC_ERR_INSUFFICIENTBUFFER);
    EXPECT_EQ(Copy({0, 0, 5, 5}, 24, 4 * 24 + 20), S_OK); // the last row needs no gap behind it
    EXPECT_EQ(m_pFrame->CopyPixels(nullptr, 24, 120, nullptr), E_INVALIDARG);
}

TEST_F(CopyPixels, CopiesThePartThatIsAskedFor)
{
    for (UINT y = 0; y < 5; ++y)
    {
        for (UINT x = 0; x < 6; ++x)
        {
            const WICRect rect{static_cast<INT>(x), static_cast<INT>(y), static_cast<INT>(6 - x),
                               static_cast<INT>(5 - y)};
            ASSERT_EQ(Copy(rect, 24, 120), S_OK);
            for (UINT row = 0; row < 5 - y; ++row)
                ASSERT_TRUE(std::equal(m_bytes + row * 24, m_bytes + row * 24 + (6 - x) * 4, m_picture.At(x, y + row)));
        }
    }
}

TEST_F(CopyPixels, FramesOutliveTheirDecoder)
{
    ComPtr<IWICBitmapFrameDecode> pFrame;
    {
        const OpenedImage image(MakePng(m_picture));
        pFrame = image.Frame();
    }
    EXPECT_TRUE(PicturesMatch(PixelsOf(*pFrame.Get()), m_picture, {}, "outlived"));
}

TEST_F(CopyPixels, PicturesAreBgraAndConvertToItOnly)
{
    WICPixelFormatGUID format = GUID_NULL;
    EXPECT_EQ(m_pFrame->GetPixelFormat(&format), S_OK);
    EXPECT_EQ(format, GUID_WICPixelFormat32bppBGRA);
    ComPtr<IWICBitmapSource> pSame;
    EXPECT_EQ(WICConvertBitmapSource(GUID_WICPixelFormat32bppBGRA, m_pFrame.Get(), pSame.Put()), S_OK);
    EXPECT_EQ(pSame.Get(), m_pFrame.Get());
    EXPECT_EQ(WICConvertBitmapSource(GUID_WICPixelFormat24bppBGR, m_pFrame.Get(), pSame.Put()),
              WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT);
    EXPECT_FALSE(pSame);

    ComPtr<IWICFormatConverter> pConverter;
    ASSERT_EQ(MakeImagingFactory()->CreateFormatConverter(pConverter.Put()), S_OK);
    UINT width = 0;
    EXPECT_EQ(pConverter->GetSize(&width, &width), WINCODEC_ERR_NOTINITIALIZED);
    const auto initialize = [&](const GUID& wanted)
    {
        return pConverter->Initialize(m_pFrame.Get(), wanted, WICBitmapDitherTypeNone, nullptr, 0,
                                      WICBitmapPaletteTypeCustom);
    };
    EXPECT_EQ(initialize(GUID_WICPixelFormat24bppBGR), WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT);
    ASSERT_EQ(initialize(GUID_WICPixelFormat32bppBGRA), S_OK);
    EXPECT_TRUE(PicturesMatch(PixelsOf(*pConverter.Get()), m_picture, {}, "converted"));
    BOOL can = FALSE;
    EXPECT_EQ(pConverter->CanConvert(format, format, &can), S_OK);
    EXPECT_EQ(can, TRUE);
    EXPECT_EQ(pConverter->CanConvert(format, GUID_WICPixelFormat24bppBGR, &can), S_OK);
    EXPECT_EQ(can, FALSE);
}
} // namespace
