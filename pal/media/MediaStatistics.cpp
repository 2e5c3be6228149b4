#include "pal/media/MediaStatistics.h"

namespace pal
{
MediaStatistics& GetMediaStatistics()
{
    static MediaStatistics statistics;
    return statistics;
}
} // namespace pal
