/// @file fuzz_otio.cpp
/// Any bytes as a timeline: imported, and what is a project then exported and imported again, which may change nothing.
#include "host/HostError.h"
#include "host/interchange/TimelineExporter.h"
#include "host/interchange/TimelineImporter.h"
#include "host/project/JsonText.h"
#include "host/project/ProjectReader.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace
{
using namespace qmx::host;

const ImportOptions kFiles{"cuts/a.otio", "projects/a.json", {}, {}, {}};

/// @return an empty text when the timeline is refused
std::string Import(std::string_view text, TransferReport& report)
{
    try
    {
        const ShapeLookup none;
        return JsonText(ImportTimeline(text, kFiles, none, report), 2);
    }
    catch (const JsonError&)
    {
        return {};
    }
}

bool IsProject(const std::string& text)
{
    try
    {
        (void)ProjectReader::Parse(text, "projects/a.json");
        return true;
    }
    catch (const HostError&)
    {
        return false;
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t cb)
{
    TransferReport report;
    const std::string project = Import({reinterpret_cast<const char*>(pData), cb}, report);
    (void)report.Lines();
    (void)report.Json();
    if (project.empty() || !IsProject(project))
        return 0;
    const ExportOptions options{"projects/a.json", "cuts/a.otio"};
    const LengthLookup none;
    TransferReport losses;
    const std::string timeline = JsonText(ExportTimeline(ParseJson(project), options, none, losses), 4);
    TransferReport again;
    const std::string back = Import(timeline, again);
    if (back != project)
    {
        std::fprintf(stderr, "%s\n%s\n%s\n", project.c_str(), timeline.c_str(), back.c_str());
        std::abort();
    }
    return 0;
}
