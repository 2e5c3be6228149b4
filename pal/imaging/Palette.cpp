#include "pal/imaging/Palette.h"

#include <algorithm>
#include <new>

namespace pal
{
namespace
{
constexpr UINT kMaxColours = 256;

bool IsGrey(WICColor colour)
{
    const UINT blue = colour & 0xFF;
    return (colour >> 8 & 0xFF) == blue && (colour >> 16 & 0xFF) == blue;
}
} // namespace

HRESULT Palette::InitializeCustom(WICColor* pColors, UINT count)
{
    if (pColors == nullptr || count == 0 || count > kMaxColours)
        return E_INVALIDARG;
    try
    {
        m_colours.assign(pColors, pColors + count);
        return S_OK;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
}

HRESULT Palette::InitializeFromPalette(IWICPalette* pPalette)
{
    if (pPalette == nullptr)
        return E_INVALIDARG;
    WICColor colours[kMaxColours];
    UINT count = 0;
    const HRESULT hr = pPalette->GetColors(kMaxColours, colours, &count);
    return SUCCEEDED(hr) ? InitializeCustom(colours, count) : hr;
}

HRESULT Palette::GetType(WICBitmapPaletteType* pType)
{
    if (pType == nullptr)
        return E_INVALIDARG;
    *pType = WICBitmapPaletteTypeCustom;
    return S_OK;
}

HRESULT Palette::GetColorCount(UINT* pCount)
{
    if (pCount == nullptr)
        return E_INVALIDARG;
    *pCount = static_cast<UINT>(m_colours.size());
    return S_OK;
}

HRESULT Palette::GetColors(UINT count, WICColor* pColors, UINT* pActual)
{
    if (pColors == nullptr || pActual == nullptr)
        return E_INVALIDARG;
    *pActual = std::min(count, static_cast<UINT>(m_colours.size()));
    std::copy_n(m_colours.begin(), *pActual, pColors);
    return S_OK;
}

template <class Test> HRESULT Palette::Answer(BOOL* pResult, Test test) const
{
    if (pResult == nullptr)
        return E_INVALIDARG;
    if (m_colours.empty())
        return WINCODEC_ERR_NOTINITIALIZED;
    *pResult = test() ? TRUE : FALSE;
    return S_OK;
}

HRESULT Palette::IsBlackWhite(BOOL* pResult)
{
    return Answer(pResult,
                  [this]
                  {
                      return m_colours.size() == 2 &&
                             std::all_of(m_colours.begin(), m_colours.end(),
                                         [](WICColor c) { return c == 0xFF000000U || c == 0xFFFFFFFFU; }) &&
                             m_colours[0] != m_colours[1];
                  });
}

HRESULT Palette::IsGrayscale(BOOL* pResult)
{
    return Answer(pResult, [this] { return std::all_of(m_colours.begin(), m_colours.end(), IsGrey); });
}

HRESULT Palette::HasAlpha(BOOL* pResult)
{
    return Answer(
        pResult,
        [this] { return std::any_of(m_colours.begin(), m_colours.end(), [](WICColor c) { return c >> 24 != 0xFF; }); });
}
} // namespace pal
