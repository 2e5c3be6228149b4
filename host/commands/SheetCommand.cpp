#include "host/commands/SheetCommand.h"

#include "host/compose/ProjectPlayer.h"
#include "host/output/ContactSheet.h"
#include "host/output/OutputFile.h"
#include "host/output/PngFile.h"
#include "host/project/ProjectReader.h"
#include "host/system/Interrupt.h"

namespace qmx::host
{
void RunSheet(const SheetOptions& options)
{
    CheckExtension(options.output, ".png");
    const Project project = ProjectReader::ReadFile(options.project);
    CheckNotASource(options.output, project);
    ProjectPlayer player(project);
    ContactSheet sheet(options.columns, options.rows, project.width, project.height);
    Canvas canvas(project.width, project.height);
    const std::uint64_t frames = project.FrameCount();
    for (std::uint32_t cell = 0; cell < sheet.CellCount(); ++cell)
    {
        ThrowIfInterrupted();
        // The middle of each of as many equal parts as there are cells.
        const std::uint64_t frame = frames * (2 * std::uint64_t{cell} + 1) / (2 * std::uint64_t{sheet.CellCount()});
        const std::uint64_t time = project.frameRate.TimeOfFrame(frame);
        player.Compose(time, canvas);
        sheet.SetCell(cell, canvas, time);
    }
    WritePng(sheet.Page(), options.output);
}
} // namespace qmx::host
