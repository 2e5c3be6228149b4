/// @file VideoSource.h
/// The pictures of a video stream, by sample number.
#pragma once

#include "pal/media/MediaFile.h"
#include "pal/media/PacketReader.h"
#include "pal/media/TimingProbe.h"

#include <deque>
#include <memory>
#include <set>

namespace pal
{
/// Decodes one video stream and keeps a window of decoded pictures, so that stepping back costs little.
///
/// The window holds pictures that follow each other without a hole; the decoder stands right behind the last one.
///
///     decode order   | key  b  b  p  b  b  p ...
///     window                      [ p0 p1 p2 p3 ]  <- decoder reads on here
///                                       ^ shown
///
/// Threads : one at a time; the decoder works on threads of its own.
class VideoSource
{
public:
    /// @param file  must outlive the source
    VideoSource(const MediaFile& file, AVStream& stream);
    ~VideoSource();
    VideoSource(const VideoSource&) = delete;
    VideoSource& operator=(const VideoSource&) = delete;

    /// @retval MF_E_TOPO_CODEC_NOT_FOUND no decoder, or one that does not take this stream
    [[nodiscard]] HRESULT OpenDecoder();
    const FrameGrid& GetGrid() const { return m_timing.grid; }
    /// Delivers on the grid of another rate from now on.
    void SetRate(const Rate& rate);

    /// The next Read() delivers the first sample at or after @p time (100 ns); nothing is decoded before.
    void Seek(std::int64_t time);
    /// The next Read() delivers nothing: the position lies outside the presentation.
    void SeekToEnd();

    struct Picture
    {
        std::shared_ptr<AVFrame> pFrame; ///< null at the end of the stream
        std::int64_t index = 0;          ///< sample number, see FrameGrid
    };
    /// The picture of the next sample.
    Picture Read();

private:
    struct Decoded
    {
        std::shared_ptr<AVFrame> pFrame;
        std::int64_t pts = 0;      // ticks
        std::int64_t duration = 0; // ticks, at least 1
        std::int64_t index = 0;    // first sample that shows it
    };

    bool DecodeNext();
    bool Feed();
    bool Accept();
    std::int64_t TimeOfNewPicture();
    std::int64_t Margin() const;
    void Trim();
    void CarryOutSeek();
    bool IsInWindow(std::int64_t index) const;
    void Restart(std::int64_t keepIndex);
    bool BeginDecoding(const PacketReader::Outlook& outlook, bool flush);
    std::size_t WindowCapacity() const;
    bool ShowsNext() const;

    AVStream& m_stream;
    StreamTiming m_timing;
    PacketReader m_packets;
    AvCodecPtr m_pCodec;
    AvFramePtr m_pScratch;

    std::deque<Decoded> m_window;
    std::size_t m_shown = 0;                   // picture in the window that the last sample showed
    std::size_t m_capacity;                    // pictures to keep behind the shown one
    std::int64_t m_nextIndex = 0;              // sample that the next Read() delivers
    std::int64_t m_endIndex = INT64_MAX;       // samples in the stream, once its end has been decoded
    std::int64_t m_keepPts = INT64_MIN;        // pictures before this one are only passed on the way to it
    std::multiset<std::int64_t> m_decodeTimes; // of packets whose pictures are still to come (timesFromOrder)
    std::int64_t m_beganPts = INT64_MIN;       // of the first picture that came out since the decoder began
    std::int64_t m_lastPts = INT64_MIN;        // of the last picture that came out since the decoder began
    bool m_seekPending = false;
    bool m_draining = false; // the decoder has got the end of the stream
    bool m_drained = false;  // and has given its last picture
};
} // namespace pal
