/// @file VideoDecoder.h
/// Pictures of a video inside a movie.
#pragma once

#include "companions/swfrenderer/Movie.h"

#include <memory>

namespace swf
{
/// Decodes one stream. The movie outlives it.
class CVideoDecoder
{
public:
    explicit CVideoDecoder(const VideoStream& stream);
    ~CVideoDecoder();
    CVideoDecoder(const CVideoDecoder&) = delete;
    CVideoDecoder& operator=(const CVideoDecoder&) = delete;

    /// The picture on show at frame @p number: the last one that could be decoded up to there, whatever was asked
    /// before. Null where there is none, or no decoder for the stream. Borrowed until the next call.
    const Bitmap* FrameAt(std::uint32_t number);

private:
    struct Codec;
    const VideoStream& m_stream;
    std::unique_ptr<Codec> m_pCodec;
    Bitmap m_picture;
    std::uint32_t m_next = 0; ///< frame that is decoded next
};
} // namespace swf
