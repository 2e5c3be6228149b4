/// @file InfoCommand.h
/// qmx info
#pragma once

#include "host/HostError.h"

#include <string>
#include <vector>

namespace qmx::host
{
struct InfoOptions
{
    std::vector<std::string> files;
    bool json = false;
};

/// Prints what is known about media files, in their order. A file that cannot be read is reported on standard error;
/// the others are still told about.
/// @return ExitCode::Media when there was such a file, otherwise ExitCode::Done
/// @throw HostError  for every other failure
ExitCode RunInfo(const InfoOptions& options);
} // namespace qmx::host
