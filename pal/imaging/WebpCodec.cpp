#include "pal/imaging/WebpCodec.h"

#include "pal/imaging/ExifOrientation.h"
#include "pal/imaging/ImageLimits.h"

#include <webp/decode.h>
#include <webp/demux.h>

#include <cstring>

namespace pal
{
namespace
{
struct DemuxerDeleter
{
    void operator()(WebPDemuxer* p) const { WebPDemuxDelete(p); }
};

/// A loop over chunks or frames of a file, given back in any case.
struct ChunkLoop : WebPChunkIterator
{
    ChunkLoop() : WebPChunkIterator{} {}
    ~ChunkLoop() { WebPDemuxReleaseChunkIterator(this); }
    ChunkLoop(const ChunkLoop&) = delete;
    ChunkLoop& operator=(const ChunkLoop&) = delete;
};
struct FrameLoop : WebPIterator
{
    FrameLoop() : WebPIterator{} {}
    ~FrameLoop() { WebPDemuxReleaseIterator(this); }
    FrameLoop(const FrameLoop&) = delete;
    FrameLoop& operator=(const FrameLoop&) = delete;
};
} // namespace

HRESULT WebpCodec::Open(const ImageBytes& bytes, ImageCodecPtr& pCodec)
{
    std::unique_ptr<WebpCodec> pWebp(new WebpCodec(bytes));
    WebPBitstreamFeatures features;
    if (WebPGetFeatures(bytes.Data(), bytes.Size(), &features) != VP8_STATUS_OK || features.width <= 0 ||
        features.height <= 0)
        return WINCODEC_ERR_BADHEADER;
    pWebp->m_size = {static_cast<UINT>(features.width), static_cast<UINT>(features.height)};
    pWebp->m_frameSize = pWebp->m_size;
    if (!AcceptsPicture(pWebp->m_size.width, pWebp->m_size.height, bytes.Size()))
        return WINCODEC_ERR_IMAGESIZEOUTOFRANGE;
    const HRESULT hr = pWebp->ReadContainer();
    if (FAILED(hr) && features.has_animation)
        return hr; // a still picture is decoded without the container's help
    pCodec = std::move(pWebp);
    return S_OK;
}

/// Orientation, and the first frame of an animation.
HRESULT WebpCodec::ReadContainer()
{
    const WebPData data{m_bytes.Data(), m_bytes.Size()};
    WebPDemuxState state = WEBP_DEMUX_PARSE_ERROR;
    const std::unique_ptr<WebPDemuxer, DemuxerDeleter> pDemuxer(WebPDemuxPartial(&data, &state));
    if (!pDemuxer)
        return WINCODEC_ERR_BADHEADER;
    const auto partOf = [this](const WebPData& found)
    { return m_bytes.Part(static_cast<std::size_t>(found.bytes - m_bytes.Data()), found.size); };
    ChunkLoop exif;
    if (WebPDemuxGetChunk(pDemuxer.get(), "EXIF", 1, &exif) != 0)
        m_orientation = ExifOrientation(partOf(exif.chunk));
    if ((WebPDemuxGetI(pDemuxer.get(), WEBP_FF_FORMAT_FLAGS) & ANIMATION_FLAG) == 0)
        return S_OK;
    FrameLoop frame;
    if (WebPDemuxGetFrame(pDemuxer.get(), 1, &frame) == 0 || frame.width <= 0 || frame.height <= 0 ||
        frame.x_offset < 0 || frame.y_offset < 0)
        return WINCODEC_ERR_FRAMEMISSING;
    m_frameSize = {static_cast<UINT>(frame.width), static_cast<UINT>(frame.height)};
    m_left = static_cast<UINT>(frame.x_offset);
    m_top = static_cast<UINT>(frame.y_offset);
    if (m_frameSize.width > m_size.width || m_left > m_size.width - m_frameSize.width ||
        m_frameSize.height > m_size.height || m_top > m_size.height - m_frameSize.height)
        return WINCODEC_ERR_BADHEADER;
    m_picture = partOf(frame.fragment);
    return S_OK;
}

HRESULT WebpCodec::GetFrameSize(UINT, ImageSize& size)
{
    size = m_size;
    return S_OK;
}

HRESULT WebpCodec::Decode(UINT, BYTE* pTarget, std::size_t stride)
{
    // What a cut file does not fill must not stay as it was, and around a small first frame there is nothing.
    for (UINT y = 0; y < m_size.height; ++y)
        std::memset(pTarget + y * stride, 0, std::size_t{m_size.width} * 4);
    WebPDecoderConfig config;
    if (WebPInitDecoderConfig(&config) == 0)
        return E_FAIL;
    if (WebPGetFeatures(m_picture.Data(), m_picture.Size(), &config.input) != VP8_STATUS_OK ||
        config.input.width != static_cast<int>(m_frameSize.width) ||
        config.input.height != static_cast<int>(m_frameSize.height))
        return WINCODEC_ERR_BADIMAGE;
    config.output.colorspace = MODE_BGRA;
    config.output.is_external_memory = 1;
    config.output.u.RGBA.rgba = pTarget + m_top * stride + std::size_t{m_left} * 4;
    config.output.u.RGBA.stride = static_cast<int>(stride);
    config.output.u.RGBA.size = (m_frameSize.height - 1) * stride + std::size_t{m_frameSize.width} * 4;
    // Fed as a stream, the decoder keeps the rows that came before the damage.
    const std::unique_ptr<WebPIDecoder, void (*)(WebPIDecoder*)> pDecoder(WebPIDecode(nullptr, 0, &config),
                                                                          WebPIDelete);
    if (!pDecoder)
        return E_OUTOFMEMORY;
    const VP8StatusCode status = WebPIUpdate(pDecoder.get(), m_picture.Data(), m_picture.Size());
    int lastRow = 0;
    WebPIDecGetRGB(pDecoder.get(), &lastRow, nullptr, nullptr, nullptr);
    return status == VP8_STATUS_OK || lastRow > 0 ? S_OK : WINCODEC_ERR_BADIMAGE;
}
} // namespace pal
