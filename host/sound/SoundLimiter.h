/// @file SoundLimiter.h
/// Keeps a mix within full scale.
#pragma once

#include <cstddef>
#include <vector>

namespace qmx::host
{
/// Turns the volume down before a peak that would pass full scale and slowly up again after it. What stays within full
/// scale, and is not near a peak that does not, comes out bit by bit as it went in.
///
///     peak        r[n] = min(1, 1 / |x[n]|)
///     look ahead  h[n] = min(r[n] … r[n + kAhead])
///     release     e[n] = min(h[n], e[n-1] + (1 - e[n-1]) * rate)
///     smooth      g[n] = mean(e[n - kAhead] … e[n])
///
/// Every e of the mean saw the peak of sample n coming, so g[n] <= r[n] and the peak comes out at full scale at most.
class SoundLimiter
{
public:
    static constexpr std::size_t kAhead = 239; ///< samples (5 ms) by which the output lags behind the input

    SoundLimiter();
    /// Forgets everything: the next kAhead samples that come out are silence.
    void Reset();
    /// Replaces @p count samples of two channels by those of kAhead samples before.
    void Process(float* pSamples, std::size_t count);

private:
    static constexpr std::size_t kWindow = kAhead + 1;

    float LowestAhead(float gain);
    float Smoothed(float gain);

    std::vector<float> m_delay; ///< the last kWindow samples, a ring
    std::vector<float> m_peaks; ///< r of the same
    std::vector<float> m_gains; ///< the last kWindow values of e
    std::size_t m_at = 0;       ///< place of the next sample in the rings
    float m_lowest = 1;         ///< the lowest of m_peaks
    double m_released = 1;      ///< the last e; its steps near 1 are too small for a float
    std::size_t m_lowered = 0;  ///< values of e in the ring that are below 1
};
} // namespace qmx::host
