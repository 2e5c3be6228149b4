#include "tests/support/Process.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>

// Present where a sanitizer is linked in: it reports a crash itself and then calls back.
extern "C" void __sanitizer_set_death_callback(void (*callback)()) __attribute__((weak));

namespace test_support
{
namespace
{
/// A figure of the process's status, in bytes.
std::uint64_t StatusBytes(std::string_view field)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(field))
            return std::strtoull(line.c_str() + field.size(), nullptr, 10) * 1024;
    return 0;
}

/// The step under way, kept where a signal handler may read it.
std::array<char, 201> g_step{};

void WriteStep()
{
    constexpr std::string_view kPrefix = "\nduring the step: ";
    std::size_t length = 0;
    while (g_step[length] != 0)
        ++length;
    if (length == 0)
        return;
    (void)!write(STDERR_FILENO, kPrefix.data(), kPrefix.size());
    (void)!write(STDERR_FILENO, g_step.data(), length);
    (void)!write(STDERR_FILENO, "\n", 1);
}

void OnCrash(int signal)
{
    WriteStep();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void NameStepOnCrash()
{
    std::signal(SIGABRT, OnCrash); // which sanitizers leave alone
    if (__sanitizer_set_death_callback)
    {
        __sanitizer_set_death_callback(WriteStep);
        return;
    }
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL})
        std::signal(signal, OnCrash);
}
} // namespace

std::uint64_t ResidentBytes()
{
    return StatusBytes("VmRSS:");
}

std::uint64_t PeakResidentBytes()
{
    return StatusBytes("VmHWM:");
}

void ResetPeakResidentBytes()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

struct Watchdog::State
{
    std::chrono::seconds limit;
    std::mutex mutex;
    std::condition_variable changed;
    std::uint64_t step = 0;
    bool done = false;
    std::thread thread;

    void Watch()
    {
        std::unique_lock lock(mutex);
        while (!done)
        {
            const std::uint64_t watched = step;
            if (!changed.wait_for(lock, limit, [&] { return done || step != watched; }))
            {
                constexpr std::string_view kMessage = "\na step took longer than its limit";
                (void)!write(STDERR_FILENO, kMessage.data(), kMessage.size());
                std::abort(); // names the step on its way out
            }
        }
    }
};

Watchdog::Watchdog(std::chrono::seconds limit) : m_pState(new State{})
{
    NameStepOnCrash();
    m_pState->limit = limit;
    m_pState->thread = std::thread([this] { m_pState->Watch(); });
}

Watchdog::~Watchdog()
{
    {
        const std::lock_guard lock(m_pState->mutex);
        m_pState->done = true;
        g_step[0] = 0;
    }
    m_pState->changed.notify_all();
    m_pState->thread.join();
    delete m_pState;
}

void Watchdog::Step(std::string_view what)
{
    {
        const std::lock_guard lock(m_pState->mutex);
        const std::size_t length = std::min(what.size(), g_step.size() - 1);
        std::copy_n(what.data(), length, g_step.data());
        g_step[length] = 0;
        ++m_pState->step;
    }
    m_pState->changed.notify_all();
}
} // namespace test_support
