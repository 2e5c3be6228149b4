/// @file ImageLimits.h
/// What one picture file may take, whatever its headers claim. Every codec asks here before it takes memory.
#pragma once

#include <cstddef>
#include <cstdint>

namespace pal
{
inline constexpr std::uint32_t kMaxImageSide = 32'767; ///< pixels, each way
/// Pixels of one picture: 1 GiB once it is BGRA, the largest frame buffer.
inline constexpr std::uint64_t kMaxImagePixels = 16'384ULL * 16'384;
/// Up to this size (4K) a picture may be as empty as it likes.
inline constexpr std::uint64_t kSmallImagePixels = 4'096ULL * 2'304;
/// A larger one must have a byte of file for so many pixels. A blank RGB picture deflates to a byte for 344 pixels at
/// best, a blank RGBA one to a byte for 258; files beyond that are made to be large.
inline constexpr std::uint64_t kMaxPixelsPerFileByte = 512;
/// A file is read as a whole.
inline constexpr std::uint64_t kMaxImageFileBytes = 512ULL << 20;
/// Frames of an animation and pages of a document; what comes after them is not looked at.
inline constexpr std::uint32_t kMaxImageFrames = 65'536;
inline constexpr std::uint32_t kMaxIconEntries = 256;
/// Scans of a progressive JPEG picture, times its pixels: each scan passes over all coefficients.
inline constexpr std::uint64_t kMaxScannedPixels = 2'000'000'000;
/// Bytes of an EXIF block that are looked at.
inline constexpr std::size_t kMaxExifBytes = 1U << 20;

/// Whether a picture of that size can be in a file of @p cbFile bytes.
constexpr bool AcceptsPicture(std::uint64_t width, std::uint64_t height, std::uint64_t cbFile)
{
    if (width == 0 || height == 0 || width > kMaxImageSide || height > kMaxImageSide)
        return false;
    const std::uint64_t pixels = width * height;
    return pixels <= kMaxImagePixels && (pixels <= kSmallImagePixels || pixels / kMaxPixelsPerFileByte <= cbFile);
}
} // namespace pal
