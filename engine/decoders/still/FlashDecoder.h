/// @file FlashDecoder.h
/// Pictures of a Flash movie.
#pragma once

#include "engine/decoders/Decoder.h"
#include "engine/platform/SampleBuffer.h"
#include "engine/platform/SwfRenderer.h"

#include <cstdint>

/// Shows a movie at a time; the movie is rendered by the Flash renderer library at the size that is asked for.
class CFlashDecoder final : public CDecoder
{
public:
    CFlashDecoder() = default;
    CFlashDecoder(const CFlashDecoder&) = delete;
    CFlashDecoder& operator=(const CFlashDecoder&) = delete;

    /// Opens prop.filePath. A frame duration of 0 becomes that of the frame rate.
    /// @return false when the movie cannot be opened; frames are then null.
    bool Initialize(const tagDecProp& prop) override;
    /// The movie's picture at @p time (100 ns from its start), turned clockwise by the record's rotation. The picture
    /// has the record's width and the movie's proportions, or the movie's own size when kRequestNoAttachment is set in
    /// the record's flags.
    /// @param ended  set to whether the movie failed to render; left alone when no movie was ever opened
    /// @return one reference, or null; the decoder keeps the last picture.
    ISampleBuffer* GetClipVideoFrame(std::uint64_t time, bool& ended) override;
    /// @return one more reference to the last picture, or null.
    ISampleBuffer* GetLastFrame() override;

private:
    ~CFlashDecoder() override;
    bool OutputSize(std::uint32_t& width, std::uint32_t& height) const;
    SampleBufferPtr TurnedFrame(const tagSWFFrameInfo& info, const std::uint8_t* pPixels, std::uint32_t width,
                                std::uint32_t height) const;

    ISWFRenderObj* m_pRenderer = nullptr; // owns one reference
    tagSWFMovieInfo m_movieInfo;
    ISampleBuffer* m_pLastFrame = nullptr; // owns one reference
};
