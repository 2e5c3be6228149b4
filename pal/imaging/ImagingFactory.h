/// @file ImagingFactory.h
/// Where the objects of the Imaging Component come from.
#pragma once

#include "pal/kernel/ComObject.h"

#include <wincodec.h>

namespace pal
{
class ImagingFactory final : public ComObject<ImagingFactory, IWICImagingFactory>
{
public:
    HRESULT STDMETHODCALLTYPE CreateDecoderFromFilename(LPCWSTR fileName, const GUID* pVendor, DWORD access,
                                                        WICDecodeOptions options,
                                                        IWICBitmapDecoder** ppDecoder) override;
    HRESULT STDMETHODCALLTYPE CreateDecoderFromStream(IStream*, const GUID*, WICDecodeOptions,
                                                      IWICBitmapDecoder**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreateDecoderFromFileHandle(ULONG_PTR, const GUID*, WICDecodeOptions,
                                                          IWICBitmapDecoder**) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreateComponentInfo(REFCLSID, IWICComponentInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateDecoder(REFGUID, const GUID*, IWICBitmapDecoder**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateEncoder(REFGUID, const GUID*, IWICBitmapEncoder**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreatePalette(IWICPalette** ppPalette) override;
    HRESULT STDMETHODCALLTYPE CreateFormatConverter(IWICFormatConverter** ppConverter) override;
    HRESULT STDMETHODCALLTYPE CreateBitmapScaler(IWICBitmapScaler**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateBitmapClipper(IWICBitmapClipper**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateBitmapFlipRotator(IWICBitmapFlipRotator** ppRotator) override;
};
} // namespace pal
