#include "host/project/Project.h"

#include <algorithm>

namespace qmx::host
{
std::uint64_t Project::Duration() const
{
    std::uint64_t end = 0;
    for (const ProjectTrack& track : tracks)
    {
        if (!track.clips.empty())
            end = std::max(end, track.clips.back().End());
    }
    return end;
}
} // namespace qmx::host
