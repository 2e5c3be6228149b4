#include "pal/media/SourceReader.h"
#include "pal/media/PictureBuffer.h"
#include "pal/media/VideoType.h"

#include <mfapi.h>
#include <mferror.h>

#include <new>
#include <utility>

namespace pal
{
namespace
{
/// Runs @p step and turns what it throws into a status code.
template <class Step> HRESULT Guarded(Step&& step)
{
    try
    {
        return step();
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
    catch (...)
    {
        return E_UNEXPECTED;
    }
}
} // namespace

SourceReader::SourceReader(std::unique_ptr<MediaFile> pFile)
    : m_pFile(std::move(pFile)), m_audioSelected(m_pFile->FindStream(AVMEDIA_TYPE_VIDEO) == nullptr)
{
}

SourceReader::~SourceReader()
{
    if (m_pCurrentType != nullptr)
        m_pCurrentType->Release();
}

AVStream* SourceReader::ResolveStream(DWORD streamIndex) const
{
    if (streamIndex == MF_SOURCE_READER_FIRST_VIDEO_STREAM)
        return m_pFile->FindStream(AVMEDIA_TYPE_VIDEO);
    if (streamIndex == MF_SOURCE_READER_FIRST_AUDIO_STREAM)
        return m_pFile->FindStream(AVMEDIA_TYPE_AUDIO);
    const AVFormatContext* const pFormat = m_pFile->GetFormat();
    return streamIndex < pFormat->nb_streams ? pFormat->streams[streamIndex] : nullptr;
}

HRESULT SourceReader::GetVideo(DWORD streamIndex, VideoSource** ppSource)
{
    AVStream* const pStream = ResolveStream(streamIndex);
    if (pStream == nullptr || pStream != m_pFile->FindStream(AVMEDIA_TYPE_VIDEO))
        return MF_E_INVALIDSTREAMNUMBER;
    if (m_pAudio)
        return MF_E_INVALIDREQUEST;
    if (!m_pVideo)
        m_pVideo = std::make_unique<VideoSource>(*m_pFile, *pStream);
    *ppSource = m_pVideo.get();
    return S_OK;
}

bool SourceReader::IsAudio(DWORD streamIndex) const
{
    const AVStream* const pStream = ResolveStream(streamIndex);
    return pStream != nullptr && pStream == m_pFile->FindStream(AVMEDIA_TYPE_AUDIO);
}

HRESULT SourceReader::GetAudio(AudioSource** ppSource)
{
    if (m_pVideo)
        return MF_E_INVALIDREQUEST;
    if (!m_pAudio)
        m_pAudio = std::make_unique<AudioSource>(*m_pFile, *m_pFile->FindStream(AVMEDIA_TYPE_AUDIO));
    *ppSource = m_pAudio.get();
    return S_OK;
}

HRESULT SourceReader::GetStreamSelection(DWORD streamIndex, BOOL* pSelected)
{
    if (pSelected == nullptr)
        return E_POINTER;
    const AVStream* const pStream = ResolveStream(streamIndex);
    if (pStream == nullptr)
        return MF_E_INVALIDSTREAMNUMBER;
    const bool selected = pStream == m_pFile->FindStream(AVMEDIA_TYPE_VIDEO)   ? m_videoSelected
                          : pStream == m_pFile->FindStream(AVMEDIA_TYPE_AUDIO) ? m_audioSelected
                                                                               : false;
    *pSelected = selected ? TRUE : FALSE;
    return S_OK;
}

HRESULT SourceReader::SetStreamSelection(DWORD streamIndex, BOOL selected)
{
    if (streamIndex == MF_SOURCE_READER_ALL_STREAMS)
    {
        m_videoSelected = selected != FALSE;
        m_audioSelected = selected != FALSE;
        return S_OK;
    }
    const AVStream* const pStream = ResolveStream(streamIndex);
    if (pStream == nullptr)
        return MF_E_INVALIDSTREAMNUMBER;
    if (pStream == m_pFile->FindStream(AVMEDIA_TYPE_VIDEO))
        m_videoSelected = selected != FALSE;
    else if (pStream == m_pFile->FindStream(AVMEDIA_TYPE_AUDIO))
        m_audioSelected = selected != FALSE;
    return S_OK;
}

HRESULT SourceReader::GetNativeMediaType(DWORD streamIndex, DWORD typeIndex, IMFMediaType** ppType)
{
    if (ppType == nullptr)
        return E_POINTER;
    *ppType = nullptr;
    return Guarded(
        [&]
        {
            const AVStream* const pStream = ResolveStream(streamIndex);
            if (pStream != nullptr && pStream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
                return typeIndex == 0 ? CreateNativeAudioType(*pStream, ppType) : MF_E_NO_MORE_TYPES;
            VideoSource* pVideo = nullptr;
            const HRESULT hr = GetVideo(streamIndex, &pVideo);
            if (FAILED(hr))
                return hr;
            if (typeIndex != 0)
                return MF_E_NO_MORE_TYPES;
            return CreateNativeVideoType(*m_pFile->GetFormat(), *ResolveStream(streamIndex), pVideo->GetGrid(), ppType);
        });
}

HRESULT SourceReader::GetCurrentMediaType(DWORD streamIndex, IMFMediaType** ppType)
{
    if (ppType == nullptr)
        return E_POINTER;
    *ppType = nullptr;
    if (IsAudio(streamIndex) && m_pAudio && m_pAudio->IsReady())
        return CreateOutputAudioType(m_pAudio->GetOutput(), ppType);
    if (m_pCurrentType == nullptr || IsAudio(streamIndex))
        return GetNativeMediaType(streamIndex, 0, ppType);
    if (ResolveStream(streamIndex) != m_pFile->FindStream(AVMEDIA_TYPE_VIDEO))
        return MF_E_INVALIDSTREAMNUMBER;
    HRESULT hr = MFCreateMediaType(ppType);
    if (SUCCEEDED(hr))
        hr = m_pCurrentType->CopyAllItems(*ppType);
    return hr;
}

HRESULT SourceReader::SetAudioType(IMFMediaType* pType)
{
    AudioRequest request;
    AudioSource* pAudio = nullptr;
    HRESULT hr = ParseAudioType(pType, &request);
    if (SUCCEEDED(hr))
        hr = GetAudio(&pAudio);
    return SUCCEEDED(hr) ? pAudio->SetRequest(request) : hr;
}

HRESULT SourceReader::SetCurrentMediaType(DWORD streamIndex, DWORD*, IMFMediaType* pType)
{
    if (pType == nullptr)
        return E_POINTER;
    return Guarded(
        [&]
        {
            if (IsAudio(streamIndex))
                return SetAudioType(pType);
            VideoSource* pVideo = nullptr;
            HRESULT hr = GetVideo(streamIndex, &pVideo);
            PictureFormat format;
            Rate rate;
            if (SUCCEEDED(hr))
                hr = ParseOutputType(pType, *ResolveStream(streamIndex), &format, &rate);
            if (SUCCEEDED(hr))
                hr = pVideo->OpenDecoder();
            IMFMediaType* pCopy = nullptr;
            if (SUCCEEDED(hr))
                hr = MFCreateMediaType(&pCopy);
            if (SUCCEEDED(hr))
                hr = pType->CopyAllItems(pCopy);
            if (FAILED(hr))
            {
                if (pCopy != nullptr)
                    pCopy->Release();
                return hr;
            }
            m_pConverter = std::make_shared<PictureConverter>(format);
            pVideo->SetRate(rate);
            if (m_pCurrentType != nullptr)
                m_pCurrentType->Release();
            m_pCurrentType = pCopy;
            return S_OK;
        });
}

HRESULT SourceReader::SetCurrentPosition(REFGUID timeFormat, const PROPVARIANT& position)
{
    if (timeFormat != GUID_NULL || position.vt != VT_I8)
        return E_INVALIDARG;
    // A negative position is no place in the presentation: like one past its end it leads to the end of the stream.
    const LONGLONG time = position.hVal.QuadPart;
    if (m_pVideo && time < 0)
        m_pVideo->SeekToEnd();
    else if (m_pVideo)
        m_pVideo->Seek(time);
    else if (m_pAudio && m_pAudio->IsReady() && time < 0)
        m_pAudio->SeekToEnd();
    else if (m_pAudio && m_pAudio->IsReady())
        m_pAudio->Seek(time);
    return S_OK; // the reader stands at the start as long as no stream is set up
}

HRESULT SourceReader::MakeSample(const VideoSource::Picture& picture, IMFSample** ppSample)
{
    const FrameGrid& grid = m_pVideo->GetGrid();
    IMFSample* pSample = nullptr;
    IMFMediaBuffer* pBuffer = nullptr;
    HRESULT hr = MFCreateSample(&pSample);
    if (SUCCEEDED(hr))
        hr = CreatePictureBuffer(picture.pFrame, m_pConverter, &pBuffer);
    if (SUCCEEDED(hr))
        hr = pSample->AddBuffer(pBuffer);
    if (pBuffer != nullptr)
        pBuffer->Release();
    if (SUCCEEDED(hr))
    {
        pSample->SetSampleTime(grid.TimeOf(picture.index));
        pSample->SetSampleDuration(grid.TimeOf(picture.index + 1) - grid.TimeOf(picture.index));
        *ppSample = pSample;
    }
    else if (pSample != nullptr)
        pSample->Release();
    return hr;
}

HRESULT SourceReader::ReadVideo(DWORD* pFlags, LONGLONG* pTime, IMFSample** ppSample)
{
    const VideoSource::Picture picture = m_pVideo->Read();
    if (!picture.pFrame)
    {
        *pFlags = MF_SOURCE_READERF_ENDOFSTREAM;
        return S_OK;
    }
    *pTime = m_pVideo->GetGrid().TimeOf(picture.index);
    return MakeSample(picture, ppSample);
}

HRESULT SourceReader::ReadSample(DWORD streamIndex, DWORD controlFlags, DWORD* pActualStreamIndex, DWORD* pStreamFlags,
                                 LONGLONG* pTimestamp, IMFSample** ppSample)
{
    if (ppSample == nullptr)
        return E_POINTER;
    *ppSample = nullptr;
    DWORD flags = 0;
    LONGLONG time = 0;
    if (pStreamFlags != nullptr)
        *pStreamFlags = 0;
    if (pTimestamp != nullptr)
        *pTimestamp = 0;
    if (controlFlags != 0)
        return E_INVALIDARG;
    const DWORD stream = streamIndex != MF_SOURCE_READER_ANY_STREAM ? streamIndex
                         : m_pAudio                                 ? DWORD{MF_SOURCE_READER_FIRST_AUDIO_STREAM}
                                                                    : DWORD{MF_SOURCE_READER_FIRST_VIDEO_STREAM};
    const AVStream* const pStream = ResolveStream(stream);
    if (pStream == nullptr)
        return MF_E_INVALIDSTREAMNUMBER;
    const bool isAudio = IsAudio(stream);
    const bool isVideo = pStream == m_pFile->FindStream(AVMEDIA_TYPE_VIDEO);
    if (!(isAudio && m_audioSelected && m_pAudio && m_pAudio->IsReady()) &&
        !(isVideo && m_videoSelected && m_pVideo && m_pConverter))
        return MF_E_INVALIDREQUEST;
    if (pActualStreamIndex != nullptr)
        *pActualStreamIndex = static_cast<DWORD>(pStream->index);
    const HRESULT hr =
        Guarded([&] { return isAudio ? m_pAudio->Read(&flags, &time, ppSample) : ReadVideo(&flags, &time, ppSample); });
    if (FAILED(hr))
        flags = MF_SOURCE_READERF_ERROR;
    if (pStreamFlags != nullptr)
        *pStreamFlags = flags;
    if (pTimestamp != nullptr)
        *pTimestamp = time;
    return hr;
}

HRESULT SourceReader::Flush(DWORD streamIndex)
{
    // Nothing is queued between calls: the position alone decides what the next sample is.
    return streamIndex == MF_SOURCE_READER_ALL_STREAMS || ResolveStream(streamIndex) != nullptr
               ? S_OK
               : MF_E_INVALIDSTREAMNUMBER;
}

HRESULT SourceReader::GetServiceForStream(DWORD, REFGUID, REFIID, void** ppObject)
{
    if (ppObject == nullptr)
        return E_POINTER;
    *ppObject = nullptr;
    return E_NOTIMPL;
}

HRESULT SourceReader::GetPresentationAttribute(DWORD streamIndex, REFGUID key, PROPVARIANT* pValue)
{
    if (pValue == nullptr)
        return E_POINTER;
    PropVariantInit(pValue);
    if (streamIndex != MF_SOURCE_READER_MEDIASOURCE || key != MF_PD_DURATION)
        return MF_E_ATTRIBUTENOTFOUND;
    return Guarded(
        [&]
        {
            // What a file without an index says about its length is a guess; its packets can be counted.
            AudioSource* pAudio = nullptr;
            std::uint64_t duration = 0;
            if (m_pFile->IsDurationGuessed() && m_pFile->FindStream(AVMEDIA_TYPE_VIDEO) == nullptr &&
                SUCCEEDED(GetAudio(&pAudio)))
                duration = pAudio->CountDuration();
            if (duration == 0)
                duration = m_pFile->GetDuration();
            if (duration == 0)
                return MF_E_ATTRIBUTENOTFOUND;
            pValue->vt = VT_UI8;
            pValue->uhVal.QuadPart = duration;
            return S_OK;
        });
}
} // namespace pal

extern "C" HRESULT MFCreateSourceReaderFromURL(LPCWSTR url, IMFAttributes*, IMFSourceReader** ppReader)
{
    if (url == nullptr || ppReader == nullptr)
        return E_POINTER;
    *ppReader = nullptr;
    return pal::Guarded(
        [&]
        {
            auto pFile = std::make_unique<pal::MediaFile>();
            const HRESULT hr = pFile->Open(url);
            if (SUCCEEDED(hr))
                *ppReader = new pal::SourceReader(std::move(pFile));
            return hr;
        });
}
