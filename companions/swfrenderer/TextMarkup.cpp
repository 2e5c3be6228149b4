#include "companions/swfrenderer/TextMarkup.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <map>

namespace swf
{
namespace
{
constexpr std::size_t kMaxOpenTags = 64;
constexpr std::size_t kMaxTextBytes = std::size_t{256} << 10; ///< of a field, its markup included
constexpr std::size_t kMaxFace = 255;                         ///< what fonts can be called

std::uint32_t NextCode(const std::string& text, std::size_t& at)
{
    const auto byte = [&text](std::size_t i)
    { return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i])); };
    const std::uint32_t first = byte(at++);
    const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
    if (more == 0 || at + static_cast<std::size_t>(more) > text.size())
        return first;
    std::uint32_t code = first & (0x3FU >> more);
    for (int i = 0; i < more; ++i)
    {
        if ((byte(at + static_cast<std::size_t>(i)) & 0xC0) != 0x80)
            return first;
        code = code << 6 | (byte(at + static_cast<std::size_t>(i)) & 0x3F);
    }
    at += static_cast<std::size_t>(more);
    return code;
}

/// The character that stands behind an ampersand at @p at, or the ampersand.
std::uint32_t NextEntity(const std::string& text, std::size_t& at)
{
    static const std::map<std::string, std::uint32_t> kNames = {{"amp", '&'},  {"lt", '<'},    {"gt", '>'},
                                                                {"quot", '"'}, {"apos", '\''}, {"nbsp", 0xA0}};
    constexpr std::size_t kLongest = 10;
    const std::string_view near = std::string_view(text).substr(at, kLongest + 1);
    const std::size_t length = near.find(';');
    if (length == std::string_view::npos)
        return '&';
    const std::size_t end = at + length;
    const std::string name(near.substr(0, length));
    if (name.size() > 1 && name[0] == '#')
    {
        at = end + 1;
        const bool hex = name[1] == 'x' || name[1] == 'X';
        return static_cast<std::uint32_t>(std::strtoul(name.c_str() + (hex ? 2 : 1), nullptr, hex ? 16 : 10));
    }
    const auto found = kNames.find(name);
    if (found == kNames.end())
        return '&';
    at = end + 1;
    return found->second;
}

std::string Lower(std::string s)
{
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

/// name="value" pairs behind the name of a tag.
std::map<std::string, std::string> Attributes(const std::string& tag)
{
    std::map<std::string, std::string> out;
    std::size_t at = tag.find(' ');
    while (at != std::string::npos && at < tag.size())
    {
        at = tag.find_first_not_of(" \t\r\n", at);
        const std::size_t equals = at == std::string::npos ? at : tag.find('=', at);
        if (equals == std::string::npos)
            break;
        const std::string name = Lower(tag.substr(at, equals - at));
        std::size_t begin = equals + 1, end = 0;
        if (begin < tag.size() && (tag[begin] == '"' || tag[begin] == '\''))
        {
            end = std::min(tag.find(tag[begin], begin + 1), tag.size());
            ++begin;
            at = end + 1;
        }
        else
            at = end = std::min(tag.find_first_of(" \t", begin), tag.size());
        out[name] = tag.substr(begin, end - begin);
    }
    return out;
}

double Number(const std::string& s, double least, double most)
{
    return std::clamp(static_cast<double>(std::strtol(s.c_str(), nullptr, 10)), least, most);
}

class CMarkupReader
{
public:
    CMarkupReader(const EditText& edit, TextFormat base) : m_edit(edit)
    {
        m_formats.push_back(std::make_shared<const TextFormat>(std::move(base)));
    }

    std::vector<MarkedCode> Read()
    {
        const std::string& text = m_edit.text;
        for (std::size_t at = 0; at < std::min(text.size(), kMaxTextBytes) && m_letters.size() < kMaxLetters;)
        {
            if (m_edit.isHtml && text[at] == '<')
            {
                const std::size_t end = text.find('>', at);
                if (end == std::string::npos)
                    break;
                Tag(text.substr(at + 1, end - at - 1));
                at = end + 1;
                continue;
            }
            std::uint32_t code = NextCode(text, at);
            if (m_edit.isHtml && code == '&')
                code = NextEntity(text, at);
            if (m_edit.isHtml && (code == '\r' || code == '\n'))
                continue;
            Add(code == '\r' ? 10 : code);
            if (code == '\r' && at < text.size() && text[at] == '\n')
                ++at;
        }
        if (m_edit.isHtml && !m_letters.empty() && m_letters.back().code == 10)
            m_letters.pop_back(); // the end of the last paragraph
        return std::move(m_letters);
    }

private:
    void Add(std::uint32_t code)
    {
        MarkedCode letter;
        letter.code = m_edit.password && code != 10 ? '*' : code;
        letter.pFormat = m_formats.back();
        m_letters.push_back(std::move(letter));
    }
    void Tag(const std::string& tag)
    {
        if (tag.empty())
            return;
        const bool closing = tag[0] == '/';
        std::string name = Lower(tag.substr(closing ? 1 : 0, tag.find_first_of(" \t/", 1) - (closing ? 1 : 0)));
        if (name == "br" || name == "sbr")
            return Add(10);
        if (closing)
        {
            if (name == "p" || name == "li")
                Add(10);
            if (m_formats.size() > 1)
                m_formats.pop_back();
            return;
        }
        if (m_formats.size() >= kMaxOpenTags)
            return;
        TextFormat format = *m_formats.back();
        auto values = Attributes(tag);
        if (name == "b")
            format.bold = true;
        else if (name == "i")
            format.italic = true;
        else if (name == "u")
            format.underline = true;
        else if (name == "p" && values.contains("align"))
        {
            const std::string align = Lower(values["align"]);
            format.align = align == "right" ? 1 : align == "center" ? 2 : align == "justify" ? 3 : 0;
        }
        else if (name == "font")
        {
            if (values.contains("face"))
                format.face = values["face"].substr(0, kMaxFace + 1); // a longer one fits no font either
            if (values.contains("kerning"))
                format.kerning = values["kerning"] != "0";
            if (values.contains("size"))
                format.height = 20 * Number(values["size"], 1, 1000);
            if (values.contains("color") && values["color"].size() == 7)
            {
                const auto rgb = std::strtoul(values["color"].c_str() + 1, nullptr, 16);
                format.colour.r = static_cast<std::uint8_t>(rgb >> 16);
                format.colour.g = static_cast<std::uint8_t>(rgb >> 8);
                format.colour.b = static_cast<std::uint8_t>(rgb);
            }
        }
        else if (name == "textformat")
        {
            for (auto [key, pValue] : {std::pair{"leftmargin", &format.left},
                                       {"rightmargin", &format.right},
                                       {"indent", &format.indent},
                                       {"leading", &format.leading}})
                if (values.contains(key))
                    *pValue = 20 * Number(values[key], -720, 720);
        }
        m_formats.push_back(std::make_shared<const TextFormat>(std::move(format)));
    }

    const EditText& m_edit;
    std::vector<std::shared_ptr<const TextFormat>> m_formats; ///< of the open tags
    std::vector<MarkedCode> m_letters;
};
} // namespace

std::vector<MarkedCode> ReadMarkup(const EditText& edit)
{
    TextFormat base;
    base.font = edit.font;
    base.height = edit.height;
    base.colour = edit.colour;
    base.align = edit.align;
    base.left = edit.leftMargin;
    base.right = edit.rightMargin;
    base.indent = edit.indent;
    base.leading = edit.leading;
    return CMarkupReader(edit, std::move(base)).Read();
}
} // namespace swf
