/// @file NullReference.h
/// Records come by reference across the binary interface, where a host may pass what a C++ compiler rules out.
#pragma once

/// True when the reference whose address is @p p binds to nothing. The detour through a volatile keeps the compiler
/// from answering the question by the rule that no reference is null.
inline bool IsNullReference(const void* p)
{
    const void* volatile address = p;
    return address == nullptr;
}
