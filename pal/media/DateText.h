/// @file DateText.h
/// Dates as the demuxing library tells them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace pal
{
/// The moment that @p text names, 100 ns since 1 January 1601 UTC. It is a date and a time of ISO 8601,
/// "2012-03-04T05:06:07.89Z", with "T" or one space between the two; digits beyond 100 ns are dropped; the zone is "Z",
/// "+hh:mm", "+hhmm", or left out for UTC.
/// @return nothing for any other text, and for moments that are not after the start of 1601 or whose year is above 9999
std::optional<std::uint64_t> ParseDate(std::string_view text);
} // namespace pal
