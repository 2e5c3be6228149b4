/// @file Handle.h
/// What a HANDLE points to.
#pragma once

#include <windows.h>

namespace pal
{
/// Base of all objects behind a HANDLE. CloseHandle() destroys the object through its virtual destructor.
class HandleObject
{
public:
    virtual ~HandleObject() = default;
    HandleObject(const HandleObject&) = delete;
    HandleObject& operator=(const HandleObject&) = delete;

    /// True when a wait can end now; consumes the signal of an auto-reset event. Called under the wait lock.
    virtual bool TryAcquire() { return false; }
    /// False for objects, such as files, that cannot be waited for.
    virtual bool IsWaitable() const { return false; }

protected:
    HandleObject() = default;
};

/// The object behind @p handle, or null for null and INVALID_HANDLE_VALUE.
inline HandleObject* FromHandle(HANDLE handle)
{
    return handle == INVALID_HANDLE_VALUE ? nullptr : static_cast<HandleObject*>(handle);
}
} // namespace pal
