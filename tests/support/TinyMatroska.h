/// @file TinyMatroska.h
/// A Matroska file of a few bytes: a moment of silence, with a date.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace test_support
{
/// An element: its identifier, eight bytes of length, what it holds.
inline std::string MatroskaElement(std::uint32_t id, const std::string& content)
{
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
    {
        if (id >> shift != 0)
            bytes.push_back(static_cast<char>(id >> shift));
    }
    bytes.push_back(1); // the length's own length: eight bytes
    for (int shift = 48; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<char>(content.size() >> shift));
    return bytes + content;
}

/// A number in eight bytes.
inline std::string MatroskaNumber(std::uint32_t id, std::uint64_t value)
{
    std::string content;
    for (int shift = 56; shift >= 0; shift -= 8)
        content.push_back(static_cast<char>(value >> shift));
    return MatroskaElement(id, content);
}

/// A hundredth of a second of 16-bit sound at 8 kHz.
/// @param date    DateUTC: nanoseconds since 2001
/// @param tracks  of one channel, of two, and so on; the first has the sound
inline std::string TinyMatroska(std::optional<std::int64_t> date, std::uint32_t tracks = 1)
{
    const std::string rate("\x45\xFA\x00\x00", 4); // 8000 as a float
    std::string entries;
    for (std::uint32_t n = 1; n <= tracks; ++n)
    {
        const std::string audio = MatroskaElement(0xB5, rate) + MatroskaNumber(0x9F, n) + MatroskaNumber(0x6264, 16);
        entries += MatroskaElement(0xAE, MatroskaNumber(0xD7, n) + MatroskaNumber(0x73C5, n) + MatroskaNumber(0x83, 2) +
                                             MatroskaElement(0x86, "A_PCM/INT/LIT") + MatroskaElement(0xE1, audio));
    }
    const std::string info = MatroskaNumber(0x2AD7B1, 1'000'000) +
                             (date ? MatroskaNumber(0x4461, static_cast<std::uint64_t>(*date)) : std::string());
    const std::string block("\x81\x00\x00\x80", 4); // track 1, time 0, a key frame
    const std::string cluster = MatroskaNumber(0xE7, 0) + MatroskaElement(0xA3, block + std::string(160, '\0'));
    return MatroskaElement(0x1A45DFA3, MatroskaElement(0x4282, "matroska")) +
           MatroskaElement(0x18538067, MatroskaElement(0x1549A966, info) + MatroskaElement(0x1654AE6B, entries) +
                                           MatroskaElement(0x1F43B675, cluster));
}
} // namespace test_support
