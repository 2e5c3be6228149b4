/// @file NullReference.h
/// What only a caller from across the binary interface can pass.
#pragma once

/// A reference that binds to nothing.
template <class T> __attribute__((no_sanitize("undefined"), noinline)) T& NullReference()
{
    T* volatile p = nullptr;
    return *p; // NOLINT(clang-analyzer-core.uninitialized.UndefReturn): that is the point
}
