#include "pal/media/PictureConverter.h"

#include "companions/pixelutility/kernels/YuvToBgra.h"

extern "C"
{
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}
#include <libyuv.h>

#include <algorithm>
#include <utility>

namespace pal
{
namespace
{
using qmx::kernels::YuvMatrix;
using qmx::kernels::YuvPicture;

constexpr int kFirstHdHeight = 720;

AVColorSpace MatrixOf(const AVFrame& frame)
{
    if (frame.colorspace != AVCOL_SPC_UNSPECIFIED && frame.colorspace != AVCOL_SPC_RESERVED)
        return frame.colorspace;
    return frame.height >= kFirstHdHeight ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

YuvMatrix ToKernelMatrix(AVColorSpace space)
{
    switch (space)
    {
    case AVCOL_SPC_BT709:
        return YuvMatrix::Bt709;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
        return YuvMatrix::Bt2020;
    case AVCOL_SPC_SMPTE240M:
        return YuvMatrix::Smpte240m;
    case AVCOL_SPC_FCC:
        return YuvMatrix::Fcc;
    default:
        return YuvMatrix::Bt601;
    }
}

bool IsFullRange(const AVFrame& frame)
{
    switch (frame.format)
    {
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ444P:
    case AV_PIX_FMT_YUVJ440P:
    case AV_PIX_FMT_YUVJ411P:
        return true;
    default:
        return frame.color_range == AVCOL_RANGE_JPEG;
    }
}

/// True for the YUV layouts that the kernel reads as they are.
bool DescribeForKernel(const AVFrame& frame, YuvPicture& picture)
{
    const AVPixFmtDescriptor* const pFormat = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    if (pFormat == nullptr)
        return false;
    constexpr std::uint64_t kForeign = AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BE |
                                       AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_FLOAT;
    const int planes = av_pix_fmt_count_planes(static_cast<AVPixelFormat>(frame.format));
    const bool alpha = (pFormat->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    const int depth = pFormat->comp[0].depth;
    if ((pFormat->flags & kForeign) != 0 || (pFormat->flags & AV_PIX_FMT_FLAG_PLANAR) == 0 ||
        pFormat->nb_components < 3 || pFormat->log2_chroma_w > 1 || pFormat->log2_chroma_h > 1 || depth < 8)
        return false;
    picture.interleavedChroma = planes == 2;
    if (planes != (alpha ? 4 : 3) && !picture.interleavedChroma)
        return false;
    if (picture.interleavedChroma && (alpha || pFormat->comp[1].offset > pFormat->comp[2].offset))
        return false; // V before U
    picture.pY = frame.data[0];
    picture.pU = frame.data[1];
    picture.pV = frame.data[2];
    picture.strideY = frame.linesize[0];
    picture.strideU = frame.linesize[1];
    picture.strideV = frame.linesize[2];
    if (alpha)
    {
        picture.pA = frame.data[3];
        picture.strideA = frame.linesize[3];
    }
    picture.width = frame.width;
    picture.height = frame.height;
    picture.chromaShiftX = pFormat->log2_chroma_w;
    picture.chromaShiftY = pFormat->log2_chroma_h;
    picture.bitDepth = depth;
    picture.highBits = depth < 16 && pFormat->comp[0].shift > 0;
    picture.fullRange = IsFullRange(frame);
    picture.matrix = ToKernelMatrix(MatrixOf(frame));
    return true;
}

void MakeOpaque(std::uint8_t* pPixels, int stride, int width, int height)
{
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            pPixels[static_cast<std::ptrdiff_t>(y) * stride + x * 4 + 3] = 255;
}

libyuv::RotationMode ToLibyuv(std::uint32_t rotation)
{
    return static_cast<libyuv::RotationMode>(rotation);
}
} // namespace

bool PictureConverter::Convert(const AVFrame& frame, std::uint8_t* pTarget)
{
    if (frame.width <= 0 || frame.height <= 0)
        return false;
    if (m_format.rotation == 0)
        return ConvertUpright(frame, pTarget, m_format.width, m_format.height);

    const bool exchanged = m_format.rotation == 90 || m_format.rotation == 270;
    const int width = exchanged ? m_format.height : m_format.width;
    const int height = exchanged ? m_format.width : m_format.height;
    const std::size_t cb = m_format.Bytes() + static_cast<std::size_t>(m_format.width + m_format.height);
    PixelPool::Block block = m_pool.Take(cb);
    if (!block)
        return false;
    bool done = ConvertUpright(frame, block.get(), width, height);
    if (m_format.layout != PixelLayout::Nv12)
        done = done && libyuv::ARGBRotate(block.get(), width * 4, pTarget, m_format.width * 4, width, height,
                                          ToLibyuv(m_format.rotation)) == 0;
    else
    {
        const int strideUv = (width + 1) / 2 * 2;
        const int targetUv = (m_format.width + 1) / 2 * 2;
        const std::size_t luma = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
        libyuv::RotatePlane(block.get(), width, pTarget, m_format.width, width, height, ToLibyuv(m_format.rotation));
        // An NV12 chroma plane turns as a plane of 16-bit pairs; libyuv offers that only with a split, so the pairs are
        // moved here. Chroma is a quarter of the pixels.
        const auto* const pPairs = reinterpret_cast<const std::uint16_t*>(block.get() + luma);
        auto* const pTurned = reinterpret_cast<std::uint16_t*>(pTarget + luma);
        const int pairs = strideUv / 2;
        const int rows = (height + 1) / 2;
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < pairs; ++x)
            {
                const int toX = m_format.rotation == 90 ? rows - 1 - y : m_format.rotation == 270 ? y : pairs - 1 - x;
                const int toY = m_format.rotation == 90 ? x : m_format.rotation == 270 ? pairs - 1 - x : rows - 1 - y;
                pTurned[static_cast<std::ptrdiff_t>(toY) * (targetUv / 2) + toX] =
                    pPairs[static_cast<std::ptrdiff_t>(y) * pairs + x];
            }
    }
    m_pool.GiveBack(std::move(block), cb);
    return done;
}

bool PictureConverter::ConvertUpright(const AVFrame& frame, std::uint8_t* pTarget, int width, int height)
{
    if (m_format.layout == PixelLayout::Nv12)
        return ToNv12(frame, pTarget, width, height);

    bool done = false;
    if (frame.width == width && frame.height == height)
        done = ToBgra(frame, pTarget, width * 4);
    else
    {
        // The stream changed its picture size: clients were promised one size.
        const std::size_t cb = static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height) * 4;
        PixelPool::Block block = PixelPool().Take(cb);
        done = block && ToBgra(frame, block.get(), frame.width * 4) &&
               libyuv::ARGBScale(block.get(), frame.width * 4, frame.width, frame.height, pTarget, width * 4, width,
                                 height, libyuv::kFilterBilinear) == 0;
    }
    if (done && m_format.layout == PixelLayout::Bgrx)
        MakeOpaque(pTarget, width * 4, width, height);
    return done;
}

bool PictureConverter::ToBgra(const AVFrame& frame, std::uint8_t* pTarget, int stride)
{
    YuvPicture picture;
    if (MatrixOf(frame) != AVCOL_SPC_RGB && MatrixOf(frame) != AVCOL_SPC_YCGCO && DescribeForKernel(frame, picture))
        return ConvertYuvToBgra(picture, pTarget, stride);
    switch (frame.format)
    {
    case AV_PIX_FMT_BGRA:
        return libyuv::ARGBCopy(frame.data[0], frame.linesize[0], pTarget, stride, frame.width, frame.height) == 0;
    case AV_PIX_FMT_GBRP: // planes G, B, R
        libyuv::MergeARGBPlane(frame.data[2], frame.linesize[2], frame.data[0], frame.linesize[0], frame.data[1],
                               frame.linesize[1], nullptr, 0, pTarget, stride, frame.width, frame.height);
        return true;
    case AV_PIX_FMT_GBRAP:
        libyuv::MergeARGBPlane(frame.data[2], frame.linesize[2], frame.data[0], frame.linesize[0], frame.data[1],
                               frame.linesize[1], frame.data[3], frame.linesize[3], pTarget, stride, frame.width,
                               frame.height);
        return true;
    default:
        return ToBgraByScaler(frame, pTarget, stride);
    }
}

/// Rare formats: YUV goes through 4:4:4 of 8 or 16 bits, so that the matrix is always the kernel's; RGB directly.
bool PictureConverter::ToBgraByScaler(const AVFrame& frame, std::uint8_t* pTarget, int stride)
{
    const AVPixFmtDescriptor* const pFormat = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    if (pFormat == nullptr || (pFormat->flags & AV_PIX_FMT_FLAG_HWACCEL) != 0)
        return false;
    const std::lock_guard lock(m_lock);
    const bool alpha = (pFormat->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    const bool yuv = (pFormat->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM)) == 0;
    if (!yuv)
    {
        const bool opaque = !alpha && (pFormat->flags & AV_PIX_FMT_FLAG_PAL) == 0;
        if (!ScaleWithLibrary(frame, AV_PIX_FMT_BGRA, frame.width, frame.height, &pTarget, &stride))
            return false;
        if (opaque)
            MakeOpaque(pTarget, stride, frame.width, frame.height);
        return true;
    }
    const bool deep = pFormat->comp[0].depth > 8;
    const AVPixelFormat between = deep ? (alpha ? AV_PIX_FMT_YUVA444P16LE : AV_PIX_FMT_YUV444P16LE)
                                       : (alpha ? AV_PIX_FMT_YUVA444P : AV_PIX_FMT_YUV444P);
    AVFrame* pScratch = m_pScratch.get();
    if (pScratch == nullptr || pScratch->format != between || pScratch->width != frame.width ||
        pScratch->height != frame.height)
    {
        m_pScratch.reset(pScratch = av_frame_alloc());
        if (pScratch == nullptr)
            return false;
        pScratch->format = between;
        pScratch->width = frame.width;
        pScratch->height = frame.height;
        if (av_frame_get_buffer(pScratch, 0) < 0)
        {
            m_pScratch.reset();
            return false;
        }
    }
    pScratch->colorspace = MatrixOf(frame);
    pScratch->color_range = IsFullRange(frame) ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    YuvPicture picture;
    return ScaleWithLibrary(frame, between, frame.width, frame.height, pScratch->data, pScratch->linesize) &&
           DescribeForKernel(*pScratch, picture) && ConvertYuvToBgra(picture, pTarget, stride);
}

bool PictureConverter::ScaleWithLibrary(const AVFrame& frame, AVPixelFormat format, int width, int height,
                                        std::uint8_t* const* ppTarget, const int* pStrides)
{
    constexpr int kExact = SWS_POINT | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP | SWS_BITEXACT;
    const bool resize = width != frame.width || height != frame.height;
    m_pScaler.reset(sws_getCachedContext(m_pScaler.release(), frame.width, frame.height,
                                         static_cast<AVPixelFormat>(frame.format), width, height, format,
                                         resize ? SWS_BILINEAR | SWS_ACCURATE_RND : kExact, nullptr, nullptr, nullptr));
    if (!m_pScaler)
        return false;
    // Ranges stay as they are: the kernel applies them. Grey and RGB sources have no matrix.
    const int* const pCoefficients = sws_getCoefficients(MatrixOf(frame));
    const int range = IsFullRange(frame) ? 1 : 0;
    sws_setColorspaceDetails(m_pScaler.get(), pCoefficients, range, pCoefficients, range, 0, 1 << 16, 1 << 16);
    return sws_scale(m_pScaler.get(), frame.data, frame.linesize, 0, frame.height, ppTarget, pStrides) == height;
}

bool PictureConverter::ToNv12(const AVFrame& frame, std::uint8_t* pTarget, int width, int height)
{
    const int strideUv = (width + 1) / 2 * 2;
    std::uint8_t* const pUv = pTarget + static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const bool same = frame.width == width && frame.height == height;
    if (same && (frame.format == AV_PIX_FMT_YUV420P || frame.format == AV_PIX_FMT_YUVJ420P))
        return libyuv::I420ToNV12(frame.data[0], frame.linesize[0], frame.data[1], frame.linesize[1], frame.data[2],
                                  frame.linesize[2], pTarget, width, pUv, strideUv, width, height) == 0;
    const std::lock_guard lock(m_lock);
    std::uint8_t* const planes[4] = {pTarget, pUv, nullptr, nullptr};
    const int strides[4] = {width, strideUv, 0, 0};
    return ScaleWithLibrary(frame, AV_PIX_FMT_NV12, width, height, planes, strides);
}
} // namespace pal
