#include "host/commands/ExportCommand.h"

#include "host/HostError.h"
#include "host/compose/EngineSession.h"
#include "host/compose/MediaProbe.h"
#include "host/interchange/PrintReport.h"
#include "host/interchange/TimelineExporter.h"
#include "host/output/OutputFile.h"
#include "host/project/JsonText.h"
#include "host/project/ProjectReader.h"
#include "host/project/TextFile.h"
#include "host/system/Interrupt.h"

#include <cmath>
#include <memory>

namespace qmx::host
{
namespace
{
/// Lengths of media; the engine starts with the first.
class MediaLengths
{
public:
    std::optional<std::uint64_t> Of(const std::string& type, const std::filesystem::path& path)
    {
        ThrowIfInterrupted();
        if (!m_pSession)
            m_pSession = std::make_unique<EngineSession>();
        try
        {
            const double seconds = Seconds(type, path);
            if (seconds > 0 && seconds < 1e9)
                return static_cast<std::uint64_t>(std::llround(seconds * 1e7));
        }
        catch (const HostError& error)
        {
            if (error.Code() != ExitCode::Media)
                throw;
        }
        return std::nullopt;
    }

private:
    double Seconds(const std::string& type, const std::filesystem::path& path)
    {
        if (type == "audio")
            return m_probe.NeedSound(path, "", "").dDuration;
        if (type == "video")
            return m_probe.Video(path, "", "").dDuration;
        return m_probe.Camera(path, "", "").duration;
    }

    std::unique_ptr<EngineSession> m_pSession;
    MediaProbe m_probe;
};
} // namespace

void RunExport(const ExportCommandOptions& options)
{
    CheckExtension(options.output, ".otio");
    const std::string text = ReadTextFile(options.project, ProjectReader::kMaxFileSize);
    CheckNotASource(options.output, ProjectReader::Parse(text, options.project));
    TransferReport report;
    MediaLengths lengths;
    const ExportOptions exportOptions{options.project, options.output};
    const JsonValue timeline = ExportTimeline(
        ParseJson(text), exportOptions,
        [&](const std::string& type, const std::filesystem::path& path) { return lengths.Of(type, path); }, report);
    WriteTextFile(options.output, JsonText(timeline, 4));
    PrintReport(report, options.project, options.jsonReport);
}
} // namespace qmx::host
