/// @file PeakMemory.h
/// What this program has taken with operator new, the libraries it loads included. Memory that C libraries take for
/// themselves is not counted.
#pragma once

#include <cstddef>

namespace PeakMemory
{
/// From here on the peak counts from what is held now.
void Restart();
/// Bytes held at most since then, beyond what was held then.
std::size_t Get();
} // namespace PeakMemory
