#include "engine/model/QMXCleaner.h"

#include "engine/platform/CriticalSectionGuard.h"

#include <new>

IQMXCleaner* CreateQMXCleaner()
{
    try
    {
        return new CQMXCleaner;
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

CQMXCleaner::CQMXCleaner()
{
    InitializeCriticalSection(&m_lock);
    m_hWorkEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    m_hStopEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (m_hWorkEvent != nullptr && m_hStopEvent != nullptr)
        m_hThread = CreateThread(nullptr, 0, &CQMXCleaner::ThreadProc, this, 0, nullptr);
}

CQMXCleaner::~CQMXCleaner()
{
    if (m_hThread != nullptr)
    {
        SetEvent(m_hStopEvent);
        WaitForSingleObject(m_hThread, INFINITE);
    }
    DeleteCriticalSection(&m_lock);
    for (const HANDLE handle : {m_hWorkEvent, m_hStopEvent, m_hThread})
    {
        if (handle != nullptr)
            CloseHandle(handle);
    }
}

void CQMXCleaner::AddGarbage(QMXTrackList* item)
{
    if (m_hThread != nullptr)
    {
        const CCriticalSectionGuard guard(m_lock);
        try
        {
            m_queue.push_back(item);
            SetEvent(m_hWorkEvent);
            return;
        }
        catch (const std::bad_alloc&) // no room in the queue: deleted below, outside the lock
        {
        }
    }
    DeleteItem(item);
}

DWORD WINAPI CQMXCleaner::ThreadProc(LPVOID parameter)
{
    static_cast<CQMXCleaner*>(parameter)->Run();
    return 0;
}

void CQMXCleaner::Run()
{
    bool stopping = false;
    for (;;)
    {
        if (stopping)
        {
            if (QueueLength() == 0)
                return;
        }
        else
        {
            stopping = !WaitForWork();
        }
        DeleteItem(TakeFront());
    }
}

/// @return true when the queue holds something, false when the cleaner is to stop (or cannot wait any more).
bool CQMXCleaner::WaitForWork()
{
    // The length is read before every wait: an auto-reset event set twice wakes only once.
    const HANDLE events[] = {m_hWorkEvent, m_hStopEvent};
    while (QueueLength() == 0)
    {
        if (WaitForMultipleObjects(2, events, FALSE, INFINITE) != WAIT_OBJECT_0)
            return false;
    }
    return true;
}

std::size_t CQMXCleaner::QueueLength()
{
    const CCriticalSectionGuard guard(m_lock);
    return m_queue.size();
}

QMXTrackList* CQMXCleaner::TakeFront()
{
    const CCriticalSectionGuard guard(m_lock);
    if (m_queue.empty())
        return nullptr;
    QMXTrackList* const item = m_queue.front();
    m_queue.pop_front();
    return item;
}

void CQMXCleaner::DeleteItem(QMXTrackList* item)
{
    if (item == nullptr)
        return;
    for (IQMXTrack* const track : *item)
        delete track;
    delete item;
}
