/// @file Process.h
/// What a test watches of its own process: memory, and time that passes without progress.
#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

namespace test_support
{
/// Bytes of this process that are in memory now.
std::uint64_t ResidentBytes();
/// The most that ResidentBytes() has been since the last ResetPeakResidentBytes().
std::uint64_t PeakResidentBytes();
void ResetPeakResidentBytes();

/// Ends the process with a message when one step takes too long, so that a hang is a failure and not a time-out of the
/// whole run. When the process crashes meanwhile, the message names the step too.
/// Lifetime : one at a time; the limit counts from the construction or the last Step().
class Watchdog
{
public:
    explicit Watchdog(std::chrono::seconds limit);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    /// Starts the next step. @param what  names it in a message; its first 200 characters count.
    void Step(std::string_view what);

private:
    struct State;
    State* m_pState; // owned
};
} // namespace test_support
