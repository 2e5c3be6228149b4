#include "engine/decoders/DecoderProp.h"

#include <cmath>

std::uint64_t FrameDurationFromRate(double frameRate)
{
    constexpr double kTwoTo63 = 9'223'372'036'854'775'808.0;
    const double duration = std::trunc(static_cast<double>(kTimePerSecond) / frameRate);
    if (!(duration > -kTwoTo63 && duration < 2 * kTwoTo63)) // also what is not a number
        return kTimeUnlimited;
    if (duration < 0)
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(duration));
    return static_cast<std::uint64_t>(duration);
}
