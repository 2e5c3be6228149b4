/// @file ImportCommand.h
/// qmx import
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qmx::host
{
struct ImportCommandOptions
{
    std::string timeline; ///< OpenTimelineIO file
    std::string output;   ///< project file to write
    std::optional<std::uint32_t> width;
    std::optional<std::uint32_t> height;
    std::string frameRate;   ///< "30", "30000/1001"; empty: what the file says
    bool jsonReport = false; ///< the report goes to standard output
};

/// Makes a project of a timeline and reports what it cannot have.
/// @throw HostError
void RunImport(const ImportCommandOptions& options);
} // namespace qmx::host
