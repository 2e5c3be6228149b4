#include "host/project/Project.h"

#include "host/project/CameraFiles.h"

#include <algorithm>

namespace qmx::host
{
namespace
{
void AddFiles(const ProjectClip& clip, std::vector<std::filesystem::path>& files)
{
    if (clip.kind == ClipKind::Camera)
        files.insert(files.end(), {CameraMediaPath(clip.path), CameraIndexPath(clip.path)});
    else if (!clip.path.empty())
        files.push_back(clip.path);
    if (clip.key && !clip.key->background.empty())
        files.push_back(clip.key->background);
    if (!clip.pTransition)
        return;
    for (const std::optional<ProjectClip>* const pSide : {&clip.pTransition->from, &clip.pTransition->to})
    {
        if (*pSide)
            AddFiles(**pSide, files);
    }
}
} // namespace

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

std::vector<std::filesystem::path> Project::Files() const
{
    std::vector<std::filesystem::path> files{file};
    for (const ProjectTrack& track : tracks)
    {
        for (const ProjectClip& clip : track.clips)
            AddFiles(clip, files);
    }
    return files;
}
} // namespace qmx::host
