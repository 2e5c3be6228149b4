#include "pal/media/AudioPackets.h"
#include "pal/media/MediaLimits.h"
#include "pal/media/MediaStatistics.h"

extern "C"
{
#include <libavutil/intreadwrite.h>
#include <libavutil/mathematics.h>
}

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>
#include <utility>

namespace pal
{
namespace
{
/// Demuxers of streams without a container: what they say about times after a seek is guessed from the bit rate.
bool IsBareStream(const AVFormatContext& format)
{
    constexpr const char* kNames[] = {"mp3", "aac", "ac3", "eac3", "dts", "truehd"};
    const char* const pName = format.iformat->name;
    return format.nb_streams == 1 &&
           std::any_of(std::begin(kNames), std::end(kNames), [&](const char* p) { return std::strcmp(p, pName) == 0; });
}

/// Samples at the end of a packet that are padding.
std::int64_t PaddingOf(const AVPacket& packet)
{
    std::size_t cb = 0;
    const std::uint8_t* const pSide = av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &cb);
    return pSide != nullptr && cb >= 8 ? AV_RL32(pSide + 4) : 0;
}
} // namespace

AudioPackets::AudioPackets(const MediaFile& file, AVStream& stream)
    : m_format(*file.GetFormat()), m_stream(stream), m_rate(std::max(1, stream.codecpar->sample_rate)),
      m_isBare(IsBareStream(*file.GetFormat()))
{
    for (unsigned i = 0; i < m_format.nb_streams; ++i)
        m_format.streams[i]->discard = m_format.streams[i] == &stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    m_pPeeked = ReadOne();
    if (m_pPeeked)
    {
        m_firstBytes = m_pPeeked->pos;
        m_firstTicks = m_pPeeked->pts != AV_NOPTS_VALUE ? m_pPeeked->pts : m_pPeeked->dts;
    }
    if (m_firstTicks == AV_NOPTS_VALUE || !m_pPeeked)
        m_firstTicks = stream.start_time != AV_NOPTS_VALUE ? stream.start_time : 0;
    const bool hasPictures = file.FindStream(AVMEDIA_TYPE_VIDEO) != nullptr;
    m_origin = hasPictures ? file.GetStart(stream.time_base) : m_firstTicks;
    m_first = av_rescale_q(m_firstTicks - m_origin, stream.time_base, {1, m_rate});
}

std::int64_t AudioPackets::GetTolerance() const
{
    const std::int64_t tick = av_rescale_q_rnd(1, m_stream.time_base, {1, m_rate}, AV_ROUND_UP);
    return m_rate / 100 + 2 * tick;
}

AvPacketPtr AudioPackets::ReadOne()
{
    AvPacketPtr pPacket(av_packet_alloc());
    if (!pPacket)
        throw std::bad_alloc();
    while (av_read_frame(&m_format, pPacket.get()) >= 0)
    {
        if (pPacket->stream_index == m_stream.index)
            return pPacket;
        av_packet_unref(pPacket.get());
    }
    return nullptr;
}

/// Ticks as samples; put right where all packets have one length.
std::int64_t AudioPackets::PlaceOf(std::int64_t ticks) const
{
    if (ticks == AV_NOPTS_VALUE)
        return AV_NOPTS_VALUE;
    const AVRational tick = m_stream.time_base;
    const AVRational sample{1, m_rate};
    const std::int64_t place = av_rescale_q(ticks - m_origin, tick, sample);
    const std::int64_t length = m_stream.codecpar->frame_size;
    if (length <= 1 || av_cmp_q(tick, sample) == 0)
        return place;
    const std::int64_t index = (place - m_first + (place >= m_first ? length / 2 : -length / 2)) / length;
    const std::int64_t snapped = m_first + index * length;
    const std::int64_t most = av_rescale_q_rnd(1, tick, sample, AV_ROUND_UP) + 1;
    return std::abs(snapped - place) <= most ? snapped : place;
}

