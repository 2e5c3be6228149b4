#include "host/info/FactsJson.h"

#include "host/info/FileDate.h"

namespace qmx::host
{
namespace
{
using Json = nlohmann::ordered_json;

Json JsonOf(const tagAudioInfo& sound)
{
    Json json{{"rate", sound.nSamplesPerSec}, {"channels", sound.nChannels}};
    if (sound.nBitsPerSample != 0)
        json["bits"] = sound.nBitsPerSample;
    return json;
}

Json JsonOf(const StreamFacts& stream)
{
    Json json{{"kind", stream.kind}};
    if (!stream.coding.empty())
        json["coding"] = stream.coding;
    if (stream.width != 0)
    {
        json["width"] = stream.width;
        json["height"] = stream.height;
    }
    if (stream.rate != 0)
    {
        json["rate"] = stream.rate;
        json["channels"] = stream.channels;
    }
    return json;
}

void AddPicture(const PictureFacts& picture, FileKind kind, Json& json)
{
    json["format"] = picture.format;
    json["orientation"] = picture.orientation;
    if (kind != FileKind::Animation)
        return;
    json["delays"] = picture.delays;
    if (picture.rounds)
        json["rounds"] = *picture.rounds;
}
} // namespace

Json JsonOf(const FileFacts& facts)
{
    Json json{{"file", facts.file}, {"kind", NamesOf(facts.kind).pField}, {"bytes", facts.bytes}};
    if (facts.recorded)
        json["recorded"] = DateText(*facts.recorded) + 'Z';
    if (facts.modified)
        json["modified"] = DateText(*facts.modified);
    if (facts.width != 0)
    {
        json["width"] = facts.width;
        json["height"] = facts.height;
    }
    if (facts.duration)
        json["duration"] = *facts.duration;
    if (facts.frameRate)
        json["frameRate"] = {{"num", facts.frameRate->num}, {"den", facts.frameRate->den}};
    if (facts.frames)
        json["frames"] = *facts.frames;
    if (facts.video && facts.kind == FileKind::Film)
    {
        json["rotation"] = facts.video->nRotation;
        json["pixelAspect"] = {{"x", facts.video->nPixelAspectX}, {"y", facts.video->nPixelAspectY}};
    }
    if (facts.picture)
        AddPicture(*facts.picture, facts.kind, json);
    if (facts.sound)
        json["audio"] = JsonOf(*facts.sound);
    if (facts.kind == FileKind::Film || facts.kind == FileKind::Sound)
    {
        json["streams"] = Json::array();
        for (const StreamFacts& stream : facts.streams)
            json["streams"].push_back(JsonOf(stream));
    }
    return json;
}
} // namespace qmx::host
