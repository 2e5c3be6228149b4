#include "host/project/JsonTree.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <unordered_set>

namespace qmx::host
{
namespace
{
/// Receives the parser's events and grows the tree. Throws JsonError, which passes through the parser.
class TreeBuilder : public nlohmann::json_sax<nlohmann::json>
{
public:
    TreeBuilder(std::string_view text, const JsonLimits& limits) : m_source(text), m_limits(limits) {}
    JsonValue Take() { return std::move(m_root); }

    bool null() override
    {
        Place(JsonValue::Kind::Null);
        return true;
    }
    bool boolean(bool value) override
    {
        Place(JsonValue::Kind::Boolean).boolean = value;
        return true;
    }
    bool number_integer(number_integer_t value) override
    {
        Place(JsonValue::Kind::Number).text = std::to_string(value);
        return true;
    }
    bool number_unsigned(number_unsigned_t value) override
    {
        Place(JsonValue::Kind::Number).text = std::to_string(value);
        return true;
    }
    bool number_float(number_float_t, const string_t& written) override
    {
        Place(JsonValue::Kind::Number).text = written;
        return true;
    }
    bool string(string_t& value) override
    {
        Place(JsonValue::Kind::Text).text = std::move(value);
        return true;
    }
    bool binary(binary_t&) override { return false; } // JSON text has none
    bool start_object(std::size_t) override { return Open(JsonValue::Kind::Object); }
    bool end_object() override { return CloseTop(); }
    bool start_array(std::size_t) override { return Open(JsonValue::Kind::Array); }
    bool end_array() override { return CloseTop(); }
    bool key(string_t& name) override
    {
        JsonValue& object = *m_open.back();
        if (IsKnown(object, name))
            throw JsonError(Path(), "the name \"" + name + "\" stands here twice");
        if (object.members.size() == m_limits.members)
            throw JsonError(Path(), "too many members, at most " + std::to_string(m_limits.members));
        object.members.push_back({std::move(name), JsonValue{}});
        return true;
    }
    bool parse_error(std::size_t position, const std::string&, const nlohmann::json::exception& error) override
    {
        const std::size_t at = std::min(position == 0 ? 0 : position - 1, m_source.size());
        const std::string_view before = m_source.substr(0, at);
        const std::string line = std::to_string(std::count(before.begin(), before.end(), '\n') + 1);
        // The library's own text may quote broken bytes, so only the kinds of fault are told apart.
        const std::string_view what = error.what();
        const char* reason = "no valid JSON";
        if (what.find("UTF-8") != std::string_view::npos)
            reason = "not UTF-8";
        else if (what.find("number overflow") != std::string_view::npos)
            reason = "a number out of range";
        else if (what.find("unexpected end of input") != std::string_view::npos)
            reason = "the JSON text ends too early";
        throw JsonError(Path(), std::string(reason) + " (line " + line + ")");
    }

private:
    /// Whether the object that is being read has a member of that name; it will have one.
    bool IsKnown(const JsonValue& object, const std::string& name)
    {
        if (object.members.size() < kMaxJsonMembers)
        {
            const auto same = [&](const JsonMember& member) { return member.name == name; };
            return std::any_of(object.members.begin(), object.members.end(), same);
        }
        // Few objects are that large; looking through all members each time would take the square of their count.
        std::unordered_set<std::string>& names = m_names[&object];
        if (names.empty())
        {
            for (const JsonMember& member : object.members)
                names.insert(member.name);
        }
        return !names.insert(name).second;
    }

    /// The place for the next value: the root, the end of the open array, or the member just named.
    JsonValue& Place(JsonValue::Kind kind)
    {
        if (m_count++ == m_limits.values)
            throw JsonError("", "holds more than " + std::to_string(m_limits.values) + " values");
        JsonValue* pPlace = &m_root;
        if (!m_open.empty())
        {
            JsonValue& parent = *m_open.back();
            pPlace =
                parent.kind == JsonValue::Kind::Array ? &parent.items.emplace_back() : &parent.members.back().value;
        }
        pPlace->kind = kind;
        return *pPlace;
    }

    bool Open(JsonValue::Kind kind)
    {
        JsonValue& value = Place(kind);
        m_open.push_back(&value); // stays where it is: its parent takes no sibling before this one is closed
        if (m_open.size() > m_limits.depth)
            throw JsonError("", "nested deeper than " + std::to_string(m_limits.depth) + " levels");
        return true;
    }

    bool CloseTop()
    {
        m_names.erase(m_open.back());
        m_open.pop_back();
        return true;
    }

    /// Path of the value that was read or begun last.
    std::string Path() const
    {
        std::string path;
        for (std::size_t i = 0; i < m_open.size(); ++i)
        {
            const JsonValue& value = *m_open[i];
            const bool last = i + 1 == m_open.size();
            if (value.kind == JsonValue::Kind::Array && !value.items.empty())
                path += '[' + std::to_string(value.items.size() - 1) + ']';
            else if (value.kind == JsonValue::Kind::Object && !value.members.empty() &&
                     (!last || value.members.back().value.kind == JsonValue::Kind::Null))
                path += (path.empty() ? "" : ".") + value.members.back().name;
        }
        return path;
    }

    std::string_view m_source;
    JsonLimits m_limits;
    JsonValue m_root;
    std::size_t m_count = 0;        // values begun
    std::vector<JsonValue*> m_open; // the arrays and objects that are being read, outermost first
    std::unordered_map<const JsonValue*, std::unordered_set<std::string>> m_names; // of large objects in m_open
};
} // namespace

const char* KindName(JsonValue::Kind kind)
{
    switch (kind)
    {
    case JsonValue::Kind::Null:
        return "null";
    case JsonValue::Kind::Boolean:
        return "true or false";
    case JsonValue::Kind::Number:
        return "a number";
    case JsonValue::Kind::Text:
        return "a text";
    case JsonValue::Kind::Array:
        return "a list";
    case JsonValue::Kind::Object:
        return "an object";
    }
    return "";
}

JsonValue ParseJson(std::string_view text, const JsonLimits& limits)
{
    TreeBuilder builder(text, limits);
    nlohmann::json::sax_parse(text.begin(), text.end(), &builder);
    return builder.Take();
}

const JsonValue* FindMember(const JsonValue& object, std::string_view name)
{
    const auto same = [&](const JsonMember& member) { return member.name == name; };
    const auto it = std::find_if(object.members.begin(), object.members.end(), same);
    return it == object.members.end() ? nullptr : &it->value;
}
} // namespace qmx::host
