#include "companions/swfrenderer/Parallel.h"

namespace swf
{
CQMXThreadPool& SharedThreads()
{
    static CQMXThreadPool* const pPool = new CQMXThreadPool(0);
    return *pPool;
}
} // namespace swf
