#include "tests/host/DecodedVideo.h"

extern "C"
{
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <fstream>
#include <iterator>
#include <memory>

namespace qmx::host
{
namespace
{
void AppendPlane(std::vector<std::uint8_t>& to, const AVFrame& frame, int plane, int width, int height)
{
    for (int row = 0; row < height; ++row)
    {
        const std::uint8_t* const p = frame.data[plane] + static_cast<std::ptrdiff_t>(row) * frame.linesize[plane];
        to.insert(to.end(), p, p + width);
    }
}

void TakeFrames(AVCodecContext* pCodec, AVFrame* pFrame, std::vector<DecodedVideo::Frame>& frames)
{
    while (avcodec_receive_frame(pCodec, pFrame) >= 0)
    {
        DecodedVideo::Frame& frame = frames.emplace_back();
        frame.pts = pFrame->pts;
        AppendPlane(frame.y, *pFrame, 0, pFrame->width, pFrame->height);
        AppendPlane(frame.u, *pFrame, 1, pFrame->width / 2, pFrame->height / 2);
        AppendPlane(frame.v, *pFrame, 2, pFrame->width / 2, pFrame->height / 2);
    }
}

bool HasIndexInFront(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    return bytes.find("moov") < bytes.find("mdat");
}
} // namespace

DecodedVideo::DecodedVideo(const std::filesystem::path& file)
{
    AVFormatContext* pFormat = nullptr;
    if (avformat_open_input(&pFormat, ("file:" + file.string()).c_str(), nullptr, nullptr) < 0)
        return;
    avformat_find_stream_info(pFormat, nullptr);
    const AVCodec* pDecoder = nullptr;
    const int index = av_find_best_stream(pFormat, AVMEDIA_TYPE_VIDEO, -1, -1, &pDecoder, 0);
    if (index >= 0)
    {
        const AVStream& stream = *pFormat->streams[index];
        codec = pDecoder->name;
        width = stream.codecpar->width;
        height = stream.codecpar->height;
        timeBaseNum = stream.time_base.num;
        timeBaseDen = stream.time_base.den;
        frameRateNum = stream.avg_frame_rate.num;
        frameRateDen = stream.avg_frame_rate.den;
        duration = stream.duration;
        colorRange = stream.codecpar->color_range;
        colorSpace = stream.codecpar->color_space;
        colorPrimaries = stream.codecpar->color_primaries;
        colorTransfer = stream.codecpar->color_trc;
        indexInFront = HasIndexInFront(file);
        AVCodecContext* pCodec = avcodec_alloc_context3(pDecoder);
        avcodec_parameters_to_context(pCodec, stream.codecpar);
        readable = avcodec_open2(pCodec, pDecoder, nullptr) >= 0;
        AVPacket* pPacket = av_packet_alloc();
        AVFrame* pFrame = av_frame_alloc();
        while (readable && av_read_frame(pFormat, pPacket) >= 0)
        {
            if (pPacket->stream_index == index && avcodec_send_packet(pCodec, pPacket) >= 0)
                TakeFrames(pCodec, pFrame, frames);
            av_packet_unref(pPacket);
        }
        avcodec_send_packet(pCodec, nullptr);
        TakeFrames(pCodec, pFrame, frames);
        av_frame_free(&pFrame);
        av_packet_free(&pPacket);
        avcodec_free_context(&pCodec);
    }
    avformat_close_input(&pFormat);
}
} // namespace qmx::host
