#include "host/system/StandardOutput.h"

#include "host/HostError.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace qmx::host
{
namespace
{
void Check(bool written)
{
    if (!written)
        throw HostError(ExitCode::Output, "standard output", std::string("cannot be written: ") + std::strerror(errno));
}
} // namespace

void PrintLine(std::string_view line)
{
    Check(std::fwrite(line.data(), 1, line.size(), stdout) == line.size() && std::fputc('\n', stdout) != EOF);
}

void FlushOutput()
{
    Check(std::fflush(stdout) == 0);
}
} // namespace qmx::host
