#include "engine/decoders/still/GifDecoder.h"

#include "engine/decoders/still/MetadataValue.h"
#include "engine/platform/FramePixels.h"
#include "engine/platform/PixelUtility.h"
#include "engine/platform/ReleaseAndClear.h"
#include "engine/platform/ReturnIfFailed.h"

#include <wincodec.h>

#include <algorithm>

namespace
{
constexpr std::uint32_t kShortestFrame = 90; ///< milliseconds
constexpr std::uint32_t kMsPerDelayUnit = 10;
} // namespace

// ---- one request -------------------------------------------------------------------------------------------------

ISampleBuffer* CGifDecoder::GetClipVideoFrame(std::uint64_t timeMs, bool& /*flag*/)
{
    if (IsPathChanged())
        Initialize(m_prop);
    const std::uint32_t index = FrameAt(timeMs);
    m_bComposedNow = false;
    if (m_pRaw == nullptr || index != m_nCurrentFrame)
    {
        m_bComposedNow = true;
        std::uint32_t steps = 1;
        if (index < m_nCurrentFrame)
        {
            m_nCurrentFrame = 0;
            m_nNextFrame = 0;
            steps = std::max(index, 1U);
        }
        else if (m_nNextFrame <= index)
        {
            steps = index + 1 - m_nNextFrame; // one more than usual after a step back
        }
        while (steps > 0 && SUCCEEDED(ComposeNextFrame()))
            --steps;
    }
    m_nCurrentFrame = index;
    const bool isSame = m_pProcessed != nullptr && !m_bComposedNow && !m_bPropertyChanged;
    if (isSame && (m_bShownAgain || CImageDecoder::IsNeedProcess()))
        return GetLastFrame(); // made once more, it would come out the same
    ProcessFrame(true);
    m_bPropertyChanged = false;
    m_bShownAgain = !m_bComposedNow && isSame;
    return GetLastFrame();
}

bool CGifDecoder::IsNeedProcess()
{
    return m_bComposedNow || m_pProcessed == nullptr || CImageDecoder::IsNeedProcess();
}

// ---- composition -------------------------------------------------------------------------------------------------

HRESULT CGifDecoder::ComposeNextFrame()
{
    QMX_RETURN_IF_FAILED(DisposeCurrentFrame());
    return OverlayNextFrame();
}

HRESULT CGifDecoder::OverlayNextFrame()
{
    if (m_nFrameCount == 0)
        return E_FAIL;
    QMX_RETURN_IF_FAILED(GetRawFrame(m_nNextFrame));
    if (m_nDisposal == kDisposalPrevious)
        QMX_RETURN_IF_FAILED(SaveComposedFrame());
    if (m_nNextFrame == 0)
    {
        FillCanvas();
        ++m_nLoopsDone;
    }
    tagSampleInfo frame;
    tagSampleInfo canvas;
    if (m_pRaw == nullptr || !DescribeFrame(*m_pFrameBuffer, frame) || !DescribeFrame(*m_pRaw, canvas))
        return E_FAIL;
    MergeBGRA(&frame, &canvas, static_cast<std::int32_t>(m_nFrameLeft), static_cast<std::int32_t>(m_nFrameTop), 0);
    m_nNextFrame = (m_nNextFrame + 1) % m_nFrameCount;
    return S_OK;
}

