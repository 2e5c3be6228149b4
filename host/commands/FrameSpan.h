/// @file FrameSpan.h
/// Times of the command line as frames of a project.
#pragma once

#include "host/project/Project.h"

#include <cstdint>
#include <string>

namespace qmx::host
{
/// Frames first, first + 1, … end - 1.
struct FrameSpan
{
    std::uint64_t first = 0;
    std::uint64_t end = 0;
};

/// A time in seconds as 100-ns units. @param option  named by the error
/// @throw HostError  ExitCode::CommandLine
std::uint64_t ParseSeconds(const std::string& option, const std::string& text);

/// The frames that start in [from, to).
/// @param from, to  seconds; empty: from the start, to the end
/// @throw HostError  ExitCode::CommandLine when they are no times, lie beyond the project's end or hold no frame
FrameSpan SpanBetween(const Project& project, const std::string& from, const std::string& to);

/// The frame that is on screen at a time. @throw HostError  ExitCode::CommandLine when that lies beyond the end
std::uint64_t FrameAt(const Project& project, const std::string& at);
} // namespace qmx::host
