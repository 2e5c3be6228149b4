#include "host/info/StreamList.h"

#include "engine/platform/RefPtr.h"

#include <mfapi.h>
#include <mfidl.h>
#include <mfreadwrite.h>

#include <utility>

namespace qmx::host
{
namespace
{
/// The name of a coding; for one without a name here, the four characters that its number is made of.
std::string NameOf(const GUID& subtype)
{
    const std::pair<const GUID*, const char*> names[] = {{&MFVideoFormat_H264, "H264"},
                                                         {&MFVideoFormat_HEVC, "HEVC"},
                                                         {&MFVideoFormat_MP4V, "MPEG-4"},
                                                         {&MFVideoFormat_MPEG2, "MPEG-2"},
                                                         {&MFVideoFormat_MJPG, "Motion-JPEG"},
                                                         {&MFVideoFormat_VP80, "VP8"},
                                                         {&MFVideoFormat_VP90, "VP9"},
                                                         {&MFVideoFormat_AV1, "AV1"},
                                                         {&MFAudioFormat_PCM, "PCM"},
                                                         {&MFAudioFormat_Float, "PCM float"},
                                                         {&MFAudioFormat_MPEG, "MPEG"},
                                                         {&MFAudioFormat_MP3, "MP3"},
                                                         {&MFAudioFormat_AAC, "AAC"},
                                                         {&MFAudioFormat_ALAC, "ALAC"},
                                                         {&MFAudioFormat_FLAC, "FLAC"},
                                                         {&MFAudioFormat_Opus, "Opus"},
                                                         {&MFAudioFormat_Vorbis, "Vorbis"},
                                                         {&MFAudioFormat_Dolby_AC3, "AC-3"},
                                                         {&MFAudioFormat_Dolby_DDPlus, "E-AC-3"},
                                                         {&MFAudioFormat_WMAudioV8, "WMA"},
                                                         {&MFAudioFormat_WMAudioV9, "WMA Pro"},
                                                         {&MFAudioFormat_WMAudio_Lossless, "WMA Lossless"}};
    for (const auto& [pKnown, pName] : names)
    {
        if (*pKnown == subtype)
            return pName;
    }
    std::string text;
    for (int shift = 0; shift < 32; shift += 8)
    {
        const auto c = static_cast<char>(subtype.Data1 >> shift & 0xFFU);
        if (c < '!' || c > '~')
            return {};
        text.push_back(c);
    }
    return text;
}

StreamFacts FactsOf(IMFMediaType& type)
{
    StreamFacts facts;
    GUID major = GUID_NULL;
    GUID subtype = GUID_NULL;
    type.GetGUID(MF_MT_MAJOR_TYPE, &major);
    if (SUCCEEDED(type.GetGUID(MF_MT_SUBTYPE, &subtype)))
        facts.coding = NameOf(subtype);
    UINT32 first = 0;
    UINT32 second = 0;
    if (major == MFMediaType_Video)
    {
        facts.kind = "video";
        if (SUCCEEDED(MFGetAttributeSize(&type, MF_MT_FRAME_SIZE, &first, &second)))
        {
            facts.width = first;
            facts.height = second;
        }
    }
    else if (major == MFMediaType_Audio)
    {
        facts.kind = "audio";
        if (SUCCEEDED(type.GetUINT32(MF_MT_AUDIO_SAMPLES_PER_SECOND, &first)))
            facts.rate = first;
        if (SUCCEEDED(type.GetUINT32(MF_MT_AUDIO_NUM_CHANNELS, &second)))
            facts.channels = second;
    }
    else
        facts.kind = "other";
    return facts;
}
} // namespace

std::vector<StreamFacts> ReadStreams(const std::wstring& path)
{
    std::vector<StreamFacts> streams;
    ComPtr<IMFSourceReader> pReader;
    if (FAILED(MFCreateSourceReaderFromURL(path.c_str(), nullptr, pReader.Put())))
        return streams;
    BOOL selected = FALSE;
    for (DWORD i = 0; SUCCEEDED(pReader->GetStreamSelection(i, &selected)); ++i)
    {
        ComPtr<IMFMediaType> pType;
        const bool known = SUCCEEDED(pReader->GetNativeMediaType(i, 0, pType.Put())) && pType;
        StreamFacts other;
        other.kind = "other";
        streams.push_back(known ? FactsOf(*pType.Get()) : other);
    }
    return streams;
}
} // namespace qmx::host
