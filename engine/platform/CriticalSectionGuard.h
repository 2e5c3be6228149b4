/// @file CriticalSectionGuard.h
/// Holds a critical section for the length of a scope.
#pragma once

#include <windows.h>

class CCriticalSectionGuard
{
public:
    explicit CCriticalSectionGuard(CRITICAL_SECTION& section) : m_section(section) { EnterCriticalSection(&m_section); }
    ~CCriticalSectionGuard() { LeaveCriticalSection(&m_section); }
    CCriticalSectionGuard(const CCriticalSectionGuard&) = delete;
    CCriticalSectionGuard& operator=(const CCriticalSectionGuard&) = delete;

private:
    CRITICAL_SECTION& m_section;
};
