/// @file ReleaseAndClear.h
/// For members that own a reference as a plain pointer.
#pragma once

#include <utility>

/// Gives back the reference in @p p, if there is one, and leaves null there.
template <class T> void ReleaseAndClear(T*& p)
{
    if (T* const old = std::exchange(p, nullptr))
        old->Release();
}
