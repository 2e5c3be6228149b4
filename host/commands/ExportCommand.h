/// @file ExportCommand.h
/// qmx export
#pragma once

#include <string>

namespace qmx::host
{
struct ExportCommandOptions
{
    std::string project;
    std::string output;      ///< OpenTimelineIO file to write
    bool jsonReport = false; ///< the report goes to standard output
};

/// Makes a timeline of a project and reports what other programs will not see.
/// @throw HostError
void RunExport(const ExportCommandOptions& options);
} // namespace qmx::host
