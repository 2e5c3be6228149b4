#include "engine/clips/QMXImageClip.h"

#include "engine/clips/QMXVideoClip.h"
#include "engine/decoders/DecoderCache.h"
#include "engine/decoders/FileKind.h"
#include "engine/decoders/still/GifDecoder.h"
#include "engine/decoders/still/ImageDecoder.h"
#include "engine/platform/NullReference.h"
#include "engine/platform/ReleaseAndClear.h"

#include <new>

namespace
{
constexpr double kTimePerMillisecond = 10'000.0;
}

CQMXImageClip::CQMXImageClip() : CQMXBaseClip(QMXClipType_Image), m_decoderProp(std::wstring(), 0) {}

CQMXImageClip::~CQMXImageClip()
{
    ReleaseDecoder();
}

void CQMXImageClip::CopyFrom(IQMXBaseClip* source)
{
    if (source == nullptr)
        return;
    CQMXBaseClip::CopyFrom(source);
    if (auto* const image = dynamic_cast<CQMXImageClip*>(source))
        m_nRotation = image->GetRotation();
    else if (auto* const video = dynamic_cast<CQMXVideoClip*>(source))
        m_nRotation = video->GetRotation();
}

std::uint32_t CQMXImageClip::GetRotation()
{
    return m_nRotation;
}

void CQMXImageClip::SetRotation(std::uint32_t degrees)
{
    m_nRotation = degrees;
}

// ---- open and close ----------------------------------------------------------------------------------------------

tagDecProp CQMXImageClip::MakeDecoderProp(const tagRenderProp& request)
{
    tagDecProp prop(GetFilePath(), GetInPoint());
    prop.flags = request.flags;
    prop.currentTime = GetInPoint() + (request.time - GetStartTime());
    prop.outPoint = GetOutPoint();
    prop.rotation = GetRotation();
    prop.decoderType = kDecoderImage;
    prop.width = request.width;
    prop.height = request.height;
    return prop;
}

/// Takes the decoder of the cache that fits m_decoderProp.
/// @return false when there is none, or when the key is that of another kind of clip.
bool CQMXImageClip::OpenSharedDecoder()
{
    DecoderPtr decoder = DecoderPtr::Adopt(GetDecoder(GetDecoderKey(), m_decoderProp));
    if (!decoder || !IsDecoderFor(decoder.Get(), m_decoderProp))
        return false;
    decoder->SetDecoderProperty(m_decoderProp);
    m_pVideoDecoder = decoder.Detach();
    return true;
}

bool CQMXImageClip::Open(const tagRenderProp& request)
{
    if (IsNullReference(&request))
        return false;
    KeepRequest(request);
    if (IsVideoOpened())
        return true;
    ReleaseDecoder();
    try
    {
        m_decoderProp = MakeDecoderProp(request);
        if ((request.flags & kRequestUseCache) != 0 && OpenSharedDecoder())
            return true;
        m_pVideoDecoder = HasExtension(m_decoderProp.filePath, L"gif") ? new CGifDecoder : new CImageDecoder;
        m_pVideoDecoder->Initialize(m_decoderProp); // what cannot be opened gives no pictures
    }
    catch (const std::bad_alloc&)
    {
    }
    return true;
}

void CQMXImageClip::ReleaseDecoder()
{
    ReleaseAndClear(m_pVideoDecoder);
}

bool CQMXImageClip::Close()
{
    ReleaseDecoder();
    return true;
}

bool CQMXImageClip::IsVideoOpened()
{
    return m_pVideoDecoder != nullptr || m_attachment.IsShown(m_renderCopy.flags);
}

void CQMXImageClip::SetAttachment(int index, IQMXBaseClip* clip)
{
    m_attachment.Set(index, clip);
}

// ---- frames ------------------------------------------------------------------------------------------------------

ISampleBuffer* CQMXImageClip::GetLastFrame()
{
    return m_pVideoDecoder != nullptr ? m_pVideoDecoder->GetLastFrame() : nullptr;
}

bool CQMXImageClip::GetVideoFrame(std::uint64_t time, FrameResult* out)
{
    if (out == nullptr)
        return false;
    out->frame = nullptr;
    if (m_attachment.IsShown(m_renderCopy.flags))
    {
        out->frame = m_attachment.LastFrame().Detach();
        return out->frame != nullptr;
    }
    if (m_pVideoDecoder == nullptr)
        return false;
    tagDecProp* const prop = m_pVideoDecoder->GetProperty();
    if (*prop != m_decoderProp) // another clip's, which shares the decoder
        m_pVideoDecoder->SetDecoderProperty(m_decoderProp);
    const std::uint64_t source = GetInPoint() + (time - GetStartTime());
    const auto milliseconds = static_cast<std::uint64_t>(static_cast<double>(source) / kTimePerMillisecond);
    SampleBufferPtr frame = SampleBufferPtr::Adopt(m_pVideoDecoder->GetClipVideoFrame(milliseconds, out->flag));
    out->flag = time < GetStartTime() || time >= GetEndTime();
    if (frame)
        frame->SetAlphaFlag(CarriesAlpha(prop->filePath));
    out->frame = frame.Detach();
    return true;
}
