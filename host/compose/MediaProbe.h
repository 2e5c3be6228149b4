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
/// The sound of a file.
struct SoundFacts
{
    std::uint32_t rate = 0;     ///< samples per second, as stored
    std::uint32_t channels = 0; ///< as stored
    std::uint32_t bits = 0;     ///< of a sample; 0 where the coding has none
    double duration = 0;        ///< seconds, of the whole file; 0 when it does not say
};

/// A camera recording, found out from its index and its first frame.
struct CameraFacts
{
    std::uint32_t width = 0; ///< pixels
    std::uint32_t height = 0;
    std::uint64_t frames = 0; ///< records of the index
    double frameRate = 30;    ///< mean over the recording, frames per second
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
    const std::optional<SoundFacts>& Sound(const std::filesystem::path& path, const std::string& subject,
                                           const std::string& prefix);
    /// @throw HostError  ExitCode::Media also when there is no sound
    const SoundFacts& NeedSound(const std::filesystem::path& path, const std::string& subject,
                                const std::string& prefix);
    /// True for a file with sound that can be read. Never throws HostError.
    bool HasSound(const std::filesystem::path& path);

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
    std::map<std::filesystem::path, PictureFacts> m_knownPictures;
    std::map<std::filesystem::path, tagVideoInfo> m_known;
    std::map<std::filesystem::path, std::optional<SoundFacts>> m_sounds;
    std::map<std::filesystem::path, CameraFacts> m_cameras;
};
} // namespace qmx::host
