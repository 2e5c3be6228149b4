#include "host/info/FileFacts.h"

#include "engine/decoders/FileKind.h"
#include "host/HostError.h"
#include "host/info/FileDate.h"
#include "host/project/CameraFiles.h"
#include "host/system/Platform.h"

#include <cmath>
#include <filesystem>
#include <numeric>

namespace qmx::host
{
namespace
{
namespace fs = std::filesystem;

/// A length that can be told: a movie without a rate has none, and a file need not say.
std::optional<double> Known(double duration)
{
    return std::isfinite(duration) && duration > 0 ? std::optional(duration) : std::nullopt;
}

/// A date that can be told. A file may say anything, and one written before 1601 wraps around.
std::optional<std::uint64_t> KnownDate(std::uint64_t ticks)
{
    return ticks != 0 && ticks <= kLastDate ? std::optional(ticks) : std::nullopt;
}

void AddFileFacts(const fs::path& path, FileFacts& facts)
{
    std::error_code error;
    if (const std::uintmax_t cb = fs::file_size(path, error); !error)
        facts.bytes += cb;
    FILETIME date = {};
    if (QMXGetImageInfo(EnginePath(path), &date))
        facts.modified = KnownDate(std::uint64_t{date.dwHighDateTime} << 32 | date.dwLowDateTime);
}

void AddPicture(const PictureFacts& picture, FileFacts& facts)
{
    facts.kind = picture.format == "GIF" && picture.frames > 1 ? FileKind::Animation : FileKind::Picture;
    facts.picture = picture;
    facts.width = picture.width;
    facts.height = picture.height;
    facts.frames = picture.frames;
    if (facts.kind == FileKind::Animation)
        facts.duration = Known(picture.duration);
}

void AddVideo(const tagVideoInfo& video, FileFacts& facts)
{
    facts.video = video;
    facts.width = video.nWidth;
    facts.height = video.nHeight;
    facts.duration = Known(video.dDuration);
    if (video.nFrameRateNum != 0 && video.nFrameRateDen != 0)
        facts.frameRate = RateFraction{video.nFrameRateNum, video.nFrameRateDen};
}

void AddCamera(const CameraFacts& camera, FileFacts& facts)
{
    facts.kind = FileKind::Camera;
    facts.width = camera.width;
    facts.height = camera.height;
    facts.frames = camera.frames;
    facts.duration = Known(camera.duration);
    facts.frameRate = LikelyFraction(camera.frameRate);
}

/// A bare stream may be named as a recording is; the recording has an index.
bool IsRecording(const fs::path& path)
{
    std::error_code error;
    return IsCameraName(path) && fs::exists(CameraIndexPath(path), error);
}

void AddMedia(MediaProbe& probe, const fs::path& path, FileFacts& facts)
{
    const tagVideoInfo* const pVideo = probe.FindVideo(path, facts.file, "");
    if (pVideo)
        AddVideo(*pVideo, facts);
    if (HasExtension(EnginePath(path), L"swf"))
    {
        if (!pVideo)
            throw HostError(ExitCode::Media, facts.file, "holds no Flash movie that can be read");
        facts.kind = FileKind::Flash;
        if (facts.duration)
            facts.frames = static_cast<std::uint64_t>(std::llround(pVideo->dDuration * pVideo->dFrameRate));
        return;
    }
    facts.sound = probe.Sound(path, facts.file, "");
    facts.recorded = KnownDate(probe.Recorded(path).value_or(0));
    facts.streams = ReadStreams(EnginePath(path));
    if (!pVideo)
    {
        facts.kind = FileKind::Sound;
        facts.duration = Known(facts.sound->dDuration); // Sound() has found one of the two
    }
}
} // namespace

KindNames NamesOf(FileKind kind)
{
    switch (kind)
    {
    case FileKind::Film:
        return {"film", "film"};
    case FileKind::Sound:
        return {"sound", "sound"};
    case FileKind::Picture:
        return {"picture", "picture"};
    case FileKind::Animation:
        return {"animation", "animation"};
    case FileKind::Flash:
        return {"flash", "Flash movie"};
    case FileKind::Camera:
        return {"camera", "camera recording"};
    }
    return {"", ""};
}

RateFraction LikelyFraction(double rate)
{
    constexpr std::uint64_t kParts = 1'000'000;
    const auto whole = std::round(rate);
    if (rate == whole)
        return {static_cast<std::uint64_t>(whole), 1};
    const auto slowed = std::round(rate * 1.001);
    if (std::abs(slowed / 1.001 - rate) < 1e-9)
        return {static_cast<std::uint64_t>(slowed) * 1'000, 1'001};
    const auto parts = static_cast<std::uint64_t>(std::llround(rate * kParts));
    const std::uint64_t divisor = std::gcd(parts, kParts);
    return {parts / divisor, kParts / divisor};
}

FileFacts ReadFileFacts(MediaProbe& probe, const std::string& file)
{
    FileFacts facts;
    facts.file = file;
    const fs::path path(file);
    if (IsRecording(path))
    {
        AddCamera(probe.Camera(path, file, ""), facts);
        AddFileFacts(CameraIndexPath(path), facts);
        AddFileFacts(CameraMediaPath(path), facts);
        return facts;
    }
    if (const PictureFacts* const pPicture = probe.FindPicture(path, file, ""))
    {
        if (!CanBeDecoded(EnginePath(path)))
            throw HostError(ExitCode::Media, file,
                            "is " + pPicture->format + ", but holds no picture that can be read");
        AddPicture(*pPicture, facts);
    }
    else
        AddMedia(probe, path, facts);
    AddFileFacts(path, facts);
    return facts;
}
} // namespace qmx::host
