/// @file HostError.h
/// The one way in which the host gives up: what went wrong, about which file, and the exit code it stands for.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace qmx::host
{
/// Exit codes of the program; part of its interface.
enum class ExitCode : int
{
    Done = 0,
    Failed = 1,      ///< anything that has no code of its own: memory is short, interrupted
    CommandLine = 2, ///< the command line cannot be understood or asks for the impossible
    Project = 3,     ///< the project file is wrong
    Media = 4,       ///< a media file cannot be read
    Output = 5       ///< an output cannot be written
};

/// Thrown by every step that cannot go on; main() prints it as "qmx: SUBJECT: REASON".
class HostError : public std::runtime_error
{
public:
    /// @param subject  the file (or option) concerned, bytes as the user gave them; may be empty
    /// @param reason   one line without a full stop
    HostError(ExitCode code, std::string subject, const std::string& reason)
        : std::runtime_error(reason), m_code(code), m_subject(std::move(subject))
    {
    }

    ExitCode Code() const noexcept { return m_code; }
    const std::string& Subject() const noexcept { return m_subject; }

private:
    ExitCode m_code;
    std::string m_subject;
};
} // namespace qmx::host
