/// @file EmbeddedPicture.h
/// PNG and GIF files in the place of JPEG data, which movies may have from version 8 on.
#pragma once

#include "companions/swfrenderer/Bitmap.h"

namespace swf
{
/// Whether packed.data is a PNG or GIF file within the limits; then fills in the kind and the size.
bool DescribePng(PackedBitmap& packed);
bool DescribeGif(PackedBitmap& packed);

/// @return an empty bitmap when nothing can be read. Throws std::bad_alloc.
Bitmap UnpackPng(const PackedBitmap& packed);
/// The first picture of the file. What the data lack is transparent.
Bitmap UnpackGif(const PackedBitmap& packed);
} // namespace swf
