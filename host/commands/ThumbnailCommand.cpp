#include "host/commands/ThumbnailCommand.h"

#include "host/HostError.h"
#include "host/commands/FrameSpan.h"
#include "host/compose/EngineSession.h"
#include "host/compose/Layout.h"
#include "host/compose/MediaProbe.h"
#include "host/compose/PictureLayer.h"
#include "host/output/OutputFile.h"
#include "host/output/PngFile.h"
#include "host/project/CameraFiles.h"
#include "host/system/Platform.h"

#include <memory>
#include <new>

namespace qmx::host
{
namespace
{
constexpr std::uint32_t kLongerSide = 640; // of pictures, as wide as the engine's thumbnails of videos are

void CheckNotTheMedia(const ThumbnailOptions& options)
{
    for (const std::filesystem::path& source :
         {std::filesystem::path(options.file), CameraMediaPath(options.file), CameraIndexPath(options.file)})
    {
        std::error_code error;
        if (std::filesystem::equivalent(options.output, source, error))
            throw HostError(ExitCode::Output, options.output, "is the file that is to be shown");
    }
}

template <class T> std::unique_ptr<T> MakeClip(QMXClipType type, const std::wstring& path, std::uint64_t inPoint)
{
    std::unique_ptr<IQMXBaseClip> pClip(CreateClipByClipType(type));
    auto* const pOwn = dynamic_cast<T*>(pClip.get());
    if (!pOwn)
        throw std::bad_alloc();
    static_cast<void>(pClip.release());
    pOwn->SetFilePath(path);
    pOwn->SetInPoint(inPoint); // thumbnails show the clip's start
    return std::unique_ptr<T>(pOwn);
}

SampleBufferPtr VideoThumbnail(MediaProbe& probe, const std::string& file, std::uint64_t time)
{
    const tagVideoInfo& info = probe.Video(file, file, "");
    const auto pClip = MakeClip<CQMXVideoClip>(QMXClipType_Video, EnginePath(file), time);
    if (info.nFrameRateNum != 0 && info.nFrameRateDen != 0)
        pClip->SetFrameRate(static_cast<double>(info.nFrameRateNum) / info.nFrameRateDen);
    const double width = static_cast<double>(info.nPixelAspectX) * info.nWidth;
    return SampleBufferPtr::Adopt(pClip->GetThumbnail(static_cast<double>(info.nPixelAspectY) * info.nHeight / width));
}

SampleBufferPtr CameraThumbnail(MediaProbe& probe, const std::string& file, std::uint64_t time)
{
    const CameraFacts& facts = probe.Camera(file, file, "");
    const auto pClip = MakeClip<CQMXCameraClip>(QMXClipType_Camera, CameraEnginePath(file), time);
    pClip->SetFrameRate(facts.frameRate);
    return SampleBufferPtr::Adopt(pClip->GetThumbnail(static_cast<double>(facts.height) / facts.width));
}

SampleBufferPtr PictureThumbnail(MediaProbe& probe, const std::string& file, std::uint64_t time)
{
    const PictureFacts& facts = probe.Picture(file, file, "");
    const std::optional<std::uint32_t> side = FitImage(facts.width, facts.height, 0, kLongerSide, kLongerSide);
    if (!side)
        throw HostError(ExitCode::Media, file, "is too small to be shown");
    const auto pClip = MakeClip<CQMXImageClip>(QMXClipType_Image, EnginePath(file), time);
    tagRenderProp request;
    request.flags = time == 0 ? kRequestNoTimeTable : 0;
    request.width = request.height = *side;
    return SampleBufferPtr::Adopt(pClip->GetFrame(request, 0, nullptr));
}

SampleBufferPtr Thumbnail(const std::string& file, std::uint64_t time)
{
    MediaProbe probe;
    if (IsCameraName(file) && !std::filesystem::exists(file))
        return CameraThumbnail(probe, file, time);
    return probe.FindPicture(file, file, "") ? PictureThumbnail(probe, file, time) : VideoThumbnail(probe, file, time);
}
} // namespace

void RunThumbnail(const ThumbnailOptions& options)
{
    CheckExtension(options.output, ".png");
    const std::uint64_t time = ParseSeconds("--at", options.at);
    CheckNotTheMedia(options);
    const EngineSession session;
    const SampleBufferPtr pPicture = Thumbnail(options.file, time);
    if (!pPicture)
        throw HostError(ExitCode::Media, options.file, "has no picture at " + options.at + " seconds");
    Canvas canvas(pPicture->GetWidth(), pPicture->GetHeight());
    const Layer layer = LayerOf(*pPicture.Get(), canvas.Bounds());
    if (!layer.pPixels)
        throw HostError(ExitCode::Media, options.file, "has no picture at " + options.at + " seconds");
    Compose(canvas, {&layer, 1});
    WritePng(canvas, options.output);
}
} // namespace qmx::host
