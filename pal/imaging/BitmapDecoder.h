/// @file BitmapDecoder.h
/// An open picture file.
#pragma once

#include "pal/imaging/ImageCodec.h"
#include "pal/kernel/ComObject.h"

namespace pal
{
class BitmapDecoder final : public ComObject<BitmapDecoder, IWICBitmapDecoder>
{
public:
    explicit BitmapDecoder(std::shared_ptr<ImageCodec> pCodec) : m_pCodec(std::move(pCodec)) {}

    HRESULT STDMETHODCALLTYPE QueryCapability(IStream*, DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Initialize(IStream*, WICDecodeOptions) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetContainerFormat(GUID* pFormat) override;
    HRESULT STDMETHODCALLTYPE GetDecoderInfo(IWICBitmapDecoderInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyPalette(IWICPalette* pPalette) override;
    HRESULT STDMETHODCALLTYPE GetMetadataQueryReader(IWICMetadataQueryReader** ppReader) override;
    HRESULT STDMETHODCALLTYPE GetPreview(IWICBitmapSource**) override { return WINCODEC_ERR_UNSUPPORTEDOPERATION; }
    HRESULT STDMETHODCALLTYPE GetColorContexts(UINT, IWICColorContext**, UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetThumbnail(IWICBitmapSource**) override { return WINCODEC_ERR_CODECNOTHUMBNAIL; }
    HRESULT STDMETHODCALLTYPE GetFrameCount(UINT* pCount) override;
    HRESULT STDMETHODCALLTYPE GetFrame(UINT index, IWICBitmapFrameDecode** ppFrame) override;

private:
    const std::shared_ptr<ImageCodec> m_pCodec; ///< shared with the frames, which may outlive the decoder
};
} // namespace pal
