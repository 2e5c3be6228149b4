/// @file ScaleBgra.h
/// Scaling of pictures, with a quarter turn on the way to the target.
#pragma once

#include "companions/pixelutility/BgraPicture.h"
#include "companions/pixelutility/Scratch.h"
#include "companions/pixelutility/kernels/ResampleTaps.h"

#include <cstddef>
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

/// Rows that are scaled before they are turned together: they stay in the second-level cache, and a quarter turn still
/// writes whole cache lines. 16..64.
std::uint32_t RowsPerTurn(std::uint32_t width);

/// How one axis is scaled in @p mode.
qmx::kernels::ResampleAxis MakeAxis(std::uint32_t source, std::uint32_t target, ShrinkMode mode);
/// Scratch that TakeTaps() takes. @param pairs  axis.Pairs()
std::size_t TapBytes(const qmx::kernels::ResampleAxis& axis, std::uint32_t pairs);
qmx::kernels::ResampleTaps TakeTaps(CScratch& scratch, const qmx::kernels::ResampleAxis& axis, std::uint32_t pairs);
