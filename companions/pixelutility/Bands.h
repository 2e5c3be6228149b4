/// @file Bands.h
/// Sharing out the rows of a picture over the library's threads.
#pragma once

#include "engine/platform/PixelUtility.h"

#include <cstdint>

/// The pool that all operations of the library share. It is never ended: threads cannot be joined while a library is
/// being unloaded, and an operation may still run when the program ends.
CQMXThreadPool& SharedThreadPool();

/// Into how many bands @p rows rows are worth dividing.
/// @param pixels  pixels that are read or written altogether, whichever is more
std::uint32_t BandCount(std::uint32_t rows, std::uint64_t pixels);

/// Calls @p function(index, first, end) for every one of @p count bands of @p rows rows, on several threads.
/// The function must not throw, and its result must not depend on how many bands there are.
template <class Function> void ForEachBand(std::uint32_t rows, std::uint32_t count, const Function& function)
{
    struct Context
    {
        const Function& function;
        std::uint32_t rows;
        std::uint32_t count;
    } context{function, rows, count};
    const auto runBand = [](void* pContext, std::uint32_t index)
    {
        const Context& c = *static_cast<const Context*>(pContext);
        const auto bound = [&c](std::uint32_t i)
        { return static_cast<std::uint32_t>(std::uint64_t{c.rows} * i / c.count); };
        c.function(index, bound(index), bound(index + 1));
    };
    SharedThreadPool().Run(runBand, &context, count);
}
