/// @file ProjectPlayer.h
/// The composed picture of a project at any time.
#pragma once

#include "host/compose/Canvas.h"
#include "host/compose/EngineSession.h"
#include "host/compose/MediaProbe.h"
#include "host/compose/TrackPlayer.h"
#include "host/project/Project.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace qmx::host
{
/// Puts a project into the engine and composes its pictures.
/// Threads : used by one at a time.
class ProjectPlayer
{
public:
    /// @param project    outlives the player
    /// @param onlyTrack  ID of the only track to show; nothing for all
    /// @throw HostError  ExitCode::Media or ExitCode::Project when the project cannot be shown,
    ///                   ExitCode::CommandLine when there is no such track
    explicit ProjectPlayer(const Project& project, std::optional<std::uint64_t> onlyTrack = std::nullopt);

    /// Draws what is shown at @p time (100 ns). Times that move forward are the fast way.
    /// @param canvas  of the project's size
    void Compose(std::uint64_t time, Canvas& canvas);

private:
    EngineSession m_session;
    MediaProbe m_probe;
    std::vector<TrackPlayer> m_tracks;     // bottom first
    std::vector<PlacedPicture> m_pictures; // top first; kept for its storage
    std::vector<Layer> m_layers;           // bottom first; likewise
};
} // namespace qmx::host
