/// @file EncodedVideo.h
/// Videos as the library's own encoders and decoders write and read them.
#pragma once

#include "tests/companions/swfrenderer/MovieBuilder.h"

#include <cstddef>
#include <cstdint>
#include <vector>

extern "C"
{
#include <libavcodec/avcodec.h>
}

/// A square that moves over a ramp, in grey: one byte a pixel, full range.
inline std::uint8_t MovingSquare(int x, int y, int frame)
{
    const bool isInside = x / 16 == frame % 6 && y / 16 == frame / 6 % 4;
    return static_cast<std::uint8_t>(isInside ? 250 - frame : 60 + x / 2 + y);
}

/// Coded pictures of MovingSquare(), and what a decoder that reads them all in order makes of them.
struct EncodedVideo
{
    std::vector<Bytes> packets;
    std::vector<Bytes> pictures; ///< samples in one byte a pixel: luma in video range, or blue

    EncodedVideo(AVCodecID id, AVPixelFormat format, int width, int height, int count, int keyDistance)
    {
        AVCodecContext* pEncoder = Open(avcodec_find_encoder(id), format, width, height, keyDistance);
        AVCodecContext* pDecoder = Open(avcodec_find_decoder(id), format, width, height, keyDistance);
        AVFrame* pFrame = av_frame_alloc();
        AVPacket* pPacket = av_packet_alloc();
        for (int n = 0; pEncoder && pDecoder && n < count; ++n)
        {
            pFrame->format = format;
            pFrame->width = width;
            pFrame->height = height;
            pFrame->pts = n;
            av_frame_get_buffer(pFrame, 0);
            Paint(*pFrame, n);
            avcodec_send_frame(pEncoder, pFrame);
            av_frame_unref(pFrame);
            if (avcodec_receive_packet(pEncoder, pPacket) < 0)
                break;
            packets.emplace_back(pPacket->data, pPacket->data + pPacket->size);
            avcodec_send_packet(pDecoder, pPacket);
            av_packet_unref(pPacket);
            if (avcodec_receive_frame(pDecoder, pFrame) < 0)
                break;
            Keep(*pFrame);
            av_frame_unref(pFrame);
        }
        av_packet_free(&pPacket);
        av_frame_free(&pFrame);
        avcodec_free_context(&pDecoder);
        avcodec_free_context(&pEncoder);
    }

private:
    /// Null when the library has no such codec. Owned by the caller.
    static AVCodecContext* Open(const AVCodec* pCodec, AVPixelFormat format, int width, int height, int keyDistance)
    {
        AVCodecContext* pContext = pCodec ? avcodec_alloc_context3(pCodec) : nullptr;
        if (!pContext)
            return nullptr;
        pContext->width = width;
        pContext->height = height;
        pContext->pix_fmt = format;
        pContext->time_base = {1, 25};
        pContext->gop_size = keyDistance;
        pContext->bit_rate = 2'000'000;
        pContext->idct_algo = FF_IDCT_FAAN;
        if (avcodec_open2(pContext, pCodec, nullptr) < 0)
            avcodec_free_context(&pContext);
        return pContext;
    }
    static int SamplesPerPixel(const AVFrame& frame) { return frame.format == AV_PIX_FMT_BGR24 ? 3 : 1; }
    static void Paint(AVFrame& frame, int n)
    {
        const int samples = SamplesPerPixel(frame);
        for (int y = 0; y < frame.height; ++y)
            for (int x = 0; x < frame.width * samples; ++x)
                frame.data[0][std::ptrdiff_t{y} * frame.linesize[0] + x] = MovingSquare(x / samples, y, n);
        for (int plane = 1; plane < 3 && samples == 1; ++plane)
            for (int y = 0; y < frame.height / 2; ++y)
                for (int x = 0; x < frame.width / 2; ++x)
                    frame.data[plane][std::ptrdiff_t{y} * frame.linesize[plane] + x] = 128;
    }
    void Keep(const AVFrame& frame)
    {
        const int samples = SamplesPerPixel(frame);
        Bytes& picture = pictures.emplace_back();
        for (int y = 0; y < frame.height; ++y)
            for (int x = 0; x < frame.width; ++x)
                picture.push_back(frame.data[0][std::ptrdiff_t{y} * frame.linesize[0] + x * samples]);
    }
};
