#include "host/sound/SoundMixer.h"

#include "host/sound/SoundTime.h"

#include <algorithm>

namespace qmx::host
{
SoundMixer::SoundMixer(const Project& project, MediaProbe& probe)
{
    const std::string subject = project.file.string();
    for (const ProjectTrack& track : project.tracks)
    {
        for (const ProjectClip& clip : track.clips)
        {
            const double gain = track.mute || clip.mute ? 0 : track.volume * clip.volume;
            const std::string prefix = clip.place + ".path: " + clip.path.string() + ": ";
            if (clip.kind == ClipKind::Audio)
                probe.NeedSound(clip.path, subject, prefix);
            const bool isHeard = clip.kind == ClipKind::Audio || clip.kind == ClipKind::Video;
            if (isHeard && gain > 0 && probe.Sound(clip.path, subject, prefix))
                m_clips.emplace_back(clip, gain);
        }
    }
    Start(0);
}

void SoundMixer::Mix(float* pSamples, std::size_t count)
{
    std::fill_n(pSamples, count * kSoundChannels, 0.0F);
    for (ClipSound& clip : m_clips)
        clip.AddTo(pSamples, m_next, count);
    m_next += count;
}

void SoundMixer::Start(std::uint64_t sample)
{
    m_limiter.Reset();
    m_next = sample;
    std::vector<float> ahead(SoundLimiter::kAhead * kSoundChannels);
    Mix(ahead.data(), SoundLimiter::kAhead);
    m_limiter.Process(ahead.data(), SoundLimiter::kAhead);
}

void SoundMixer::Read(float* pSamples, std::size_t count)
{
    Mix(pSamples, count);
    m_limiter.Process(pSamples, count);
}
} // namespace qmx::host
