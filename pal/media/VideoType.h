/// @file VideoType.h
/// Media types of video streams.
#pragma once

#include "pal/media/FrameGrid.h"
#include "pal/media/MediaFile.h"
#include "pal/media/PictureConverter.h"

#include <mfobjects.h>

namespace pal
{
/// Describes the stream as it is stored: subtype, frame size, frame rate of @p grid, pixel aspect, rotation, range,
/// matrix, interlacing; what is not known is left out.
HRESULT CreateNativeVideoType(AVFormatContext& format, AVStream& stream, const FrameGrid& grid, IMFMediaType** ppType);

/// What a client asks for with @p pType.
/// The frame size must be the stored one, or that exchanged: then pictures are turned upright by the stream's rotation.
/// (A stream that stands on its head is always turned.)
/// @retval MF_E_INVALIDMEDIATYPE a subtype or size that the reader does not deliver
HRESULT ParseOutputType(IMFMediaType* pType, const AVStream& stream, PictureFormat* pFormat, Rate* pRate);
} // namespace pal
