#include "host/sound/ClipSound.h"

#include "host/system/Platform.h"

#include "host/compose/MediaProbe.h"
#include "host/sound/SoundTime.h"

#include <algorithm>
#include <new>

namespace qmx::host
{
ClipSound::ClipSound(const ProjectClip& clip, double gain)
    : m_pClip(CreateClipByClipType(clip.kind == ClipKind::Video ? QMXClipType_Video : QMXClipType_Audio)),
      m_first(SampleAtTime(clip.start)), m_end(SampleAtTime(clip.End())), m_gain(static_cast<float>(gain / 32'768))
{
    if (!m_pClip)
        throw std::bad_alloc();
    m_pClip->SetStartTime(clip.start);
    m_pClip->SetDuration(clip.duration);
    m_pClip->SetInPoint(clip.inPoint);
    m_pClip->SetFilePath(EnginePath(clip.path));
}

void ClipSound::Close()
{
    m_pClip->ResetAudio();
    m_next = kClosed;
}

void ClipSound::OpenAt(std::uint64_t sample)
{
    // Counted from the clip's start, so that the source's samples fall on the same ones of the project wherever
    // reading begins.
    tagRenderProp request;
    request.audioParams = {kSoundRate, m_pClip->GetStartTime() + TimeOfSample(sample - m_first)};
    m_pClip->OpenAudio(request);
    m_next = sample;
}

/// Fills the scratch with the next @p count samples. @return samples that there are
std::size_t ClipSound::Read(std::size_t count)
{
    m_values.resize(count * kSoundChannels);
    auto* const pBytes = reinterpret_cast<std::uint8_t*>(m_values.data());
    const auto cbAll = static_cast<std::uint32_t>(m_values.size() * sizeof(std::int16_t));
    std::uint32_t cbDone = 0;
    while (cbDone < cbAll) // the read that meets the end of the file is short; the next ones give silence
    {
        std::uint8_t* pTarget = pBytes + cbDone;
        std::uint32_t cb = cbAll - cbDone;
        const std::uint32_t cbRead = m_pClip->ReadAudio(&pTarget, &cb);
        if (cbRead == 0)
            break;
        cbDone += cbRead;
    }
    return cbDone / (kSoundChannels * sizeof(std::int16_t));
}

void ClipSound::AddTo(float* pMix, std::uint64_t first, std::size_t count)
{
    const std::uint64_t begin = std::max(first, m_first);
    const std::uint64_t end = std::min<std::uint64_t>(first + count, m_end);
    if (begin >= end)
        return;
    if (m_next != begin)
        OpenAt(begin);
    const std::size_t samples = Read(static_cast<std::size_t>(end - begin));
    float* const pTarget = pMix + (begin - first) * kSoundChannels;
    for (std::size_t i = 0; i < samples * kSoundChannels; ++i)
        pTarget[i] += m_gain * static_cast<float>(m_values[i]);
    m_next = end;
    if (end == m_end)
        Close();
}
} // namespace qmx::host
