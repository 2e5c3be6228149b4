/// @file GifCodecTest.cpp
/// What GIF files state beside their pixels, and their raw frames.
#include "tests/decoders/still/TinyGif.h"
#include "tests/pal/imaging/OpenedImage.h"

#include <propidl.h>

#include <gtest/gtest.h>

#include <cstring>

namespace
{
using Bytes = std::vector<std::uint8_t>;

/// Answer to a query, cleared with the object.
class Answer
{
public:
    Answer(IWICMetadataQueryReader& reader, const wchar_t* name)
    {
        PropVariantInit(&value);
        result = reader.GetMetadataByName(name, &value);
    }
    ~Answer() { PropVariantClear(&value); }
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;

    bool IsWord(USHORT word) const { return result == S_OK && value.vt == VT_UI2 && value.uiVal == word; }
    bool IsByte(BYTE byte) const { return result == S_OK && value.vt == VT_UI1 && value.bVal == byte; }
    bool IsFlag(bool flag) const
    {
        return result == S_OK && value.vt == VT_BOOL && (value.boolVal == VARIANT_TRUE) == flag;
    }
    Bytes AsBytes() const
    {
        const bool isBytes = result == S_OK && value.vt == (VT_VECTOR | VT_UI1);
        return isBytes ? Bytes(value.caub.pElems, value.caub.pElems + value.caub.cElems) : Bytes();
    }

