#include "pal/media/AudioType.h"
#include "pal/media/MediaLimits.h"

#include <mfapi.h>
#include <mferror.h>

extern "C"
{
#include <libavutil/channel_layout.h>
}

#include <bitset>

namespace pal
{
namespace
{
GUID SubtypeOf(const AVCodecParameters& parameters)
{
    switch (parameters.codec_id)
    {
    case AV_CODEC_ID_PCM_F32LE:
    case AV_CODEC_ID_PCM_F32BE:
    case AV_CODEC_ID_PCM_F64LE:
    case AV_CODEC_ID_PCM_F64BE:
        return MFAudioFormat_Float;
    case AV_CODEC_ID_MP1:
    case AV_CODEC_ID_MP2:
        return MFAudioFormat_MPEG;
    case AV_CODEC_ID_MP3:
        return MFAudioFormat_MP3;
    case AV_CODEC_ID_AAC:
        return MFAudioFormat_AAC;
    case AV_CODEC_ID_AC3:
        return MFAudioFormat_Dolby_AC3;
    case AV_CODEC_ID_EAC3:
        return MFAudioFormat_Dolby_DDPlus;
    case AV_CODEC_ID_FLAC:
        return MFAudioFormat_FLAC;
    case AV_CODEC_ID_ALAC:
        return MFAudioFormat_ALAC;
    case AV_CODEC_ID_OPUS:
        return MFAudioFormat_Opus;
    case AV_CODEC_ID_VORBIS:
        return MFAudioFormat_Vorbis;
    case AV_CODEC_ID_WMAV1:
    case AV_CODEC_ID_WMAV2:
        return MFAudioFormat_WMAudioV8;
    case AV_CODEC_ID_WMAPRO:
        return MFAudioFormat_WMAudioV9;
    case AV_CODEC_ID_WMALOSSLESS:
        return MFAudioFormat_WMAudio_Lossless;
    default:
        // Everything with a fixed number of bits for a sample is PCM of some kind; the tag names the rest.
        return av_get_exact_bits_per_sample(parameters.codec_id) >= 8 ? MFAudioFormat_PCM
                                                                      : PalMediaSubtype(parameters.codec_tag);
    }
}

/// Bits of a stored sample; 0 where the coding has no such thing.
int BitsOf(const AVCodecParameters& parameters)
{
    const int exact = av_get_exact_bits_per_sample(parameters.codec_id);
    return exact >= 8 ? exact : parameters.bits_per_raw_sample;
}

std::uint64_t MaskFor(int channels)
{
    AVChannelLayout layout = {};
    av_channel_layout_default(&layout, channels);
    const std::uint64_t mask = layout.order == AV_CHANNEL_ORDER_NATIVE ? layout.u.mask : 0;
    av_channel_layout_uninit(&layout);
    return mask;
}
} // namespace

HRESULT CreateNativeAudioType(const AVStream& stream, IMFMediaType** ppType)
{
    const HRESULT hr = MFCreateMediaType(ppType);
    if (FAILED(hr))
        return hr;
    IMFMediaType* const pType = *ppType;
    const AVCodecParameters& parameters = *stream.codecpar;
    pType->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Audio);
    pType->SetGUID(MF_MT_SUBTYPE, SubtypeOf(parameters));
    const int channels = parameters.ch_layout.nb_channels;
    if (parameters.sample_rate > 0)
        pType->SetUINT32(MF_MT_AUDIO_SAMPLES_PER_SECOND, static_cast<UINT32>(parameters.sample_rate));
    if (channels > 0)
        pType->SetUINT32(MF_MT_AUDIO_NUM_CHANNELS, static_cast<UINT32>(channels));
    if (parameters.ch_layout.order == AV_CHANNEL_ORDER_NATIVE && parameters.ch_layout.u.mask <= UINT32_MAX)
        pType->SetUINT32(MF_MT_AUDIO_CHANNEL_MASK, static_cast<UINT32>(parameters.ch_layout.u.mask));
    if (const int bits = BitsOf(parameters); bits > 0)
        pType->SetUINT32(MF_MT_AUDIO_BITS_PER_SAMPLE, static_cast<UINT32>(bits));
    const int stored = av_get_exact_bits_per_sample(parameters.codec_id);
    if (stored >= 8 && channels > 0 && channels <= kMaxAudioChannels && parameters.sample_rate > 0 &&
        parameters.sample_rate <= kMaxAudioRate)
    {
        const auto cbBlock = static_cast<UINT32>(stored / 8 * channels);
        pType->SetUINT32(MF_MT_AUDIO_BLOCK_ALIGNMENT, cbBlock);
        pType->SetUINT32(MF_MT_AUDIO_AVG_BYTES_PER_SECOND, cbBlock * static_cast<UINT32>(parameters.sample_rate));
    }
    return S_OK;
}

