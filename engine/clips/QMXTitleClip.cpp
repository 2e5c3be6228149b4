#include "engine/clips/QMXTitleClip.h"

#include "engine/decoders/DecoderCache.h"
#include "engine/decoders/still/TitleDecoder.h"
#include "engine/platform/NullReference.h"

#include <memory>
#include <new>
#include <utility>

CQMXTitleClip::CQMXTitleClip() : CQMXBaseClip(QMXClipType_Title), m_decoderProp(std::wstring(), 0) {}

CQMXTitleClip::~CQMXTitleClip()
{
    // A shared decoder may go on holding the pointers: every clip attaches its own before it asks for a frame.
    ReleaseDecoder();
    for (const tagQMXTitleTextInfo* const item : m_vecTitleTexts)
        delete item;
}

void CQMXTitleClip::CopyFrom(IQMXBaseClip* source)
{
    if (source == nullptr)
        return;
    CQMXBaseClip::CopyFrom(source);
    auto* const title = dynamic_cast<CQMXTitleClip*>(source);
    if (title == nullptr)
        return;
    m_pReserved = title->m_pReserved;
    try
    {
        const std::size_t count = title->m_vecTitleTexts.size(); // a clip may be copied onto itself
        for (std::size_t i = 0; i < count; ++i)
        {
            auto item = std::make_unique<tagQMXTitleTextInfo>(*title->m_vecTitleTexts[i]);
            if (item->textLength == 0)
                item->text.clear();
            m_vecTitleTexts.push_back(item.get());
            static_cast<void>(item.release()); // the list's from here on
        }
    }
    catch (const std::bad_alloc&) // the clip has the texts for which there was memory
    {
    }
}

void CQMXTitleClip::AddTitleText(tagQMXTitleTextInfo* item)
{
    if (item == nullptr)
        return;
    std::unique_ptr<tagQMXTitleTextInfo> own(item);
    try
    {
        m_vecTitleTexts.push_back(item);
        static_cast<void>(own.release());
    }
    catch (const std::bad_alloc&) // the item was handed over, so it ends here
    {
    }
}

std::vector<tagQMXTitleTextInfo*>& CQMXTitleClip::GetTitleTexts(std::vector<tagQMXTitleTextInfo*>& out)
{
    try
    {
        if (!IsNullReference(&out))
            out = m_vecTitleTexts;
    }
    catch (const std::bad_alloc&)
    {
        out.clear();
    }
    return out;
}

bool CQMXTitleClip::Open(const tagRenderProp& request)
{
    if (IsNullReference(&request))
        return false;
    Close();
    KeepRequest(request);
    m_nOutputWidth = request.width;
    m_nOutputHeight = request.height;
    m_decoderProp = tagDecProp(std::wstring(), 0);
    m_decoderProp.flags = request.flags;
    m_decoderProp.decoderType = kDecoderTitle;
    m_decoderProp.width = m_nOutputWidth;
    m_decoderProp.height = m_nOutputHeight;
    try
    {
        m_vecShownTexts = m_vecTitleTexts;
        if ((request.flags & kRequestUseCache) != 0 && OpenSharedDecoder())
            return true;
        m_pTitleDecoder = new CTitleDecoder;
        m_pVideoDecoder = m_pTitleDecoder;
        return m_pTitleDecoder->Initialize(m_decoderProp) &&
               m_pTitleDecoder->InitializeTitleText(m_vecShownTexts, GetStartTime());
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

/// @return false when the cache has no decoder for the clip, or that of another kind of clip.
bool CQMXTitleClip::OpenSharedDecoder()
{
    const std::wstring key = GetDecoderKey();
    if (key.empty())
        return false;
    DecoderPtr decoder = DecoderPtr::Adopt(GetDecoder(key, m_decoderProp));
    m_pTitleDecoder = dynamic_cast<CTitleDecoder*>(decoder.Get());
    if (m_pTitleDecoder == nullptr)
        return false;
    m_pVideoDecoder = decoder.Detach();
    m_pTitleDecoder->SetDecoderProperty(m_decoderProp);
    m_pTitleDecoder->InitializeTitleText(m_vecShownTexts, GetStartTime());
    return true;
}

/// Puts this clip's size and texts into the decoder when those of another clip stand there.
void CQMXTitleClip::AttachTexts()
{
    if (*m_pTitleDecoder->GetProperty() != m_decoderProp)
        m_pTitleDecoder->SetDecoderProperty(m_decoderProp);
    if (!m_pTitleDecoder->IsShowing(m_vecShownTexts))
        m_pTitleDecoder->InitializeTitleText(m_vecShownTexts, GetStartTime());
}

bool CQMXTitleClip::GetVideoFrame(std::uint64_t time, FrameResult* out)
{
    if (out == nullptr || m_pTitleDecoder == nullptr)
        return false;
    AttachTexts();
    out->frame = m_pTitleDecoder->GetClipVideoFrame(time - GetStartTime(), out->flag);
    if (out->frame != nullptr)
        out->frame->SetAlphaFlag(true);
    return true;
}

bool CQMXTitleClip::Close()
{
    ReleaseDecoder();
    return true;
}

void CQMXTitleClip::ReleaseDecoder()
{
    m_pTitleDecoder = nullptr;
    if (IDecoder* const decoder = std::exchange(m_pVideoDecoder, nullptr))
        decoder->Release();
}
