/// @file Scratch.h
/// Working memory that a thread keeps from one operation to the next.
#pragma once

#include <cstddef>
#include <cstdint>

/// Memory of the calling thread, for one operation at a time. Blocks are handed out one after the other.
class CScratch
{
public:
    /// @param cb  bytes of all blocks together, each rounded up with BlockBytes()
    /// Test with operator bool: the memory may be short.
    explicit CScratch(std::size_t cb);
    ~CScratch(); ///< keeps a usual amount for the next operation, gives more back
    CScratch(const CScratch&) = delete;
    CScratch& operator=(const CScratch&) = delete;

    explicit operator bool() const { return m_pNext != nullptr; }

    /// The next @p count entries, 64-byte aligned and not initialised.
    template <class T> T* Take(std::size_t count)
    {
        std::uint8_t* const p = m_pNext;
        m_pNext += BlockBytes<T>(count);
        return reinterpret_cast<T*>(p);
    }
    template <class T> static constexpr std::size_t BlockBytes(std::size_t count)
    {
        return (count * sizeof(T) + kAlignment - 1) / kAlignment * kAlignment;
    }

private:
    static constexpr std::size_t kAlignment = 64;
    std::uint8_t* m_pNext;
};
