#include "companions/swfrenderer/Bitmap.h"

#include "companions/swfrenderer/ByteReader.h"
#include "companions/swfrenderer/Colour.h"
#include "companions/swfrenderer/EmbeddedPicture.h"
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

/// Takes the parts of a JPEG stream together, up to its first scan, and says where in @p bytes that begins.
std::size_t JoinHeaders(std::span<const std::uint8_t> bytes, std::vector<std::uint8_t>& out)
{
    std::size_t i = 0;
    while (i + 1 < bytes.size() && bytes[i] == 0xFF)
    {
        const std::uint8_t marker = bytes[i + 1];
        if (marker == 0xD8 || marker == 0xD9) // the picture's own end comes behind its scans
        {
            if (out.empty())
                out.assign({0xFF, 0xD8});
            i += 2;
            continue;
        }
        if (marker == 0xDA || i + 3 >= bytes.size())
            break;
        const std::size_t end = std::min(bytes.size(), i + 2 + (std::size_t{bytes[i + 2]} << 8 | bytes[i + 3]));
        out.insert(out.end(), bytes.begin() + static_cast<std::ptrdiff_t>(i),
                   bytes.begin() + static_cast<std::ptrdiff_t>(end));
        i = end;
    }
    return std::min(i, bytes.size());
}

/// One stream of tables and picture. Authoring tools left "end, start" between the parts, even in front of the picture.
/// @param cbScans  how much of the scans is wanted
std::vector<std::uint8_t> JoinJpeg(const PackedBitmap& packed, std::size_t cbScans)
{
    std::vector<std::uint8_t> out;
    const std::span<const std::uint8_t> stray = packed.tables.subspan(JoinHeaders(packed.tables, out));
    out.insert(out.end(), stray.begin(), stray.end());
    const std::span<const std::uint8_t> scans = packed.data.subspan(JoinHeaders(packed.data, out));
    const std::size_t cb = std::min(scans.size(), cbScans);
    out.reserve(out.size() + cb);
    out.insert(out.end(), scans.begin(), scans.begin() + static_cast<std::ptrdiff_t>(cb));
    return out;
}

/// Scans of a picture. What is packed has no other marker of that value.
std::size_t CountScans(std::span<const std::uint8_t> data)
{
    std::size_t count = 0;
    for (std::size_t i = 0; i + 1 < data.size(); ++i)
        count += data[i] == 0xFF && data[i + 1] == 0xDA ? 1 : 0;
    return count;
}

/// zlib data, piece by piece.
class CInflater
{
public:
    explicit CInflater(std::span<const std::uint8_t> packed)
    {
        m_z.next_in = const_cast<Bytef*>(packed.data()); // zlib's interface lacks the const
        m_z.avail_in = static_cast<uInt>(packed.size());
        m_bOpen = inflateInit(&m_z) == Z_OK;
        m_bMore = m_bOpen;
    }
    ~CInflater()
    {
        if (m_bOpen)
            inflateEnd(&m_z);
    }
    CInflater(const CInflater&) = delete;
    CInflater& operator=(const CInflater&) = delete;

    /// Fills @p out. What came before an error or the end counts, the rest becomes 0. @return how much came
    std::size_t Read(std::span<std::uint8_t> out)
    {
        m_z.next_out = out.data();
        m_z.avail_out = static_cast<uInt>(out.size());
        if (m_bMore && !out.empty())
            m_bMore = inflate(&m_z, Z_SYNC_FLUSH) == Z_OK && m_z.avail_out == 0;
        const std::size_t cb = m_bOpen ? out.size() - m_z.avail_out : 0;
        std::fill(out.begin() + static_cast<std::ptrdiff_t>(cb), out.end(), std::uint8_t{0});
        return cb;
    }

private:
    z_stream m_z{};
    bool m_bOpen = false, m_bMore = false;
};

