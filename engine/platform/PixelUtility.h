/// @file PixelUtility.h
/// Operations of the pixel utility library, on BGRA pictures (bytes B, G, R, A; straight alpha) unless said otherwise.
/// Every operation answers false on a descriptor it cannot use (null pixels, a side of 0 or above 32,767, a stride
/// below width * 4) and when memory is short, and then writes nothing, unless it says otherwise. Source and target must
/// not overlap. Operations may be called from several threads at a time; each shares its rows out over the library's
/// threads, and the result does not depend on how many there are.
#pragma once

#include "engine/platform/Export.h"
#include "engine/platform/SampleInfo.h"

#include <cstdint>

class ISampleBuffer;

// Each axis is taken by itself: a picture that becomes narrower and taller is averaged along its rows and interpolated
// down its columns. Pixels are areas, so bilinear samples lie between the centres of source pixels, and the outermost
// half pixel repeats the edge. Channels are independent; each is within 1 level of the exact result.
inline constexpr std::uint32_t kScaleBilinear = 1; ///< bilinear both ways
inline constexpr std::uint32_t kScaleArea = 2;     ///< area-averaging when shrinking, bilinear when enlarging

extern "C"
{
    /// Scales @p pSource to the size in @p pTarget and turns the result clockwise by @p angle degrees.
    /// @param pTarget  width and height are those BEFORE the turn. For 0 and 180 its stride counts; for 90 and 270
    ///                 the rows written are tight (height * 4 bytes) and there are width of them.
    /// @param mode     kScaleBilinear or kScaleArea; any other is taken as the former
    /// @return false for an angle other than 0, 90, 180 and 270: the target is then cleared to transparent black.
    QMX_PIXELUTILITY_API bool ScaleAndRotateBGRA(const tagSampleInfo* pSource, const tagSampleInfo* pTarget,
                                                 std::uint32_t angle, std::uint32_t mode);
    /// Converts an NV12 picture to BGRA, then as ScaleAndRotateBGRA(), in one pass over the rows.
    /// @param pSource  Y rows of nWidth bytes, behind them UV rows of (nWidth + 1) / 2 pairs, (nHeight + 1) / 2 of
    ///                 them; stride and further planes are not looked at. Limited range, BT.709 from 720 rows up and
    ///                 BT.601 below: the descriptor has no room to say anything else.
    QMX_PIXELUTILITY_API bool ScaleAndConvertNV12(const tagSampleInfo* pSource, const tagSampleInfo* pTarget,
                                                  std::uint32_t angle, std::uint32_t mode);
    /// Turns @p pSource clockwise by @p angle degrees. @p pTarget describes the rotated picture: its size must be the
    /// source's (0, 180) or the source's exchanged (90, 270).
    /// @return false for any other angle or size: the target is then cleared to transparent black.
    QMX_PIXELUTILITY_API bool RotateBGRA(const tagSampleInfo* pSource, const tagSampleInfo* pTarget,
                                         std::uint32_t angle);
    /// Lays @p pSource over @p pTarget, its left upper corner at (x, y) of the target: source over, straight alpha on
    /// both sides. What falls outside the target is left out; nothing may be left.
    /// @param option  reserved, 0
    QMX_PIXELUTILITY_API bool MergeBGRA(const tagSampleInfo* pSource, const tagSampleInfo* pTarget, std::int32_t x,
                                        std::int32_t y, std::uint32_t option);
    /// Soft chroma key, in place. With the chroma (Cb, Cr) of a colour by Rec. ITU-R BT.709, each -0.5 to 0.5:
    ///   kept   = clamp((|chroma - key's chroma| - similarity) / smoothness, 0, 1)
    ///   excess = spill * max(0, chroma along the key's direction), taken away from the colour; its luma stays
    /// With a background the result is opaque: colour * kept * alpha + background * (1 - kept * alpha), whatever the
    /// background's alpha. Without one the alpha becomes alpha * kept.
    /// @param pFrame       picture to key
    /// @param pBackground  picture of the same size to show through; null, or null pixels in it, for none
    /// @param pKeyColor    three bytes B, G, R; a grey key takes greys and has no spill
    /// @param similarity   chroma distance that is keyed fully, 0..1 (tuning values outside are taken into the range)
    /// @param smoothness   width of the ramp from keyed to kept, 0..1
    /// @param spill        strength of the spill suppression, 0..1
    /// @param option       not 0: the spill pass runs
    /// @param keyOnly      not 0: no background is drawn, the key multiplies the alpha
    /// @return false for a background of another size, too.
    QMX_PIXELUTILITY_API bool ReplaceToTransparent(const tagSampleInfo* pFrame, const tagSampleInfo* pBackground,
                                                   const std::uint8_t* pKeyColor, double similarity, double smoothness,
                                                   double spill, std::uint8_t option, std::uint8_t keyOnly);

    /// Fits the picture of @p pFrame by its display aspect (GetRatioX() : GetRatioY(); its size where one of them is 0)
    /// into a box of @p boxWidth x @p boxHeight in the middle of @p pTarget, and makes all around it transparent black.
    /// @param pFrame   BGRA; borrowed
    /// @param pTarget  rows of @p width * 4 bytes, @p height of them
    /// @param boxWidth, boxHeight  0 and 0: the whole target; a box larger than the target is cut to it
    /// @param mode     kScaleBilinear or kScaleArea
    /// @return false when nothing was written, as the pixels of the frame can be used as they stand: the frame has the
    ///         target's size, and no box is asked for; also for a target that cannot be written (null, a side of 0 or
    ///         above 32,767). A picture that cannot be fitted (null, not BGRA, or memory is short) leaves the whole
    ///         target transparent black.
    QMX_PIXELUTILITY_API bool DoLetterBoxBGRATranspanrentEx(ISampleBuffer* pFrame, std::uint8_t* pTarget,
                                                            std::uint32_t boxWidth, std::uint32_t boxHeight,
                                                            std::uint32_t width, std::uint32_t height,
                                                            std::uint32_t mode);
}

/// A fixed set of threads that share out bands of rows.
/// Threads : Run() may be called from several threads, and by a band itself; each call returns when all its bands are
///           done. It takes no memory.
class QMX_PIXELUTILITY_API CQMXThreadPool
{
public:
    /// @param threads  workers beside the calling thread, at most 64; 0 = one less than the processors there are
    explicit CQMXThreadPool(std::uint32_t threads);
    ~CQMXThreadPool(); ///< waits for running bands
    CQMXThreadPool(const CQMXThreadPool&) = delete;
    CQMXThreadPool& operator=(const CQMXThreadPool&) = delete;

    /// One band: @p index counts from 0 to count - 1. Must not throw.
    using BandFunction = void (*)(void* pContext, std::uint32_t index);
    /// Calls @p function once for every index below @p count, on the workers and on the calling thread.
    void Run(BandFunction function, void* pContext, std::uint32_t count);
    /// Threads that can work at the same time, the calling one included.
    std::uint32_t GetConcurrency() const;

private:
    struct State;
    State* m_pState; // owned; null when threads could not be started: Run() then works on the calling thread
};
