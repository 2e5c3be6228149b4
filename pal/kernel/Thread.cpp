#include "pal/kernel/Handle.h"
#include "pal/kernel/Wait.h"

#include <atomic>
#include <memory>
#include <new>
#include <thread>

namespace
{
/// What the running thread and its handle share; whoever is last frees it.
struct ThreadState
{
    bool ended = false; // guarded by the wait lock
};

class Thread final : public pal::HandleObject
{
public:
    Thread(LPTHREAD_START_ROUTINE start, LPVOID parameter)
        : m_pState(std::make_shared<ThreadState>()), m_thread(
                                                         [pState = m_pState, start, parameter]
                                                         {
                                                             start(parameter);
                                                             pal::WaitState& wait = pal::GetWaitState();
                                                             const std::lock_guard lock(wait.lock);
                                                             pState->ended = true;
                                                             wait.signalled.notify_all();
                                                         })
    {
    }
    ~Thread() override
    {
        // A thread that has ended is joined, so that nothing of it runs on; one that still works goes its own way.
        bool ended = false;
        {
            const std::lock_guard lock(pal::GetWaitState().lock);
            ended = m_pState->ended;
        }
        if (ended)
            m_thread.join();
        else
            m_thread.detach();
    }
    bool IsWaitable() const override { return true; }
    bool TryAcquire() override { return m_pState->ended; }

private:
    std::shared_ptr<ThreadState> m_pState;
    std::thread m_thread;
};

std::atomic<DWORD> g_lastThreadId{0};
} // namespace

extern "C" HANDLE CreateThread(SECURITY_ATTRIBUTES*, SIZE_T, LPTHREAD_START_ROUTINE start, LPVOID parameter,
                               DWORD flags, DWORD* pThreadId)
{
    if (start == nullptr || flags != 0)
        return nullptr;
    try
    {
        auto pThread = std::make_unique<Thread>(start, parameter);
        if (pThreadId != nullptr)
            *pThreadId = ++g_lastThreadId;
        return pThread.release();
    }
    catch (...) // memory or threads are short
    {
        return nullptr;
    }
}
