#include "host/compose/ClipPlayer.h"

#include <algorithm>

namespace qmx::host
{
ClipPlayer::ClipPlayer(IQMXBaseClip& clip, std::uint32_t width, std::uint32_t height) : m_clip(clip)
{
    m_request.flags = kRequestUseCache;
    m_request.width = width;
    m_request.height = height;
}

ClipPlayer::ClipPlayer(IQMXBaseClip& clip, std::uint32_t width, std::uint32_t height, const Source& source)
    : ClipPlayer(clip, width, height)
{
    m_isVideo = true;
    m_frameDuration = std::max<std::uint64_t>(1, static_cast<std::uint64_t>(1e7 / source.frameRate));
    m_statedFrames = source.duration / m_frameDuration;
    m_askTwice = source.askTwice;
    if (source.frames != 0)
        m_lastFrame = source.frames - 1;
    m_origin = clip.GetStartTime() - clip.GetInPoint(); // wraps around as the engine's own sums do
}

SampleBufferPtr ClipPlayer::PictureAt(std::uint64_t time)
{
    if (!m_isVideo)
        return Ask(time).pPicture;
    const std::uint64_t frame = (time - m_origin) / m_frameDuration;
    if (m_lastFrame == kNone)
    {
        Answer answer = Ask(time);
        if (answer.IsGood())
        {
            m_latestFrame = m_latestFrame == kNone ? frame : std::max(m_latestFrame, frame);
            return std::move(answer.pPicture);
        }
        m_lastFrame = FindLastFrame(frame);
        if (m_lastFrame == kNone)
            return {};
    }
    // A frame that is asked for again is kept by the decoder: holding the last picture decodes nothing.
    return Ask(TimeOf(std::min(frame, m_lastFrame))).pPicture;
}

void ClipPlayer::Close()
{
    m_clip.Close();
}

ClipPlayer::Answer ClipPlayer::Ask(std::uint64_t time)
{
    Answer answer;
    if (m_askTwice)
        SampleBufferPtr::Adopt(m_clip.GetFrame(m_request, time, &answer.beyond));
    answer.pPicture = SampleBufferPtr::Adopt(m_clip.GetFrame(m_request, time, &answer.beyond));
    return answer;
}

bool ClipPlayer::HasFrame(std::uint64_t frame)
{
    return Ask(TimeOf(frame)).IsGood();
}

/// The last frame before @p beyond, a frame that the source does not have; kNone when it has none at all. A probe is
/// a seek at worst, so the search starts where the end most likely is and doubles its steps from there.
std::uint64_t ClipPlayer::FindLastFrame(std::uint64_t beyond)
{
    std::uint64_t last = m_latestFrame != kNone && m_latestFrame < beyond ? m_latestFrame : FindSomeFrame(beyond);
    for (std::uint64_t step = 1; last != kNone && beyond - last > 1;)
    {
        const std::uint64_t probe = last + std::min(step, (beyond - last) / 2);
        if (HasFrame(probe))
        {
            last = probe;
            step *= 2;
        }
        else
        {
            beyond = probe;
            step = beyond - last; // from here on the rest is halved
        }
    }
    return last;
}

/// A frame that the source has, near its end; @p beyond moves down to the lowest one that was tried in vain.
std::uint64_t ClipPlayer::FindSomeFrame(std::uint64_t& beyond)
{
    std::uint64_t end = m_statedFrames != 0 ? std::min(beyond, m_statedFrames) : beyond;
    for (std::uint64_t step = 1; end > 0; step *= 2)
    {
        end -= std::min(step, end);
        if (HasFrame(end))
            return end;
        beyond = end;
    }
    return kNone;
}
} // namespace qmx::host
