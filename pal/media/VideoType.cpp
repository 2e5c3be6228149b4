#include "pal/media/VideoType.h"

#include <mfapi.h>
#include <mferror.h>

extern "C"
{
#include <libavutil/pixdesc.h>
}

namespace pal
{
namespace
{
GUID SubtypeOf(const AVCodecParameters& parameters)
{
    switch (parameters.codec_id)
    {
    case AV_CODEC_ID_H264:
        return MFVideoFormat_H264;
    case AV_CODEC_ID_HEVC:
        return MFVideoFormat_HEVC;
    case AV_CODEC_ID_MPEG4:
        return MFVideoFormat_MP4V;
    case AV_CODEC_ID_MPEG2VIDEO:
        return MFVideoFormat_MPEG2;
    case AV_CODEC_ID_MJPEG:
        return MFVideoFormat_MJPG;
    case AV_CODEC_ID_VP8:
        return MFVideoFormat_VP80;
    case AV_CODEC_ID_VP9:
        return MFVideoFormat_VP90;
    case AV_CODEC_ID_AV1:
        return MFVideoFormat_AV1;
    default:
        return PalMediaSubtype(parameters.codec_tag);
    }
}

UINT32 MatrixAttribute(AVColorSpace space)
{
    switch (space)
    {
    case AVCOL_SPC_BT709:
        return MFVideoTransferMatrix_BT709;
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
        return MFVideoTransferMatrix_BT601;
    case AVCOL_SPC_SMPTE240M:
        return MFVideoTransferMatrix_SMPTE240M;
    case AVCOL_SPC_BT2020_NCL:
        return MFVideoTransferMatrix_BT2020_10;
    default:
        return MFVideoTransferMatrix_Unknown;
    }
}

UINT32 InterlaceAttribute(AVFieldOrder order)
{
    switch (order)
    {
    case AV_FIELD_TT:
    case AV_FIELD_TB:
        return MFVideoInterlace_FieldInterleavedUpperFirst;
    case AV_FIELD_BB:
    case AV_FIELD_BT:
        return MFVideoInterlace_FieldInterleavedLowerFirst;
    case AV_FIELD_PROGRESSIVE:
        return MFVideoInterlace_Progressive;
    default:
        return MFVideoInterlace_MixedInterlaceOrProgressive;
    }
}

void SetColour(IMFMediaType* pType, const AVCodecParameters& parameters)
{
    if (parameters.color_range == AVCOL_RANGE_JPEG)
        pType->SetUINT32(MF_MT_VIDEO_NOMINAL_RANGE, MFNominalRange_0_255);
    else if (parameters.color_range == AVCOL_RANGE_MPEG)
        pType->SetUINT32(MF_MT_VIDEO_NOMINAL_RANGE, MFNominalRange_16_235);
    const UINT32 matrix = MatrixAttribute(parameters.color_space);
    if (matrix != MFVideoTransferMatrix_Unknown)
        pType->SetUINT32(MF_MT_YUV_MATRIX, matrix);
}
} // namespace

HRESULT CreateNativeVideoType(AVFormatContext& format, AVStream& stream, const FrameGrid& grid, IMFMediaType** ppType)
{
    const HRESULT hr = MFCreateMediaType(ppType);
    if (FAILED(hr))
        return hr;
    IMFMediaType* const pType = *ppType;
    const AVCodecParameters& parameters = *stream.codecpar;
    pType->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Video);
    pType->SetGUID(MF_MT_SUBTYPE, SubtypeOf(parameters));
    if (parameters.width > 0 && parameters.height > 0)
        MFSetAttributeSize(pType, MF_MT_FRAME_SIZE, static_cast<UINT32>(parameters.width),
                           static_cast<UINT32>(parameters.height));
    if (grid.rate.IsValid() && grid.rate.num <= UINT32_MAX && grid.rate.den <= UINT32_MAX)
        MFSetAttributeRatio(pType, MF_MT_FRAME_RATE, static_cast<UINT32>(grid.rate.num),
                            static_cast<UINT32>(grid.rate.den));
    const AVRational aspect = av_guess_sample_aspect_ratio(&format, &stream, nullptr);
    if (aspect.num > 0 && aspect.den > 0)
        MFSetAttributeRatio(pType, MF_MT_PIXEL_ASPECT_RATIO, static_cast<UINT32>(aspect.num),
                            static_cast<UINT32>(aspect.den));
    if (const std::uint32_t rotation = GetStreamRotation(stream); rotation != 0)
        pType->SetUINT32(MF_MT_VIDEO_ROTATION, rotation);
    pType->SetUINT32(MF_MT_INTERLACE_MODE, InterlaceAttribute(parameters.field_order));
    SetColour(pType, parameters);
    return S_OK;
}

HRESULT ParseOutputType(IMFMediaType* pType, const AVStream& stream, PictureFormat* pFormat, Rate* pRate)
{
    GUID major = GUID_NULL;
    GUID subtype = GUID_NULL;
    if (FAILED(pType->GetGUID(MF_MT_MAJOR_TYPE, &major)) || major != MFMediaType_Video ||
        FAILED(pType->GetGUID(MF_MT_SUBTYPE, &subtype)))
        return MF_E_INVALIDMEDIATYPE;
    if (subtype == MFVideoFormat_ARGB32)
        pFormat->layout = PixelLayout::Bgra;
    else if (subtype == MFVideoFormat_RGB32)
        pFormat->layout = PixelLayout::Bgrx;
    else if (subtype == MFVideoFormat_NV12)
        pFormat->layout = PixelLayout::Nv12;
    else
        return MF_E_INVALIDMEDIATYPE;

    const auto storedWidth = static_cast<UINT32>(std::max(0, stream.codecpar->width));
    const auto storedHeight = static_cast<UINT32>(std::max(0, stream.codecpar->height));
    UINT32 width = storedWidth;
    UINT32 height = storedHeight;
    MFGetAttributeSize(pType, MF_MT_FRAME_SIZE, &width, &height);
    const std::uint32_t rotation = GetStreamRotation(stream);
    const bool sideways = rotation == 90 || rotation == 270;
    const bool exchanged = width == storedHeight && height == storedWidth;
    if (width == 0 || height == 0 || ((width != storedWidth || height != storedHeight) && !(sideways && exchanged)))
        return MF_E_INVALIDMEDIATYPE;
    pFormat->width = static_cast<int>(width);
    pFormat->height = static_cast<int>(height);
    pFormat->rotation = sideways && !exchanged ? 0 : rotation;

    UINT32 numerator = 0;
    UINT32 denominator = 0;
    if (SUCCEEDED(MFGetAttributeRatio(pType, MF_MT_FRAME_RATE, &numerator, &denominator)))
        *pRate = {numerator, denominator};
    return S_OK;
}
} // namespace pal
