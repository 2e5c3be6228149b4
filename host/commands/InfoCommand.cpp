#include "host/commands/InfoCommand.h"

#include "host/compose/EngineSession.h"
#include "host/compose/MediaProbe.h"
#include "host/project/Decimal.h"
#include "host/system/Interrupt.h"
#include "host/system/StandardError.h"
#include "host/system/StandardOutput.h"

#include <nlohmann/json.hpp>

#include <optional>

namespace qmx::host
{
namespace
{
std::string TextOf(const tagVideoInfo& info)
{
    return std::to_string(info.nWidth) + " x " + std::to_string(info.nHeight) + ", " +
           std::to_string(info.nFrameRateNum) + '/' + std::to_string(info.nFrameRateDen) + " frames/s, rotation " +
           std::to_string(info.nRotation) + ", pixel aspect " + std::to_string(info.nPixelAspectX) + ':' +
           std::to_string(info.nPixelAspectY) + ", " + NumberText(info.dDuration) + " s";
}

std::string TextOf(const SoundFacts& sound)
{
    std::string text = "sound " + std::to_string(sound.rate) + " Hz, " + std::to_string(sound.channels) +
                       (sound.channels == 1 ? " channel" : " channels");
    if (sound.bits != 0)
        text += ", " + std::to_string(sound.bits) + " bits";
    return text;
}

nlohmann::ordered_json JsonOf(const tagVideoInfo& info)
{
    return {{"width", info.nWidth},
            {"height", info.nHeight},
            {"rotation", info.nRotation},
            {"frameRate", {{"num", info.nFrameRateNum}, {"den", info.nFrameRateDen}}},
            {"pixelAspect", {{"x", info.nPixelAspectX}, {"y", info.nPixelAspectY}}},
            {"duration", info.dDuration}};
}

nlohmann::ordered_json JsonOf(const SoundFacts& sound)
{
    nlohmann::ordered_json json{{"rate", sound.rate}, {"channels", sound.channels}};
    if (sound.bits != 0)
        json["bits"] = sound.bits;
    return json;
}

/// What is known of one file.
struct FileFacts
{
    std::optional<tagVideoInfo> video;
    std::optional<SoundFacts> sound;

    std::string Text(const std::string& file) const
    {
        if (!video)
            return file + ": " + TextOf(*sound) + ", " + NumberText(sound->duration) + " s";
        return file + ": " + TextOf(*video) + (sound ? ", " + TextOf(*sound) : "");
    }
    nlohmann::ordered_json Json(const std::string& file) const
    {
        nlohmann::ordered_json json{{"file", file}};
        if (video)
            json.update(JsonOf(*video));
        else
            json["duration"] = sound->duration;
        if (sound)
            json["audio"] = JsonOf(*sound);
        return json;
    }
};

/// @throw HostError  ExitCode::Media: neither pictures nor sound that can be read
FileFacts FactsOf(MediaProbe& probe, const std::string& file)
{
    FileFacts facts;
    try
    {
        facts.video = probe.Video(file, file, "");
    }
    catch (const HostError& error)
    {
        // A file of sound is as good as one of pictures; for anything else what was said first is what counts.
        if (error.Code() != ExitCode::Media || !probe.HasSound(file))
            throw;
    }
    if (probe.HasSound(file))
        facts.sound = probe.NeedSound(file, file, "");
    return facts;
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
void Report(const InfoOptions& options, nlohmann::ordered_json json, const std::string& text,
            nlohmann::ordered_json& list)
{
    if (options.json)
        list.push_back(std::move(json));
    else
        PrintLine(text);
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
            {
                Report(options, JsonOf(file, *pPicture), TextOf(file, *pPicture), list);
                continue;
            }
            const FileFacts facts = FactsOf(probe, file);
            Report(options, facts.Json(file), facts.Text(file), list);
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
