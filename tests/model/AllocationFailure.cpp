#include "tests/model/AllocationFailure.h"

#include "tests/support/AlignedMemory.h"

#include <cstdlib>
#include <new>

namespace
{
thread_local int g_allowed = -1; // -1: no limit
thread_local bool g_refused = false;

bool IsRefused()
{
    if (g_allowed == 0)
    {
        g_refused = true;
        return true;
    }
    if (g_allowed > 0)
        --g_allowed;
    return false;
}

void* Allocate(std::size_t cb)
{
    return IsRefused() ? nullptr : std::malloc(cb != 0 ? cb : 1);
}

void* Allocate(std::size_t cb, std::align_val_t alignment)
{
    return IsRefused() ? nullptr : test_support::AlignedAllocate(cb, static_cast<std::size_t>(alignment));
}
} // namespace

CAllocationFailure::CAllocationFailure(int allowed)
{
    g_refused = false;
    g_allowed = allowed;
}

CAllocationFailure::~CAllocationFailure()
{
    g_allowed = -1;
}

bool CAllocationFailure::Happened()
{
    return g_refused;
}

CAllocationPause::CAllocationPause() : m_allowed(g_allowed)
{
    g_allowed = -1;
}

CAllocationPause::~CAllocationPause()
{
    g_allowed = m_allowed;
}

void* operator new(std::size_t cb)
{
    void* const p = Allocate(cb);
    if (p == nullptr)
        throw std::bad_alloc();
    return p;
}

void* operator new(std::size_t cb, const std::nothrow_t&) noexcept
{
    return Allocate(cb);
}

void* operator new[](std::size_t cb)
{
    return operator new(cb);
}

void* operator new[](std::size_t cb, const std::nothrow_t&) noexcept
{
    return Allocate(cb);
}

void* operator new(std::size_t cb, std::align_val_t alignment)
{
    void* const p = Allocate(cb, alignment);
    if (p == nullptr)
        throw std::bad_alloc();
    return p;
}

void* operator new(std::size_t cb, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return Allocate(cb, alignment);
}

void operator delete(void* p, std::align_val_t) noexcept
{
    test_support::AlignedFree(p);
}

void operator delete(void* p, std::size_t, std::align_val_t) noexcept
{
    test_support::AlignedFree(p);
}

void operator delete(void* p) noexcept
{
    std::free(p);
}

void operator delete(void* p, std::size_t) noexcept
{
    std::free(p);
}

void operator delete[](void* p) noexcept
{
    std::free(p);
}

void operator delete[](void* p, std::size_t) noexcept
{
    std::free(p);
}
