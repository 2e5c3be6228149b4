#include "host/system/Interrupt.h"

#include "host/HostError.h"

#include <atomic>
#include <csignal>

namespace qmx::host
{
namespace
{
std::atomic<bool> s_interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "set by a signal handler");

extern "C" void MarkInterrupted(int)
{
    s_interrupted = true;
}
} // namespace

void CatchInterrupts()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, MarkInterrupted);
    std::signal(SIGPIPE, SIG_IGN);
}

void ThrowIfInterrupted()
{
    if (s_interrupted)
        throw HostError(ExitCode::Failed, "", "interrupted");
}
} // namespace qmx::host
