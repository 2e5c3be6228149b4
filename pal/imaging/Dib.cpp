#include "pal/imaging/Dib.h"

#include "pal/imaging/ImageLimits.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace pal
{
namespace
{
constexpr UINT kRgb = 0;
constexpr UINT kRunLengths8 = 1;
constexpr UINT kRunLengths4 = 2;
constexpr UINT kBitFields = 3;
constexpr UINT kAlphaBitFields = 6;

constexpr UINT kCoreHeader = 12;
constexpr UINT kInfoHeader = 40;
constexpr UINT kHeaderWithMasks = 52;
constexpr UINT kHeaderWithAlphaMask = 56;
constexpr UINT kOs2Header = 64; // its third compression is a fax code

constexpr WICColor kOpaque = 0xFF000000U;

bool IsRunLengths(UINT compression)
{
    return compression == kRunLengths8 || compression == kRunLengths4;
}

/// A sample of @p bits bits as one of 8: its bits are repeated below it, so that both ends of the range are met.
UINT WidenToByte(UINT sample, UINT bits)
{
    if (bits >= 8)
        return sample >> (bits - 8);
    UINT filled = 0;
    for (UINT at = 0; at < 8; at += bits)
        filled = filled << bits | sample;
    const UINT surplus = (8 + bits - 1) / bits * bits - 8;
    return filled >> surplus;
}

void PutPixel(BYTE* p, WICColor colour)
{
    p[0] = static_cast<BYTE>(colour);
    p[1] = static_cast<BYTE>(colour >> 8);
    p[2] = static_cast<BYTE>(colour >> 16);
    p[3] = static_cast<BYTE>(colour >> 24);
}
} // namespace

Dib::Channel Dib::MakeChannel(UINT mask)
{
    Channel channel;
    channel.mask = mask;
    if (mask != 0)
    {
        channel.shift = static_cast<UINT>(std::countr_zero(mask));
        channel.bits = static_cast<UINT>(std::bit_width(mask >> channel.shift));
    }
    return channel;
}

HRESULT Dib::ReadHeader(const ImageBytes& bytes, std::size_t pixelOffset, bool isIcon)
{
    m_bytes = bytes;
    m_isIcon = isIcon;
    const UINT cbHeader = bytes.Little32(0);
    const bool isCore = cbHeader == kCoreHeader;
    if (!bytes.Has(0, cbHeader) || (!isCore && cbHeader < 16))
        return WINCODEC_ERR_BADHEADER;
    const auto width = static_cast<std::int32_t>(isCore ? bytes.Little16(4) : bytes.Little32(4));
    std::int64_t height = static_cast<std::int32_t>(isCore ? bytes.Little16(6) : bytes.Little32(8));
    m_isTopDown = height < 0;
    height = m_isTopDown ? -height : height;
    if (isIcon)
        height /= 2;
    m_bits = bytes.Little16(isCore ? 10 : 14);
    // A header may end early; what it does not hold is 0.
    m_compression = cbHeader >= 20 ? bytes.Little32(16) : kRgb;
    const UINT coloursUsed = cbHeader >= 36 ? bytes.Little32(32) : 0;
    if (width <= 0)
        return WINCODEC_ERR_BADHEADER;
    if (!AcceptsPicture(static_cast<UINT>(width), static_cast<std::uint64_t>(height), bytes.Size()))
        return WINCODEC_ERR_IMAGESIZEOUTOFRANGE;
    m_size = {static_cast<UINT>(width), static_cast<UINT>(height)};

    std::size_t cbMasks = 0;
    const HRESULT hr = ReadMasks(cbHeader, cbMasks);
    if (FAILED(hr))
        return hr;
    const std::size_t paletteOffset = cbHeader + cbMasks;
    const UINT cbEntry = isCore ? 3 : 4;
    std::size_t colours = coloursUsed;
    if (m_bits <= 8)
        colours = coloursUsed == 0 || coloursUsed > (1U << m_bits) ? std::size_t{1} << m_bits : coloursUsed;
    if (pixelOffset != 0 && m_bits <= 8)
        colours = std::min(colours, pixelOffset > paletteOffset ? (pixelOffset - paletteOffset) / cbEntry : 0);
    if (m_bits <= 8)
        ReadPalette(paletteOffset, cbEntry, colours);
    m_pixelOffset = pixelOffset != 0 ? pixelOffset : paletteOffset + colours * cbEntry;
    return m_pixelOffset < bytes.Size() ? S_OK : WINCODEC_ERR_BADHEADER;
}

/// Checks depth and compression, and finds the masks of pixels without a palette.
/// @param cbMasks  [out] bytes of masks between header and palette
HRESULT Dib::ReadMasks(UINT cbHeader, std::size_t& cbMasks)
{
    const bool isFields = m_compression == kBitFields || m_compression == kAlphaBitFields;
    const bool isPalette = m_bits == 1 || m_bits == 2 || m_bits == 4 || m_bits == 8;
    if (IsRunLengths(m_compression))
        return m_bits == (m_compression == kRunLengths8 ? 8U : 4U) && !m_isTopDown ? S_OK : WINCODEC_ERR_BADHEADER;
    if (isPalette || m_bits == 24)
        return m_compression == kRgb ? S_OK : WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT;
    if ((m_bits != 16 && m_bits != 32) || (!isFields && m_compression != kRgb) || (isFields && cbHeader == kOs2Header))
        return WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT;

    std::array<UINT, 4> masks{0x00FF0000U, 0x0000FF00U, 0x000000FFU, m_isIcon ? 0xFF000000U : 0U};
    if (m_bits == 16)
        masks = {0x7C00U, 0x03E0U, 0x001FU, 0};
    if (isFields)
    {
        const bool hasAlpha = cbHeader >= kHeaderWithAlphaMask || m_compression == kAlphaBitFields;
        for (std::size_t i = 0; i < 4; ++i)
            masks[i] = i < 3 || hasAlpha ? m_bytes.Little32(kInfoHeader + i * 4) : 0;
        if (cbHeader < kHeaderWithMasks)
            cbMasks = hasAlpha ? 16 : 12;
    }
    else if (m_bits == 32 && cbHeader >= kHeaderWithAlphaMask)
    {
        masks[3] = m_bytes.Little32(kHeaderWithMasks); // stated, and so meant, even without bit fields
    }
    for (std::size_t i = 0; i < 4; ++i)
        m_channels[i] = MakeChannel(masks[i]);
    return S_OK;
}

void Dib::ReadPalette(std::size_t offset, UINT cbEntry, std::size_t count)
{
    m_palette.assign(256, kOpaque); // an index beyond the palette is black
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::size_t at = offset + i * cbEntry;
        m_palette[i] = kOpaque | static_cast<UINT>(m_bytes.Byte(at + 2)) << 16 |
                       static_cast<UINT>(m_bytes.Byte(at + 1)) << 8 | m_bytes.Byte(at);
    }
}

