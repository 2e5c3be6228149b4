#include "host/interchange/TransferReport.h"

#include "host/project/JsonText.h"

namespace qmx::host
{
namespace
{
/// Names come from files: what would move a terminal's cursor is shown as a question mark.
std::string Printable(const std::string& text)
{
    std::string printable = text;
    for (char& c : printable)
    {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            c = '?';
    }
    return printable;
}

std::string DroppedText(std::size_t count)
{
    return std::to_string(count) + " more losses are not listed";
}
} // namespace

void TransferReport::Add(std::string place, std::string name, std::string what, std::string why)
{
    if (m_losses.size() == kMaxLosses)
        ++m_dropped;
    else
        m_losses.push_back({std::move(place), std::move(name), std::move(what), std::move(why)});
}

std::vector<std::string> TransferReport::Lines() const
{
    std::vector<std::string> lines;
    lines.reserve(m_losses.size() + 1);
    for (const TransferLoss& loss : m_losses)
    {
        const std::string name = loss.name.empty() ? "" : (loss.place.empty() ? "\"" : " \"") + loss.name + '"';
        const std::string object = loss.place + name;
        lines.push_back(Printable(object + (object.empty() ? "" : ": ") + loss.what + ": " + loss.why));
    }
    if (m_dropped != 0)
        lines.push_back(DroppedText(m_dropped));
    return lines;
}

std::string TransferReport::Json() const
{
    std::vector<JsonValue> list;
    for (const TransferLoss& loss : m_losses)
        list.push_back(JsonObject({{"place", JsonString(loss.place)},
                                   {"name", JsonString(loss.name)},
                                   {"what", JsonString(loss.what)},
                                   {"why", JsonString(loss.why)}}));
    if (m_dropped != 0)
        list.push_back(JsonObject({{"place", JsonString("")},
                                   {"name", JsonString("")},
                                   {"what", JsonString("report")},
                                   {"why", JsonString(DroppedText(m_dropped))}}));
    return JsonText(JsonList(std::move(list)), 2);
}
} // namespace qmx::host
