#include "pal/media/DateText.h"

namespace pal
{
namespace
{
constexpr std::int64_t kTicksPerSecond = 10'000'000;

/// Reads a text from left to right; after the first surprise everything is refused.
class Scanner
{
public:
    explicit Scanner(std::string_view text) : m_rest(text) {}

    /// A number of exactly @p count digits within a range.
    std::int64_t Number(int count, std::int64_t least, std::int64_t most)
    {
        std::int64_t value = 0;
        for (int i = 0; i < count; ++i)
            value = value * 10 + Digit();
        m_good = m_good && value >= least && value <= most;
        return value;
    }
    bool Accept(char c)
    {
        const bool there = !m_rest.empty() && m_rest.front() == c;
        if (there)
            m_rest.remove_prefix(1);
        return there;
    }
    void Expect(char c) { m_good = Accept(c) && m_good; }
    bool IsAtDigit() const { return !m_rest.empty() && m_rest.front() >= '0' && m_rest.front() <= '9'; }
    bool IsAtEnd() const { return m_rest.empty(); }
    bool IsGood() const { return m_good; }
    void Refuse() { m_good = false; }

private:
    std::int64_t Digit()
    {
        if (!IsAtDigit())
        {
            m_good = false;
            return 0;
        }
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        return c - '0';
    }

    std::string_view m_rest;
    bool m_good = true;
};

bool IsLeapYear(std::int64_t year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

std::int64_t DaysOfMonth(std::int64_t year, std::int64_t month)
{
    constexpr std::int64_t kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return kDays[month - 1] + (month == 2 && IsLeapYear(year) ? 1 : 0);
}

/// Days from 1 January 1601, the first year of a round of 400, to a day. @param year  1601 or later
std::int64_t DaysSince1601(std::int64_t year, std::int64_t month, std::int64_t day)
{
    const std::int64_t past = year - 1601;
    std::int64_t days = past * 365 + past / 4 - past / 100 + past / 400 + day - 1;
    for (std::int64_t m = 1; m < month; ++m)
        days += DaysOfMonth(year, m);
    return days;
}

/// Behind the decimal point: ticks of 100 ns.
std::int64_t Fraction(Scanner& scanner)
{
    std::int64_t ticks = 0;
    std::int64_t unit = kTicksPerSecond;
    if (!scanner.IsAtDigit())
        scanner.Refuse();
    while (scanner.IsAtDigit())
    {
        unit /= 10; // 0 behind the seventh digit
        ticks += scanner.Number(1, 0, 9) * unit;
    }
    return ticks;
}

/// Seconds that the zone is ahead of UTC.
std::int64_t Zone(Scanner& scanner)
{
    if (scanner.IsAtEnd() || scanner.Accept('Z'))
        return 0;
    const bool isBehind = scanner.Accept('-');
    if (!isBehind)
        scanner.Expect('+');
    const std::int64_t hours = scanner.Number(2, 0, 23);
    scanner.Accept(':');
    const std::int64_t seconds = hours * 3'600 + scanner.Number(2, 0, 59) * 60;
    return isBehind ? -seconds : seconds;
}
} // namespace

std::optional<std::uint64_t> ParseDate(std::string_view text)
{
    Scanner scanner(text);
    const std::int64_t year = scanner.Number(4, 1601, 9999);
    scanner.Expect('-');
    const std::int64_t month = scanner.Number(2, 1, 12);
    if (!scanner.IsGood())
        return std::nullopt;
    scanner.Expect('-');
    const std::int64_t day = scanner.Number(2, 1, DaysOfMonth(year, month));
    if (!scanner.Accept(' '))
        scanner.Expect('T');
    std::int64_t seconds = DaysSince1601(year, month, day) * 86'400 + scanner.Number(2, 0, 23) * 3'600;
    scanner.Expect(':');
    seconds += scanner.Number(2, 0, 59) * 60;
    scanner.Expect(':');
    seconds += scanner.Number(2, 0, 60); // 60: a leap second, which file times do not know
    const std::int64_t fraction = scanner.Accept('.') ? Fraction(scanner) : 0;
    seconds -= Zone(scanner);
    const std::int64_t ticks = seconds * kTicksPerSecond + fraction;
    if (!scanner.IsGood() || !scanner.IsAtEnd() || ticks <= 0)
        return std::nullopt;
    return static_cast<std::uint64_t>(ticks);
}
} // namespace pal
