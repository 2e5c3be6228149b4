#include "pal/media/AudioFrames.h"
#include "pal/media/MediaLimits.h"

#include <mferror.h>

extern "C"
{
#include <libavutil/mathematics.h>
}

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

namespace pal
{
namespace
{
constexpr int kMarginSeconds = 5;     // by which a file may be longer than it says
constexpr int kMaxOverlapSeconds = 1; // a time that runs back by more is the start of another count
constexpr int kMaxSeekAttempts = 6;   // each goes back further than the one before, the last to the start

/// Length that an MP4 file of music states in a comment of its own, in samples; 0 when there is none. The words are
/// hexadecimal: a reserved one, samples in front, samples behind, the length.
std::int64_t StatedMusicLength(const AVFormatContext& format)
{
    const AVDictionaryEntry* const pEntry = av_dict_get(format.metadata, "iTunSMPB", nullptr, 0);
    unsigned long long length = 0;
    if (pEntry == nullptr || std::sscanf(pEntry->value, "%*x %*x %*x %llx", &length) != 1 || length > INT64_MAX / 2)
        return 0;
    return static_cast<std::int64_t>(length);
}
} // namespace

AudioFrames::AudioFrames(const MediaFile& file, AVStream& stream)
    : m_file(file), m_stream(stream), m_packets(file, stream),
      m_hasPictures(file.FindStream(AVMEDIA_TYPE_VIDEO) != nullptr), m_pFrame(av_frame_alloc()), m_next(AV_NOPTS_VALUE)
{
    if (!m_pFrame)
        throw std::bad_alloc();
}

HRESULT AudioFrames::OpenDecoder()
{
    const AVCodecParameters& parameters = *m_stream.codecpar;
    const AVCodec* const pDecoder = avcodec_find_decoder(parameters.codec_id);
    if (pDecoder == nullptr || parameters.sample_rate <= 0 || parameters.sample_rate > kMaxAudioRate ||
        parameters.ch_layout.nb_channels > kMaxAudioChannels)
        return MF_E_TOPO_CODEC_NOT_FOUND;
    AvCodecPtr pCodec(avcodec_alloc_context3(pDecoder));
    if (!pCodec)
        return E_OUTOFMEMORY;
    if (avcodec_parameters_to_context(pCodec.get(), &parameters) < 0)
        return MF_E_TOPO_CODEC_NOT_FOUND;
    pCodec->pkt_timebase = {1, GetRate()};
    pCodec->thread_count = 1; // a block is decoded in microseconds
    if (avcodec_open2(pCodec.get(), pDecoder, nullptr) < 0)
        return MF_E_TOPO_CODEC_NOT_FOUND;
    m_pCodec = std::move(pCodec);
    return S_OK;
}

HRESULT AudioFrames::Open()
{
    if (m_pCodec)
        return S_OK;
    const HRESULT hr = OpenDecoder();
    if (FAILED(hr))
        return hr;
    m_isHeld = Decode();
    FindEnd();
    return S_OK;
}

void AudioFrames::FindEnd()
{
    const AVFormatContext& format = *m_file.GetFormat();
    const int rate = GetRate();
    const std::int64_t heard = (m_isHeld ? m_place : 0) + m_packets.GetFrontPadding();
    m_zero = m_hasPictures ? 0 : heard;
    if (const std::uint64_t duration = m_file.GetDuration(); duration != 0)
        m_longest = std::max<std::int64_t>(0, heard) + std::int64_t{kMarginSeconds} * rate +
                    av_rescale(static_cast<std::int64_t>(duration), rate, 10'000'000);
    if (std::strstr(format.iformat->name, "mp4") == nullptr)
        return;
    if (m_stream.duration > 0)
        m_statedEnd = heard + av_rescale_q(m_stream.duration, m_stream.time_base, {1, rate});
    if (const std::int64_t length = StatedMusicLength(format); length != 0)
        m_end = heard + length;
}

std::int64_t AudioFrames::CountLength()
{
    m_packets.CountAll();
    if (m_pCodec)
        Restart();
    return m_packets.GetCountedEnd() - m_zero;
}

/// How much has to be decoded before a place until the decoder is in the state that it had when it came from the start.
std::int64_t AudioFrames::Preroll() const
{
    const AVCodecDescriptor* const pCodec = avcodec_descriptor_get(m_stream.codecpar->codec_id);
    if (pCodec != nullptr && (pCodec->props & AV_CODEC_PROP_LOSSLESS) != 0)
        return 0;
    if (av_get_exact_bits_per_sample(m_stream.codecpar->codec_id) >= 8)
        return 0;
    switch (m_stream.codecpar->codec_id)
    {
    case AV_CODEC_ID_MP2:
    case AV_CODEC_ID_MP3: // a frame of a low rate takes its bits from up to twenty before it
        return std::int64_t{24} * 1'152;
    case AV_CODEC_ID_AAC:
        return std::int64_t{4} * 2'048;
    case AV_CODEC_ID_AC3:
    case AV_CODEC_ID_EAC3:
        return std::int64_t{4} * 1'536;
    case AV_CODEC_ID_VORBIS:
        return std::int64_t{3} * 8'192;
    default:
        return std::max<std::int64_t>(m_stream.codecpar->seek_preroll, GetRate());
    }
}

/// Samples of the frame, in samples of the stream's rate.
std::int64_t AudioFrames::LengthOf(std::int64_t samples) const
{
    const int rate = m_pFrame->sample_rate;
    return rate == GetRate() ? samples : av_rescale(samples, GetRate(), rate);
}

bool AudioFrames::Feed()
{
    if (m_isDraining)
        return false;
    const AvPacketPtr pPacket = m_packets.Next();
    m_isDraining = !pPacket;
    avcodec_send_packet(m_pCodec.get(), pPacket.get()); // a damaged packet leaves a hole
    return true;
}

/// Decodes the next frame that has a place. @return false at the end of the stream
bool AudioFrames::Decode()
{
    while (!m_isDrained)
    {
        const int result = avcodec_receive_frame(m_pCodec.get(), m_pFrame.get());
        if (result >= 0)
        {
            if (Accept())
                return true;
        }
        else if (result == AVERROR_EOF || !Feed())
            m_isDrained = true;
    }
    return false;
}

bool AudioFrames::Accept()
{
    const AVFrame& frame = *m_pFrame;
    if (frame.nb_samples <= 0 || frame.sample_rate <= 0 || frame.sample_rate > kMaxAudioRate ||
        frame.ch_layout.nb_channels <= 0 || frame.ch_layout.nb_channels > kMaxAudioChannels)
        return false;
    PlaceFrame();
    if (m_place == AV_NOPTS_VALUE)
        return false; // after a seek: something with a time will follow
    m_isAtStart = false;
    const bool isHeard = TrimFrame();
    m_next = m_place + LengthOf(frame.nb_samples);
    return isHeard;
}

void AudioFrames::PlaceFrame()
{
    const std::int64_t stated = m_pFrame->best_effort_timestamp;
    m_place = m_next != AV_NOPTS_VALUE ? m_next : stated;
    if (m_isAtStart && m_place == AV_NOPTS_VALUE)
        m_place = m_packets.GetFirst();
    if (m_next == AV_NOPTS_VALUE || stated == AV_NOPTS_VALUE)
        return;
    const std::int64_t hole = stated - m_next;
    if (std::abs(hole) <= m_packets.GetTolerance())
        return;
    const std::int64_t rate = GetRate();
    const bool isBelievable = hole < 0                ? -hole <= kMaxOverlapSeconds * rate
                              : m_longest < INT64_MAX ? stated <= m_longest
                                                      : hole <= kMaxSilentGap * rate;
    if (isBelievable)
        m_place = stated;
}

/// Cuts off what lies behind the end. @return false when nothing is left
bool AudioFrames::TrimFrame()
{
    AVFrame& frame = *m_pFrame;
    std::int64_t end = std::min(m_end, m_packets.GetCountedEnd());
    // An MP4 file's last packet is shorter than its coding makes it.
    const std::int64_t coded = m_place + LengthOf(frame.nb_samples);
    if (frame.pkt_duration > 0 && frame.pkt_duration < LengthOf(frame.nb_samples) && coded > m_statedEnd &&
        m_place < m_statedEnd)
        end = std::min(end, m_statedEnd);
    if (m_place >= end)
    {
        m_isDrained = true;
        return false;
    }
    if (coded > end)
        frame.nb_samples = static_cast<int>(
            std::min<std::int64_t>(frame.nb_samples, av_rescale(end - m_place, frame.sample_rate, GetRate())));
    return frame.nb_samples > 0;
}

AudioFrames::Block AudioFrames::Next()
{
    if (!std::exchange(m_isHeld, false) && !Decode())
        return {};
    return {m_pFrame.get(), m_place};
}

void AudioFrames::Restart()
{
    m_packets.SeekToStart();
    // A decoder that is only flushed may still know how the last block before ended. Where there is memory for a new
    // one, the start sounds as it did the first time.
    if (FAILED(OpenDecoder()))
        avcodec_flush_buffers(m_pCodec.get());
    m_next = AV_NOPTS_VALUE;
    m_isHeld = m_isDraining = m_isDrained = false;
    m_isAtStart = true;
}

void AudioFrames::Seek(std::int64_t place)
{
    const std::int64_t preroll = Preroll();
    std::int64_t back = preroll;
    for (int attempt = 1; attempt < kMaxSeekAttempts && place - back > m_packets.GetFirst(); ++attempt)
    {
        m_packets.Seek(place - back);
        avcodec_flush_buffers(m_pCodec.get());
        m_next = AV_NOPTS_VALUE;
        m_isAtStart = m_isDraining = m_isDrained = false;
        m_isHeld = Decode();
        // The first packets after a seek may give nothing; a part of what is decoded in advance may be missing.
        if (m_isHeld && m_place <= place - preroll / 2)
            return;
        back = back * 2 + GetRate() / 2;
    }
    Restart();
}
} // namespace pal
