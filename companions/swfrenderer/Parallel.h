/// @file Parallel.h
/// Sharing out the rows of a picture over threads.
#pragma once

#include "engine/platform/PixelUtility.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <new>

namespace swf
{
/// The threads of all movies. Never ended: threads cannot be joined while a library is being unloaded.
CQMXThreadPool& SharedThreads();

/// Divides every picture into @p count bands from now on; 0: into as many as suit its size and the threads. Pictures do
/// not depend on it, which is what tests use it for.
void SetBandCount(std::uint32_t count);
std::uint32_t FixedBandCount();

/// Into how many bands @p rows rows are worth dividing when @p pixels pixels are touched altogether.
inline std::uint32_t BandCount(std::uint32_t rows, std::uint64_t pixels)
{
    constexpr std::uint64_t kPixelsPerBand = 32'768; ///< below this, waking a thread costs more than it saves
    constexpr std::uint64_t kBandsPerThread = 2;
    const std::uint64_t worth = pixels / kPixelsPerBand;
    if (const std::uint32_t count = FixedBandCount())
        return std::max(1U, std::min(rows, count));
    const std::uint64_t most = worth < 2 ? 1 : SharedThreads().GetConcurrency() * kBandsPerThread;
    return static_cast<std::uint32_t>(std::max<std::uint64_t>(1, std::min({std::uint64_t{rows}, worth, most})));
}

/// Calls @p function(index, first, end) for every one of @p count bands of @p rows rows. A band that runs out of memory
/// ends early; std::bad_alloc is thrown when all are done.
template <class Function> void ForEachBand(std::uint32_t rows, std::uint32_t count, const Function& function)
{
    if (count <= 1)
        return function(0U, 0U, rows);
    struct Context
    {
        const Function& function;
        std::uint32_t rows, count;
        std::atomic<bool> noMemory{false};
    } context{function, rows, count};
    const auto runBand = [](void* pContext, std::uint32_t index)
    {
        Context& c = *static_cast<Context*>(pContext);
        const auto bound = [&c](std::uint32_t i)
        { return static_cast<std::uint32_t>(std::uint64_t{c.rows} * i / c.count); };
        try
        {
            c.function(index, bound(index), bound(index + 1));
        }
        catch (const std::bad_alloc&)
        {
            c.noMemory = true;
        }
    };
    SharedThreads().Run(runBand, &context, count);
    if (context.noMemory)
        throw std::bad_alloc();
}
} // namespace swf
