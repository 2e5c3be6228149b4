#include "host/commands/HashCommand.h"

#include "host/commands/FrameSpan.h"
#include "host/compose/ProjectPlayer.h"
#include "host/project/Decimal.h"
#include "host/project/ProjectReader.h"
#include "host/system/Interrupt.h"
#include "host/system/StandardOutput.h"

#include <xxhash.h>

namespace qmx::host
{
namespace
{
std::string HexText(std::uint64_t value)
{
    std::string text(16, '0');
    for (std::size_t i = text.size(); i-- > 0; value >>= 4)
        text[i] = "0123456789abcdef"[value & 15];
    return text;
}
} // namespace

void RunHash(const HashOptions& options)
{
    const Project project = ProjectReader::ReadFile(options.project);
    const FrameSpan span = SpanBetween(project, options.from, options.to);
    ProjectPlayer player(project);
    Canvas canvas(project.width, project.height);
    for (std::uint64_t frame = span.first; frame < span.end; ++frame)
    {
        ThrowIfInterrupted();
        const std::uint64_t time = project.frameRate.TimeOfFrame(frame);
        player.Compose(time, canvas);
        const std::uint64_t hash = XXH3_64bits(canvas.Row(0), canvas.ByteCount());
        PrintLine(std::to_string(frame) + ' ' + SecondsText(time) + ' ' + HexText(hash));
    }
    FlushOutput();
}
} // namespace qmx::host