Bitmap UnpackJpeg(const PackedBitmap& packed)
{
    Bitmap bitmap;
    const TurboHandle turbo(tjInitDecompress());
    const std::vector<std::uint8_t> stream = JoinJpeg(packed, packed.data.size());
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
    CInflater inflater(packed.alpha);
    std::vector<std::uint8_t> alpha(packed.width);
    for (std::size_t at = 0; at < bitmap.pixels.size(); at += alpha.size())
    {
        const std::size_t known = inflater.Read(alpha);
        for (std::size_t x = 0; x < alpha.size(); ++x)
        {
            // The colours are premultiplied already; the coding may have lifted them above their alpha.
            const std::uint32_t a = x < known ? alpha[x] : 255, p = bitmap.pixels[at + x];
            bitmap.pixels[at + x] =
                std::min(p & 255, a) | std::min(p >> 8 & 255, a) << 8 | std::min(p >> 16 & 255, a) << 16 | a << 24;
        }
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
    CInflater inflater(packed.data);
    std::vector<std::uint8_t> colours(table), row(stride);
    const bool any = inflater.Read(colours) > 0;
    std::vector<std::uint32_t> palette(256, 0);
    for (std::size_t i = 0; i < packed.paletteSize; ++i)
    {
        const std::uint8_t* const p = colours.data() + i * entry;
        const std::uint8_t argb[4] = {packed.hasAlpha ? p[3] : std::uint8_t{255}, p[0], p[1], p[2]};
        palette[i] = ArgbPixel(argb, true);
    }
    bitmap.pixels.resize(width * height);
    for (std::size_t y = 0; y < height; ++y)
    {
        // What is missing is transparent, or the first colour.
        if (inflater.Read(row) == 0 && y == 0 && !any)
            return {};
        const std::uint8_t* p = row.data();
        std::uint32_t* const pOut = bitmap.pixels.data() + y * width;
        for (std::size_t x = 0; x < width; ++x, p += cbPixel)
            pOut[x] = cbPixel == 1 ? palette[*p] : cbPixel == 2 ? FifteenBitPixel(p) : ArgbPixel(p, packed.hasAlpha);
    }
    return bitmap;
}
} // namespace

bool SizeIsAllowed(std::uint32_t width, std::uint32_t height)
{
    return width > 0 && height > 0 && width <= kMaxBitmapSide && height <= kMaxBitmapSide &&
           std::size_t{width} * height <= kMaxBitmapPixels;
}

bool DescribeJpeg(PackedBitmap& packed)
{
    packed.kind = PackedBitmap::Kind::Jpeg;
    if (packed.data.size() > kMaxJpegBytes || packed.tables.size() > kMaxJpegBytes)
        return false;
    const TurboHandle turbo(tjInitDecompress());
    constexpr std::size_t kEnough = 64; // of the first scan: its own header
    const std::vector<std::uint8_t> stream = JoinJpeg(packed, kEnough);
    int width = 0, height = 0, sampling = 0, space = 0;
    if (!turbo || tjDecompressHeader3(turbo.get(), stream.data(), static_cast<unsigned long>(stream.size()), &width,
                                      &height, &sampling, &space) != 0)
        return false;
    packed.width = static_cast<std::uint32_t>(std::max(width, 0));
    packed.height = static_cast<std::uint32_t>(std::max(height, 0));
    // Every scan of a progressive picture goes over all of it, however few bytes it has.
    return SizeIsAllowed(packed.width, packed.height) &&
           CountScans(packed.data) <= kMaxJpegScanPixels / (std::uint64_t{packed.width} * packed.height);
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
    switch (packed.kind)
    {
    case PackedBitmap::Kind::Jpeg:
        return UnpackJpeg(packed);
    case PackedBitmap::Kind::Lossless:
        return UnpackLossless(packed);
    case PackedBitmap::Kind::Png:
        return UnpackPng(packed);
    case PackedBitmap::Kind::Gif:
        return UnpackGif(packed);
    }
    return {};
}
} // namespace swf
