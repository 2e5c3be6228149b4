#include "engine/decoders/media/MediaInfo.h"

#include "engine/decoders/FileKind.h"
#include "engine/decoders/media/PresentationDuration.h"
#include "engine/decoders/media/VideoDecoder.h"
#include "engine/platform/PropVariantTime.h"
#include "engine/platform/RefPtr.h"
#include "engine/platform/ReturnIfFailed.h"
#include "engine/platform/SwfRenderer.h"

#include <mfapi.h>
#include <mfidl.h>
#include <mfreadwrite.h>
#include <propkey.h>
#include <propsys.h>

#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace
{
/// Whole pixels; 0 for what is no size.
std::uint32_t Pixels(double side)
{
    return side >= 0 && side <= std::numeric_limits<std::uint32_t>::max() ? static_cast<std::uint32_t>(side) : 0;
}

bool GetFlashInfo(const std::wstring& path, tagVideoInfo& info)
{
    const RefPtr<ISWFRenderObj> pMovie = RefPtr<ISWFRenderObj>::Adopt(CreateSWFRenderObj());
    if (!pMovie)
        return false;
    tagSWFMovieInfo movie; // stays as it is when the movie cannot be opened
    pMovie->OpenMovie(path.c_str());
    pMovie->GetMovieInfo(&movie);
    info.nWidth = Pixels(movie.dWidth);
    info.nHeight = Pixels(movie.dHeight);
    info.dFrameRate = movie.dFrameRate;
    info.dDuration = movie.nFrameCount / movie.dFrameRate;
    return true;
}

/// When the last write happened, in local time.
/// @param date  keeps its value when the times of the file cannot be read
/// @return whether the file could be opened
bool ReadFileDate(const std::wstring& path, FILETIME& date)
{
    HANDLE const hFile = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return false;
    FILETIME creation = {};
    FILETIME lastAccess = {};
    FILETIME lastWrite = {};
    const bool known = GetFileTime(hFile, &creation, &lastAccess, &lastWrite) != FALSE;
    CloseHandle(hFile);
    FILETIME local = {};
    if (known && FileTimeToLocalFileTime(&lastWrite, &local) != FALSE)
        date = local;
    return true;
}

HRESULT ReadRecordingDateOf(IMFMediaSource* pSource, FILETIME& date)
{
    ComPtr<IPropertyStore> pProperties;
    QMX_RETURN_IF_FAILED(MFGetService(pSource, MF_PROPERTY_HANDLER_SERVICE, IID_PPV_ARGS(pProperties.Put())));
    if (!pProperties)
        return E_UNEXPECTED;
    PROPVARIANT value;
    PropVariantInit(&value);
    FILETIME recorded = {};
    HRESULT hr = pProperties->GetValue(PKEY_Media_DateEncoded, &value);
    if (SUCCEEDED(hr))
        hr = PropVariantToFileTime(value, kFileTimeUtc, &recorded);
    if (SUCCEEDED(hr))
        date = recorded;
    PropVariantClear(&value);
    return hr;
}

/// When the media were recorded, in UTC. Most files do not say, which is no error: @p date keeps its value then.
HRESULT ReadRecordingDate(const std::wstring& path, FILETIME& date)
{
    ComPtr<IMFSourceResolver> pResolver;
    QMX_RETURN_IF_FAILED(MFCreateSourceResolver(pResolver.Put()));
    MF_OBJECT_TYPE type = MF_OBJECT_INVALID;
    ComPtr<IUnknown> pObject;
    QMX_RETURN_IF_FAILED(
        pResolver->CreateObjectFromURL(path.c_str(), MF_RESOLUTION_MEDIASOURCE, nullptr, &type, pObject.Put()));
    ComPtr<IMFMediaSource> pSource;
    if (!pObject || FAILED(pObject->QueryInterface(IID_PPV_ARGS(pSource.Put()))) || !pSource)
        return E_NOINTERFACE;
    const HRESULT hr = ReadRecordingDateOf(pSource.Get(), date);
    pSource->Shutdown(); // a source that is not shut down lives on in its own threads
    return hr;
}

bool IsZero(const FILETIME& time)
{
    return time.dwLowDateTime == 0 && time.dwHighDateTime == 0;
}

/// @return false when the stream has no type to read them from
bool ReadSoundFormat(IMFSourceReader& reader, tagAudioInfo& info)
{
    constexpr DWORD kStream = MF_SOURCE_READER_FIRST_AUDIO_STREAM;
    ComPtr<IMFMediaType> pType;
    if (FAILED(reader.SetStreamSelection(static_cast<DWORD>(MF_SOURCE_READER_ALL_STREAMS), FALSE)) ||
        FAILED(reader.SetStreamSelection(kStream, TRUE)) ||
        FAILED(reader.GetNativeMediaType(kStream, 0, pType.Put())) || !pType)
        return false;
    const auto read = [&](REFGUID key, std::uint32_t& field)
    {
        UINT32 value = 0;
        if (SUCCEEDED(pType->GetUINT32(key, &value)))
            field = value;
    };
    read(MF_MT_AUDIO_SAMPLES_PER_SECOND, info.nSamplesPerSec);
    read(MF_MT_AUDIO_NUM_CHANNELS, info.nChannels);
    read(MF_MT_AUDIO_BITS_PER_SAMPLE, info.nBitsPerSample);
    return true;
}

bool GetSoundInfo(const std::wstring& path, tagAudioInfo& info)
{
    ComPtr<IMFSourceReader> pReader;
    if (FAILED(MFCreateSourceReaderFromURL(path.c_str(), nullptr, pReader.Put())) || !pReader)
        return false;
    ReadDuration(*pReader.Get(), info.dDuration);
    (void)ReadRecordingDate(path, info.ftDate);
    // The one is UTC and the other local time: so the editor has always shown them.
    if (IsZero(info.ftDate) && !ReadFileDate(path, info.ftDate))
        return false;
    return ReadSoundFormat(*pReader.Get(), info);
}

/// Runs @p query; short memory is a query that fails.
template <class Query> bool Guarded(Query&& query)
{
    try
    {
        return query();
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}
} // namespace

// NOLINTBEGIN(performance-unnecessary-value-param): the exported interface takes paths by value

bool QMXGetVideoInfo(std::wstring path, tagVideoInfo* info)
{
    if (info == nullptr)
        return false;
    return Guarded(
        [&]
        {
            if (HasExtension(path, L"swf"))
                return GetFlashInfo(path, *info);
            const RefPtr<CVideoDecoder> pDecoder = RefPtr<CVideoDecoder>::Adopt(new CVideoDecoder);
            return pDecoder->GetVideoInfo(std::move(path), info);
        });
}

bool QMXGetAudioInfo(std::wstring path, tagAudioInfo* info)
{
    return info != nullptr && Guarded([&] { return GetSoundInfo(path, *info); });
}

bool QMXGetImageInfo(std::wstring path, FILETIME* date)
{
    return date != nullptr && ReadFileDate(path, *date);
}

bool QMXGetMediaInfo(std::wstring path, tagMediaInfo* info)
{
    if (info == nullptr)
        return false;
    std::memset(static_cast<void*>(info), 0, sizeof *info); // padding included
    return Guarded(
        [&]
        {
            if (QMXGetVideoInfo(path, &info->video))
                info->dwFlags |= kMediaHasVideo;
            if (QMXGetAudioInfo(std::move(path), &info->audio))
                info->dwFlags |= kMediaHasAudio;
            return info->dwFlags != 0;
        });
}

// NOLINTEND(performance-unnecessary-value-param)
