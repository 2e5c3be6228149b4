/// @file JsonText.h
/// JSON trees made in memory, and their text.
#pragma once

#include "host/project/JsonTree.h"

#include <string>
#include <vector>

namespace qmx::host
{
JsonValue JsonNull();
JsonValue JsonFlag(bool value);
/// @param digits  a number as JSON writes it; the caller vouches for that
JsonValue JsonNumber(std::string digits);
/// @param text  UTF-8
JsonValue JsonString(std::string text);
JsonValue JsonList(std::vector<JsonValue> items);
JsonValue JsonObject(std::vector<JsonMember> members);

/// The tree as UTF-8 text with a line for every value, numbers as they stand in the tree. Ends with a line end.
/// @param indent  spaces for each level
std::string JsonText(const JsonValue& value, std::size_t indent);
} // namespace qmx::host
