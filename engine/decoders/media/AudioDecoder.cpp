#include "engine/decoders/media/AudioDecoder.h"

#include "engine/platform/RefPtr.h"
#include "engine/platform/ReturnIfFailed.h"

#include <mfapi.h>
#include <mferror.h>
#include <mfidl.h>
#include <mfreadwrite.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace
{
constexpr DWORD kStream = 0xFFFFFFFDU; // the reader's name for the first audio stream
constexpr UINT32 kFrontLeftAndRight = 3;
constexpr double kUnitsPerSecond = 10'000'000;
/// A reader may answer without a sample and without the end (a gap in the stream); one that does nothing else is given
/// up.
constexpr int kMaxEmptyReads = 10'000;

/// One buffer that holds the whole sample, locked.
class CLockedSample
{
public:
    explicit CLockedSample(IMFSample* pSample)
    {
        BYTE* pBytes = nullptr;
        DWORD cb = 0;
        if (FAILED(pSample->ConvertToContiguousBuffer(m_pBuffer.Put())) || !m_pBuffer ||
            FAILED(m_pBuffer->Lock(&pBytes, nullptr, &cb)))
            return;
        m_isLocked = true;
        m_pBytes = pBytes;
        m_cb = pBytes != nullptr ? cb : 0;
    }
    ~CLockedSample()
    {
        if (m_isLocked)
            m_pBuffer->Unlock();
    }
    CLockedSample(const CLockedSample&) = delete;
    CLockedSample& operator=(const CLockedSample&) = delete;

    bool IsLocked() const { return m_isLocked; }
    const std::uint8_t* Bytes() const { return m_pBytes; }
    DWORD Length() const { return m_cb; }

private:
    ComPtr<IMFMediaBuffer> m_pBuffer;
    bool m_isLocked = false;
    const std::uint8_t* m_pBytes = nullptr;
    DWORD m_cb = 0;
};

/// Copies a block to the caller, into a new buffer where the old one does not hold it.
/// @return bytes copied; 0 when memory is short, *ppBuffer is null then.
unsigned int HandOver(const std::uint8_t* pBytes, DWORD cb, unsigned char** ppBuffer, DWORD& nSize)
{
    if (*ppBuffer == nullptr || nSize < cb)
    {
        std::free(*ppBuffer);
        *ppBuffer = static_cast<unsigned char*>(std::malloc(cb));
        nSize = *ppBuffer != nullptr ? cb : 0;
        if (*ppBuffer == nullptr)
            return 0;
    }
    if (cb != 0)
        std::memcpy(*ppBuffer, pBytes, cb);
    return cb;
}
} // namespace