HRESULT ParseAudioType(IMFMediaType* pType, AudioRequest* pRequest)
{
    GUID major = GUID_NULL;
    GUID subtype = GUID_NULL;
    if (FAILED(pType->GetGUID(MF_MT_MAJOR_TYPE, &major)) || major != MFMediaType_Audio ||
        FAILED(pType->GetGUID(MF_MT_SUBTYPE, &subtype)))
        return MF_E_INVALIDMEDIATYPE;
    const bool isFloat = subtype == MFAudioFormat_Float;
    UINT32 bits = isFloat ? 32 : 16;
    UINT32 rate = 0;
    UINT32 channels = 0;
    UINT32 mask = 0;
    pType->GetUINT32(MF_MT_AUDIO_BITS_PER_SAMPLE, &bits);
    pType->GetUINT32(MF_MT_AUDIO_SAMPLES_PER_SECOND, &rate);
    pType->GetUINT32(MF_MT_AUDIO_NUM_CHANNELS, &channels);
    pType->GetUINT32(MF_MT_AUDIO_CHANNEL_MASK, &mask);
    if ((!isFloat && subtype != MFAudioFormat_PCM) || bits != (isFloat ? 32U : 16U) || rate > UINT32{kMaxAudioRate} ||
        channels > 8)
        return MF_E_INVALIDMEDIATYPE;
    if (std::bitset<32>(mask).count() != channels)
        mask = 0;
    pRequest->format = isFloat ? AV_SAMPLE_FMT_FLT : AV_SAMPLE_FMT_S16;
    pRequest->rate = static_cast<int>(rate);
    pRequest->channels = static_cast<int>(channels);
    pRequest->mask = mask;
    return S_OK;
}

HRESULT CreateOutputAudioType(const AudioRequest& request, IMFMediaType** ppType)
{
    const HRESULT hr = MFCreateMediaType(ppType);
    if (FAILED(hr))
        return hr;
    IMFMediaType* const pType = *ppType;
    const bool isFloat = request.format == AV_SAMPLE_FMT_FLT;
    const auto bits = isFloat ? 32U : 16U;
    const auto cbBlock = bits / 8 * static_cast<UINT32>(request.channels);
    pType->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Audio);
    pType->SetGUID(MF_MT_SUBTYPE, isFloat ? MFAudioFormat_Float : MFAudioFormat_PCM);
    pType->SetUINT32(MF_MT_AUDIO_NUM_CHANNELS, static_cast<UINT32>(request.channels));
    pType->SetUINT32(MF_MT_AUDIO_SAMPLES_PER_SECOND, static_cast<UINT32>(request.rate));
    pType->SetUINT32(MF_MT_AUDIO_BLOCK_ALIGNMENT, cbBlock);
    pType->SetUINT32(MF_MT_AUDIO_AVG_BYTES_PER_SECOND, cbBlock * static_cast<UINT32>(request.rate));
    pType->SetUINT32(MF_MT_AUDIO_BITS_PER_SAMPLE, bits);
    pType->SetUINT32(MF_MT_ALL_SAMPLES_INDEPENDENT, TRUE);
    const std::uint64_t mask = request.mask != 0 ? request.mask : MaskFor(request.channels);
    if (mask != 0 && mask <= UINT32_MAX)
        pType->SetUINT32(MF_MT_AUDIO_CHANNEL_MASK, static_cast<UINT32>(mask));
    return S_OK;
}
} // namespace pal
