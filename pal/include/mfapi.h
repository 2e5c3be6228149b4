/// @file mfapi.h
/// Media Foundation: creation functions, media type attributes and subtypes.
#pragma once

#include <mfobjects.h>

inline constexpr DWORD MF_VERSION = 0x00020070U;
inline constexpr DWORD MFSTARTUP_NOSOCKET = 1;
inline constexpr DWORD MFSTARTUP_LITE = MFSTARTUP_NOSOCKET;
inline constexpr DWORD MFSTARTUP_FULL = 0;

/// For what hosts call: seen from outside the library that this layer is part of.
#define PAL_HOST_API __attribute__((visibility("default")))

extern "C"
{
    /// Called by the host before any media object is made, balanced by MFShutdown().
    PAL_HOST_API HRESULT MFStartup(DWORD version, DWORD flags);
    PAL_HOST_API HRESULT MFShutdown();
    HRESULT MFCreateAttributes(IMFAttributes** ppAttributes, UINT32 initialSize);
    HRESULT MFCreateMediaType(IMFMediaType** ppType);
    HRESULT MFCreateSample(IMFSample** ppSample);
    /// @retval E_OUTOFMEMORY memory is short
    HRESULT MFCreateMemoryBuffer(DWORD cbMaxLength, IMFMediaBuffer** ppBuffer);
    HRESULT MFCreateDXGIDeviceManager(UINT* pResetToken, IMFDXGIDeviceManager** ppManager);
}

// ---- major types and subtypes --------------------------------------------------------------------------------

/// Media subtype GUID of a FOURCC or D3DFORMAT number.
constexpr GUID PalMediaSubtype(std::uint32_t format) noexcept
{
    return {format, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
}
constexpr std::uint32_t PalFourCC(char a, char b, char c, char d) noexcept
{
    return static_cast<std::uint32_t>(static_cast<unsigned char>(a)) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(b)) << 8 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(c)) << 16 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(d)) << 24;
}

inline constexpr GUID MFMediaType_Video = PalMediaSubtype(PalFourCC('v', 'i', 'd', 's'));
inline constexpr GUID MFMediaType_Audio = PalMediaSubtype(PalFourCC('a', 'u', 'd', 's'));
inline constexpr GUID MFVideoFormat_ARGB32 = PalMediaSubtype(21); ///< D3DFMT_A8R8G8B8: bytes B, G, R, A
inline constexpr GUID MFVideoFormat_RGB32 = PalMediaSubtype(22);  ///< D3DFMT_X8R8G8B8: bytes B, G, R, 255
inline constexpr GUID MFVideoFormat_NV12 = PalMediaSubtype(PalFourCC('N', 'V', '1', '2'));
inline constexpr GUID MFVideoFormat_I420 = PalMediaSubtype(PalFourCC('I', '4', '2', '0'));
inline constexpr GUID MFVideoFormat_H264 = PalMediaSubtype(PalFourCC('H', '2', '6', '4'));
inline constexpr GUID MFVideoFormat_HEVC = PalMediaSubtype(PalFourCC('H', 'E', 'V', 'C'));
inline constexpr GUID MFVideoFormat_MP4V = PalMediaSubtype(PalFourCC('M', 'P', '4', 'V'));
inline constexpr GUID MFVideoFormat_MJPG = PalMediaSubtype(PalFourCC('M', 'J', 'P', 'G'));
inline constexpr GUID MFVideoFormat_VP80 = PalMediaSubtype(PalFourCC('V', 'P', '8', '0'));
inline constexpr GUID MFVideoFormat_VP90 = PalMediaSubtype(PalFourCC('V', 'P', '9', '0'));
inline constexpr GUID MFVideoFormat_AV1 = PalMediaSubtype(PalFourCC('A', 'V', '0', '1'));
inline constexpr GUID MFVideoFormat_MPEG2{
    0xE06D8026U, 0xDB46, 0x11CF, {0xB4, 0xD1, 0x00, 0x80, 0x5F, 0x6C, 0xBB, 0xEA}};
