/// Frames of Flash movies from the collection, at growing sizes. The movie plays on; unpacking happens before.
#include "engine/platform/RefPtr.h"
#include "engine/platform/SwfRenderer.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace
{
std::filesystem::path CorpusFolder()
{
    const char* const value = std::getenv("QMX_CORPUS_DIR");
    return value && *value ? value : QMX_CORPUS_DIR;
}

void RenderMovie(benchmark::State& state, const char* name)
{
    const auto pMovie = RefPtr<ISWFRenderObj>::Adopt(CreateSWFRenderObj());
    tagSWFMovieInfo info;
    if (FAILED(pMovie->OpenMovie((CorpusFolder() / "swf" / name).wstring().c_str())) ||
        FAILED(pMovie->GetMovieInfo(&info)))
        return state.SkipWithError("the movie is not there: set QMX_CORPUS_DIR");
    const auto width = static_cast<std::uint32_t>(state.range(0));
    pMovie->SetRenderSize(width, static_cast<std::uint32_t>(width * info.dHeight / info.dWidth));
    const tagSWFFrameInfo* pInfo = nullptr;
    const std::uint8_t* pPixels = nullptr;
    std::uint32_t index = 0;
    pMovie->RenderFrame(index, &pInfo, &pPixels);
    for (auto _ : state)
    {
        // A frame that stands still is not drawn twice; leaving and coming back is.
        if (FAILED(pMovie->RenderFrame(++index % 256, &pInfo, &pPixels)))
            return state.SkipWithError("no frame");
        benchmark::DoNotOptimize(pPixels);
    }
    state.counters["frames/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void BM_FlashBlendModes(benchmark::State& state)
{
    RenderMovie(state, "acid_acid-blend.swf");
}
void BM_FlashManyEdges(benchmark::State& state)
{
    RenderMovie(state, "simple_shapes_heavy_tesselation.swf");
}
void BM_FlashShadows(benchmark::State& state)
{
    RenderMovie(state, "filters_drop_shadow_angles.swf");
}
BENCHMARK(BM_FlashBlendModes)->Arg(640)->Arg(1280)->Arg(2560)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FlashManyEdges)->Arg(640)->Arg(1280)->Arg(2560)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FlashShadows)->Arg(640)->Arg(1280)->Arg(2560)->UseRealTime()->Unit(benchmark::kMillisecond);
} // namespace
