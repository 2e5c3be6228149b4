#include "pal/media/VideoSource.h"
#include "pal/media/MediaLimits.h"
#include "pal/media/MediaStatistics.h"

#include <mferror.h>

extern "C"
{
#include <libavutil/cpu.h>
#include <libavutil/imgutils.h>
}

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace pal
{
namespace
{
constexpr int kMaxSeekAttempts = 12; // each goes back twice as far as the one before, the last to the start

/// The decoder for @p stream. VP8 and VP9 carry their alpha beside the stream, which only libvpx's decoders read.
const AVCodec* FindDecoder(const AVStream& stream)
{
    const AVCodecID id = stream.codecpar->codec_id;
    const AVDictionaryEntry* const pAlpha = av_dict_get(stream.metadata, "alpha_mode", nullptr, 0);
    if (pAlpha != nullptr && std::strcmp(pAlpha->value, "1") == 0)
    {
        const char* const pName = id == AV_CODEC_ID_VP9 ? "libvpx-vp9" : id == AV_CODEC_ID_VP8 ? "libvpx" : nullptr;
        const AVCodec* const pCodec = pName != nullptr ? avcodec_find_decoder_by_name(pName) : nullptr;
        if (pCodec != nullptr)
            return pCodec;
    }
    return avcodec_find_decoder(id);
}

std::size_t BytesOf(const AVFrame& frame)
{
    std::size_t cb = 0;
    for (const AVBufferRef* const pBuffer : frame.buf)
        cb += pBuffer != nullptr ? static_cast<std::size_t>(pBuffer->size) : 0;
    return std::max<std::size_t>(1, cb);
}

StreamTiming Probe(const MediaFile& file, AVStream& stream, bool& moved)
{
    for (unsigned i = 0; i < file.GetFormat()->nb_streams; ++i)
        file.GetFormat()->streams[i]->discard =
            file.GetFormat()->streams[i] == &stream ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    return ProbeTiming(file, stream, &moved);
}
} // namespace

VideoSource::VideoSource(const MediaFile& file, AVStream& stream)
    : m_stream(stream), m_packets(*file.GetFormat(), stream, m_timing), m_pScratch(av_frame_alloc()),
      m_capacity(kForwardPictures)
{
    if (!m_pScratch)
        throw std::bad_alloc();
    bool moved = false;
    m_timing = Probe(file, stream, moved);
    m_seekPending = moved;
}

VideoSource::~VideoSource() = default;

HRESULT VideoSource::OpenDecoder()
{
    if (m_pCodec)
        return S_OK;
    const AVCodec* const pDecoder = FindDecoder(m_stream);
    if (pDecoder == nullptr)
        return MF_E_TOPO_CODEC_NOT_FOUND;
    AvCodecPtr pCodec(avcodec_alloc_context3(pDecoder));
    if (!pCodec)
        return E_OUTOFMEMORY;
    if (avcodec_parameters_to_context(pCodec.get(), m_stream.codecpar) < 0)
        return MF_E_TOPO_CODEC_NOT_FOUND;
    pCodec->pkt_timebase = m_stream.time_base;
    pCodec->thread_count = std::clamp(av_cpu_count(), 1, kMaxDecodeThreads);
    pCodec->thread_type = FF_THREAD_FRAME | FF_THREAD_SLICE;
    pCodec->max_pixels = kMaxVideoPixels;
    if (avcodec_open2(pCodec.get(), pDecoder, nullptr) < 0)
        return MF_E_TOPO_CODEC_NOT_FOUND;
    m_pCodec = std::move(pCodec);
    return S_OK;
}

void VideoSource::SetRate(const Rate& rate)
{
    FrameGrid& grid = m_timing.grid;
    if (!rate.IsValid() || (rate.num == grid.rate.num && rate.den == grid.rate.den))
        return;
    grid.rate = rate;
    grid.aligned = false;
    m_endIndex = INT64_MAX;
    for (Decoded& decoded : m_window)
        decoded.index = grid.IndexOf(decoded.pts);
}

void VideoSource::Seek(std::int64_t time)
{
    m_nextIndex = std::max<std::int64_t>(0, m_timing.grid.IndexAtOrAfter(time));
    m_seekPending = true;
    // Far past the end, nothing needs to be decoded to know that there is nothing.
    const std::int64_t pts = m_timing.grid.PtsOf(m_nextIndex);
    if (pts > m_timing.end && pts - m_timing.end > Margin())
        SeekToEnd();
}

/// Ticks past the stated end at which nothing can stand any more.
std::int64_t VideoSource::Margin() const
{
    constexpr std::int64_t kSeconds = 5;
    return kSeconds * m_timing.grid.tickDen / std::max<std::int64_t>(1, m_timing.grid.tickNum);
}

void VideoSource::SeekToEnd()
{
    m_nextIndex = INT64_MAX / 4;
    m_seekPending = false;
}

bool VideoSource::IsInWindow(std::int64_t index) const
{
    if (m_window.empty())
        return false;
    const bool fromFirst = m_window.front().pts <= m_timing.grid.firstPts;
    return (fromFirst || m_window.front().index <= index) && (m_drained || index <= m_window.back().index);
}

std::size_t VideoSource::WindowCapacity() const
{
    const std::size_t cbPicture = m_window.empty() ? std::size_t{1} : BytesOf(*m_window.back().pFrame);
    return std::clamp<std::size_t>(kMaxWindowBytes / cbPicture, kForwardPictures, kMaxWindowPictures);
}

void VideoSource::CarryOutSeek()
{
    m_seekPending = false;
    m_shown = 0;
    if (IsInWindow(m_nextIndex) || m_nextIndex >= m_endIndex)
        return;

    std::int64_t keepIndex = m_nextIndex;
    m_capacity = kForwardPictures;
    if (!m_window.empty() && m_nextIndex < m_window.front().index)
    {
        // Just before the window: the client walks backward. Whatever lies before the target is wanted next, so the
        // whole way is decoded as far as the window holds it.
        const std::size_t capacity = WindowCapacity();
        const FrameGrid& grid = m_timing.grid;
        const std::int64_t span =
            grid.IndexOf(grid.firstPts + static_cast<std::int64_t>(capacity - 1) * m_timing.averageDuration) -
            grid.IndexOf(grid.firstPts);
        if (m_window.front().index - m_nextIndex <= std::max<std::int64_t>(8, span))
        {
            m_capacity = capacity;
            keepIndex = std::max<std::int64_t>(0, m_nextIndex - span);
        }
    }
    else if (!m_window.empty() && !m_drained)
    {
        // Ahead: reading on is the cheaper way unless a key packet lies in between.
        const std::int64_t lastDts = m_packets.GetLastDts();
        const std::int64_t target = m_timing.grid.PtsOf(m_nextIndex);
        const std::int64_t near = m_window.back().pts + 300 * m_timing.averageDuration;
        if (lastDts != AV_NOPTS_VALUE && target < near && !m_packets.HasKeyBetween(lastDts, target))
        {
            const PacketReader::Outlook outlook = m_packets.LookAhead(keepIndex, m_nextIndex);
            if (BeginDecoding(outlook, outlook.keyFound))
                return;
        }
    }
    Restart(keepIndex);
}

void VideoSource::Restart(std::int64_t keepIndex)
{
    const FrameGrid& grid = m_timing.grid;
    std::int64_t target = grid.PtsOf(keepIndex);
    std::int64_t step = std::max<std::int64_t>(1, grid.tickDen / std::max<std::int64_t>(1, grid.tickNum));
    std::int64_t keyBefore = INT64_MAX;
    for (int attempt = 1; attempt <= kMaxSeekAttempts; ++attempt)
    {
        const bool toStart = attempt == kMaxSeekAttempts || target <= grid.firstPts;
        if (toStart)
            m_packets.SeekToStart();
        else
            m_packets.Seek(target);
        const PacketReader::Outlook outlook = m_packets.LookAhead(keepIndex, m_nextIndex, keyBefore);
        const bool last = toStart || (outlook.atStart && !outlook.keyFound);
        if ((outlook.keyFound || last) && (BeginDecoding(outlook, true) || last))
            return;
        // The file's index led behind the target, or decoding cannot really begin at the key packet.
        if (outlook.keyFound)
            keyBefore = outlook.keyTime;
        target = std::min(target, outlook.frontPts != AV_NOPTS_VALUE ? outlook.frontPts : target) - step;
        step *= 2;
    }
}

/// Decodes up to the first picture that is kept. @return false when it shows after the sample that is wanted
bool VideoSource::BeginDecoding(const PacketReader::Outlook& outlook, bool flush)
{
    if (flush)
    {
        avcodec_flush_buffers(m_pCodec.get());
        m_draining = false;
        m_drained = false;
        m_beganPts = INT64_MIN;
        m_lastPts = INT64_MIN;
        m_decodeTimes.clear();
    }
    m_keepPts = outlook.keepPts;
    m_window.clear();
    m_shown = 0;
    if (!DecodeNext())
        return false;
    // A stream that refreshes gradually marks pictures as key from which the decoder only works its way up to a whole
    // one, and not exactly the one that decoding from further back gives.
    const bool trueKey = !flush || !outlook.keyFound || m_beganPts - m_timing.averageDuration <= outlook.keyPts;
    return trueKey && m_window.front().index <= m_nextIndex;
}

bool VideoSource::Feed()
{
    if (m_draining)
        return false;
    const AvPacketPtr pPacket = m_packets.Next();
    if (!pPacket)
    {
        m_draining = true;
        avcodec_send_packet(m_pCodec.get(), nullptr);
        return true;
    }
    // On the way to a target, pictures that nothing refers to need not be decoded.
    const std::int64_t time = pPacket->pts != AV_NOPTS_VALUE ? pPacket->pts : INT64_MAX;
    if (m_timing.timesFromOrder && pPacket->dts != AV_NOPTS_VALUE)
        m_decodeTimes.insert(pPacket->dts);
    m_pCodec->skip_frame = time < m_keepPts ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
    avcodec_send_packet(m_pCodec.get(), pPacket.get()); // a damaged packet is skipped
    return true;
}

/// Appends the next picture to the window. @return false at the end of the stream
bool VideoSource::DecodeNext()
{
    while (!m_drained)
    {
        const int result = avcodec_receive_frame(m_pCodec.get(), m_pScratch.get());
        if (result == AVERROR_EOF)
            m_drained = true;
        else if (result >= 0)
        {
            if (Accept())
                return true;
        }
        else if (!Feed())
            m_drained = true;
    }
    if (!m_window.empty())
    {
        const Decoded& last = m_window.back();
        const FrameGrid& grid = m_timing.grid;
        const std::int64_t end = std::min(last.pts + last.duration, std::max(m_timing.end, last.pts));
        m_endIndex = std::max(last.index + 1, grid.IndexOf(end));
    }
    return false;
}

std::int64_t VideoSource::TimeOfNewPicture()
{
    std::int64_t pts = m_pScratch->best_effort_timestamp;
    if (m_timing.timesFromOrder)
    {
        // Decode times left behind by damaged packets would delay everything after them.
        constexpr std::size_t kMostInDecoder = 16 + kMaxDecodeThreads;
        while (m_decodeTimes.size() > kMostInDecoder)
            m_decodeTimes.erase(m_decodeTimes.begin());
        pts = AV_NOPTS_VALUE;
        if (!m_decodeTimes.empty())
            pts = m_decodeTimes.extract(m_decodeTimes.begin()).value();
    }
    // Where the container left the time out, the decoder's guess (a decode time) may lie before the last picture.
    const bool guessed = m_pScratch->pts == AV_NOPTS_VALUE && !m_timing.timesFromOrder;
    if (pts != AV_NOPTS_VALUE && !(guessed && m_lastPts != INT64_MIN && pts <= m_lastPts))
        return pts;
    return m_lastPts == INT64_MIN ? m_timing.grid.firstPts : m_lastPts + m_timing.averageDuration;
}

/// Takes the picture that the decoder gave. @return false for one that is not kept
bool VideoSource::Accept()
{
    ++GetMediaStatistics().picturesDecoded;
    std::int64_t pts = TimeOfNewPicture();
    // A stamp before its predecessor's is damage: that picture is late. One far past the end would hold everything up.
    if (m_lastPts != INT64_MIN && pts <= m_lastPts)
        return false;
    if (m_lastPts != INT64_MIN && m_lastPts < m_timing.end && pts > m_timing.end && pts - m_timing.end > Margin())
        pts = m_lastPts + m_timing.averageDuration;
    if (m_lastPts == INT64_MIN)
        m_beganPts = pts;
    m_lastPts = pts;

    if (pts <= m_keepPts)
        m_window.clear();
    AvFramePtr pFrame(av_frame_alloc());
    if (!pFrame)
        throw std::bad_alloc();
    av_frame_move_ref(pFrame.get(), m_pScratch.get());
    const std::int64_t duration = pFrame->pkt_duration > 0 ? pFrame->pkt_duration : m_timing.averageDuration;
    m_window.push_back(
        {std::shared_ptr<AVFrame>(pFrame.release(), AvDeleter()), pts, duration, m_timing.grid.IndexOf(pts)});
    return pts >= m_keepPts;
}

void VideoSource::Trim()
{
    const std::size_t capacity = std::min(m_capacity, WindowCapacity());
    while (m_shown > 0 && m_window.size() > capacity)
    {
        m_window.pop_front();
        --m_shown;
    }
}

/// True when the shown picture of the window is certain to be the one of the next sample.
bool VideoSource::ShowsNext() const
{
    if (m_shown + 1 < m_window.size())
        return m_window[m_shown + 1].index > m_nextIndex;
    return m_timing.grid.aligned && m_window[m_shown].index >= m_nextIndex;
}

VideoSource::Picture VideoSource::Read()
{
    if (std::exchange(m_seekPending, false))
        CarryOutSeek();
    if (m_nextIndex >= m_endIndex || m_nextIndex >= INT64_MAX / 4)
        return {};
    if (m_window.empty() && !DecodeNext())
        return {};
    for (;;)
    {
        while (m_shown + 1 < m_window.size() && m_window[m_shown + 1].index <= m_nextIndex)
            ++m_shown;
        if (ShowsNext())
            break;
        if (!DecodeNext())
        {
            if (m_nextIndex >= m_endIndex)
                return {};
            break;
        }
        Trim();
    }
    Trim();
    return {m_window[m_shown].pFrame, m_nextIndex++};
}
} // namespace pal
