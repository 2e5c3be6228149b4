/// @file ClipPlayer.h
/// The pictures of one clip.
#pragma once

#include "engine/qmx.h"

#include <cstdint>

namespace qmx::host
{
/// Asks the engine for the pictures of one clip at the size that was laid out for it. A video that ends before its
/// clip does holds its last picture, whichever way the time came there, so that a frame looks the same whether it is
/// asked for alone or in its turn.
class ClipPlayer
{
public:
    /// The source behind a video clip.
    struct Source
    {
        double frameRate = 30;      ///< frames per second, greater than 0
        std::uint64_t duration = 0; ///< as the container says, 100 ns; 0 when it does not
        std::uint64_t frames = 0;   ///< exactly, where that is known beforehand; otherwise 0
        /// The decoder may answer with the picture before once more and gives the right one when it is asked again.
        bool askTwice = false;
    };

    /// @param clip  borrowed; has its place on the time line
    /// @param width, height  of the picture before it is rotated, pixels
    ClipPlayer(IQMXBaseClip& clip, std::uint32_t width, std::uint32_t height);
    /// For a clip that shows a video.
    ClipPlayer(IQMXBaseClip& clip, std::uint32_t width, std::uint32_t height, const Source& source);

    /// @param time  on the time line, 100 ns.
    /// @return null when the clip has no picture at all
    SampleBufferPtr PictureAt(std::uint64_t time);

    /// Lets go of the decoder.
    void Close();

private:
    struct Answer
    {
        SampleBufferPtr pPicture;
        bool beyond = false; ///< the source ends before that time
        bool IsGood() const { return pPicture && !beyond; }
    };

    Answer Ask(std::uint64_t time);
    std::uint64_t TimeOf(std::uint64_t frame) const { return m_origin + frame * m_frameDuration; }
    bool HasFrame(std::uint64_t frame);
    std::uint64_t FindLastFrame(std::uint64_t beyond);
    std::uint64_t FindSomeFrame(std::uint64_t& beyond);

    IQMXBaseClip& m_clip;
    tagRenderProp m_request;
    bool m_isVideo = false;
    bool m_askTwice = false;             ///< see Source
    std::uint64_t m_frameDuration = 0;   ///< of the source, 100 ns, rounded down as the engine rounds it
    std::uint64_t m_statedFrames = 0;    ///< frames of the source as its container says; 0 when it does not
    std::uint64_t m_origin = 0;          ///< time on the time line of the source's start; may be "negative"
    std::uint64_t m_latestFrame = kNone; ///< highest frame number that gave a picture
    std::uint64_t m_lastFrame = kNone;   ///< number of the last frame of the source, once that is known

    static constexpr std::uint64_t kNone = ~std::uint64_t{0};
};
} // namespace qmx::host
