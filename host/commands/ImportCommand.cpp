#include "host/commands/ImportCommand.h"

#include "host/HostError.h"
#include "host/compose/EngineSession.h"
#include "host/compose/MediaProbe.h"
#include "host/interchange/PrintReport.h"
#include "host/interchange/TimelineImporter.h"
#include "host/output/OutputFile.h"
#include "host/project/CameraFiles.h"
#include "host/project/JsonText.h"
#include "host/project/ProjectReader.h"
#include "host/project/TextFile.h"

#include <set>

namespace qmx::host
{
namespace
{
constexpr std::size_t kMaxTimelineSize = std::size_t{64} << 20; // bytes

/// Size and rate of a video or a picture.
std::optional<MediaShape> ShapeOf(const std::filesystem::path& path)
{
    const EngineSession session;
    MediaProbe probe;
    try
    {
        if (const PictureFacts* const pPicture = probe.FindPicture(path, "", ""))
            return MediaShape{pPicture->width, pPicture->height, std::nullopt};
        const tagVideoInfo& info = probe.Video(path, "", "");
        if (info.nWidth == 0 || info.nHeight == 0 || info.nWidth > kMaxCanvasSide || info.nHeight > kMaxCanvasSide)
            return std::nullopt;
        return MediaShape{info.nWidth, info.nHeight, FrameRate::FromFraction(info.nFrameRateNum, info.nFrameRateDen)};
    }
    catch (const HostError&)
    {
        return std::nullopt;
    }
}

/// Reports media that are not there, each once.
class MediaCheck
{
public:
    MediaCheck(std::filesystem::path folder, TransferReport& report) : m_folder(std::move(folder)), m_report(report) {}

    void CheckProject(const JsonValue& project)
    {
        const std::vector<JsonValue>& tracks = FindMember(project, "tracks")->items;
        for (std::size_t t = 0; t < tracks.size(); ++t)
        {
            const std::vector<JsonValue>& clips = FindMember(tracks[t], "clips")->items;
            for (std::size_t c = 0; c < clips.size(); ++c)
                CheckClip(clips[c], "tracks[" + std::to_string(t) + "].clips[" + std::to_string(c) + ']');
        }
    }

private:
    /// @param clip  of a project, or a side of a transition
    void CheckClip(const JsonValue& clip, const std::string& place)
    {
        for (const char* const pSide : {"from", "to"})
        {
            if (const JsonValue* const pClip = FindMember(clip, pSide))
                CheckClip(*pClip, place + '.' + pSide);
        }
        const JsonValue* const pPath = FindMember(clip, "path");
        if (!pPath || !m_known.insert(pPath->text).second)
            return;
        std::filesystem::path path = m_folder / pPath->text;
        if (FindMember(clip, "type")->text == "camera")
            path = CameraMediaPath(path);
        std::error_code error;
        if (!std::filesystem::exists(path, error))
            m_report.Add(place, "", "media \"" + pPath->text + '"', "not there; the project names them all the same");
    }

    std::filesystem::path m_folder;
    TransferReport& m_report;
    std::set<std::string> m_known;
};

ImportOptions OptionsOf(const ImportCommandOptions& options)
{
    ImportOptions result;
    result.timelineFile = options.timeline;
    result.projectFile = options.output;
    result.width = options.width;
    result.height = options.height;
    if (options.frameRate.empty())
        return result;
    result.frameRate = FrameRate::Parse(options.frameRate);
    if (!result.frameRate)
        throw HostError(ExitCode::CommandLine, "--frame-rate",
                        '"' + options.frameRate + "\" is no rate from 0.001 to 1000, like 30 or 30000/1001");
    return result;
}

JsonValue Import(const ImportCommandOptions& options, TransferReport& report)
{
    const ImportOptions importOptions = OptionsOf(options);
    const std::string text = ReadTextFile(options.timeline, kMaxTimelineSize);
    try
    {
        return ImportTimeline(text, importOptions, ShapeOf, report);
    }
    catch (const JsonError& error)
    {
        const std::string where = error.Path().empty() ? "" : error.Path() + ": ";
        throw HostError(ExitCode::Project, options.timeline, where + error.what());
    }
}
} // namespace

void RunImport(const ImportCommandOptions& options)
{
    CheckExtension(options.output, ".json");
    TransferReport report;
    const JsonValue project = Import(options, report);
    const std::string text = JsonText(project, 2);
    if (text.size() > ProjectReader::kMaxFileSize)
        throw HostError(ExitCode::Project, options.timeline, "makes a project that is too large");
    try
    {
        Project made = ProjectReader::Parse(text, options.output);
        made.file = options.timeline;
        CheckNotASource(options.output, made);
    }
    catch (const HostError& error)
    {
        if (error.Code() != ExitCode::Project)
            throw;
        throw HostError(ExitCode::Project, options.timeline, std::string("makes no project: ") + error.what());
    }
    MediaCheck(std::filesystem::path(options.output).parent_path(), report).CheckProject(project);
    WriteTextFile(options.output, text);
    PrintReport(report, options.timeline, options.jsonReport);
}
} // namespace qmx::host
