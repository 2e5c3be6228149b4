/// @file SlotOf.h
/// Position of a virtual operation in its class's table, so that tests can pin the binary interface.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// Slot of @p operation, the virtual destructor being slot 0. Itanium C++ ABI on x86-64: a pointer to a virtual member
/// holds one plus its byte offset in the table, and a destructor takes two entries there.
template <class Operation> int SlotOf(Operation operation)
{
    static_assert(sizeof(operation) == 2 * sizeof(std::ptrdiff_t));
    std::ptrdiff_t words[2];
    std::memcpy(words, &operation, sizeof(words));
    return static_cast<int>((words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*))) - 1;
}
