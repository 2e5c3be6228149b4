#include "host/interchange/TimelineTime.h"

#include "host/project/Decimal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <numeric>

namespace qmx::host
{
namespace
{
constexpr std::int64_t kMaxDenominator = 9'000'000'000'000; // times kMaxSeconds it stays below 2^63
constexpr std::int64_t kUnits = 10'000'000;                 // 100 ns in a second
constexpr double kSlow = 1000.0 / 1001.0;

/// Rates of films and television that also run slowed down. Their decimals are cut short in many ways, so everything
/// within two parts in ten thousand counts: 23.98 does, and no whole rate or 24 itself comes near.
constexpr std::array<std::uint64_t, 9> kSlowedRates{24, 30, 48, 60, 72, 90, 96, 120, 240};
constexpr double kShortDecimal = 2e-4;
constexpr double kLongDecimal = 1e-9; // of a rate that is none of these, 47952.047952047955

bool IsNear(double value, double wanted, double share)
{
    return std::abs(value - wanted) <= wanted * share;
}

std::optional<TimelineRate> SlowedRate(double rate)
{
    for (const std::uint64_t whole : kSlowedRates)
    {
        if (IsNear(rate, static_cast<double>(whole) * kSlow, kShortDecimal))
            return TimelineRate{whole * 1000, 1001};
    }
    const double whole = std::round(rate / kSlow);
    if (rate == std::round(rate) || whole > 1e9 || !IsNear(rate, whole * kSlow, kLongDecimal))
        return std::nullopt;
    const std::uint64_t top = static_cast<std::uint64_t>(whole) * 1000;
    const std::uint64_t divisor = std::gcd(top, std::uint64_t{1001});
    return TimelineRate{top / divisor, 1001 / divisor};
}

/// a / b rounded down, b greater than 0.
std::int64_t FloorDivide(std::int64_t a, std::int64_t b)
{
    return a / b - (a % b < 0 ? 1 : 0);
}
} // namespace

std::optional<TimelineRate> TimelineRate::Parse(std::string_view text)
{
    const std::optional<Decimal> decimal = Decimal::Parse(text);
    if (!decimal || decimal->IsNegative() || decimal->IsZero())
        return std::nullopt;
    TimelineRate rate;
    const std::optional<std::uint64_t> millionths = decimal->Scaled(6);
    if (!millionths || *millionths < 1000 || *millionths / 1'000'000 > kMaxTerm)
        return std::nullopt;
    const std::optional<std::uint64_t> precise = decimal->Scaled(12); // below 10^7, where all slowed-down rates lie
    if (const std::optional<TimelineRate> slowed =
            precise ? SlowedRate(static_cast<double>(*precise) / 1e12) : std::nullopt)
        return slowed;
    if (decimal->ToFraction(kMaxTerm, rate.numerator, rate.denominator))
        return rate;
    const std::uint64_t divisor = std::gcd(*millionths, std::uint64_t{1'000'000});
    rate = {*millionths / divisor, 1'000'000 / divisor};
    if (rate.numerator > kMaxTerm) // a fraction of a unit matters little to so many
        rate = {*millionths / 1'000'000, 1};
    return rate;
}

std::string TimelineRate::Text() const
{
    char text[64];
    const double rate = static_cast<double>(numerator) / static_cast<double>(denominator);
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, rate, std::chars_format::fixed);
    const std::string digits(text, end.ptr);
    return digits.find('.') == std::string::npos ? digits + ".0" : digits;
}

TimelineTime TimelineTime::Rounded(double seconds)
{
    constexpr std::int64_t kSteps = 10'000'000'000; // 0.1 ns
    TimelineTime time;
    time.m_numerator = std::llround(std::min(std::max(seconds, -9e8), 9e8) * static_cast<double>(kSteps));
    const std::int64_t divisor = std::gcd(time.m_numerator, kSteps);
    time.m_numerator /= divisor;
    time.m_denominator = kSteps / divisor;
    return time;
}

std::optional<TimelineTime> TimelineTime::Exact(bool negative, std::uint64_t top, std::uint64_t bottom,
                                                const TimelineRate& rate)
{
    // top / bottom * rate.denominator / rate.numerator, shortened crosswise so that no product is larger than needed.
    const std::uint64_t first = std::gcd(top, rate.numerator);
    const std::uint64_t second = std::gcd(rate.denominator, bottom);
    const std::uint64_t a = top / first;
    const std::uint64_t b = rate.denominator / second;
    const std::uint64_t c = bottom / second;
    const std::uint64_t d = rate.numerator / first;
    constexpr std::uint64_t kLargest = std::uint64_t{kMaxDenominator} * kMaxSeconds;
    if (a > kLargest / b || c > std::uint64_t{kMaxDenominator} / d)
        return std::nullopt;
    TimelineTime time;
    time.m_numerator = static_cast<std::int64_t>(a * b) * (negative ? -1 : 1);
    time.m_denominator = static_cast<std::int64_t>(c * d);
    return time;
}

