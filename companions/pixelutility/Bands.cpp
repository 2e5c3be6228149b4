#include "companions/pixelutility/Bands.h"

#include <algorithm>
#include <cstddef>
#include <new>

CQMXThreadPool& SharedThreadPool()
{
    alignas(CQMXThreadPool) static std::byte storage[sizeof(CQMXThreadPool)];
    static CQMXThreadPool& pool = *::new (storage) CQMXThreadPool(0);
    return pool;
}

std::uint32_t BandCount(std::uint32_t rows, std::uint64_t pixels)
{
    // Waking a thread costs some microseconds, as much as some ten thousand pixels.
    constexpr std::uint64_t kPixelsPerBand = 65'536;
    constexpr std::uint32_t kRowsPerBand = 8;
    const std::uint32_t threads = SharedThreadPool().GetConcurrency();
    if (threads == 1)
        return 1;
    // Two bands a thread: a thread that the system takes away does not hold up all the others.
    const std::uint64_t most = std::min<std::uint64_t>(pixels / kPixelsPerBand, std::uint64_t{threads} * 2);
    return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(most, 1, std::max(rows / kRowsPerBand, 1U)));
}
