/// @file BitmapFrame.h
/// One frame of a picture file.
#pragma once

#include "pal/imaging/BitmapSource.h"
#include "pal/imaging/ImageCodec.h"

namespace pal
{
class BitmapFrame final : public BitmapSource<BitmapFrame, IWICBitmapFrameDecode, IWICBitmapSource>
{
public:
    /// @param size  of the frame, as the codec says
    BitmapFrame(std::shared_ptr<ImageCodec> pCodec, UINT index, const ImageSize& size)
        : m_pCodec(std::move(pCodec)), m_index(index), m_size(size)
    {
    }

    HRESULT STDMETHODCALLTYPE GetSize(UINT* pWidth, UINT* pHeight) override;
    HRESULT STDMETHODCALLTYPE GetMetadataQueryReader(IWICMetadataQueryReader** ppReader) override;
    HRESULT STDMETHODCALLTYPE GetColorContexts(UINT, IWICColorContext**, UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetThumbnail(IWICBitmapSource**) override { return WINCODEC_ERR_CODECNOTHUMBNAIL; }
    HRESULT CopyPart(const PixelPart& part, std::size_t stride, BYTE* pTarget);

private:
    const std::shared_ptr<ImageCodec> m_pCodec;
    const UINT m_index;
    const ImageSize m_size;
};
} // namespace pal
