#include "host/commands/InfoCommand.h"

#include "host/compose/EngineSession.h"
#include "host/info/FactsJson.h"
#include "host/info/FactsTable.h"
#include "host/system/Interrupt.h"
#include "host/system/StandardError.h"
#include "host/system/StandardOutput.h"

#include <optional>

namespace qmx::host
{
namespace
{
/// Nothing when the file cannot be read, which has been told then.
std::optional<FileFacts> TryRead(MediaProbe& probe, const std::string& file)
{
    try
    {
        return ReadFileFacts(probe, file);
    }
    catch (const HostError& error)
    {
        if (error.Code() != ExitCode::Media)
            throw;
        PrintError(error);
        return std::nullopt;
    }
}
} // namespace

ExitCode RunInfo(const InfoOptions& options)
{
    const EngineSession session;
    MediaProbe probe;
    ExitCode result = ExitCode::Done;
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    bool isFirst = true;
    for (const std::string& file : options.files)
    {
        ThrowIfInterrupted();
        const std::optional<FileFacts> facts = TryRead(probe, file);
        if (!facts)
            result = ExitCode::Media;
        else if (options.json)
            list.push_back(JsonOf(*facts));
        else
        {
            PrintLine((isFirst ? "" : "\n") + TableOf(*facts));
            isFirst = false;
        }
    }
    // A name need not be UTF-8, JSON must.
    if (options.json)
        PrintLine(list.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
    FlushOutput();
    return result;
}
} // namespace qmx::host
