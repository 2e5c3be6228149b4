/// @file FlipRotator.h
/// A picture turned by quarter turns and flipped.
#pragma once

#include "pal/imaging/BitmapSource.h"
#include "pal/imaging/SourcePtr.h"

namespace pal
{
/// Turns first, clockwise, then flips. Half turns and flips need no memory, quarter turns that of the part asked for.
class FlipRotator final : public BitmapSource<FlipRotator, IWICBitmapFlipRotator, IWICBitmapSource>
{
public:
    HRESULT STDMETHODCALLTYPE GetSize(UINT* pWidth, UINT* pHeight) override;
    HRESULT STDMETHODCALLTYPE Initialize(IWICBitmapSource* pSource, WICBitmapTransformOptions options) override;
    HRESULT CopyPart(const PixelPart& part, std::size_t stride, BYTE* pTarget);

private:
    bool IsQuarterTurn() const { return (m_options & WICBitmapTransformRotate90) != 0; }
    bool IsHalfTurn() const { return (m_options & WICBitmapTransformRotate270) == WICBitmapTransformRotate180; }
    bool Flips(WICBitmapTransformOptions flip) const { return (m_options & flip) != 0; }
    PixelPart SourcePart(PixelPart part) const;
    HRESULT CopyTurned(const PixelPart& part, std::size_t stride, BYTE* pTarget);

    SourcePtr m_pSource; ///< null until initialised
    UINT m_options = 0;
    UINT m_width = 0; ///< of the source
    UINT m_height = 0;
};
} // namespace pal