std::int64_t AudioPackets::DurationOf(const AVPacket& packet) const
{
    const AVRational tick = m_stream.time_base;
    const std::int64_t up = av_rescale_q_rnd(packet.duration, tick, {1, m_rate}, AV_ROUND_UP);
    const std::int64_t down = av_rescale_q_rnd(packet.duration, tick, {1, m_rate}, AV_ROUND_DOWN);
    if (packet.duration > 0 && up == down)
        return up;
    const int byCodec = av_get_audio_frame_duration2(m_stream.codecpar, packet.size);
    return byCodec > 0 ? byCodec : std::max<std::int64_t>(0, up);
}

/// Place of a packet of a bare stream: that after the last one, or the one noted for this place in the file.
std::int64_t AudioPackets::CountedPlaceOf(const AVPacket& packet)
{
    if (packet.pos == m_firstBytes)
        m_next = 0;
    else if (m_next == AV_NOPTS_VALUE)
    {
        const auto it = std::lower_bound(m_places.begin(), m_places.end(), packet.pos,
                                         [](const Place& place, std::int64_t bytes) { return place.bytes < bytes; });
        if (it == m_places.end() || it->bytes != packet.pos)
            return AV_NOPTS_VALUE;
        m_next = it->samples;
    }
    const std::int64_t place = m_next;
    m_next += DurationOf(packet);
    return place;
}

AvPacketPtr AudioPackets::Next()
{
    AvPacketPtr pPacket = m_pPeeked ? std::move(m_pPeeked) : ReadOne();
    if (!pPacket)
        return nullptr;
    const std::int64_t ticks = pPacket->pts != AV_NOPTS_VALUE ? pPacket->pts : pPacket->dts;
    const std::int64_t duration = DurationOf(*pPacket);
    pPacket->pts = m_isBare ? CountedPlaceOf(*pPacket) : PlaceOf(ticks);
    pPacket->dts = pPacket->pts;
    pPacket->duration = duration;
    return pPacket;
}

void AudioPackets::Keep(const Place& place)
{
    if (m_places.size() >= kMaxAudioPlaces)
    {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < m_places.size(); i += 2)
            m_places[kept++] = m_places[i];
        m_places.resize(kept);
        m_stride *= 2;
    }
    m_places.push_back(place);
}

void AudioPackets::CountAll()
{
    if (!m_isBare || std::exchange(m_isCounted, true))
        return;
    SeekToStart();
    std::int64_t end = 0;
    std::int64_t padding = 0;
    for (std::int64_t n = 0;; ++n)
    {
        const AvPacketPtr pPacket = ReadOne();
        if (!pPacket)
            break;
        if (n % m_stride == 0)
            Keep({pPacket->pos, end});
        padding = PaddingOf(*pPacket);
        end += DurationOf(*pPacket);
    }
    m_countedEnd = std::max<std::int64_t>(0, end - padding);
    SeekToStart();
}

void AudioPackets::SeekToStart()
{
    m_pPeeked.reset();
    ++GetMediaStatistics().seeks;
    m_next = m_isBare ? 0 : AV_NOPTS_VALUE;
    if (av_seek_frame(&m_format, m_stream.index, m_firstTicks, AVSEEK_FLAG_BACKWARD) < 0)
        avformat_seek_file(&m_format, -1, INT64_MIN, 0, INT64_MAX, AVSEEK_FLAG_BYTE);
}

void AudioPackets::Seek(std::int64_t place)
{
    if (!m_isBare)
    {
        m_pPeeked.reset();
        ++GetMediaStatistics().seeks;
        const std::int64_t ticks = m_origin + av_rescale_q_rnd(place, {1, m_rate}, m_stream.time_base, AV_ROUND_DOWN);
        if (av_seek_frame(&m_format, m_stream.index, ticks, AVSEEK_FLAG_BACKWARD) < 0)
            SeekToStart();
        return;
    }
    CountAll();
    const auto after = std::upper_bound(m_places.begin(), m_places.end(), place,
                                        [](std::int64_t p, const Place& entry) { return p < entry.samples; });
    if (after == m_places.begin() || std::prev(after) == m_places.begin())
        return SeekToStart();
    m_pPeeked.reset();
    ++GetMediaStatistics().seeks;
    m_next = AV_NOPTS_VALUE;
    if (av_seek_frame(&m_format, m_stream.index, std::prev(after)->bytes, AVSEEK_FLAG_BYTE) < 0)
        SeekToStart();
}
} // namespace pal
