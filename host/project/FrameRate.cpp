#include "host/project/FrameRate.h"

#include "host/project/Decimal.h"

#include <charconv>
#include <numeric>

namespace qmx::host
{
namespace
{
std::optional<std::uint64_t> ParseWhole(std::string_view text)
{
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}
} // namespace

std::optional<FrameRate> FrameRate::FromFraction(std::uint64_t numerator, std::uint64_t denominator)
{
    if (numerator == 0 || denominator == 0)
        return std::nullopt;
    const std::uint64_t divisor = std::gcd(numerator, denominator);
    numerator /= divisor;
    denominator /= divisor;
    if (numerator > kMaxTerm || denominator > kMaxTerm || numerator > kMaxPerSecond * denominator ||
        numerator * kMaxPerSecond < denominator)
        return std::nullopt;
    return FrameRate(static_cast<std::uint32_t>(numerator), static_cast<std::uint32_t>(denominator));
}

std::optional<FrameRate> FrameRate::Parse(std::string_view text)
{
    if (const std::size_t slash = text.find('/'); slash != std::string_view::npos)
    {
        const std::optional<std::uint64_t> numerator = ParseWhole(text.substr(0, slash));
        const std::optional<std::uint64_t> denominator = ParseWhole(text.substr(slash + 1));
        if (!numerator || !denominator)
            return std::nullopt;
        return FromFraction(*numerator, *denominator);
    }
    const std::optional<Decimal> decimal = Decimal::Parse(text);
    std::uint64_t numerator = 0;
    std::uint64_t denominator = 1;
    if (!decimal || decimal->IsNegative() || !decimal->ToFraction(kMaxTerm, numerator, denominator))
        return std::nullopt;
    return FromFraction(numerator, denominator);
}
} // namespace qmx::host
