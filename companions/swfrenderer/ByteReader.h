/// @file ByteReader.h
/// Bounded reading of little-endian numbers and bit fields. A read past the end gives zero and makes the reader fail
/// for good, so that a whole record may be read before Failed() is asked once.
#pragma once

#include "companions/swfrenderer/Colour.h"
#include "companions/swfrenderer/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace swf
{
class CByteReader
{
public:
    CByteReader() = default;
    explicit CByteReader(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}

    bool Failed() const { return m_bFailed; }
    void Fail() { m_bFailed = true; }
    std::size_t Position() const { return m_pos; }
    std::size_t Left() const { return m_bFailed ? 0 : m_bytes.size() - m_pos; }
    bool AtEnd() const { return Left() == 0; }
    void Skip(std::size_t cb) { (void)Take(cb); }
    /// The next @p cb bytes; fewer there: fails, and the result is empty. Borrowed from what the reader reads.
    std::span<const std::uint8_t> Take(std::size_t cb);
    std::span<const std::uint8_t> Rest() { return Take(Left()); }

    std::uint8_t U8();
    std::uint16_t U16();
    std::uint32_t U32();
    std::int16_t S16() { return static_cast<std::int16_t>(U16()); }
    double Fixed8() { return S16() / 256.0; }
    double Fixed16() { return static_cast<std::int32_t>(U32()) / 65536.0; }
    float F32();
    /// Ends at a zero byte, which is consumed.
    std::string String();
    Rgba Rgb();
    Rgba RgbaColour();

    /// Bit fields, most significant bit first; any read of whole bytes drops the rest of a begun byte.
    void Align() { m_nBits = 0; }
    std::uint32_t UB(std::uint32_t bits); ///< 0..32 bits
    std::int32_t SB(std::uint32_t bits);
    bool Bit() { return UB(1) != 0; }
    double FB(std::uint32_t bits) { return SB(bits) / 65536.0; }

    Rect ReadRect();
    Matrix ReadMatrix();
    ColourTransform ReadColourTransform(bool withAlpha);

private:
    std::span<const std::uint8_t> m_bytes;
    std::size_t m_pos = 0;
    std::uint32_t m_nBits = 0; ///< unread bits of m_current
    std::uint8_t m_current = 0;
    bool m_bFailed = false;
};
} // namespace swf
