/// @file BitmapSource.h
/// What all pictures of the Imaging Component have in common here: they are BGRA with straight alpha.
#pragma once

#include "pal/imaging/LargePages.h"
#include "pal/kernel/ComObject.h"

#include <wincodec.h>

#include <cstddef>
#include <memory>
#include <new>

namespace pal
{
/// A checked part of a picture: neither empty nor reaching outside.
struct PixelPart
{
    UINT x = 0;
    UINT y = 0;
    UINT width = 0;
    UINT height = 0;
};

/// Checks the arguments of CopyPixels() for a BGRA picture of @p width x @p height.
/// @param part  [out] the rectangle, or the whole picture when @p pRect is null
HRESULT CheckCopy(const WICRect* pRect, UINT width, UINT height, UINT stride, UINT cbBuffer, const BYTE* pBuffer,
                  PixelPart& part);

/// Working memory for @p count pixels that will all be written; not initialised. Throws std::bad_alloc.
inline std::unique_ptr<BYTE[]> TakePixels(std::size_t count)
{
    std::unique_ptr<BYTE[]> pPixels(new BYTE[count * 4]);
    ExpectWholeWrite(pPixels.get(), count * 4);
    return pPixels;
}

/// @tparam Derived  offers HRESULT CopyPart(const PixelPart&, std::size_t stride, BYTE* pTarget), which may throw
///                  std::bad_alloc; the other parameters are ComObject's
template <class Derived, class Primary, class... Bases>
class BitmapSource : public ComObject<Derived, Primary, Bases...>
{
public:
    HRESULT STDMETHODCALLTYPE GetPixelFormat(WICPixelFormatGUID* pFormat) override
    {
        if (pFormat == nullptr)
            return E_INVALIDARG;
        *pFormat = GUID_WICPixelFormat32bppBGRA;
        return S_OK;
    }
    /// The resolution that files state is not read.
    HRESULT STDMETHODCALLTYPE GetResolution(double* pDpiX, double* pDpiY) override
    {
        if (pDpiX == nullptr || pDpiY == nullptr)
            return E_INVALIDARG;
        *pDpiX = *pDpiY = 96;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE CopyPalette(IWICPalette*) override { return WINCODEC_ERR_PALETTEUNAVAILABLE; }
    HRESULT STDMETHODCALLTYPE CopyPixels(const WICRect* pRect, UINT stride, UINT cbBuffer, BYTE* pBuffer) override
    {
        try
        {
            UINT width = 0;
            UINT height = 0;
            PixelPart part;
            HRESULT hr = this->GetSize(&width, &height);
            if (SUCCEEDED(hr))
                hr = CheckCopy(pRect, width, height, stride, cbBuffer, pBuffer, part);
            return SUCCEEDED(hr) ? static_cast<Derived*>(this)->CopyPart(part, stride, pBuffer) : hr;
        }
        catch (const std::bad_alloc&)
        {
            return E_OUTOFMEMORY;
        }
    }

protected:
    ~BitmapSource() = default;
};
} // namespace pal
