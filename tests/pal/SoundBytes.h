/// @file SoundBytes.h
/// Small files of sound, byte by byte.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

inline void AppendNumber(std::string& bytes, std::uint32_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes += static_cast<char>(value >> (8 * i) & 0xFF);
}

/// A WAV file of 16 bits. @param values  all channels of the first sample, of the second, ...
inline std::string WaveBytes(const std::vector<std::int16_t>& values, std::uint32_t rate, std::uint32_t channels)
{
    const auto cb = static_cast<std::uint32_t>(values.size() * 2);
    std::string bytes = "RIFF";
    AppendNumber(bytes, cb + 36, 4);
    bytes += "WAVEfmt ";
    AppendNumber(bytes, 16, 4);
    AppendNumber(bytes, 1, 2); // PCM
    AppendNumber(bytes, channels, 2);
    AppendNumber(bytes, rate, 4);
    AppendNumber(bytes, rate * channels * 2, 4);
    AppendNumber(bytes, channels * 2, 2);
    AppendNumber(bytes, 16, 2);
    bytes += "data";
    AppendNumber(bytes, cb, 4);
    for (const std::int16_t value : values)
        AppendNumber(bytes, static_cast<std::uint16_t>(value), 2);
    return bytes;
}

/// An ADTS frame of silence in one channel, 1024 samples (ISO/IEC 14496-3, 1.A.3.2 and 4.4.2.1).
/// @param rateIndex  3: 48 kHz, 6: 24 kHz.  @param cbFill  bytes without meaning that make the frame longer, up to 269
inline std::string SilentAdtsFrame(unsigned rateIndex, unsigned cbFill = 0)
{
    std::string bits;
    const auto put = [&](unsigned value, int count)
    {
        while (count-- > 0)
            bits += (value >> count & 1) != 0 ? '1' : '0';
    };
    put(0, 3);   // a single channel
    put(0, 4);   // its tag
    put(140, 8); // global gain
    put(0, 1);   // reserved
    put(0, 2);   // one long window
    put(0, 1);   // sine shape
    put(0, 6);   // no scale factor bands
    put(0, 1);   // no prediction
    put(0, 3);   // no pulses, no noise shaping, no gain control
    if (cbFill > 0)
    {
        put(6, 3); // a fill element
        const unsigned count = cbFill < 15 ? cbFill : 15;
        put(count, 4);
        if (count == 15)
            put(cbFill - 14, 8);
        for (unsigned i = 0; i < cbFill; ++i)
            put(0, 8);
    }
    put(7, 3); // the end
    while (bits.size() % 8 != 0)
        bits += '0';
    const auto cbFrame = static_cast<unsigned>(7 + bits.size() / 8);
    std::string header;
    const auto byte = [&](unsigned value) { header += static_cast<char>(value & 0xFF); };
    byte(0xFF);
    byte(0xF1);                     // MPEG-4, no checksum
    byte(1U << 6 | rateIndex << 2); // low complexity
    byte(1U << 6 | cbFrame >> 11);  // one channel
    byte(cbFrame >> 3);
    byte((cbFrame & 7) << 5 | 0x1F);
    byte(0xFC);
    for (std::size_t i = 0; i < bits.size(); i += 8)
    {
        unsigned value = 0;
        for (std::size_t k = 0; k < 8; ++k)
            value = value << 1 | (bits[i + k] == '1' ? 1U : 0U);
        byte(value);
    }
    return header;
}
