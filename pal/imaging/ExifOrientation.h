/// @file ExifOrientation.h
/// The one thing that is read of EXIF.
#pragma once

#include "pal/imaging/ImageBytes.h"

namespace pal
{
/// Orientation of an EXIF block, with or without the six bytes "Exif\0\0" before it.
/// @return 1 to 8; 0 when the block is damaged or does not say. Throws std::bad_alloc.
USHORT ExifOrientation(const ImageBytes& block);

/// @return @p value when it is an orientation, else 0
constexpr USHORT CheckedOrientation(UINT value)
{
    return value >= 1 && value <= 8 ? static_cast<USHORT>(value) : USHORT{0};
}
} // namespace pal
