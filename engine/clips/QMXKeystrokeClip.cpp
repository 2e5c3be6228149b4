#include "engine/clips/QMXKeystrokeClip.h"

#include "engine/clips/OwnedItems.h"
#include "engine/decoders/still/KeystrokeDecoder.h"
#include "engine/platform/NullReference.h"

#include <new>

CQMXKeystrokeClip::CQMXKeystrokeClip() : CQMXTextClip(QMXClipType_Keystroke, kDecoderKeystroke) {}

CQMXKeystrokeClip::~CQMXKeystrokeClip()
{
    DeleteOwned(m_vecKeystrokes);
}

void CQMXKeystrokeClip::CopyFrom(IQMXBaseClip* source)
{
    if (source == nullptr)
        return;
    CQMXTextClip::CopyFrom(source);
    if (auto* const keystroke = dynamic_cast<CQMXKeystrokeClip*>(source))
        AddOwnedCopies(m_vecKeystrokes, keystroke->m_vecKeystrokes);
}

void CQMXKeystrokeClip::AddKeystroke(tagQMXKeystrokeInfo* item)
{
    AddOwned(m_vecKeystrokes, item);
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
    return CopyPointers(m_vecKeystrokes, out);
}

bool CQMXKeystrokeClip::Open(const tagRenderProp& request)
try
{
    if (IsNullReference(&request))
        return false;
    Close();
    m_shownPlacement = m_placement;
    m_vecShownKeystrokes = m_vecKeystrokes;
    if (!TakeDecoder(request))
        return false;
    if (!Decoder().InitializeKeystrokeText(m_vecShownKeystrokes, GetStartTime()) && !IsDecoderShared())
        return false;
    PlaceStrip();
    return true;
}
catch (const std::bad_alloc&)
{
    return false;
}

bool CQMXKeystrokeClip::GetVideoFrame(std::uint64_t time, FrameResult* out)
{
    if (out == nullptr || m_pVideoDecoder == nullptr)
        return false;
    // Labels and placement of another clip may stand in a shared decoder.
    RestoreSize();
    if (!Decoder().IsShowing(m_vecShownKeystrokes))
        Decoder().InitializeKeystrokeText(m_vecShownKeystrokes, GetStartTime());
    PlaceStrip();
    // Unsigned: a time before the clip's start reaches back before the in-point.
    return ShowFrame(GetInPoint() - GetStartTime() + time, *out);
}

CKeystrokeDecoder& CQMXKeystrokeClip::Decoder()
{
    return *static_cast<CKeystrokeDecoder*>(m_pVideoDecoder);
}

/// The decoder's fields are written as they are: a new size has set them back.
void CQMXKeystrokeClip::PlaceStrip()
{
    Decoder().m_fLeft = m_shownPlacement.left;
    Decoder().m_fTop = m_shownPlacement.top;
    Decoder().m_fAreaWidth = m_shownPlacement.width;
}
