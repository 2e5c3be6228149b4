#include "host/compose/TransitionSide.h"

#include "host/compose/PictureLayer.h"

#include <algorithm>

namespace qmx::host
{
TransitionSide::TransitionSide(std::unique_ptr<IQMXBaseClip> pClip, ClipPlayer player, std::uint32_t width,
                               std::uint32_t height)
    : CQMXBaseClip(pClip->GetClipType()), m_pClip(std::move(pClip)), m_player(player), m_width(width), m_height(height)
{
    SetStartTime(m_pClip->GetStartTime());
    SetDuration(m_pClip->GetDuration());
}

bool TransitionSide::GetVideoFrame(std::uint64_t time, FrameResult* out)
{
    const SampleBufferPtr pPicture = m_player.PictureAt(std::clamp(time, GetStartTime(), GetEndTime()));
    out->flag = false;
    out->frame = pPicture ? CentredPicture(*pPicture.Get(), m_width, m_height).Detach() : nullptr;
    return out->frame != nullptr;
}

bool TransitionSide::Close()
{
    m_player.Close();
    return true;
}

std::wstring TransitionSide::GetDecoderKey()
{
    return m_pClip->GetDecoderKey();
}
} // namespace qmx::host
