/// @file AllocationFailure.h
/// Lets memory run short: the program that links AllocationFailure.cpp has its own operator new.
#pragma once

/// While it lives, allocations of this thread fail, save for the first @p allowed.
class CAllocationFailure
{
public:
    explicit CAllocationFailure(int allowed = 0);
    ~CAllocationFailure();
    CAllocationFailure(const CAllocationFailure&) = delete;
    CAllocationFailure& operator=(const CAllocationFailure&) = delete;
    /// True when an allocation has been refused.
    static bool Happened();
};

/// While it lives, this thread has memory again: for what stands in for a service in the middle of a call.
class CAllocationPause
{
public:
    CAllocationPause();
    ~CAllocationPause();
    CAllocationPause(const CAllocationPause&) = delete;
    CAllocationPause& operator=(const CAllocationPause&) = delete;

private:
    const int m_allowed;
};
