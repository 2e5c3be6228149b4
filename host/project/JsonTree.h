/// @file JsonTree.h
/// A JSON text as a tree that keeps numbers as they were written and members in their order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qmx::host
{
struct JsonMember;

struct JsonValue
{
    enum class Kind
    {
        Null,
        Boolean,
        Number,
        Text,
        Array,
        Object
    };

    Kind kind = Kind::Null;
    bool boolean = false;
    std::string text; ///< UTF-8 of a text, or the digits of a number as they were written
    std::vector<JsonValue> items;
    std::vector<JsonMember> members; ///< names differ from each other
};

struct JsonMember
{
    std::string name; ///< UTF-8
    JsonValue value;
};

/// Name of a kind for messages: "a number", "an object", …
const char* KindName(JsonValue::Kind kind);

/// What is wrong with a JSON text and where.
class JsonError : public std::runtime_error
{
public:
    /// @param path  where in the tree, "tracks[1].clips[0]"; empty at the top
    JsonError(std::string path, const std::string& reason) : std::runtime_error(reason), m_path(std::move(path)) {}
    const std::string& Path() const noexcept { return m_path; }

private:
    std::string m_path;
};

inline constexpr std::size_t kMaxJsonDepth = 32;   ///< arrays and objects inside each other
inline constexpr std::size_t kMaxJsonMembers = 64; ///< members of one object

/// How much a text may hold; what is beyond is refused before memory is taken for it.
struct JsonLimits
{
    std::size_t depth = kMaxJsonDepth;
    std::size_t members = kMaxJsonMembers;
    std::size_t values = SIZE_MAX; ///< of all kinds, the root included
};

/// @param text  UTF-8, with or without a byte order mark
/// @throw JsonError  no JSON, not UTF-8, beyond the limits, a name that stands twice in one object, a number that no
///                   double can hold
JsonValue ParseJson(std::string_view text, const JsonLimits& limits = {});

/// The member of that name, or null. @param object  of any kind; only objects have members
const JsonValue* FindMember(const JsonValue& object, std::string_view name);
} // namespace qmx::host
