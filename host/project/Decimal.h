/// @file Decimal.h
/// Decimal numbers as they are written, without a detour through binary floating point and without the locale.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qmx::host
{
inline constexpr std::uint64_t kTimePerSecond = 10'000'000; ///< 100-ns units

/// A decimal number: sign * digits * 10^exponent. Digits beyond the nineteenth significant one are dropped.
class Decimal
{
public:
    /// Reads [-]digits[.digits][e[+|-]digits]; one of the two groups of digits may be missing.
    /// @return nothing when @p text is anything else (spaces, "nan", "inf", a comma, hexadecimal digits).
    static std::optional<Decimal> Parse(std::string_view text);

    bool IsNegative() const { return m_negative && m_digits != 0; }
    bool IsZero() const { return m_digits == 0; }

    /// |value| * 10^decimals as an integer, rounded to the nearest and halves up.
    /// @return nothing when that is 10^19 or more.
    std::optional<std::uint64_t> Scaled(int decimals) const;

    /// |value| as a fraction in lowest terms.
    /// @return false when numerator or denominator would pass @p limit
    bool ToFraction(std::uint64_t limit, std::uint64_t& numerator, std::uint64_t& denominator) const;

private:
    bool m_negative = false;
    std::uint64_t m_digits = 0; ///< below 10^19
    int m_exponent = 0;         ///< held within +-10,000
};

/// Seconds, with all seven decimals: 15,000,000 becomes "1.5000000".
std::string SecondsText(std::uint64_t time);

/// A floating-point number in the shortest text that reads back as the same number; never uses the locale.
std::string NumberText(double value);
} // namespace qmx::host
