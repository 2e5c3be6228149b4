#include "companions/swfrenderer/Bitmap.h"

#include "companions/swfrenderer/ByteReader.h"
#include "companions/swfrenderer/Colour.h"
#include "companions/swfrenderer/Limits.h"

#include <algorithm>
#include <memory>

#include <turbojpeg.h>
#include <zlib.h>

namespace swf
{
namespace
{
struct TurboClose
{
    void operator()(void* p) const { tjDestroy(p); }
};
using TurboHandle = std::unique_ptr<void, TurboClose>;

bool SizeIsAllowed(std::uint32_t width, std::uint32_t height)
{
    return width > 0 && height > 0 && width <= kMaxBitmapSide && height <= kMaxBitmapSide &&
           std::size_t{width} * height <= kMaxBitmapPixels;
}

/// One stream of tables and picture. Authoring tools left "end, start" between the parts, even in front of the picture.
std::vector<std::uint8_t> JoinJpeg(const PackedBitmap& packed)
{
    std::vector<std::uint8_t> stream(packed.tables.begin(), packed.tables.end());
    stream.insert(stream.end(), packed.data.begin(), packed.data.end());
    std::vector<std::uint8_t> out;
    out.reserve(stream.size());
    bool started = false;
    std::size_t i = 0;
    while (i + 1 < stream.size() && stream[i] == 0xFF)
    {
        const std::uint8_t marker = stream[i + 1];
        if (marker == 0xD8 || marker == 0xD9) // the picture's own end comes behind its scans
        {
            if (!started)
                out.insert(out.end(), {0xFF, 0xD8});
            started = true;
            i += 2;
            continue;
        }
        if (marker == 0xDA || i + 3 >= stream.size())
            break;
        const std::size_t end = std::min(stream.size(), i + 2 + (std::size_t{stream[i + 2]} << 8 | stream[i + 3]));
        out.insert(out.end(), stream.begin() + static_cast<std::ptrdiff_t>(i),
                   stream.begin() + static_cast<std::ptrdiff_t>(end));
        i = end;
    }
    out.insert(out.end(), stream.begin() + static_cast<std::ptrdiff_t>(std::min(i, stream.size())), stream.end());
    return out;
}

/// At most @p cb bytes.
std::vector<std::uint8_t> InflateAtMost(std::span<const std::uint8_t> packed, std::size_t cb)
{
    std::vector<std::uint8_t> out(cb);
    z_stream z{};
    if (inflateInit(&z) != Z_OK)
        return {};
    z.next_in = const_cast<Bytef*>(packed.data());
    z.avail_in = static_cast<uInt>(packed.size());
    z.next_out = out.data();
    z.avail_out = static_cast<uInt>(cb);
    (void)inflate(&z, Z_FINISH); // what came before an error counts
    out.resize(cb - z.avail_out);
    inflateEnd(&z);
    return out;
}

Bitmap UnpackJpeg(const PackedBitmap& packed)
{
    Bitmap bitmap;
    const TurboHandle turbo(tjInitDecompress());
    const std::vector<std::uint8_t> stream = JoinJpeg(packed);
    if (!turbo)
        return bitmap;
    bitmap.width = static_cast<int>(packed.width);
    bitmap.height = static_cast<int>(packed.height);
    bitmap.pixels.resize(std::size_t{packed.width} * packed.height);
    // A picture that breaks off is a warning: its rows are there.
    if (tjDecompress2(turbo.get(), stream.data(), static_cast<unsigned long>(stream.size()),
                      reinterpret_cast<unsigned char*>(bitmap.pixels.data()), bitmap.width, 0, bitmap.height, TJPF_BGRA,
                      TJFLAG_ACCURATEDCT | TJFLAG_LIMITSCANS) != 0 &&
        tjGetErrorCode(turbo.get()) == TJERR_FATAL)
        return {};
    if (packed.alpha.empty())
        return bitmap;
    const std::vector<std::uint8_t> alpha = InflateAtMost(packed.alpha, bitmap.pixels.size());
    for (std::size_t i = 0; i < bitmap.pixels.size(); ++i)
    {
        // The colours are premultiplied already; the coding may have lifted them above their alpha.
        const std::uint32_t a = i < alpha.size() ? alpha[i] : 255, p = bitmap.pixels[i];
        bitmap.pixels[i] =
            std::min(p & 255, a) | std::min(p >> 8 & 255, a) << 8 | std::min(p >> 16 & 255, a) << 16 | a << 24;
    }
    return bitmap;
}

/// Premultiplied; of the bytes A, R, G, B.
std::uint32_t ArgbPixel(const std::uint8_t* p, bool hasAlpha)
{
    const std::uint32_t a = hasAlpha ? p[0] : 255U;
    return std::min<std::uint32_t>(p[3], a) | std::min<std::uint32_t>(p[2], a) << 8 |
           std::min<std::uint32_t>(p[1], a) << 16 | a << 24;
}

std::uint32_t FifteenBitPixel(const std::uint8_t* p)
{
    const std::uint32_t v = std::uint32_t{p[0]} << 8 | p[1];
    const auto widen = [](std::uint32_t c) { return (c & 31) << 3 | (c & 31) >> 2; };
    return widen(v) | widen(v >> 5) << 8 | widen(v >> 10) << 16 | 0xFF000000U;
}

Bitmap UnpackLossless(const PackedBitmap& packed)
{
    Bitmap bitmap;
    bitmap.width = static_cast<int>(packed.width);
    bitmap.height = static_cast<int>(packed.height);
    const std::size_t width = packed.width, height = packed.height;
    const std::size_t entry = packed.hasAlpha ? 4 : 3;
    const std::size_t table = packed.paletteSize * entry;
    const std::size_t cbPixel = packed.format == 3 ? 1 : packed.format == 4 ? 2 : 4;
    const std::size_t stride = (width * cbPixel + 3) / 4 * 4;
    std::vector<std::uint8_t> bytes = InflateAtMost(packed.data, table + stride * height);
    if (bytes.empty())
        return {};
    bytes.resize(table + stride * height); // what is missing is transparent, or the first colour
    std::vector<std::uint32_t> palette(256, 0);
    for (std::size_t i = 0; i < packed.paletteSize; ++i)
    {
        const std::uint8_t* const p = bytes.data() + i * entry;
        const std::uint8_t argb[4] = {packed.hasAlpha ? p[3] : std::uint8_t{255}, p[0], p[1], p[2]};
        palette[i] = ArgbPixel(argb, true);
    }
    bitmap.pixels.resize(width * height);
    for (std::size_t y = 0; y < height; ++y)
    {
        const std::uint8_t* p = bytes.data() + table + y * stride;
        std::uint32_t* const pOut = bitmap.pixels.data() + y * width;
        for (std::size_t x = 0; x < width; ++x, p += cbPixel)
            pOut[x] = cbPixel == 1 ? palette[*p] : cbPixel == 2 ? FifteenBitPixel(p) : ArgbPixel(p, packed.hasAlpha);
    }
    return bitmap;
}
} // namespace

bool DescribeJpeg(PackedBitmap& packed)
{
    packed.kind = PackedBitmap::Kind::Jpeg;
    const TurboHandle turbo(tjInitDecompress());
    const std::vector<std::uint8_t> stream = JoinJpeg(packed);
    int width = 0, height = 0, sampling = 0, space = 0;
    if (!turbo || tjDecompressHeader3(turbo.get(), stream.data(), static_cast<unsigned long>(stream.size()), &width,
                                      &height, &sampling, &space) != 0)
        return false;
    packed.width = static_cast<std::uint32_t>(std::max(width, 0));
    packed.height = static_cast<std::uint32_t>(std::max(height, 0));
    return SizeIsAllowed(packed.width, packed.height);
}

bool DescribeLossless(std::span<const std::uint8_t> body, bool withAlpha, PackedBitmap& packed)
{
    CByteReader reader(body);
    packed.kind = PackedBitmap::Kind::Lossless;
    packed.hasAlpha = withAlpha;
    packed.format = reader.U8();
    packed.width = reader.U16();
    packed.height = reader.U16();
    if (packed.format == 3)
        packed.paletteSize = reader.U8() + 1U;
    packed.data = reader.Rest();
    return !reader.Failed() && packed.format >= 3 && packed.format <= 5 && SizeIsAllowed(packed.width, packed.height);
}

Bitmap Unpack(const PackedBitmap& packed)
{
    return packed.kind == PackedBitmap::Kind::Jpeg ? UnpackJpeg(packed) : UnpackLossless(packed);
}
} // namespace swf
