/// @file StandardOutput.h
/// Data on standard output.
#pragma once

#include <string_view>

namespace qmx::host
{
/// Prints @p line and a line end. @throw HostError  ExitCode::Output
void PrintLine(std::string_view line);
/// Sees that everything printed has arrived. @throw HostError  ExitCode::Output
void FlushOutput();
} // namespace qmx::host
