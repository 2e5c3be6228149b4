#include "pal/kernel/Handle.h"
#include "pal/kernel/Wait.h"

#include <new>

namespace
{
class Event final : public pal::HandleObject
{
public:
    Event(bool manualReset, bool signalled) : m_manualReset(manualReset), m_signalled(signalled) {}
    bool IsWaitable() const override { return true; }
    bool TryAcquire() override
    {
        const bool signalled = m_signalled;
        if (!m_manualReset)
            m_signalled = false;
        return signalled;
    }
    void Set(bool signalled) { m_signalled = signalled; }

private:
    const bool m_manualReset;
    bool m_signalled; // guarded by the wait lock
};

BOOL Signal(HANDLE handle, bool signalled)
{
    auto* const pEvent = dynamic_cast<Event*>(pal::FromHandle(handle));
    if (pEvent == nullptr)
        return FALSE;
    pal::WaitState& state = pal::GetWaitState();
    const std::lock_guard lock(state.lock);
    pEvent->Set(signalled);
    if (signalled)
        state.signalled.notify_all();
    return TRUE;
}
} // namespace

extern "C" HANDLE CreateEventW(SECURITY_ATTRIBUTES*, BOOL manualReset, BOOL initialState, LPCWSTR name)
{
    if (name != nullptr)
        return nullptr;
    return new (std::nothrow) Event(manualReset != FALSE, initialState != FALSE);
}

extern "C" BOOL SetEvent(HANDLE event)
{
    return Signal(event, true);
}

extern "C" BOOL ResetEvent(HANDLE event)
{
    return Signal(event, false);
}
