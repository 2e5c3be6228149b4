#include "companions/swfrenderer/ByteReader.h"

#include <algorithm>
#include <bit>

namespace swf
{
std::span<const std::uint8_t> CByteReader::Take(std::size_t cb)
{
    m_nBits = 0;
    if (cb > Left() || m_bFailed)
    {
        m_bFailed = true;
        return {};
    }
    const auto out = m_bytes.subspan(m_pos, cb);
    m_pos += cb;
    return out;
}

std::uint8_t CByteReader::U8()
{
    const auto b = Take(1);
    return b.empty() ? std::uint8_t{0} : b[0];
}

std::uint16_t CByteReader::U16()
{
    const auto b = Take(2);
    return b.empty() ? std::uint16_t{0} : static_cast<std::uint16_t>(b[0] | b[1] << 8);
}

std::uint32_t CByteReader::U32()
{
    const auto b = Take(4);
    return b.empty()
               ? 0U
               : std::uint32_t{b[0]} | std::uint32_t{b[1]} << 8 | std::uint32_t{b[2]} << 16 | std::uint32_t{b[3]} << 24;
}

float CByteReader::F32()
{
    const float f = std::bit_cast<float>(U32());
    return f == f && f > -1e9F && f < 1e9F ? f : 0.0F;
}

std::string CByteReader::String()
{
    m_nBits = 0;
    const auto rest = m_bytes.subspan(m_pos, Left());
    const auto end = std::find(rest.begin(), rest.end(), std::uint8_t{0});
    if (end == rest.end())
        m_bFailed = true;
    else
        m_pos += static_cast<std::size_t>(end - rest.begin()) + 1;
    return {rest.begin(), end};
}

Rgba CByteReader::Rgb()
{
    const auto b = Take(3);
    return b.empty() ? Rgba{} : Rgba{b[0], b[1], b[2], 255};
}

Rgba CByteReader::RgbaColour()
{
    const auto b = Take(4);
    return b.empty() ? Rgba{} : Rgba{b[0], b[1], b[2], b[3]};
}

std::uint32_t CByteReader::UB(std::uint32_t bits)
{
    std::uint64_t value = 0;
    while (bits > 0)
    {
        if (m_nBits == 0)
        {
            m_current = U8(); // clears m_nBits
            if (m_bFailed)
                return 0;
            m_nBits = 8;
        }
        const std::uint32_t take = std::min(bits, m_nBits);
        m_nBits -= take;
        bits -= take;
        value = value << take | ((static_cast<std::uint32_t>(m_current) >> m_nBits) & ((1U << take) - 1));
    }
    return static_cast<std::uint32_t>(value);
}

std::int32_t CByteReader::SB(std::uint32_t bits)
{
    const std::uint32_t v = UB(bits);
    if (bits == 0 || bits >= 32)
        return static_cast<std::int32_t>(v);
    const std::uint32_t sign = 1U << (bits - 1);
    return static_cast<std::int32_t>((v ^ sign) - sign);
}

Rect CByteReader::ReadRect()
{
    Align();
    const std::uint32_t bits = UB(5);
    Rect r;
    r.xMin = SB(bits);
    r.xMax = SB(bits);
    r.yMin = SB(bits);
    r.yMax = SB(bits);
    Align();
    return r;
}

Matrix CByteReader::ReadMatrix()
{
    Align();
    Matrix m;
    if (Bit())
    {
        const std::uint32_t bits = UB(5);
        m.a = FB(bits);
        m.d = FB(bits);
    }
    if (Bit())
    {
        const std::uint32_t bits = UB(5);
        m.b = FB(bits);
        m.c = FB(bits);
    }
    const std::uint32_t bits = UB(5);
    m.tx = SB(bits);
    m.ty = SB(bits);
    Align();
    return m;
}

ColourTransform CByteReader::ReadColourTransform(bool withAlpha)
{
    Align();
    const bool hasAdd = Bit();
    const bool hasMultiply = Bit();
    const std::uint32_t bits = UB(4);
    const std::size_t channels = withAlpha ? 4 : 3;
    ColourTransform t;
    if (hasMultiply)
        for (std::size_t i = 0; i < channels; ++i)
            t.multiply[i] = static_cast<float>(SB(bits)) / 256.0F;
    if (hasAdd)
        for (std::size_t i = 0; i < channels; ++i)
            t.add[i] = static_cast<float>(SB(bits));
    Align();
    return t;
}
} // namespace swf
