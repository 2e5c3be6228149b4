/// @file AudioType.h
/// Media types of sound streams.
#pragma once

#include "pal/media/MediaFile.h"

#include <mfobjects.h>

namespace pal
{
/// What a client asks for. What it leaves open follows the stream.
struct AudioRequest
{
    AVSampleFormat format = AV_SAMPLE_FMT_S16; ///< or AV_SAMPLE_FMT_FLT: interleaved 16-bit PCM or float
    int rate = 0;                              ///< samples per second; 0: the stream's
    int channels = 0;                          ///< 0: the stream's
    std::uint64_t mask = 0;                    ///< speakers, a bit each; 0: the usual ones for that many channels
};

/// Describes the stream as it is stored: subtype, rate, channels and speakers; bits, block alignment and bytes per
/// second only where every sample has its bits (PCM), bits also for lossless coding. What is not known is left out.
HRESULT CreateNativeAudioType(const AVStream& stream, IMFMediaType** ppType);

/// @retval MF_E_INVALIDMEDIATYPE neither 16-bit PCM nor 32-bit float, or a rate or channels out of range
HRESULT ParseAudioType(IMFMediaType* pType, AudioRequest* pRequest);

/// The type of what is delivered: @p request with everything filled in.
HRESULT CreateOutputAudioType(const AudioRequest& request, IMFMediaType** ppType);
} // namespace pal
