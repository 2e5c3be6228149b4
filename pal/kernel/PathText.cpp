#include "pal/kernel/PathText.h"

#include <cstddef>
#include <cstdint>

namespace pal
{
namespace
{
constexpr std::uint32_t kEscapedByte = 0xDC00; // plus the byte, 0x80..0xFF

/// Length of the valid UTF-8 sequence at the front of @p bytes and its code point; 0 when there is none.
std::size_t DecodeOne(std::string_view bytes, std::uint32_t& codePoint)
{
    const auto at = [&](std::size_t i) { return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])); };
    const std::uint32_t lead = at(0);
    if (lead < 0x80)
    {
        codePoint = lead;
        return 1;
    }
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length)
        return 0;
    codePoint = lead & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i)
    {
        if ((at(i) & 0xC0) != 0x80)
            return 0;
        codePoint = codePoint << 6 | (at(i) & 0x3F);
    }
    constexpr std::uint32_t kSmallest[5] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    return codePoint < kSmallest[length] || codePoint > 0x10FFFF || surrogate ? 0 : length;
}
} // namespace

std::string ToPathBytes(std::wstring_view text)
{
    std::string bytes;
    bytes.reserve(text.size());
    const auto put = [&](std::uint32_t value)
    { bytes.push_back(static_cast<char>(static_cast<unsigned char>(value))); };
    for (const wchar_t character : text)
    {
        const auto c = static_cast<std::uint32_t>(character);
        if (c >= kEscapedByte + 0x80 && c <= kEscapedByte + 0xFF)
            put(c - kEscapedByte);
        else if (c < 0x80)
            put(c);
        else if (c < 0x800)
        {
            put(0xC0 | c >> 6);
            put(0x80 | (c & 0x3F));
        }
        else if (c < 0x10000)
        {
            put(0xE0 | c >> 12);
            put(0x80 | (c >> 6 & 0x3F));
            put(0x80 | (c & 0x3F));
        }
        else
        {
            put(0xF0 | (c >> 18 & 0x07));
            put(0x80 | (c >> 12 & 0x3F));
            put(0x80 | (c >> 6 & 0x3F));
            put(0x80 | (c & 0x3F));
        }
    }
    return bytes;
}

std::wstring FromPathBytes(std::string_view bytes)
{
    std::wstring text;
    text.reserve(bytes.size());
    while (!bytes.empty())
    {
        std::uint32_t codePoint = 0;
        std::size_t length = DecodeOne(bytes, codePoint);
        if (length == 0)
        {
            codePoint = kEscapedByte + static_cast<unsigned char>(bytes.front());
            length = 1;
        }
        text.push_back(static_cast<wchar_t>(codePoint));
        bytes.remove_prefix(length);
    }
    return text;
}
} // namespace pal
