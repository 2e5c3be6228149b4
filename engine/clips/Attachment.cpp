#include "engine/clips/Attachment.h"

#include "engine/decoders/DecoderProp.h"

void CAttachment::Set(int index, IQMXBaseClip* clip)
{
    if (index == 0)
        m_pClip = clip;
}

bool CAttachment::IsShown(std::uint64_t flags)
{
    if ((flags & kRequestNoAttachment) != 0 || m_pClip == nullptr || m_bAsking)
        return false;
    m_bAsking = true;
    const bool opened = m_pClip->IsVideoOpened();
    m_bAsking = false;
    return opened;
}
