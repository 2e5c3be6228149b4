/// @file VideoPool.h
/// Videos of a movie, decoded within the work that a frame of the movie may cost.
#pragma once

#include "companions/swfrenderer/Limits.h"
#include "companions/swfrenderer/VideoDecoder.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace swf
{
/// Hands out pictures of videos, each decoded from the nearest entry before it. Work is counted as if every frame of
/// the movie found its videos at their entries: a decoder that stands further on has less to do, never more, and which
/// pictures are shown depends on the frame alone, not on those drawn before it. One thread at a time.
class CVideoPool
{
public:
    /// A frame of the movie begins. @param work  pixels that may be decoded for it
    void BeginFrame(std::uint64_t work);
    /// The picture of @p stream at its frame @p number. Where the work is used up before that is reached, the one as
    /// far as it went; null where there is none, and for streams beyond the first kMaxVideosAtOnce of a frame.
    /// @param id  of the stream, which outlives the pool. Borrowed until the next call. Throws std::bad_alloc.
    const Bitmap* PictureAt(std::uint16_t id, const VideoStream& stream, std::uint32_t number);

private:
    struct Video
    {
        std::uint16_t id = 0;
        std::unique_ptr<CVideoDecoder> pDecoder;
        std::vector<std::uint32_t> entries;
        bool isUsed = false; ///< in this frame of the movie
        // Frames of the stream decoded for this frame of the movie, as far as work goes; none where both are 0.
        std::uint32_t first = 0, end = 0;
    };
    Video* Find(std::uint16_t id, const VideoStream& stream);
    bool Spend(std::uint64_t work);

    std::vector<Video> m_videos; ///< kMaxVideosAtOnce at most
    std::uint64_t m_workLeft = 0;
};
} // namespace swf
