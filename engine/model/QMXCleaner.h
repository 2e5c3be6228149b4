/// @file QMXCleaner.h
#pragma once

#include "engine/model/IQMXCleaner.h"

#include <windows.h>

#include <cstddef>
#include <deque>

/// The only implementation of IQMXCleaner. Where the system gives no thread or event, garbage is deleted on the
/// thread that brings it.
class QMX_API CQMXCleaner : public IQMXCleaner
{
public:
    CQMXCleaner();
    ~CQMXCleaner() override;
    CQMXCleaner(const CQMXCleaner&) = delete;
    CQMXCleaner& operator=(const CQMXCleaner&) = delete;

    void AddGarbage(QMXTrackList* item) override;

private:
    static DWORD WINAPI ThreadProc(LPVOID parameter);
    void Run();
    bool WaitForWork();
    std::size_t QueueLength();
    QMXTrackList* TakeFront();
    static void DeleteItem(QMXTrackList* item);

    std::deque<QMXTrackList*> m_queue; // owned items
    CRITICAL_SECTION m_lock{};         ///< guards m_queue; nothing is deleted while it is held
    HANDLE m_hWorkEvent = nullptr;     ///< auto-reset, set by AddGarbage()
    HANDLE m_hStopEvent = nullptr;     ///< auto-reset, set by the destructor
    HANDLE m_hThread = nullptr;        ///< null where garbage is deleted by the caller
};
