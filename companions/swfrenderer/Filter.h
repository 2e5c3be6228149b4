/// @file Filter.h
/// Filters of objects, as a movie states them.
#pragma once

#include "companions/swfrenderer/ByteReader.h"
#include "companions/swfrenderer/Shape.h"

#include <array>
#include <cstdint>
#include <vector>

namespace swf
{
struct Filter
{
    enum class Kind : std::uint8_t
    {
        Shadow, ///< drop shadow; a glow is one without distance
        Blur,
        Bevel,
        GradientGlow,
        GradientBevel,
        Convolution,
        ColourMatrix
    };
    Kind kind = Kind::Blur;
    Rgba colour;                 ///< of the shadow; of a bevel's shadow
    Rgba highlight;              ///< of a bevel
    double blurX = 0, blurY = 0; ///< pixels of the stage
    double angle = 0;            ///< radians
    double distance = 0;         ///< pixels of the stage
    double strength = 1;
    bool inner = false, knockout = false, hideObject = false, onTop = false;
    std::uint32_t passes = 1;
    std::vector<GradientStop> stops;
    std::array<float, 20> matrix{};      ///< rows of R, G, B, A: four factors and levels to add
    std::uint32_t columns = 0, rows = 0; ///< convolution
    std::vector<float> kernel;
    float divisor = 1, bias = 0;
    bool clamp = true, preserveAlpha = true;
};

/// Unknown filters make the reader fail.
std::vector<Filter> ReadFilters(CByteReader& reader);
} // namespace swf
