#include "bench/RawLoop.h"

#include <libyuv.h>

#include <thread>

namespace qmx::bench
{
bool RawLoop::Open(const std::string& path)
{
    AVFormatContext* pFormat = nullptr;
    if (avformat_open_input(&pFormat, path.c_str(), nullptr, nullptr) < 0)
        return false;
    m_pFormat.reset(pFormat);
    if (avformat_find_stream_info(pFormat, nullptr) < 0)
        return false;
    const AVCodec* pDecoder = nullptr;
    const int index = av_find_best_stream(pFormat, AVMEDIA_TYPE_VIDEO, -1, -1, &pDecoder, 0);
    if (index < 0)
        return false;
    m_pStream = pFormat->streams[index];
    m_pCodec.reset(avcodec_alloc_context3(pDecoder));
    avcodec_parameters_to_context(m_pCodec.get(), m_pStream->codecpar);
    m_pCodec->thread_count = static_cast<int>(std::thread::hardware_concurrency());
    m_pFrame.reset(av_frame_alloc());
    m_pPacket.reset(av_packet_alloc());
    return avcodec_open2(m_pCodec.get(), pDecoder, nullptr) >= 0;
}

bool RawLoop::Decode()
{
    for (;;)
    {
        const int result = avcodec_receive_frame(m_pCodec.get(), m_pFrame.get());
        if (result >= 0)
        {
            ++m_decoded;
            return true;
        }
        if (result != AVERROR(EAGAIN))
            return false;
        bool sent = false;
        while (!sent)
        {
            if (av_read_frame(m_pFormat.get(), m_pPacket.get()) < 0)
            {
                avcodec_send_packet(m_pCodec.get(), nullptr);
                break;
            }
            sent = m_pPacket->stream_index == m_pStream->index;
            if (sent)
                avcodec_send_packet(m_pCodec.get(), m_pPacket.get());
            av_packet_unref(m_pPacket.get());
        }
    }
}

bool RawLoop::SeekAndDecode(std::int64_t pts)
{
    if (av_seek_frame(m_pFormat.get(), m_pStream->index, pts, AVSEEK_FLAG_BACKWARD) < 0)
        return false;
    avcodec_flush_buffers(m_pCodec.get());
    while (Decode())
        if (m_pFrame->best_effort_timestamp >= pts)
            return true;
    return false;
}

const std::uint8_t* RawLoop::ConvertAndScale(int width, int height)
{
    const AVFrame& frame = *m_pFrame;
    if (frame.format != AV_PIX_FMT_YUV420P)
        return nullptr;
    m_full.resize(static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height) * 4);
    m_scaled.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    libyuv::I420ToARGBMatrix(frame.data[0], frame.linesize[0], frame.data[1], frame.linesize[1], frame.data[2],
                             frame.linesize[2], m_full.data(), frame.width * 4, &libyuv::kYuvH709Constants, frame.width,
                             frame.height);
    libyuv::ARGBScale(m_full.data(), frame.width * 4, frame.width, frame.height, m_scaled.data(), width * 4, width,
                      height, libyuv::kFilterBilinear);
    return m_scaled.data();
}
} // namespace qmx::bench
