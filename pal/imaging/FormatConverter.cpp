#include "pal/imaging/FormatConverter.h"

namespace pal
{
HRESULT FormatConverter::GetSize(UINT* pWidth, UINT* pHeight)
{
    return m_pSource ? m_pSource->GetSize(pWidth, pHeight) : WINCODEC_ERR_NOTINITIALIZED;
}

HRESULT FormatConverter::Initialize(IWICBitmapSource* pSource, REFWICPixelFormatGUID format, WICBitmapDitherType,
                                    IWICPalette*, double, WICBitmapPaletteType)
{
    return format == GUID_WICPixelFormat32bppBGRA ? TakeBgraSource(pSource, m_pSource)
                                                  : WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT;
}

HRESULT FormatConverter::CanConvert(REFWICPixelFormatGUID from, REFWICPixelFormatGUID to, BOOL* pCanConvert)
{
    if (pCanConvert == nullptr)
        return E_INVALIDARG;
    *pCanConvert = from == GUID_WICPixelFormat32bppBGRA && to == from ? TRUE : FALSE;
    return S_OK;
}

HRESULT FormatConverter::CopyPart(const PixelPart& part, std::size_t stride, BYTE* pTarget)
{
    return CopyFrom(*m_pSource, part.x, part.y, part.width, part.height, stride, pTarget);
}
} // namespace pal
