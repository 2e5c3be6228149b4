/// @file TimingProbe.h
/// Learns how a video stream is timed before the first picture is asked for.
#pragma once

#include "pal/media/FrameGrid.h"
#include "pal/media/MediaFile.h"

namespace pal
{
struct StreamTiming
{
    FrameGrid grid;
    std::int64_t firstDts = 0;        ///< decode time of the first packet, ticks
    std::int64_t averageDuration = 1; ///< ticks from picture to picture, at least 1
    std::int64_t end = INT64_MAX;     ///< tick at which the stream ends by its container; INT64_MAX: not known
    /// The container states decode times only and the codec reorders freely: pictures take the decode times in
    /// ascending order, as they come out of the decoder.
    bool timesFromOrder = false;
};

/// From the container's table of samples where it is complete; else packets are read (bounded) and the file is left
/// wherever that ends: position it before reading on.
/// @param[out] pMoved  the file was read
StreamTiming ProbeTiming(const MediaFile& file, AVStream& stream, bool* pMoved);
} // namespace pal
