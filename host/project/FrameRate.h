/// @file FrameRate.h
/// Frames per second as an exact fraction, and the grid of frame times that it makes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qmx::host
{
/// Longest project and latest time in one, in 100-ns units: a million seconds. Keeps the arithmetic below in 64 bits.
inline constexpr std::uint64_t kMaxTime = 10'000'000'000'000;

/// Frames per second. Frame n is shown from TimeOfFrame(n) up to, but not including, TimeOfFrame(n + 1).
class FrameRate
{
public:
    static constexpr std::uint32_t kMaxTerm = 1'000'000; ///< largest numerator and denominator in lowest terms
    static constexpr std::uint32_t kMaxPerSecond = 1000; ///< highest rate; the lowest is one frame in 1000 s

    constexpr FrameRate() = default;

    /// @return nothing when the rate or one of its terms is out of range
    static std::optional<FrameRate> FromFraction(std::uint64_t numerator, std::uint64_t denominator);
    /// Reads "30", "29.97" or "30000/1001".
    static std::optional<FrameRate> Parse(std::string_view text);

    constexpr std::uint32_t Numerator() const { return m_numerator; }
    constexpr std::uint32_t Denominator() const { return m_denominator; }
    double PerSecond() const { return static_cast<double>(m_numerator) / m_denominator; }

    /// Start of frame @p frame in 100-ns units: floor(frame * 10^7 * den / num), exact however far it lies.
    constexpr std::uint64_t TimeOfFrame(std::uint64_t frame) const
    {
        // Whole multiples of num take no rounding; what is left stays below 10^6 * 10^7 * 10^6 < 2^64.
        const std::uint64_t unit = std::uint64_t{10'000'000} * m_denominator;
        return frame / m_numerator * unit + frame % m_numerator * unit / m_numerator;
    }
    /// How many frames start before @p time; also the index of the first frame at or after it.
    /// @param time  at most kMaxTime
    constexpr std::uint64_t FramesBefore(std::uint64_t time) const
    {
        const std::uint64_t unit = std::uint64_t{10'000'000} * m_denominator;
        return (time * m_numerator + unit - 1) / unit;
    }
    /// @p time, or the frame time beside it when that is no more than 2 units (200 ns) away. Frame times of most
    /// rates are no round decimals: 100 frames at 30000/1001 end at 3.33666666…, which a project writes as 3.3366667.
    constexpr std::uint64_t Snapped(std::uint64_t time) const
    {
        const std::uint64_t next = FramesBefore(time);
        if (TimeOfFrame(next) - time <= kSnapDistance)
            return TimeOfFrame(next);
        if (next > 0 && time - TimeOfFrame(next - 1) <= kSnapDistance)
            return TimeOfFrame(next - 1);
        return time;
    }

    friend constexpr bool operator==(const FrameRate&, const FrameRate&) = default;

private:
    static constexpr std::uint64_t kSnapDistance = 2;

    constexpr FrameRate(std::uint32_t numerator, std::uint32_t denominator)
        : m_numerator(numerator), m_denominator(denominator)
    {
    }

    std::uint32_t m_numerator = 30;
    std::uint32_t m_denominator = 1;
};
} // namespace qmx::host
