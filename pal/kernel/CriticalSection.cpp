#include <windows.h>

#include <mutex>
#include <new>

namespace
{
using Lock = std::recursive_mutex;
static_assert(sizeof(Lock) <= sizeof(CRITICAL_SECTION::m_storage) && alignof(Lock) <= 16);

Lock& LockOf(LPCRITICAL_SECTION section)
{
    return *std::launder(reinterpret_cast<Lock*>(section->m_storage));
}
} // namespace

extern "C" void InitializeCriticalSection(LPCRITICAL_SECTION section)
{
    new (section->m_storage) Lock;
}

extern "C" void EnterCriticalSection(LPCRITICAL_SECTION section)
{
    LockOf(section).lock();
}

extern "C" void LeaveCriticalSection(LPCRITICAL_SECTION section)
{
    LockOf(section).unlock();
}

extern "C" void DeleteCriticalSection(LPCRITICAL_SECTION section)
{
    LockOf(section).~Lock();
}
