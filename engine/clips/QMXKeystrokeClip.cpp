#include "engine/clips/QMXKeystrokeClip.h"

#include "engine/decoders/DecoderCache.h"
#include "engine/decoders/still/KeystrokeDecoder.h"
#include "engine/platform/NullReference.h"

#include <memory>
#include <new>
#include <utility>

CQMXKeystrokeClip::CQMXKeystrokeClip() : CQMXBaseClip(QMXClipType_Keystroke), m_decoderProp(std::wstring(), 0) {}

CQMXKeystrokeClip::~CQMXKeystrokeClip()
{
    // A shared decoder may go on holding the pointers: every clip attaches its own before it asks for a frame.
    ReleaseDecoder();
    for (const tagQMXKeystrokeInfo* const item : m_vecKeystrokes)
        delete item;
}

void CQMXKeystrokeClip::CopyFrom(IQMXBaseClip* source)
{
    if (source == nullptr)
        return;
    CQMXBaseClip::CopyFrom(source);
    auto* const keystroke = dynamic_cast<CQMXKeystrokeClip*>(source);
    if (keystroke == nullptr)
        return;
    m_pReserved = keystroke->m_pReserved;
    try
    {
        const std::size_t count = keystroke->m_vecKeystrokes.size(); // a clip may be copied onto itself
        for (std::size_t i = 0; i < count; ++i)
        {
            auto item = std::make_unique<tagQMXKeystrokeInfo>(*keystroke->m_vecKeystrokes[i]);
            m_vecKeystrokes.push_back(item.get());
            static_cast<void>(item.release()); // the list's from here on
        }
    }
    catch (const std::bad_alloc&) // the clip has the labels for which there was memory
    {
    }
}

void CQMXKeystrokeClip::AddKeystroke(tagQMXKeystrokeInfo* item)
{
    if (item == nullptr)
        return;
    std::unique_ptr<tagQMXKeystrokeInfo> own(item);
    try
    {
        m_vecKeystrokes.push_back(item);
        static_cast<void>(own.release());
    }
    catch (const std::bad_alloc&) // the item was handed over, so it ends here
    {
    }
}

void CQMXKeystrokeClip::SetLeftAndTopAndWidth(float left, float top, float width)
{
    m_placement = {left, top, width};
}

float CQMXKeystrokeClip::GetKeystrokeTop()
{
    return m_placement.top;
}

float CQMXKeystrokeClip::GetKeystrokeLeft()
{
    return m_placement.left;
}

float CQMXKeystrokeClip::GetKeystrokeWidth()
{
    return m_placement.width;
}

std::vector<tagQMXKeystrokeInfo*>& CQMXKeystrokeClip::GetKeystrokes(std::vector<tagQMXKeystrokeInfo*>& out)
{
    try
    {
        if (!IsNullReference(&out))
            out = m_vecKeystrokes;
    }
    catch (const std::bad_alloc&)
    {
        out.clear();
    }
    return out;
}

bool CQMXKeystrokeClip::Open(const tagRenderProp& request)
{
    if (IsNullReference(&request))
        return false;
    Close();
    KeepRequest(request);
    m_nOutputWidth = request.width;
    m_nOutputHeight = request.height;
    m_decoderProp = tagDecProp(std::wstring(), 0);
    m_decoderProp.flags = request.flags;
    m_decoderProp.decoderType = kDecoderKeystroke;
    m_decoderProp.width = m_nOutputWidth;
    m_decoderProp.height = m_nOutputHeight;
    m_shownPlacement = m_placement;
    try
    {
        m_vecShownKeystrokes = m_vecKeystrokes;
        if ((request.flags & kRequestUseCache) != 0 && OpenSharedDecoder())
            return true;
        m_pKeystrokeDecoder = new CKeystrokeDecoder;
        m_pVideoDecoder = m_pKeystrokeDecoder;
        if (!m_pKeystrokeDecoder->Initialize(m_decoderProp) ||
            !m_pKeystrokeDecoder->InitializeKeystrokeText(m_vecShownKeystrokes, GetStartTime()))
            return false;
        PlaceStrip();
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

/// @return false when the cache has no decoder for the clip, or that of another kind of clip.
bool CQMXKeystrokeClip::OpenSharedDecoder()
{
    const std::wstring key = GetDecoderKey();
    if (key.empty())
        return false;
    DecoderPtr decoder = DecoderPtr::Adopt(GetDecoder(key, m_decoderProp));
    m_pKeystrokeDecoder = dynamic_cast<CKeystrokeDecoder*>(decoder.Get());
    if (m_pKeystrokeDecoder == nullptr)
        return false;
    m_pVideoDecoder = decoder.Detach();
    m_pKeystrokeDecoder->SetDecoderProperty(m_decoderProp);
    m_pKeystrokeDecoder->InitializeKeystrokeText(m_vecShownKeystrokes, GetStartTime());
    PlaceStrip();
    return true;
}

/// The decoder's fields are written as they are: a new size has set them back.
void CQMXKeystrokeClip::PlaceStrip()
{
    m_pKeystrokeDecoder->m_fLeft = m_shownPlacement.left;
    m_pKeystrokeDecoder->m_fTop = m_shownPlacement.top;
    m_pKeystrokeDecoder->m_fAreaWidth = m_shownPlacement.width;
}

/// Puts this clip's size, labels and placement into the decoder, where those of another clip may stand.
void CQMXKeystrokeClip::AttachKeystrokes()
{
    if (*m_pKeystrokeDecoder->GetProperty() != m_decoderProp)
        m_pKeystrokeDecoder->SetDecoderProperty(m_decoderProp);
    if (!m_pKeystrokeDecoder->IsShowing(m_vecShownKeystrokes))
        m_pKeystrokeDecoder->InitializeKeystrokeText(m_vecShownKeystrokes, GetStartTime());
    PlaceStrip();
}

bool CQMXKeystrokeClip::GetVideoFrame(std::uint64_t time, FrameResult* out)
{
    if (out == nullptr || m_pKeystrokeDecoder == nullptr)
        return false;
    AttachKeystrokes();
    // Unsigned: a time before the clip's start reaches back before the in-point.
    out->frame = m_pKeystrokeDecoder->GetClipVideoFrame(GetInPoint() - GetStartTime() + time, out->flag);
    if (out->frame != nullptr)
        out->frame->SetAlphaFlag(true);
    return true;
}

bool CQMXKeystrokeClip::Close()
{
    ReleaseDecoder();
    return true;
}

void CQMXKeystrokeClip::ReleaseDecoder()
{
    m_pKeystrokeDecoder = nullptr;
    if (IDecoder* const decoder = std::exchange(m_pVideoDecoder, nullptr))
        decoder->Release();
}
