/// @file FactsTable.h
/// A file's facts for people.
#pragma once

#include "host/info/FileFacts.h"

#include <string>

namespace qmx::host
{
/// The file's name on a line of its own, and below it an indented line for each fact, values one below the other. Lines
/// end with '\n' but for the last.
std::string TableOf(const FileFacts& facts);
} // namespace qmx::host
