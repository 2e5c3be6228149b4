/// @file Wait.h
/// The one lock and condition behind all waitable objects. Waiters are few (one per cleaner), so that waking all of
/// them on every signal is cheaper than keeping a list per object.
#pragma once

#include <condition_variable>
#include <mutex>

namespace pal
{
struct WaitState
{
    std::mutex lock;
    std::condition_variable signalled;
};

/// Lives as long as the process: threads may still signal while static objects are destroyed.
WaitState& GetWaitState();
} // namespace pal
