#include "engine/decoders/still/FlashDecoder.h"

#include "engine/platform/NullReference.h"
#include "engine/platform/PixelUtility.h"

#include <numeric>
#include <utility>

namespace
{
constexpr double kMaxSide = 32'767;

/// Truncated. @return 0 for what no picture can have.
std::uint32_t Side(double pixels)
{
    return pixels >= 1 && pixels <= kMaxSide ? static_cast<std::uint32_t>(pixels) : 0;
}
} // namespace

CFlashDecoder::~CFlashDecoder()
{
    if (m_pLastFrame)
        m_pLastFrame->Release();
    if (m_pRenderer)
        m_pRenderer->Release();
}

bool CFlashDecoder::Initialize(const tagDecProp& prop)
{
    if (IsNullReference(&prop) || !CDecoder::Initialize(prop))
        return false;
    if (m_prop.frameDuration == 0)
        m_prop.frameDuration = FrameDurationFromRate(m_prop.frameRate);
    if (ISWFRenderObj* const pBefore = std::exchange(m_pRenderer, CreateSWFRenderObj()))
        pBefore->Release();
    if (!m_pRenderer)
        return false;
    const HRESULT opened = m_pRenderer->OpenMovie(m_prop.filePath.c_str());
    m_movieInfo = {};
    m_pRenderer->GetMovieInfo(&m_movieInfo);
    return SUCCEEDED(opened);
}

bool CFlashDecoder::OutputSize(std::uint32_t& width, std::uint32_t& height) const
{
    if ((m_prop.flags & kRequestNoAttachment) != 0)
    {
        width = Side(m_movieInfo.dWidth);
        height = Side(m_movieInfo.dHeight);
    }
    else
    {
        width = Side(m_prop.width);
        height = Side(m_movieInfo.dHeight / m_movieInfo.dWidth * m_prop.width);
    }
    return width != 0 && height != 0;
}

/// The renderer's rows come turned by half a turn: the rotation makes up for it.
SampleBufferPtr CFlashDecoder::TurnedFrame(const tagSWFFrameInfo& info, const std::uint8_t* pPixels,
                                           std::uint32_t width, std::uint32_t height) const
{
    SampleBufferPtr frame = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, width, height, 0));
    if (!frame)
        return frame;
    tagSampleInfo source, target;
    source.pData = const_cast<std::uint8_t*>(pPixels); // the descriptor serves targets as well
    source.nWidth = info.nWidth;
    source.nHeight = info.nHeight;
    source.nStride = info.nWidth * 4;
    frame->GetBuffer(&target.pData, nullptr);
    target.nWidth = width;
    target.nHeight = height;
    target.nStride = width * 4;
    const std::uint32_t angle = (m_prop.rotation % 360 + 180) % 360;
    ScaleAndRotateBGRA(&source, &target, angle, kScaleArea);
    const std::uint32_t divisor = std::gcd(width, height);
    const bool upright = angle % 180 == 0;
    frame->SetRatioX((upright ? width : height) / divisor);
    frame->SetRatioY((upright ? height : width) / divisor);
    frame->SetSize(upright ? width : height, upright ? height : width);
    return frame;
}

ISampleBuffer* CFlashDecoder::GetClipVideoFrame(std::uint64_t time, bool& ended)
{
    if (!m_pRenderer)
        return nullptr;
    bool ignored = false;
    bool& failed = IsNullReference(&ended) ? ignored : ended;
    failed = false;
    std::uint32_t width = 0, height = 0;
    if (!OutputSize(width, height))
    {
        failed = true;
        return nullptr;
    }
    m_pRenderer->SetRenderSize(width, height);
    m_pRenderer->SetRenderFlag(kSWFRenderHalfTurn);
    const std::uint64_t index = m_prop.frameDuration != 0 ? time / m_prop.frameDuration : 0;
    const tagSWFFrameInfo* pInfo = nullptr;
    const std::uint8_t* pPixels = nullptr;
    if (FAILED(m_pRenderer->RenderFrame(static_cast<std::uint32_t>(index), &pInfo, &pPixels)) || !pInfo || !pPixels)
    {
        failed = true;
        return nullptr;
    }
    SampleBufferPtr frame = TurnedFrame(*pInfo, pPixels, width, height);
    if (!frame)
        return nullptr;
    frame->AddRef(); // one for the decoder, one for the caller
    if (ISampleBuffer* const pBefore = std::exchange(m_pLastFrame, frame.Get()))
        pBefore->Release();
    return frame.Detach();
}

ISampleBuffer* CFlashDecoder::GetLastFrame()
{
    if (m_pLastFrame)
        m_pLastFrame->AddRef();
    return m_pLastFrame;
}
