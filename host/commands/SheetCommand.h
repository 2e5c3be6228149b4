/// @file SheetCommand.h
/// qmx sheet
#pragma once

#include <cstdint>
#include <string>

namespace qmx::host
{
struct SheetOptions
{
    std::string project;
    std::string output;
    std::uint32_t columns = 4;
    std::uint32_t rows = 4;
};

/// Writes frames spread evenly over a project as one PNG file. @throw HostError
void RunSheet(const SheetOptions& options);
} // namespace qmx::host
