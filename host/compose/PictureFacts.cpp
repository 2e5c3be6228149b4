#include "host/compose/PictureFacts.h"

#include "engine/decoders/still/MetadataValue.h"
#include "engine/platform/PropVariantElement.h"
#include "engine/platform/RefPtr.h"

#include <objbase.h>
#include <wincodec.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace qmx::host
{
namespace
{
constexpr UINT kMaxSide = 1U << 24; ///< pixels of a row that is decoded for a look

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

/// The looping extension: the length of its block, a 1 and the number of rounds in two bytes.
std::optional<std::uint32_t> RoundsOf(IWICMetadataQueryReader& reader)
{
    MetadataBytes name;
    MetadataBytes data;
    if (FAILED(name.Read(&reader, L"/appext/application")) || FAILED(data.Read(&reader, L"/appext/data")))
        return std::nullopt;
    const std::string_view text(reinterpret_cast<const char*>(name.Data()), name.Size());
    if ((text != "NETSCAPE2.0" && text != "ANIMEXTS1.0") || data.Size() < 4 || data.Data()[1] != 1)
        return std::nullopt;
    return data.Data()[3] * 256U + data.Data()[2];
}

/// The delays of all frames, and how long one round takes by the rule of the engine's decoder: 90 ms a frame at least.
void ReadDelays(IWICBitmapDecoder& decoder, PictureFacts& facts)
{
    constexpr std::uint32_t kShortest = 90;
    constexpr std::uint32_t kUnit = 10; // milliseconds
    std::uint64_t sum = 0;
    for (UINT i = 0; i < facts.frames; ++i)
    {
        ComPtr<IWICBitmapFrameDecode> pFrame;
        ComPtr<IWICMetadataQueryReader> pReader;
        std::uint32_t delay = 0;
        if (SUCCEEDED(decoder.GetFrame(i, pFrame.Put())) && SUCCEEDED(pFrame->GetMetadataQueryReader(pReader.Put())))
        {
            delay = WordOr(*pReader.Get(), L"/grctlext/Delay", 0) * kUnit;
            sum += std::max(delay, kShortest);
        }
        facts.delays.push_back(delay);
    }
    facts.duration = static_cast<double>(sum) / 1000;
}

bool ReadScreen(IWICBitmapDecoder& decoder, PictureFacts& facts)
{
    ComPtr<IWICMetadataQueryReader> pReader;
    if (FAILED(decoder.GetMetadataQueryReader(pReader.Put())))
        return false;
    facts.width = WordOr(*pReader.Get(), L"/logscrdesc/Width", 0);
    facts.height = WordOr(*pReader.Get(), L"/logscrdesc/Height", 0);
    facts.rounds = RoundsOf(*pReader.Get());
    ReadDelays(decoder, facts);
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
/// Null when no codec knows the file.
ComPtr<IWICBitmapDecoder> Open(const std::wstring& path)
{
    ComPtr<IWICImagingFactory> pFactory;
    ComPtr<IWICBitmapDecoder> pDecoder;
    if (SUCCEEDED(
            CoCreateInstance(CLSID_WICImagingFactory2, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(pFactory.Put()))) &&
        FAILED(pFactory->CreateDecoderFromFilename(path.c_str(), nullptr, GENERIC_READ, WICDecodeMetadataCacheOnLoad,
                                                   pDecoder.Put())))
        return {};
    return pDecoder;
}
} // namespace

std::optional<PictureFacts> ReadPictureFacts(const std::wstring& path)
{
    const ComPtr<IWICBitmapDecoder> pDecoder = Open(path);
    GUID format{};
    PictureFacts facts;
    if (!pDecoder || FAILED(pDecoder->GetContainerFormat(&format)) || FAILED(pDecoder->GetFrameCount(&facts.frames)))
        return std::nullopt;
    facts.format = NameOf(format);
    const bool isGif = format == GUID_ContainerFormatGif;
    if (!(isGif ? ReadScreen(*pDecoder.Get(), facts) : ReadFirstFrame(*pDecoder.Get(), facts)))
        return std::nullopt;
    return facts;
}

bool CanBeDecoded(const std::wstring& path)
{
    constexpr UINT kMostBytes = 16; // of a pixel
    const ComPtr<IWICBitmapDecoder> pDecoder = Open(path);
    ComPtr<IWICBitmapFrameDecode> pFrame;
    UINT width = 0;
    UINT height = 0;
    if (!pDecoder || FAILED(pDecoder->GetFrame(0, pFrame.Put())) || FAILED(pFrame->GetSize(&width, &height)) ||
        width > kMaxSide)
        return false;
    std::vector<BYTE> row(std::size_t{width} * kMostBytes);
    const WICRect first{0, 0, static_cast<INT>(width), 1};
    const auto cb = static_cast<UINT>(row.size());
    return SUCCEEDED(pFrame->CopyPixels(&first, cb, cb, row.data()));
}
} // namespace qmx::host