WICColor Dib::FromMasks(UINT value) const
{
    const auto level = [value](const Channel& channel)
    { return WidenToByte((value & channel.mask) >> channel.shift, channel.bits); };
    WICColor colour = m_channels[3].bits != 0 ? level(m_channels[3]) << 24 : kOpaque;
    for (std::size_t i = 0; i < 3; ++i)
        colour |= m_channels[i].bits != 0 ? level(m_channels[i]) << (16 - 8 * i) : 0;
    return colour;
}

WICColor Dib::PixelAt(const BYTE* pRow, UINT x) const
{
    if (m_bits <= 8)
    {
        const UINT perByte = 8 / m_bits;
        const UINT shift = (perByte - 1 - x % perByte) * m_bits;
        return m_palette[static_cast<UINT>(pRow[x / perByte] >> shift) & ((1U << m_bits) - 1)];
    }
    const BYTE* const p = pRow + std::size_t{x} * (m_bits / 8);
    if (m_bits == 24)
        return kOpaque | static_cast<UINT>(p[2]) << 16 | static_cast<UINT>(p[1]) << 8 | p[0];
    UINT value = p[0] | static_cast<UINT>(p[1]) << 8;
    if (m_bits == 32)
        value |= static_cast<UINT>(p[2]) << 16 | static_cast<UINT>(p[3]) << 24;
    return FromMasks(value);
}

HRESULT Dib::Decode(BYTE* pTarget, std::size_t stride) const
{
    const HRESULT hr = IsRunLengths(m_compression) ? DecodeRunLengths(pTarget, stride) : DecodeRows(pTarget, stride);
    if (SUCCEEDED(hr) && m_isIcon)
        ApplyIconMask(pTarget, stride);
    return hr;
}

