/// @file LetterBox.h
/// Fitting a picture into a larger one.
#pragma once

#include "companions/pixelutility/BgraPicture.h"
#include "companions/pixelutility/ScaleBgra.h"

#include <cstdint>

/// A rectangle of pixels.
struct PixelBox
{
    std::uint32_t left = 0;
    std::uint32_t top = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// The largest box of the shape @p ratioX : @p ratioY in the middle of a box of @p boxWidth x @p boxHeight, which is
/// cut to, and stands in the middle of, an area of @p width x @p height. Sides are rounded to the nearest pixel and are
/// at least 1. All arguments are above 0; the sides of the area are at most 32,767.
PixelBox FitBox(std::uint32_t ratioX, std::uint32_t ratioY, std::uint32_t boxWidth, std::uint32_t boxHeight,
                std::uint32_t width, std::uint32_t height);

/// Scales @p source into @p box of @p target and makes everything around it transparent black.
/// @return false when memory is short; then all of @p target is transparent black.
bool PlaceInBox(const BgraPicture& source, const BgraPicture& target, const PixelBox& box, ShrinkMode mode);