CAudioDecoder::~CAudioDecoder()
{
    if (m_pReader == nullptr)
        return;
    m_pReader->Flush(kStream);
    m_pReader->Release();
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported interface takes the path by value
HRESULT CAudioDecoder::Initialize(std::wstring path)
{
    ComPtr<IMFSourceReader> pReader;
    QMX_RETURN_IF_FAILED(MFCreateSourceReaderFromURL(path.c_str(), nullptr, pReader.Put()));
    if (IMFSourceReader* const pOld = std::exchange(m_pReader, pReader.Detach()))
        pOld->Release();
    m_vecPending.clear(); // the old file's
    QMX_RETURN_IF_FAILED(m_pReader->SetStreamSelection(MF_SOURCE_READER_ALL_STREAMS, FALSE));
    QMX_RETURN_IF_FAILED(m_pReader->SetStreamSelection(kStream, TRUE));
    return _SetDefaultFormat();
}

HRESULT CAudioDecoder::_SetDefaultFormat()
{
    ComPtr<IMFMediaType> pType;
    QMX_RETURN_IF_FAILED(CreatePCMAudioType(48'000, 16, 2, pType.Put()));
    QMX_RETURN_IF_FAILED(pType->SetUINT32(MF_MT_AUDIO_CHANNEL_MASK, kFrontLeftAndRight));
    return m_pReader->SetCurrentMediaType(kStream, nullptr, pType.Get());
}

// ---- reading -----------------------------------------------------------------------------------------------------

/// Reads until there is a sample, the end or a failure (both without a sample).
HRESULT CAudioDecoder::_ReadNext(DWORD* pFlags, LONGLONG* pTimestamp, IMFSample** ppSample)
{
    *ppSample = nullptr;
    for (int i = 0; i < kMaxEmptyReads; ++i)
    {
        DWORD index = 0;
        DWORD flags = 0;
        ComPtr<IMFSample> pSample;
        QMX_RETURN_IF_FAILED(m_pReader->ReadSample(kStream, 0, &index, &flags, pTimestamp, pSample.Put()));
        *pFlags |= flags;
        if ((flags & MF_SOURCE_READERF_ENDOFSTREAM) != 0)
            return S_OK;
        if (pSample)
        {
            *ppSample = pSample.Detach();
            return S_OK;
        }
    }
    return E_FAIL;
}

/// Takes over what the reader delivers now; what its type does not say stays as it was.
void CAudioDecoder::_UpdateFormat()
{
    ComPtr<IMFMediaType> pType;
    if (FAILED(m_pReader->GetCurrentMediaType(kStream, pType.Put())) || !pType)
        return;
    const auto update = [&](REFGUID key, std::uint32_t& value)
    {
        UINT32 current = 0;
        if (SUCCEEDED(pType->GetUINT32(key, &current)))
            value = current;
    };
    update(MF_MT_AUDIO_SAMPLES_PER_SECOND, m_nSamplesPerSec);
    update(MF_MT_AUDIO_BITS_PER_SAMPLE, m_nBitsPerSample);
    update(MF_MT_AUDIO_NUM_CHANNELS, m_nChannels);
    update(MF_MT_AUDIO_AVG_BYTES_PER_SECOND, m_nAvgBytesPerSec);
}

/// How long @p cb bytes sound, 100 ns, rounded down.
std::int64_t CAudioDecoder::_DurationOf(DWORD cb)
{
    if (m_nAvgBytesPerSec == 0)
        m_nAvgBytesPerSec = m_nSamplesPerSec * m_nChannels * m_nBitsPerSample / 8;
    return m_nAvgBytesPerSec != 0 ? static_cast<std::int64_t>(cb * kUnitsPerSecond / m_nAvgBytesPerSec) : 0;
}

void CAudioDecoder::_SkipPreload(std::int64_t time)
{
    m_vecPending.clear(); // of an earlier seek
    if (m_pReader == nullptr)
        return;
    PROPVARIANT position;
    PropVariantInit(&position);
    position.vt = VT_I8;
    position.hVal.QuadPart = time;
    m_pReader->SetCurrentPosition(GUID_NULL, position);
    for (bool found = false; !found;)
    {
        DWORD flags = 0;
        LONGLONG timestamp = 0;
        ComPtr<IMFSample> pSample;
        if (FAILED(_ReadNext(&flags, &timestamp, pSample.Put())) || !pSample)
            return;
        if ((flags & MF_SOURCE_READERF_CURRENTMEDIATYPECHANGED) != 0)
            _UpdateFormat();
        const CLockedSample locked(pSample.Get());
        if (!locked.IsLocked())
            return;
        found = timestamp + _DurationOf(locked.Length()) >= time;
        // The part before the time stays: delivery starts with the block.
        if (found && locked.Length() != 0)
            m_vecPending.assign(locked.Bytes(), locked.Bytes() + locked.Length());
    }
}

HRESULT CAudioDecoder::Seek(std::uint64_t time)
{
    try
    {
        _SkipPreload(static_cast<std::int64_t>(time));
    }
    catch (const std::bad_alloc&)
    {
        m_vecPending.clear();
    }
    return S_OK;
}

unsigned int CAudioDecoder::GetSample(unsigned char** ppBuffer, DWORD& nSize)
{
    if (m_pReader == nullptr || ppBuffer == nullptr)
        return 0;
    if (!m_vecPending.empty())
    {
        const unsigned int cb = HandOver(m_vecPending.data(), static_cast<DWORD>(m_vecPending.size()), ppBuffer, nSize);
        m_vecPending.clear();
        return cb;
    }
    DWORD flags = 0;
    LONGLONG timestamp = 0;
    ComPtr<IMFSample> pSample;
    if (FAILED(_ReadNext(&flags, &timestamp, pSample.Put())) || !pSample)
        return 0;
    const CLockedSample locked(pSample.Get());
    return locked.IsLocked() ? HandOver(locked.Bytes(), locked.Length(), ppBuffer, nSize) : 0;
}

unsigned int CAudioDecoder::GetSample(unsigned char* pBuffer)
{
    if (pBuffer == nullptr)
        return 0;
    DWORD size = std::numeric_limits<DWORD>::max();
    // NOLINTNEXTLINE(clang-analyzer-unix.Malloc): no block is larger, so the buffer is never replaced
    return GetSample(&pBuffer, size);
}

// ---- types -------------------------------------------------------------------------------------------------------

HRESULT CAudioDecoder::GetNativeMediaType(IMFMediaType** ppType)
{
    return m_pReader != nullptr ? m_pReader->GetNativeMediaType(kStream, 0, ppType) : S_FALSE;
}

HRESULT CAudioDecoder::GetCurrentMediaType(IMFMediaType** ppType)
{
    return m_pReader != nullptr ? m_pReader->GetCurrentMediaType(kStream, ppType) : S_FALSE;
}

HRESULT CAudioDecoder::SetCurrentMediaType(IMFMediaType* pType)
{
    return m_pReader != nullptr ? m_pReader->SetCurrentMediaType(kStream, nullptr, pType) : S_FALSE;
}

HRESULT CAudioDecoder::CreatePCMAudioType(unsigned int nSamplesPerSec, unsigned int nBitsPerSample,
                                          unsigned int nChannels, IMFMediaType** ppType)
{
    if (ppType == nullptr)
        return E_POINTER;
    *ppType = nullptr;
    const UINT32 cbBlock = nBitsPerSample / 8 * nChannels;
    ComPtr<IMFMediaType> pType;
    QMX_RETURN_IF_FAILED(MFCreateMediaType(pType.Put()));
    QMX_RETURN_IF_FAILED(pType->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Audio));
    QMX_RETURN_IF_FAILED(pType->SetGUID(MF_MT_SUBTYPE, MFAudioFormat_PCM));
    QMX_RETURN_IF_FAILED(pType->SetUINT32(MF_MT_AUDIO_NUM_CHANNELS, nChannels));
    QMX_RETURN_IF_FAILED(pType->SetUINT32(MF_MT_AUDIO_SAMPLES_PER_SECOND, nSamplesPerSec));
    QMX_RETURN_IF_FAILED(pType->SetUINT32(MF_MT_AUDIO_BLOCK_ALIGNMENT, cbBlock));
    QMX_RETURN_IF_FAILED(pType->SetUINT32(MF_MT_AUDIO_AVG_BYTES_PER_SECOND, nSamplesPerSec * cbBlock));
    QMX_RETURN_IF_FAILED(pType->SetUINT32(MF_MT_AUDIO_BITS_PER_SAMPLE, nBitsPerSample));
    QMX_RETURN_IF_FAILED(pType->SetUINT32(MF_MT_ALL_SAMPLES_INDEPENDENT, TRUE));
    *ppType = pType.Detach();
    return S_OK;
}

HRESULT CAudioDecoder::ConvertAudioTypeToPCM(IMFMediaType* pType, IMFMediaType** ppType)
{
    if (ppType == nullptr)
        return E_POINTER;
    *ppType = nullptr;
    if (pType == nullptr)
        return E_POINTER;
    GUID major = GUID_NULL;
    GUID subtype = GUID_NULL;
    QMX_RETURN_IF_FAILED(pType->GetMajorType(&major));
    if (major != MFMediaType_Audio)
        return MF_E_INVALIDMEDIATYPE;
    QMX_RETURN_IF_FAILED(pType->GetGUID(MF_MT_SUBTYPE, &subtype));
    if (subtype == MFAudioFormat_PCM)
    {
        *ppType = ComPtr<IMFMediaType>::Retain(pType).Detach();
        return S_OK;
    }
    UINT32 channels = 0;
    UINT32 rate = 0;
    UINT32 bits = 16;
    if (FAILED(pType->GetUINT32(MF_MT_AUDIO_NUM_CHANNELS, &channels)))
        channels = 0;
    if (FAILED(pType->GetUINT32(MF_MT_AUDIO_SAMPLES_PER_SECOND, &rate)))
        rate = 0;
    if (FAILED(pType->GetUINT32(MF_MT_AUDIO_BITS_PER_SAMPLE, &bits)))
        bits = 16;
    if (channels == 0 || rate == 0)
        return MF_E_INVALIDTYPE;
    return CreatePCMAudioType(rate, bits, channels, ppType);
}

// ---- clip audio --------------------------------------------------------------------------------------------------

HRESULT QMXGetClipAudioBegin(void** phHandle, std::wstring path, std::uint64_t startTime)
{
    if (phHandle == nullptr)
        return E_FAIL;
    auto* pDecoder = static_cast<CAudioDecoder*>(*phHandle);
    const bool isNew = pDecoder == nullptr;
    if (isNew)
        pDecoder = new (std::nothrow) CAudioDecoder;
    if (pDecoder == nullptr)
        return E_OUTOFMEMORY;
    HRESULT hr = S_OK;
    try
    {
        hr = pDecoder->Initialize(std::move(path));
        if (SUCCEEDED(hr))
            pDecoder->_SkipPreload(static_cast<std::int64_t>(startTime));
    }
    catch (const std::bad_alloc&)
    {
        hr = E_OUTOFMEMORY;
    }
    if (FAILED(hr))
    {
        if (isNew)
            delete pDecoder;
        return hr;
    }
    *phHandle = pDecoder;
    return S_OK;
}

unsigned int QMXGetClipAudio(void* hHandle, unsigned char* pBuffer)
{
    if (hHandle == nullptr)
        return static_cast<unsigned int>(E_FAIL);
    return static_cast<CAudioDecoder*>(hHandle)->GetSample(pBuffer);
}

HRESULT QMXGetClipAudioEnd(void* hHandle)
{
    delete static_cast<CAudioDecoder*>(hHandle);
    return S_OK;
}
