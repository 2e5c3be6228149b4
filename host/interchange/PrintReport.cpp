#include "host/interchange/PrintReport.h"

#include "host/system/StandardError.h"
#include "host/system/StandardOutput.h"

namespace qmx::host
{
void PrintReport(const TransferReport& report, const std::string& file, bool asJson)
{
    if (asJson)
    {
        std::string json = report.Json();
        json.pop_back(); // its line end
        PrintLine(json);
        FlushOutput();
        return;
    }
    for (const std::string& line : report.Lines())
        PrintError(HostError(ExitCode::Done, file, line));
}
} // namespace qmx::host
