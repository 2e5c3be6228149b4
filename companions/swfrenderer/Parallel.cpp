#include "companions/swfrenderer/Parallel.h"

namespace swf
{
namespace
{
std::atomic<std::uint32_t> s_bandCount = 0;
}

void SetBandCount(std::uint32_t count)
{
    s_bandCount = count;
}

std::uint32_t FixedBandCount()
{
    return s_bandCount;
}

CQMXThreadPool& SharedThreads()
{
    static CQMXThreadPool* const pPool = new CQMXThreadPool(0);
    return *pPool;
}
} // namespace swf
