#include "host/project/Decimal.h"

#include <algorithm>
#include <charconv>
#include <numeric>

namespace qmx::host
{
namespace
{
constexpr std::uint64_t kDigitLimit = 10'000'000'000'000'000'000U; // 10^19, the largest power of ten in 64 bits
constexpr int kExponentLimit = 10'000;                             // far beyond anything that could matter

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// How many digits stand at the front of @p text.
std::size_t CountDigits(std::string_view text)
{
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsDigit) - text.begin());
}

/// Exponent after the letter e: the whole rest of the text. Too large ones are held at the limit.
std::optional<int> ParseExponent(std::string_view text)
{
    bool negative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-'))
    {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (text.empty() || CountDigits(text) != text.size())
        return std::nullopt;
    int value = 0;
    for (const char c : text)
        value = std::min(kExponentLimit, value * 10 + (c - '0'));
    return negative ? -value : value;
}
} // namespace

std::optional<Decimal> Decimal::Parse(std::string_view text)
{
    Decimal result;
    if (!text.empty() && text.front() == '-')
    {
        result.m_negative = true;
        text.remove_prefix(1);
    }
    const std::string_view whole = text.substr(0, CountDigits(text));
    text.remove_prefix(whole.size());
    std::string_view fraction;
    if (!text.empty() && text.front() == '.')
    {
        text.remove_prefix(1);
        fraction = text.substr(0, CountDigits(text));
        text.remove_prefix(fraction.size());
    }
    if (whole.empty() && fraction.empty())
        return std::nullopt;
    int exponent = 0;
    if (!text.empty())
    {
        if (text.front() != 'e' && text.front() != 'E')
            return std::nullopt;
        const std::optional<int> parsed = ParseExponent(text.substr(1));
        if (!parsed)
            return std::nullopt;
        exponent = *parsed;
    }
    // A digit that no longer fits still counts as a place when it stands before the point.
    const auto take = [&](std::string_view digits, bool afterPoint)
    {
        for (const char c : digits)
        {
            if (result.m_digits < kDigitLimit / 10)
            {
                result.m_digits = result.m_digits * 10 + static_cast<std::uint64_t>(c - '0');
                exponent -= afterPoint ? 1 : 0;
            }
            else if (!afterPoint)
                exponent = std::min(kExponentLimit, exponent + 1);
        }
    };
    take(whole, false);
    take(fraction, true);
    result.m_exponent = std::clamp(exponent, -kExponentLimit, kExponentLimit);
    return result;
}

std::optional<std::uint64_t> Decimal::Scaled(int decimals) const
{
    std::uint64_t value = m_digits;
    int shift = m_exponent + decimals;
    for (; shift > 0 && value != 0; --shift)
    {
        if (value >= kDigitLimit / 10)
            return std::nullopt;
        value *= 10;
    }
    if (shift >= 0)
        return value;
    if (shift < -19)
        return 0;
    std::uint64_t divisor = 1;
    for (; shift < 0; ++shift)
        divisor *= 10;
    const std::uint64_t rest = value % divisor;
    return value / divisor + (rest >= divisor - rest ? 1 : 0);
}

bool Decimal::ToFraction(std::uint64_t limit, std::uint64_t& numerator, std::uint64_t& denominator) const
{
    std::uint64_t top = m_digits;
    std::uint64_t bottom = 1;
    int exponent = m_exponent;
    for (; exponent < 0 && top != 0 && top % 10 == 0; ++exponent)
        top /= 10;
    for (; exponent > 0 && top != 0; --exponent)
    {
        if (top > limit)
            return false;
        top *= 10;
    }
    for (; exponent < 0 && top != 0; ++exponent)
    {
        if (bottom >= kDigitLimit / 10)
            return false;
        bottom *= 10;
    }
    const std::uint64_t divisor = std::gcd(top, bottom);
    numerator = top / divisor;
    denominator = bottom / divisor;
    return numerator <= limit && denominator <= limit;
}

std::string SecondsText(std::uint64_t time)
{
    std::string rest = std::to_string(time % kTimePerSecond);
    return std::to_string(time / kTimePerSecond) + '.' + std::string(7 - rest.size(), '0') + rest;
}

std::string NumberText(double value)
{
    char text[64];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, value);
    return std::string(text, end.ptr);
}
} // namespace qmx::host
