#include "host/commands/RenderCommand.h"

#include "host/HostError.h"
#include "host/commands/FrameSpan.h"
#include "host/compose/ProjectPlayer.h"
#include "host/output/FramePipeline.h"
#include "host/output/OutputFile.h"
#include "host/output/VideoEncoder.h"
#include "host/project/ProjectReader.h"
#include "host/sound/SoundMixer.h"
#include "host/sound/SoundTime.h"
#include "host/system/Interrupt.h"

#include <string>
#include <vector>

namespace qmx::host
{
namespace
{
constexpr std::size_t kFramesUnderWay = 3; // one being made, one waiting, one being encoded

/// Colour is kept for squares of two by two pixels.
void CheckEven(const Project& project)
{
    const auto check = [&](const char* pName, std::uint32_t side)
    {
        if (side % 2 != 0)
            throw HostError(ExitCode::Project, project.file.string(),
                            std::string(pName) + ": must be even for a video, not " + std::to_string(side));
    };
    check("width", project.width);
    check("height", project.height);
}
} // namespace

void RunRender(const RenderOptions& options)
{
    CheckExtension(options.output, ".mp4");
    const Project project = ProjectReader::ReadFile(options.project);
    CheckEven(project);
    CheckNotASource(options.output, project);
    const FrameSpan span = SpanBetween(project, options.from, options.to);

    ProjectPlayer player(project);
    MediaProbe probe;
    SoundMixer mixer(project, probe);
    VideoEncoder encoder(options.output, {project.width, project.height, project.frameRate, options.crf, options.preset,
                                          mixer.HasSound()});
    std::uint64_t nextSample = SampleAtTime(project.frameRate.TimeOfFrame(span.first));
    mixer.Start(nextSample);
    std::vector<float> samples;
    Progress progress(options.progress, span.end - span.first);
    const auto compose = [&](std::uint64_t frame, Canvas& canvas)
    {
        ThrowIfInterrupted();
        player.Compose(project.frameRate.TimeOfFrame(frame), canvas);
    };
    const auto encode = [&](std::uint64_t frame, const Canvas& canvas)
    {
        encoder.Write(canvas);
        if (mixer.HasSound())
        {
            const std::uint64_t end = SampleAtTime(project.frameRate.TimeOfFrame(frame + 1));
            const auto count = static_cast<std::size_t>(end - nextSample);
            samples.resize(count * kSoundChannels);
            mixer.Read(samples.data(), count);
            encoder.WriteSound(samples.data(), count);
            nextSample = end;
        }
        progress.Report(frame + 1 - span.first);
    };
    FramePipeline(project.width, project.height, kFramesUnderWay).Run(span.first, span.end, compose, encode);
    ThrowIfInterrupted();
    encoder.Finish();
}
} // namespace qmx::host
