/// @file Palette.h
/// A list of colours.
#pragma once

#include "pal/kernel/ComObject.h"

#include <wincodec.h>

#include <vector>

namespace pal
{
/// Custom palettes only: predefined ones, and those chosen for a picture, are E_NOTIMPL.
class Palette final : public ComObject<Palette, IWICPalette>
{
public:
    HRESULT STDMETHODCALLTYPE InitializePredefined(WICBitmapPaletteType, BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InitializeCustom(WICColor* pColors, UINT count) override;
    HRESULT STDMETHODCALLTYPE InitializeFromBitmap(IWICBitmapSource*, UINT, BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InitializeFromPalette(IWICPalette* pPalette) override;
    HRESULT STDMETHODCALLTYPE GetType(WICBitmapPaletteType* pType) override;
    HRESULT STDMETHODCALLTYPE GetColorCount(UINT* pCount) override;
    HRESULT STDMETHODCALLTYPE GetColors(UINT count, WICColor* pColors, UINT* pActual) override;
    HRESULT STDMETHODCALLTYPE IsBlackWhite(BOOL* pResult) override;
    HRESULT STDMETHODCALLTYPE IsGrayscale(BOOL* pResult) override;
    HRESULT STDMETHODCALLTYPE HasAlpha(BOOL* pResult) override;

private:
    template <class Test> HRESULT Answer(BOOL* pResult, Test test) const;

    std::vector<WICColor> m_colours;
};
} // namespace pal
