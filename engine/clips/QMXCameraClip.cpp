#include "engine/clips/QMXCameraClip.h"

#include "engine/decoders/media/CameraClipDecoder.h"
#include "engine/platform/NullReference.h"

#include <new>

CQMXCameraClip::CQMXCameraClip() : CQMXVideoClip(QMXClipType_Camera) {}

CQMXCameraClip::~CQMXCameraClip() = default;

void CQMXCameraClip::CopyFrom(IQMXBaseClip* source)
{
    if (source == nullptr || source->GetClipType() != QMXClipType_Camera)
        return;
    auto* const camera = dynamic_cast<CQMXCameraClip*>(source);
    if (camera == nullptr)
        return;
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): the video clip's takes from video clips only
    CQMXBaseClip::CopyFrom(source);
    m_nRotation = camera->GetRotation();
    m_dFrameRate = camera->GetFrameRate();
}

bool CQMXCameraClip::Open(const tagRenderProp& request)
{
    try
    {
        if (IsNullReference(&request) || GetFilePath().empty())
            return false;
        Close();
        KeepRequest(request);
        m_decoderProp = MakeDecoderProp(request, kDecoderCamera);
        if ((request.flags & kRequestUseCache) != 0 && OpenSharedDecoder())
            return true;
        m_pVideoDecoder = new CCameraClipDecoder; // kept when it cannot open: the next Open() makes another
        return m_pVideoDecoder->Initialize(m_decoderProp);
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

bool CQMXCameraClip::GetVideoFrame(std::uint64_t time, FrameResult* out)
{
    if (out == nullptr)
        return false;
    out->frame = nullptr;
    SampleBufferPtr frame;
    if (m_attachment.IsShown(m_renderCopy.flags))
    {
        frame = GetAttachedFrame();
        if (!frame)
            return false;
        if (GetRotation() != 0)
        {
            // A new picture: nothing but the pixels comes from the attached clip's.
            frame->SetAlphaFlag(false);
            frame->SetRatioX(frame->GetWidth());
            frame->SetRatioY(frame->GetHeight());
        }
    }
    else
    {
        if (m_pVideoDecoder == nullptr)
            return false;
        const std::uint64_t number = (GetInPoint() + (time - GetStartTime())) / AttachDecoderProp();
        frame = SampleBufferPtr::Adopt(m_pVideoDecoder->GetClipVideoFrame(number, out->flag));
    }
    if (frame && m_bTransparentColor && frame->GetFormat() == kSampleFormatBgra)
        frame = KeyFrame(frame);
    out->frame = frame.Detach();
    return true;
}
