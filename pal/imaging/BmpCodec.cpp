#include "pal/imaging/BmpCodec.h"

namespace pal
{
namespace
{
constexpr std::size_t kFileHeader = 14;
constexpr std::size_t kPixelOffset = 10; // where the file header says it
} // namespace

HRESULT BmpCodec::Open(const ImageBytes& bytes, ImageCodecPtr& pCodec)
{
    auto pBmp = std::make_unique<BmpCodec>();
    const std::size_t offset = bytes.Little32(kPixelOffset);
    const HRESULT hr = pBmp->m_dib.ReadHeader(bytes.Part(kFileHeader, bytes.Size()),
                                              offset > kFileHeader ? offset - kFileHeader : 0, false);
    if (SUCCEEDED(hr))
        pCodec = std::move(pBmp);
    return hr;
}

HRESULT BmpCodec::GetFrameSize(UINT, ImageSize& size)
{
    size = m_dib.Size();
    return S_OK;
}
} // namespace pal
