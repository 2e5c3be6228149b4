/// @file CommandLine.h
/// The program's options and what they start.
#pragma once

#include "host/HostError.h"

namespace qmx::host
{
/// Reads the command line and does what it says.
/// @param arguments  the program's own, its name included
/// @return ExitCode::Done, or ExitCode::Media from "info" when a file could not be read
/// @throw HostError  everything else that goes wrong, ExitCode::CommandLine included
ExitCode RunCommandLine(int count, const char* const* arguments);
} // namespace qmx::host
