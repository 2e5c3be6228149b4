#include "pal/graphics/TextLayout.h"

#include "pal/kernel/PathText.h"

#include <dwrite_3.h>

#include <algorithm>
#include <cmath>
#include <new>

namespace pal
{
namespace
{
// Pango counts the width of a paragraph in 1/1024 pixel and 31 bits; glyphs are about an em wide at most.
constexpr double kMaxParagraphEms = 2'000'000; // pixels: characters times font size

class FontCollection final : public ComObject<FontCollection, IDWriteFontCollection>
{
};

bool IsSize(float value)
{
    return value >= 0 && std::isfinite(value);
}

bool IsTooLong(std::wstring_view text, float fontSize)
{
    const auto isBreak = [](wchar_t c) { return c == L'\n' || c == L'\r' || c == 0x2029; };
    for (auto at = text.begin(); at != text.end();)
    {
        const auto end = std::find_if(at, text.end(), isBreak);
        if (static_cast<double>(end - at) * fontSize > kMaxParagraphEms)
            return true;
        at = end == text.end() ? end : end + 1;
    }
    return false;
}

class TextFactory final : public ComObject<TextFactory, IDWriteFactory4, IDWriteFactory>
{
public:
    explicit TextFactory(std::shared_ptr<FontService> pFonts) : m_pFonts(std::move(pFonts)) {}

    HRESULT STDMETHODCALLTYPE GetSystemFontCollection(IDWriteFontCollection** ppFontCollection, BOOL) override
    {
        if (ppFontCollection == nullptr)
            return E_POINTER;
        *ppFontCollection = new (std::nothrow) FontCollection;
        return *ppFontCollection != nullptr ? S_OK : E_OUTOFMEMORY;
    }
    HRESULT STDMETHODCALLTYPE CreateTextFormat(const WCHAR* familyName, IDWriteFontCollection*,
                                               DWRITE_FONT_WEIGHT fontWeight, DWRITE_FONT_STYLE fontStyle,
                                               DWRITE_FONT_STRETCH fontStretch, FLOAT fontSize, const WCHAR* localeName,
                                               IDWriteTextFormat** ppTextFormat) override
    try
    {
        if (ppTextFormat == nullptr)
            return E_POINTER;
        *ppTextFormat = nullptr;
        if (familyName == nullptr || localeName == nullptr || fontWeight < 1 || fontWeight > 999 ||
            fontStyle < DWRITE_FONT_STYLE_NORMAL || fontStyle > DWRITE_FONT_STYLE_ITALIC ||
            fontStretch < DWRITE_FONT_STRETCH_ULTRA_CONDENSED || fontStretch > DWRITE_FONT_STRETCH_ULTRA_EXPANDED ||
            !(fontSize > 0 && fontSize <= kMaxFontSize))
            return E_INVALIDARG;
        TextStyle style;
        style.family = ToPathBytes(familyName);
        style.weight = fontWeight;
        style.style = fontStyle;
        style.stretch = fontStretch;
        style.size = fontSize;
        style.locale = ToPathBytes(localeName);
        *ppTextFormat = new TextFormat(std::move(style));
        return S_OK;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
    HRESULT STDMETHODCALLTYPE CreateTextLayout(const WCHAR* pString, UINT32 stringLength,
                                               IDWriteTextFormat* pTextFormat, FLOAT maxWidth, FLOAT maxHeight,
                                               IDWriteTextLayout** ppTextLayout) override
    try
    {
        if (ppTextLayout == nullptr)
            return E_POINTER;
        *ppTextLayout = nullptr;
        const auto* const pFormat = dynamic_cast<TextFormat*>(pTextFormat);
        if (pFormat == nullptr || (pString == nullptr && stringLength != 0) || !IsSize(maxWidth) || !IsSize(maxHeight))
            return E_INVALIDARG;
        const std::wstring_view text(pString, stringLength);
        if (IsTooLong(text, pFormat->Style().size))
            return E_INVALIDARG;
        if (!HasFonts())
            return DWRITE_E_NOFONT;
        *ppTextLayout = new TextLayout(m_pFonts, pFormat->Style(), text, maxWidth, maxHeight);
        return S_OK;
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }

private:
    bool HasFonts()
    {
        const auto lock = m_pFonts->Lock();
        return m_pFonts->HasFonts();
    }

    std::shared_ptr<FontService> m_pFonts;
};
} // namespace
} // namespace pal

extern "C" HRESULT DWriteCreateFactory(DWRITE_FACTORY_TYPE, REFIID iid, IUnknown** ppFactory)
try
{
    if (ppFactory == nullptr)
        return E_POINTER;
    *ppFactory = nullptr;
    std::shared_ptr<pal::FontService> pFonts = pal::FontService::Get();
    auto* const pFactory = pFonts != nullptr ? new (std::nothrow) pal::TextFactory(std::move(pFonts)) : nullptr;
    if (pFactory == nullptr)
        return E_OUTOFMEMORY;
    const HRESULT hr = pFactory->QueryInterface(iid, reinterpret_cast<void**>(ppFactory));
    pFactory->Release();
    return hr;
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}
