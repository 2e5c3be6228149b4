#include "companions/swfrenderer/EmbeddedPicture.h"

#include "companions/swfrenderer/ByteReader.h"
#include "companions/swfrenderer/Surface.h"

#include <algorithm>
#include <array>

#include <png.h>

namespace swf
{
namespace
{
bool StartsWith(std::span<const std::uint8_t> data, std::span<const std::uint8_t> start)
{
    return data.size() >= start.size() && std::equal(start.begin(), start.end(), data.begin());
}

/// Straight B, G, R, A to premultiplied.
std::uint32_t Multiply(std::uint32_t pixel)
{
    const std::uint32_t alpha = pixel >> 24;
    return (ScalePixel(pixel, alpha) & 0xFF'FFFFU) | alpha << 24;
}

/// Codes of a GIF's picture: blocks of up to 255 bytes, in which codes of growing width lie low bit first.
class CGifCodes
{
public:
    explicit CGifCodes(std::span<const std::uint8_t> data) : m_reader(data) {}

    /// @return false where the data end.
    bool Next(std::uint32_t width, std::uint32_t& code)
    {
        while (m_nBits < width)
        {
            if (m_blockLeft == 0 && (m_blockLeft = m_reader.U8()) == 0)
                return false;
            m_bits |= std::uint32_t{m_reader.U8()} << m_nBits;
            if (m_reader.Failed())
                return false;
            m_nBits += 8;
            --m_blockLeft;
        }
        code = m_bits & ((1U << width) - 1);
        m_bits >>= width;
        m_nBits -= width;
        return true;
    }

private:
    CByteReader m_reader;
    std::uint32_t m_blockLeft = 0, m_bits = 0, m_nBits = 0;
};

/// Gives the colour numbers of a picture, at most @p most of them.
std::vector<std::uint8_t> UnpackCodes(std::span<const std::uint8_t> data, std::uint32_t bits, std::size_t most)
{
    constexpr std::uint32_t kCodes = 4096, kNone = kCodes;
    std::array<std::uint16_t, kCodes> before{};
    std::array<std::uint8_t, kCodes> last{}, reversed{};
    const std::uint32_t clear = 1U << bits, end = clear + 1;
    for (std::uint32_t i = 0; i < clear; ++i)
        last[i] = static_cast<std::uint8_t>(i);
    std::vector<std::uint8_t> out;
    CGifCodes codes(data);
    std::uint32_t width = bits + 1, next = end + 1, previous = kNone, code = 0;
    std::uint8_t firstOfPrevious = 0;
    while (out.size() < most && codes.Next(width, code) && code != end)
    {
        if (code == clear)
        {
            width = bits + 1;
            next = end + 1;
            previous = kNone;
            continue;
        }
        if (code > next || (code == next && previous == kNone) || (previous == kNone && code > clear))
            break; // no such code yet
        std::size_t n = 0;
        std::uint32_t at = code;
        if (code == next)
        {
            reversed[n++] = firstOfPrevious;
            at = previous;
        }
        for (; at > clear && n + 1 < kCodes; at = before[at])
            reversed[n++] = last[at];
        firstOfPrevious = last[at];
        reversed[n++] = firstOfPrevious;
        for (; n > 0 && out.size() < most; --n)
            out.push_back(reversed[n - 1]);
        if (previous != kNone && next < kCodes)
        {
            before[next] = static_cast<std::uint16_t>(previous);
            last[next] = firstOfPrevious;
            ++next;
            if (next == 1U << width && width < 12)
                ++width;
        }
        previous = code;
    }
    return out;
}

/// Row of the picture for the @p n-th row in an interlaced file.
std::size_t InterlacedRow(std::size_t n, std::size_t height)
{
    for (const auto& [first, step] : {std::pair<std::size_t, std::size_t>{0, 8}, {4, 8}, {2, 4}, {1, 2}})
    {
        const std::size_t rows = height > first ? (height - first + step - 1) / step : 0;
        if (n < rows)
            return first + n * step;
        n -= rows;
    }
    return height;
}

struct GifFrame
{
    std::vector<std::uint32_t> colours;
    std::uint32_t left = 0, top = 0, width = 0, height = 0;
    bool interlaced = false;
    std::uint32_t transparent = 256;
};

void ReadColours(CByteReader& reader, std::uint32_t flags, std::vector<std::uint32_t>& colours)
{
    if ((flags & 0x80) == 0)
        return;
    colours.assign(std::size_t{2} << (flags & 7), 0);
    for (std::uint32_t& colour : colours)
        colour = Premultiplied(reader.Rgb());
}

void PaintGif(const std::vector<std::uint8_t>& numbers, const GifFrame& frame, Bitmap& out)
{
    const auto width = static_cast<std::size_t>(out.width), height = static_cast<std::size_t>(out.height);
    for (std::size_t i = 0; i < numbers.size(); ++i)
    {
        const std::size_t row = i / frame.width;
        const std::size_t y = frame.top + (frame.interlaced ? InterlacedRow(row, frame.height) : row);
        const std::size_t x = frame.left + i % frame.width;
        if (x < width && y < height && numbers[i] != frame.transparent && numbers[i] < frame.colours.size())
            out.pixels[y * width + x] = frame.colours[numbers[i]];
    }
}
} // namespace

bool DescribePng(PackedBitmap& packed)
{
    constexpr std::array<std::uint8_t, 16> kStart{0x89, 'P', 'N', 'G', 13, 10, 26, 10, 0, 0, 0, 13, 'I', 'H', 'D', 'R'};
    if (!StartsWith(packed.data, kStart) || packed.data.size() < 24)
        return false;
    const auto number = [&packed](std::size_t at)
    {
        return std::uint32_t{packed.data[at]} << 24 | std::uint32_t{packed.data[at + 1]} << 16 |
               std::uint32_t{packed.data[at + 2]} << 8 | packed.data[at + 3];
    };
    packed.kind = PackedBitmap::Kind::Png;
    packed.width = number(16);
    packed.height = number(20);
    return SizeIsAllowed(packed.width, packed.height);
}

bool DescribeGif(PackedBitmap& packed)
{
    constexpr std::array<std::uint8_t, 4> kStart{'G', 'I', 'F', '8'};
    if (!StartsWith(packed.data, kStart))
        return false;
    CByteReader reader(packed.data);
    reader.Skip(6);
    packed.kind = PackedBitmap::Kind::Gif;
    packed.width = reader.U16();
    packed.height = reader.U16();
    return !reader.Failed() && SizeIsAllowed(packed.width, packed.height);
}

Bitmap UnpackPng(const PackedBitmap& packed)
{
    Bitmap bitmap;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&image, packed.data.data(), packed.data.size()) == 0)
        return bitmap;
    image.format = PNG_FORMAT_BGRA;
    if (image.width == packed.width && image.height == packed.height)
    {
        bitmap.width = static_cast<int>(packed.width);
        bitmap.height = static_cast<int>(packed.height);
        bitmap.pixels.resize(std::size_t{packed.width} * packed.height);
        // A file that breaks off is an error to the library, but its rows are there.
        (void)png_image_finish_read(&image, nullptr, bitmap.pixels.data(), 0, nullptr);
        for (std::uint32_t& pixel : bitmap.pixels)
            pixel = Multiply(pixel);
    }
    png_image_free(&image);
    return bitmap;
}

