#include "tests/host/SchemaCheck.h"

#include <algorithm>
#include <regex>

namespace qmx::host
{
namespace
{
using nlohmann::json;

bool HasType(const json& value, const std::string& type)
{
    if (type == "object")
        return value.is_object();
    if (type == "array")
        return value.is_array();
    if (type == "string")
        return value.is_string();
    if (type == "integer")
        return value.is_number_integer();
    return type == "number" && value.is_number();
}

class Checker
{
public:
    explicit Checker(const json& root) : m_root(root) {}

    std::string Check(const json& schema, const json& value, const std::string& place) const
    {
        for (const auto& [keyword, rule] : schema.items())
        {
            if (const std::string error = CheckKeyword(keyword, rule, schema, value, place); !error.empty())
                return error;
        }
        return {};
    }

private:
    std::string CheckKeyword(const std::string& keyword, const json& rule, const json& schema, const json& value,
                             const std::string& place) const
    {
        const auto fail = [&](const std::string& what) { return place + ": " + what + ": " + value.dump(); };
        if (keyword == "$ref")
            return Check(m_root.at(json::json_pointer(rule.get<std::string>().substr(1))), value, place);
        if (keyword == "oneOf")
            return CheckOneOf(rule, value, place);
        if (keyword == "type")
            return HasType(value, rule.get<std::string>()) ? "" : fail("is no " + rule.get<std::string>());
        if (keyword == "const")
            return value == rule ? "" : fail("is not " + rule.dump());
        if (keyword == "enum")
            return std::find(rule.begin(), rule.end(), value) != rule.end() ? "" : fail("is none of " + rule.dump());
        if (keyword == "minimum")
            return !value.is_number() || value >= rule ? "" : fail("is below " + rule.dump());
        if (keyword == "exclusiveMinimum")
            return !value.is_number() || value > rule ? "" : fail("is not above " + rule.dump());
        if (keyword == "pattern")
            return !value.is_string() ||
                           std::regex_search(value.get<std::string>(), std::regex(rule.get<std::string>()))
                       ? ""
                       : fail("does not match " + rule.dump());
        if (keyword == "items")
            return CheckItems(rule, value, place);
        if (keyword == "required")
        {
            for (const json& name : rule)
            {
                if (value.is_object() && !value.contains(name.get<std::string>()))
                    return fail("lacks " + name.dump());
            }
            return {};
        }
        if (keyword == "properties")
            return CheckProperties(rule, value, place);
        if (keyword == "additionalProperties" && rule == false)
            return CheckNoOthers(schema.at("properties"), value, place);
        const char* const comments[] = {"$schema", "$defs", "title", "description"};
        return std::find(std::begin(comments), std::end(comments), keyword) != std::end(comments)
                   ? ""
                   : place + ": the schema's keyword is not known: " + keyword;
    }
    std::string CheckOneOf(const json& rules, const json& value, const std::string& place) const
    {
        std::string errors;
        int good = 0;
        for (const json& rule : rules)
        {
            const std::string error = Check(rule, value, place);
            good += error.empty() ? 1 : 0;
            errors += "\n  " + error;
        }
        return good == 1 ? "" : place + ": " + std::to_string(good) + " of the kinds fit" + errors;
    }
    std::string CheckItems(const json& rule, const json& value, const std::string& place) const
    {
        for (std::size_t i = 0; value.is_array() && i < value.size(); ++i)
        {
            if (const std::string error = Check(rule, value[i], place + '/' + std::to_string(i)); !error.empty())
                return error;
        }
        return {};
    }
    std::string CheckProperties(const json& rules, const json& value, const std::string& place) const
    {
        for (const auto& [name, rule] : rules.items())
        {
            if (!value.is_object() || !value.contains(name))
                continue;
            if (const std::string error = Check(rule, value[name], place + '/' + name); !error.empty())
                return error;
        }
        return {};
    }
    static std::string CheckNoOthers(const json& known, const json& value, const std::string& place)
    {
        if (value.is_object())
        {
            for (const auto& [name, member] : value.items())
            {
                if (!known.contains(name))
                    return place + ": is not in the schema: " + name;
            }
        }
        return {};
    }

    const json& m_root;
};
} // namespace

std::string SchemaError(const json& schema, const json& value)
{
    return Checker(schema).Check(schema, value, "");
}
} // namespace qmx::host
