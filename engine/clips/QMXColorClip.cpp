#include "engine/clips/QMXColorClip.h"

#include "engine/platform/NullReference.h"

#include <algorithm>

namespace
{
constexpr std::uint32_t kOpaqueBlack = 0xFF000000U; // bytes B, G, R, A

SampleBufferPtr MakeBlackFrame(std::uint32_t width, std::uint32_t height)
{
    SampleBufferPtr frame = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, width, height, 0));
    std::uint8_t* pixels = nullptr;
    std::uint32_t cb = 0;
    if (!frame || !frame->GetBuffer(&pixels, &cb))
        return {};
    std::fill_n(reinterpret_cast<std::uint32_t*>(pixels), cb / 4, kOpaqueBlack);
    return frame;
}
} // namespace

CQMXColorClip::CQMXColorClip() : CQMXBaseClip(QMXClipType_Color) {}

CQMXColorClip::~CQMXColorClip() = default;

void CQMXColorClip::CopyFrom(IQMXBaseClip* source)
{
    if (source == nullptr)
        return;
    CQMXBaseClip::CopyFrom(source);
    const auto* const color = dynamic_cast<const CQMXColorClip*>(source);
    m_pColorFrame = color != nullptr ? color->m_pColorFrame : SampleBufferPtr();
}

bool CQMXColorClip::Open(const tagRenderProp& request)
{
    if (IsNullReference(&request))
        return false;
    KeepRequest(request);
    if (!IsVideoOpened())
        m_pColorFrame = MakeBlackFrame(request.width, request.height);
    return static_cast<bool>(m_pColorFrame);
}

bool CQMXColorClip::GetVideoFrame(std::uint64_t time, FrameResult* out)
{
    if (!m_pColorFrame || out == nullptr)
        return false;
    out->flag = time < GetStartTime() || time >= GetEndTime();
    out->frame = SampleBufferPtr(m_pColorFrame).Detach();
    return true;
}

bool CQMXColorClip::IsVideoOpened()
{
    return m_pColorFrame && m_pColorFrame->GetWidth() == m_renderCopy.width &&
           m_pColorFrame->GetHeight() == m_renderCopy.height;
}
