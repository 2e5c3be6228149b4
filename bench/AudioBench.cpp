#include "bench/PairedFigures.h"
#include "engine/decoders/media/AudioDecoder.h"
#include "pal/kernel/PathText.h"
#include "pal/media/AvPointers.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace
{
using qmx::bench::FindFilm;
using qmx::bench::RunPaired;

constexpr int kBytesPerSecond = 192'000;

/// What a careful program does with the libraries alone: decode, resample; every buffer is kept.
class RawSound
{
public:
    bool Open(const std::string& path)
    {
        AVFormatContext* pFormat = nullptr;
        if (avformat_open_input(&pFormat, path.c_str(), nullptr, nullptr) < 0)
            return false;
        m_pFormat.reset(pFormat);
        if (avformat_find_stream_info(pFormat, nullptr) < 0)
            return false;
        m_stream = av_find_best_stream(pFormat, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
        if (m_stream < 0)
            return false;
        const AVCodecParameters& parameters = *pFormat->streams[m_stream]->codecpar;
        const AVCodec* const pDecoder = avcodec_find_decoder(parameters.codec_id);
        m_pCodec.reset(avcodec_alloc_context3(pDecoder));
        m_pFrame.reset(av_frame_alloc());
        m_pPacket.reset(av_packet_alloc());
        AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
        SwrContext* pResampler = nullptr;
        if (!m_pCodec || !m_pFrame || !m_pPacket || avcodec_parameters_to_context(m_pCodec.get(), &parameters) < 0 ||
            avcodec_open2(m_pCodec.get(), pDecoder, nullptr) < 0 ||
            swr_alloc_set_opts2(&pResampler, &stereo, AV_SAMPLE_FMT_S16, 48'000, &m_pCodec->ch_layout,
                                m_pCodec->sample_fmt, m_pCodec->sample_rate, 0, nullptr) < 0)
            return false;
        m_pResampler.reset(pResampler);
        return swr_init(pResampler) >= 0;
    }
    /// Decodes to the end and starts again. @return bytes of PCM
    int Play()
    {
        int cb = 0;
        for (bool ended = false; !ended;)
        {
            ended = av_read_frame(m_pFormat.get(), m_pPacket.get()) < 0;
            if (ended || m_pPacket->stream_index == m_stream)
                avcodec_send_packet(m_pCodec.get(), ended ? nullptr : m_pPacket.get());
            av_packet_unref(m_pPacket.get());
            while (avcodec_receive_frame(m_pCodec.get(), m_pFrame.get()) >= 0)
                cb += Convert();
        }
        avcodec_flush_buffers(m_pCodec.get());
        av_seek_frame(m_pFormat.get(), m_stream, 0, AVSEEK_FLAG_BACKWARD);
        return cb;
    }

private:
    int Convert()
    {
        const int most = swr_get_out_samples(m_pResampler.get(), m_pFrame->nb_samples);
        m_pcm.resize(static_cast<std::size_t>(most) * 4);
        std::uint8_t* pTarget = m_pcm.data();
        const int count = swr_convert(m_pResampler.get(), &pTarget, most,
                                      const_cast<const std::uint8_t**>(m_pFrame->extended_data), m_pFrame->nb_samples);
        benchmark::DoNotOptimize(m_pcm.data());
        return count * 4;
    }

    pal::AvFormatPtr m_pFormat;
    pal::AvCodecPtr m_pCodec;
    pal::AvFramePtr m_pFrame;
    pal::AvPacketPtr m_pPacket;
    pal::SwrPtr m_pResampler;
    int m_stream = -1;
    std::vector<std::uint8_t> m_pcm;
};

/// A decoder as a clip holds it.
class EngineSound
{
public:
    EngineSound() = default;
    ~EngineSound() { std::free(m_pBlock); }
    EngineSound(const EngineSound&) = delete;
    EngineSound& operator=(const EngineSound&) = delete;

    bool Open(const std::string& path) { return SUCCEEDED(m_decoder.Initialize(pal::FromPathBytes(path))); }
    int Play()
    {
        int cb = 0;
        while (const unsigned int cbBlock = m_decoder.GetSample(&m_pBlock, m_cbBlock))
            cb += static_cast<int>(cbBlock);
        m_decoder.Seek(0);
        return cb;
    }

private:
    CAudioDecoder m_decoder;
    unsigned char* m_pBlock = nullptr;
    DWORD m_cbBlock = 0;
};

/// Two minutes of sound; a unit is a second of it, so engine_per_s is the speed in times real time.
void BM_Sound(benchmark::State& state, const char* film)
{
    const std::string path = FindFilm(film);
    EngineSound engine;
    RawSound raw;
    if (path.empty() || !engine.Open(path) || !raw.Open(path))
        return state.SkipWithError("film not made (scripts/make-media)");
    const int cbEngine = engine.Play();
    const int cbRaw = raw.Play();
    if (cbEngine < 119 * kBytesPerSecond || std::abs(cbEngine - cbRaw) > kBytesPerSecond / 10)
        return state.SkipWithError("wrong length");
    RunPaired(
        state, [&] { return engine.Play() / kBytesPerSecond; }, [&] { return raw.Play() / kBytesPerSecond; });
}
BENCHMARK_CAPTURE(BM_Sound, mp3_44100, "bench-44100.mp3")
    ->UseManualTime()
    ->Iterations(9)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Sound, aac_48000, "bench-48000.m4a")
    ->UseManualTime()
    ->Iterations(9)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Sound, aac_44100, "bench-44100.m4a")
    ->UseManualTime()
    ->Iterations(9)
    ->Unit(benchmark::kMillisecond);
} // namespace
