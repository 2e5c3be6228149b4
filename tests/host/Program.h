/// @file Program.h
/// The built program, run as a user runs it.
#pragma once

#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace qmx::host
{
/// One run of a program. Standard input is empty.
class Program
{
public:
    /// Starts @p file. @param arguments  without the program's name
    Program(const std::filesystem::path& file, const std::vector<std::string>& arguments);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Blocks until the program has printed a line on standard output. @return false when it ended before
    bool WaitForLine();
    void Signal(int signal) const; ///< POSIX only
    /// Waits for the end and collects what was printed.
    void Finish();

    int ExitCode() const { return m_exitCode; } ///< -1: ended by a signal, or not yet
    const std::string& Output() const { return m_output; }
    const std::string& Errors() const { return m_errors; }

private:
    struct System; // what the operating system knows it by

    std::unique_ptr<System> m_pSystem;
    std::filesystem::path m_errorFile;
    int m_exitCode = -1;
    std::string m_output;
    std::string m_errors;
};

/// Runs qmx to its end.
struct QmxRun : Program
{
    explicit QmxRun(const std::vector<std::string>& arguments);
};

/// What was printed, line by line.
inline std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}
} // namespace qmx::host
