#include "host/commands/AudioCommand.h"

#include "host/compose/EngineSession.h"
#include "host/output/OutputFile.h"
#include "host/output/WaveFile.h"
#include "host/project/ProjectReader.h"
#include "host/sound/SoundMixer.h"
#include "host/sound/SoundTime.h"
#include "host/system/Interrupt.h"

#include <algorithm>
#include <vector>

namespace qmx::host
{
namespace
{
constexpr std::uint64_t kPart = kSoundRate / 10; // samples
}

void RunAudio(const AudioOptions& options)
{
    CheckExtension(options.output, ".wav");
    const Project project = ProjectReader::ReadFile(options.project);
    CheckNotASource(options.output, project);
    const EngineSession session;
    MediaProbe probe;
    SoundMixer mixer(project, probe);
    const std::uint64_t end = SampleAtTime(project.Duration());
    WaveFile file(options.output, end);
    std::vector<float> samples(kPart * kSoundChannels);
    for (std::uint64_t at = 0; at < end;)
    {
        ThrowIfInterrupted();
        const auto count = static_cast<std::size_t>(std::min(kPart, end - at));
        mixer.Read(samples.data(), count);
        file.Write(samples.data(), count);
        at += count;
    }
    file.Finish();
}
} // namespace qmx::host
