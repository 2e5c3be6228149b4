/// @file PrintReport.h
/// Tells the user what got lost.
#pragma once

#include "host/interchange/TransferReport.h"

#include <string>

namespace qmx::host
{
/// Prints a line "qmx: FILE: …" on standard error for every loss, or one JSON list on standard output.
/// @throw HostError  ExitCode::Output
void PrintReport(const TransferReport& report, const std::string& file, bool asJson);
} // namespace qmx::host