std::optional<TimelineTime> TimelineTime::Parse(std::string_view value, const TimelineRate& rate)
{
    const std::optional<Decimal> decimal = Decimal::Parse(value);
    if (!decimal)
        return std::nullopt;
    // Nine decimals, or as many as fit: what is beyond comes from arithmetic with doubles.
    std::uint64_t top = 0;
    std::uint64_t bottom = 0;
    for (const auto& [decimals, scale] : {std::pair{9, 1'000'000'000}, {6, 1'000'000}, {3, 1000}, {0, 1}})
    {
        const std::optional<std::uint64_t> scaled = decimal->Scaled(decimals);
        if (scaled && *scaled < 1'000'000'000'000'000'000)
        {
            const std::uint64_t divisor = std::gcd(*scaled, static_cast<std::uint64_t>(scale));
            top = *scaled / divisor;
            bottom = static_cast<std::uint64_t>(scale) / divisor;
            break;
        }
    }
    if (bottom == 0)
        return std::nullopt;
    const double seconds = static_cast<double>(top) / static_cast<double>(bottom) *
                           static_cast<double>(rate.denominator) / static_cast<double>(rate.numerator);
    if (!(seconds <= static_cast<double>(kMaxSeconds)))
        return std::nullopt;
    if (const std::optional<TimelineTime> exact = Exact(decimal->IsNegative(), top, bottom, rate))
        return exact;
    return Rounded(decimal->IsNegative() ? -seconds : seconds);
}

TimelineTime TimelineTime::FromUnits(std::uint64_t time)
{
    return FromCount(static_cast<std::int64_t>(time), {kUnits, 1});
}

TimelineTime TimelineTime::FromCount(std::int64_t count, const TimelineRate& rate)
{
    const std::uint64_t size = static_cast<std::uint64_t>(std::abs(count));
    if (const std::optional<TimelineTime> exact = Exact(count < 0, size, 1, rate))
        return *exact;
    return Rounded(static_cast<double>(count) * static_cast<double>(rate.denominator) /
                   static_cast<double>(rate.numerator));
}

bool TimelineTime::IsTooLong() const
{
    return std::abs(m_numerator) / m_denominator >= kMaxSeconds && std::abs(m_numerator) != kMaxSeconds * m_denominator;
}

std::int64_t TimelineTime::FloorUnits() const
{
    // Whole seconds apart, so that the product stays below 9 * 10^19 / 10: the rest is less than the denominator.
    const std::int64_t seconds = FloorDivide(m_numerator, m_denominator);
    const auto rest = static_cast<std::uint64_t>(m_numerator - seconds * m_denominator);
    const auto bottom = static_cast<std::uint64_t>(m_denominator);
    // rest * 10^7 may pass 2^64: a thousand first, then ten thousand.
    const std::uint64_t thousands = rest * 1000 / bottom;
    const std::uint64_t left = rest * 1000 % bottom;
    return seconds * kUnits + static_cast<std::int64_t>(thousands * 10'000 + left * 10'000 / bottom);
}

std::int64_t TimelineTime::NearestUnits() const
{
    return (*this + FromCount(1, {2 * std::uint64_t{kUnits}, 1})).FloorUnits();
}

std::int64_t TimelineTime::NearestCount(const TimelineRate& rate) const
{
    return std::llround(static_cast<double>(m_numerator) / static_cast<double>(m_denominator) *
                        static_cast<double>(rate.numerator) / static_cast<double>(rate.denominator));
}

TimelineTime operator+(const TimelineTime& a, const TimelineTime& b)
{
    const std::int64_t divisor = std::gcd(a.m_denominator, b.m_denominator);
    const std::int64_t left = b.m_denominator / divisor;  // what a is widened by
    const std::int64_t right = a.m_denominator / divisor; // what b is widened by
    constexpr std::int64_t kHalf = kMaxDenominator / 2 * TimelineTime::kMaxSeconds;
    const bool fits = a.m_denominator <= kMaxDenominator / left && std::abs(a.m_numerator) <= kHalf / left &&
                      std::abs(b.m_numerator) <= kHalf / right;
    if (!fits)
        return TimelineTime::Rounded(static_cast<double>(a.m_numerator) / static_cast<double>(a.m_denominator) +
                                     static_cast<double>(b.m_numerator) / static_cast<double>(b.m_denominator));
    TimelineTime sum;
    sum.m_numerator = a.m_numerator * left + b.m_numerator * right;
    sum.m_denominator = a.m_denominator * left;
    const std::int64_t shorter = std::gcd(sum.m_numerator, sum.m_denominator);
    sum.m_numerator /= shorter;
    sum.m_denominator /= shorter;
    return sum;
}

TimelineTime operator-(const TimelineTime& a, const TimelineTime& b)
{
    TimelineTime negative = b;
    negative.m_numerator = -negative.m_numerator;
    return a + negative;
}
} // namespace qmx::host
