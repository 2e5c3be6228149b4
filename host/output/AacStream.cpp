#include "host/output/AacStream.h"

#include "host/HostError.h"
#include "host/output/LibraryObjects.h"
#include "host/sound/SoundTime.h"

#include <algorithm>

namespace qmx::host
{
namespace
{
constexpr std::int64_t kBitRate = 192'000;
}

struct AacStream::State
{
    AVFormatContext& format;
    const OutputFile& output;
    AVStream* pStream = nullptr; // owned by the format context
    CodecPtr pCodec;
    FramePtr pFrame;
    PacketPtr pPacket;
    int filled = 0; ///< samples in the frame
    std::int64_t nextSample = 0;

    void Check(int result) const { CheckLibrary(output, result); }
    void Open();
    void SendFrame();
    void Encode(const AVFrame* pSent);
};

void AacStream::State::Open()
{
    const AVCodec* const pEncoder = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!pEncoder)
        throw HostError(ExitCode::Failed, "", "the AAC encoder is missing from the installed FFmpeg");
    pCodec.reset(NeedMemory(avcodec_alloc_context3(pEncoder)));
    pCodec->sample_rate = kSoundRate;
    pCodec->time_base = {1, kSoundRate};
    pCodec->sample_fmt = AV_SAMPLE_FMT_FLTP;
    pCodec->ch_layout = AV_CHANNEL_LAYOUT_STEREO;
    pCodec->bit_rate = kBitRate;
    pCodec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    Check(avcodec_open2(pCodec.get(), pEncoder, nullptr));

    pFrame.reset(NeedMemory(av_frame_alloc()));
    pPacket.reset(NeedMemory(av_packet_alloc()));
    pFrame->format = pCodec->sample_fmt;
    pFrame->sample_rate = pCodec->sample_rate;
    pFrame->ch_layout = pCodec->ch_layout;
    pFrame->nb_samples = pCodec->frame_size;
    Check(av_frame_get_buffer(pFrame.get(), 0));

    pStream = NeedMemory(avformat_new_stream(&format, nullptr));
    pStream->time_base = pCodec->time_base;
    Check(avcodec_parameters_from_context(pStream->codecpar, pCodec.get()));
}

/// @param pSent  null to flush
void AacStream::State::Encode(const AVFrame* pSent)
{
    Check(avcodec_send_frame(pCodec.get(), pSent));
    for (;;)
    {
        const int result = avcodec_receive_packet(pCodec.get(), pPacket.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        Check(result);
        pPacket->stream_index = pStream->index;
        av_packet_rescale_ts(pPacket.get(), pCodec->time_base, pStream->time_base);
        Check(av_interleaved_write_frame(&format, pPacket.get()));
        Check(format.pb->error);
    }
}

void AacStream::State::SendFrame()
{
    pFrame->nb_samples = filled;
    pFrame->pts = nextSample;
    nextSample += filled;
    filled = 0;
    Encode(pFrame.get());
    pFrame->nb_samples = pCodec->frame_size;
    Check(av_frame_make_writable(pFrame.get()));
}

AacStream::AacStream(AVFormatContext& format, const OutputFile& output)
    : m_pState(std::make_unique<State>(State{format, output, nullptr, {}, {}, {}, 0, 0}))
{
    m_pState->Open();
}

AacStream::~AacStream() = default;

void AacStream::Write(const float* pSamples, std::size_t count)
{
    State& s = *m_pState;
    while (count > 0)
    {
        const auto taken = std::min(count, static_cast<std::size_t>(s.pCodec->frame_size - s.filled));
        for (std::size_t channel = 0; channel < kSoundChannels; ++channel)
        {
            auto* const pPlane = reinterpret_cast<float*>(s.pFrame->data[channel]) + s.filled;
            for (std::size_t i = 0; i < taken; ++i)
                pPlane[i] = pSamples[i * kSoundChannels + channel];
        }
        s.filled += static_cast<int>(taken);
        pSamples += taken * kSoundChannels;
        count -= taken;
        if (s.filled == s.pCodec->frame_size)
            s.SendFrame();
    }
}

void AacStream::Finish()
{
    State& s = *m_pState;
    if (s.filled > 0)
        s.SendFrame(); // the last frame may be shorter
    s.Encode(nullptr);
}
} // namespace qmx::host
