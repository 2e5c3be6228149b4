#include "pal/imaging/BitmapFrame.h"

#include "pal/imaging/MetadataQueryReader.h"

#include <cstring>

namespace pal
{
HRESULT BitmapFrame::GetSize(UINT* pWidth, UINT* pHeight)
{
    if (pWidth == nullptr || pHeight == nullptr)
        return E_INVALIDARG;
    *pWidth = m_size.width;
    *pHeight = m_size.height;
    return S_OK;
}

HRESULT BitmapFrame::GetMetadataQueryReader(IWICMetadataQueryReader** ppReader)
{
    if (ppReader == nullptr)
        return E_INVALIDARG;
    *ppReader = new (std::nothrow) MetadataQueryReader(m_pCodec, m_index);
    return *ppReader != nullptr ? S_OK : E_OUTOFMEMORY;
}

/// The whole picture goes straight where it is wanted; for a part all of it has to be decoded beside.
HRESULT BitmapFrame::CopyPart(const PixelPart& part, std::size_t stride, BYTE* pTarget)
{
    if (part.width == m_size.width && part.height == m_size.height)
    {
        ExpectWholeWrite(pTarget, (part.height - std::size_t{1}) * stride + std::size_t{part.width} * 4);
        return m_pCodec->Decode(m_index, pTarget, stride);
    }
    const std::size_t cbRow = std::size_t{m_size.width} * 4;
    const std::unique_ptr<BYTE[]> pWhole = TakePixels(std::size_t{m_size.width} * m_size.height);
    const HRESULT hr = m_pCodec->Decode(m_index, pWhole.get(), cbRow);
    for (UINT y = 0; SUCCEEDED(hr) && y < part.height; ++y)
        std::memcpy(pTarget + y * stride, pWhole.get() + (part.y + y) * cbRow + std::size_t{part.x} * 4,
                    std::size_t{part.width} * 4);
    return hr;
}
} // namespace pal
