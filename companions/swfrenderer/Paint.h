/// @file Paint.h
/// What a fill looks like at every device pixel.
#pragma once

#include "companions/swfrenderer/Bitmap.h"
#include "companions/swfrenderer/Colour.h"
#include "companions/swfrenderer/Shape.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace swf
{
/// Colours along gradients, kept from frame to frame by what they are made of.
class CGradientTables
{
public:
    using Table = std::shared_ptr<const std::vector<std::uint32_t>>;
    /// Premultiplied colours at even distances. @param fill  with one stop at least. Throws std::bad_alloc.
    Table Find(const FillStyle& fill, const ColourTransform& colours);

private:
    struct Entry
    {
        std::vector<GradientStop> stops;
        ColourTransform colours;
        bool linearRgb = false;
        Table table;
    };
    std::unordered_multimap<std::uint64_t, Entry> m_entries; ///< by a hash of what the table is made of
};

/// One fill, ready for drawing.
class CPaint
{
public:
    void SetSolid(const std::array<float, 4>& rgba);
    /// @param toDevice  from the shape's twips to device pixels
    /// @param pBitmap   borrowed until the next Set…(); null for a fill that is no bitmap or has none: nothing shows
    void SetFill(const FillStyle& fill, const Matrix& toDevice, const ColourTransform& colours, const Bitmap* pBitmap,
                 CGradientTables& tables);

    bool IsSolid() const { return m_kind == FillKind::Solid; }
    std::uint32_t Solid() const { return m_solid; }
    /// Of a pixel, about, in pixels of a solid colour; smooth bitmaps count for less than they take.
    std::uint64_t Cost() const;
    /// Premultiplied colours of @p n pixels of row @p y from @p x on.
    void Fetch(int x, int y, int n, std::uint32_t* pOut) const;

private:
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
    CGradientTables::Table m_pTable; ///< of a gradient
};
} // namespace swf
