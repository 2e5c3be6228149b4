#include "tests/pal/imaging/EncodedPictures.h"

#include "tests/support/MediaFolder.h"

#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>
#include <turbojpeg.h>
#include <webp/encode.h>
#include <zlib.h>

#include <algorithm>
#include <fstream>

using test_support::Picture;

Picture PatternPicture(std::uint32_t width, std::uint32_t height, int alpha)
{
    Picture picture{width, height, {}};
    for (std::uint32_t y = 0; y < height; ++y)
    {
        for (std::uint32_t x = 0; x < width; ++x)
        {
            for (const std::uint32_t level : {x * 37 + y * 11, x * 5 + y * 53 + 80, x * 3 + y * 7 + 160,
                                              alpha < 0 ? x * 29 + y * 13 : static_cast<std::uint32_t>(alpha)})
                picture.bgra.push_back(static_cast<std::uint8_t>(level));
        }
    }
    return picture;
}

namespace
{
Bytes Compress(const std::uint8_t* pPixels, std::uint32_t width, std::uint32_t height, int format, int flags)
{
    const tjhandle turbo = tjInitCompress();
    unsigned char* pJpeg = nullptr;
    unsigned long cb = 0;
    EXPECT_EQ(tjCompress2(turbo, pPixels, static_cast<int>(width), 0, static_cast<int>(height), format, &pJpeg, &cb,
                          TJSAMP_444, 95, flags),
              0);
    Bytes bytes(pJpeg, pJpeg + cb);
    tjFree(pJpeg);
    tjDestroy(turbo);
    return bytes;
}

void AppendToBytes(png_structp pPng, png_bytep pData, std::size_t cb)
{
    auto& bytes = *static_cast<Bytes*>(png_get_io_ptr(pPng));
    bytes.insert(bytes.end(), pData, pData + cb);
}
} // namespace

Bytes MakeJpeg(const Picture& picture, bool progressive)
{
    return Compress(picture.bgra.data(), picture.width, picture.height, TJPF_BGRA,
                    progressive ? TJFLAG_PROGRESSIVE : 0);
}

Bytes MakeCmykJpeg(std::uint32_t width, std::uint32_t height, const Bytes& cmyk)
{
    return Compress(cmyk.data(), width, height, TJPF_CMYK, 0);
}

