#include "host/system/StandardError.h"

#include <cstdio>

namespace qmx::host
{
void PrintError(const HostError& error)
{
    const std::string subject = error.Subject().empty() ? "" : error.Subject() + ": ";
    std::fprintf(stderr, "qmx: %s%s\n", subject.c_str(), error.what());
}
} // namespace qmx::host
