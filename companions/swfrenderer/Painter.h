/// @file Painter.h
/// Lays the runs of a rasteriser on a picture or a mask.
#pragma once

#include "companions/swfrenderer/Paint.h"
#include "companions/swfrenderer/Rasterizer.h"
#include "companions/swfrenderer/Surface.h"

#include <vector>

namespace swf
{
/// Source-over with premultiplied colours.
class CPainter final : public ISpanSink
{
public:
    /// All borrowed for the life of the painter. @p pMask may be null; runs lie inside its area and the target's.
    CPainter(Surface& target, const std::vector<CPaint>& paints, const Mask* pMask)
        : m_target(target), m_paints(paints), m_pMask(pMask)
    {
    }
    void Span(int y, int x, int length, std::span<const FillWeight> weights) override;

private:
    void BlendSolid(std::uint32_t* pTarget, int n, std::uint32_t colour, std::uint32_t weight) const;
    void Blend(std::uint32_t* pTarget, int n, const std::uint32_t* pSource, std::uint32_t weight,
               const std::uint8_t* pMask) const;
    void FetchMixed(int y, int x, int n, std::span<const FillWeight> weights, std::uint32_t* pOut) const;

    Surface& m_target;
    const std::vector<CPaint>& m_paints;
    const Mask* m_pMask;
};

/// Keeps how much is covered, whatever the fills look like.
class CMaskPainter final : public ISpanSink
{
public:
    explicit CMaskPainter(Mask& target) : m_target(target) {}
    void Span(int y, int x, int length, std::span<const FillWeight> weights) override;

private:
    Mask& m_target;
};
} // namespace swf
