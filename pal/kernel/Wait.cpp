#include "pal/kernel/Wait.h"
#include "pal/kernel/Handle.h"

#include <chrono>
#include <new>

namespace pal
{
WaitState& GetWaitState()
{
    alignas(WaitState) static unsigned char storage[sizeof(WaitState)];
    static auto* const pState = new (storage) WaitState;
    return *pState;
}

namespace
{
/// Index of the first object that can be acquired, or count.
DWORD AcquireAny(DWORD count, const HANDLE* handles)
{
    DWORD i = 0;
    while (i < count && !FromHandle(handles[i])->TryAcquire())
        ++i;
    return i;
}

DWORD WaitForAny(DWORD count, const HANDLE* handles, DWORD milliseconds)
{
    for (DWORD i = 0; i < count; ++i)
        if (FromHandle(handles[i]) == nullptr || !FromHandle(handles[i])->IsWaitable())
            return WAIT_FAILED;

    WaitState& state = GetWaitState();
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    std::unique_lock lock(state.lock);
    DWORD index = AcquireAny(count, handles);
    while (index == count)
    {
        if (milliseconds == INFINITE)
            state.signalled.wait(lock);
        else if (state.signalled.wait_until(lock, deadline) == std::cv_status::timeout)
        {
            index = AcquireAny(count, handles);
            return index == count ? WAIT_TIMEOUT : WAIT_OBJECT_0 + index;
        }
        index = AcquireAny(count, handles);
    }
    return WAIT_OBJECT_0 + index;
}
} // namespace
} // namespace pal

extern "C" DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds)
{
    return pal::WaitForAny(1, &handle, milliseconds);
}

extern "C" DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL waitAll, DWORD milliseconds)
{
    if (count == 0 || count > MAXIMUM_WAIT_OBJECTS || handles == nullptr || waitAll != FALSE)
        return WAIT_FAILED;
    return pal::WaitForAny(count, handles, milliseconds);
}

extern "C" BOOL CloseHandle(HANDLE handle)
{
    pal::HandleObject* const pObject = pal::FromHandle(handle);
    delete pObject;
    return pObject != nullptr ? TRUE : FALSE;
}
