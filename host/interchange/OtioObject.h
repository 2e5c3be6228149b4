/// @file OtioObject.h
/// Objects of an OpenTimelineIO file, read one field at a time.
#pragma once

#include "host/interchange/TimelineTime.h"
#include "host/project/JsonTree.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qmx::host
{
struct OtioRange
{
    TimelineTime start;
    TimelineTime duration; ///< not negative
    TimelineRate rate;     ///< of the duration
};

/// Borrows a value of the tree, which must outlive it. Readers throw JsonError with the place of the field when it has
/// the wrong type or a value that means nothing; fields that are absent or null are just not there.
class OtioObject
{
public:
    /// @param place  where @p value stands in the file, "tracks.children[0]"; empty for the root
    /// @throw JsonError  @p value is no object
    OtioObject(const JsonValue& value, std::string place);

    const std::string& Place() const { return m_place; }
    std::string PlaceOf(std::string_view name) const;
    const JsonValue& Value() const { return *m_pValue; }

    /// The schema's name without its version, old names replaced: "Track" for "Sequence.1". Empty when there is none.
    std::string Schema() const;
    bool Is(std::string_view schema) const { return Schema() == schema; }
    std::string Name() const { return Text("name"); }

    /// The field, or null when it is absent or null.
    const JsonValue* Find(std::string_view name) const;
    std::string Text(std::string_view name) const; ///< empty when absent
    bool Flag(std::string_view name, bool otherwise) const;
    std::optional<double> Number(std::string_view name) const;
    std::optional<OtioObject> Child(std::string_view name) const;
    /// The objects of a list; none when it is absent.
    std::vector<OtioObject> Children(std::string_view name) const;
    std::optional<TimelineTime> Time(std::string_view name) const;
    std::optional<OtioRange> Range(std::string_view name) const;

    /// What this program has written into the object's metadata, or null.
    const JsonValue* OwnMetadata() const;
    /// Whether other programs have written metadata into it.
    bool HasForeignMetadata() const;

private:
    TimelineTime ReadTime(TimelineRate* pRate) const;

    const JsonValue* m_pValue;
    std::string m_place;
};

/// Key of what this program writes into objects' metadata.
inline constexpr const char* kOwnMetadata = "qmx";

/// Reads the text of a file. NaN and the infinities, which the format adds to JSON, are let through where no number is
/// needed. @throw JsonError  no JSON, beyond the limits
JsonValue ParseOtio(std::string_view text);
} // namespace qmx::host
