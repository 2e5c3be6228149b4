/// @file PictureBuffer.h
/// A media buffer over a decoded picture that is converted when its pixels are locked, and only then.
#pragma once

#include "pal/media/PictureConverter.h"

#include <mfobjects.h>

#include <memory>

namespace pal
{
/// Makes a buffer (it also offers IMF2DBuffer) with one reference. It keeps the picture and the converter alive.
/// @retval E_OUTOFMEMORY memory is short
HRESULT CreatePictureBuffer(std::shared_ptr<AVFrame> pFrame, std::shared_ptr<PictureConverter> pConverter,
                            IMFMediaBuffer** ppBuffer);
} // namespace pal
