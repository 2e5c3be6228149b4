/// @file TextFormat.h
/// How a text is set.
#pragma once

#include "pal/kernel/ComObject.h"

#include <dwrite.h>

#include <string>

namespace pal
{
inline constexpr float kMaxFontSize = 32'767; ///< pixels

/// What a layout takes over from the format it is made with.
struct TextStyle
{
    std::string family; ///< UTF-8
    int weight = 400;
    DWRITE_FONT_STYLE style = DWRITE_FONT_STYLE_NORMAL;
    DWRITE_FONT_STRETCH stretch = DWRITE_FONT_STRETCH_NORMAL;
    float size = 0;     ///< pixels
    std::string locale; ///< language tag
    DWRITE_TEXT_ALIGNMENT alignment = DWRITE_TEXT_ALIGNMENT_LEADING;
};

inline bool IsAlignment(DWRITE_TEXT_ALIGNMENT alignment)
{
    return alignment >= DWRITE_TEXT_ALIGNMENT_LEADING && alignment <= DWRITE_TEXT_ALIGNMENT_JUSTIFIED;
}

class TextFormat final : public ComObject<TextFormat, IDWriteTextFormat>
{
public:
    explicit TextFormat(TextStyle style) : m_style(std::move(style)) {}
    HRESULT STDMETHODCALLTYPE SetTextAlignment(DWRITE_TEXT_ALIGNMENT textAlignment) override
    {
        if (!IsAlignment(textAlignment))
            return E_INVALIDARG;
        m_style.alignment = textAlignment;
        return S_OK;
    }
    const TextStyle& Style() const { return m_style; }

private:
    TextStyle m_style;
};
} // namespace pal
