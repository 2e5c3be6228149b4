/// @file HashCommand.h
/// qmx hash
#pragma once

#include <string>

namespace qmx::host
{
struct HashOptions
{
    std::string project;
    std::string from; ///< seconds; empty: from the start
    std::string to;   ///< seconds; empty: to the end
};

/// Prints a line for every frame: its index, its time in seconds and the XXH3 (64 bits) of its BGRA rows.
/// @throw HostError
void RunHash(const HashOptions& options);
} // namespace qmx::host
