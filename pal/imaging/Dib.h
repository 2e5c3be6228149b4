/// @file Dib.h
/// Device-independent bitmaps: what BMP files and the entries of icons hold.
#pragma once

#include "pal/imaging/ImageCodec.h"

#include <array>
#include <vector>

namespace pal
{
/// One bitmap with its header read: 1, 2, 4, 8, 16, 24 and 32 bits, palettes, bit fields with alpha, both kinds of run
/// lengths, rows from either end.
class Dib
{
public:
    /// @param bytes        from the information header on
    /// @param pixelOffset  of the first row in @p bytes; 0: they follow header and palette
    /// @param isIcon       the height counts twice, and a mask of 1 bit a pixel follows the rows
    HRESULT ReadHeader(const ImageBytes& bytes, std::size_t pixelOffset, bool isIcon);
    ImageSize Size() const { return m_size; }
    UINT Bits() const { return m_bits; } ///< per pixel
    /// As ImageCodec::Decode().
    HRESULT Decode(BYTE* pTarget, std::size_t stride) const;

private:
    struct Channel
    {
        UINT mask = 0;
        UINT shift = 0;
        UINT bits = 0; ///< 0 for a channel that is not there
    };
    static Channel MakeChannel(UINT mask);

    HRESULT ReadMasks(UINT cbHeader, std::size_t& cbMasks);
    void ReadPalette(std::size_t offset, UINT cbEntry, std::size_t count);
    UINT Row(UINT y) const { return m_isTopDown ? y : m_size.height - 1 - y; }
    std::size_t RowBytes() const { return (std::size_t{m_size.width} * m_bits + 31) / 32 * 4; }
    WICColor PixelAt(const BYTE* pRow, UINT x) const;
    WICColor FromMasks(UINT value) const;
    HRESULT DecodeRows(BYTE* pTarget, std::size_t stride) const;
    HRESULT DecodeRunLengths(BYTE* pTarget, std::size_t stride) const;
    void ApplyIconMask(BYTE* pTarget, std::size_t stride) const;

    ImageBytes m_bytes;
    ImageSize m_size;
    UINT m_bits = 0;
    UINT m_compression = 0;
    bool m_isTopDown = false;
    bool m_isIcon = false;
    std::size_t m_pixelOffset = 0;
    std::array<Channel, 4> m_channels; ///< red, green, blue, alpha
    std::vector<WICColor> m_palette;
};
} // namespace pal
