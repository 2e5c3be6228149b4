/// @file SourceReader.h
/// The source reader over FFmpeg.
#pragma once

#include "pal/kernel/ComObject.h"
#include "pal/media/AudioSource.h"
#include "pal/media/MediaFile.h"
#include "pal/media/PictureConverter.h"
#include "pal/media/VideoSource.h"

#include <mfreadwrite.h>

#include <memory>

namespace pal
{
/// Serves the first video stream or the first audio stream of a file. Whichever is set up first: packets of the other
/// one are passed over from then on.
/// Threads : one caller at a time. Exceptions (memory) end at the slots as status codes.
class SourceReader final : public ComObject<SourceReader, IMFSourceReader>
{
public:
    explicit SourceReader(std::unique_ptr<MediaFile> pFile);
    ~SourceReader();

    HRESULT STDMETHODCALLTYPE GetStreamSelection(DWORD streamIndex, BOOL* pSelected) override;
    HRESULT STDMETHODCALLTYPE SetStreamSelection(DWORD streamIndex, BOOL selected) override;
    HRESULT STDMETHODCALLTYPE GetNativeMediaType(DWORD streamIndex, DWORD typeIndex, IMFMediaType** ppType) override;
    HRESULT STDMETHODCALLTYPE GetCurrentMediaType(DWORD streamIndex, IMFMediaType** ppType) override;
    HRESULT STDMETHODCALLTYPE SetCurrentMediaType(DWORD streamIndex, DWORD* pReserved, IMFMediaType* pType) override;
    HRESULT STDMETHODCALLTYPE SetCurrentPosition(REFGUID timeFormat, const PROPVARIANT& position) override;
    HRESULT STDMETHODCALLTYPE ReadSample(DWORD streamIndex, DWORD controlFlags, DWORD* pActualStreamIndex,
                                         DWORD* pStreamFlags, LONGLONG* pTimestamp, IMFSample** ppSample) override;
    HRESULT STDMETHODCALLTYPE Flush(DWORD streamIndex) override;
    HRESULT STDMETHODCALLTYPE GetServiceForStream(DWORD streamIndex, REFGUID service, REFIID iid,
                                                  void** ppObject) override;
    HRESULT STDMETHODCALLTYPE GetPresentationAttribute(DWORD streamIndex, REFGUID key, PROPVARIANT* pValue) override;

private:
    AVStream* ResolveStream(DWORD streamIndex) const;
    bool IsAudio(DWORD streamIndex) const;
    HRESULT GetVideo(DWORD streamIndex, VideoSource** ppSource);
    HRESULT GetAudio(AudioSource** ppSource);
    HRESULT SetAudioType(IMFMediaType* pType);
    HRESULT ReadVideo(DWORD* pFlags, LONGLONG* pTime, IMFSample** ppSample);
    HRESULT MakeSample(const VideoSource::Picture& picture, IMFSample** ppSample);

    std::unique_ptr<MediaFile> m_pFile;
    std::unique_ptr<VideoSource> m_pVideo; // made when the video stream is first asked about; ends before the file
    std::unique_ptr<AudioSource> m_pAudio; // likewise of the audio stream
    std::shared_ptr<PictureConverter> m_pConverter;
    IMFMediaType* m_pCurrentType = nullptr; // owns one reference; of the video stream
    bool m_videoSelected = true;
    bool m_audioSelected;
};
} // namespace pal
