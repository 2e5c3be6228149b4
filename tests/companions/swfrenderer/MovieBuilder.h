/// @file MovieBuilder.h
/// Small movies made byte by byte.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// Numbers low byte first, and bit fields high bit first.
class ByteWriter
{
public:
    Bytes bytes;

    ByteWriter& U8(std::uint32_t v)
    {
        m_nBits = 0;
        bytes.push_back(static_cast<std::uint8_t>(v));
        return *this;
    }
    ByteWriter& U16(std::uint32_t v) { return U8(v & 255).U8(v >> 8 & 255); }
    ByteWriter& U32(std::uint32_t v) { return U16(v & 0xFFFF).U16(v >> 16); }
    ByteWriter& Raw(const Bytes& b)
    {
        m_nBits = 0;
        bytes.insert(bytes.end(), b.begin(), b.end());
        return *this;
    }
    ByteWriter& Bits(std::int64_t v, int n)
    {
        for (int i = n - 1; i >= 0; --i)
        {
            if (m_nBits == 0)
                bytes.push_back(0);
            bytes.back() = static_cast<std::uint8_t>(bytes.back() | ((v >> i) & 1) << (7 - m_nBits));
            m_nBits = (m_nBits + 1) % 8;
        }
        return *this;
    }
    ByteWriter& Align()
    {
        m_nBits = 0;
        return *this;
    }
    /// Twips.
    ByteWriter& Rect(int xMin, int xMax, int yMin, int yMax)
    {
        return Align().Bits(20, 5).Bits(xMin, 20).Bits(xMax, 20).Bits(yMin, 20).Bits(yMax, 20).Align();
    }
    /// A move by twips.
    ByteWriter& Translation(int x, int y) { return Align().Bits(0, 2).Bits(20, 5).Bits(x, 20).Bits(y, 20).Align(); }
    /// A shape record: an edge by a distance in twips.
    ByteWriter& Line(int dx, int dy) { return Bits(3, 2).Bits(15, 4).Bits(1, 1).Bits(dx, 17).Bits(dy, 17); }
    /// A shape record: a move, and styles of one bit each.
    ByteWriter& Style(int x, int y, int fill0, int fill1)
    {
        return Bits(0b000111, 6).Bits(20, 5).Bits(x, 20).Bits(y, 20).Bits(fill0, 2).Bits(fill1, 2);
    }

private:
    int m_nBits = 0;
};

/// Tags of a movie whose stage has whole pixels.
class MovieBuilder
{
public:
    ByteWriter tags;

    static Bytes TagBytes(std::uint32_t code, const Bytes& body)
    {
        ByteWriter w;
        w.U16(code << 6 | 63).U32(static_cast<std::uint32_t>(body.size())).Raw(body);
        return w.bytes;
    }
    MovieBuilder& Tag(std::uint32_t code, const Bytes& body = {})
    {
        tags.Raw(TagBytes(code, body));
        return *this;
    }
    MovieBuilder& ShowFrame() { return Tag(1); }
    MovieBuilder& Background(std::uint32_t rgb)
    {
        return Tag(9, ByteWriter().U8(rgb >> 16).U8(rgb >> 8).U8(rgb).bytes);
    }
    /// A rectangle from 0, 0, in pixels.
    MovieBuilder& Box(std::uint32_t id, int width, int height, std::uint32_t rgb)
    {
        ByteWriter w;
        w.U16(id).Rect(0, width * 20, 0, height * 20).U8(1).U8(0).U8(rgb >> 16).U8(rgb >> 8).U8(rgb).U8(0);
        w.Bits(2, 4).Bits(0, 4).Style(0, 0, 0, 1).Line(width * 20, 0).Line(0, height * 20).Line(-width * 20, 0);
        w.Line(0, -height * 20).Bits(0, 6).Align();
        return Tag(2, w.bytes);
    }
    static Bytes Placement(std::uint32_t id, std::uint32_t depth, int x, int y)
    {
        return ByteWriter().U8(6).U16(depth).U16(id).Translation(x * 20, y * 20).bytes;
    }
    MovieBuilder& Place(std::uint32_t id, std::uint32_t depth, int x = 0, int y = 0)
    {
        return Tag(26, Placement(id, depth, x, y));
    }
    MovieBuilder& Move(std::uint32_t depth, int x, int y)
    {
        return Tag(26, ByteWriter().U8(5).U16(depth).Translation(x * 20, y * 20).bytes);
    }
    MovieBuilder& Sprite(std::uint32_t id, std::uint32_t frames, const Bytes& inner)
    {
        return Tag(39, ByteWriter().U16(id).U16(frames).Raw(inner).U16(0).bytes);
    }
    /// What follows the eight bytes of signature and length.
    Bytes Body(int width, int height) const
    {
        return ByteWriter().Rect(0, width * 20, 0, height * 20).U16(25 << 8).U16(1).Raw(tags.bytes).U16(0).bytes;
    }
    Bytes File(int width, int height) const
    {
        const Bytes body = Body(width, height);
        return ByteWriter()
            .U8('F')
            .U8('W')
            .U8('S')
            .U8(8)
            .U32(static_cast<std::uint32_t>(body.size() + 8))
            .Raw(body)
            .bytes;
    }
};
