/// @file SourcePtr.h
/// A picture that another one is made of.
#pragma once

#include <wincodec.h>

#include <memory>

namespace pal
{
struct SourceReleaser
{
    void operator()(IWICBitmapSource* p) const { p->Release(); }
};
using SourcePtr = std::unique_ptr<IWICBitmapSource, SourceReleaser>; // owns one reference

/// Takes a reference of its own on @p pSource, if its pixels are 32bppBGRA.
/// @retval WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT  they are not
inline HRESULT TakeBgraSource(IWICBitmapSource* pSource, SourcePtr& pTaken)
{
    if (pSource == nullptr)
        return E_INVALIDARG;
    WICPixelFormatGUID format = GUID_NULL;
    const HRESULT hr = pSource->GetPixelFormat(&format);
    if (FAILED(hr))
        return hr;
    if (format != GUID_WICPixelFormat32bppBGRA)
        return WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT;
    pSource->AddRef();
    pTaken.reset(pSource);
    return S_OK;
}

/// Copies a part that is known to lie inside the source.
inline HRESULT CopyFrom(IWICBitmapSource& source, UINT x, UINT y, UINT width, UINT height, std::size_t stride,
                        BYTE* pTarget)
{
    const WICRect rect{static_cast<INT>(x), static_cast<INT>(y), static_cast<INT>(width), static_cast<INT>(height)};
    const std::size_t cb = (height - std::size_t{1}) * stride + std::size_t{width} * 4;
    return source.CopyPixels(&rect, static_cast<UINT>(stride), static_cast<UINT>(cb), pTarget);
}
} // namespace pal
