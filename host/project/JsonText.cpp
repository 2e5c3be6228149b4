#include "host/project/JsonText.h"

namespace qmx::host
{
namespace
{
void WriteString(std::string& text, const std::string& value)
{
    text += '"';
    for (const char c : value)
    {
        if (c == '"' || c == '\\')
            (text += '\\') += c;
        else if (c == '\n')
            text += "\\n";
        else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
        {
            text += "\\u00";
            text += "0123456789abcdef"[static_cast<unsigned char>(c) >> 4];
            text += "0123456789abcdef"[c & 15];
        }
        else
            text += c;
    }
    text += '"';
}

void Write(std::string& text, const JsonValue& value, std::size_t indent, std::size_t level)
{
    const auto newLine = [&](std::size_t spaces) { (text += '\n').append(spaces, ' '); };
    switch (value.kind)
    {
    case JsonValue::Kind::Null:
        text += "null";
        break;
    case JsonValue::Kind::Boolean:
        text += value.boolean ? "true" : "false";
        break;
    case JsonValue::Kind::Number:
        text += value.text;
        break;
    case JsonValue::Kind::Text:
        WriteString(text, value.text);
        break;
    case JsonValue::Kind::Array:
        text += '[';
        for (std::size_t i = 0; i < value.items.size(); ++i)
        {
            text += i == 0 ? "" : ",";
            newLine((level + 1) * indent);
            Write(text, value.items[i], indent, level + 1);
        }
        if (!value.items.empty())
            newLine(level * indent);
        text += ']';
        break;
    case JsonValue::Kind::Object:
        text += '{';
        for (std::size_t i = 0; i < value.members.size(); ++i)
        {
            text += i == 0 ? "" : ",";
            newLine((level + 1) * indent);
            WriteString(text, value.members[i].name);
            text += ": ";
            Write(text, value.members[i].value, indent, level + 1);
        }
        if (!value.members.empty())
            newLine(level * indent);
        text += '}';
        break;
    }
}

JsonValue Make(JsonValue::Kind kind, std::string text = {})
{
    JsonValue value;
    value.kind = kind;
    value.text = std::move(text);
    return value;
}
} // namespace

JsonValue JsonNull()
{
    return {};
}

JsonValue JsonFlag(bool value)
{
    JsonValue result = Make(JsonValue::Kind::Boolean);
    result.boolean = value;
    return result;
}

JsonValue JsonNumber(std::string digits)
{
    return Make(JsonValue::Kind::Number, std::move(digits));
}

JsonValue JsonString(std::string text)
{
    return Make(JsonValue::Kind::Text, std::move(text));
}

JsonValue JsonList(std::vector<JsonValue> items)
{
    JsonValue result = Make(JsonValue::Kind::Array);
    result.items = std::move(items);
    return result;
}

JsonValue JsonObject(std::vector<JsonMember> members)
{
    JsonValue result = Make(JsonValue::Kind::Object);
    result.members = std::move(members);
    return result;
}

std::string JsonText(const JsonValue& value, std::size_t indent)
{
    std::string text;
    Write(text, value, indent, 0);
    text += '\n';
    return text;
}
} // namespace qmx::host
