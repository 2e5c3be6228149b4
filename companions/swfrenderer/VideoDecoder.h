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

    /// The last picture that could be decoded of the frames from @p first to before @p end, as if there were no others,
    /// whatever was asked before. Null where there is none, or no decoder for the stream. Goes on from what was asked
    /// last where that began at the same frame and did not go further; else it begins again. Borrowed until the next
    /// call. Throws std::bad_alloc.
    const Bitmap* PictureAfter(std::uint32_t first, std::uint32_t end);

private:
    struct Codec;
    const VideoStream& m_stream;
    std::unique_ptr<Codec> m_pCodec;
    Bitmap m_picture;
    std::uint32_t m_first = 0; ///< frame that was decoded first
    std::uint32_t m_next = 0;  ///< frame that is decoded next
    bool m_hasPicture = false; ///< m_picture is the one behind the frames decoded
};
} // namespace swf
