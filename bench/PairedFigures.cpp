#include "bench/PairedFigures.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <vector>

namespace qmx::bench
{
namespace
{
double CpuSeconds()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

struct Measure
{
    double cpu = 0;  // seconds a unit
    double wall = 0; // seconds a unit
};

bool Take(const std::function<int()>& work, Measure& measure)
{
    const double cpu = CpuSeconds();
    const auto wall = std::chrono::steady_clock::now();
    const int units = work();
    if (units <= 0)
        return false;
    measure.cpu = (CpuSeconds() - cpu) / units;
    measure.wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - wall).count() / units;
    return true;
}

double Median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}
} // namespace

std::string FindFilm(const std::string& name)
{
    const char* const pFolder = std::getenv("QMX_MEDIA_DIR");
    const std::string path = std::string(pFolder != nullptr ? pFolder : QMX_BENCH_MEDIA_DIR) + "/" + name;
    return std::filesystem::exists(path) ? path : std::string();
}

void RunPaired(benchmark::State& state, const std::function<int()>& engine, const std::function<int()>& raw)
{
    std::vector<double> engineCpu;
    std::vector<double> engineWall;
    std::vector<double> rawCpu;
    std::vector<double> ratios;
    bool engineFirst = true;
    for (auto _ : state)
    {
        Measure ours;
        Measure limit;
        const bool done = engineFirst ? Take(engine, ours) && Take(raw, limit) : Take(raw, limit) && Take(engine, ours);
        engineFirst = !engineFirst;
        if (!done)
        {
            state.SkipWithError("no frames");
            return;
        }
        engineCpu.push_back(ours.cpu);
        engineWall.push_back(ours.wall);
        rawCpu.push_back(limit.cpu);
        ratios.push_back(ours.cpu / limit.cpu);
        state.SetIterationTime(ours.wall);
    }
    state.counters["engine_cpu_ms"] = 1e3 * Median(engineCpu);
    state.counters["raw_cpu_ms"] = 1e3 * Median(rawCpu);
    state.counters["ratio"] = Median(ratios);
    state.counters["engine_per_s"] = 1.0 / Median(engineWall);
}
} // namespace qmx::bench
