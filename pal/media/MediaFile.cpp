#include "pal/media/MediaFile.h"
#include "pal/kernel/PathText.h"
#include "pal/media/DateText.h"

#include <mferror.h>

extern "C"
{
#include <libavutil/display.h>
}

#include <sys/stat.h>

#include <cerrno>
#include <cmath>
#include <mutex>

namespace pal
{
namespace
{
/// Demuxers of media containers and of bare media streams. Everything else that the library can demux (playlists,
/// subtitles, pictures, devices, generated sources) is not media here.
constexpr char kContainers[] =
    "mov,mp4,matroska,webm,avi,asf,mpegts,mpeg,mpegvideo,m4v,h264,hevc,ivf,obu,flv,ogg,nut,"
    "mxf,gxf,dv,rm,wtv,yuv4mpegpipe,wav,w64,mp3,aac,flac,ac3,eac3,dts,truehd,aiff,au,caf,amr,"
    "ape,mpc,mpc8,tta,wv,voc,amrnb,amrwb";

void QuietLibrary()
{
    // The engine reports through results only; the library would write to the console of whoever loads it.
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_QUIET); });
}

HRESULT CheckRegularFile(const std::string& path)
{
    struct stat facts = {};
    if (stat(path.c_str(), &facts) != 0)
        return HRESULT_FROM_WIN32(errno == EACCES ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND);
    return S_ISREG(facts.st_mode) ? S_OK : HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED);
}
} // namespace

HRESULT MediaFile::OpenHeader(const std::wstring& path)
{
    QuietLibrary();
    const std::string bytes = ToPathBytes(path);
    const HRESULT regular = CheckRegularFile(bytes);
    if (FAILED(regular))
        return regular;

    AVDictionary* pOptions = nullptr;
    av_dict_set(&pOptions, "protocol_whitelist", "file", 0);
    av_dict_set(&pOptions, "format_whitelist", kContainers, 0);
    AVFormatContext* pFormat = nullptr;
    // The prefix keeps a name such as "http:x" a file name.
    const int opened = avformat_open_input(&pFormat, ("file:" + bytes).c_str(), nullptr, &pOptions);
    av_dict_free(&pOptions);
    if (opened < 0)
        return opened == AVERROR(EACCES) ? HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED) : MF_E_UNSUPPORTED_BYTESTREAM_TYPE;
    m_pFormat.reset(pFormat);
    return S_OK;
}

HRESULT MediaFile::Open(const std::wstring& path)
{
    const HRESULT hr = OpenHeader(path);
    if (FAILED(hr))
        return hr;
    m_pFormat->flags |= AVFMT_FLAG_GENPTS;
    if (avformat_find_stream_info(m_pFormat.get(), nullptr) < 0)
        return MF_E_UNSUPPORTED_BYTESTREAM_TYPE;
    const bool usable = FindStream(AVMEDIA_TYPE_VIDEO) != nullptr || FindStream(AVMEDIA_TYPE_AUDIO) != nullptr;
    return usable ? S_OK : MF_E_UNSUPPORTED_BYTESTREAM_TYPE;
}

AVStream* MediaFile::FindStream(AVMediaType type) const
{
    for (unsigned i = 0; i < m_pFormat->nb_streams; ++i)
    {
        AVStream* const pStream = m_pFormat->streams[i];
        constexpr int kPictures = AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS;
        if (pStream->codecpar->codec_type == type && (pStream->disposition & kPictures) == 0)
            return pStream;
    }
    return nullptr;
}

std::int64_t MediaFile::GetStart(AVRational timeBase) const
{
    const std::int64_t start = m_pFormat->start_time;
    return start == AV_NOPTS_VALUE ? 0 : av_rescale_q(start, AV_TIME_BASE_Q, timeBase);
}

std::uint64_t MediaFile::GetDuration() const
{
    constexpr std::int64_t kTicksPerMicrosecond = 10;
    const std::int64_t duration = m_pFormat->duration;
    if (duration == AV_NOPTS_VALUE || duration <= 0 || duration > INT64_MAX / kTicksPerMicrosecond)
        return 0;
    return static_cast<std::uint64_t>(duration * kTicksPerMicrosecond);
}

std::optional<std::uint64_t> MediaFile::GetCreationDate() const
{
    const AVDictionaryEntry* const pEntry = av_dict_get(m_pFormat->metadata, "creation_time", nullptr, 0);
    return pEntry != nullptr ? ParseDate(pEntry->value) : std::nullopt;
}

std::uint32_t GetStreamRotation(const AVStream& stream)
{
    // The display matrix stands beside the stream in FFmpeg 5 and 6, and in its parameters later.
#if LIBAVCODEC_VERSION_MAJOR >= 61
    const AVPacketSideData* const pSide = av_packet_side_data_get(
        stream.codecpar->coded_side_data, stream.codecpar->nb_coded_side_data, AV_PKT_DATA_DISPLAYMATRIX);
    const std::uint8_t* const pData = pSide != nullptr ? pSide->data : nullptr;
    const std::size_t cb = pSide != nullptr ? pSide->size : 0;
#else
    std::size_t cb = 0;
    const std::uint8_t* const pData = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &cb);
#endif
    if (pData == nullptr || cb < 9 * sizeof(std::int32_t))
        return 0;
    // The library counts counter-clockwise.
    const double angle = -av_display_rotation_get(reinterpret_cast<const std::int32_t*>(pData));
    if (!std::isfinite(angle))
        return 0;
    const auto quarters = static_cast<int>(std::lround(angle / 90.0));
    return static_cast<std::uint32_t>((quarters % 4 + 4) % 4) * 90;
}
} // namespace pal
