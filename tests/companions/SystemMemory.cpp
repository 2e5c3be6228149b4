#include "tests/companions/SystemMemory.h"

#include "tests/support/AlignedMemory.h"

#include <atomic>
#include <new>

namespace
{
std::atomic<std::uint64_t> s_allocations = 0;
std::atomic<int> s_failures = 0;

void* Allocate(std::size_t cb, std::size_t alignment)
{
    s_allocations.fetch_add(1);
    return test_support::AlignedAllocate(cb, alignment);
}

void* AllocateOrThrow(std::size_t cb, std::size_t alignment)
{
    void* const p = Allocate(cb, alignment);
    if (!p)
        throw std::bad_alloc();
    return p;
}
} // namespace

std::uint64_t SystemMemory::Allocations()
{
    return s_allocations.load();
}
void SystemMemory::FailNext(int count)
{
    s_failures.store(count);
}

void* operator new(std::size_t cb)
{
    return AllocateOrThrow(cb, 16);
}
void* operator new(std::size_t cb, std::align_val_t alignment)
{
    return AllocateOrThrow(cb, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t cb, std::align_val_t alignment, const std::nothrow_t& /*tag*/) noexcept
{
    if (s_failures.load() > 0 && s_failures.fetch_sub(1) > 0)
        return nullptr;
    return Allocate(cb, static_cast<std::size_t>(alignment));
}
void operator delete(void* p) noexcept
{
    test_support::AlignedFree(p);
}
void operator delete(void* p, std::size_t /*cb*/) noexcept
{
    test_support::AlignedFree(p);
}
void operator delete(void* p, std::align_val_t /*alignment*/) noexcept
{
    test_support::AlignedFree(p);
}
void operator delete(void* p, std::size_t /*cb*/, std::align_val_t /*alignment*/) noexcept
{
    test_support::AlignedFree(p);
}
