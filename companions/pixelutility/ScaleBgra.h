/// @file ScaleBgra.h
/// Scaling of pictures, with a quarter turn on the way to the target.
#pragma once

#include "companions/pixelutility/BgraPicture.h"

#include <cstdint>

/// How a picture becomes smaller. It becomes larger bilinearly in any case; each axis is taken by itself.
enum class ShrinkMode
{
    Bilinear,
    Area
};

/// Scales @p source to @p width x @p height and turns the result clockwise by @p angle, one of 0, 90, 180 and 270.
/// @param target  of the turned size
/// @return false and nothing written when memory is short.
bool ScaleAndTurnPicture(const BgraPicture& source, std::uint32_t width, std::uint32_t height,
                         const BgraPicture& target, std::uint32_t angle, ShrinkMode mode);
