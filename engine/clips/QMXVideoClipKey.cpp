// The colour key of video clips, and what turns and scales their pictures.
#include "engine/clips/QMXVideoClip.h"
#include "engine/platform/FramePixels.h"
#include "engine/platform/PixelUtility.h"

#include <cstring>
#include <new>
#include <utility>

namespace
{
/// A new BGRA frame and its description. Null when memory is short.
SampleBufferPtr MakeFrame(std::uint32_t width, std::uint32_t height, tagSampleInfo& info)
{
    SampleBufferPtr frame = SampleBufferPtr::Adopt(CreateSampleBuffer(kSampleFormatBgra, width, height, 0));
    return frame && DescribeFrame(*frame.Get(), info) ? frame : SampleBufferPtr();
}

/// Wipes a frame that could not be painted: nobody sees what its storage held before.
void ClearFrame(const tagSampleInfo& info)
{
    if (info.pData != nullptr)
        std::memset(info.pData, 0, std::size_t{info.nStride} * info.nHeight);
}
} // namespace

/// A copy of @p source turned clockwise. Transparent for angles that are no multiple of 90; null when it cannot be
/// made.
SampleBufferPtr CQMXVideoClip::RotateFrame(ISampleBuffer& source, std::uint32_t rotation)
{
    const bool upright = rotation == 180;
    tagSampleInfo sourceInfo;
    tagSampleInfo targetInfo;
    if (!DescribeFrame(source, sourceInfo))
        return {};
    SampleBufferPtr target = MakeFrame(upright ? sourceInfo.nWidth : sourceInfo.nHeight,
                                       upright ? sourceInfo.nHeight : sourceInfo.nWidth, targetInfo);
    if (!target)
        return {};
    target->SetRatioX(upright ? source.GetRatioX() : source.GetRatioY());
    target->SetRatioY(upright ? source.GetRatioY() : source.GetRatioX());
    if (!RotateBGRA(&sourceInfo, &targetInfo, rotation))
        ClearFrame(targetInfo);
    target->SetAlphaFlag(source.GetAlphaFlag());
    return target;
}

// ---- settings ----------------------------------------------------------------------------------------------------

void CQMXVideoClip::SetTransparentColor(bool on, const tagTransparentColorInfo* info)
{
    m_bTransparentColor = on;
    if (info == nullptr || info == m_pTransparentColor)
        return;
    ClearTransparentColor();
    m_pPreparedBackground = {}; // made of the former settings' background
    m_pTransparentColor = new (std::nothrow) tagTransparentColorInfo(*info);
    if (m_pTransparentColor == nullptr && info->pBackground != nullptr)
        info->pBackground->Release(); // it was handed over
}

void CQMXVideoClip::ClearTransparentColor()
{
    DropTransparentColor();
}

void CQMXVideoClip::DropTransparentColor()
{
    tagTransparentColorInfo* const info = std::exchange(m_pTransparentColor, nullptr);
    if (info != nullptr && info->pBackground != nullptr)
        info->pBackground->Release();
    delete info;
}

tagTransparentColorInfo* CQMXVideoClip::GetTransparentColor()
{
    return m_pTransparentColor;
}

bool CQMXVideoClip::IsTransparentColorOn()
{
    return m_bTransparentColor;
}

// ---- the pass ----------------------------------------------------------------------------------------------------

ISampleBuffer* CQMXVideoClip::PrepareBackground(std::uint32_t width, std::uint32_t height)
{
    ISampleBuffer* const background = m_pTransparentColor != nullptr ? m_pTransparentColor->pBackground : nullptr;
    const std::uint32_t rotation = GetRotation();
    tagSampleInfo source;
    if (background == nullptr || !DescribeFrame(*background, source))
    {
        m_pPreparedBackground = {};
        return nullptr;
    }
    if (source.nWidth == width && source.nHeight == height && rotation == 0)
    {
        m_pPreparedBackground = SampleBufferPtr::Retain(background);
        return background;
    }
    tagSampleInfo target;
    m_pPreparedBackground = {};
    SampleBufferPtr prepared = MakeFrame(width, height, target);
    if (!prepared)
        return nullptr;
    if (rotation != 0 && rotation != 180)
        target = DescribeTightBgra(target.pData, height, width); // the size before the turn
    if (!ScaleAndRotateBGRA(&source, &target, rotation, kScaleArea))
        ClearFrame(target);
    m_pPreparedBackground = std::move(prepared);
    return m_pPreparedBackground.Get();
}

void CQMXVideoClip::ApplyTransparentColor(std::uint8_t* pixels, std::uint32_t width, std::uint32_t height)
{
    if (m_pTransparentColor == nullptr || pixels == nullptr)
        return;
    const tagTransparentColorInfo& settings = *m_pTransparentColor;
    const bool fits = m_pPreparedBackground && m_pPreparedBackground->GetWidth() == width &&
                      m_pPreparedBackground->GetHeight() == height;
    if (!fits && (m_pPreparedBackground || settings.bKeyOnly == 0))
        PrepareBackground(width, height);

    const tagSampleInfo frame = DescribeTightBgra(pixels, width, height);
    tagSampleInfo background = DescribeTightBgra(nullptr, width, height);
    std::uint8_t keyOnly = settings.bKeyOnly;
    if (!m_pPreparedBackground || !DescribeFrame(*m_pPreparedBackground.Get(), background))
        keyOnly = 1; // nothing to show through
    const std::uint8_t color[3] = {settings.nColor[2], settings.nColor[1], settings.nColor[0]};
    ReplaceToTransparent(&frame, &background, color, settings.dSimilarity, settings.dSmoothness, settings.dSpill,
                         settings.nOption, keyOnly);
}

/// The colour-keyed copy of @p frame; @p frame itself where no settings were ever given. The decoder keeps its frame
/// as it was, to be keyed anew when the settings change; with the same settings the same copy is handed out again.
SampleBufferPtr CQMXVideoClip::KeyFrame(const SampleBufferPtr& frame)
{
    if (m_pTransparentColor == nullptr)
        return frame;
    if (m_pKeyedFrame && frame.Get() == m_pKeySource.Get() && m_keyedWith == *m_pTransparentColor)
        return m_pKeyedFrame;
    m_pKeySource = {};
    m_pKeyedFrame = {};
    tagSampleInfo source;
    tagSampleInfo target;
    if (!DescribeFrame(*frame.Get(), source))
        return {};
    SampleBufferPtr keyed = MakeFrame(source.nWidth, source.nHeight, target);
    if (!keyed || target.pData == nullptr)
        return {};
    std::memcpy(target.pData, source.pData, std::size_t{source.nStride} * source.nHeight);
    keyed->SetRatioX(frame->GetRatioX());
    keyed->SetRatioY(frame->GetRatioY());
    ApplyTransparentColor(target.pData, target.nWidth, target.nHeight);
    keyed->SetAlphaFlag(true);
    m_pKeySource = frame;
    m_pKeyedFrame = keyed;
    m_keyedWith = *m_pTransparentColor;
    return keyed;
}