Bytes MakePng(const Picture& picture, bool interlaced)
{
    Bytes bytes;
    png_structp pPng = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop pInfo = png_create_info_struct(pPng);
    png_set_write_fn(pPng, &bytes, AppendToBytes, nullptr);
    png_set_IHDR(pPng, pInfo, picture.width, picture.height, 8, PNG_COLOR_TYPE_RGB_ALPHA,
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_set_bgr(pPng);
    std::vector<png_bytep> rows;
    for (std::uint32_t y = 0; y < picture.height; ++y)
        rows.push_back(const_cast<png_bytep>(picture.At(0, y)));
    png_set_rows(pPng, pInfo, rows.data());
    png_write_png(pPng, pInfo, PNG_TRANSFORM_BGR, nullptr);
    png_destroy_write_struct(&pPng, &pInfo);
    return bytes;
}

Bytes MakeWebp(const Picture& picture)
{
    std::uint8_t* pWebp = nullptr;
    const std::size_t cb =
        WebPEncodeLosslessBGRA(picture.bgra.data(), static_cast<int>(picture.width), static_cast<int>(picture.height),
                               static_cast<int>(picture.width * 4), &pWebp);
    Bytes bytes(pWebp, pWebp + cb);
    WebPFree(pWebp);
    return bytes;
}

Bytes MakeTiff(const Picture& picture, const TiffOptions& options)
{
    const std::string path = (test_support::ScratchFolder() / "made.tif").string();
    TIFF* const pTiff = TIFFOpen(path.c_str(), "w");
    TIFFSetField(pTiff, TIFFTAG_IMAGEWIDTH, picture.width);
    TIFFSetField(pTiff, TIFFTAG_IMAGELENGTH, picture.height);
    TIFFSetField(pTiff, TIFFTAG_SAMPLESPERPIXEL, 4);
    TIFFSetField(pTiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(pTiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(pTiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(pTiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    const std::uint16_t extra = static_cast<std::uint16_t>(options.extraSample);
    TIFFSetField(pTiff, TIFFTAG_EXTRASAMPLES, 1, &extra);
    if (options.orientation != 0)
        TIFFSetField(pTiff, TIFFTAG_ORIENTATION, options.orientation);
    Bytes rgba = picture.bgra;
    for (std::size_t i = 0; i < rgba.size(); i += 4)
        std::swap(rgba[i], rgba[i + 2]);
    if (options.tile != 0)
    {
        TIFFSetField(pTiff, TIFFTAG_TILEWIDTH, options.tile);
        TIFFSetField(pTiff, TIFFTAG_TILELENGTH, options.tile);
        Bytes tile(std::size_t{options.tile} * options.tile * 4);
        TIFFWriteTile(pTiff, tile.data(), 0, 0, 0, 0);
    }
    for (std::uint32_t y = 0; options.tile == 0 && y < picture.height; ++y)
        TIFFWriteScanline(pTiff, &rgba[std::size_t{y} * picture.width * 4], y, 0);
    TIFFClose(pTiff);
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Bytes ExifBlock(std::uint16_t orientation, bool bigEndian)
{
    const auto low = static_cast<std::uint8_t>(orientation);
    const auto high = static_cast<std::uint8_t>(orientation >> 8);
    if (bigEndian)
        return {'M', 'M',  0, '*', 0, 0, 0, 8, 0,    1,                      // directory at 8, one entry
                1,   0x12, 0, 3,   0, 0, 0, 1, high, low, 0, 0, 0, 0, 0, 0}; // tag 0x0112, a short
    return {'I', 'I', '*', 0, 8, 0, 0, 0, 1, 0, 0x12, 1, 3, 0, 1, 0, 0, 0, low, high, 0, 0, 0, 0, 0, 0};
}

Bytes JpegWithExif(const Bytes& jpeg, const Bytes& block)
{
    const std::size_t cb = block.size() + 8;
    Bytes bytes{0xFF, 0xD8, 0xFF, 0xE1, static_cast<std::uint8_t>(cb >> 8), static_cast<std::uint8_t>(cb), 'E', 'x',
                'i',  'f',  0,    0};
    bytes.insert(bytes.end(), block.begin(), block.end());
    bytes.insert(bytes.end(), jpeg.begin() + 2, jpeg.end());
    return bytes;
}

Bytes PngChunk(const std::string& name, const Bytes& data)
{
    const auto put = [](Bytes& bytes, std::uint32_t value)
    {
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    };
    Bytes named(name.begin(), name.end());
    named.insert(named.end(), data.begin(), data.end());
    Bytes bytes;
    put(bytes, static_cast<std::uint32_t>(data.size()));
    bytes.insert(bytes.end(), named.begin(), named.end());
    put(bytes, static_cast<std::uint32_t>(crc32(0, named.data(), static_cast<uInt>(named.size()))));
    return bytes;
}

Bytes PngWithExif(const Bytes& png, const Bytes& block, bool atEnd)
{
    constexpr std::ptrdiff_t kBehindHeader = 8 + 25;
    constexpr std::ptrdiff_t kEnd = 12;
    const Bytes chunk = PngChunk("eXIf", block);
    Bytes bytes = png;
    bytes.insert(atEnd ? bytes.end() - kEnd : bytes.begin() + kBehindHeader, chunk.begin(), chunk.end());
    return bytes;
}

Bytes Little16(std::initializer_list<std::uint32_t> values)
{
    Bytes bytes;
    for (const std::uint32_t value : values)
        for (int shift = 0; shift < 16; shift += 8)
            bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    return bytes;
}

Bytes Little32(std::initializer_list<std::uint32_t> values)
{
    Bytes bytes;
    for (const std::uint32_t value : values)
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    return bytes;
}

Bytes operator+(Bytes a, const Bytes& b)
{
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

namespace
{
Bytes Little24(std::uint32_t value)
{
    return {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value >> 16)};
}

Bytes RiffChunk(const std::string& name, const Bytes& data)
{
    Bytes bytes(name.begin(), name.end());
    bytes = bytes + Little32({static_cast<std::uint32_t>(data.size())}) + data;
    if (data.size() % 2 != 0)
        bytes.push_back(0);
    return bytes;
}
} // namespace

Bytes ExtendedWebp(const Bytes& webp, std::uint32_t width, std::uint32_t height, const Bytes& exif, bool animated,
                   std::uint32_t left, std::uint32_t top, std::uint32_t frameWidth, std::uint32_t frameHeight)
{
    const Bytes picture(webp.begin() + 12, webp.end()); // its chunk without the file's header
    const auto flags = static_cast<std::uint32_t>((animated ? 2 : 0) | (exif.empty() ? 0 : 8) | 16);
    Bytes body{'W', 'E', 'B', 'P'};
    body = body + RiffChunk("VP8X", Little32({flags}) + Little24(width - 1) + Little24(height - 1));
    if (animated)
    {
        body = body + RiffChunk("ANIM", {0, 0, 0, 0, 0, 0});
        body = body + RiffChunk("ANMF", Little24(left / 2) + Little24(top / 2) + Little24(frameWidth - 1) +
                                            Little24(frameHeight - 1) + Little24(100) + Bytes{0} + picture);
    }
    else
    {
        body = body + picture;
    }
    if (!exif.empty())
        body = body + RiffChunk("EXIF", exif);
    return RiffChunk("RIFF", body);
}
