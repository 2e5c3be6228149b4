/// @file RefPtr.h
/// Holds exactly one reference of an AddRef/Release object and gives it back on every path.
#pragma once

#include <utility>

/// Holds one reference to an object with AddRef() and Release(), or none. Copies hold references of their own.
/// There is no constructor from T*: Adopt() or Retain() says whose reference it is.
template <class T> class RefPtr
{
public:
    RefPtr() = default;
    /// Adds a reference.
    RefPtr(const RefPtr& other) : m_p(other.m_p)
    {
        if (m_p)
            m_p->AddRef();
    }
    RefPtr(RefPtr&& other) noexcept : m_p(std::exchange(other.m_p, nullptr)) {} ///< takes the reference of @p other
    /// Drops what was held and takes what @p other holds.
    RefPtr& operator=(RefPtr other) noexcept
    {
        std::swap(m_p, other.m_p);
        return *this;
    }
    ~RefPtr()
    {
        if (m_p)
            m_p->Release();
    }

    /// Takes over the reference that was given to us.
    static RefPtr Adopt(T* p)
    {
        RefPtr r;
        r.m_p = p;
        return r;
    }
    /// Adds a reference of its own.
    static RefPtr Retain(T* p)
    {
        if (p)
            p->AddRef();
        return Adopt(p);
    }
    /// For out-parameters; drops what was held.
    T** Put()
    {
        *this = RefPtr();
        return &m_p;
    }
    /// Hands the reference to the caller.
    [[nodiscard]] T* Detach() { return std::exchange(m_p, nullptr); }
    T* Get() const { return m_p; }                            ///< borrowed; null when nothing is held
    T* operator->() const { return m_p; }                     ///< borrowed
    explicit operator bool() const { return m_p != nullptr; } ///< something is held

private:
    T* m_p = nullptr;
};

template <class T> using ComPtr = RefPtr<T>; ///< of platform interfaces
