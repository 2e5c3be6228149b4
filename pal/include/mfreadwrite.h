/// @file mfreadwrite.h
/// The Media Foundation source reader, in its synchronous form.
#pragma once

#include <mfidl.h>
#include <mfobjects.h>
#include <propidl.h>

/// Stands for a stream or for the source in place of an index.
enum : DWORD
{
    MF_SOURCE_READER_INVALID_STREAM_INDEX = 0xFFFFFFFFU,
    MF_SOURCE_READER_ALL_STREAMS = 0xFFFFFFFEU,
    MF_SOURCE_READER_ANY_STREAM = 0xFFFFFFFEU,
    MF_SOURCE_READER_FIRST_AUDIO_STREAM = 0xFFFFFFFDU,
    MF_SOURCE_READER_FIRST_VIDEO_STREAM = 0xFFFFFFFCU,
    MF_SOURCE_READER_MEDIASOURCE = 0xFFFFFFFFU
};

/// What ReadSample() reports beside the sample.
enum MF_SOURCE_READER_FLAG : DWORD
{
    MF_SOURCE_READERF_ERROR = 0x1,
    MF_SOURCE_READERF_ENDOFSTREAM = 0x2,
    MF_SOURCE_READERF_NEWSTREAM = 0x4,
    MF_SOURCE_READERF_NATIVEMEDIATYPECHANGED = 0x10,
    MF_SOURCE_READERF_CURRENTMEDIATYPECHANGED = 0x20,
    MF_SOURCE_READERF_STREAMTICK = 0x100
};

inline constexpr GUID MF_SOURCE_READER_ENABLE_ADVANCED_VIDEO_PROCESSING{
    0x0F81DA2CU, 0xB537, 0x4672, {0xA8, 0xB2, 0xA6, 0x81, 0xB1, 0x73, 0x07, 0xA3}};
inline constexpr GUID MF_READWRITE_DISABLE_CONVERTERS{
    0x98D5B065U, 0x1374, 0x4847, {0x8D, 0x5D, 0x31, 0x52, 0x0F, 0xEE, 0x71, 0x56}};
inline constexpr GUID MF_LOW_LATENCY{0x9C27891AU, 0xED7A, 0x40E1, {0x88, 0xE8, 0xB2, 0x27, 0x27, 0xA0, 0x24, 0xEE}};
inline constexpr GUID MF_SOURCE_READER_D3D_MANAGER{
    0xEC822DA2U, 0xE1E9, 0x4B29, {0xA0, 0xD8, 0x56, 0x3C, 0x71, 0x9F, 0x52, 0x69}};

/// Pulls decoded samples out of a media file. Calls come from one thread at a time.
struct IMFSourceReader : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetStreamSelection(DWORD streamIndex, BOOL* pSelected) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetStreamSelection(DWORD streamIndex, BOOL selected) = 0;
    /// @retval MF_E_NO_MORE_TYPES for a type index above 0
    virtual HRESULT STDMETHODCALLTYPE GetNativeMediaType(DWORD streamIndex, DWORD typeIndex, IMFMediaType** ppType) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetCurrentMediaType(DWORD streamIndex, IMFMediaType** ppType) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetCurrentMediaType(DWORD streamIndex, DWORD* pReserved, IMFMediaType* pType) = 0;
    /// @param position VT_I8, 100 ns from the start of the presentation. @param timeFormat GUID_NULL.
    virtual HRESULT STDMETHODCALLTYPE SetCurrentPosition(REFGUID timeFormat, const PROPVARIANT& position) = 0;
    /// Next sample of a selected stream. At the end *ppSample is null and the flags carry
    /// MF_SOURCE_READERF_ENDOFSTREAM. Every out-pointer but @p ppSample may be null.
    virtual HRESULT STDMETHODCALLTYPE ReadSample(DWORD streamIndex, DWORD controlFlags, DWORD* pActualStreamIndex,
                                                 DWORD* pStreamFlags, LONGLONG* pTimestamp, IMFSample** ppSample) = 0;
    virtual HRESULT STDMETHODCALLTYPE Flush(DWORD streamIndex) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetServiceForStream(DWORD streamIndex, REFGUID service, REFIID iid,
                                                          void** ppObject) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetPresentationAttribute(DWORD streamIndex, REFGUID key, PROPVARIANT* pValue) = 0;

protected:
    ~IMFSourceReader() = default;
};
PAL_DECLARE_IID(IMFSourceReader, IID_IMFSourceReader, 0x70AE66F2U, 0xC809, 0x4E4F, 0x89, 0x15, 0xBD, 0xCB, 0x40, 0x6B,
                0x79, 0x93);

/// Opens a local media file. @param pAttributes may be null.
/// @retval HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) no such file
/// @retval MF_E_UNSUPPORTED_BYTESTREAM_TYPE the file is no media container that can be read
extern "C" HRESULT MFCreateSourceReaderFromURL(LPCWSTR url, IMFAttributes* pAttributes, IMFSourceReader** ppReader);
