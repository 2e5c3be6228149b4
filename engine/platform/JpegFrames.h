/// @file JpegFrames.h
/// The JPEG frame decoder library: one compressed picture to BGRA at a given size.
#pragma once

#include "engine/platform/Export.h"
#include "engine/platform/SampleInfo.h"

extern "C"
{
    /// Makes a decoder whose pictures have exactly @p width x @p height pixels, whatever shape the JPEG has; those of
    /// the JPEG where either is 0. Used by one thread at a time.
    /// @return a handle for JPGDestroyDecoder(); null for a side below 0 or above 32,767, or when memory is short.
    QMX_JPEGFRAMES_API void* JPGCreateDecoder(int width, int height);
    /// Decodes @p length bytes of @p data: at the smallest scale the transform offers that is not below the wanted
    /// size, then scaled once to it.
    /// @return a record to be released with free(). Its pixels are opaque BGRA rows of nWidth * 4 bytes in memory of
    ///         AllocateSamplePixels(), for CreateSampleBufferEx() to adopt. Null for damaged or truncated data, one
    ///         that claims more than 36 million pixels or sides above 32,767, or when memory is short.
    QMX_JPEGFRAMES_API tagSampleInfo* JPGDecodeFrame(void* handle, unsigned char* data, int length);
    /// Null is allowed.
    QMX_JPEGFRAMES_API void JPGDestroyDecoder(void* handle);
}