HRESULT Dib::DecodeRows(BYTE* pTarget, std::size_t stride) const
{
    const std::size_t cbRow = RowBytes();
    const std::size_t cbNeeded = (std::size_t{m_size.width} * m_bits + 7) / 8; // the last row may lack its padding
    bool hasRow = false;
    for (UINT y = 0; y < m_size.height; ++y)
    {
        BYTE* pOut = pTarget + Row(y) * stride;
        const std::size_t at = m_pixelOffset + y * cbRow;
        if (!m_bytes.Has(at, cbNeeded))
        {
            std::memset(pOut, 0, std::size_t{m_size.width} * 4);
            continue;
        }
        hasRow = true;
        const BYTE* const pRow = m_bytes.Data() + at;
        for (UINT x = 0; x < m_size.width; ++x, pOut += 4)
            PutPixel(pOut, PixelAt(pRow, x));
    }
    return hasRow ? S_OK : WINCODEC_ERR_BADIMAGE;
}

/// Pixels that the runs pass over stay transparent.
HRESULT Dib::DecodeRunLengths(BYTE* pTarget, std::size_t stride) const
{
    for (UINT y = 0; y < m_size.height; ++y)
        std::memset(pTarget + y * stride, 0, std::size_t{m_size.width} * 4);
    const bool isHalf = m_compression == kRunLengths4;
    std::uint64_t x = 0;
    std::uint64_t y = 0;
    const auto put = [&](UINT index)
    {
        if (x < m_size.width)
            PutPixel(pTarget + Row(static_cast<UINT>(y)) * stride + x * 4, m_palette[index]);
        ++x;
    };
    std::size_t at = m_pixelOffset;
    while (y < m_size.height && m_bytes.Has(at, 2))
    {
        const UINT count = m_bytes.Byte(at);
        const UINT value = m_bytes.Byte(at + 1);
        at += 2;
        if (count != 0)
        {
            for (UINT i = 0; i < count; ++i)
                put(!isHalf ? value : i % 2 == 0 ? value >> 4 : value & 15);
        }
        else if (value == 0) // end of the row
        {
            x = 0;
            ++y;
        }
        else if (value == 1) // end of the picture
        {
            break;
        }
        else if (value == 2) // a step aside
        {
            x += m_bytes.Byte(at);
            y += m_bytes.Byte(at + 1);
            at += 2;
        }
        else // pixels as they are, padded to words
        {
            for (UINT i = 0; i < value; ++i)
            {
                const UINT byte = m_bytes.Byte(at + (isHalf ? i / 2 : i));
                put(!isHalf ? byte : i % 2 == 0 ? byte >> 4 : byte & 15);
            }
            const std::size_t cb = isHalf ? (value + 1) / 2 : value;
            at += cb + cb % 2;
        }
    }
    return S_OK;
}

/// Sets bits hide pixels. An alpha channel that says anything counts instead.
void Dib::ApplyIconMask(BYTE* pTarget, std::size_t stride) const
{
    bool hasAlpha = false;
    for (UINT y = 0; m_bits == 32 && y < m_size.height && !hasAlpha; ++y)
        for (std::size_t x = 0; x < m_size.width && !hasAlpha; ++x)
            hasAlpha = pTarget[y * stride + x * 4 + 3] != 0;
    if (hasAlpha)
        return;
    const std::size_t cbMaskRow = (std::size_t{m_size.width} + 31) / 32 * 4;
    const std::size_t maskOffset = m_pixelOffset + RowBytes() * m_size.height;
    for (UINT y = 0; y < m_size.height; ++y)
    {
        BYTE* const pOut = pTarget + Row(y) * stride;
        for (UINT x = 0; x < m_size.width; ++x)
        {
            const UINT bits = m_bytes.Byte(maskOffset + y * cbMaskRow + x / 8); // a missing mask hides nothing
            if ((bits >> (7 - x % 8) & 1) != 0)
                PutPixel(pOut + std::size_t{x} * 4, 0);
            else
                pOut[std::size_t{x} * 4 + 3] = 0xFF;
        }
    }
}
} // namespace pal
