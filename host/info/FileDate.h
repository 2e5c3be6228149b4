/// @file FileDate.h
/// Dates of files as text.
#pragma once

#include <cstdint>
#include <string>

namespace qmx::host
{
/// The end of the year 9999, 100 ns since 1601. Later dates are mistakes.
inline constexpr std::uint64_t kLastDate = 2'650'467'743'999'999'999;

/// Date and time of day of @p ticks, 100 ns since 1601 and at most kLastDate, with as many decimals of the second as it
/// takes: "2012-03-04T05:06:07.89". Whether it is UTC or local time, the caller knows.
std::string DateText(std::uint64_t ticks);
} // namespace qmx::host
