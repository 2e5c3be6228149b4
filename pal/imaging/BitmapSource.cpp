#include "pal/imaging/BitmapSource.h"

namespace pal
{
HRESULT CheckCopy(const WICRect* pRect, UINT width, UINT height, UINT stride, UINT cbBuffer, const BYTE* pBuffer,
                  PixelPart& part)
{
    part = {0, 0, width, height};
    if (pRect != nullptr)
    {
        const auto fits = [](INT first, INT count, UINT limit)
        {
            return first >= 0 && count > 0 && static_cast<UINT>(first) <= limit &&
                   static_cast<UINT>(count) <= limit - static_cast<UINT>(first);
        };
        if (!fits(pRect->X, pRect->Width, width) || !fits(pRect->Y, pRect->Height, height))
            return E_INVALIDARG;
        part = {static_cast<UINT>(pRect->X), static_cast<UINT>(pRect->Y), static_cast<UINT>(pRect->Width),
                static_cast<UINT>(pRect->Height)};
    }
    if (pBuffer == nullptr || part.width == 0 || part.height == 0)
        return E_INVALIDARG;
    const std::uint64_t cbRow = std::uint64_t{part.width} * 4;
    constexpr UINT kMaxStride = 0x7FFFFFFF; // libraries count in int
    if (stride < cbRow || stride > kMaxStride)
        return E_INVALIDARG;
    return (part.height - std::uint64_t{1}) * stride + cbRow <= cbBuffer ? S_OK : WINCODEC_ERR_INSUFFICIENTBUFFER;
}
} // namespace pal
