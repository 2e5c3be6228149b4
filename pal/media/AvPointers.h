/// @file AvPointers.h
/// Owning pointers to FFmpeg objects.
#pragma once

extern "C"
{
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <memory>

namespace pal
{
struct AvDeleter
{
    void operator()(AVFormatContext* p) const { avformat_close_input(&p); }
    void operator()(AVCodecContext* p) const { avcodec_free_context(&p); }
    void operator()(AVPacket* p) const { av_packet_free(&p); }
    void operator()(AVFrame* p) const { av_frame_free(&p); }
    void operator()(SwsContext* p) const { sws_freeContext(p); }
    void operator()(SwrContext* p) const { swr_free(&p); }
};
using AvFormatPtr = std::unique_ptr<AVFormatContext, AvDeleter>;
using AvCodecPtr = std::unique_ptr<AVCodecContext, AvDeleter>;
using AvPacketPtr = std::unique_ptr<AVPacket, AvDeleter>;
using AvFramePtr = std::unique_ptr<AVFrame, AvDeleter>;
using SwsPtr = std::unique_ptr<SwsContext, AvDeleter>;
using SwrPtr = std::unique_ptr<SwrContext, AvDeleter>;
} // namespace pal
