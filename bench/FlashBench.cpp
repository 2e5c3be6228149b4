/// Frames of Flash movies at growing sizes: three rich ones of the collection, and one that a generator makes of all
/// features of the format. The movie plays on; unpacking happens before.
#include "engine/platform/RefPtr.h"
#include "engine/platform/SwfRenderer.h"
#include "tests/companions/swfrenderer/GeneratedMovie.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace
{
std::filesystem::path CorpusFolder()
{
    const char* const value = std::getenv("QMX_CORPUS_DIR");
    return value && *value ? value : QMX_CORPUS_DIR;
}

void PlayMovie(benchmark::State& state, ISWFRenderObj* pMovie)
{
    tagSWFMovieInfo info;
    if (FAILED(pMovie->GetMovieInfo(&info)))
        return state.SkipWithError("the movie is not there: set QMX_CORPUS_DIR");
    const auto width = static_cast<std::uint32_t>(state.range(0));
    pMovie->SetRenderSize(width, static_cast<std::uint32_t>(width * info.dHeight / info.dWidth));
    const tagSWFFrameInfo* pInfo = nullptr;
    const std::uint8_t* pPixels = nullptr;
    std::uint32_t index = 0;
    pMovie->RenderFrame(index, &pInfo, &pPixels);
    for (auto _ : state)
    {
        pMovie->SetRenderFlag(index & 1); // a picture that stands still is not drawn twice but when it is turned
        if (FAILED(pMovie->RenderFrame(++index % 256, &pInfo, &pPixels)))
            return state.SkipWithError("no frame");
        benchmark::DoNotOptimize(pPixels);
    }
    state.counters["frames/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void RenderFile(benchmark::State& state, const std::filesystem::path& path)
{
    const auto pMovie = RefPtr<ISWFRenderObj>::Adopt(CreateSWFRenderObj());
    (void)pMovie->OpenMovie(path.wstring().c_str());
    PlayMovie(state, pMovie.Get());
}
void RenderMovie(benchmark::State& state, const char* name)
{
    RenderFile(state, CorpusFolder() / "swf" / name);
}

void BM_FlashEverything(benchmark::State& state)
{
    const std::filesystem::path path = std::filesystem::temp_directory_path() / "qmx-bench-everything.swf";
    const Bytes movie = GeneratedMovie(9, 40);
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(movie.data()), static_cast<std::streamsize>(movie.size()));
    RenderFile(state, path);
    std::filesystem::remove(path);
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
void AtThreeSizes(benchmark::internal::Benchmark* pBenchmark)
{
    pBenchmark->Arg(640)->Arg(1280)->Arg(2560)->UseRealTime()->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
}
BENCHMARK(BM_FlashEverything)->Apply(AtThreeSizes);
BENCHMARK(BM_FlashBlendModes)->Apply(AtThreeSizes);
BENCHMARK(BM_FlashManyEdges)->Apply(AtThreeSizes);
BENCHMARK(BM_FlashShadows)->Apply(AtThreeSizes);
} // namespace
