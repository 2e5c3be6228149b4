/// @file PooledFrames.h
/// Makes short memory show: frames whose storage is recycled take none.
#pragma once

#include "engine/platform/SampleBuffer.h"

#include <vector>

/// Holds every frame of that size which the library could make without taking memory.
inline std::vector<SampleBufferPtr> HoldPooled(std::uint32_t width, std::uint32_t height)
{
    std::vector<SampleBufferPtr> held;
    tagSampleBufferPoolInfo before;
    tagSampleBufferPoolInfo after;
    do
    {
        GetSampleBufferPoolInfo(&before);
        held.push_back(SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, width, height, 0)));
        GetSampleBufferPoolInfo(&after);
    } while (after.nMisses == before.nMisses);
    return held;
}
