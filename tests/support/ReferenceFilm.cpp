#include "tests/support/ReferenceFilm.h"

#include "tests/support/FrameStripReader.h"

extern "C"
{
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

namespace test_support
{
namespace
{
struct FormatDeleter
{
    void operator()(AVFormatContext* p) const { avformat_close_input(&p); }
};
struct CodecDeleter
{
    void operator()(AVCodecContext* p) const { avcodec_free_context(&p); }
};
struct PacketDeleter
{
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};
struct FrameDeleter
{
    void operator()(AVFrame* p) const { av_frame_free(&p); }
};

/// The library's own VP8 and VP9 decoders drop the alpha that WebM carries beside the picture.
const AVCodec* DecoderFor(const AVStream& stream)
{
    const AVDictionaryEntry* const pAlpha = av_dict_get(stream.metadata, "alpha_mode", nullptr, 0);
    if (pAlpha && std::string_view(pAlpha->value) == "1")
    {
        const AVCodecID id = stream.codecpar->codec_id;
        if (id == AV_CODEC_ID_VP8 || id == AV_CODEC_ID_VP9)
            return avcodec_find_decoder_by_name(id == AV_CODEC_ID_VP8 ? "libvpx" : "libvpx-vp9");
    }
    return avcodec_find_decoder(stream.codecpar->codec_id);
}
} // namespace

RgbLevels LevelsOfYuv(std::uint32_t y, std::uint32_t u, std::uint32_t v, std::uint32_t bits,
                      const MatrixWeights& matrix, bool fullRange)
{
    const double unit = std::exp2(bits - 8.0), top = std::exp2(bits) - 1, centre = 128 * unit;
    const double luma = fullRange ? y / top : (y - 16 * unit) / (219 * unit);
    const double cb = (u - centre) / (fullRange ? top : 224 * unit), cr = (v - centre) / (fullRange ? top : 224 * unit);
    const double kg = 1 - matrix.kr - matrix.kb;
    const double r = luma + 2 * (1 - matrix.kr) * cr, b = luma + 2 * (1 - matrix.kb) * cb;
    const double g = (luma - matrix.kr * r - matrix.kb * b) / kg;
    const auto level = [](double value) { return std::clamp(value * 255, 0.0, 255.0); };
    return {level(r), level(g), level(b)};
}

struct ReferenceFilm::State
{
    std::unique_ptr<AVFormatContext, FormatDeleter> pFormat;
    std::unique_ptr<AVCodecContext, CodecDeleter> pCodec;
    int stream = -1;
    bool countsPictures = false; ///< the container has no presentation times: the pictures' order is their time
    std::int64_t nPictures = 0;

    const AVStream& Stream() const { return *pFormat->streams[stream]; }
    double Start() const
    {
        return pFormat->start_time == AV_NOPTS_VALUE ? 0 : static_cast<double>(pFormat->start_time) / AV_TIME_BASE;
    }
    double TimeOf(const AVFrame& frame) const
    {
        if (countsPictures)
            return static_cast<double>(nPictures) / av_q2d(Stream().r_frame_rate);
        return static_cast<double>(frame.best_effort_timestamp) * av_q2d(Stream().time_base) - Start();
    }
};

ReferenceFilm::ReferenceFilm(const std::filesystem::path& path) : m_pState(std::make_unique<State>())
{
    AVFormatContext* pFormat = nullptr;
    if (avformat_open_input(&pFormat, path.c_str(), nullptr, nullptr) < 0)
        return;
    m_pState->pFormat.reset(pFormat);
    if (avformat_find_stream_info(pFormat, nullptr) < 0)
        return;
    for (unsigned i = 0; i < pFormat->nb_streams && m_pState->stream < 0; ++i)
        if (pFormat->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
            (pFormat->streams[i]->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0)
            m_pState->stream = static_cast<int>(i);
    if (m_pState->stream < 0)
        return;
    m_pState->countsPictures = std::string_view(pFormat->iformat->name) == "avi";
    const AVCodec* const pDecoder = DecoderFor(m_pState->Stream());
    std::unique_ptr<AVCodecContext, CodecDeleter> pCodec(avcodec_alloc_context3(pDecoder));
    pCodec->pkt_timebase = m_pState->Stream().time_base;
    if (avcodec_parameters_to_context(pCodec.get(), m_pState->Stream().codecpar) >= 0 &&
        avcodec_open2(pCodec.get(), pDecoder, nullptr) >= 0)
        m_pState->pCodec = std::move(pCodec);
}

ReferenceFilm::~ReferenceFilm() = default;

bool ReferenceFilm::IsOpen() const
{
    return m_pState->pCodec != nullptr;
}

void ReferenceFilm::ForEach(const std::function<bool(const ReferencePicture&)>& onPicture)
{
    if (!IsOpen())
        return;
    State& state = *m_pState;
    const std::unique_ptr<AVPacket, PacketDeleter> pPacket(av_packet_alloc());
    const std::unique_ptr<AVFrame, FrameDeleter> pFrame(av_frame_alloc());
    bool more = true;
    while (more)
    {
        more = av_read_frame(state.pFormat.get(), pPacket.get()) >= 0;
        if (more && pPacket->stream_index != state.stream)
        {
            av_packet_unref(pPacket.get());
            continue;
        }
        // Damaged packets are passed over; null starts the end of the stream.
        (void)avcodec_send_packet(state.pCodec.get(), more ? pPacket.get() : nullptr);
        av_packet_unref(pPacket.get());
        while (avcodec_receive_frame(state.pCodec.get(), pFrame.get()) >= 0)
        {
            const bool wanted = onPicture({state.TimeOf(*pFrame), pFrame.get()});
            ++state.nPictures;
            av_frame_unref(pFrame.get());
            if (!wanted)
                return;
        }
    }
}

double ReferenceFilm::TimeUnit() const
{
    return av_q2d(m_pState->Stream().time_base);
}

double ReferenceFilm::StreamLength() const
{
    const AVStream& stream = m_pState->Stream();
    if (stream.duration == AV_NOPTS_VALUE || stream.duration <= 0)
        return 0;
    const std::int64_t start = stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
    return static_cast<double>(start + stream.duration) * av_q2d(stream.time_base) - m_pState->Start();
}

std::uint32_t ReferenceFilm::Width() const
{
    return static_cast<std::uint32_t>(m_pState->Stream().codecpar->width);
}

std::uint32_t ReferenceFilm::Height() const
{
    return static_cast<std::uint32_t>(m_pState->Stream().codecpar->height);
}

std::uint32_t ReferenceFilm::Rotation() const
{
    const std::uint8_t* const pMatrix =
        av_stream_get_side_data(&m_pState->Stream(), AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (!pMatrix)
        return 0;
    std::int32_t matrix[9];
    std::memcpy(matrix, pMatrix, sizeof matrix);
    // The library tells the angle counter-clockwise.
    const long angle = std::lround(-av_display_rotation_get(matrix));
    return static_cast<std::uint32_t>((angle + 360) % 360);
}

std::uint32_t SampleOf(const AVFrame& frame, int component, int x, int y)
{
    const AVPixFmtDescriptor* const pFormat = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    std::uint16_t value = 0;
    av_read_image_line2(&value, const_cast<const std::uint8_t**>(frame.data), frame.linesize, pFormat, x, y, component,
                        1, 0, sizeof value);
    return value;
}

std::optional<std::uint32_t> ReadFrameStrip(const AVFrame& frame, std::uint32_t rotation)
{
    const AVPixFmtDescriptor* const pFormat = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    const bool onItsSide = rotation == 90 || rotation == 270;
    const int width = onItsSide ? frame.height : frame.width, height = onItsSide ? frame.width : frame.height;
    // Green of RGB stands for its luma. The copy of the upper quarter makes every format one byte a pixel, upright.
    const int component = (pFormat->flags & AV_PIX_FMT_FLAG_RGB) != 0 ? 1 : 0;
    const int surplus = pFormat->comp[component].depth - 8;
    std::vector<std::uint8_t> luma;
    for (int y = 0; y < height / 4; ++y)
        for (int x = 0; x < width; ++x)
        {
            const int storedX = rotation == 90    ? y
                                : rotation == 180 ? width - 1 - x
                                : rotation == 270 ? height - 1 - y
                                                  : x;
            const int storedY = rotation == 90    ? width - 1 - x
                                : rotation == 180 ? height - 1 - y
                                : rotation == 270 ? x
                                                  : y;
            luma.push_back(static_cast<std::uint8_t>(SampleOf(frame, component, storedX, storedY) >> surplus));
        }
    return ReadFrameStrip(luma.data(), static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height / 4),
                          width);
}

NumberedFilm ReadNumberedFilm(const std::filesystem::path& path)
{
    NumberedFilm numbered;
    ReferenceFilm film(path);
    if (!film.IsOpen())
    {
        numbered.fault = "the film cannot be opened";
        return numbered;
    }
    const std::uint32_t rotation = film.Rotation();
    film.ForEach(
        [&numbered, rotation](const ReferencePicture& picture)
        {
            const std::optional<std::uint32_t> number = ReadFrameStrip(*picture.pFrame, rotation);
            if (!number)
                numbered.fault =
                    "picture " + std::to_string(numbered.pictures.size()) + " of the film carries no number";
            else if (!numbered.pictures.empty() && picture.time <= numbered.pictures.back().time)
                numbered.fault = "picture " + std::to_string(*number) + " does not come after the one before it";
            else
                numbered.pictures.push_back({picture.time, *number});
            return numbered.fault.empty();
        });
    numbered.timeUnit = film.TimeUnit();
    numbered.streamLength = film.StreamLength();
    if (numbered.fault.empty() && numbered.pictures.empty())
        numbered.fault = "the film has no pictures";
    return numbered;
}
} // namespace test_support
