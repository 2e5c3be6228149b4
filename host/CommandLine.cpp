#include "host/CommandLine.h"

#include "host/commands/AudioCommand.h"
#include "host/commands/CheckEffectCommand.h"
#include "host/commands/ExportCommand.h"
#include "host/commands/FrameCommand.h"
#include "host/commands/HashCommand.h"
#include "host/commands/ImportCommand.h"
#include "host/commands/InfoCommand.h"
#include "host/commands/PackCameraCommand.h"
#include "host/commands/RenderCommand.h"
#include "host/commands/SheetCommand.h"
#include "host/commands/ThumbnailCommand.h"
#include "host/output/ContactSheet.h"
#include "host/project/Project.h"
#include "host/system/Platform.h"
#include "host/system/StandardOutput.h"

#include <CLI/CLI.hpp>

namespace qmx::host
{
namespace
{
const std::set<std::string> kPresets{"ultrafast", "superfast", "veryfast", "faster",  "fast",
                                     "medium",    "slow",      "slower",   "veryslow"};

void AddProject(CLI::App& command, std::string& project)
{
    command.add_option("PROJECT", project, "Project file (JSON)")->required()->type_name("");
}

void AddOutput(CLI::App& command, std::string& output, const char* pText)
{
    command.add_option("-o,--output", output, pText)->required()->type_name("FILE");
}

void AddSpan(CLI::App& command, std::string& from, std::string& to)
{
    command.add_option("--from", from, "Start in seconds; otherwise the project's start")->type_name("SECONDS");
    command.add_option("--to", to, "End in seconds; otherwise the project's end")->type_name("SECONDS");
}

/// The options of every command, as CLI11 fills them.
struct Options
{
    RenderOptions render;
    bool noProgress = false;
    std::string progress;
    FrameOptions frame;
    SheetOptions sheet;
    HashOptions hash;
    AudioOptions audio;
    InfoOptions info;
    CheckEffectOptions checkEffect;
    PackCameraOptions packCamera;
    ThumbnailOptions thumbnail;
    ImportCommandOptions imports;
    ExportCommandOptions exports;
    std::string report;
};

void AddProgress(CLI::App& command, Options& options)
{
    CLI::Option* const pNone = command.add_flag("--no-progress", options.noProgress, "Show no progress");
    command.add_option("--progress", options.progress, "json: one JSON object per line on standard output")
        ->check(CLI::IsMember({"json"}))
        ->excludes(pNone);
}

CLI::App* AddRender(CLI::App& app, Options& options)
{
    CLI::App* const pCommand = app.add_subcommand("render", "Encode a project as a video (H.264 and AAC in MP4)");
    AddProject(*pCommand, options.render.project);
    AddOutput(*pCommand, options.render.output, "Video file to write, *.mp4");
    AddSpan(*pCommand, options.render.from, options.render.to);
    pCommand->add_option("--crf", options.render.crf, "Quality, 0 (lossless) to 51 (worst)")
        ->capture_default_str()
        ->check(CLI::Range(0, 51));
    pCommand->add_option("--preset", options.render.preset, "Speed of the encoder against size of the file")
        ->capture_default_str()
        ->check(CLI::IsMember(kPresets));
    AddProgress(*pCommand, options);
    return pCommand;
}

CLI::App* AddFrame(CLI::App& app, Options& options)
{
    CLI::App* const pCommand = app.add_subcommand("frame", "Write one frame of a project as a PNG file");
    AddProject(*pCommand, options.frame.project);
    pCommand->add_option("--at", options.frame.at, "Time on the time line")->required()->type_name("SECONDS");
    pCommand->add_option("--track", options.frame.track, "The only track to show")->type_name("ID");
    AddOutput(*pCommand, options.frame.output, "PNG file to write");
    return pCommand;
}

CLI::App* AddSheet(CLI::App& app, Options& options)
{
    CLI::App* const pCommand = app.add_subcommand("sheet", "Write frames spread over a project as one PNG file");
    AddProject(*pCommand, options.sheet.project);
    AddOutput(*pCommand, options.sheet.output, "PNG file to write");
    const CLI::Range cells(1U, ContactSheet::kMaxCells);
    pCommand->add_option("--columns", options.sheet.columns, "Pictures side by side")
        ->capture_default_str()
        ->check(cells);
    pCommand->add_option("--rows", options.sheet.rows, "Pictures one below the other")
        ->capture_default_str()
        ->check(cells);
    return pCommand;
}

CLI::App* AddHash(CLI::App& app, Options& options)
{
    CLI::App* const pCommand =
        app.add_subcommand("hash", "Print a line for every frame: index, seconds, XXH3 of its pixels");
    AddProject(*pCommand, options.hash.project);
    AddSpan(*pCommand, options.hash.from, options.hash.to);
    return pCommand;
}

CLI::App* AddAudio(CLI::App& app, Options& options)
{
    CLI::App* const pCommand = app.add_subcommand("audio", "Write the sound of a project as a WAV file");
    AddProject(*pCommand, options.audio.project);
    AddOutput(*pCommand, options.audio.output, "Sound file to write, *.wav");
    return pCommand;
}

CLI::App* AddInfo(CLI::App& app, Options& options)
{
    CLI::App* const pCommand = app.add_subcommand("info", "Print facts of media files");
    pCommand->add_option("FILE", options.info.files, "Media files")->required()->type_name("");
    pCommand->add_flag("--json", options.info.json, "Print a JSON list");
    return pCommand;
}

CLI::App* AddThumbnail(CLI::App& app, Options& options)
{
    CLI::App* const pCommand = app.add_subcommand("thumbnail", "Write a small picture of a media file as a PNG file");
    pCommand->add_option("FILE", options.thumbnail.file, "Media file, or the name of a camera recording")
        ->required()
        ->type_name("");
    pCommand->add_option("--at", options.thumbnail.at, "Time in the file")->capture_default_str()->type_name("SECONDS");
    AddOutput(*pCommand, options.thumbnail.output, "PNG file to write");
    return pCommand;
}

CLI::App* AddCheckEffect(CLI::App& app, Options& options)
{
    CLI::App* const pCommand =
        app.add_subcommand("check-effect", "Check that an effect module keeps what transitions rely on");
    pCommand->add_option("FILE", options.checkEffect.module, "Effect module")->required()->type_name("");
    pCommand->add_option("--effects", options.checkEffect.count, "How many effect types to check, from 0 on")
        ->capture_default_str()
        ->check(CLI::Range(1U, 65'536U));
    return pCommand;
}

CLI::App* AddPackCamera(CLI::App& app, Options& options)
{
    CLI::App* const pCommand = app.add_subcommand("pack-camera", "Make a camera recording of a video");
    PackCameraOptions& pack = options.packCamera;
    pCommand->add_option("IN", pack.input, "Video file")->required()->type_name("");
    pCommand
        ->add_option("OUT", pack.output,
                     "Name of the recording: *.mjpg (writes *.mov and *.meta) or *.h264 (*.mp4 and *.meta)")
        ->required()
        ->type_name("");
    pCommand->add_option("--quality", pack.quality, "Quality of Motion-JPEG, 1 (worst) to 100")
        ->capture_default_str()
        ->check(CLI::Range(1, 100));
    pCommand->add_option("--crf", pack.crf, "Quality of H.264, 0 (lossless) to 51 (worst)")
        ->capture_default_str()
        ->check(CLI::Range(0, 51));
    AddProgress(*pCommand, options);
    return pCommand;
}

void AddReport(CLI::App& command, Options& options)
{
    command
        .add_option("--report", options.report,
                    "json: what could not be carried over as a JSON list on standard output instead of lines on "
                    "standard error")
        ->check(CLI::IsMember({"json"}));
}

CLI::App* AddImport(CLI::App& app, Options& options)
{
    CLI::App* const pCommand = app.add_subcommand("import", "Make a project of an OpenTimelineIO file");
    ImportCommandOptions& imports = options.imports;
    pCommand->add_option("FILE", imports.timeline, "Timeline file, *.otio")->required()->type_name("");
    AddOutput(*pCommand, imports.output, "Project file to write, *.json");
    const CLI::Range sides(1U, kMaxCanvasSide);
    pCommand->add_option("--width", imports.width, "Canvas in pixels; otherwise what the file or its first media say")
        ->check(sides);
    pCommand->add_option("--height", imports.height, "Likewise")->check(sides);
    pCommand
        ->add_option("--frame-rate", imports.frameRate,
                     "Frames per second, like 25 or 30000/1001; otherwise what the file or its first media say")
        ->type_name("RATE");
    AddReport(*pCommand, options);
    return pCommand;
}

CLI::App* AddExport(CLI::App& app, Options& options)
{
    CLI::App* const pCommand = app.add_subcommand("export", "Write a project as an OpenTimelineIO file");
    AddProject(*pCommand, options.exports.project);
    AddOutput(*pCommand, options.exports.output, "Timeline file to write, *.otio");
    AddReport(*pCommand, options);
    return pCommand;
}

ProgressMode ModeOf(const Options& options)
{
    if (!options.progress.empty())
        return ProgressMode::Json;
    return !options.noProgress && IsErrorOnTerminal() ? ProgressMode::Terminal : ProgressMode::None;
}
} // namespace

ExitCode RunCommandLine(int count, const char* const* arguments)
{
    CLI::App app("Renders and inspects projects of the QMX engine.", "qmx");
    app.set_version_flag("--version", "qmx " QMX_VERSION);
    app.require_subcommand(1);
    app.allow_windows_style_options(false); // "/name" is a file, on Windows too
    Options options;
    const CLI::App* const pRender = AddRender(app, options);
    const CLI::App* const pFrame = AddFrame(app, options);
    const CLI::App* const pSheet = AddSheet(app, options);
    const CLI::App* const pHash = AddHash(app, options);
    const CLI::App* const pAudio = AddAudio(app, options);
    const CLI::App* const pPackCamera = AddPackCamera(app, options);
    AddInfo(app, options);
    const CLI::App* const pThumbnail = AddThumbnail(app, options);
    const CLI::App* const pCheckEffect = AddCheckEffect(app, options);
    const CLI::App* const pImport = AddImport(app, options);
    const CLI::App* const pExport = AddExport(app, options);
    try
    {
        app.parse(count, arguments);
    }
    catch (const CLI::ParseError& error)
    {
        if (error.get_exit_code() != 0)
            throw HostError(ExitCode::CommandLine, "", error.what());
        app.exit(error); // prints the help or the version
        FlushOutput();
        return ExitCode::Done;
    }
    if (pRender->parsed())
    {
        options.render.progress = ModeOf(options);
        RunRender(options.render);
    }
    else if (pPackCamera->parsed())
    {
        options.packCamera.progress = ModeOf(options);
        RunPackCamera(options.packCamera);
    }
    else if (pFrame->parsed())
        RunFrame(options.frame);
    else if (pSheet->parsed())
        RunSheet(options.sheet);
    else if (pHash->parsed())
        RunHash(options.hash);
    else if (pCheckEffect->parsed())
        return RunCheckEffect(options.checkEffect);
    else if (pThumbnail->parsed())
        RunThumbnail(options.thumbnail);
    else if (pAudio->parsed())
        RunAudio(options.audio);
    else if (pImport->parsed())
    {
        options.imports.jsonReport = !options.report.empty();
        RunImport(options.imports);
    }
    else if (pExport->parsed())
    {
        options.exports.jsonReport = !options.report.empty();
        RunExport(options.exports);
    }
    else
        return RunInfo(options.info);
    return ExitCode::Done;
}
} // namespace qmx::host
