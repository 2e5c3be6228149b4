#include "host/compose/PictureFacts.h"

#include "engine/platform/PropVariantElement.h"
#include "engine/platform/RefPtr.h"

#include <objbase.h>
#include <wincodec.h>

#include <algorithm>
#include <utility>

namespace qmx::host
{
namespace
{
std::string NameOf(const GUID& format)
{
    const std::pair<GUID, const char*> names[] = {
        {GUID_ContainerFormatJpeg, "JPEG"}, {GUID_ContainerFormatPng, "PNG"},   {GUID_ContainerFormatGif, "GIF"},
        {GUID_ContainerFormatTiff, "TIFF"}, {GUID_ContainerFormatWebp, "WebP"}, {GUID_ContainerFormatBmp, "BMP"},
        {GUID_ContainerFormatIco, "ICO"}};
    for (const auto& [known, name] : names)
    {
        if (known == format)
            return name;
    }
    return "picture";
}

/// A 16-bit value of @p reader; @p otherwise where there is none.
std::uint32_t WordOr(IWICMetadataQueryReader& reader, const wchar_t* name, std::uint32_t otherwise)
{
    PROPVARIANT value;
    PropVariantInit(&value);
    USHORT word = 0;
    if (SUCCEEDED(reader.GetMetadataByName(name, &value)) && SUCCEEDED(PropVariantGetUInt16Elem(value, 0, &word)))
        otherwise = word;
    PropVariantClear(&value);
    return otherwise;
}

/// Milliseconds of one round, by the rule of the engine's decoder: each frame's delay, 90 at least.
std::uint64_t RoundOf(IWICBitmapDecoder& decoder, UINT frames)
{
    constexpr std::uint32_t kShortest = 90;
    std::uint64_t sum = 0;
    for (UINT i = 0; i < frames; ++i)
    {
        ComPtr<IWICBitmapFrameDecode> pFrame;
        ComPtr<IWICMetadataQueryReader> pReader;
        if (SUCCEEDED(decoder.GetFrame(i, pFrame.Put())) && SUCCEEDED(pFrame->GetMetadataQueryReader(pReader.Put())))
            sum += std::max(WordOr(*pReader.Get(), L"/grctlext/Delay", 0) * 10, kShortest);
    }
    return sum;
}

bool ReadScreen(IWICBitmapDecoder& decoder, PictureFacts& facts)
{
    ComPtr<IWICMetadataQueryReader> pReader;
    if (FAILED(decoder.GetMetadataQueryReader(pReader.Put())))
        return false;
    facts.width = WordOr(*pReader.Get(), L"/logscrdesc/Width", 0);
    facts.height = WordOr(*pReader.Get(), L"/logscrdesc/Height", 0);
    facts.duration = static_cast<double>(RoundOf(decoder, facts.frames)) / 1000;
    return true;
}

bool ReadFirstFrame(IWICBitmapDecoder& decoder, PictureFacts& facts)
{
    ComPtr<IWICBitmapFrameDecode> pFrame;
    ComPtr<IWICMetadataQueryReader> pReader;
    if (FAILED(decoder.GetFrame(0, pFrame.Put())) || FAILED(pFrame->GetSize(&facts.width, &facts.height)))
        return false;
    if (SUCCEEDED(pFrame->GetMetadataQueryReader(pReader.Put())))
        facts.orientation = WordOr(*pReader.Get(), L"System.Photo.Orientation", 1);
    if (facts.orientation >= 5 && facts.orientation <= 8) // stored lying
        std::swap(facts.width, facts.height);
    return true;
}
} // namespace

std::optional<PictureFacts> ReadPictureFacts(const std::wstring& path)
{
    ComPtr<IWICImagingFactory> pFactory;
    ComPtr<IWICBitmapDecoder> pDecoder;
    GUID format{};
    PictureFacts facts;
    if (FAILED(
            CoCreateInstance(CLSID_WICImagingFactory2, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(pFactory.Put()))) ||
        FAILED(pFactory->CreateDecoderFromFilename(path.c_str(), nullptr, GENERIC_READ, WICDecodeMetadataCacheOnLoad,
                                                   pDecoder.Put())) ||
        FAILED(pDecoder->GetContainerFormat(&format)) || FAILED(pDecoder->GetFrameCount(&facts.frames)))
        return std::nullopt;
    facts.format = NameOf(format);
    const bool isGif = format == GUID_ContainerFormatGif;
    if (!(isGif ? ReadScreen(*pDecoder.Get(), facts) : ReadFirstFrame(*pDecoder.Get(), facts)))
        return std::nullopt;
    return facts;
}
} // namespace qmx::host
