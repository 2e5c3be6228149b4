/// @file Progress.h
/// How far a rendering has come.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace qmx::host
{
enum class ProgressMode
{
    None,
    Terminal, ///< one line on stderr that is written over and over
    Json      ///< one object per line on stdout: {"frame":12,"frames":360,"fps":83.1,"secondsLeft":4.2}
};

/// Tells about progress, at most ten times a second and once at the end. A reader that has gone away is not an error.
/// Threads : used by one at a time.
class Progress
{
public:
    using Clock = std::chrono::steady_clock;

    Progress(ProgressMode mode, std::uint64_t frames);
    ~Progress(); ///< leaves the terminal on a fresh line
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// @param done  frames that are finished
    void Report(std::uint64_t done);

    /// What Report() prints, without line ends.
    static std::string Line(ProgressMode mode, std::uint64_t done, std::uint64_t frames, double elapsedSeconds);

private:
    ProgressMode m_mode;
    std::uint64_t m_frames;
    Clock::time_point m_begin = Clock::now();
    Clock::time_point m_next = m_begin;
    std::size_t m_lineLength = 0; ///< of what stands on the terminal
};
} // namespace qmx::host
