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

/// Samples at the front and at the end of a packet that are padding.
struct Padding
{
    std::int64_t front = 0;
    std::int64_t end = 0;
};
Padding PaddingOf(const AVPacket& packet)
{
    std::size_t cb = 0;
    const std::uint8_t* const pSide = av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &cb);
    if (pSide == nullptr || cb < 8)
        return {};
    return {AV_RL32(pSide), AV_RL32(pSide + 4)};
}

/// Samples of an Opus packet at 48 kHz, as its first two bytes say (RFC 6716, section 3.1); 0 for none.
std::int64_t OpusLengthOf(const AVPacket& packet)
{
    if (packet.size < 2)
        return 0;
    constexpr int kSilk[] = {480, 960, 1920, 2880};
    constexpr int kCelt[] = {120, 240, 480, 960};
    const int config = packet.data[0] >> 3;
    const int length = config < 12 ? kSilk[config & 3] : config < 16 ? kSilk[config & 1] : kCelt[config & 3];
    const int code = packet.data[0] & 3;
    return std::int64_t{length} * (code == 0 ? 1 : code == 3 ? packet.data[1] & 63 : 2);
}

/// Samples of an ADTS frame, in samples of @p rate, as its header says (ISO/IEC 14496-3, table 1.A.6); 0 for anything
/// else. The demuxer takes every frame for one of the first frame's rate.
std::int64_t AdtsLengthOf(const AVPacket& packet, int rate)
{
    constexpr int kRates[] = {96'000, 88'200, 64'000, 48'000, 44'100, 32'000, 24'000,
                              22'050, 16'000, 12'000, 11'025, 8'000,  7'350};
    constexpr int kBlock = 1'024;
    if (packet.size < 7 || packet.data[0] != 0xFF || (packet.data[1] & 0xF6) != 0xF0)
        return 0;
    const std::size_t index = packet.data[2] >> 2 & 15;
    const int blocks = (packet.data[6] & 3) + 1;
    return index < std::size(kRates) ? av_rescale(std::int64_t{kBlock} * blocks, rate, kRates[index]) : 0;
}
} // namespace

AudioPackets::AudioPackets(const MediaFile& file, AVStream& stream)
    : m_format(*file.GetFormat()), m_stream(stream), m_rate(std::max(1, stream.codecpar->sample_rate)),
      m_isBare(IsBareStream(*file.GetFormat())), m_isOgg(std::strcmp(file.GetFormat()->iformat->name, "ogg") == 0)
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
    // The first sample that is heard is the one whose time is stated without rounding, as a rule; padding lies before
    // it.
    const AVRational sample{1, m_rate};
    const std::int64_t padding = std::clamp(stream.codecpar->initial_padding, 0, m_rate);
    const std::int64_t heard = m_firstTicks - m_origin + av_rescale_q(padding, sample, stream.time_base);
    m_first = av_rescale_q(heard, stream.time_base, sample) - padding;
    m_length = stream.codecpar->frame_size > 1 ? stream.codecpar->frame_size : 0;
    const AVCodecID codec = stream.codecpar->codec_id;
    if (m_pPeeked && m_length == 0 && (codec == AV_CODEC_ID_OPUS || av_get_exact_bits_per_sample(codec) >= 8))
        m_length = DurationOf(*m_pPeeked);
    if (m_pPeeked && m_isBare)
        m_frontPadding = PaddingOf(*m_pPeeked).front;
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

std::int64_t AudioPackets::PlaceOf(std::int64_t ticks) const
{
    if (ticks == AV_NOPTS_VALUE)
        return AV_NOPTS_VALUE;
    return Snapped(av_rescale_q(ticks - m_origin, m_stream.time_base, {1, m_rate}));
}

/// Where packets have one length, the place that is a whole number of packets away from the first one, if rounding to
/// ticks explains the difference.
std::int64_t AudioPackets::Snapped(std::int64_t place) const
{
    const AVRational tick = m_stream.time_base;
    const AVRational sample{1, m_rate};
    if (m_length <= 1 || av_cmp_q(tick, sample) == 0)
        return place;
    const std::int64_t half = place >= m_first ? m_length / 2 : -m_length / 2;
    const std::int64_t snapped = m_first + (place - m_first + half) / m_length * m_length;
    const std::int64_t most = av_rescale_q_rnd(1, tick, sample, AV_ROUND_UP) + 1;
    return std::abs(snapped - place) <= most ? snapped : place;
}

