#include "host/compose/MediaProbe.h"

#include "engine/decoders/FileKind.h"
#include "engine/platform/SwfRenderer.h"
#include "host/HostError.h"
#include "host/project/CameraFiles.h"
#include "host/project/FrameRate.h"
#include "host/system/Platform.h"

#include <mfapi.h>
#include <mfidl.h>
#include <mfreadwrite.h>
#include <propvarutil.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <numeric>

namespace qmx::host
{
namespace
{
namespace fs = std::filesystem;

/// Counts the records and reads the times of the first and the last of them.
/// @return a reason not to go on, or nothing
std::string ReadIndex(const fs::path& path, CameraFacts& facts)
{
    std::error_code error;
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    const std::uintmax_t cb = fs::file_size(path, error);
    if (!file || error)
        return std::string("its index ") + path.filename().string() +
               " cannot be opened: " + (errno != 0 ? std::strerror(errno) : "not a file");
    facts.frames = cb / CameraRecord::kBytes;
    if (facts.frames == 0)
        return "its index holds no frames";
    const auto timeOf = [&](std::uint64_t frame)
    {
        std::array<char, 8> bytes{};
        file.seekg(static_cast<std::streamoff>(frame * CameraRecord::kBytes));
        file.read(bytes.data(), bytes.size());
        std::uint64_t time = 0;
        for (std::size_t i = bytes.size(); i-- > 0;)
            time = time << 8 | static_cast<std::uint8_t>(bytes[i]);
        return time;
    };
    const std::uint64_t first = timeOf(0);
    const std::uint64_t last = timeOf(facts.frames - 1);
    if (facts.frames > 1 && last > first)
    {
        const double rate = static_cast<double>(facts.frames - 1) * 1e7 / static_cast<double>(last - first);
        facts.frameRate = LikelyRate(rate, facts.frames - 1, last - first);
    }
    return {};
}

/// A Flash movie's size, rate and length; rates of the format are counts of 1/256 frame a second.
bool FlashInfo(const std::wstring& path, tagVideoInfo& info)
{
    const RefPtr<ISWFRenderObj> pMovie = RefPtr<ISWFRenderObj>::Adopt(CreateSWFRenderObj());
    tagSWFMovieInfo movie;
    if (!pMovie || FAILED(pMovie->OpenMovie(path.c_str())) || FAILED(pMovie->GetMovieInfo(&movie)))
        return false;
    constexpr std::uint32_t kUnits = 256;
    const auto rate = static_cast<std::uint32_t>(std::lround(movie.dFrameRate * kUnits));
    const std::uint32_t divisor = std::gcd(rate, kUnits);
    info.nWidth = static_cast<std::uint32_t>(movie.dWidth);
    info.nHeight = static_cast<std::uint32_t>(movie.dHeight);
    info.nFrameRateNum = rate / divisor;
    info.nFrameRateDen = kUnits / divisor;
    info.dFrameRate = movie.dFrameRate;
    info.dDuration = movie.nFrameCount / movie.dFrameRate;
    return true;
}

bool ReadInfo(const std::wstring& path, tagVideoInfo& info)
{
    if (HasExtension(path, L"swf"))
        return FlashInfo(path, info);
    const RefPtr<CVideoDecoder> pDecoder = RefPtr<CVideoDecoder>::Adopt(new CVideoDecoder);
    return pDecoder->GetVideoInfo(path, &info);
}

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

double LikelyRate(double mean, std::uint64_t frames, std::uint64_t duration)
{
    constexpr double kMaxRate = FrameRate::kMaxPerSecond;
    const double whole = std::round(mean);
    for (const double rate : {whole, std::round(mean * 1.001) / 1.001})
    {
        // Times are rounded down to 100 ns.
        const double exact = static_cast<double>(frames) * 1e7 / rate;
        if (rate > 0 && rate <= kMaxRate && std::abs(exact - static_cast<double>(duration)) < 2.0)
            return rate;
    }
    return std::clamp(mean, 1.0 / kMaxRate, kMaxRate);
}

const CameraFacts& MediaProbe::Camera(const fs::path& name, const std::string& subject, const std::string& prefix)
{
    if (const auto it = m_cameras.find(name); it != m_cameras.end())
        return it->second;
    const auto fail = [&](const std::string& reason) { return HostError(ExitCode::Media, subject, prefix + reason); };
    if (!IsCameraName(name))
        throw fail("is no camera recording: the name must end in .mjpg or .h264");
    CameraFacts facts;
    if (const std::string reason = ReadIndex(CameraIndexPath(name), facts); !reason.empty())
        throw fail(reason);
    if (!fs::exists(CameraMediaPath(name)))
        throw fail("its media file " + CameraMediaPath(name).filename().string() + " does not exist");
    tagDecProp prop(CameraEnginePath(name), 0);
    prop.flags = kRequestNoAttachment; // pictures as they are stored
    prop.decoderType = kDecoderCamera;
    const RefPtr<CCameraClipDecoder> pDecoder = RefPtr<CCameraClipDecoder>::Adopt(new CCameraClipDecoder);
    bool flag = false;
    SampleBufferPtr pPicture;
    if (pDecoder->Initialize(prop))
        pPicture = SampleBufferPtr::Adopt(pDecoder->GetClipVideoFrame(0, flag));
    if (!pPicture)
        throw fail("its first frame cannot be read");
    facts.width = pPicture->GetWidth();
    facts.height = pPicture->GetHeight();
    return m_cameras.emplace(name, facts).first->second;
}

const tagVideoInfo& MediaProbe::Video(const std::filesystem::path& path, const std::string& subject,
                                      const std::string& prefix)
{
    if (const auto it = m_known.find(path); it != m_known.end())
        return it->second;
    const auto fail = [&](const std::string& reason) { return HostError(ExitCode::Media, subject, prefix + reason); };
    CheckReadable(path, fail);
    tagVideoInfo info;
    info.nPixelAspectX = info.nPixelAspectY = 1;
    if (!ReadInfo(EnginePath(path), info) || info.nWidth == 0 || info.nHeight == 0)
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
