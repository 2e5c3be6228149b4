#include "engine/clips/QMXTitleClip.h"

#include "engine/clips/OwnedItems.h"
#include "engine/decoders/still/TitleDecoder.h"
#include "engine/platform/NullReference.h"

#include <new>

CQMXTitleClip::CQMXTitleClip() : CQMXTextClip(QMXClipType_Title, kDecoderTitle) {}

CQMXTitleClip::~CQMXTitleClip()
{
    DeleteOwned(m_vecTitleTexts);
}

void CQMXTitleClip::CopyFrom(IQMXBaseClip* source)
{
    if (source == nullptr)
        return;
    CQMXTextClip::CopyFrom(source);
    auto* const title = dynamic_cast<CQMXTitleClip*>(source);
    if (title == nullptr)
        return;
    const std::size_t before = m_vecTitleTexts.size();
    AddOwnedCopies(m_vecTitleTexts, title->m_vecTitleTexts);
    for (std::size_t i = before; i < m_vecTitleTexts.size(); ++i)
    {
        if (m_vecTitleTexts[i]->textLength == 0)
            m_vecTitleTexts[i]->text.clear();
    }
}

void CQMXTitleClip::AddTitleText(tagQMXTitleTextInfo* item)
{
    AddOwned(m_vecTitleTexts, item);
}

std::vector<tagQMXTitleTextInfo*>& CQMXTitleClip::GetTitleTexts(std::vector<tagQMXTitleTextInfo*>& out)
{
    return CopyPointers(m_vecTitleTexts, out);
}

bool CQMXTitleClip::Open(const tagRenderProp& request)
try
{
    if (IsNullReference(&request))
        return false;
    Close();
    m_vecShownTexts = m_vecTitleTexts;
    if (!TakeDecoder(request))
        return false;
    return Decoder().InitializeTitleText(m_vecShownTexts, GetStartTime()) || IsDecoderShared();
}
catch (const std::bad_alloc&)
{
    return false;
}

bool CQMXTitleClip::GetVideoFrame(std::uint64_t time, FrameResult* out)
{
    if (out == nullptr || m_pVideoDecoder == nullptr)
        return false;
    // The texts of another clip may stand in a shared decoder.
    RestoreSize();
    if (!Decoder().IsShowing(m_vecShownTexts))
        Decoder().InitializeTitleText(m_vecShownTexts, GetStartTime());
    return ShowFrame(time - GetStartTime(), *out);
}

CTitleDecoder& CQMXTitleClip::Decoder()
{
    return *static_cast<CTitleDecoder*>(m_pVideoDecoder);
}
