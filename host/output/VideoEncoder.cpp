#include "host/output/VideoEncoder.h"

#include "host/HostError.h"
#include "host/output/AacStream.h"
#include "host/output/LibraryObjects.h"
#include "host/sound/SoundTime.h"

extern "C"
{
#include <libavutil/log.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

#include <algorithm>

namespace qmx::host
{
namespace
{
struct FormatCloser
{
    void operator()(AVFormatContext* p) const
    {
        avio_closep(&p->pb);
        avformat_free_context(p);
    }
};
struct ScalerCloser
{
    void operator()(SwsContext* p) const { sws_freeContext(p); }
};
} // namespace

struct VideoEncoder::State
{
    std::unique_ptr<AVFormatContext, FormatCloser> pFormat;
    CodecPtr pCodec;
    FramePtr pFrame;
    PacketPtr pPacket;
    std::unique_ptr<SwsContext, ScalerCloser> pConverter;
    std::unique_ptr<AacStream> pSound; // null without sound
    AVStream* pStream = nullptr;       // owned by the format context
    std::int64_t nextFrame = 0;

    void OpenCodec(const OutputFile& output, const EncoderSettings& settings);
    void OpenConverter(const EncoderSettings& settings);
    void OpenFile(const OutputFile& output, const EncoderSettings& settings);
    void Encode(const OutputFile& output, const AVFrame* pFrame);

    static int Check(const OutputFile& output, int result) { return CheckLibrary(output, result); }
};

void VideoEncoder::State::OpenCodec(const OutputFile& output, const EncoderSettings& settings)
{
    const AVCodec* const pEncoder = avcodec_find_encoder_by_name("libx264");
    if (!pEncoder)
        throw HostError(ExitCode::Failed, "", "the H.264 encoder is missing from the installed FFmpeg");
    pCodec.reset(NeedMemory(avcodec_alloc_context3(pEncoder)));
    pCodec->width = static_cast<int>(settings.width);
    pCodec->height = static_cast<int>(settings.height);
    pCodec->framerate = {static_cast<int>(settings.frameRate.Numerator()),
                         static_cast<int>(settings.frameRate.Denominator())};
    pCodec->time_base = av_inv_q(pCodec->framerate);
    pCodec->sample_aspect_ratio = {1, 1};
    pCodec->pix_fmt = AV_PIX_FMT_YUV420P;
    pCodec->color_range = AVCOL_RANGE_MPEG;
    const bool hd = settings.matrix == ColourMatrix::Bt709;
    pCodec->colorspace = hd ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
    pCodec->color_primaries = hd ? AVCOL_PRI_BT709 : AVCOL_PRI_SMPTE170M;
    pCodec->color_trc = hd ? AVCOL_TRC_BT709 : AVCOL_TRC_SMPTE170M;
    if (settings.keyInterval > 0)
        pCodec->gop_size = settings.keyInterval;
    pCodec->chroma_sample_location = AVCHROMA_LOC_LEFT;
    pCodec->thread_count = 0;
    pCodec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    Check(output, av_opt_set(pCodec->priv_data, "preset", settings.preset.c_str(), 0));
    Check(output, av_opt_set_double(pCodec->priv_data, "crf", settings.crf, 0));
    Check(output, avcodec_open2(pCodec.get(), pEncoder, nullptr));

    pFrame.reset(NeedMemory(av_frame_alloc()));
    pPacket.reset(NeedMemory(av_packet_alloc()));
    pFrame->format = pCodec->pix_fmt;
    pFrame->width = pCodec->width;
    pFrame->height = pCodec->height;
    pFrame->color_range = pCodec->color_range;
    pFrame->colorspace = pCodec->colorspace;
    pFrame->color_primaries = pCodec->color_primaries;
    pFrame->color_trc = pCodec->color_trc;
    pFrame->chroma_location = pCodec->chroma_sample_location;
    Check(output, av_frame_get_buffer(pFrame.get(), 0));
}

void VideoEncoder::State::OpenConverter(const EncoderSettings& settings)
{
    const auto width = static_cast<int>(settings.width);
    const auto height = static_cast<int>(settings.height);
    // Left to itself the library takes BT.601 and averages no chroma across.
    pConverter.reset(
        NeedMemory(sws_getContext(width, height, AV_PIX_FMT_BGRA, width, height, AV_PIX_FMT_YUV420P,
                                  SWS_BILINEAR | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP, nullptr, nullptr, nullptr)));
    const bool hd = settings.matrix == ColourMatrix::Bt709;
    const int* const pMatrix = sws_getCoefficients(hd ? SWS_CS_ITU709 : SWS_CS_ITU601);
    sws_setColorspaceDetails(pConverter.get(), pMatrix, 1, pMatrix, 0, 0, 1 << 16, 1 << 16);
}

void VideoEncoder::State::OpenFile(const OutputFile& output, const EncoderSettings& settings)
{
    // The protocol is named so that a colon in a path is just a character.
    const std::string url = "file:" + output.Path().string();
    AVFormatContext* pContext = nullptr;
    Check(output, avformat_alloc_output_context2(&pContext, nullptr, "mp4", url.c_str()));
    pFormat.reset(pContext);
    pStream = NeedMemory(avformat_new_stream(pContext, nullptr));
    pStream->time_base = pCodec->time_base;
    pStream->avg_frame_rate = pCodec->framerate;
    Check(output, avcodec_parameters_from_context(pStream->codecpar, pCodec.get()));
    Check(output, avio_open(&pContext->pb, url.c_str(), AVIO_FLAG_WRITE));
    Check(output, av_opt_set(pContext->priv_data, "movflags", "+faststart", 0));
    // A time scale that is a multiple of the numerator keeps every time stamp exact.
    const std::uint32_t scale = settings.frameRate.Numerator();
    Check(output, av_opt_set_int(pContext->priv_data, "video_track_timescale",
                                 scale * std::max<std::int64_t>(1, (10'000 + scale - 1) / scale), 0));
    if (settings.hasSound)
    {
        pSound = std::make_unique<AacStream>(*pContext, output);
        // The list of edits counts by this clock; a coarser one would cut the sound off before or after its end.
        Check(output, av_opt_set_int(pContext->priv_data, "movie_timescale", kSoundRate, 0));
    }
    Check(output, avformat_write_header(pContext, nullptr));
}

/// @param pFrame  null to flush
void VideoEncoder::State::Encode(const OutputFile& output, const AVFrame* pFrame)
{
    Check(output, avcodec_send_frame(pCodec.get(), pFrame));
    for (;;)
    {
        const int result = avcodec_receive_packet(pCodec.get(), pPacket.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        Check(output, result);
        pPacket->duration = 1;
        pPacket->stream_index = pStream->index;
        av_packet_rescale_ts(pPacket.get(), pCodec->time_base, pStream->time_base);
        Check(output, av_interleaved_write_frame(pFormat.get(), pPacket.get()));
        // The muxer may keep a failed write to itself until the end; a full disk is better told at once.
        Check(output, pFormat->pb->error);
    }
}

VideoEncoder::VideoEncoder(const std::filesystem::path& target, const EncoderSettings& settings)
    : m_output(target), m_pState(std::make_unique<State>())
{
    av_log_set_level(AV_LOG_QUIET); // what goes wrong is told by the exceptions
    m_pState->OpenCodec(m_output, settings);
    m_pState->OpenConverter(settings);
    m_pState->OpenFile(m_output, settings);
}

VideoEncoder::~VideoEncoder() = default;

void VideoEncoder::Write(const Canvas& canvas)
{
    State& s = *m_pState;
    State::Check(m_output, av_frame_make_writable(s.pFrame.get()));
    const std::uint8_t* const planes[4] = {canvas.Row(0)};
    const int strides[4] = {static_cast<int>(canvas.Stride())};
    sws_scale(s.pConverter.get(), planes, strides, 0, static_cast<int>(canvas.Height()), s.pFrame->data,
              s.pFrame->linesize);
    s.pFrame->pts = s.nextFrame++;
    s.Encode(m_output, s.pFrame.get());
}

void VideoEncoder::WriteSound(const float* pSamples, std::size_t count)
{
    if (m_pState->pSound)
        m_pState->pSound->Write(pSamples, count);
}

void VideoEncoder::Finish()
{
    Close();
    Commit();
}

void VideoEncoder::Close()
{
    State& s = *m_pState;
    s.Encode(m_output, nullptr);
    if (s.pSound)
        s.pSound->Finish();
    State::Check(m_output, av_write_trailer(s.pFormat.get()));
    State::Check(m_output, avio_closep(&s.pFormat->pb));
    m_pState.reset();
}

std::vector<EncodedFrame> VideoEncoder::Frames() const
{
    struct Packet
    {
        std::int64_t pts;
        EncodedFrame frame;
    };
    const std::string url = "file:" + m_output.Path().string();
    AVFormatContext* pContext = nullptr;
    State::Check(m_output, avformat_open_input(&pContext, url.c_str(), av_find_input_format("mp4"), nullptr));
    const auto close = [](AVFormatContext* p) { avformat_close_input(&p); };
    const std::unique_ptr<AVFormatContext, decltype(close)> pFile(pContext, close);
    const std::unique_ptr<AVPacket, PacketCloser> pPacket(NeedMemory(av_packet_alloc()));
    std::vector<Packet> packets;
    while (av_read_frame(pContext, pPacket.get()) >= 0)
    {
        packets.push_back(
            {pPacket->pts, {static_cast<std::uint64_t>(pPacket->pos), static_cast<std::uint64_t>(pPacket->size)}});
        av_packet_unref(pPacket.get());
    }
    std::sort(packets.begin(), packets.end(), [](const Packet& a, const Packet& b) { return a.pts < b.pts; });
    std::vector<EncodedFrame> frames;
    frames.reserve(packets.size());
    for (const Packet& packet : packets)
        frames.push_back(packet.frame);
    return frames;
}
} // namespace qmx::host
