#include "host/commands/PackCameraCommand.h"

#include "host/HostError.h"
#include "host/compose/EngineSession.h"
#include "host/input/FilmReader.h"
#include "host/output/CameraIndex.h"
#include "host/output/JpegFile.h"
#include "host/output/VideoEncoder.h"
#include "host/system/Interrupt.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace qmx::host
{
namespace
{
namespace fs = std::filesystem;

constexpr std::uint32_t kFirstHdHeight = 720;

/// Neither the media nor the index may take the place of the video that is packed.
void CheckNotTheInput(const PackCameraOptions& options)
{
    for (const fs::path& target : {CameraMediaPath(options.output), CameraIndexPath(options.output)})
    {
        std::error_code error;
        if (fs::equivalent(target, options.input, error))
            throw HostError(ExitCode::Output, target.string(), "is the video that is to be packed");
    }
}

void PackMotionJpeg(const PackCameraOptions& options, FilmReader& film, Progress& progress)
{
    JpegFile media(CameraMediaPath(options.output), options.quality);
    CameraIndexFile index(CameraIndexPath(options.output));
    Canvas canvas(film.Width(), film.Height());
    for (std::uint64_t frame = 0; film.Read(canvas); ++frame)
    {
        ThrowIfInterrupted();
        CameraRecord record = media.Write(canvas);
        record.time = film.Rate().TimeOfFrame(frame);
        index.Write(record);
        progress.Report(frame + 1);
    }
    media.Close();
    index.Close();
    media.Commit();
    index.Commit();
}

/// Colour is kept for squares of two by two pixels: an odd picture repeats its last column and row.
void FillMargin(Canvas& canvas, std::uint32_t width, std::uint32_t height)
{
    if (canvas.Width() > width)
    {
        for (std::uint32_t y = 0; y < height; ++y)
            std::memcpy(canvas.Row(y) + std::size_t{width} * 4, canvas.Row(y) + std::size_t{width - 1} * 4, 4);
    }
    if (canvas.Height() > height)
        std::memcpy(canvas.Row(height), canvas.Row(height - 1), canvas.Stride());
}

void PackH264(const PackCameraOptions& options, FilmReader& film, Progress& progress)
{
    EncoderSettings settings;
    settings.width = (film.Width() + 1) & ~1U;
    settings.height = (film.Height() + 1) & ~1U;
    settings.frameRate = film.Rate();
    settings.crf = options.crf;
    // Recordings are made to be edited: a jump decodes a second of frames at most.
    settings.keyInterval = static_cast<int>(std::max(1.0, film.Rate().PerSecond()));
    settings.matrix = settings.height >= kFirstHdHeight ? ColourMatrix::Bt709 : ColourMatrix::Bt601;

    VideoEncoder encoder(CameraMediaPath(options.output), settings);
    CameraIndexFile index(CameraIndexPath(options.output));
    Canvas canvas(settings.width, settings.height);
    for (std::uint64_t frame = 0; film.Read(canvas); ++frame)
    {
        ThrowIfInterrupted();
        FillMargin(canvas, film.Width(), film.Height());
        encoder.Write(canvas);
        progress.Report(frame + 1);
    }
    encoder.Close();
    std::uint64_t frame = 0;
    for (const EncodedFrame& encoded : encoder.Frames())
        index.Write({film.Rate().TimeOfFrame(frame++), encoded.offset, encoded.length});
    index.Close();
    encoder.Commit();
    index.Commit();
}
} // namespace

void RunPackCamera(const PackCameraOptions& options)
{
    if (!IsCameraName(options.output))
        throw HostError(ExitCode::CommandLine, options.output, "the name must end in .mjpg or .h264");
    CheckNotTheInput(options);
    const EngineSession session;
    FilmReader film(options.input);
    Progress progress(options.progress, film.StatedFrames());
    if (IsMotionJpegName(options.output))
        PackMotionJpeg(options, film, progress);
    else
        PackH264(options, film, progress);
}
} // namespace qmx::host