inline constexpr GUID MFAudioFormat_PCM = PalMediaSubtype(1);   ///< whole numbers; 8 bits unsigned, more bits signed
inline constexpr GUID MFAudioFormat_Float = PalMediaSubtype(3); ///< 32-bit floating point, full scale is 1
inline constexpr GUID MFAudioFormat_MPEG = PalMediaSubtype(0x50);
inline constexpr GUID MFAudioFormat_MP3 = PalMediaSubtype(0x55);
inline constexpr GUID MFAudioFormat_WMAudioV8 = PalMediaSubtype(0x161); ///< Windows Media Audio 1 and 2
inline constexpr GUID MFAudioFormat_WMAudioV9 = PalMediaSubtype(0x162);
inline constexpr GUID MFAudioFormat_WMAudio_Lossless = PalMediaSubtype(0x163);
inline constexpr GUID MFAudioFormat_AAC = PalMediaSubtype(0x1610);
inline constexpr GUID MFAudioFormat_ALAC = PalMediaSubtype(0x6C61);
inline constexpr GUID MFAudioFormat_Opus = PalMediaSubtype(0x704F);
inline constexpr GUID MFAudioFormat_FLAC = PalMediaSubtype(0xF1AC);
inline constexpr GUID MFAudioFormat_Dolby_AC3{
    0xE06D802CU, 0xDB46, 0x11CF, {0xB4, 0xD1, 0x00, 0x80, 0x5F, 0x6C, 0xBB, 0xEA}};
inline constexpr GUID MFAudioFormat_Dolby_DDPlus{
    0xA7FB87AFU, 0x2D02, 0x42FB, {0xA4, 0xD4, 0x05, 0xCD, 0x93, 0x84, 0x3B, 0xDD}};
inline constexpr GUID MFAudioFormat_Vorbis{
    0x8D2FD10BU, 0x5841, 0x4A6B, {0x89, 0x05, 0x58, 0x8F, 0xEC, 0x1A, 0xDE, 0xD9}};

// ---- media type attributes -----------------------------------------------------------------------------------

inline constexpr GUID MF_MT_MAJOR_TYPE{0x48EBA18EU, 0xF8C9, 0x4687, {0xBF, 0x11, 0x0A, 0x74, 0xC9, 0xF9, 0x6A, 0x8F}};
inline constexpr GUID MF_MT_SUBTYPE{0xF7E34C9AU, 0x42E8, 0x4714, {0xB7, 0x4B, 0xCB, 0x29, 0xD7, 0x2C, 0x35, 0xE5}};
inline constexpr GUID MF_MT_ALL_SAMPLES_INDEPENDENT{
    0xC9173739U, 0x5E56, 0x461C, {0xB7, 0x13, 0x46, 0xFB, 0x99, 0x5C, 0xB9, 0x5F}};
/// UINT64: width in the high 32 bits, height in the low.
inline constexpr GUID MF_MT_FRAME_SIZE{0x1652C33DU, 0xD6B2, 0x4012, {0xB8, 0x34, 0x72, 0x03, 0x08, 0x49, 0xA3, 0x7D}};
/// UINT64: numerator in the high 32 bits, denominator in the low.
inline constexpr GUID MF_MT_FRAME_RATE{0xC459A2E8U, 0x3D2C, 0x4E44, {0xB1, 0x32, 0xFE, 0xE5, 0x15, 0x6C, 0x7B, 0xB0}};
inline constexpr GUID MF_MT_PIXEL_ASPECT_RATIO{
    0xC6376A1EU, 0x8D0A, 0x4027, {0xBE, 0x45, 0x6D, 0x9A, 0x0A, 0xD3, 0x9B, 0xB6}};
inline constexpr GUID MF_MT_INTERLACE_MODE{
    0xE2724BB8U, 0xE676, 0x4806, {0xB4, 0xB2, 0xA8, 0xD6, 0xEF, 0xB4, 0x4C, 0xCD}};
/// UINT32: clockwise angle in degrees that makes the stored picture upright: 0, 90, 180 or 270.
inline constexpr GUID MF_MT_VIDEO_ROTATION{
    0xC380465DU, 0x2271, 0x428C, {0x9B, 0x83, 0xEC, 0xEA, 0x3B, 0x4A, 0x85, 0xC1}};
inline constexpr GUID MF_MT_VIDEO_NOMINAL_RANGE{
    0xC21B8EE5U, 0xB956, 0x4071, {0x8D, 0xAF, 0x32, 0x5E, 0xDF, 0x5C, 0xAB, 0x11}};
inline constexpr GUID MF_MT_YUV_MATRIX{0x3E23D450U, 0x2C75, 0x4D25, {0xA0, 0x0E, 0xB9, 0x16, 0x70, 0xD1, 0x23, 0x27}};
inline constexpr GUID MF_MT_AUDIO_NUM_CHANNELS{
    0x37E48BF5U, 0x645E, 0x4C5B, {0x89, 0xDE, 0xAD, 0xA9, 0xE2, 0x9B, 0x69, 0x6A}};
