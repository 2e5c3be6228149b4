#include "pal/media/FrameGrid.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace pal
{
namespace
{
using Wide = __int128;

constexpr std::int64_t kTimePerSecond = 10'000'000;
constexpr double kFastest = 240.0;
constexpr double kSlowest = 0.01;

Wide FloorDivide(Wide a, Wide b) // b > 0
{
    const Wide quotient = a / b;
    return quotient * b > a ? quotient - 1 : quotient;
}
Wide CeilDivide(Wide a, Wide b)
{
    return -FloorDivide(-a, b);
}
std::int64_t Narrow(Wide value)
{
    return static_cast<std::int64_t>(std::clamp<Wide>(value, INT64_MIN / 2, INT64_MAX / 2));
}

/// Rates in common use, slowest first.
constexpr Rate kCommonRates[] = {
    {1, 1},  {2, 1},        {3, 1},        {4, 1},         {5, 1},   {6, 1},   {15, 2},       {8, 1},        {10, 1},
    {12, 1}, {25, 2},       {15000, 1001}, {15, 1},        {16, 1},  {18, 1},  {20, 1},       {24000, 1001}, {24, 1},
    {25, 1}, {30000, 1001}, {30, 1},       {48000, 1001},  {48, 1},  {50, 1},  {60000, 1001}, {60, 1},       {72, 1},
    {75, 1}, {90, 1},       {100, 1},      {120000, 1001}, {120, 1}, {144, 1}, {200, 1},      {240, 1}};

/// True when all pictures stand on the grid of @p rate that goes through the first, no two on one point.
bool Fits(std::span<const std::int64_t> pts, double secondsPerTick, const Rate& rate)
{
    if (!rate.IsValid() || rate.Value() > kFastest || rate.Value() < kSlowest)
        return false;
    const double frame = 1.0 / rate.Value();
    // Stamps are rounded to ticks; coarse ticks (a whole frame in AVI) must not make anything fit.
    const double tolerance = std::min(std::max(1.01 * secondsPerTick, 0.02 * frame), 0.25 * frame);
    double last = -1.0;
    for (const std::int64_t tick : pts)
    {
        const double seconds = static_cast<double>(tick - pts.front()) * secondsPerTick;
        const double index = std::round(seconds * rate.Value());
        if (std::abs(seconds - index * frame) > tolerance || index <= last)
            return false;
        last = index;
    }
    return true;
}

/// The common rate that is the same as @p rate but for rounding, else @p rate itself.
Rate Polish(const Rate& rate)
{
    const auto same = [&](const Rate& common) { return std::abs(common.Value() / rate.Value() - 1.0) < 2e-5; };
    const auto* const pCommon = std::find_if(std::begin(kCommonRates), std::end(kCommonRates), same);
    return pCommon != std::end(kCommonRates) ? *pCommon : rate;
}
} // namespace

std::int64_t FrameGrid::IndexOf(std::int64_t pts) const
{
    const Wide num = static_cast<Wide>(tickNum) * rate.num;
    const Wide den = static_cast<Wide>(tickDen) * rate.den;
    if (!aligned)
        return std::max<std::int64_t>(0, Narrow(CeilDivide((static_cast<Wide>(pts) - origin) * num, den)));
    // The first picture shows from the first sample at or after it; a tick of rounding does not count as later.
    const Wide start = static_cast<Wide>(firstPts) - origin;
    const Wide slack = std::max<Wide>(num, den / 50);
    const Wide first = std::min(CeilDivide(start * num - std::min(slack, den / 4), den), CeilDivide(start * num, den));
    const Wide step = FloorDivide(2 * (static_cast<Wide>(pts) - firstPts) * num + den, 2 * den);
    return std::max<std::int64_t>(0, Narrow(first + step));
}

std::int64_t FrameGrid::PtsOf(std::int64_t index) const
{
    const Wide num = static_cast<Wide>(tickDen) * rate.den;
    const Wide den = static_cast<Wide>(tickNum) * rate.num;
    return Narrow(origin + FloorDivide(index * num, den));
}

std::int64_t FrameGrid::TimeOf(std::int64_t index) const
{
    return Narrow(FloorDivide(static_cast<Wide>(index) * kTimePerSecond * rate.den, rate.num));
}

std::int64_t FrameGrid::IndexAtOrAfter(std::int64_t time) const
{
    return Narrow(CeilDivide(static_cast<Wide>(time) * rate.num, static_cast<Wide>(kTimePerSecond) * rate.den));
}

NominalRate ChooseRate(std::span<const std::int64_t> pts, std::int64_t tickNum, std::int64_t tickDen,
                       const TimingHints& hints)
{
    const double secondsPerTick = static_cast<double>(tickNum) / static_cast<double>(tickDen);
    const auto usable = [](const Rate& rate)
    { return rate.IsValid() && rate.Value() <= kFastest && rate.Value() >= kSlowest; };
    if (pts.size() < 2)
    {
        const Rate stated = usable(hints.lowest) ? hints.lowest : usable(hints.average) ? hints.average : Rate{30, 1};
        return {Polish(stated), true};
    }

    // A stream without holes: the demuxer's own figures agree with each other and with the pictures.
    const bool agree = usable(hints.lowest) && usable(hints.average) &&
                       std::abs(hints.lowest.Value() / hints.average.Value() - 1.0) < 0.005;
    if (agree && Fits(pts, secondsPerTick, hints.lowest))
        return {Polish(hints.lowest), true};
    if (usable(hints.average) && Fits(pts, secondsPerTick, Polish(hints.average)))
        return {Polish(hints.average), true};
    if (Fits(pts, secondsPerTick, hints.average))
        return {hints.average, true};
    // A stream with holes (dropped or unchanged pictures left out) still stands on a grid.
    if (Fits(pts, secondsPerTick, hints.lowest))
        return {Polish(hints.lowest), true};
    for (const Rate& common : kCommonRates)
        if (Fits(pts, secondsPerTick, common))
            return {common, true};

    double shortest = 1.0;
    for (std::size_t i = 1; i < pts.size(); ++i)
        if (pts[i] > pts[i - 1])
            shortest = std::min(shortest, static_cast<double>(pts[i] - pts[i - 1]) * secondsPerTick);
    for (const std::int64_t perSecond : {60, 120})
        if (shortest * static_cast<double>(perSecond) > 0.95)
            return {{perSecond, 1}, false};
    return {{240, 1}, false};
}
} // namespace pal
