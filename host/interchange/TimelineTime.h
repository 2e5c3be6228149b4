/// @file TimelineTime.h
/// Times of timelines: exact fractions of a second, and the rates that files write them with.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qmx::host
{
/// Units per second, as an exact fraction in lowest terms: 24, 30000/1001, 48000.
struct TimelineRate
{
    std::uint64_t numerator = 1;
    std::uint64_t denominator = 1;

    static constexpr std::uint64_t kMaxTerm = 1'000'000'000'000;

    /// Reads a decimal. Those that stand for a whole rate slowed down by 1000/1001 are taken for it: 29.97,
    /// 29.97002997002997, 23.976, 23.98, 59.94. Decimals beyond the sixth count only where terms stay below kMaxTerm.
    /// @return nothing when the rate is below 0.001 or above kMaxTerm
    static std::optional<TimelineRate> Parse(std::string_view text);
    /// The shortest decimal for the rate as a double, which is how timelines store rates; "24.0".
    std::string Text() const;

    friend bool operator==(const TimelineRate&, const TimelineRate&) = default;
};

/// A time or a span in seconds, of either sign. Sums and differences are exact as long as the common denominator stays
/// below 9 * 10^12, which holds for any mixture of the usual rates of pictures and sound; beyond it they are rounded to
/// 0.1 ns. Larger than kMaxSeconds is nothing.
class TimelineTime
{
public:
    static constexpr std::int64_t kMaxSeconds = 1'000'000;

    constexpr TimelineTime() = default;
    /// @param value  a decimal, of either sign; counts units of @p rate
    /// @return nothing when @p value is no decimal or the time lies beyond kMaxSeconds
    static std::optional<TimelineTime> Parse(std::string_view value, const TimelineRate& rate);
    /// @param time  100 ns, at most kMaxSeconds
    static TimelineTime FromUnits(std::uint64_t time);
    /// @param count  |count| / rate at most kMaxSeconds
    static TimelineTime FromCount(std::int64_t count, const TimelineRate& rate);

    bool IsNegative() const { return m_numerator < 0; }
    bool IsZero() const { return m_numerator == 0; }
    bool IsTooLong() const;

    /// As a count of 100 ns, rounded down. This is how frames of a project start.
    std::int64_t FloorUnits() const;
    /// As a count of 100 ns, rounded to the nearest and halves up. This is how decimals are written.
    std::int64_t NearestUnits() const;
    /// As a whole count at @p rate, the nearest.
    std::int64_t NearestCount(const TimelineRate& rate) const;

    friend TimelineTime operator+(const TimelineTime& a, const TimelineTime& b);
    friend TimelineTime operator-(const TimelineTime& a, const TimelineTime& b);
    friend bool operator==(const TimelineTime&, const TimelineTime&) = default;
    friend bool operator<(const TimelineTime& a, const TimelineTime& b) { return (a - b).IsNegative(); }

private:
    static TimelineTime Rounded(double seconds);
    static std::optional<TimelineTime> Exact(bool negative, std::uint64_t top, std::uint64_t bottom,
                                             const TimelineRate& rate);

    std::int64_t m_numerator = 0;   ///< lowest terms
    std::int64_t m_denominator = 1; ///< greater than 0
};
} // namespace qmx::host
