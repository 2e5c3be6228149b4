/// @file LibraryObjects.h
/// Owning pointers to FFmpeg objects, and its errors as those of the host.
#pragma once

#include "host/output/OutputFile.h"

extern "C"
{
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/error.h>
}

#include <array>
#include <cerrno>
#include <memory>
#include <new>
#include <string>

namespace qmx::host
{
struct CodecCloser
{
    void operator()(AVCodecContext* p) const { avcodec_free_context(&p); }
};
struct FrameCloser
{
    void operator()(AVFrame* p) const { av_frame_free(&p); }
};
struct PacketCloser
{
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};
using CodecPtr = std::unique_ptr<AVCodecContext, CodecCloser>;
using FramePtr = std::unique_ptr<AVFrame, FrameCloser>;
using PacketPtr = std::unique_ptr<AVPacket, PacketCloser>;

template <class T> T* NeedMemory(T* p)
{
    if (!p)
        throw std::bad_alloc();
    return p;
}

/// Throws where @p result, a result of the library, is an error.
inline int CheckLibrary(const OutputFile& output, int result)
{
    if (result == AVERROR(ENOMEM))
        throw std::bad_alloc();
    if (result < 0)
    {
        std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
        av_strerror(result, text.data(), text.size());
        output.Fail(std::string("cannot be written: ") + text.data());
    }
    return result;
}
} // namespace qmx::host
