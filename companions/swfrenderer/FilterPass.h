/// @file FilterPass.h
/// Filters on pictures.
#pragma once

#include "companions/swfrenderer/Filter.h"
#include "companions/swfrenderer/Surface.h"

#include <vector>

namespace swf
{
/// How far the picture of an object reaches beyond the object, in device pixels, to each side.
/// @param scaleX,scaleY  device pixels per pixel of the stage
Area FilterMargins(const Filter& filter, double scaleX, double scaleY);

/// How often a filter goes over every pixel, about.
std::uint64_t FilterCost(const Filter& filter);

/// Applies filters to premultiplied pictures; what lies outside of a picture is transparent.
class CFilterPass
{
public:
    /// Changes @p picture in place. Its area should have room for the margins. Throws std::bad_alloc.
    void Apply(const Filter& filter, double scaleX, double scaleY, Surface& picture);

private:
    void BlurPicture(Surface& picture, double widthX, double widthY, std::uint32_t passes);
    void BlurLevels(std::vector<std::uint8_t>& levels, const Area& area, double widthX, double widthY,
                    std::uint32_t passes);
    void Shadow(const Filter& filter, double scaleX, double scaleY, Surface& picture);
    void Bevel(const Filter& filter, double scaleX, double scaleY, Surface& picture);
    void Convolve(const Filter& filter, Surface& picture);
    void ReadAlpha(const Surface& picture);
    void ReadShifted(const Area& area, double dx, double dy);

    std::vector<std::uint8_t> m_alpha, m_shifted, m_other;
    std::vector<std::uint32_t> m_copy;
};
} // namespace swf
