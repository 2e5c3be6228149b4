#include "tests/companions/swfrenderer/PeakMemory.h"

#include "tests/support/AlignedMemory.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>

namespace
{
std::atomic<std::size_t> s_held = 0, s_peak = 0, s_start = 0;

/// The size stands in front of what is given out.
std::size_t RoomFor(std::size_t alignment)
{
    return std::max<std::size_t>(alignment, 16);
}

void* Allocate(std::size_t cb, std::size_t alignment)
{
    const std::size_t room = RoomFor(alignment);
    void* const p = test_support::AlignedAllocate(cb + room, room);
    if (!p)
        return nullptr;
    std::memcpy(p, &cb, sizeof(cb));
    const std::size_t held = s_held.fetch_add(cb) + cb;
    std::size_t peak = s_peak.load();
    while (held > peak && !s_peak.compare_exchange_weak(peak, held))
    {
    }
    return static_cast<std::byte*>(p) + room;
}

void* AllocateOrThrow(std::size_t cb, std::size_t alignment)
{
    if (void* const p = Allocate(cb, alignment))
        return p;
    throw std::bad_alloc();
}

void Free(void* p, std::size_t alignment)
{
    if (!p)
        return;
    void* const pStart = static_cast<std::byte*>(p) - RoomFor(alignment);
    std::size_t cb = 0;
    std::memcpy(&cb, pStart, sizeof(cb));
    s_held -= cb;
    test_support::AlignedFree(pStart);
}
} // namespace

void PeakMemory::Restart()
{
    s_start = s_held.load();
    s_peak = s_held.load();
}
std::size_t PeakMemory::Get()
{
    return s_peak - std::min(s_peak.load(), s_start.load());
}

void* operator new(std::size_t cb)
{
    return AllocateOrThrow(cb, 16);
}
void* operator new(std::size_t cb, const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(cb, 16);
}
void* operator new(std::size_t cb, std::align_val_t alignment)
{
    return AllocateOrThrow(cb, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t cb, std::align_val_t alignment, const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(cb, static_cast<std::size_t>(alignment));
}
void operator delete(void* p) noexcept
{
    Free(p, 16);
}
void operator delete(void* p, std::size_t /*cb*/) noexcept
{
    Free(p, 16);
}
void operator delete(void* p, const std::nothrow_t& /*tag*/) noexcept
{
    Free(p, 16);
}
void operator delete(void* p, std::align_val_t alignment) noexcept
{
    Free(p, static_cast<std::size_t>(alignment));
}
void operator delete(void* p, std::size_t /*cb*/, std::align_val_t alignment) noexcept
{
    Free(p, static_cast<std::size_t>(alignment));
}
void operator delete(void* p, std::align_val_t alignment, const std::nothrow_t& /*tag*/) noexcept
{
    Free(p, static_cast<std::size_t>(alignment));
}
