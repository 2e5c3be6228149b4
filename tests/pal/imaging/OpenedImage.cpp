#include "tests/pal/imaging/OpenedImage.h"

#include "pal/kernel/PathText.h"
#include "tests/support/MediaFolder.h"

#include <propvarutil.h>

#include <gtest/gtest.h>

#include <fstream>

using test_support::Picture;

ComPtr<IWICImagingFactory> MakeImagingFactory()
{
    ComPtr<IWICImagingFactory> pFactory;
    EXPECT_EQ(CoCreateInstance(CLSID_WICImagingFactory2, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(pFactory.Put())),
              S_OK);
    return pFactory;
}

OpenedImage::OpenedImage(const std::filesystem::path& path)
{
    Open(path);
}

OpenedImage::OpenedImage(const std::vector<std::uint8_t>& bytes)
{
    const std::filesystem::path path = test_support::ScratchFolder() / "picture";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    Open(path);
}

void OpenedImage::Open(const std::filesystem::path& path)
{
    const ComPtr<IWICImagingFactory> pFactory = MakeImagingFactory();
    const std::wstring name = pal::FromPathBytes(path.native());
    m_result = pFactory->CreateDecoderFromFilename(name.c_str(), nullptr, GENERIC_READ, WICDecodeMetadataCacheOnLoad,
                                                   m_pDecoder.Put());
    EXPECT_EQ(SUCCEEDED(m_result), IsOpen());
}

UINT OpenedImage::FrameCount() const
{
    UINT count = 0;
    EXPECT_EQ(m_pDecoder->GetFrameCount(&count), S_OK);
    return count;
}

ComPtr<IWICBitmapFrameDecode> OpenedImage::Frame(UINT index) const
{
    ComPtr<IWICBitmapFrameDecode> pFrame;
    const HRESULT hr = m_pDecoder->GetFrame(index, pFrame.Put());
    EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(pFrame));
    return pFrame;
}

Picture OpenedImage::Pixels(UINT index) const
{
    const ComPtr<IWICBitmapFrameDecode> pFrame = Frame(index);
    return pFrame ? PixelsOf(*pFrame.Get()) : Picture();
}

USHORT OpenedImage::Orientation(UINT index) const
{
    const ComPtr<IWICBitmapFrameDecode> pFrame = Frame(index);
    ComPtr<IWICMetadataQueryReader> pReader;
    PROPVARIANT value;
    PropVariantInit(&value);
    USHORT orientation = 0;
    if (pFrame && SUCCEEDED(pFrame->GetMetadataQueryReader(pReader.Put())) &&
        SUCCEEDED(pReader->GetMetadataByName(L"System.Photo.Orientation", &value)))
    {
        EXPECT_EQ(PropVariantGetUInt16Elem(value, 0, &orientation), S_OK);
    }
    PropVariantClear(&value);
    return orientation;
}

Picture PixelsOf(IWICBitmapSource& source)
{
    Picture picture;
    EXPECT_EQ(source.GetSize(&picture.width, &picture.height), S_OK);
    picture.bgra.resize(std::size_t{picture.width} * picture.height * 4, 0xA5);
    if (FAILED(
            source.CopyPixels(nullptr, picture.width * 4, static_cast<UINT>(picture.bgra.size()), picture.bgra.data())))
        picture.bgra.clear();
    return picture;
}
