/// @file TinyGif.h
/// GIF files of a few bytes, written record by record.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

/// Puts a file together. Pictures have four colours: 0 red, 1 green, 2 blue, 3 white, or those of a local palette.
class TinyGif
{
public:
    using Bytes = std::vector<std::uint8_t>;

    /// @param flags       of the screen descriptor: 0x81 a palette of four colours, 0 none
    /// @param background  palette index
    /// @param aspect      pixel aspect byte
    TinyGif(std::uint16_t width, std::uint16_t height, std::uint8_t flags = 0x81, std::uint8_t background = 0,
            std::uint8_t aspect = 0)
    {
        Text("GIF89a");
        Word(width);
        Word(height);
        bytes.insert(bytes.end(), {flags, background, aspect});
        if (flags & 0x80)
            bytes.insert(bytes.end(), {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255});
    }

    /// A graphic control extension. @param transparent  palette index, below 0 for none
    TinyGif& Control(std::uint16_t delay, std::uint8_t disposal, int transparent = -1)
    {
        bytes.insert(bytes.end(),
                     {0x21, 0xF9, 4, static_cast<std::uint8_t>(disposal << 2 | (transparent >= 0 ? 1 : 0))});
        Word(delay);
        bytes.insert(bytes.end(), {static_cast<std::uint8_t>(transparent < 0 ? 0 : transparent), 0});
        return *this;
    }
    /// An application extension of one block.
    TinyGif& Application(const std::string& identifier, const Bytes& data)
    {
        bytes.insert(bytes.end(), {0x21, 0xFF, static_cast<std::uint8_t>(identifier.size())});
        Text(identifier);
        bytes.push_back(static_cast<std::uint8_t>(data.size()));
        bytes.insert(bytes.end(), data.begin(), data.end());
        bytes.push_back(0);
        return *this;
    }
    /// An image descriptor without its pixels. @param flags  0x40 interlaced, 0x81 a local palette follows
    TinyGif& Descriptor(std::uint16_t left, std::uint16_t top, std::uint16_t width, std::uint16_t height,
                        std::uint8_t flags = 0, const Bytes& palette = {})
    {
        bytes.push_back(0x2C);
        for (const std::uint16_t word : {left, top, width, height})
            Word(word);
        bytes.push_back(flags);
        bytes.insert(bytes.end(), palette.begin(), palette.end());
        return *this;
    }
    /// Pixels, two bits each, without compression: a clear code before every second one keeps the codes 3 bits long.
    TinyGif& Pixels(const Bytes& indices)
    {
        constexpr unsigned kClear = 4;
        constexpr unsigned kEnd = 5;
        Bytes packed;
        unsigned held = 0;
        unsigned bits = 0;
        const auto put = [&](unsigned code)
        {
            held |= code << bits;
            for (bits += 3; bits >= 8; bits -= 8, held >>= 8)
                packed.push_back(static_cast<std::uint8_t>(held));
        };
        for (std::size_t i = 0; i < indices.size(); ++i)
        {
            if (i % 2 == 0)
                put(kClear);
            put(indices[i]);
        }
        put(kEnd);
        packed.push_back(static_cast<std::uint8_t>(held));
        bytes.push_back(2);
        for (std::size_t at = 0; at < packed.size(); at += 255)
        {
            const std::size_t cb = std::min<std::size_t>(255, packed.size() - at);
            bytes.push_back(static_cast<std::uint8_t>(cb));
            bytes.insert(bytes.end(), packed.begin() + static_cast<std::ptrdiff_t>(at),
                         packed.begin() + static_cast<std::ptrdiff_t>(at + cb));
        }
        bytes.push_back(0);
        return *this;
    }
    /// A frame of one colour.
    TinyGif& Solid(std::uint16_t left, std::uint16_t top, std::uint16_t width, std::uint16_t height, std::uint8_t color)
    {
        return Descriptor(left, top, width, height).Pixels(Bytes(std::size_t{width} * height, color));
    }
    /// A frame of one colour that stands for a tenth of a second. @param disposal  as in Control()
    TinyGif& Frame(std::uint8_t disposal, std::uint16_t left, std::uint16_t top, std::uint16_t width,
                   std::uint16_t height, std::uint8_t color)
    {
        return Control(10, disposal).Solid(left, top, width, height, color);
    }
    TinyGif& End()
    {
        bytes.push_back(0x3B);
        return *this;
    }

    Bytes bytes;

private:
    void Text(const std::string& text)
    {
        for (const char c : text) // GCC 12 takes an inlined insert() for an overrun
            bytes.push_back(static_cast<std::uint8_t>(c));
    }
    void Word(std::uint16_t word)
    {
        bytes.insert(bytes.end(), {static_cast<std::uint8_t>(word), static_cast<std::uint8_t>(word >> 8)});
    }
};
