#include "companions/swfrenderer/VideoDecoder.h"

#include "companions/swfrenderer/VideoEntries.h"

#include <algorithm>
#include <mutex>

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

void QuietLibrary()
{
    // Broken packets are no news; the library would write to the console of whoever loads it.
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_QUIET); });
}

std::uint32_t Level(int v)
{
    return static_cast<std::uint32_t>(std::clamp((v + 32'768) >> 16, 0, 255));
}

/// Rec. ITU-R BT.601 in video range with factors of 16 fractional bits, chroma samples shared by the pixels they stand
/// for.
std::uint32_t FromYuv(int y, int u, int v)
{
    constexpr int kLuma = 76'309, kRed = 104'597, kBlue = 132'201; // 255 / 219; 1.402 and 1.772 times 255 / 224
    constexpr int kGreenU = 25'675, kGreenV = 53'279;
    const int luma = kLuma * (y - 16);
    return Level(luma + kBlue * (u - 128)) | Level(luma - kGreenU * (u - 128) - kGreenV * (v - 128)) << 8 |
           Level(luma + kRed * (v - 128)) << 16;
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
    AVFrame* pLast = nullptr;           // owned: the last picture decoded; without buffers where there is none
    AVPacket* pPacket = nullptr;        // owned
    bool isOpen = false;
    struct
    {
        int width = 0, height = 0;
    } most;                          ///< of a picture; behind a larger one nothing decodes
    std::vector<std::uint8_t> bytes; ///< of the packet, with the padding that decoders read beyond

    ~Codec()
    {
        avcodec_free_context(&pContext);
        av_frame_free(&pFrame);
        av_frame_free(&pLast);
        av_packet_free(&pPacket);
    }
    /// What cannot be opened decodes nothing.
    void Open(const VideoStream& stream)
    {
        QuietLibrary();
        const AVCodec* const pCodec = avcodec_find_decoder(CodecOf(stream.codec));
        pContext = pCodec ? avcodec_alloc_context3(pCodec) : nullptr;
        pFrame = av_frame_alloc();
        pLast = av_frame_alloc();
        pPacket = av_packet_alloc();
        if (!pContext || !pFrame || !pLast || !pPacket)
            return;
        pContext->width = static_cast<int>(stream.width);
        pContext->height = static_cast<int>(stream.height);
        pContext->idct_algo = FF_IDCT_FAAN; // the most exact one: movies are small, and their colours flat
        pContext->thread_count = 1;         // frame threads would hold pictures back
        pContext->max_pixels = static_cast<std::int64_t>(stream.MostPixelsOnce());
        most = {static_cast<int>(stream.MostWidth()), static_cast<int>(stream.MostHeight())};
        isOpen = avcodec_open2(pContext, pCodec, nullptr) >= 0;
    }
    /// @param isKey  the packet is told to be a whole picture, which blocks of screen video lean on
    void Decode(std::span<const std::uint8_t> data, bool isKey)
    {
        if (!isOpen)
            return;
        bytes.assign(data.begin(), data.end());
        bytes.resize(data.size() + AV_INPUT_BUFFER_PADDING_SIZE, 0);
        pPacket->data = bytes.data();
        pPacket->size = static_cast<int>(data.size());
        pPacket->flags = isKey ? AV_PKT_FLAG_KEY : 0;
        if (avcodec_send_packet(pContext, pPacket) >= 0)
            while (avcodec_receive_frame(pContext, pFrame) >= 0)
            {
                if (IsTooLarge())
                    continue;
                av_frame_unref(pLast);
                av_frame_move_ref(pLast, pFrame);
            }
        pPacket->data = nullptr;
        pPacket->size = 0;
        if (IsTooLarge())
        {
            av_frame_unref(pFrame);
            avcodec_free_context(&pContext);
            isOpen = false;
        }
    }
    /// The size of a picture may change with every packet.
    bool IsTooLarge() const
    {
        return std::max(pContext->width, pContext->coded_width) > most.width ||
               std::max(pContext->height, pContext->coded_height) > most.height;
    }
};

CVideoDecoder::CVideoDecoder(const VideoStream& stream) : m_stream(stream) {}
CVideoDecoder::~CVideoDecoder() = default;

const Bitmap* CVideoDecoder::PictureAfter(std::uint32_t first, std::uint32_t end)
{
    if (first >= end)
        return nullptr;
    if (!m_pCodec || first != m_first || end < m_next)
    {
        m_hasPicture = false;
        m_pCodec.reset(); // before the next one takes memory
        m_pCodec = std::make_unique<Codec>();
        m_first = m_next = first;
        m_pCodec->Open(m_stream);
    }
    for (; m_next < end && m_next < m_stream.frames.size(); ++m_next)
        if (const auto data = m_stream.frames[m_next]; !data.empty())
        {
            m_pCodec->Decode(data, IsKeyFrame(m_stream.codec, data));
            m_hasPicture = false;
        }
    if (!m_pCodec->pLast || !m_pCodec->pLast->data[0])
        return nullptr;
    if (!m_hasPicture)
    {
        m_picture.width = static_cast<int>(m_stream.width);
        m_picture.height = static_cast<int>(m_stream.height);
        m_picture.pixels.assign(std::size_t{m_stream.width} * m_stream.height, 0);
        Convert(*m_pCodec->pLast, m_picture);
        m_hasPicture = true;
    }
    return &m_picture;
}
} // namespace swf
