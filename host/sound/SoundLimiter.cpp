#include "host/sound/SoundLimiter.h"

#include "host/sound/SoundTime.h"

#include <algorithm>
#include <cmath>

namespace qmx::host
{
namespace
{
constexpr double kReleaseRate = 1.0 / (0.1 * kSoundRate); // a tenth of a second
constexpr double kNearlyOne = 0.9999;
} // namespace

SoundLimiter::SoundLimiter()
{
    Reset();
}

void SoundLimiter::Reset()
{
    m_delay.assign(kWindow * kSoundChannels, 0);
    m_peaks.assign(kWindow, 1);
    m_gains.assign(kWindow, 1);
    m_at = 0;
    m_lowest = 1;
    m_released = 1;
    m_lowered = 0;
}

/// The lowest of the last kWindow peaks, @p gain being the newest.
float SoundLimiter::LowestAhead(float gain)
{
    const float leaving = m_peaks[m_at];
    m_peaks[m_at] = gain;
    if (gain <= m_lowest)
        m_lowest = gain;
    else if (leaving <= m_lowest && m_lowest < 1)
        m_lowest = *std::min_element(m_peaks.begin(), m_peaks.end());
    return m_lowest;
}

/// The mean of the last kWindow gains, @p gain being the newest.
float SoundLimiter::Smoothed(float gain)
{
    m_lowered += (gain < 1 ? 1U : 0U);
    m_lowered -= (m_gains[m_at] < 1 ? 1U : 0U);
    m_gains[m_at] = gain;
    if (m_lowered == 0)
        return 1;
    double sum = 0;
    for (const float value : m_gains)
        sum += value;
    return static_cast<float>(sum / kWindow);
}

void SoundLimiter::Process(float* pSamples, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
    {
        float* const pSample = pSamples + i * kSoundChannels;
        const float peak = std::max(std::abs(pSample[0]), std::abs(pSample[1]));
        const float ahead = LowestAhead(peak > 1 ? 1 / peak : 1);
        m_released += (1 - m_released) * kReleaseRate;
        if (m_released > kNearlyOne)
            m_released = 1;
        m_released = std::min<double>(ahead, m_released);
        const float gain = Smoothed(static_cast<float>(m_released));
        m_delay[m_at * 2] = pSample[0];
        m_delay[m_at * 2 + 1] = pSample[1];
        m_at = m_at + 1 == kWindow ? 0 : m_at + 1;
        // What now stands at the next place is the oldest sample.
        pSample[0] = m_delay[m_at * 2] * gain;
        pSample[1] = m_delay[m_at * 2 + 1] * gain;
    }
}
} // namespace qmx::host