std::int64_t AudioPackets::DurationOf(const AVPacket& packet) const
{
    if (m_stream.codecpar->codec_id == AV_CODEC_ID_OPUS && m_rate == 48'000)
        return OpusLengthOf(packet);
    if (m_isBare && m_stream.codecpar->codec_id == AV_CODEC_ID_AAC)
        if (const std::int64_t length = AdtsLengthOf(packet, m_rate); length > 0)
            return length;
    const AVRational tick = m_stream.time_base;
    const std::int64_t up = av_rescale_q_rnd(packet.duration, tick, {1, m_rate}, AV_ROUND_UP);
    const std::int64_t down = av_rescale_q_rnd(packet.duration, tick, {1, m_rate}, AV_ROUND_DOWN);
    const bool isFine = av_cmp_q(tick, {1, m_rate}) <= 0; // coarser ticks round, also to whole samples
    if (packet.duration > 0 && up == down && isFine)
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
    if (m_isBare)
    {
        const std::int64_t padding = PaddingOf(*pPacket).end;
        if (padding > 0 && !m_isCounted)
            m_countedEnd = std::min(m_countedEnd, pPacket->pts + duration - padding);
        av_packet_free_side_data(pPacket.get()); // after a seek it would tell of padding that is not there
    }
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
    std::int64_t heardEnd = INT64_MAX;
    for (std::int64_t n = 0;; ++n)
    {
        const AvPacketPtr pPacket = ReadOne();
        if (!pPacket)
            break;
        if (n % m_stride == 0)
            Keep({pPacket->pos, end});
        end += DurationOf(*pPacket);
        if (const std::int64_t padding = PaddingOf(*pPacket).end; padding > 0)
            heardEnd = std::min(heardEnd, end - padding);
    }
    m_countedEnd = std::min(end, heardEnd);
    SeekToStart();
}

void AudioPackets::SeekToStart()
{
    m_pPeeked.reset();
    ++GetMediaStatistics().seeks;
    m_next = m_isBare ? 0 : AV_NOPTS_VALUE;
    // A bare stream's times start anew wherever it is entered, so only the place in the file counts.
    const int flags = m_isBare ? AVSEEK_FLAG_BYTE : AVSEEK_FLAG_BACKWARD;
    if (av_seek_frame(&m_format, m_stream.index, m_isBare ? m_firstBytes : m_firstTicks, flags) < 0)
        avformat_seek_file(&m_format, -1, INT64_MIN, 0, INT64_MAX, AVSEEK_FLAG_BYTE);
}

bool AudioPackets::SeekTicks(std::int64_t place)
{
    ++GetMediaStatistics().seeks;
    const std::int64_t ticks = m_origin + av_rescale_q_rnd(place, {1, m_rate}, m_stream.time_base, AV_ROUND_DOWN);
    return av_seek_frame(&m_format, m_stream.index, ticks, AVSEEK_FLAG_BACKWARD) >= 0;
}

/// True when every packet from here on lies on one page. The position is lost.
bool AudioPackets::IsOnLastPage()
{
    std::int64_t page = -1;
    while (const AvPacketPtr pPacket = ReadOne())
    {
        if (page >= 0 && pPacket->pos != page)
            return false;
        page = pPacket->pos;
    }
    return true;
}

void AudioPackets::Seek(std::int64_t place)
{
    m_pPeeked.reset();
    if (m_isOgg)
    {
        // A page states the time of its end. The last page may end in padding, so its packets have places only if they
        // are come to from the page before.
        std::int64_t back = 0;
        while (place - back > m_first && SeekTicks(place - back))
        {
            if (!IsOnLastPage())
            {
                SeekTicks(place - back);
                return;
            }
            back = back * 2 + m_rate;
        }
        return SeekToStart();
    }
    if (!m_isBare)
    {
        if (!SeekTicks(place))
            SeekToStart();
        return;
    }
    CountAll();
    const auto after = std::upper_bound(m_places.begin(), m_places.end(), place,
                                        [](std::int64_t p, const Place& entry) { return p < entry.samples; });
    if (after == m_places.begin() || std::prev(after) == m_places.begin())
        return SeekToStart();
    ++GetMediaStatistics().seeks;
    m_next = AV_NOPTS_VALUE;
    if (av_seek_frame(&m_format, m_stream.index, std::prev(after)->bytes, AVSEEK_FLAG_BYTE) < 0)
        SeekToStart();
}
} // namespace pal
