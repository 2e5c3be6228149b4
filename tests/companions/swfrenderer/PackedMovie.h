/// @file PackedMovie.h
/// Movies in the two packed containers.
#pragma once

#include "tests/companions/swfrenderer/MovieBuilder.h"

#include <lzma.h>
#include <zlib.h>

inline Bytes Zlib(const Bytes& body, int level = 1)
{
    Bytes out(compressBound(static_cast<uLong>(body.size())));
    uLongf cb = static_cast<uLongf>(out.size());
    compress2(out.data(), &cb, body.data(), static_cast<uLong>(body.size()), level);
    out.resize(cb);
    return out;
}

/// @param length  that the header states
inline Bytes ZlibMovie(const Bytes& body, std::uint32_t length)
{
    return ByteWriter().Container('C', length).Raw(Zlib(body)).bytes;
}

/// Empty when it cannot be packed.
inline Bytes LzmaMovie(const Bytes& body, std::uint32_t length)
{
    lzma_options_lzma options;
    lzma_lzma_preset(&options, 0);
    Bytes alone(body.size() + body.size() / 8 + 256);
    lzma_stream z = LZMA_STREAM_INIT;
    if (lzma_alone_encoder(&z, &options) != LZMA_OK)
        return {};
    z.next_in = body.data();
    z.avail_in = body.size();
    z.next_out = alone.data();
    z.avail_out = alone.size();
    const bool done = lzma_code(&z, LZMA_FINISH) == LZMA_STREAM_END;
    alone.resize(alone.size() - z.avail_out);
    lzma_end(&z);
    if (!done)
        return {};
    // Five bytes of properties, then the stream without the length that stands between them.
    ByteWriter file;
    file.Container('Z', length).U32(static_cast<std::uint32_t>(alone.size() - 13));
    return file.Raw(Bytes(alone.begin(), alone.begin() + 5)).Raw(Bytes(alone.begin() + 13, alone.end())).bytes;
}
