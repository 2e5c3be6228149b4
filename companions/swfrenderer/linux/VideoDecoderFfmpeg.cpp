#include "companions/swfrenderer/VideoDecoder.h"

#include <algorithm>
#include <cstring>

extern "C"
{
#include <libavcodec/avcodec.h>
}

namespace swf
{
namespace
{
AVCodecID CodecOf(std::uint32_t codec)
{
    switch (codec)
    {
    case 2:
        return AV_CODEC_ID_FLV1;
    case 3:
        return AV_CODEC_ID_FLASHSV;
    case 4:
        return AV_CODEC_ID_VP6F;
    case 5:
        return AV_CODEC_ID_VP6A;
    case 6:
        return AV_CODEC_ID_FLASHSV2;
    default:
        return AV_CODEC_ID_NONE;
    }
}

std::uint32_t Level(double v)
{
    return static_cast<std::uint32_t>(std::clamp(v, 0.0, 255.0) + 0.5);
}

/// Rec. ITU-R BT.601 in video range, chroma samples shared by the pixels they stand for.
std::uint32_t FromYuv(int y, int u, int v)
{
    const double luma = 255.0 / 219 * (y - 16);
    const double blue = 255.0 / 112 * (u - 128), red = 255.0 / 112 * (v - 128);
    return Level(luma + 0.886 * blue) | Level(luma - 0.886 * 0.114 / 0.587 * blue - 0.701 * 0.299 / 0.587 * red) << 8 |
           Level(luma + 0.701 * red) << 16;
}

void Convert(const AVFrame& frame, Bitmap& out)
{
    const int width = std::min(out.width, frame.width), height = std::min(out.height, frame.height);
    const bool hasAlpha = frame.format == AV_PIX_FMT_YUVA420P;
    for (int y = 0; y < height; ++y)
    {
        std::uint32_t* const pOut =
            out.pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(out.width);
        if (frame.format == AV_PIX_FMT_BGR24)
        {
            const std::uint8_t* p = frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0];
            for (int x = 0; x < width; ++x, p += 3)
                pOut[x] = p[0] | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16 | 0xFF000000U;
            continue;
        }
        if (frame.format != AV_PIX_FMT_YUV420P && !hasAlpha)
            return;
        const std::uint8_t* const pY = frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0];
        const std::uint8_t* const pU = frame.data[1] + std::ptrdiff_t{y / 2} * frame.linesize[1];
        const std::uint8_t* const pV = frame.data[2] + std::ptrdiff_t{y / 2} * frame.linesize[2];
        const std::uint8_t* const pA = hasAlpha ? frame.data[3] + std::ptrdiff_t{y} * frame.linesize[3] : nullptr;
        for (int x = 0; x < width; ++x)
        {
            pOut[x] = FromYuv(pY[x], pU[x / 2], pV[x / 2]) | 0xFF000000U;
            if (pA)
                pOut[x] = Premultiplied(Rgba{static_cast<std::uint8_t>(pOut[x] >> 16),
                                             static_cast<std::uint8_t>(pOut[x] >> 8),
                                             static_cast<std::uint8_t>(pOut[x]), pA[x]});
        }
    }
}
} // namespace

struct CVideoDecoder::Codec
{
    AVCodecContext* pContext = nullptr; // owned
    AVFrame* pFrame = nullptr;          // owned
    AVPacket* pPacket = nullptr;        // owned
    std::vector<std::uint8_t> bytes;    ///< of the packet, with the padding that decoders read beyond

    ~Codec() { Close(); }
    void Close()
    {
        avcodec_free_context(&pContext);
        av_frame_free(&pFrame);
        av_packet_free(&pPacket);
    }
    bool Open(const VideoStream& stream)
    {
        Close();
        const AVCodec* const pCodec = avcodec_find_decoder(CodecOf(stream.codec));
        pContext = pCodec ? avcodec_alloc_context3(pCodec) : nullptr;
        pFrame = av_frame_alloc();
        pPacket = av_packet_alloc();
        if (!pContext || !pFrame || !pPacket)
            return false;
        pContext->width = static_cast<int>(stream.width);
        pContext->height = static_cast<int>(stream.height);
        pContext->thread_count = 1; // frame threads would hold pictures back
        pContext->max_pixels = std::int64_t{stream.width} * stream.height * 4 + 65'536;
        return avcodec_open2(pContext, pCodec, nullptr) >= 0;
    }
    bool Decode(std::span<const std::uint8_t> data, Bitmap& picture)
    {
        bytes.assign(data.begin(), data.end());
        bytes.resize(data.size() + AV_INPUT_BUFFER_PADDING_SIZE, 0);
        pPacket->data = bytes.data();
        pPacket->size = static_cast<int>(data.size());
        bool got = false;
        if (avcodec_send_packet(pContext, pPacket) >= 0)
            while (avcodec_receive_frame(pContext, pFrame) >= 0)
            {
                Convert(*pFrame, picture);
                got = true;
            }
        pPacket->data = nullptr;
        pPacket->size = 0;
        return got;
    }
};

CVideoDecoder::CVideoDecoder(const VideoStream& stream) : m_stream(stream) {}
CVideoDecoder::~CVideoDecoder() = default;

const Bitmap* CVideoDecoder::FrameAt(std::uint32_t number)
{
    if (!m_pCodec || number + 1 < m_next)
    {
        m_pCodec = std::make_unique<Codec>();
        m_next = 0;
        m_picture = {};
        if (!m_pCodec->Open(m_stream))
            m_next = 0xFFFF'FFFFU; // nothing decodes
    }
    for (; m_next <= number && m_next < m_stream.frames.size(); ++m_next)
    {
        const auto data = m_stream.frames[m_next];
        if (data.empty())
            continue;
        if (m_picture.pixels.empty())
        {
            m_picture.width = static_cast<int>(m_stream.width);
            m_picture.height = static_cast<int>(m_stream.height);
            m_picture.pixels.assign(std::size_t{m_stream.width} * m_stream.height, 0);
        }
        (void)m_pCodec->Decode(data, m_picture);
    }
    return m_picture.pixels.empty() ? nullptr : &m_picture;
}
} // namespace swf
