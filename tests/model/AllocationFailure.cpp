#include "tests/model/AllocationFailure.h"

#include <cstdlib>
#include <new>

namespace
{
thread_local int g_allowed = -1; // -1: no limit
thread_local bool g_refused = false;

void* Allocate(std::size_t cb)
{
    if (g_allowed == 0)
    {
        g_refused = true;
        return nullptr;
    }
    if (g_allowed > 0)
        --g_allowed;
    return std::malloc(cb != 0 ? cb : 1);
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
