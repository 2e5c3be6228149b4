#include "bench/PairedFigures.h"
#include "bench/RawLoop.h"
#include "engine/decoders/media/VideoDecoder.h"
#include "engine/platform/SampleBuffer.h"
#include "pal/kernel/PathText.h"
#include "pal/media/MediaStatistics.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

namespace
{
using qmx::bench::FindFilm;
using qmx::bench::RawLoop;
using qmx::bench::RunPaired;

/// A decoder as a video clip holds it.
class EngineFilm
{
public:
    bool Open(const std::string& path, std::uint32_t width)
    {
        const std::wstring file = pal::FromPathBytes(path);
        tagVideoInfo info = {};
        if (!RefPtr<CVideoDecoder>::Adopt(new CVideoDecoder)->GetVideoInfo(file, &info))
            return false;
        tagDecProp prop(file, 0);
        prop.frameRate = info.dFrameRate;
        prop.frameDuration = FrameDurationFromRate(info.dFrameRate);
        prop.width = width;
        m_frameDuration = prop.frameDuration;
        m_frames = static_cast<std::uint64_t>(std::llround(info.dDuration * info.dFrameRate));
        m_pDecoder = RefPtr<CVideoDecoder>::Adopt(new CVideoDecoder);
        return m_pDecoder->Initialize(prop);
    }
    SampleBufferPtr GetFrame(std::uint64_t n, bool& ended)
    {
        return SampleBufferPtr::Adopt(m_pDecoder->GetClipVideoFrame(n * m_frameDuration, ended));
    }
    std::uint64_t GetCount() const { return m_frames; }

private:
    RefPtr<CVideoDecoder> m_pDecoder;
    std::uint64_t m_frameDuration = 0;
    std::uint64_t m_frames = 0;
};

/// True when the engine's frame is the raw loop's, but for libyuv's coarser colour arithmetic.
bool SamePicture(ISampleBuffer& frame, const std::uint8_t* pRaw)
{
    std::uint8_t* pOurs = nullptr;
    std::uint32_t cb = 0;
    if (pRaw == nullptr || !frame.GetBuffer(&pOurs, &cb))
        return false;
    std::uint64_t difference = 0;
    for (std::uint32_t i = 0; i < cb; ++i)
        difference += static_cast<std::uint64_t>(std::abs(pOurs[i] - pRaw[i]));
    return difference < std::uint64_t{cb} * 3;
}

/// Every frame of a film in order, scaled to @p width x @p height.
void BM_Sequential(benchmark::State& state, const char* film, int width, int height)
{
    const std::string path = FindFilm(film);
    if (path.empty())
        return state.SkipWithError("film not made (scripts/make-media)");
    constexpr int kFrames = 120;
    EngineFilm engine;
    RawLoop raw;
    bool ended = false;
    bool same = engine.Open(path, static_cast<std::uint32_t>(width)) && raw.Open(path);
    for (std::uint64_t n = 0; same && n < 20; ++n)
    {
        const SampleBufferPtr pFrame = engine.GetFrame(n, ended);
        same = pFrame && raw.Decode() && SamePicture(*pFrame.Get(), raw.ConvertAndScale(width, height));
    }
    if (!same)
        return state.SkipWithError("wrong pictures");
    std::uint64_t next = 20;
    RunPaired(
        state,
        [&]
        {
            int done = 0;
            for (; done < kFrames; ++done)
            {
                if (next + 1 >= engine.GetCount())
                    next = 0;
                if (!engine.GetFrame(next++, ended))
                    return 0;
            }
            return done;
        },
        [&]
        {
            int done = 0;
            for (; done < kFrames; ++done)
            {
                if (!raw.Decode() && !(raw.SeekAndDecode(0) || raw.Decode()))
                    return 0;
                benchmark::DoNotOptimize(raw.ConvertAndScale(width, height));
            }
            return done;
        });
}
BENCHMARK_CAPTURE(BM_Sequential, 1080p_to_720p, "bench-1080p.mp4", 1280, 720)
    ->UseManualTime()
    ->Iterations(15)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Sequential, 4k_to_1080p, "bench-4k.mp4", 1920, 1080)
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);

/// 60 frames in random order, 20 an iteration.
void BM_RandomAccess(benchmark::State& state)
{
    const std::string path = FindFilm("bench-1080p.mp4");
    EngineFilm engine;
    RawLoop raw;
    if (path.empty() || !engine.Open(path, 1280) || !raw.Open(path))
        return state.SkipWithError("film not made (scripts/make-media)");
    std::mt19937 random(7);
    std::vector<std::uint64_t> frames(20);
    for (std::uint64_t& n : frames)
        n = random() % (engine.GetCount() - 1);
    const AVRational rate = raw.GetStream().avg_frame_rate;
    std::uint64_t decoded = pal::GetMediaStatistics().picturesDecoded;
    bool ended = false;
    RunPaired(
        state,
        [&]
        {
            for (const std::uint64_t n : frames)
                if (!engine.GetFrame(n, ended))
                    return 0;
            return static_cast<int>(frames.size());
        },
        [&]
        {
            for (const std::uint64_t n : frames)
            {
                const std::int64_t pts =
                    av_rescale_q(static_cast<std::int64_t>(n), av_inv_q(rate), raw.GetStream().time_base);
                if (!raw.SeekAndDecode(pts) || raw.ConvertAndScale(1280, 720) == nullptr)
                    return 0;
            }
            return static_cast<int>(frames.size());
        });
    const double accesses = static_cast<double>(frames.size()) * static_cast<double>(state.iterations());
    decoded = pal::GetMediaStatistics().picturesDecoded - decoded;
    state.counters["engine_decoded"] = static_cast<double>(decoded) / accesses;
    state.counters["raw_decoded"] = static_cast<double>(raw.GetDecoded()) / accesses;
}
BENCHMARK(BM_RandomAccess)->UseManualTime()->Iterations(3)->Unit(benchmark::kMillisecond);

/// 120 steps back, one frame each, beside decoding four pictures (what a step may cost at GOP 250).
void BM_StepsBackward(benchmark::State& state)
{
    const std::string path = FindFilm("bench-1080p.mp4");
    EngineFilm engine;
    RawLoop raw;
    if (path.empty() || !engine.Open(path, 1280) || !raw.Open(path))
        return state.SkipWithError("film not made (scripts/make-media)");
    constexpr int kSteps = 120;
    constexpr int kAllowedDecodes = 4;
    std::uint64_t decoded = 0;
    bool ended = false;
    std::uint64_t from = 245;
    RunPaired(
        state,
        [&]
        {
            if (!engine.GetFrame(from, ended)) // the step before the first one is not counted as a step
                return 0;
            const std::uint64_t before = pal::GetMediaStatistics().picturesDecoded;
            for (std::uint64_t n = 1; n <= kSteps; ++n)
                if (!engine.GetFrame(from - n, ended))
                    return 0;
            decoded += pal::GetMediaStatistics().picturesDecoded - before;
            from = from == 245 ? 130 : 245;
            return kSteps;
        },
        [&]
        {
            for (int i = 0; i < kSteps * kAllowedDecodes; ++i)
                if (!raw.Decode() && !(raw.SeekAndDecode(0) || raw.Decode()))
                    return 0;
            return kSteps;
        });
    state.counters["engine_decoded"] =
        static_cast<double>(decoded) / (kSteps * static_cast<double>(state.iterations()));
}
BENCHMARK(BM_StepsBackward)->UseManualTime()->Iterations(2)->Unit(benchmark::kMillisecond);
} // namespace