Bitmap UnpackGif(const PackedBitmap& packed)
{
    Bitmap bitmap;
    bitmap.width = static_cast<int>(packed.width);
    bitmap.height = static_cast<int>(packed.height);
    bitmap.pixels.assign(std::size_t{packed.width} * packed.height, 0);
    CByteReader reader(packed.data);
    reader.Skip(10);
    GifFrame frame;
    const std::uint8_t screenFlags = reader.U8();
    reader.Skip(2);
    ReadColours(reader, screenFlags, frame.colours);
    while (!reader.Failed())
    {
        const std::uint8_t kind = reader.U8();
        if (kind == '!')
        {
            const bool isControl = reader.U8() == 0xF9;
            for (std::size_t cb = reader.U8(); cb != 0 && !reader.Failed(); cb = reader.U8())
            {
                const auto block = reader.Take(cb);
                if (isControl && block.size() >= 4)
                    frame.transparent = (block[0] & 1) != 0 ? block[3] : 256U;
            }
            continue;
        }
        if (kind != ',')
            break;
        frame.left = reader.U16();
        frame.top = reader.U16();
        frame.width = reader.U16();
        frame.height = reader.U16();
        const std::uint8_t flags = reader.U8();
        frame.interlaced = (flags & 0x40) != 0;
        ReadColours(reader, flags, frame.colours);
        const std::uint32_t bits = reader.U8();
        if (reader.Failed() || bits < 2 || bits > 8 || !SizeIsAllowed(frame.width, frame.height))
            break;
        PaintGif(UnpackCodes(reader.Rest(), bits, std::size_t{frame.width} * frame.height), frame, bitmap);
        break;
    }
    return bitmap;
}
} // namespace swf
