/// @file SoundMixer.h
/// The sound of a project.
#pragma once

#include "host/compose/MediaProbe.h"
#include "host/project/Project.h"
#include "host/sound/ClipSound.h"
#include "host/sound/SoundLimiter.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qmx::host
{
/// Mixes the clips of all tracks, each with its own and its track's volume, as floating-point numbers at 48 kHz. Peaks
/// of the sum are kept within full scale.
/// Needs running media services (EngineSession). Threads : used by one at a time.
class SoundMixer
{
public:
    /// @param project  outlives the mixer
    /// @throw HostError  ExitCode::Media when a clip's file cannot be read
    SoundMixer(const Project& project, MediaProbe& probe);

    /// True when there is a clip that can be heard.
    bool HasSound() const { return !m_clips.empty(); }
    /// Makes sample @p sample of the project (see SampleAtTime()) the next one. At first that is sample 0.
    void Start(std::uint64_t sample);
    /// The next @p count samples, left and right of each, between -1 and 1.
    void Read(float* pSamples, std::size_t count);

private:
    void Mix(float* pSamples, std::size_t count);

    std::vector<ClipSound> m_clips;
    SoundLimiter m_limiter;
    std::uint64_t m_next = 0; ///< sample that is mixed next; ahead of what is read
};
} // namespace qmx::host
