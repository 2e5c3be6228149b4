/// @file PacketReader.h
/// The packets of one stream, with a bounded look ahead on the way to a seek target.
#pragma once

#include "pal/media/TimingProbe.h"

#include <deque>

namespace pal
{
/// Threads : one at a time.
class PacketReader
{
public:
    /// @param format, stream  borrowed; every other stream of the file is discarded from now on
    PacketReader(AVFormatContext& format, AVStream& stream, const StreamTiming& timing);

    /// Next packet in decode order, or null at the end of the file (or where it cannot be read any more).
    AvPacketPtr Next();

    /// What is known about the way to a target after a look ahead.
    struct Outlook
    {
        std::int64_t keepPts = INT64_MIN;       ///< picture that shows at the keep sample; earlier ones are only passed
        bool atStart = false;                   ///< the look ahead began with the first packet of the stream
        bool keyFound = false;                  ///< decoding can begin at the front of the queue
        std::int64_t keyTime = INT64_MAX;       ///< decode time of that key packet
        std::int64_t keyPts = INT64_MAX;        ///< and the time at which its picture shows
        std::int64_t frontPts = AV_NOPTS_VALUE; ///< tick of the first packet of the look ahead
    };
    /// Repositions the file so that decoding can begin at or before @p pts.
    void Seek(std::int64_t pts);
    void SeekToStart();
    /// Queues packets until all that show at or before sample @p showIndex are there (or a bound is met), then drops
    /// those before the last key packet that shows at or before sample @p keepIndex and is decoded before
    /// @p keyBefore (the time of a key packet that turned out not to be one).
    Outlook LookAhead(std::int64_t keepIndex, std::int64_t showIndex, std::int64_t keyBefore = INT64_MAX);
    /// True when the file's own index has a key packet in (from, to]: seeking is cheaper than reading on.
    bool HasKeyBetween(std::int64_t fromDts, std::int64_t toPts) const;
    /// Decode time of the last packet handed out; AV_NOPTS_VALUE when there is none since the last seek.
    std::int64_t GetLastDts() const { return m_lastDts; }

private:
    AvPacketPtr ReadOne();
    void Forget();

    AVFormatContext& m_format;
    AVStream& m_stream;
    const StreamTiming& m_timing;
    std::deque<AvPacketPtr> m_queue;
    std::size_t m_cbQueue = 0;
    std::int64_t m_lastDts = AV_NOPTS_VALUE;
    bool m_ended = false;
};
} // namespace pal
