#include "companions/swfrenderer/Container.h"

#include "companions/swfrenderer/ByteReader.h"
#include "companions/swfrenderer/Limits.h"

#include <array>
#include <cstring>

#include <lzma.h>
#include <zlib.h>

namespace swf
{
namespace
{
constexpr std::size_t kPrefix = 8; ///< signature, version, length
constexpr std::size_t kFirstPiece = std::size_t{1} << 20;
constexpr double kDefaultRate = 12; ///< for a header that states 0

/// The output grows as it is filled: the stated length is a promise that a small file need not keep.
bool GrowFor(std::vector<std::uint8_t>& out, std::size_t filled, std::size_t limit)
{
    if (filled < out.size())
        return true;
    if (out.size() >= limit)
        return false;
    out.resize(std::min(limit, std::max(kFirstPiece, out.size() * 2)));
    return true;
}

bool Inflate(std::span<const std::uint8_t> packed, std::size_t limit, std::vector<std::uint8_t>& out)
{
    z_stream z{};
    if (inflateInit(&z) != Z_OK)
        return false;
    z.next_in = const_cast<Bytef*>(packed.data()); // zlib's interface lacks the const
    z.avail_in = static_cast<uInt>(packed.size());
    std::size_t filled = 0;
    int result = Z_OK;
    while (result == Z_OK && GrowFor(out, filled, limit))
    {
        z.next_out = out.data() + filled;
        z.avail_out = static_cast<uInt>(out.size() - filled);
        result = inflate(&z, Z_NO_FLUSH);
        filled = out.size() - z.avail_out;
        if (z.avail_in == 0 && z.avail_out > 0)
            break;
    }
    inflateEnd(&z);
    out.resize(filled);
    return filled > 0;
}

/// After the prefix: four bytes of packed length, five of LZMA properties, then a raw stream. A decoder of ".lzma"
/// files takes it with the header that such files have: properties and unpacked length.
bool UnpackLzma(std::span<const std::uint8_t> packed, std::size_t limit, std::vector<std::uint8_t>& out)
{
    constexpr std::size_t kHeader = 4 + 5;
    constexpr std::uint64_t kMemory = std::uint64_t{64} << 20; ///< of the decoder's dictionary
    if (packed.size() <= kHeader)
        return false;
    lzma_stream z = LZMA_STREAM_INIT;
    if (lzma_alone_decoder(&z, kMemory) != LZMA_OK)
        return false;
    std::array<std::uint8_t, 13> header{};
    std::memcpy(header.data(), packed.data() + 4, 5);
    std::memset(header.data() + 5, 0xFF, 8); // length unknown: the stream says where it ends, or the limit does
    std::size_t filled = 0;
    lzma_ret result = LZMA_OK;
    z.next_in = header.data();
    z.avail_in = header.size();
    bool inHeader = true;
    while (result == LZMA_OK && GrowFor(out, filled, limit))
    {
        z.next_out = out.data() + filled;
        z.avail_out = out.size() - filled;
        result = lzma_code(&z, LZMA_RUN);
        filled = out.size() - z.avail_out;
        if (z.avail_in == 0 && z.avail_out > 0)
        {
            if (!inHeader)
                break;
            inHeader = false;
            z.next_in = packed.data() + kHeader;
            z.avail_in = packed.size() - kHeader;
        }
    }
    lzma_end(&z);
    out.resize(filled);
    return filled > 0;
}
} // namespace

bool OpenContainer(std::span<const std::uint8_t> file, Container& movie)
{
    movie = {};
    if (file.size() < kPrefix || file[1] != 'W' || file[2] != 'S')
        return false;
    movie.version = file[3];
    CByteReader prefix(file.subspan(4, 4));
    const std::size_t length = prefix.U32();
    if (movie.version == 0 || movie.version > kMaxVersion || length <= kPrefix || length > kMaxMovieBytes)
        return false;
    const auto rest = file.subspan(kPrefix);
    const std::size_t limit = length - kPrefix;
    bool unpacked = false;
    if (file[0] == 'F')
    {
        movie.body.assign(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(std::min(limit, rest.size())));
        unpacked = true;
    }
    else if (file[0] == 'C')
        unpacked = Inflate(rest, limit, movie.body);
    else if (file[0] == 'Z')
        unpacked = UnpackLzma(rest, limit, movie.body);
    if (!unpacked)
        return false;

    CByteReader reader(movie.body);
    movie.stage = reader.ReadRect();
    movie.frameRate = reader.U16() / 256.0;
    movie.frameCount = reader.U16();
    movie.tagsAt = reader.Position();
    if (movie.frameRate <= 0)
        movie.frameRate = kDefaultRate;
    return !reader.Failed() && movie.stage.Width() > 0 && movie.stage.Height() > 0;
}
} // namespace swf
