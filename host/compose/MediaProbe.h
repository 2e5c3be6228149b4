/// @file MediaProbe.h
/// Facts of media files, asked of the engine.
#pragma once

#include "engine/qmx.h"
#include "host/compose/PictureFacts.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace qmx::host
{
/// A camera recording, found out from its index and its first frame.
struct CameraFacts
{
    std::uint32_t width = 0; ///< pixels
    std::uint32_t height = 0;
    std::uint64_t frames = 0; ///< records of the index
    double frameRate = 30;    ///< mean over the recording, frames per second
    double duration = 0;      ///< seconds, the last frame included
};

/// The rate of a recording whose frames were counted: a whole number or one of the sort of 30000/1001 where that gives
/// the same duration, else the mean.
/// @param mean      frames per second, greater than 0
/// @param frames    from the first to the last  @param duration  of them, 100 ns
double LikelyRate(double mean, std::uint64_t frames, std::uint64_t duration);

/// Finds out about each file once. Needs running media services (EngineSession).
class MediaProbe
{
public:
    /// @param subject  what a HostError names as its file
    /// @param prefix   begins the reason of a HostError, ": " included; may be empty
    /// @return facts that stay in place as long as the probe does
    /// @throw HostError  ExitCode::Media: no such file, no right to read it, no video in it that can be read
    const tagVideoInfo& Video(const std::filesystem::path& path, const std::string& subject, const std::string& prefix);
    /// The same for sound. @return nothing when the file has none that can be read
    /// @throw HostError  ExitCode::Media: no such file, no right to read it, no media file
    const std::optional<tagAudioInfo>& Sound(const std::filesystem::path& path, const std::string& subject,
                                             const std::string& prefix);
    /// @throw HostError  ExitCode::Media also when there is no sound
    const tagAudioInfo& NeedSound(const std::filesystem::path& path, const std::string& subject,
                                  const std::string& prefix);
    /// When media were recorded, 100 ns since 1601 UTC; nothing when the file does not say.
    std::optional<std::uint64_t> Recorded(const std::filesystem::path& path);
    /// As Video(), but null when the file can be read and holds no video that can be.
    const tagVideoInfo* FindVideo(const std::filesystem::path& path, const std::string& subject,
                                  const std::string& prefix);

    /// As Video(), for a still picture or an animation that an image clip can show. A name that ends in "gif" must be
    /// that of a GIF file, as the engine goes by it.
    const PictureFacts& Picture(const std::filesystem::path& path, const std::string& subject,
                                const std::string& prefix);
    /// As Picture(), but null when the file can be read and is no picture.
    const PictureFacts* FindPicture(const std::filesystem::path& path, const std::string& subject,
                                    const std::string& prefix);

    /// The same for a camera recording. @param name  ends in .mjpg or .h264
    /// @throw HostError  ExitCode::Media
    const CameraFacts& Camera(const std::filesystem::path& name, const std::string& subject, const std::string& prefix);

private:
    /// What the engine says about the sound of a file.
    struct SoundAnswer
    {
        std::optional<tagAudioInfo> sound;
        std::optional<std::uint64_t> recorded;
    };
    const SoundAnswer& AskForSound(const std::filesystem::path& path);

    std::map<std::filesystem::path, PictureFacts> m_knownPictures;
    std::map<std::filesystem::path, std::optional<tagVideoInfo>> m_known;
    std::map<std::filesystem::path, SoundAnswer> m_sounds;
    std::map<std::filesystem::path, CameraFacts> m_cameras;
};
} // namespace qmx::host
