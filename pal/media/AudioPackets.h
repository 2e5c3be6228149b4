/// @file AudioPackets.h
/// The packets of a sound stream, each with its place counted in samples.
#pragma once

#include "pal/media/MediaFile.h"

#include <vector>

namespace pal
{
/// Reads packets and states where they belong. Places are counts of samples of the stream's rate. Their origin is the
/// container's start where there are pictures beside the sound, so that both stay in step, else the first packet.
///
/// Containers that state times in coarser steps than samples are put right by the length of a packet, where that is
/// always the same. Bare streams (MP3, ADTS, AC-3, ...) have no times at all: their packets are counted, which for the
/// first seek or the exact length means to read through the file once.
///
/// Threads : one at a time.
class AudioPackets
{
public:
    /// Reads the first packet. @param file, stream  borrowed; every other stream of the file is discarded from now on
    AudioPackets(const MediaFile& file, AVStream& stream);

    /// Samples per second, by which all places count.
    int GetRate() const { return m_rate; }
    /// Place of the first packet.
    std::int64_t GetFirst() const { return m_first; }
    /// Samples by which two statements of one place may differ for no other reason than rounding.
    std::int64_t GetTolerance() const;

    /// Next packet, its times in samples (AV_NOPTS_VALUE: not known); null at the end of the file.
    AvPacketPtr Next();
    /// Goes to a packet at or before @p place, as well as the file allows: check where the next packet stands.
    void Seek(std::int64_t place);
    void SeekToStart();

    /// True for a stream whose packets are counted.
    bool IsBare() const { return m_isBare; }
    /// Samples that the encoder of a bare stream has put in front. (Elsewhere the decoder leaves them out.)
    std::int64_t GetFrontPadding() const { return m_frontPadding; }
    /// End of a bare stream as far as it has been counted, without what its header says is padding; else INT64_MAX.
    std::int64_t GetCountedEnd() const { return m_countedEnd; }
    /// Reads through a bare stream, if that has not been done. The position is lost.
    void CountAll();

private:
    struct Place
    {
        std::int64_t bytes = 0;   ///< in the file
        std::int64_t samples = 0; ///< place of the packet that begins there
    };

    AvPacketPtr ReadOne();
    bool SeekTicks(std::int64_t place);
    bool IsOnLastPage();
    std::int64_t PlaceOf(std::int64_t ticks) const;
    std::int64_t Snapped(std::int64_t place) const;
    std::int64_t DurationOf(const AVPacket& packet) const;
    std::int64_t CountedPlaceOf(const AVPacket& packet);
    void Keep(const Place& place);

    AVFormatContext& m_format;
    AVStream& m_stream;
    const int m_rate;
    bool m_isBare = false;
    bool m_isOgg = false;
    std::int64_t m_origin = 0;      ///< ticks
    std::int64_t m_firstTicks = 0;  ///< of the first packet
    std::int64_t m_firstBytes = -1; ///< likewise, place in the file
    std::int64_t m_first = 0;
    std::int64_t m_length = 0; ///< of every packet but perhaps the last, as far as its coding tells; 0: they differ
    AvPacketPtr m_pPeeked;     ///< the first packet, until it is asked for

    // bare streams
    std::vector<Place> m_places; ///< ascending
    std::int64_t m_stride = 1;   ///< of so many packets one is in the list
    bool m_isCounted = false;
    std::int64_t m_countedEnd = INT64_MAX;
    std::int64_t m_frontPadding = 0;
    std::int64_t m_next = 0; ///< place of the next packet; AV_NOPTS_VALUE: not known
};
} // namespace pal
