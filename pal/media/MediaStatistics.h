/// @file MediaStatistics.h
/// Counters of the media layer since the process started; for tests and benchmarks.
#pragma once

#include <atomic>
#include <cstdint>

namespace pal
{
struct MediaStatistics
{
    std::atomic<std::uint64_t> picturesDecoded{0}; ///< pictures that came out of a video decoder
    std::atomic<std::uint64_t> seeks{0};           ///< times a demuxer was repositioned
    std::atomic<std::uint64_t> pixelMisses{0};     ///< conversion memory taken from the system
};
MediaStatistics& GetMediaStatistics();
} // namespace pal
