/// @file AudioDecoder.h
/// Sound of a media file.
#pragma once

#include "engine/platform/Export.h"

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

struct IMFMediaType;
struct IMFSample;
struct IMFSourceReader;

/// Turns the first audio stream of a file into interleaved 16-bit stereo PCM at 48,000 Hz, one decoded block at a time.
/// Times are counts of 100 ns from the start of the file.
/// Threads : used by one at a time.
class QMX_API CAudioDecoder
{
public:
    CAudioDecoder() = default;
    ~CAudioDecoder();
    /// Copy pointers as plain values, without references: never copy a decoder that is open.
    CAudioDecoder(const CAudioDecoder& other) = default;
    CAudioDecoder& operator=(const CAudioDecoder& other) = default; ///< likewise

    /// Opens @p path and fixes the output to 48,000 Hz, 16 bits, two channels. A file that was open before is given
    /// up once the new one is open.
    /// @return the first failure of the reader: no such file, no audio stream, no decoder for it.
    HRESULT Initialize(std::wstring path);
    /// The next block of PCM.
    /// @param ppBuffer  a block of malloc's, or null; replaced (the old one freed) when it is null or smaller than the
    ///                  block. The caller frees it with free().
    /// @param nSize     bytes that *ppBuffer holds; written only when the buffer is replaced.
    /// @return bytes delivered; 0 at the end, on a failure, and when nothing is open.
    unsigned int GetSample(unsigned char** ppBuffer, DWORD& nSize);
    /// The same into a buffer that holds any block. The platform's readers differ in how long a block may be; that of
    /// this project stays below a second, 192,000 bytes.
    unsigned int GetSample(unsigned char* pBuffer);
    /// The next block is the one that holds @p time: it starts before it where blocks cannot be cut.
    /// @return S_OK; a time past the end shows in GetSample().
    HRESULT Seek(std::uint64_t time);

    /// The type that the stream is stored in. @return S_FALSE when nothing is open; *ppType is not touched then.
    HRESULT GetNativeMediaType(IMFMediaType** ppType);
    /// The type that is delivered. @return as GetNativeMediaType()
    HRESULT GetCurrentMediaType(IMFMediaType** ppType);
    /// Delivers another type from now on. @return S_FALSE when nothing is open
    HRESULT SetCurrentMediaType(IMFMediaType* pType);

    /// A type of whole-number PCM. @param[out] ppType  one reference
    static HRESULT CreatePCMAudioType(unsigned int nSamplesPerSec, unsigned int nBitsPerSample, unsigned int nChannels,
                                      IMFMediaType** ppType);
    /// The PCM type with rate, channels and bits (16 when missing) of @p pType; a type that is PCM is handed back.
    /// @param[out] ppType  one reference
    /// @retval MF_E_INVALIDMEDIATYPE no audio; MF_E_INVALIDTYPE no channels or no rate
    static HRESULT ConvertAudioTypeToPCM(IMFMediaType* pType, IMFMediaType** ppType);

private:
    friend HRESULT QMXGetClipAudioBegin(void** phHandle, std::wstring path, std::uint64_t startTime);
    friend struct AudioDecoderProbe; // defined by the tests

    HRESULT _SetDefaultFormat();
    /// Positions the reader at @p time and keeps the block that holds it.
    void _SkipPreload(std::int64_t time);
    [[nodiscard]] HRESULT _ReadNext(DWORD* pFlags, LONGLONG* pTimestamp, IMFSample** ppSample);
    void _UpdateFormat();
    std::int64_t _DurationOf(DWORD cb);

    IMFSourceReader* m_pReader = nullptr; // owns one reference; null when nothing is open
    std::uint32_t m_nSamplesPerSec = 48'000;
    std::uint32_t m_nChannels = 2;
    std::uint32_t m_nBitsPerSample = 16;
    std::uint32_t m_nAvgBytesPerSec = 0;    ///< 0: computed when it is first needed
    std::vector<std::uint8_t> m_vecPending; ///< PCM that a seek has decoded, not yet handed out
};

/// Opens the sound of a file for reading from @p startTime (100 ns) on.
/// @param phHandle  null in it: a new handle; else the one to use again for this file.
/// @return E_FAIL for a null @p phHandle; a failure of Initialize(), *phHandle is not written then.
QMX_API HRESULT QMXGetClipAudioBegin(void** phHandle, std::wstring path, std::uint64_t startTime);
/// The next block of 48 kHz 16-bit stereo PCM into @p pBuffer, which must hold any block: see
/// CAudioDecoder::GetSample().
/// @return bytes; 0 at the end; 0x80004005 for a null handle.
QMX_API unsigned int QMXGetClipAudio(void* hHandle, unsigned char* pBuffer);
/// Ends a handle; null is fine. @return S_OK
QMX_API HRESULT QMXGetClipAudioEnd(void* hHandle);