inline constexpr GUID MF_MT_AUDIO_SAMPLES_PER_SECOND{
    0x5FAEEAE7U, 0x0290, 0x4C31, {0x9E, 0x8A, 0xC5, 0x34, 0xF6, 0x8D, 0x9D, 0xBA}};
inline constexpr GUID MF_MT_AUDIO_AVG_BYTES_PER_SECOND{
    0x1AAB75C8U, 0xCFEF, 0x451C, {0xAB, 0x95, 0xAC, 0x03, 0x4B, 0x8E, 0x17, 0x31}};
/// UINT32: bytes of one sample of all channels.
inline constexpr GUID MF_MT_AUDIO_BLOCK_ALIGNMENT{
    0x322DE230U, 0x9EEB, 0x43BD, {0xAB, 0x7A, 0xFF, 0x41, 0x22, 0x51, 0x54, 0x1D}};
inline constexpr GUID MF_MT_AUDIO_BITS_PER_SAMPLE{
    0xF2DEB57FU, 0x40FA, 0x4764, {0xAA, 0x33, 0xED, 0x4F, 0x2D, 0x1F, 0xF6, 0x69}};
/// UINT32: a bit for each speaker; 1 front left, 2 front right, 4 front centre, 8 low frequency, ...
inline constexpr GUID MF_MT_AUDIO_CHANNEL_MASK{
    0x55FB5765U, 0x644A, 0x4CAF, {0x84, 0x79, 0x93, 0x89, 0x83, 0xBB, 0x15, 0x88}};

enum MFVideoInterlaceMode
{
    MFVideoInterlace_Unknown = 0,
    MFVideoInterlace_Progressive = 2,
    MFVideoInterlace_FieldInterleavedUpperFirst = 3,
    MFVideoInterlace_FieldInterleavedLowerFirst = 4,
    MFVideoInterlace_MixedInterlaceOrProgressive = 7
};
enum MFNominalRange
{
    MFNominalRange_Unknown = 0,
    MFNominalRange_0_255 = 1,
    MFNominalRange_16_235 = 2
};
enum MFVideoTransferMatrix
{
    MFVideoTransferMatrix_Unknown = 0,
    MFVideoTransferMatrix_BT709 = 1,
    MFVideoTransferMatrix_BT601 = 2,
    MFVideoTransferMatrix_SMPTE240M = 3,
    MFVideoTransferMatrix_BT2020_10 = 4
};

// ---- packed pairs --------------------------------------------------------------------------------------------

inline HRESULT MFGetAttribute2UINT32asUINT64(IMFAttributes* pAttributes, REFGUID key, UINT32* pHigh, UINT32* pLow)
{
    UINT64 packed = 0;
    const HRESULT hr = pAttributes->GetUINT64(key, &packed);
    if (SUCCEEDED(hr))
    {
        *pHigh = static_cast<UINT32>(packed >> 32);
        *pLow = static_cast<UINT32>(packed);
    }
    return hr;
}
inline HRESULT MFSetAttribute2UINT32asUINT64(IMFAttributes* pAttributes, REFGUID key, UINT32 high, UINT32 low)
{
    return pAttributes->SetUINT64(key, static_cast<UINT64>(high) << 32 | low);
}
inline HRESULT MFGetAttributeSize(IMFAttributes* pAttributes, REFGUID key, UINT32* pWidth, UINT32* pHeight)
{
    return MFGetAttribute2UINT32asUINT64(pAttributes, key, pWidth, pHeight);
}
inline HRESULT MFSetAttributeSize(IMFAttributes* pAttributes, REFGUID key, UINT32 width, UINT32 height)
{
    return MFSetAttribute2UINT32asUINT64(pAttributes, key, width, height);
}
inline HRESULT MFGetAttributeRatio(IMFAttributes* pAttributes, REFGUID key, UINT32* pNumerator, UINT32* pDenominator)
{
    return MFGetAttribute2UINT32asUINT64(pAttributes, key, pNumerator, pDenominator);
}
inline HRESULT MFSetAttributeRatio(IMFAttributes* pAttributes, REFGUID key, UINT32 numerator, UINT32 denominator)
{
    return MFSetAttribute2UINT32asUINT64(pAttributes, key, numerator, denominator);
}
