/// @file ClipBuilder.h
/// From the description of a clip to a clip of the engine.
#pragma once

#include "engine/qmx.h"
#include "host/compose/Canvas.h"
#include "host/compose/ClipPlayer.h"
#include "host/compose/Layout.h"
#include "host/compose/MediaProbe.h"
#include "host/project/Project.h"

#include <cstdint>
#include <memory>
#include <string>

namespace qmx::host
{
/// Makes the clips of one track, each with the size at which its pictures fit the track's box.
/// Every operation throws HostError, naming the place in the project: ExitCode::Media for files that cannot be read,
/// ExitCode::Project for what cannot be shown.
class ClipBuilder
{
public:
    /// A clip that no track has yet, and what asks it for pictures.
    struct Clip
    {
        std::unique_ptr<IQMXBaseClip> pClip;
        ClipPlayer player; ///< uses the clip
    };

    /// @param track     engine track that the clips are made for; borrowed
    /// @param fileName  of the project, for messages
    /// @param box       of the track on the canvas
    ClipBuilder(IQMXTrack& track, MediaProbe& probe, std::string fileName, const PixelBox& box);

    Clip Build(const ProjectClip& description);

private:
    std::unique_ptr<IQMXBaseClip> MakeClip(const ProjectClip& description);
    template <class T> std::unique_ptr<T> Make(const ProjectClip& description);
    Clip BuildVideo(const ProjectClip& description);
    Clip BuildCamera(const ProjectClip& description);
    Clip BuildFilm(const ProjectClip& description, const VideoShape& shape, const ClipPlayer::Source& source);
    Clip BuildAudio(const ProjectClip& description);
    Clip BuildImage(const ProjectClip& description);
    Clip BuildTitle(const ProjectClip& description);
    Clip BuildKeystroke(const ProjectClip& description);
    Clip BuildTransition(const ProjectClip& description);
    Clip FillBox(std::unique_ptr<IQMXBaseClip> pClip);
    IQMXBaseClip* BuildSide(const std::optional<ProjectClip>& description);
    void SetKey(CQMXVideoClip& clip, const ProjectKey& key);
    SampleBufferPtr LoadPicture(const std::filesystem::path& path, const std::string& place);
    [[noreturn]] void FailToFit(const ProjectClip& description, std::uint32_t width, std::uint32_t height) const;

    std::uint32_t BoxWidth() const { return static_cast<std::uint32_t>(m_box.Width()); }
    std::uint32_t BoxHeight() const { return static_cast<std::uint32_t>(m_box.Height()); }

    IQMXTrack& m_track;
    MediaProbe& m_probe;
    std::string m_fileName;
    PixelBox m_box;
};
} // namespace qmx::host
