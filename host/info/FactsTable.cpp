#include "host/info/FactsTable.h"

#include "host/info/FileDate.h"
#include "host/project/Decimal.h"

#include <cmath>
#include <string_view>

namespace qmx::host
{
namespace
{
class Table
{
public:
    explicit Table(const std::string& title) : m_text(title) {}

    void Add(std::string_view name, const std::string& value)
    {
        constexpr std::size_t kNameColumn = 14;
        m_text += "\n  ";
        m_text += name;
        m_text.append(name.size() < kNameColumn ? kNameColumn - name.size() : 1, ' ');
        m_text += value;
    }
    const std::string& Text() const { return m_text; }

private:
    std::string m_text;
};

std::string Count(std::uint64_t count, const char* pName)
{
    return std::to_string(count) + ' ' + pName + (count == 1 ? "" : "s");
}

std::string Size(std::uint32_t width, std::uint32_t height)
{
    return std::to_string(width) + " x " + std::to_string(height);
}

/// "2012-03-04 05:06:07"; nobody reads more of it.
std::string PlainDate(std::uint64_t ticks)
{
    std::string text = DateText(ticks).substr(0, 19);
    text[10] = ' ';
    return text;
}

/// "30000/1001 (29.97) a second", "25 a second".
std::string RateText(const RateFraction& rate)
{
    std::string text = std::to_string(rate.num);
    if (rate.den != 1)
    {
        const double value = static_cast<double>(rate.num) / static_cast<double>(rate.den);
        text += '/' + std::to_string(rate.den) + " (" + NumberText(std::round(value * 1'000) / 1'000) + ')';
    }
    return text + " a second";
}

std::string SoundText(std::uint32_t rate, std::uint32_t channels, std::uint32_t bits)
{
    std::string text = std::to_string(rate) + " Hz, " + Count(channels, "channel");
    if (bits != 0)
        text += ", " + Count(bits, "bit");
    return text;
}

std::string TextOf(const StreamFacts& stream)
{
    std::string text = stream.kind;
    if (!stream.coding.empty())
        text += ", " + stream.coding;
    if (stream.width != 0)
        text += ", " + Size(stream.width, stream.height);
    if (stream.rate != 0)
        text += ", " + SoundText(stream.rate, stream.channels, 0);
    return text;
}

std::string RoundsText(std::uint32_t rounds)
{
    return rounds == 0 ? "for ever" : Count(rounds, "time");
}

void AddPicture(const PictureFacts& picture, FileKind kind, Table& table)
{
    table.Add("orientation", std::to_string(picture.orientation));
    if (kind == FileKind::Animation && picture.rounds)
        table.Add("repeats", RoundsText(*picture.rounds));
}
} // namespace

std::string TableOf(const FileFacts& facts)
{
    Table table(facts.file);
    table.Add("kind", std::string(NamesOf(facts.kind).pText) + (facts.picture ? ", " + facts.picture->format : ""));
    table.Add("length", Count(facts.bytes, "byte"));
    if (facts.recorded)
        table.Add("recorded", PlainDate(*facts.recorded) + " UTC");
    if (facts.modified)
        table.Add("modified", PlainDate(*facts.modified) + " local time");
    if (facts.width != 0)
        table.Add("size", Size(facts.width, facts.height));
    if (facts.duration)
        table.Add("duration", NumberText(*facts.duration) + " s");
    if (facts.frameRate)
        table.Add("frame rate", RateText(*facts.frameRate));
    if (facts.frames)
        table.Add("frames", std::to_string(*facts.frames));
    if (facts.video && facts.kind == FileKind::Film)
    {
        table.Add("rotation", std::to_string(facts.video->nRotation));
        table.Add("pixel aspect",
                  std::to_string(facts.video->nPixelAspectX) + ':' + std::to_string(facts.video->nPixelAspectY));
    }
    if (facts.picture)
        AddPicture(*facts.picture, facts.kind, table);
    if (facts.sound)
        table.Add("sound", SoundText(facts.sound->nSamplesPerSec, facts.sound->nChannels, facts.sound->nBitsPerSample));
    for (std::size_t i = 0; i < facts.streams.size(); ++i)
        table.Add("stream " + std::to_string(i), TextOf(facts.streams[i]));
    return table.Text();
}
} // namespace qmx::host
