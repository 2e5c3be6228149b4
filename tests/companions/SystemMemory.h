/// @file SystemMemory.h
/// This program's allocation functions, which the libraries it loads use too: counted, and made to fail on demand.
#pragma once

#include <cstdint>

namespace SystemMemory
{
/// Allocations of any kind since the program started.
std::uint64_t Allocations();
/// Lets the next @p count allocations that may answer null do so.
void FailNext(int count);
} // namespace SystemMemory
