/// @file Bitmap.h
/// Bitmaps of a movie.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace swf
{
/// Premultiplied B, G, R, A pixels.
struct Bitmap
{
    int width = 0, height = 0;
    std::vector<std::uint32_t> pixels;

    std::uint32_t At(int x, int y) const
    {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    }
};

/// A bitmap as it lies in the file. Borrows from the movie's bytes.
struct PackedBitmap
{
    enum class Kind : std::uint8_t
    {
        Jpeg,     ///< with alpha where there are bytes for it
        Lossless, ///< zlib
        Png,      ///< a file of its own
        Gif
    };
    Kind kind = Kind::Jpeg;
    bool hasAlpha = false;                ///< lossless: of the second kind
    std::uint8_t format = 0;              ///< lossless: 3 palette, 4 fifteen bits, 5 twenty-four or thirty-two bits
    std::uint32_t paletteSize = 0;        ///< lossless
    std::uint32_t width = 0, height = 0;  ///< pixels; within the limits
    std::span<const std::uint8_t> tables; ///< JPEG: coding tables that the picture shares
    std::span<const std::uint8_t> data, alpha;
};

/// Whether a bitmap of so many pixels is within the limits, and has any.
bool SizeIsAllowed(std::uint32_t width, std::uint32_t height);

/// Fill in the size. @return false when it cannot be read or is beyond the limits.
bool DescribeJpeg(PackedBitmap& packed);
/// The body of DefineBitsLossless and DefineBitsLossless2 behind the character's number.
bool DescribeLossless(std::span<const std::uint8_t> body, bool withAlpha, PackedBitmap& packed);

/// Unpacks. What the data lack is transparent. @return an empty bitmap when nothing can be read. Throws bad_alloc.
Bitmap Unpack(const PackedBitmap& packed);
} // namespace swf
