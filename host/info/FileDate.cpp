#include "host/info/FileDate.h"

#include <chrono>
#include <cstdio>

namespace qmx::host
{
std::string DateText(std::uint64_t ticks)
{
    using namespace std::chrono;
    constexpr std::uint64_t kPerSecond = 10'000'000;
    constexpr std::uint64_t kPerDay = kPerSecond * 86'400;
    constexpr sys_days kFirstDay = year{1601} / January / 1;
    const year_month_day day = kFirstDay + days(ticks / kPerDay);
    const auto second = static_cast<unsigned>(ticks % kPerDay / kPerSecond);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02u:%02u:%02u", static_cast<int>(day.year()),
                  static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()), second / 3'600,
                  second / 60 % 60, second % 60);
    std::string result = text;
    if (const auto fraction = static_cast<unsigned>(ticks % kPerSecond); fraction != 0)
    {
        std::snprintf(text, sizeof text, ".%07u", fraction);
        result += text;
        result.erase(result.find_last_not_of('0') + 1);
    }
    return result;
}
} // namespace qmx::host
