#include "host/commands/FrameCommand.h"

#include "host/HostError.h"
#include "host/commands/FrameSpan.h"
#include "host/compose/ProjectPlayer.h"
#include "host/output/OutputFile.h"
#include "host/output/PngFile.h"
#include "host/project/ProjectReader.h"

#include <charconv>
#include <optional>

namespace qmx::host
{
namespace
{
std::optional<std::uint64_t> ParseTrack(const std::string& text)
{
    if (text.empty())
        return std::nullopt;
    std::uint64_t id = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    if (error != std::errc() || end != text.data() + text.size())
        throw HostError(ExitCode::CommandLine, "--track", '"' + text + "\" is no track ID");
    return id;
}
} // namespace

void RunFrame(const FrameOptions& options)
{
    CheckExtension(options.output, ".png");
    const std::optional<std::uint64_t> track = ParseTrack(options.track);
    const Project project = ProjectReader::ReadFile(options.project);
    CheckNotASource(options.output, project);
    const std::uint64_t frame = FrameAt(project, options.at);
    ProjectPlayer player(project, track);
    Canvas canvas(project.width, project.height);
    player.Compose(project.frameRate.TimeOfFrame(frame), canvas);
    WritePng(canvas, options.output);
}
} // namespace qmx::host
