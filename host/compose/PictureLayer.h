/// @file PictureLayer.h
/// Pictures of the engine as layers.
#pragma once

#include "engine/platform/SampleBuffer.h"
#include "host/compose/Compositor.h"

namespace qmx::host
{
/// @p picture in the middle of @p box. @return a layer without pixels when the picture's cannot be used
Layer LayerOf(ISampleBuffer& picture, const PixelBox& box);

/// A picture of @p width x @p height pixels with straight alpha that shows @p picture in its middle and is transparent
/// around it. @return null when there is none to show, or memory is short
SampleBufferPtr CentredPicture(ISampleBuffer& picture, std::uint32_t width, std::uint32_t height);
} // namespace qmx::host
