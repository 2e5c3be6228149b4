/// @file PairedFigures.h
/// Figures of the engine beside the raw library loop that is their limit, taken in turn, so that they hold on a
/// machine whose speed drifts.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace qmx::bench
{
/// Path of a generated film: in QMX_MEDIA_DIR, else in build/media. Empty when it is not there.
std::string FindFilm(const std::string& name);

/// Does the same work by the engine and by the raw loop, in turn, and reports per unit of work:
/// engine_cpu_ms, raw_cpu_ms (medians, all threads), ratio (median of engine / raw) and engine_per_s (wall clock).
/// Both functions return the units (frames) that they have worked off; 0 is an error.
void RunPaired(benchmark::State& state, const std::function<int()>& engine, const std::function<int()>& raw);
} // namespace qmx::bench
