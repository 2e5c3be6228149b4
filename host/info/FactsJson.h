/// @file FactsJson.h
/// A file's facts for programs: docs/info.schema.json describes them.
#pragma once

#include "host/info/FileFacts.h"

#include <nlohmann/json.hpp>

namespace qmx::host
{
nlohmann::ordered_json JsonOf(const FileFacts& facts);
} // namespace qmx::host
