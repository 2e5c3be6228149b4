/// @file TrackPlayer.h
/// One track of a project inside the engine.
#pragma once

#include "host/compose/ClipBuilder.h"
#include "host/compose/ClipPlayer.h"
#include "host/compose/Compositor.h"
#include "host/compose/MediaProbe.h"
#include "host/project/Project.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qmx::host
{
/// A picture and where it goes.
struct PlacedPicture
{
    SampleBufferPtr pPicture;
    Layer layer; ///< points into the picture
};

/// Makes an engine track of a project's track, and finds the picture that it shows at a time. Decoders of clips that
/// are over are given back once no later clip of the track shows the same file.
class TrackPlayer
{
public:
    /// @param document  takes the engine track; outlives the player
    /// @param project   gives the canvas, and the name for messages; outlives the player
    /// @param track     one of its tracks
    /// @throw HostError  ExitCode::Media or ExitCode::Project, naming the place in the project
    TrackPlayer(IQMXDocument& document, MediaProbe& probe, const Project& project, const ProjectTrack& track);

    /// @return nothing where the track has no clip, or one that is only heard
    /// @throw HostError  ExitCode::Media when the clip has no picture at all
    std::optional<PlacedPicture> PictureAt(std::uint64_t time);
    /// Gives back what times from @p time on do not need.
    void Advance(std::uint64_t time);

private:
    void AddClip(ClipBuilder::Clip clip);

    const Project& m_project;
    const ProjectTrack& m_description;
    PixelBox m_box;
    IQMXTrack* m_pTrack = nullptr; // owned by the document
    std::vector<ClipPlayer> m_clips;
    std::vector<std::vector<std::wstring>> m_lastUses; ///< for each clip: keys of decoders that no later one shares
    std::size_t m_firstOpen = 0;                       ///< clips before it have been closed
};
} // namespace qmx::host
