/// @file Blend.h
/// Laying one picture on another by a blend mode.
#pragma once

#include "companions/swfrenderer/Movie.h"
#include "companions/swfrenderer/Surface.h"

namespace swf
{
/// Blends @p source into @p target within @p clip, which lies inside both. @p pMask may be null; its area holds @p
/// clip. Separable modes: with premultiplied s, d and alphas a, b, out = s (1 - b) + d (1 - a) + a b B(d / b, s / a).
void BlendPicture(BlendMode mode, const Surface& source, const Mask* pMask, const Area& clip, Surface& target);
} // namespace swf
