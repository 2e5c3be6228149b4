#include "companions/pixelutility/Bands.h"
#include "companions/pixelutility/BgraPicture.h"
#include "companions/pixelutility/ConvertNv12.h"
#include "companions/pixelutility/RotateBgra.h"
#include "companions/pixelutility/ScaleBgra.h"
#include "companions/pixelutility/kernels/ChromaKey.h"
#include "engine/platform/PixelUtility.h"

namespace
{
bool IsQuarter(std::uint32_t angle)
{
    return angle == 90 || angle == 270;
}

/// Where a picture that is scaled and turned goes.
struct TurnedTarget
{
    BgraPicture picture;
    std::uint32_t width = 0; ///< before the turn
    std::uint32_t height = 0;
};

/// @return false when there is nothing to write to, or an angle that is none: the target is then cleared.
bool PrepareTarget(const tagSampleInfo* pTarget, std::uint32_t angle, TurnedTarget& target)
{
    tagSampleInfo info = pTarget ? *pTarget : tagSampleInfo();
    if (IsQuarter(angle))
        info.nStride = info.nWidth * 4; // the rows that are written are tight, whatever the record says
    BgraPicture& picture = target.picture;
    if (!BgraPicture::FromDescriptor(&info, picture))
        return false;
    if (!IsQuarterTurn(angle))
    {
        picture.Clear();
        return false;
    }
    target.width = picture.width;
    target.height = picture.height;
    if (IsQuarter(angle))
        picture = {picture.pData, target.height, target.width, target.height * 4};
    return true;
}

ShrinkMode ShrinkModeOf(std::uint32_t mode)
{
    return mode == kScaleArea ? ShrinkMode::Area : ShrinkMode::Bilinear;
}
} // namespace

bool ScaleAndRotateBGRA(const tagSampleInfo* pSource, const tagSampleInfo* pTarget, std::uint32_t angle,
                        std::uint32_t mode)
{
    TurnedTarget target;
    BgraPicture source;
    return PrepareTarget(pTarget, angle, target) && BgraPicture::FromDescriptor(pSource, source) &&
           ScaleAndTurnPicture(source, target.width, target.height, target.picture, angle, ShrinkModeOf(mode));
}

bool ScaleAndConvertNV12(const tagSampleInfo* pSource, const tagSampleInfo* pTarget, std::uint32_t angle,
                         std::uint32_t mode)
{
    TurnedTarget target;
    Nv12Picture source;
    return PrepareTarget(pTarget, angle, target) && Nv12Picture::FromDescriptor(pSource, source) &&
           ConvertScaleAndTurn(source, target.width, target.height, target.picture, angle, ShrinkModeOf(mode));
}

bool RotateBGRA(const tagSampleInfo* pSource, const tagSampleInfo* pTarget, std::uint32_t angle)
{
    BgraPicture target;
    BgraPicture source;
    if (!BgraPicture::FromDescriptor(pTarget, target) || !BgraPicture::FromDescriptor(pSource, source))
        return false;
    const bool fits =
        IsQuarter(angle) ? target.width == source.height && target.height == source.width : target.HasSizeOf(source);
    if (!IsQuarterTurn(angle) || !fits)
    {
        target.Clear();
        return false;
    }
    TurnPicture(source, target, angle);
    return true;
}

bool ReplaceToTransparent(const tagSampleInfo* pFrame, const tagSampleInfo* pBackground, const std::uint8_t* pKeyColor,
                          double similarity, double smoothness, double spill, std::uint8_t option, std::uint8_t keyOnly)
{
    BgraPicture frame;
    if (!pKeyColor || !BgraPicture::FromDescriptor(pFrame, frame))
        return false;
    BgraPicture background;
    if (keyOnly == 0 && pBackground && pBackground->pData &&
        (!BgraPicture::FromDescriptor(pBackground, background) || !background.HasSizeOf(frame)))
        return false;
    const qmx::kernels::ChromaKeyRule rule =
        qmx::kernels::MakeChromaKeyRule(pKeyColor, similarity, smoothness, option != 0 ? spill : 0.0);
    const std::uint32_t count = BandCount(frame.height, frame.Pixels());
    ForEachBand(frame.height, count,
                [&](std::uint32_t /*index*/, std::uint32_t first, std::uint32_t end)
                {
                    for (std::uint32_t y = first; y < end; ++y)
                        KeyBgra(rule, frame.Row(y), background.pData ? background.Row(y) : nullptr, frame.width);
                });
    return true;
}
