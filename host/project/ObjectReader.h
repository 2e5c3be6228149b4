/// @file ObjectReader.h
/// Checked reading of the objects of a project file.
#pragma once

#include "host/project/FrameRate.h"
#include "host/project/JsonTree.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qmx::host
{
std::string Quoted(std::string_view text);

/// A number of the engine and its name in project files.
struct NamedNumber
{
    const char* pName;
    std::uint32_t value;
};

/// One object of the file with the fields that were asked for; Finish() refuses what nobody asked for. Every operation
/// throws JsonError, with the place of the field, for a value that is not as asked for.
/// Names of fields are literals: the reader keeps views of them. The tree outlives the reader.
class ObjectReader
{
public:
    using Kind = JsonValue::Kind;

    /// @param place  where the object stands in the file, "tracks[1]"; empty at the top
    ObjectReader(const JsonValue& value, std::string place);

    const std::string& Place() const { return m_place; }
    std::string PlaceOf(std::string_view name) const;
    [[noreturn]] void Fail(std::string_view name, const std::string& reason) const;

    /// The field, or null when it is absent.
    const JsonValue* Find(std::string_view name, Kind kind);
    const JsonValue& Need(std::string_view name, Kind kind);
    const JsonValue* FindAny(std::string_view name);

    std::uint64_t Whole(std::string_view name, const JsonValue& field, std::uint64_t lowest,
                        std::uint64_t highest) const;
    std::uint32_t WholeOr(std::string_view name, std::uint32_t otherwise, std::uint32_t highest);
    /// @param lowest, highest  small whole numbers
    double Number(std::string_view name, double otherwise, double lowest, double highest);
    float Float(std::string_view name, float otherwise, double lowest, double highest);
    /// A place or a length in fractions of a box.
    double Fraction(std::string_view name, double otherwise);
    bool Flag(std::string_view name, bool otherwise);
    /// Seconds as 100-ns units, rounded to the nearest.
    std::uint64_t Time(std::string_view name, std::uint64_t otherwise);
    std::uint64_t NeedTime(std::string_view name);
    std::optional<FrameRate> Rate(std::string_view name);
    std::wstring Characters(std::string_view name);
    /// A text that is not empty and holds no zero.
    const std::string& NeedFileName(std::string_view name);
    /// "#rrggbb" as 0x00RRGGBB.
    std::uint32_t Color(std::string_view name, std::uint32_t otherwise);
    /// One of some names, or their number.
    std::uint32_t Choice(std::string_view name, std::span<const NamedNumber> names, std::uint32_t otherwise);

    void Finish() const;

private:
    const JsonValue& m_value;
    std::string m_place;
    std::vector<std::string_view> m_known;
};
} // namespace qmx::host
