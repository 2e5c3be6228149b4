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
    /// The eight bytes in front of a movie. @param kind F, C or Z  @param length  of all, unpacked
    ByteWriter& Container(char kind, std::uint32_t length, std::uint32_t version = 8)
    {
        return U8(static_cast<std::uint8_t>(kind)).U8('W').U8('S').U8(kind == 'Z' ? 13 : version).U32(length);
    }
    /// Twips.
    ByteWriter& Rect(int xMin, int xMax, int yMin, int yMax)
    {
        return Align().Bits(20, 5).Bits(xMin, 20).Bits(xMax, 20).Bits(yMin, 20).Bits(yMax, 20).Align();
    }
    /// A move by twips.
    ByteWriter& Translation(int x, int y) { return Align().Bits(0, 2).Bits(20, 5).Bits(x, 20).Bits(y, 20).Align(); }
    /// A map that scales, in 65536ths, and moves, in twips.
    ByteWriter& Scaling(int x, int y, int dx = 0, int dy = 0)
    {
        Align().Bits(1, 1).Bits(22, 5).Bits(x, 22).Bits(y, 22).Bits(0, 1);
        return Bits(20, 5).Bits(dx, 20).Bits(dy, 20).Align();
    }
    /// Ends with a zero.
    ByteWriter& Text(const std::string& text) { return Raw(Bytes(text.begin(), text.end())).U8(0); }
    /// A shape record: an edge by a distance in twips.
    ByteWriter& Line(int dx, int dy) { return Bits(3, 2).Bits(15, 4).Bits(1, 1).Bits(dx, 17).Bits(dy, 17); }
    /// The same in as few bits as @p bits, sign included, 2 to 17.
    ByteWriter& ShortLine(int dx, int dy, int bits)
    {
        return Bits(3, 2).Bits(bits - 2, 4).Bits(1, 1).Bits(dx, bits).Bits(dy, bits);
    }
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
    /// A line from one point to another, twips, @p flags as the second kind of lines has them.
    MovieBuilder& Stroke(std::uint32_t id, int x, int y, int dx, int dy, int width, std::uint32_t flags)
    {
        ByteWriter w;
        w.U16(id).Rect(-2000, 2000, -2000, 2000).Rect(-2000, 2000, -2000, 2000).U8(0).U8(0).U8(1);
        w.U16(static_cast<std::uint32_t>(width)).U8(flags >> 8).U8(flags).U8(255).U8(0).U8(0).U8(255);
        w.Bits(0, 4).Bits(1, 4).Bits(0b001001, 6).Bits(20, 5).Bits(x, 20).Bits(y, 20).Bits(1, 1);
        w.Line(dx, dy).Bits(0, 6).Align();
        return Tag(83, w.bytes);
    }
    /// A font of the second kind in which the letter a is a full square; an em is 1024 units.
    MovieBuilder& SquareFont(std::uint32_t id, const std::string& name)
    {
        ByteWriter glyph;
        glyph.Bits(1, 4).Bits(0, 4).Bits(0b00111, 6).Bits(12, 5).Bits(0, 12).Bits(0, 12).Bits(0, 1).Bits(1, 1);
        glyph.Line(1024, 0).Line(0, -1024).Line(-1024, 0).Line(0, 1024).Bits(0, 6).Align();
        ByteWriter w;
        w.U16(id).U8(0x80).U8(0).U8(static_cast<std::uint32_t>(name.size())).Raw(Bytes(name.begin(), name.end()));
        w.U16(1).U16(4).U16(static_cast<std::uint32_t>(4 + glyph.bytes.size())).Raw(glyph.bytes).U8('a');
        w.U16(1024).U16(0).U16(0).U16(1024).Rect(0, 0, 0, 0).U16(0);
        return Tag(48, w.bytes);
    }
    /// Text in a field as large as the stage, @p height in twips, black.
    MovieBuilder& Field(std::uint32_t id, std::uint32_t font, int height, const std::string& html)
    {
        ByteWriter w;
        w.U16(id).Rect(-40, 4000, -40, 4000).U8(0x85).U8(0x02).U16(font).U16(static_cast<std::uint32_t>(height));
        w.U8(0).U8(0).U8(0).U8(255).U8(0).Text(html);
        return Tag(37, w.bytes);
    }
    static Bytes Placement(std::uint32_t id, std::uint32_t depth, int x, int y)
    {
        return ByteWriter().U8(6).U16(depth).U16(id).Translation(x * 20, y * 20).bytes;
    }
    MovieBuilder& Place(std::uint32_t id, std::uint32_t depth, int x = 0, int y = 0)
    {
        return Tag(26, Placement(id, depth, x, y));
    }
    /// A placement by PlaceObject3 with a blend mode (0 for none) and a list of filters, its count in front, or
    /// nothing.
    MovieBuilder& PlaceStyled(std::uint32_t id, std::uint32_t depth, std::uint32_t blend, const Bytes& filters = {},
                              int x = 0, int y = 0)
    {
        const std::uint32_t more = (blend != 0 ? 2U : 0U) | (filters.empty() ? 0U : 1U);
        ByteWriter w;
        w.U8(6).U8(more).U16(depth).U16(id).Translation(x * 20, y * 20).Raw(filters);
        if (blend != 0)
            w.U8(blend);
        return Tag(70, w.bytes);
    }
    /// What is placed from here on up to depth @p last shows inside it alone.
    MovieBuilder& PlaceClipper(std::uint32_t id, std::uint32_t depth, std::uint32_t last, int x = 0, int y = 0)
    {
        return Tag(26, ByteWriter().U8(0x46).U16(depth).U16(id).Translation(x * 20, y * 20).U16(last).bytes);
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
    Bytes File(int width, int height, std::uint32_t version = 8) const
    {
        const Bytes body = Body(width, height);
        return ByteWriter().Container('F', static_cast<std::uint32_t>(body.size() + 8), version).Raw(body).bytes;
    }
};
