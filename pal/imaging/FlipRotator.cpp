#include "pal/imaging/FlipRotator.h"

#include "companions/pixelutility/kernels/TurnBgra.h"

#include <algorithm>

namespace pal
{
namespace
{
/// Top and bottom change places.
void FlipRows(BYTE* pFirst, std::size_t stride, const PixelPart& size)
{
    for (UINT y = 0; y < size.height / 2; ++y)
    {
        BYTE* const pRow = pFirst + y * stride;
        std::swap_ranges(pRow, pRow + std::size_t{size.width} * 4, pFirst + (size.height - 1 - y) * stride);
    }
}

/// Left and right change places.
void MirrorRows(BYTE* pFirst, std::size_t stride, const PixelPart& size)
{
    const std::unique_ptr<BYTE[]> pCopy = TakePixels(size.width);
    for (UINT y = 0; y < size.height; ++y)
    {
        BYTE* const pRow = pFirst + y * stride;
        std::copy_n(pRow, std::size_t{size.width} * 4, pCopy.get());
        qmx::kernels::MirrorBgra(pCopy.get(), pRow, size.width);
    }
}
} // namespace

HRESULT FlipRotator::GetSize(UINT* pWidth, UINT* pHeight)
{
    if (!m_pSource)
        return WINCODEC_ERR_NOTINITIALIZED;
    if (pWidth == nullptr || pHeight == nullptr)
        return E_INVALIDARG;
    *pWidth = IsQuarterTurn() ? m_height : m_width;
    *pHeight = IsQuarterTurn() ? m_width : m_height;
    return S_OK;
}

HRESULT FlipRotator::Initialize(IWICBitmapSource* pSource, WICBitmapTransformOptions options)
{
    constexpr UINT kKnown =
        WICBitmapTransformRotate270 | WICBitmapTransformFlipHorizontal | WICBitmapTransformFlipVertical;
    if ((options & ~kKnown) != 0)
        return E_INVALIDARG;
    SourcePtr pTaken;
    HRESULT hr = TakeBgraSource(pSource, pTaken);
    UINT width = 0;
    UINT height = 0;
    if (SUCCEEDED(hr))
        hr = pTaken->GetSize(&width, &height);
    if (FAILED(hr))
        return hr;
    m_pSource = std::move(pTaken);
    m_options = options;
    m_width = width;
    m_height = height;
    return S_OK;
}

/// Where the pixels of @p part come from.
PixelPart FlipRotator::SourcePart(PixelPart part) const
{
    const UINT width = IsQuarterTurn() ? m_height : m_width;
    const UINT height = IsQuarterTurn() ? m_width : m_height;
    if (Flips(WICBitmapTransformFlipHorizontal))
        part.x = width - part.x - part.width;
    if (Flips(WICBitmapTransformFlipVertical))
        part.y = height - part.y - part.height;
    switch (m_options & WICBitmapTransformRotate270)
    {
    case WICBitmapTransformRotate90:
        return {part.y, m_height - part.x - part.width, part.height, part.width};
    case WICBitmapTransformRotate180:
        return {m_width - part.x - part.width, m_height - part.y - part.height, part.width, part.height};
    case WICBitmapTransformRotate270:
        return {m_width - part.y - part.height, part.x, part.height, part.width};
    default:
        return part;
    }
}

HRESULT FlipRotator::CopyPart(const PixelPart& part, std::size_t stride, BYTE* pTarget)
{
    if (IsQuarterTurn())
        return CopyTurned(part, stride, pTarget);
    const PixelPart from = SourcePart(part);
    const HRESULT hr = CopyFrom(*m_pSource, from.x, from.y, from.width, from.height, stride, pTarget);
    if (FAILED(hr))
        return hr;
    if (Flips(WICBitmapTransformFlipVertical) != IsHalfTurn())
        FlipRows(pTarget, stride, part);
    if (Flips(WICBitmapTransformFlipHorizontal) != IsHalfTurn())
        MirrorRows(pTarget, stride, part);
    return S_OK;
}

/// A quarter turn is an exchange of rows and columns that takes the rows of one side from the bottom up.
HRESULT FlipRotator::CopyTurned(const PixelPart& part, std::size_t stride, BYTE* pTarget)
{
    const PixelPart from = SourcePart(part);
    const std::size_t cbRow = std::size_t{from.width} * 4;
    const std::unique_ptr<BYTE[]> pSource = TakePixels(std::size_t{from.width} * from.height);
    const HRESULT hr = CopyFrom(*m_pSource, from.x, from.y, from.width, from.height, cbRow, pSource.get());
    if (FAILED(hr))
        return hr;
    const bool isClockwise = (m_options & WICBitmapTransformRotate270) == WICBitmapTransformRotate90;
    const bool sourceUp = isClockwise != Flips(WICBitmapTransformFlipHorizontal);
    const bool targetUp = !isClockwise != Flips(WICBitmapTransformFlipVertical);
    const auto step = static_cast<std::ptrdiff_t>(stride);
    BYTE* const pFirst = targetUp ? pTarget + (part.height - 1) * stride : pTarget;
    constexpr UINT kBand = 32; // rows whose pixels fill cache lines of the target together
    for (UINT row = 0; row < from.height; row += kBand)
    {
        const UINT count = std::min(kBand, from.height - row);
        const BYTE* const pRow = pSource.get() + (sourceUp ? from.height - 1 - row : row) * cbRow;
        const auto cbStep = static_cast<std::ptrdiff_t>(cbRow);
        qmx::kernels::TransposeBgra(pRow, sourceUp ? -cbStep : cbStep, pFirst + std::size_t{row} * 4,
                                    targetUp ? -step : step, from.width, count);
    }
    return S_OK;
}
} // namespace pal
