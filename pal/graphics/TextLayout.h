/// @file TextLayout.h
/// Text set in lines, over Pango.
#pragma once

#include "pal/graphics/FontService.h"
#include "pal/graphics/PixelRect.h"
#include "pal/graphics/TextFormat.h"
#include "pal/kernel/ComObject.h"

#include <dwrite.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace pal
{
/// Pango breaks the lines and shapes them; where they stand is computed here. The drawn text is kept as a picture, so
/// that a text which moves costs no more than laying that picture over the target, and its letters keep their
/// distances.
class TextLayout final : public ComObject<TextLayout, IDWriteTextLayout, IDWriteTextFormat>
{
public:
    /// Throws std::bad_alloc.
    TextLayout(std::shared_ptr<FontService> pFonts, TextStyle style, std::wstring_view text, float width, float height);
    ~TextLayout();

    HRESULT STDMETHODCALLTYPE SetTextAlignment(DWRITE_TEXT_ALIGNMENT textAlignment) override;
    HRESULT STDMETHODCALLTYPE SetUnderline(BOOL hasUnderline, DWRITE_TEXT_RANGE textRange) override;
    HRESULT STDMETHODCALLTYPE GetMetrics(DWRITE_TEXT_METRICS* pTextMetrics) override;

    /// A colour of three times 8 bits, 0x00RRGGBB, and how much of it.
    struct Ink
    {
        std::uint32_t color = 0;
        double alpha = 1; ///< 0..1
    };
    /// Draws the text with the corner of its box at @p x, @p y. @param pTarget  a surface without a transform
    /// @param bounds  of the surface
    /// @return what may have changed
    PixelRect Draw(cairo_t* pTarget, const PixelRect& bounds, float x, float y, const Ink& ink);

private:
    struct Line
    {
        PangoLayoutLine* pLine = nullptr; // owned by the layout
        double x = 0;                     ///< left edge in the box, pixels
        double baseline = 0;              ///< below the box's top, pixels
        double width = 0;                 ///< without white space at the end
        double fullWidth = 0;
        bool hasColor = false; ///< some of its glyphs are pictures
    };

    void Create(std::wstring_view text);
    void Arrange();
    Line Measure(PangoLayoutLine* pLine, double& ascent, double& descent);
    double LeftOf(double lineWidth) const;
    void DrawLines(cairo_t* pTarget);
    PixelRect FindInk() const;
    cairo_surface_t* FindPicture(std::uint32_t color) const;
    cairo_surface_t* MakePicture(std::uint32_t color, std::size_t maxPictures);
    void DropPictures();

    std::shared_ptr<FontService> m_pFonts;
    TextStyle m_style;
    float m_width;
    float m_height;
    std::vector<std::uint32_t> m_offsets; ///< byte in the UTF-8 text of each character and of the end
    std::vector<bool> m_underlined;       ///< for each character; empty while none is
    PangoLayout* m_pLayout = nullptr;     // owns one reference
    bool m_arranged = false;
    std::vector<Line> m_lines;
    double m_left = 0;     ///< of the leftmost line
    double m_lineTops = 0; ///< sum of the lines' heights
    /// The drawn text. A text and its shadow are the same layout in two colours.
    struct Picture
    {
        cairo_surface_t* pSurface; // owns one reference
        std::uint32_t color;
    };
    std::vector<Picture> m_pictures; ///< oldest first
    PixelRect
        m_ink; ///< what the lines may cover, and the pictures' place: from the leftmost line and the first baseline
};
} // namespace pal
