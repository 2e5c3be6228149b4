#include "host/commands/InfoCommand.h"

#include "host/compose/EngineSession.h"
#include "host/compose/MediaProbe.h"
#include "host/project/Decimal.h"
#include "host/system/Interrupt.h"
#include "host/system/StandardError.h"
#include "host/system/StandardOutput.h"

#include <nlohmann/json.hpp>

namespace qmx::host
{
namespace
{
std::string TextOf(const std::string& file, const tagVideoInfo& info)
{
    return file + ": " + std::to_string(info.nWidth) + " x " + std::to_string(info.nHeight) + ", " +
           std::to_string(info.nFrameRateNum) + '/' + std::to_string(info.nFrameRateDen) + " frames/s, rotation " +
           std::to_string(info.nRotation) + ", pixel aspect " + std::to_string(info.nPixelAspectX) + ':' +
           std::to_string(info.nPixelAspectY) + ", " + NumberText(info.dDuration) + " s";
}

nlohmann::ordered_json JsonOf(const std::string& file, const tagVideoInfo& info)
{
    return {{"file", file},
            {"width", info.nWidth},
            {"height", info.nHeight},
            {"rotation", info.nRotation},
            {"frameRate", {{"num", info.nFrameRateNum}, {"den", info.nFrameRateDen}}},
            {"pixelAspect", {{"x", info.nPixelAspectX}, {"y", info.nPixelAspectY}}},
            {"duration", info.dDuration}};
}

std::string TextOf(const std::string& file, const PictureFacts& facts)
{
    std::string text = file + ": " + facts.format + ", " + std::to_string(facts.width) + " x " +
                       std::to_string(facts.height) + ", orientation " + std::to_string(facts.orientation) + ", " +
                       std::to_string(facts.frames) + (facts.frames == 1 ? " frame" : " frames");
    if (facts.duration > 0)
        text += ", " + NumberText(facts.duration) + " s";
    return text;
}

nlohmann::ordered_json JsonOf(const std::string& file, const PictureFacts& facts)
{
    return {{"file", file},
            {"format", facts.format},
            {"width", facts.width},
            {"height", facts.height},
            {"orientation", facts.orientation},
            {"frames", facts.frames},
            {"duration", facts.duration}};
}

/// Prints a file's facts, or adds them to the list that is printed in the end.
template <class Facts>
void Report(const InfoOptions& options, const std::string& file, const Facts& facts, nlohmann::ordered_json& list)
{
    if (options.json)
        list.push_back(JsonOf(file, facts));
    else
        PrintLine(TextOf(file, facts));
}
} // namespace

ExitCode RunInfo(const InfoOptions& options)
{
    const EngineSession session;
    MediaProbe probe;
    ExitCode result = ExitCode::Done;
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const std::string& file : options.files)
    {
        ThrowIfInterrupted();
        try
        {
            if (const PictureFacts* const pPicture = probe.FindPicture(file, file, ""))
                Report(options, file, *pPicture, list);
            else
                Report(options, file, probe.Video(file, file, ""), list);
        }
        catch (const HostError& error)
        {
            if (error.Code() != ExitCode::Media)
                throw;
            PrintError(error);
            result = ExitCode::Media;
        }
    }
    // A name need not be UTF-8, JSON must.
    if (options.json)
        PrintLine(list.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
    FlushOutput();
    return result;
}
} // namespace qmx::host
