/// @file AlignedMemory.h
/// Aligned storage of the C library, for tests that replace the operators new and delete.
#pragma once

#include <cstddef>
#include <cstdlib>
#if defined(_WIN32)
#include <malloc.h>
#endif

namespace test_support
{
/// @param alignment  a power of two. @return null when memory is short; AlignedFree() gives it back
inline void* AlignedAllocate(std::size_t cb, std::size_t alignment)
{
#if defined(_WIN32)
    return _aligned_malloc(cb != 0 ? cb : 1, alignment);
#else
    return std::aligned_alloc(alignment, (cb + alignment - 1) / alignment * alignment);
#endif
}

inline void AlignedFree(void* p)
{
#if defined(_WIN32)
    _aligned_free(p);
#else
    std::free(p);
#endif
}
} // namespace test_support
