#include "bench/PairedFigures.h"
#include "bench/RawLoop.h"
#include "engine/clips/QMXTXClip.h"
#include "engine/clips/QMXVideoClip.h"
#include "engine/decoders/DecoderCache.h"
#include "engine/platform/PixelUtility.h"
#include "engine/platform/SampleBuffer.h"
#include "pal/kernel/PathText.h"

#include <benchmark/benchmark.h>
#include <libyuv.h>

#include <vector>

namespace
{
using qmx::bench::FindFilm;
using qmx::bench::RawLoop;
using qmx::bench::RunPaired;

constexpr std::uint32_t kWidth = 1920;
constexpr std::uint32_t kHeight = 1080;
constexpr std::uint64_t kFrame = 333'333; // 100 ns
constexpr int kFrames = 120;

/// A clip of the film that begins at @p start of the time line, on a track of its own.
IQMXBaseClip* MakeClip(const std::string& path, std::uint64_t start, std::uint64_t track)
{
    auto* const pClip = new CQMXVideoClip;
    pClip->SetFilePath(pal::FromPathBytes(path));
    pClip->SetFrameRate(30);
    pClip->SetTrackID(track);
    pClip->SetStartTime(start);
    pClip->SetDuration(kFrames * kFrame);
    return pClip;
}

/// A dissolve of two films in full size, from its first to its last frame, beside a loop that decodes both films,
/// converts and blends. While one side of the transition stands still it costs no decoding.
void BM_Crossfade(benchmark::State& state)
{
    const std::string path = FindFilm("bench-1080p.mp4");
    RawLoop rawFrom;
    RawLoop rawTo;
    if (path.empty() || !rawFrom.Open(path) || !rawTo.Open(path))
        return state.SkipWithError("film not made (scripts/make-media)");
    CQMXTXClip clip;
    clip.SetDuration(kFrames * kFrame);
    clip.SetEffectModule(L"qmx_transitions.so");
    clip.SetClips(MakeClip(path, 0, 1), MakeClip(path, 0, 2));
    tagRenderProp request;
    request.flags = kRequestUseCache;
    request.width = kWidth;
    request.height = kHeight;
    std::vector<std::uint8_t> blended(std::size_t{kWidth} * kHeight * 4);
    RunPaired(
        state,
        [&]
        {
            for (int n = 0; n < kFrames; ++n)
                if (!SampleBufferPtr::Adopt(clip.GetFrame(request, static_cast<std::uint64_t>(n) * kFrame, nullptr)))
                    return 0;
            return kFrames;
        },
        [&]
        {
            for (int n = 0; n < kFrames; ++n)
            {
                for (RawLoop* const pRaw : {&rawFrom, &rawTo})
                    if (!pRaw->Decode() && !(pRaw->SeekAndDecode(0) || pRaw->Decode()))
                        return 0;
                constexpr int kStride = static_cast<int>(kWidth) * 4;
                libyuv::ARGBInterpolate(rawFrom.ConvertAndScale(kWidth, kHeight), kStride,
                                        rawTo.ConvertAndScale(kWidth, kHeight), kStride, blended.data(), kStride,
                                        kWidth, kHeight, n * 255 / kFrames);
            }
            return kFrames;
        });
    clip.Close();
    RemoveAllDecoders();
}
BENCHMARK(BM_Crossfade)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

/// The chroma key in full size, over the time of all threads: at most 2 ms.
void BM_Key1080p(benchmark::State& state)
{
    std::vector<std::uint8_t> source(std::size_t{kWidth} * kHeight * 4);
    std::uint32_t seed = 1;
    for (std::uint8_t& byte : source)
        byte = static_cast<std::uint8_t>((seed = seed * 1664525U + 1013904223U) >> 24);
    std::vector<std::uint8_t> pixels = source;
    tagSampleInfo info;
    info.pData = pixels.data();
    info.nWidth = kWidth;
    info.nHeight = kHeight;
    info.nStride = kWidth * 4;
    constexpr std::uint8_t kGreen[] = {64, 177, 0};
    for (auto _ : state)
        if (!ReplaceToTransparent(&info, nullptr, kGreen, 0.06, 0.22, 1, 1, 1))
            return state.SkipWithError("not keyed");
    benchmark::DoNotOptimize(pixels.data());
}
BENCHMARK(BM_Key1080p)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
} // namespace
