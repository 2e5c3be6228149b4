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

constexpr int kEndings[] = {
    SIGINT,
    SIGTERM,
#if defined(SIGHUP)
    SIGHUP,
#endif
};

extern "C" void MarkInterrupted(int)
{
    s_interrupted = true;
}
} // namespace

void CatchInterrupts()
{
    for (const int signal : kEndings)
    {
        // Who started us may want a signal to pass us by, as nohup does.
        if (std::signal(signal, MarkInterrupted) == SIG_IGN)
            std::signal(signal, SIG_IGN);
    }
#if defined(SIGPIPE)
    std::signal(SIGPIPE, SIG_IGN);
#endif
}

void ThrowIfInterrupted()
{
    if (s_interrupted)
        throw HostError(ExitCode::Failed, "", "interrupted");
}
} // namespace qmx::host
