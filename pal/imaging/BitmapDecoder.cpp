#include "pal/imaging/BitmapDecoder.h"

#include "pal/imaging/BitmapFrame.h"
#include "pal/imaging/MetadataQueryReader.h"

#include <new>

namespace pal
{
HRESULT BitmapDecoder::GetContainerFormat(GUID* pFormat)
{
    if (pFormat == nullptr)
        return E_INVALIDARG;
    *pFormat = m_pCodec->ContainerFormat();
    return S_OK;
}

HRESULT BitmapDecoder::CopyPalette(IWICPalette* pPalette)
{
    if (pPalette == nullptr)
        return E_INVALIDARG;
    try
    {
        std::vector<WICColor> colours = m_pCodec->GlobalPalette();
        return colours.empty() ? WINCODEC_ERR_PALETTEUNAVAILABLE
                               : pPalette->InitializeCustom(colours.data(), static_cast<UINT>(colours.size()));
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
}

HRESULT BitmapDecoder::GetMetadataQueryReader(IWICMetadataQueryReader** ppReader)
{
    if (ppReader == nullptr)
        return E_INVALIDARG;
    *ppReader = nullptr;
    if (m_pCodec->ContainerFormat() != GUID_ContainerFormatGif)
        return WINCODEC_ERR_UNSUPPORTEDOPERATION; // the other formats' metadata belong to their frames
    *ppReader = new (std::nothrow) MetadataQueryReader(m_pCodec, std::nullopt);
    return *ppReader != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT BitmapDecoder::GetFrameCount(UINT* pCount)
{
    if (pCount == nullptr)
        return E_INVALIDARG;
    *pCount = m_pCodec->FrameCount();
    return S_OK;
}

HRESULT BitmapDecoder::GetFrame(UINT index, IWICBitmapFrameDecode** ppFrame)
{
    if (ppFrame == nullptr)
        return E_INVALIDARG;
    *ppFrame = nullptr;
    if (index >= m_pCodec->FrameCount())
        return WINCODEC_ERR_FRAMEMISSING;
    try
    {
        ImageSize size;
        const HRESULT hr = m_pCodec->GetFrameSize(index, size);
        if (SUCCEEDED(hr))
            *ppFrame = new BitmapFrame(m_pCodec, index, size);
        return hr;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
}
} // namespace pal
