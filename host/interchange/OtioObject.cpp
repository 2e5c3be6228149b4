#include "host/interchange/OtioObject.h"

#include <array>
#include <charconv>

namespace qmx::host
{
namespace
{
using Kind = JsonValue::Kind;

constexpr JsonLimits kLimits{256, 100'000, 2'000'000};

/// Tokens that the format allows for numbers, each with a text of the same length that takes its place, so that places
/// in messages stay right. The longer ones first.
constexpr std::array<std::pair<std::string_view, std::string_view>, 5> kTokens{
    {{"-Infinity", "\"-Infini\""}, {"Infinity", "\"Infini\""}, {"-Inf", "\"-I\""}, {"Inf", "\"I\""}, {"NaN", "\"N\""}}};

std::string WithoutTokens(std::string_view text)
{
    std::string result(text);
    bool inString = false;
    for (std::size_t i = 0; i < result.size(); ++i)
    {
        const char c = result[i];
        if (inString)
        {
            i += c == '\\' ? 1 : 0;
            inString = c != '"';
            continue;
        }
        inString = c == '"';
        if (c != '-' && c != 'I' && c != 'N')
            continue;
        for (const auto& [token, replacement] : kTokens)
        {
            if (result.compare(i, token.size(), token) == 0)
            {
                result.replace(i, token.size(), replacement);
                i += token.size() - 1;
                break;
            }
        }
    }
    return result;
}
} // namespace

JsonValue ParseOtio(std::string_view text)
{
    return ParseJson(WithoutTokens(text), kLimits);
}

OtioObject::OtioObject(const JsonValue& value, std::string place) : m_pValue(&value), m_place(std::move(place))
{
    if (value.kind != Kind::Object)
        throw JsonError(m_place, std::string("must be an object, not ") + KindName(value.kind));
}

std::string OtioObject::PlaceOf(std::string_view name) const
{
    return (m_place.empty() ? "" : m_place + '.').append(name);
}

std::string OtioObject::Schema() const
{
    const JsonValue* const pSchema = FindMember(*m_pValue, "OTIO_SCHEMA");
    if (!pSchema || pSchema->kind != Kind::Text)
        return {};
    std::string name = pSchema->text.substr(0, pSchema->text.find('.'));
    if (name == "Sequence")
        return "Track";
    return name == "Filler" ? "Gap" : name;
}

const JsonValue* OtioObject::Find(std::string_view name) const
{
    const JsonValue* const pField = FindMember(*m_pValue, name);
    return pField && pField->kind != Kind::Null ? pField : nullptr;
}

std::string OtioObject::Text(std::string_view name) const
{
    const JsonValue* const pField = Find(name);
    if (!pField)
        return {};
    if (pField->kind != Kind::Text)
        throw JsonError(PlaceOf(name), std::string("must be a text, not ") + KindName(pField->kind));
    return pField->text;
}

bool OtioObject::Flag(std::string_view name, bool otherwise) const
{
    const JsonValue* const pField = Find(name);
    if (!pField)
        return otherwise;
    if (pField->kind != Kind::Boolean)
        throw JsonError(PlaceOf(name), std::string("must be true or false, not ") + KindName(pField->kind));
    return pField->boolean;
}

std::optional<double> OtioObject::Number(std::string_view name) const
{
    const JsonValue* const pField = Find(name);
    if (!pField)
        return std::nullopt;
    double value = 0;
    if (pField->kind != Kind::Number)
        throw JsonError(PlaceOf(name), "must be a finite number");
    const std::string& text = pField->text;
    (void)std::from_chars(text.data(), text.data() + text.size(), value); // what is too small counts as 0
    return value;
}

std::optional<OtioObject> OtioObject::Child(std::string_view name) const
{
    const JsonValue* const pField = Find(name);
    return pField ? std::optional(OtioObject(*pField, PlaceOf(name))) : std::nullopt;
}

std::vector<OtioObject> OtioObject::Children(std::string_view name) const
{
    std::vector<OtioObject> children;
    const JsonValue* const pField = Find(name);
    if (!pField)
        return children;
    if (pField->kind != Kind::Array)
        throw JsonError(PlaceOf(name), std::string("must be a list, not ") + KindName(pField->kind));
    children.reserve(pField->items.size());
    for (std::size_t i = 0; i < pField->items.size(); ++i)
        children.emplace_back(pField->items[i], PlaceOf(name) + '[' + std::to_string(i) + ']');
    return children;
}

/// This object as a RationalTime. @param pRate  [out] its rate; may be null
TimelineTime OtioObject::ReadTime(TimelineRate* pRate) const
{
    const auto digits = [&](std::string_view name) -> const std::string&
    {
        const JsonValue* const pField = Find(name);
        if (!pField)
            throw JsonError(PlaceOf(name), "is missing");
        if (pField->kind != Kind::Number)
            throw JsonError(PlaceOf(name), "must be a finite number");
        return pField->text;
    };
    const std::string& value = digits("value");
    const std::string& rateText = digits("rate");
    const std::optional<TimelineRate> rate = TimelineRate::Parse(rateText);
    if (!rate)
        throw JsonError(PlaceOf("rate"), "must be a rate from 0.001 to 10^12 a second, not " + rateText);
    const std::optional<TimelineTime> time = TimelineTime::Parse(value, *rate);
    if (!time)
        throw JsonError(PlaceOf("value"),
                        "is further than " + std::to_string(TimelineTime::kMaxSeconds) + " seconds from 0");
    if (pRate)
        *pRate = *rate;
    return *time;
}

std::optional<TimelineTime> OtioObject::Time(std::string_view name) const
{
    const std::optional<OtioObject> time = Child(name);
    return time ? std::optional(time->ReadTime(nullptr)) : std::nullopt;
}

std::optional<OtioRange> OtioObject::Range(std::string_view name) const
{
    const std::optional<OtioObject> object = Child(name);
    if (!object)
        return std::nullopt;
    OtioRange range;
    range.start = object->Time("start_time").value_or(TimelineTime());
    const std::optional<OtioObject> duration = object->Child("duration");
    if (!duration)
        throw JsonError(object->PlaceOf("duration"), "is missing");
    range.duration = duration->ReadTime(&range.rate);
    if (range.duration.IsNegative())
        throw JsonError(object->PlaceOf("duration"), "must not be negative");
    return range;
}

const JsonValue* OtioObject::OwnMetadata() const
{
    const JsonValue* const pMetadata = Find("metadata");
    const JsonValue* const pOwn = pMetadata ? FindMember(*pMetadata, kOwnMetadata) : nullptr;
    return pOwn && pOwn->kind == Kind::Object ? pOwn : nullptr;
}

bool OtioObject::HasForeignMetadata() const
{
    const JsonValue* const pMetadata = Find("metadata");
    if (!pMetadata)
        return false;
    for (const JsonMember& member : pMetadata->members)
    {
        if (member.name != kOwnMetadata)
            return true;
    }
    return false;
}
} // namespace qmx::host