    HRESULT result = E_FAIL;
    PROPVARIANT value;
};

ComPtr<IWICMetadataQueryReader> FileReader(const OpenedImage& image)
{
    ComPtr<IWICMetadataQueryReader> pReader;
    EXPECT_EQ(image->GetMetadataQueryReader(pReader.Put()), S_OK);
    return pReader;
}

ComPtr<IWICMetadataQueryReader> FrameReader(const OpenedImage& image, UINT index)
{
    ComPtr<IWICMetadataQueryReader> pReader;
    EXPECT_EQ(image.Frame(index)->GetMetadataQueryReader(pReader.Put()), S_OK);
    return pReader;
}

TEST(GifFile, ScreenIsStatedWithItsTypes)
{
    const OpenedImage image(TinyGif(300, 7, 0x81, 2, 49).Solid(0, 0, 1, 1, 0).End().bytes);
    const auto pReader = FileReader(image);
    ASSERT_TRUE(pReader);
    EXPECT_TRUE(Answer(*pReader.Get(), L"/logscrdesc/Width").IsWord(300));
    EXPECT_TRUE(Answer(*pReader.Get(), L"/logscrdesc/Height").IsWord(7));
    EXPECT_TRUE(Answer(*pReader.Get(), L"/logscrdesc/PixelAspectRatio").IsByte(49));
    EXPECT_TRUE(Answer(*pReader.Get(), L"/logscrdesc/BackgroundColorIndex").IsByte(2));
    EXPECT_TRUE(Answer(*pReader.Get(), L"/logscrdesc/GlobalColorTableFlag").IsFlag(true));
    EXPECT_EQ(Answer(*pReader.Get(), L"/appext/application").result, WINCODEC_ERR_PROPERTYNOTFOUND);
    EXPECT_EQ(Answer(*pReader.Get(), L"/imgdesc/Left").result, WINCODEC_ERR_PROPERTYNOTFOUND); // a frame's
    EXPECT_EQ(Answer(*pReader.Get(), L"/logscrdesc").result, WINCODEC_ERR_PROPERTYNOTFOUND);
}

TEST(GifFile, ApplicationIsStatedWithItsBlocks)
{
    const OpenedImage image(TinyGif(4, 4)
                                .Application("NETSCAPE2.0", {1, 5, 1})
                                .Application("XMP DataXMP", {7})
                                .Solid(0, 0, 1, 1, 0)
                                .End()
                                .bytes);
    const auto pReader = FileReader(image);
    ASSERT_TRUE(pReader);
    const char* const pName = "NETSCAPE2.0";
    EXPECT_EQ(Answer(*pReader.Get(), L"/appext/application").AsBytes(), Bytes(pName, pName + std::strlen(pName)));
    EXPECT_EQ(Answer(*pReader.Get(), L"/appext/data").AsBytes(), (Bytes{3, 1, 5, 1, 0}));
}

TEST(GifFile, FramesStateTheirPlaceDelayAndDisposal)
{
    const OpenedImage image(
        TinyGif(40, 40).Solid(0, 0, 1, 1, 0).Control(500, 3).Solid(300, 2, 5, 6, 1).Solid(0, 0, 2, 2, 2).End().bytes);
    ASSERT_EQ(image.FrameCount(), 3U);
    const auto pFirst = FrameReader(image, 0);
    EXPECT_EQ(Answer(*pFirst.Get(), L"/grctlext/Delay").result, WINCODEC_ERR_PROPERTYNOTFOUND);
    EXPECT_EQ(Answer(*pFirst.Get(), L"/grctlext/Disposal").result, WINCODEC_ERR_PROPERTYNOTFOUND);
    const auto pSecond = FrameReader(image, 1);
    EXPECT_TRUE(Answer(*pSecond.Get(), L"/imgdesc/Left").IsWord(300));
    EXPECT_TRUE(Answer(*pSecond.Get(), L"/imgdesc/Top").IsWord(2));
    EXPECT_TRUE(Answer(*pSecond.Get(), L"/imgdesc/Width").IsWord(5));
    EXPECT_TRUE(Answer(*pSecond.Get(), L"/imgdesc/Height").IsWord(6));
    EXPECT_TRUE(Answer(*pSecond.Get(), L"/grctlext/Delay").IsWord(500));
    EXPECT_TRUE(Answer(*pSecond.Get(), L"/grctlext/Disposal").IsByte(3));
    EXPECT_EQ(Answer(*pSecond.Get(), L"System.Photo.Orientation").result, WINCODEC_ERR_PROPERTYNOTFOUND);
    // A control extension belongs to the next frame only.
    EXPECT_EQ(Answer(*FrameReader(image, 2).Get(), L"/grctlext/Delay").result, WINCODEC_ERR_PROPERTYNOTFOUND);
    EXPECT_FALSE(image.Frame(3));
}

TEST(GifFile, GlobalPaletteIsOpaqueAndMayBeMissing)
{
    ComPtr<IWICPalette> pPalette;
    ASSERT_EQ(MakeImagingFactory()->CreatePalette(pPalette.Put()), S_OK);
    const OpenedImage with(TinyGif(4, 4).Solid(0, 0, 1, 1, 0).End().bytes);
    ASSERT_EQ(with->CopyPalette(pPalette.Get()), S_OK);
    WICColor colors[256] = {};
    UINT count = 0;
    ASSERT_EQ(pPalette->GetColors(256, colors, &count), S_OK);
    ASSERT_EQ(count, 4U);
    EXPECT_EQ(colors[0], 0xFFFF0000U);
    EXPECT_EQ(colors[2], 0xFF0000FFU);
    const OpenedImage without(TinyGif(4, 4, 0).Solid(0, 0, 1, 1, 0).End().bytes);
    EXPECT_EQ(without->CopyPalette(pPalette.Get()), WINCODEC_ERR_PALETTEUNAVAILABLE);
    EXPECT_TRUE(Answer(*FileReader(without).Get(), L"/logscrdesc/GlobalColorTableFlag").IsFlag(false));
}

TEST(GifFile, FramesHaveTheirOwnSizeInAnyOrderOfReading)
{
    TinyGif gif(40, 40);
    for (std::uint8_t i = 0; i < 4; ++i)
        gif.Solid(i, i, static_cast<std::uint16_t>(i + 1), 2, i);
    const OpenedImage image(gif.End().bytes);
    constexpr std::uint8_t kBlue[] = {0, 0, 255, 255};
    for (const UINT index : {3U, 0U, 2U, 1U, 3U})
    {
        const test_support::Picture picture = image.Pixels(index);
        ASSERT_EQ(picture.width, index + 1);
        EXPECT_EQ(picture.At(index, 1)[0], kBlue[index]);
        EXPECT_EQ(picture.At(index, 1)[3], 255);
    }
}
} // namespace
