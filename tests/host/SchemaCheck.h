/// @file SchemaCheck.h
/// Holds JSON against a JSON schema, as far as our own schemas go.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace qmx::host
{
/// Knows $ref into the same document, oneOf, type, const, enum, properties, required, additionalProperties: false,
/// items, minimum, exclusiveMinimum and pattern. A schema that uses any other keyword is an error: nothing is passed
/// over.
/// @return the first thing that is wrong, with its place; empty when @p value keeps @p schema
std::string SchemaError(const nlohmann::json& schema, const nlohmann::json& value);
} // namespace qmx::host
