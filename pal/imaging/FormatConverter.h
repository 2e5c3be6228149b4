/// @file FormatConverter.h
/// Conversion between pixel formats. Every picture of this layer is 32bppBGRA, so that is the one format it takes and
/// gives: it passes pixels on as they are.
#pragma once

#include "pal/imaging/BitmapSource.h"
#include "pal/imaging/SourcePtr.h"

namespace pal
{
class FormatConverter final : public BitmapSource<FormatConverter, IWICFormatConverter, IWICBitmapSource>
{
public:
    HRESULT STDMETHODCALLTYPE GetSize(UINT* pWidth, UINT* pHeight) override;
    /// Dithering, palette and threshold have nothing to act on.
    /// @retval WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT  another format on either side
    HRESULT STDMETHODCALLTYPE Initialize(IWICBitmapSource* pSource, REFWICPixelFormatGUID format, WICBitmapDitherType,
                                         IWICPalette*, double, WICBitmapPaletteType) override;
    HRESULT STDMETHODCALLTYPE CanConvert(REFWICPixelFormatGUID from, REFWICPixelFormatGUID to,
                                         BOOL* pCanConvert) override;
    HRESULT CopyPart(const PixelPart& part, std::size_t stride, BYTE* pTarget);

private:
    SourcePtr m_pSource; ///< null until initialised
};
} // namespace pal
