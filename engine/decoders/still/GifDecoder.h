/// @file GifDecoder.h
/// The frames of an animated GIF.
#pragma once

#include "engine/decoders/still/ImageDecoder.h"

#include <windows.h>

#include <cstdint>
#include <vector>

struct IWICMetadataQueryReader;

/// Plays a GIF by times in milliseconds: composes its frames one over the other on a canvas of the logical screen's
/// size, kept as the raw frame of the base, and lets the base scale and turn the canvas. The animation repeats for
/// ever; every frame lasts 90 ms at least.
///
/// A time ahead composes the frames up to it. A time behind starts again at frame 0 and composes as many frames as the
/// number of the one that is asked for, so that the one before it is shown (frame 0 for frame 0); the next time ahead
/// catches up. A canvas that has just been composed is scaled to the record's width even when it is smaller; one that
/// is asked for again only when it is larger.
class QMX_API CGifDecoder : public CImageDecoder
{
public:
    CGifDecoder() = default;
    /// Copies the frames as plain pointers, without references: only for decoders that hold none.
    CGifDecoder(const CGifDecoder& other) = default;
    CGifDecoder& operator=(const CGifDecoder& other) = default; ///< likewise

    /// Opens the file, composes frame 0 and, unless the record's flags have the bit kRequestNoTimeTable, reads how long
    /// each frame lasts.
    /// @return false when the file cannot be read or its first frame cannot be composed
    bool Initialize(const tagDecProp& prop) override;
    /// @param timeMs  milliseconds from the start; the animation repeats.  @param flag  not written.
    /// @return one reference for the caller; null when there is no canvas or memory is short. Where a frame cannot be
    ///         decoded, the canvas as it is.
    ISampleBuffer* GetClipVideoFrame(std::uint64_t timeMs, bool& flag) override;

protected:
    ~CGifDecoder() override;
    bool IsNeedProcess() override;

private:
    friend struct GifDecoderProbe; // defined by the tests

    /// How the canvas is prepared for the frame after a frame, as the file's disposal methods count.
    enum Disposal : std::uint32_t
    {
        kDisposalNone = 0,
        kDisposalKeep = 1,
        kDisposalBackground = 2,
        kDisposalPrevious = 3
    };

    [[nodiscard]] HRESULT SelectAndDisplayGif();
    [[nodiscard]] HRESULT RecoverDeviceResources();
    [[nodiscard]] HRESULT GetGlobalMetadata();
    [[nodiscard]] HRESULT ReadGlobalMetadata(IWICMetadataQueryReader* reader);
    void ReadLoopCount(IWICMetadataQueryReader* reader);
    [[nodiscard]] HRESULT GetBackgroundColor(IWICMetadataQueryReader* reader);
    void MakeCanvas();
    void ParseFrameTS();
    std::uint32_t FrameTime(std::uint32_t index);

    [[nodiscard]] HRESULT GetRawFrame(std::uint32_t index);
    [[nodiscard]] HRESULT ReadFrameMetadata(IWICMetadataQueryReader* reader);
    [[nodiscard]] HRESULT ComposeNextFrame();
    [[nodiscard]] HRESULT OverlayNextFrame();
    [[nodiscard]] HRESULT DisposeCurrentFrame();
    [[nodiscard]] HRESULT ClearCurrentFrameArea();
    [[nodiscard]] HRESULT SaveComposedFrame();
    [[nodiscard]] HRESULT RestoreSavedFrame();
    void FillCanvas();
    std::uint32_t FrameAt(std::uint64_t timeMs) const;
    /// 1 when the frame composed last was the file's last one, else 0.
    int IsLastFrame() const { return m_nNextFrame == 0 ? 1 : 0; }

    ISampleBuffer* m_pFrameBuffer = nullptr; // owns one reference; the GIF frame decoded last, at its own size
    ISampleBuffer* m_pSavedBuffer = nullptr; // owns one reference; the canvas as a frame found it that will be undone
    std::uint32_t m_nBackgroundColor = 0;    ///< fill of the canvas: 0x00RRGGBB, transparent
    std::uint32_t m_nFrameCount = 1;
    std::uint32_t m_nCurrentFrame = 0; ///< index of the frame that was asked for last
    std::uint32_t m_nNextFrame = 0;    ///< index of the frame to overlay next
    std::uint32_t m_nLoopCount = 0;    ///< repetitions that the file asks for; 0: for ever. Kept, and not acted on
    std::uint32_t m_nLoopsDone = 0;    ///< how often frame 0 has been overlaid
    std::uint32_t m_bHasLoopCount = 0; ///< 1 when m_nLoopCount is not 0
    std::uint32_t m_nDisposal = 0;     ///< Disposal of the frame overlaid last
    std::uint32_t m_nFrameDelay = 0;   ///< milliseconds, of the frame decoded last
    std::uint32_t m_nCanvasWidth = 0;  ///< pixels
    std::uint32_t m_nCanvasHeight = 0;
    std::uint32_t m_nDisplayWidth = 0; ///< the canvas's size, corrected by the shape of its pixels
    std::uint32_t m_nDisplayHeight = 0;
    std::uint32_t m_nFrameLeft = 0; ///< rectangle of the frame decoded last, on the canvas
    std::uint32_t m_nFrameTop = 0;
    std::uint32_t m_nFrameRight = 0; ///< exclusive
    std::uint32_t m_nFrameBottom = 0;
    std::vector<std::uint32_t> m_vecFrameTimes; ///< milliseconds: 0, then the end of each frame
    std::uint64_t m_nTotalDuration = 0;         ///< milliseconds of one round
    bool m_bComposedNow = false;                ///< this request has composed a frame
    bool m_bShownAgain = false;                 ///< the finished frame was made without composing one
};
