#include "engine/clips/QMXVideoClip.h"

#include "engine/decoders/DecoderCache.h"
#include "engine/decoders/FileKind.h"
#include "engine/decoders/media/VideoDecoder.h"
#include "engine/decoders/still/FlashDecoder.h"
#include "engine/platform/NullReference.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

namespace
{
constexpr std::uint64_t kThumbnailFlags = 8;
constexpr std::uint32_t kThumbnailWidth = 640;
constexpr double kThumbnailFrameRate = 30.0;
} // namespace

CQMXVideoClip::CQMXVideoClip() : CQMXVideoClip(QMXClipType_Video) {}

CQMXVideoClip::CQMXVideoClip(QMXClipType type) : CQMXSoundClip(type), m_decoderProp(std::wstring(), 0) {}

CQMXVideoClip::~CQMXVideoClip()
{
    ReleaseDecoder();
    DropTransparentColor();
}

void CQMXVideoClip::CopyFrom(IQMXBaseClip* source)
{
    if (source == nullptr || source->GetClipType() != QMXClipType_Video)
        return;
    auto* const video = dynamic_cast<CQMXVideoClip*>(source);
    if (video == nullptr)
        return;
    CQMXBaseClip::CopyFrom(source);
    m_nRotation = video->GetRotation();
    m_dFrameRate = video->GetFrameRate();
}

std::uint32_t CQMXVideoClip::GetRotation()
{
    return m_nRotation;
}

void CQMXVideoClip::SetRotation(std::uint32_t degrees)
{
    m_nRotation = degrees;
}

double CQMXVideoClip::GetFrameRate()
{
    return m_dFrameRate;
}

void CQMXVideoClip::SetFrameRate(double framesPerSecond)
{
    m_dFrameRate = framesPerSecond;
}

// ---- open and close ----------------------------------------------------------------------------------------------

tagDecProp CQMXVideoClip::MakeDecoderProp(const tagRenderProp& request, std::uint32_t decoderType)
{
    tagDecProp prop(GetFilePath(), GetInPoint());
    prop.flags = request.flags;
    prop.frameRate = GetFrameRate();
    prop.frameDuration = FrameDurationFromRate(prop.frameRate);
    prop.currentTime = GetInPoint() + (request.time - GetStartTime());
    prop.outPoint = GetOutPoint();
    prop.rotation = GetRotation();
    prop.decoderType = decoderType;
    prop.width = request.width;
    prop.height = request.height;
    return prop;
}

/// Takes the decoder of the cache that fits m_decoderProp.
/// @return false when there is none, or when the key is that of another kind of clip.
bool CQMXVideoClip::OpenSharedDecoder()
{
    const std::wstring key = GetDecoderKey();
    if (key.empty())
        return false;
    DecoderPtr decoder = DecoderPtr::Adopt(GetDecoder(key, m_decoderProp));
    if (!decoder || !IsDecoderFor(decoder.Get(), m_decoderProp))
        return false;
    decoder->SetDecoderProperty(m_decoderProp);
    m_pVideoDecoder = decoder.Detach();
    return true;
}

bool CQMXVideoClip::Open(const tagRenderProp& request)
{
    if (IsNullReference(&request))
        return false;
    Close(); // a clip that is opened twice gives the first decoder back
    KeepRequest(request);
    if (m_attachment.IsShown(m_renderCopy.flags))
    {
        if (m_bTransparentColor)
            PrepareBackground(request.width, request.height);
        return true;
    }
    try
    {
        m_decoderProp = MakeDecoderProp(request, kDecoderVideo);
        if ((request.flags & kRequestUseCache) != 0 && OpenSharedDecoder())
        {
            if (m_bTransparentColor)
                PrepareBackground(request.width, request.height);
            return true;
        }
        if (HasExtension(m_decoderProp.filePath, L"swf"))
            m_pVideoDecoder = new CFlashDecoder;
        else
            m_pVideoDecoder = new CVideoDecoder; // kept when it cannot open: it then gives blank frames
        return m_pVideoDecoder->Initialize(m_decoderProp);
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

void CQMXVideoClip::ReleaseDecoder()
{
    if (IDecoder* const decoder = std::exchange(m_pVideoDecoder, nullptr))
        decoder->Release();
}

bool CQMXVideoClip::Close()
{
    ReleaseDecoder();
    m_pKeySource = {};
    m_pKeyedFrame = {};
    return true;
}

bool CQMXVideoClip::IsVideoOpened()
{
    return m_pVideoDecoder != nullptr || m_attachment.IsShown(m_renderCopy.flags);
}

void CQMXVideoClip::SetAttachment(int index, IQMXBaseClip* clip)
{
    m_attachment.Set(index, clip);
}

// ---- frames ------------------------------------------------------------------------------------------------------

ISampleBuffer* CQMXVideoClip::GetLastFrame()
{
    if (m_pVideoDecoder == nullptr)
        return nullptr;
    SampleBufferPtr frame = SampleBufferPtr::Adopt(m_pVideoDecoder->GetLastFrame());
    if (frame && frame.Get() == m_pKeySource.Get())
        frame = m_pKeyedFrame;
    return frame.Detach();
}

bool CQMXVideoClip::GetVideoFrame(std::uint64_t time, FrameResult* out)
{
    if (out == nullptr)
        return false;
    out->frame = nullptr;
    if (m_attachment.IsShown(m_renderCopy.flags))
    {
        out->frame = GetAttachedFrame().Detach();
        return out->frame != nullptr;
    }
    if (m_pVideoDecoder == nullptr)
        return false;
    const std::uint64_t duration = AttachDecoderProp();
    const std::uint64_t index = (GetInPoint() + (time - GetStartTime())) / duration;
    SampleBufferPtr frame = SampleBufferPtr::Adopt(m_pVideoDecoder->GetClipVideoFrame(index * duration, out->flag));
    if (frame)
        frame->SetAlphaFlag(CarriesAlpha(m_pVideoDecoder->GetProperty()->filePath));
    if (frame && m_bTransparentColor)
        frame = KeyFrame(frame);
    out->frame = frame.Detach();
    return true;
}

/// Puts this clip's own record into the decoder when that of another clip stands there.
/// @return the duration of a frame in 100 ns, at least 1.
std::uint64_t CQMXVideoClip::AttachDecoderProp()
{
    tagDecProp* const prop = m_pVideoDecoder->GetProperty();
    if (*prop != m_decoderProp)
        m_pVideoDecoder->SetDecoderProperty(m_decoderProp);
    if (prop->frameDuration == 0)
        prop->frameDuration = FrameDurationFromRate(prop->frameRate);
    return std::max<std::uint64_t>(prop->frameDuration, 1); // rates above 10 MHz have no duration
}

/// The attached clip's last frame, turned by this clip's rotation.
SampleBufferPtr CQMXVideoClip::GetAttachedFrame()
{
    const SampleBufferPtr source = m_attachment.LastFrame();
    const std::uint32_t rotation = GetRotation();
    return source && rotation != 0 ? RotateFrame(*source.Get(), rotation) : source;
}

ISampleBuffer* CQMXVideoClip::GetThumbnail(double aspect)
{
    const double height = std::trunc(kThumbnailWidth * aspect);
    tagRenderProp request;
    request.flags = kThumbnailFlags;
    request.width = kThumbnailWidth;
    request.height = height >= 0 && height <= INT32_MAX ? static_cast<std::uint32_t>(height) : 0;
    request.auxValue = kThumbnailFrameRate;
    request.factorX = 0;
    request.factorY = 0;
    FrameResult result;
    Open(request);
    GetVideoFrame(0, &result);
    Close();
    return result.frame;
}
