/// @file SoundTime.h
/// The clock of the host's sound: 48 kHz, two channels.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qmx::host
{
inline constexpr std::uint32_t kSoundRate = 48'000;
inline constexpr std::size_t kSoundChannels = 2;

/// The sample that is nearest to @p time, 100 ns. @param time  below 10^14
constexpr std::uint64_t SampleAtTime(std::uint64_t time)
{
    return (time * (kSoundRate / 1'000) + 5'000) / 10'000;
}
/// Time of sample @p sample, rounded to 100 ns.
constexpr std::uint64_t TimeOfSample(std::uint64_t sample)
{
    return (sample * 10'000 + kSoundRate / 2'000) / (kSoundRate / 1'000);
}
static_assert(SampleAtTime(10'000'000) == kSoundRate && SampleAtTime(333'667) == 1'602);
static_assert(SampleAtTime(TimeOfSample(47'999)) == 47'999 && TimeOfSample(1) == 208);
} // namespace qmx::host
