/// @file FrameGrid.h
/// The grid of sample times on which a reader delivers pictures, and how it is chosen.
#pragma once

#include <cstdint>
#include <span>

namespace pal
{
struct Rate
{
    std::int64_t num = 0; ///< frames
    std::int64_t den = 1; ///< seconds
    bool IsValid() const { return num > 0 && den > 0; }
    double Value() const { return static_cast<double>(num) / static_cast<double>(den); }
};

/// Maps presentation times (ticks of the stream's time base) to sample numbers, and these to 100 ns.
/// Sample n stands at n / rate seconds from the start of the file and shows one picture.
struct FrameGrid
{
    Rate rate;                ///< samples per second
    std::int64_t tickNum = 1; ///< time base: one tick is tickNum / tickDen seconds
    std::int64_t tickDen = 1;
    std::int64_t origin = 0;   ///< tick that is time 0
    std::int64_t firstPts = 0; ///< tick of the stream's first picture
    bool aligned = true;       ///< every picture stands on the grid (within rounding), one picture a sample at most

    /// First sample that shows the picture of time @p pts, at least 0.
    /// Aligned: the nearest sample, counted from the first picture, so that rounded time stamps (milliseconds)
    /// do not move pictures; the first picture itself, and otherwise every picture: the first sample at or after
    /// @p pts.
    std::int64_t IndexOf(std::int64_t pts) const;
    /// Tick of sample @p index, rounded down.
    std::int64_t PtsOf(std::int64_t index) const;
    /// 100 ns, rounded down: n * floor(10^7 / rate) never passes the time of sample n.
    std::int64_t TimeOf(std::int64_t index) const;
    /// First sample whose TimeOf() is @p time or later.
    std::int64_t IndexAtOrAfter(std::int64_t time) const;
};

/// What a container says about a stream's timing.
struct TimingHints
{
    Rate lowest;  ///< rate that represents all time stamps, as guessed by the demuxer
    Rate average; ///< pictures per second over the stream
};

struct NominalRate
{
    Rate rate;
    bool aligned = true; ///< see FrameGrid::aligned
};

/// Chooses the grid for a stream.
/// @param pts  presentation times in ascending order, in ticks of tickNum / tickDen seconds
/// The slowest rate on whose grid all pictures stand (within one tick or 2 % of a frame); if there is none up to
/// 240 per second, 60, or 120 or 240 when pictures follow each other faster: none that shows for 1/60 s is lost.
NominalRate ChooseRate(std::span<const std::int64_t> pts, std::int64_t tickNum, std::int64_t tickDen,
                       const TimingHints& hints);
} // namespace pal
