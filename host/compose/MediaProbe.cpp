#include "host/compose/MediaProbe.h"

#include "engine/decoders/FileKind.h"
#include "host/HostError.h"
#include "host/project/CameraFiles.h"
#include "host/project/FrameRate.h"
#include "host/system/Platform.h"

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
    facts.duration = static_cast<double>(facts.frames) / facts.frameRate;
    if (facts.frames > 1 && last > first)
    {
        const double rate = static_cast<double>(facts.frames - 1) * 1e7 / static_cast<double>(last - first);
        facts.frameRate = LikelyRate(rate, facts.frames - 1, last - first);
        facts.duration = static_cast<double>(last - first) / 1e7 + 1 / facts.frameRate;
    }
    return {};
}

/// A Flash movie tells its rate as a number only; in the format it is a count of 1/256 frame a second.
void CompleteFlash(tagVideoInfo& info)
{
    constexpr std::uint32_t kUnits = 256;
    const auto rate = static_cast<std::uint32_t>(std::lround(info.dFrameRate * kUnits));
    const std::uint32_t divisor = std::gcd(rate, kUnits);
    info.nFrameRateNum = rate / divisor;
    info.nFrameRateDen = kUnits / divisor;
}

/// True when the engine has a decoder for the sound of @p path.
bool CanBeHeard(const std::wstring& path)
{
    CAudioDecoder decoder;
    return SUCCEEDED(decoder.Initialize(path));
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

const tagVideoInfo* MediaProbe::FindVideo(const std::filesystem::path& path, const std::string& subject,
                                          const std::string& prefix)
{
    auto it = m_known.find(path);
    if (it == m_known.end())
    {
        CheckReadable(path,
                      [&](const std::string& reason) { return HostError(ExitCode::Media, subject, prefix + reason); });
        const std::wstring name = EnginePath(path);
        tagVideoInfo info;
        info.nPixelAspectX = info.nPixelAspectY = 1;
        // A Flash movie that cannot be read has no size.
        const bool found = QMXGetVideoInfo(name, &info) && info.nWidth != 0 && info.nHeight != 0;
        if (found && HasExtension(name, L"swf"))
            CompleteFlash(info);
        it = m_known.emplace(path, found ? std::optional(info) : std::nullopt).first;
    }
    return it->second ? &*it->second : nullptr;
}

const tagVideoInfo& MediaProbe::Video(const std::filesystem::path& path, const std::string& subject,
                                      const std::string& prefix)
{
    const tagVideoInfo* const pInfo = FindVideo(path, subject, prefix);
    if (!pInfo)
        throw HostError(ExitCode::Media, subject, prefix + "holds no video that can be read");
    return *pInfo;
}

const MediaProbe::SoundAnswer& MediaProbe::AskForSound(const std::filesystem::path& path)
{
    if (const auto it = m_sounds.find(path); it != m_sounds.end())
        return it->second;
    // A date that is there already gives way to the media's own only: it tells the two kinds of date apart.
    constexpr DWORD kNoDate = 1;
    const std::wstring name = EnginePath(path);
    tagAudioInfo info;
    info.ftDate = {kNoDate, 0};
    SoundAnswer answer;
    if (QMXGetAudioInfo(name, &info) && CanBeHeard(name))
        answer.sound = info;
    if (info.ftDate.dwLowDateTime != kNoDate || info.ftDate.dwHighDateTime != 0)
        answer.recorded = std::uint64_t{info.ftDate.dwHighDateTime} << 32 | info.ftDate.dwLowDateTime;
    return m_sounds.emplace(path, answer).first->second;
}

const std::optional<tagAudioInfo>& MediaProbe::Sound(const std::filesystem::path& path, const std::string& subject,
                                                     const std::string& prefix)
{
    const auto fail = [&](const std::string& reason) { return HostError(ExitCode::Media, subject, prefix + reason); };
    CheckReadable(path, fail);
    const std::optional<tagAudioInfo>& sound = AskForSound(path).sound;
    if (!sound && !FindVideo(path, subject, prefix))
        throw fail("holds no media that can be read");
    return sound;
}

const tagAudioInfo& MediaProbe::NeedSound(const std::filesystem::path& path, const std::string& subject,
                                          const std::string& prefix)
{
    const std::optional<tagAudioInfo>& sound = Sound(path, subject, prefix);
    if (!sound)
        throw HostError(ExitCode::Media, subject, prefix + "holds no sound that can be read");
    return *sound;
}

std::optional<std::uint64_t> MediaProbe::Recorded(const std::filesystem::path& path)
{
    return AskForSound(path).recorded;
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
