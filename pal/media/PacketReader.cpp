#include "pal/media/PacketReader.h"
#include "pal/media/MediaLimits.h"
#include "pal/media/MediaStatistics.h"

#include <algorithm>
#include <new>
#include <utility>

namespace pal
{
namespace
{
std::int64_t TimeOf(const AVPacket& packet)
{
    return packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
}
std::int64_t DecodeTimeOf(const AVPacket& packet)
{
    return packet.dts != AV_NOPTS_VALUE ? packet.dts : packet.pts;
}
} // namespace

PacketReader::PacketReader(AVFormatContext& format, AVStream& stream, const StreamTiming& timing)
    : m_format(format), m_stream(stream), m_timing(timing)
{
    for (unsigned i = 0; i < format.nb_streams; ++i)
        format.streams[i]->discard = format.streams[i] == &stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
}

AvPacketPtr PacketReader::ReadOne()
{
    AvPacketPtr pPacket(av_packet_alloc());
    if (!pPacket)
        throw std::bad_alloc();
    while (!m_ended)
    {
        m_ended = av_read_frame(&m_format, pPacket.get()) < 0;
        if (!m_ended && pPacket->stream_index == m_stream.index)
        {
            if (m_timing.timesFromOrder)
                pPacket->pts = AV_NOPTS_VALUE;
            return pPacket;
        }
        av_packet_unref(pPacket.get());
    }
    return nullptr;
}

AvPacketPtr PacketReader::Next()
{
    AvPacketPtr pPacket;
    if (!m_queue.empty())
    {
        pPacket = std::move(m_queue.front());
        m_queue.pop_front();
        m_cbQueue -= static_cast<std::size_t>(pPacket->size);
    }
    else
        pPacket = ReadOne();
    if (pPacket)
        m_lastDts = DecodeTimeOf(*pPacket);
    return pPacket;
}

void PacketReader::Forget()
{
    m_queue.clear();
    m_cbQueue = 0;
    m_lastDts = AV_NOPTS_VALUE;
    m_ended = false;
}

void PacketReader::Seek(std::int64_t pts)
{
    Forget();
    ++GetMediaStatistics().seeks;
    if (av_seek_frame(&m_format, m_stream.index, pts, AVSEEK_FLAG_BACKWARD) < 0)
        SeekToStart();
}

void PacketReader::SeekToStart()
{
    Forget();
    ++GetMediaStatistics().seeks;
    const std::int64_t first = std::min(m_timing.firstDts, m_timing.grid.firstPts);
    if (av_seek_frame(&m_format, m_stream.index, first, AVSEEK_FLAG_BACKWARD) < 0)
        avformat_seek_file(&m_format, -1, INT64_MIN, 0, INT64_MAX, AVSEEK_FLAG_BYTE);
}

PacketReader::Outlook PacketReader::LookAhead(std::int64_t keepIndex, std::int64_t showIndex, std::int64_t keyBefore)
{
    // Packets come in decode order, and no picture shows before it is decoded: once a decode time lies behind the
    // target, everything that shows up to there has been seen. Streams without decode times get a margin instead.
    constexpr int kReorderMargin = 17;
    int behind = 0;
    const auto passed = [&](const AVPacket& packet)
    {
        if (packet.dts != AV_NOPTS_VALUE)
            return m_timing.grid.IndexOf(packet.dts) > showIndex;
        behind += m_timing.grid.IndexOf(TimeOf(packet)) > showIndex ? 1 : 0;
        return behind > kReorderMargin;
    };
    bool done = std::any_of(m_queue.begin(), m_queue.end(), [&](const AvPacketPtr& p) { return passed(*p); });
    while (!done && m_cbQueue < kMaxQueueBytes && m_queue.size() < kMaxQueuePackets)
    {
        AvPacketPtr pPacket = ReadOne();
        if (!pPacket)
            break;
        done = passed(*pPacket);
        m_cbQueue += static_cast<std::size_t>(pPacket->size);
        m_queue.push_back(std::move(pPacket));
    }

    Outlook outlook;
    if (m_queue.empty())
        return outlook;
    outlook.atStart = DecodeTimeOf(*m_queue.front()) <= m_timing.firstDts;
    outlook.frontPts = TimeOf(*m_queue.front());
    std::size_t key = m_queue.size();
    for (std::size_t i = 0; i < m_queue.size(); ++i)
    {
        const std::int64_t time = TimeOf(*m_queue[i]);
        if (time == AV_NOPTS_VALUE || m_timing.grid.IndexOf(time) > keepIndex)
            continue;
        outlook.keepPts = std::max(outlook.keepPts, time);
        if ((m_queue[i]->flags & AV_PKT_FLAG_KEY) != 0 && DecodeTimeOf(*m_queue[i]) < keyBefore)
            key = i;
    }
    outlook.keyFound = key < m_queue.size();
    if (outlook.keyFound)
    {
        outlook.keyTime = DecodeTimeOf(*m_queue[key]);
        outlook.keyPts = TimeOf(*m_queue[key]);
    }
    for (std::size_t i = 0; outlook.keyFound && i < key; ++i)
    {
        m_cbQueue -= static_cast<std::size_t>(m_queue.front()->size);
        m_queue.pop_front();
    }
    return outlook;
}

bool PacketReader::HasKeyBetween(std::int64_t fromDts, std::int64_t toPts) const
{
    const AVIndexEntry* const pEntry = avformat_index_get_entry_from_timestamp(&m_stream, toPts, AVSEEK_FLAG_BACKWARD);
    return pEntry != nullptr && pEntry->timestamp > fromDts;
}
} // namespace pal
