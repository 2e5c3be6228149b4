#include "host/compose/MediaProbe.h"

#include "host/HostError.h"
#include "host/system/Platform.h"

#include "engine/decoders/FileKind.h"

#include <mfapi.h>
#include <mfreadwrite.h>
#include <propvarutil.h>

#include <cerrno>
#include <cstring>
#include <fstream>

namespace qmx::host
{
namespace
{
/// The engine reports no reasons, so those that a user can mend are found out first.
/// @param fail  makes the error of a reason
template <class Fail> void CheckReadable(const std::filesystem::path& path, const Fail& fail)
{
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        throw fail("is a folder");
    errno = 0;
    if (!std::ifstream(path, std::ios::binary))
        throw fail(std::string("cannot be opened: ") + std::strerror(errno));
}

double DurationOf(IMFSourceReader& reader)
{
    PROPVARIANT value;
    PropVariantInit(&value);
    LONGLONG duration = 0;
    constexpr DWORD kSource = MF_SOURCE_READER_MEDIASOURCE;
    if (FAILED(reader.GetPresentationAttribute(kSource, MF_PD_DURATION, &value)) ||
        FAILED(PropVariantToInt64(value, &duration)))
        duration = 0;
    PropVariantClear(&value);
    return static_cast<double>(duration) / 1e7;
}
} // namespace

const tagVideoInfo& MediaProbe::Video(const std::filesystem::path& path, const std::string& subject,
                                      const std::string& prefix)
{
    if (const auto it = m_known.find(path); it != m_known.end())
        return it->second;
    const auto fail = [&](const std::string& reason) { return HostError(ExitCode::Media, subject, prefix + reason); };
    CheckReadable(path, fail);
    const RefPtr<CVideoDecoder> pDecoder = RefPtr<CVideoDecoder>::Adopt(new CVideoDecoder);
    tagVideoInfo info;
    info.nPixelAspectX = info.nPixelAspectY = 1;
    if (!pDecoder->GetVideoInfo(EnginePath(path), &info) || info.nWidth == 0 || info.nHeight == 0)
        throw fail("holds no video that can be read");
    return m_known.emplace(path, info).first->second;
}

const std::optional<SoundFacts>& MediaProbe::Sound(const std::filesystem::path& path, const std::string& subject,
                                                   const std::string& prefix)
{
    if (const auto it = m_sounds.find(path); it != m_sounds.end())
        return it->second;
    const auto fail = [&](const std::string& reason) { return HostError(ExitCode::Media, subject, prefix + reason); };
    CheckReadable(path, fail);
    constexpr DWORD kStream = MF_SOURCE_READER_FIRST_AUDIO_STREAM;
    ComPtr<IMFSourceReader> pReader;
    if (FAILED(MFCreateSourceReaderFromURL(EnginePath(path).c_str(), nullptr, pReader.Put())))
        throw fail("holds no media that can be read");
    ComPtr<IMFMediaType> pNative;
    ComPtr<IMFMediaType> pOutput;
    std::optional<SoundFacts> facts;
    if (SUCCEEDED(pReader->GetNativeMediaType(kStream, 0, pNative.Put())) &&
        SUCCEEDED(CAudioDecoder::CreatePCMAudioType(48'000, 16, 2, pOutput.Put())) &&
        SUCCEEDED(pReader->SetCurrentMediaType(kStream, nullptr, pOutput.Get())))
    {
        const auto get = [&](const GUID& key)
        {
            UINT32 value = 0;
            return SUCCEEDED(pNative->GetUINT32(key, &value)) ? value : 0;
        };
        facts = {get(MF_MT_AUDIO_SAMPLES_PER_SECOND), get(MF_MT_AUDIO_NUM_CHANNELS), get(MF_MT_AUDIO_BITS_PER_SAMPLE),
                 DurationOf(*pReader.Get())};
    }
    return m_sounds.emplace(path, facts).first->second;
}

const SoundFacts& MediaProbe::NeedSound(const std::filesystem::path& path, const std::string& subject,
                                        const std::string& prefix)
{
    const std::optional<SoundFacts>& facts = Sound(path, subject, prefix);
    if (!facts)
        throw HostError(ExitCode::Media, subject, prefix + "holds no sound that can be read");
    return *facts;
}

bool MediaProbe::HasSound(const std::filesystem::path& path)
{
    try
    {
        return Sound(path, "", "").has_value();
    }
    catch (const HostError&)
    {
        return false;
    }
}

const PictureFacts* MediaProbe::FindPicture(const std::filesystem::path& path, const std::string& subject,
                                            const std::string& prefix)
{
    if (const auto it = m_knownPictures.find(path); it != m_knownPictures.end())
        return &it->second;
    CheckReadable(path,
                  [&](const std::string& reason) { return HostError(ExitCode::Media, subject, prefix + reason); });
    const std::optional<PictureFacts> facts = ReadPictureFacts(EnginePath(path));
    return facts ? &m_knownPictures.emplace(path, *facts).first->second : nullptr;
}

const PictureFacts& MediaProbe::Picture(const std::filesystem::path& path, const std::string& subject,
                                        const std::string& prefix)
{
    const PictureFacts* const pFacts = FindPicture(path, subject, prefix);
    if (!pFacts)
        throw HostError(ExitCode::Media, subject, prefix + "holds no picture that can be read");
    if (HasExtension(EnginePath(path), L"gif") && pFacts->format != "GIF")
        throw HostError(ExitCode::Media, subject, prefix + "is named as a GIF, but is " + pFacts->format);
    return *pFacts;
}
} // namespace qmx::host
