/// @file EncodedPictures.h
/// Picture files made for a test: by the formats' own libraries, or byte by byte.
#pragma once

#include "tests/support/Picture.h"

#include <cstdint>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// A picture whose every pixel follows from its place. @param alpha  level of all pixels, or below 0: it varies too
test_support::Picture PatternPicture(std::uint32_t width, std::uint32_t height, int alpha = 255);

Bytes MakeJpeg(const test_support::Picture& picture, bool progressive = false);
/// Inks as an Adobe program stores them. @param cmyk  ink amounts, 255 is none
Bytes MakeCmykJpeg(std::uint32_t width, std::uint32_t height, const Bytes& cmyk);
Bytes MakePng(const test_support::Picture& picture, bool interlaced = false);
Bytes MakeWebp(const test_support::Picture& picture); ///< lossless
struct TiffOptions
{
    int orientation = 0;    ///< 0: not stated
    int extraSample = 2;    ///< 1 associated alpha, 2 straight alpha
    std::uint32_t tile = 0; ///< side of the tiles; 0: strips
};
Bytes MakeTiff(const test_support::Picture& picture, const TiffOptions& options = {});

/// An EXIF block without the mark: one directory with an orientation.
Bytes ExifBlock(std::uint16_t orientation, bool bigEndian = false);
Bytes JpegWithExif(const Bytes& jpeg, const Bytes& block);
/// @param atEnd  behind the pixels
Bytes PngWithExif(const Bytes& png, const Bytes& block, bool atEnd);
/// @param animation  offset of the one frame on a canvas of that size; nothing for a still picture
Bytes ExtendedWebp(const Bytes& webp, std::uint32_t width, std::uint32_t height, const Bytes& exif,
                   bool animated = false, std::uint32_t left = 0, std::uint32_t top = 0, std::uint32_t frameWidth = 0,
                   std::uint32_t frameHeight = 0);
/// A chunk of a PNG file, its checksum included.
Bytes PngChunk(const std::string& name, const Bytes& data);

/// Numbers in little-endian order behind each other.
Bytes Little16(std::initializer_list<std::uint32_t> values);
Bytes Little32(std::initializer_list<std::uint32_t> values);
Bytes operator+(Bytes a, const Bytes& b);
