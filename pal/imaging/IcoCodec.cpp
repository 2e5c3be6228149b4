#include "pal/imaging/IcoCodec.h"

#include "pal/imaging/ImageLimits.h"
#include "pal/imaging/PngCodec.h"

#include <algorithm>

namespace pal
{
namespace
{
constexpr std::size_t kHeader = 6;
constexpr std::size_t kEntry = 16;
constexpr UINT kPngBits = 32; // such entries are made for their alpha
} // namespace

HRESULT IcoCodec::Open(const ImageBytes& bytes, ImageCodecPtr& pCodec)
{
    auto pIcon = std::make_unique<IcoCodec>();
    const UINT count = std::min(bytes.Little16(4), kMaxIconEntries);
    HRESULT failure = WINCODEC_ERR_BADHEADER;
    for (UINT i = 0; i < count && bytes.Has(kHeader + i * kEntry, kEntry); ++i)
    {
        const std::size_t at = kHeader + i * kEntry;
        const ImageBytes data = bytes.Part(bytes.Little32(at + 12), bytes.Little32(at + 8));
        Entry entry;
        HRESULT hr = S_OK;
        if (IdentifyImage(data) == ImageKind::Png)
        {
            entry.bits = kPngBits;
            hr = PngCodec::Open(data, entry.pPng);
            if (SUCCEEDED(hr))
                hr = entry.pPng->GetFrameSize(0, entry.size);
        }
        else
        {
            hr = entry.dib.ReadHeader(data, 0, true);
            entry.bits = entry.dib.Bits();
            entry.size = entry.dib.Size();
        }
        if (SUCCEEDED(hr))
            pIcon->m_entries.push_back(std::move(entry));
        else
            failure = hr;
    }
    if (pIcon->m_entries.empty())
        return failure;
    std::stable_sort(pIcon->m_entries.begin(), pIcon->m_entries.end(),
                     [](const Entry& a, const Entry& b)
                     {
                         const auto area = [](const Entry& e) { return std::uint64_t{e.size.width} * e.size.height; };
                         return area(a) != area(b) ? area(a) > area(b) : a.bits > b.bits;
                     });
    pCodec = std::move(pIcon);
    return S_OK;
}

HRESULT IcoCodec::GetFrameSize(UINT frame, ImageSize& size)
{
    size = m_entries[frame].size;
    return S_OK;
}

HRESULT IcoCodec::Decode(UINT frame, BYTE* pTarget, std::size_t stride)
{
    const Entry& entry = m_entries[frame];
    return entry.pPng ? entry.pPng->Decode(0, pTarget, stride) : entry.dib.Decode(pTarget, stride);
}
} // namespace pal
