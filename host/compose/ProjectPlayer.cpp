#include "host/compose/ProjectPlayer.h"

#include "host/HostError.h"

#include <algorithm>

namespace qmx::host
{
ProjectPlayer::ProjectPlayer(const Project& project, std::optional<std::uint64_t> onlyTrack)
{
    for (const ProjectTrack& track : project.tracks)
    {
        if (!onlyTrack || track.id == *onlyTrack)
            m_tracks.emplace_back(m_session.Document(), m_probe, project, track);
    }
    if (m_tracks.empty())
        throw HostError(ExitCode::CommandLine, "--track",
                        "the project has no track with the ID " + std::to_string(onlyTrack.value_or(0)));
    m_pictures.reserve(m_tracks.size());
    m_layers.reserve(m_tracks.size());
}

void ProjectPlayer::Compose(std::uint64_t time, Canvas& canvas)
{
    for (TrackPlayer& track : m_tracks)
        track.Advance(time);
    // From the top, so that tracks which cannot be seen are not decoded.
    for (auto it = m_tracks.rbegin(); it != m_tracks.rend(); ++it)
    {
        std::optional<PlacedPicture> placed = it->PictureAt(time);
        if (!placed)
            continue;
        m_pictures.push_back(std::move(*placed));
        if (m_pictures.back().layer.Hides(canvas.Bounds()))
            break;
    }
    for (auto it = m_pictures.rbegin(); it != m_pictures.rend(); ++it)
        m_layers.push_back(it->layer);
    host::Compose(canvas, m_layers);
    m_layers.clear();
    m_pictures.clear();
}
} // namespace qmx::host
