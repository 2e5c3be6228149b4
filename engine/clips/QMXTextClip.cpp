#include "engine/clips/QMXTextClip.h"

#include "engine/decoders/DecoderCache.h"
#include "engine/platform/ReleaseAndClear.h"

CQMXTextClip::CQMXTextClip(QMXClipType type, std::uint32_t decoderType)
    : CQMXBaseClip(type), m_nDecoderType(decoderType), m_decoderProp(std::wstring(), 0)
{
}

CQMXTextClip::~CQMXTextClip()
{
    // A shared decoder may go on holding pointers to this clip's items: every clip gives it its own before it asks for
    // a frame.
    ReleaseAndClear(m_pVideoDecoder);
}

void CQMXTextClip::CopyFrom(IQMXBaseClip* source)
{
    CQMXBaseClip::CopyFrom(source);
    if (auto* const text = dynamic_cast<CQMXTextClip*>(source); text != nullptr && text->m_clipType == m_clipType)
        m_pReserved = text->m_pReserved;
}

bool CQMXTextClip::Close()
{
    ReleaseAndClear(m_pVideoDecoder);
    return true;
}

bool CQMXTextClip::TakeDecoder(const tagRenderProp& request)
{
    KeepRequest(request);
    m_nOutputWidth = request.width;
    m_nOutputHeight = request.height;
    m_decoderProp = tagDecProp(std::wstring(), 0);
    m_decoderProp.flags = request.flags;
    m_decoderProp.decoderType = m_nDecoderType;
    m_decoderProp.width = m_nOutputWidth;
    m_decoderProp.height = m_nOutputHeight;
    m_bDecoderShared = false;
    const std::wstring key = (request.flags & kRequestUseCache) != 0 ? GetDecoderKey() : std::wstring();
    DecoderPtr decoder;
    if (!key.empty())
        decoder = DecoderPtr::Adopt(GetDecoder(key, m_decoderProp));
    if (decoder && IsDecoderFor(decoder.Get(), m_decoderProp))
    {
        m_bDecoderShared = true;
        m_pVideoDecoder = decoder.Detach();
        m_pVideoDecoder->SetDecoderProperty(m_decoderProp);
        return true;
    }
    m_pVideoDecoder = MakeDecoder(m_decoderProp);
    return m_pVideoDecoder->Initialize(m_decoderProp);
}

void CQMXTextClip::RestoreSize()
{
    if (*m_pVideoDecoder->GetProperty() != m_decoderProp)
        m_pVideoDecoder->SetDecoderProperty(m_decoderProp);
}

bool CQMXTextClip::ShowFrame(std::uint64_t time, FrameResult& out)
{
    out.frame = m_pVideoDecoder->GetClipVideoFrame(time, out.flag);
    if (out.frame != nullptr)
        out.frame->SetAlphaFlag(true);
    return true;
}
