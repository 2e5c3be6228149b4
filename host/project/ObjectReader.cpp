#include "host/project/ObjectReader.h"

#include "host/project/Decimal.h"
#include "host/system/Platform.h"

#include <algorithm>
#include <charconv>

namespace qmx::host
{
namespace
{
constexpr double kMaxFraction = 16; // of the canvas, for boxes and their corners
} // namespace

std::string Quoted(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

ObjectReader::ObjectReader(const JsonValue& value, std::string place) : m_value(value), m_place(std::move(place))
{
    if (value.kind != Kind::Object)
        throw JsonError(m_place, std::string("must be an object, not ") + KindName(value.kind));
    m_known.reserve(value.members.size());
}

std::string ObjectReader::PlaceOf(std::string_view name) const
{
    return (m_place.empty() ? "" : m_place + '.').append(name);
}

void ObjectReader::Fail(std::string_view name, const std::string& reason) const
{
    throw JsonError(PlaceOf(name), reason);
}

const JsonValue* ObjectReader::FindAny(std::string_view name)
{
    m_known.push_back(name);
    const auto same = [&](const JsonMember& member) { return member.name == name; };
    const auto it = std::find_if(m_value.members.begin(), m_value.members.end(), same);
    return it == m_value.members.end() ? nullptr : &it->value;
}

const JsonValue* ObjectReader::Find(std::string_view name, Kind kind)
{
    const JsonValue* const pField = FindAny(name);
    if (pField && pField->kind != kind)
        Fail(name, std::string("must be ") + KindName(kind) + ", not " + KindName(pField->kind));
    return pField;
}

const JsonValue& ObjectReader::Need(std::string_view name, Kind kind)
{
    const JsonValue* const pField = Find(name, kind);
    if (!pField)
        Fail(name, "is missing");
    return *pField;
}

std::uint64_t ObjectReader::Whole(std::string_view name, const JsonValue& field, std::uint64_t lowest,
                                  std::uint64_t highest) const
{
    std::uint64_t value = 0;
    const char* const pEnd = field.text.data() + field.text.size();
    const auto [at, error] = std::from_chars(field.text.data(), pEnd, value);
    if (error != std::errc() || at != pEnd || value < lowest || value > highest)
        Fail(name, "must be a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest) +
                       ", not " + field.text);
    return value;
}

std::uint32_t ObjectReader::WholeOr(std::string_view name, std::uint32_t otherwise, std::uint32_t highest)
{
    const JsonValue* const pField = Find(name, Kind::Number);
    return pField ? static_cast<std::uint32_t>(Whole(name, *pField, 0, highest)) : otherwise;
}

double ObjectReader::Number(std::string_view name, double otherwise, double lowest, double highest)
{
    const JsonValue* const pField = Find(name, Kind::Number);
    if (!pField)
        return otherwise;
    double value = 0;
    const char* const pEnd = pField->text.data() + pField->text.size();
    const auto [at, error] = std::from_chars(pField->text.data(), pEnd, value);
    if (error == std::errc::result_out_of_range)
        value = 0; // a denormal; too large ones do not come through the parser
    if (!(value >= lowest && value <= highest))
        Fail(name, "must lie between " + std::to_string(static_cast<int>(lowest)) + " and " +
                       std::to_string(static_cast<int>(highest)));
    return value;
}

float ObjectReader::Float(std::string_view name, float otherwise, double lowest, double highest)
{
    return static_cast<float>(Number(name, otherwise, lowest, highest));
}

double ObjectReader::Fraction(std::string_view name, double otherwise)
{
    return Number(name, otherwise, -kMaxFraction, kMaxFraction);
}

bool ObjectReader::Flag(std::string_view name, bool otherwise)
{
    const JsonValue* const pField = Find(name, Kind::Boolean);
    return pField ? pField->boolean : otherwise;
}

std::uint64_t ObjectReader::Time(std::string_view name, std::uint64_t otherwise)
{
    const JsonValue* const pField = Find(name, Kind::Number);
    if (!pField)
        return otherwise;
    const std::optional<Decimal> decimal = Decimal::Parse(pField->text);
    if (!decimal || decimal->IsNegative())
        Fail(name, "must not be negative");
    const std::optional<std::uint64_t> time = decimal->Scaled(7);
    if (!time || *time > kMaxTime)
        Fail(name, "must not be greater than " + std::to_string(kMaxTime / kTimePerSecond) + " seconds");
    return *time;
}

std::uint64_t ObjectReader::NeedTime(std::string_view name)
{
    Need(name, Kind::Number);
    return Time(name, 0);
}

std::optional<FrameRate> ObjectReader::Rate(std::string_view name)
{
    const JsonValue* const pField = FindAny(name);
    if (!pField)
        return std::nullopt;
    if (pField->kind != Kind::Number && pField->kind != Kind::Text)
        Fail(name, std::string("must be a number or a text like \"30000/1001\", not ") + KindName(pField->kind));
    const std::optional<FrameRate> rate = FrameRate::Parse(pField->text);
    if (!rate)
        Fail(name, "must be a rate from 0.001 to 1000 frames per second, a number or a fraction like "
                   "\"30000/1001\" with terms up to 1000000");
    return rate;
}

std::wstring ObjectReader::Characters(std::string_view name)
{
    const JsonValue* const pField = Find(name, Kind::Text);
    return pField ? EngineText(pField->text) : std::wstring();
}

const std::string& ObjectReader::NeedFileName(std::string_view name)
{
    const std::string& text = Need(name, Kind::Text).text;
    if (text.empty() || text.find('\0') != std::string::npos)
        Fail(name, "must name a file");
    return text;
}

std::uint32_t ObjectReader::Color(std::string_view name, std::uint32_t otherwise)
{
    const JsonValue* const pField = Find(name, Kind::Text);
    if (!pField)
        return otherwise;
    std::uint32_t value = 0;
    const char* const pBegin = pField->text.data() + 1;
    const char* const pEnd = pField->text.data() + pField->text.size();
    if (pField->text.size() != 7 || pField->text[0] != '#' || std::from_chars(pBegin, pEnd, value, 16).ptr != pEnd)
        Fail(name, "must be a colour like \"#1e90ff\", not " + Quoted(pField->text));
    return value;
}

std::uint32_t ObjectReader::Choice(std::string_view name, std::span<const NamedNumber> names, std::uint32_t otherwise)
{
    const JsonValue* const pField = FindAny(name);
    if (!pField)
        return otherwise;
    std::string known;
    for (const NamedNumber& entry : names)
    {
        const bool isIt = pField->kind == Kind::Text
                              ? pField->text == entry.pName
                              : pField->kind == Kind::Number && pField->text == std::to_string(entry.value);
        if (isIt)
            return entry.value;
        known += (known.empty() ? "" : ", ") + Quoted(entry.pName) + " (" + std::to_string(entry.value) + ')';
    }
    Fail(name, "must be one of " + known);
}

void ObjectReader::Finish() const
{
    for (const auto& [name, field] : m_value.members)
    {
        if (std::find(m_known.begin(), m_known.end(), name) == m_known.end())
            Fail(name, "unknown field");
    }
}
} // namespace qmx::host
