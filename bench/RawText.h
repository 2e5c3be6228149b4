/// @file RawText.h
/// What a careful program does with Pango and Cairo alone: layouts are set once, every frame is cleared, drawn and
/// copied out.
#pragma once

#include <pango/pangocairo.h>

#include <cstdint>
#include <string>
#include <vector>

namespace qmx::bench
{
class RawText
{
public:
    RawText(int width, int height);
    ~RawText();
    RawText(const RawText&) = delete;
    RawText& operator=(const RawText&) = delete;

    /// @param size  pixels to the em. @return number of the layout
    std::size_t AddLayout(const std::string& utf8, const std::string& family, double size, bool bold);
    double WidthOf(std::size_t layout) const;
    double HeightOf(std::size_t layout) const;

    void Clear();
    void FillBox(double x, double y, double width, double height, std::uint32_t color, double alpha);
    void Draw(std::size_t layout, double x, double y, std::uint32_t color, double alpha);
    /// Copies the picture. @return premultiplied BGRA rows without padding, kept until the next call
    const std::vector<std::uint8_t>& Copy();

private:
    void SetInk(std::uint32_t color, double alpha);

    int m_width;
    int m_height;
    cairo_surface_t* m_pSurface; // each of these is owned
    cairo_t* m_pDrawing;
    PangoFontMap* m_pFonts;
    std::vector<PangoLayout*> m_layouts;
    std::vector<std::uint8_t> m_copy;
};
} // namespace qmx::bench
