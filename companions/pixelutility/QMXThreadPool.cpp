#include "engine/platform/PixelUtility.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace
{
constexpr std::uint32_t kMaxWorkers = 64;

/// One call of Run(), on the stack of its caller. Guarded by the pool's lock.
struct Job
{
    CQMXThreadPool::BandFunction function;
    void* pContext;
    std::uint32_t count;
    std::uint32_t next = 0; ///< first band that nobody has taken
    std::uint32_t done = 0;
    Job* pNext = nullptr; ///< the job that came after this one
};
} // namespace

struct CQMXThreadPool::State
{
    std::mutex lock;
    std::condition_variable work; ///< a job came, or the pool ends
    std::condition_variable done; ///< a job's last band is done
    Job* pFirst = nullptr;        ///< jobs with bands that nobody has taken, oldest first
    bool ending = false;
    std::vector<std::thread> workers;

    /// Runs the next band of @p job, which must have one. The lock is held on entry and on return.
    void RunBand(Job& job, std::unique_lock<std::mutex>& held)
    {
        const std::uint32_t index = job.next++;
        if (job.next == job.count)
            Remove(job);
        held.unlock();
        job.function(job.pContext, index);
        held.lock();
        if (++job.done == job.count)
            done.notify_all();
    }

    void Append(Job& job)
    {
        Job** ppEnd = &pFirst;
        while (*ppEnd)
            ppEnd = &(*ppEnd)->pNext;
        *ppEnd = &job;
    }

    void Remove(Job& job)
    {
        Job** ppJob = &pFirst;
        while (*ppJob != &job)
            ppJob = &(*ppJob)->pNext;
        *ppJob = job.pNext;
    }

    void Work()
    {
        std::unique_lock held(lock);
        for (;;)
        {
            work.wait(held, [this] { return pFirst || ending; });
            if (!pFirst)
                return;
            RunBand(*pFirst, held);
        }
    }

    void End()
    {
        {
            const std::lock_guard held(lock);
            ending = true;
        }
        work.notify_all();
        for (std::thread& worker : workers)
            worker.join();
    }
};

CQMXThreadPool::CQMXThreadPool(std::uint32_t threads) : m_pState(nullptr)
{
    if (threads == 0)
        threads = std::max(std::thread::hardware_concurrency(), 1U) - 1;
    threads = std::min(threads, kMaxWorkers);
    if (threads == 0)
        return;
    try
    {
        auto pState = std::make_unique<State>();
        pState->workers.reserve(threads);
        try
        {
            for (std::uint32_t i = 0; i < threads; ++i)
                pState->workers.emplace_back([p = pState.get()] { p->Work(); });
        }
        catch (const std::exception&)
        {
            // The system gives no more threads: those that run are enough.
        }
        if (!pState->workers.empty())
            m_pState = pState.release();
    }
    catch (const std::exception&)
    {
        // No memory for workers: Run() does the work itself.
    }
}

CQMXThreadPool::~CQMXThreadPool()
{
    if (!m_pState)
        return;
    m_pState->End();
    delete m_pState;
}

void CQMXThreadPool::Run(BandFunction function, void* pContext, std::uint32_t count)
{
    if (!m_pState || count <= 1)
    {
        for (std::uint32_t i = 0; i < count; ++i)
            function(pContext, i);
        return;
    }
    Job job{function, pContext, count};
    std::unique_lock held(m_pState->lock);
    m_pState->Append(job);
    m_pState->work.notify_all();
    while (job.next < job.count)
        m_pState->RunBand(job, held);
    m_pState->done.wait(held, [&job] { return job.done == job.count; });
}

std::uint32_t CQMXThreadPool::GetConcurrency() const
{
    return m_pState ? static_cast<std::uint32_t>(m_pState->workers.size()) + 1 : 1;
}