/// Decodes frame @p index into m_pFrameBuffer and reads where, for how long and until what it is shown.
HRESULT CGifDecoder::GetRawFrame(std::uint32_t index)
{
    if (m_pBitmapDecoder == nullptr || m_pFactory == nullptr)
        return E_FAIL;
    ComPtr<IWICBitmapFrameDecode> frame;
    QMX_RETURN_IF_FAILED(m_pBitmapDecoder->GetFrame(index, frame.Put()));
    ComPtr<IWICFormatConverter> converter;
    QMX_RETURN_IF_FAILED(m_pFactory->CreateFormatConverter(converter.Put()));
    QMX_RETURN_IF_FAILED(converter->Initialize(frame.Get(), GUID_WICPixelFormat32bppBGRA, WICBitmapDitherTypeNone,
                                               nullptr, 0.0, WICBitmapPaletteTypeCustom));
    UINT width = 0;
    UINT height = 0;
    QMX_RETURN_IF_FAILED(converter->GetSize(&width, &height));
    ReleaseAndClear(m_pFrameBuffer);
    QMX_RETURN_IF_FAILED(CopyToBuffer(*converter.Get(), width, height, &m_pFrameBuffer));
    ComPtr<IWICMetadataQueryReader> reader;
    QMX_RETURN_IF_FAILED(frame->GetMetadataQueryReader(reader.Put()));
    return ReadFrameMetadata(reader.Get());
}

HRESULT CGifDecoder::ReadFrameMetadata(IWICMetadataQueryReader* reader)
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    QMX_RETURN_IF_FAILED(ReadWord(reader, L"/imgdesc/Left", m_nFrameLeft));
    QMX_RETURN_IF_FAILED(ReadWord(reader, L"/imgdesc/Top", m_nFrameTop));
    QMX_RETURN_IF_FAILED(ReadWord(reader, L"/imgdesc/Width", width));
    m_nFrameRight = m_nFrameLeft + width;
    QMX_RETURN_IF_FAILED(ReadWord(reader, L"/imgdesc/Height", height));
    m_nFrameBottom = m_nFrameTop + height;
    std::uint32_t delay = 0;
    std::uint32_t disposal = 0;
    if (FAILED(ReadWord(reader, L"/grctlext/Delay", delay)))
        delay = 0;
    m_nFrameDelay = std::max(delay * kMsPerDelayUnit, kShortestFrame);
    if (FAILED(ReadByte(reader, L"/grctlext/Disposal", disposal)))
        disposal = 0;
    m_nDisposal = disposal;
    return S_OK;
}

HRESULT CGifDecoder::DisposeCurrentFrame()
{
    switch (m_nDisposal)
    {
    case kDisposalNone:
    case kDisposalKeep:
        return S_OK;
    case kDisposalBackground:
        return ClearCurrentFrameArea();
    case kDisposalPrevious:
        return RestoreSavedFrame();
    default:
        return E_FAIL;
    }
}

HRESULT CGifDecoder::ClearCurrentFrameArea()
{
    tagSampleInfo canvas;
    if (m_pRaw == nullptr || !DescribeFrame(*m_pRaw, canvas))
        return E_FAIL;
    // A frame may reach outside the canvas.
    const std::uint32_t left = std::min(m_nFrameLeft, canvas.nWidth);
    const std::uint32_t right = std::min(m_nFrameRight, canvas.nWidth);
    const std::uint32_t bottom = std::min(m_nFrameBottom, canvas.nHeight);
    for (std::uint32_t y = m_nFrameTop; y < bottom; ++y)
    {
        auto* const row = reinterpret_cast<std::uint32_t*>(canvas.pData + std::size_t{y} * canvas.nStride);
        std::fill(row + left, row + right, m_nBackgroundColor);
    }
    return S_OK;
}

HRESULT CGifDecoder::SaveComposedFrame()
{
    const bool saved = m_pRaw != nullptr && m_pSavedBuffer != nullptr && m_pSavedBuffer->CopyFrom(m_pRaw);
    return saved ? S_OK : E_FAIL;
}

HRESULT CGifDecoder::RestoreSavedFrame()
{
    const bool restored = m_pRaw != nullptr && m_pSavedBuffer != nullptr && m_pRaw->CopyFrom(m_pSavedBuffer);
    return restored ? S_OK : E_FAIL;
}

void CGifDecoder::FillCanvas()
{
    std::uint8_t* pixels = nullptr;
    std::uint32_t cb = 0;
    if (m_pRaw != nullptr && m_pRaw->GetBuffer(&pixels, &cb) && pixels != nullptr)
        std::fill_n(reinterpret_cast<std::uint32_t*>(pixels), cb / 4, m_nBackgroundColor);
}
