/// @file Paint.h
/// What a fill looks like at every device pixel.
#pragma once

#include "companions/swfrenderer/Bitmap.h"
#include "companions/swfrenderer/Colour.h"
#include "companions/swfrenderer/Shape.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace swf
{
/// One fill, ready for drawing. Kept and set up again, so that its table is taken once.
class CPaint
{
public:
    void SetSolid(const std::array<float, 4>& rgba);
    /// @param toDevice  from the shape's twips to device pixels
    /// @param pBitmap   borrowed until the next Set…(); null for a fill that is no bitmap or has none: nothing shows
    void SetFill(const FillStyle& fill, const Matrix& toDevice, const ColourTransform& colours, const Bitmap* pBitmap);

    bool IsSolid() const { return m_kind == FillKind::Solid; }
    std::uint32_t Solid() const { return m_solid; }
    /// Premultiplied colours of @p n pixels of row @p y from @p x on.
    void Fetch(int x, int y, int n, std::uint32_t* pOut) const;

private:
    void SetGradient(const FillStyle& fill, const ColourTransform& colours);
    std::uint32_t TableColour(double t) const;
    void FetchLinear(double u, double du, int n, std::uint32_t* pOut) const;
    void FetchRadial(double u, double v, int n, std::uint32_t* pOut) const;
    void FetchNearest(double u, double v, int n, std::uint32_t* pOut) const;
    void FetchSmooth(double u, double v, int n, std::uint32_t* pOut) const;
    void TransformColours(int n, std::uint32_t* pOut) const;

    FillKind m_kind = FillKind::Solid;
    std::uint32_t m_solid = 0;
    Matrix m_toFill; ///< from device pixels to gradient units (-1..1) or bitmap pixels
    double m_focus = 0;
    Spread m_spread = Spread::Pad;
    bool m_bRepeat = false, m_bSmooth = false, m_bTransform = false;
    ColourTransform m_colours;
    const Bitmap* m_pBitmap = nullptr;
    std::vector<std::uint32_t> m_table;
    std::vector<GradientStop> m_tableStops; ///< what the table was made from
    ColourTransform m_tableColours;
    bool m_bTableLinear = false;
};
} // namespace swf
