#include "companions/pixelutility/Bands.h"
#include "companions/pixelutility/BgraPicture.h"
#include "companions/pixelutility/ConvertNv12.h"
#include "companions/pixelutility/LetterBox.h"
#include "companions/pixelutility/RotateBgra.h"
#include "companions/pixelutility/ScaleBgra.h"
#include "companions/pixelutility/kernels/ChromaKey.h"
#include "companions/pixelutility/kernels/MergeBgra.h"
#include "engine/platform/PixelUtility.h"
#include "engine/platform/SampleBuffer.h"

#include <algorithm>

namespace
{
/// Part of a side of @p length pixels, laid down at @p at on one of @p limit pixels, that falls on it.
struct Overlap
{
    Overlap(std::uint32_t length, std::int64_t at, std::uint32_t limit)
        : first(std::clamp<std::int64_t>(-at, 0, length)), end(std::clamp<std::int64_t>(limit - at, first, length))
    {
    }
    std::uint32_t Count() const { return static_cast<std::uint32_t>(end - first); }

    std::int64_t first; ///< counted on the side that is laid down
    std::int64_t end;
};

bool IsQuarter(std::uint32_t angle)
{
    return angle == 90 || angle == 270;
}

/// The pixels of a frame, as long as they are there in full.
bool FromFrame(ISampleBuffer* pFrame, BgraPicture& picture)
{
    std::uint8_t* pPixels = nullptr;
    std::uint32_t cb = 0;
    if (!pFrame || pFrame->GetFormat() != kSampleFormatBgra || !pFrame->GetBuffer(&pPixels, &cb))
        return false;
    tagSampleInfo info;
    info.pData = pPixels;
    info.nWidth = pFrame->GetWidth();
    info.nHeight = pFrame->GetHeight();
    info.nStride = info.nWidth * 4;
    return BgraPicture::FromDescriptor(&info, picture) && picture.Pixels() * 4 <= cb;
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

bool MergeBGRA(const tagSampleInfo* pSource, const tagSampleInfo* pTarget, std::int32_t x, std::int32_t y,
               std::uint32_t /*option*/)
{
    BgraPicture source;
    BgraPicture target;
    if (!BgraPicture::FromDescriptor(pSource, source) || !BgraPicture::FromDescriptor(pTarget, target))
        return false;
    const Overlap columns(source.width, x, target.width);
    const Overlap rows(source.height, y, target.height);
    if (columns.Count() == 0 || rows.Count() == 0)
        return true;
    const std::uint32_t count = BandCount(rows.Count(), std::uint64_t{columns.Count()} * rows.Count());
    ForEachBand(rows.Count(), count,
                [&](std::uint32_t /*index*/, std::uint32_t first, std::uint32_t end)
                {
                    for (std::uint32_t row = first; row < end; ++row)
                    {
                        const std::int64_t line = rows.first + row;
                        const std::uint8_t* const pFrom =
                            source.Row(static_cast<std::uint32_t>(line)) + columns.first * 4;
                        std::uint8_t* const pTo =
                            target.Row(static_cast<std::uint32_t>(line + y)) + (columns.first + x) * 4;
                        qmx::kernels::MergeBgraRow(pFrom, pTo, columns.Count());
                    }
                });
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

bool DoLetterBoxBGRATranspanrentEx(ISampleBuffer* pFrame, std::uint8_t* pTarget, std::uint32_t boxWidth,
                                   std::uint32_t boxHeight, std::uint32_t width, std::uint32_t height,
                                   std::uint32_t mode)
{
    tagSampleInfo info;
    info.pData = pTarget;
    info.nWidth = width;
    info.nHeight = height;
    info.nStride = width * 4;
    BgraPicture target;
    if (!BgraPicture::FromDescriptor(&info, target))
        return false;
    BgraPicture source;
    if (!FromFrame(pFrame, source))
    {
        target.Clear();
        return true;
    }
    const bool wholeTarget = boxWidth == 0 || boxHeight == 0;
    if (wholeTarget && source.HasSizeOf(target))
        return false;
    std::uint32_t ratioX = pFrame->GetRatioX();
    std::uint32_t ratioY = pFrame->GetRatioY();
    if (ratioX == 0 || ratioY == 0)
    {
        ratioX = source.width;
        ratioY = source.height;
    }
    const PixelBox box =
        FitBox(ratioX, ratioY, wholeTarget ? width : boxWidth, wholeTarget ? height : boxHeight, width, height);
    PlaceInBox(source, target, box, mode == kScaleArea ? ShrinkMode::Area : ShrinkMode::Bilinear);
    return true;
}
