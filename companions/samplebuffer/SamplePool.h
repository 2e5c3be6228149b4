/// @file SamplePool.h
/// Storage of frame buffers and the pool that recycles it.
#pragma once

#include "engine/platform/SampleBuffer.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>

/// Head of one piece of storage; the pixels follow it directly, 64-byte aligned. The buffer object that owns the
/// storage lives in the head too, so that making a buffer from recycled storage takes no memory at all.
struct alignas(64) CSampleBlock
{
    std::size_t cbCapacity = 0; ///< bytes of pixels that were asked of the system, a size class
    std::size_t cbPixels = 0;   ///< bytes of pixels that the present owner asked for
    alignas(16) std::byte object[96]{};

    std::uint8_t* Pixels() { return reinterpret_cast<std::uint8_t*>(this + 1); }
    static CSampleBlock* FromPixels(std::uint8_t* pPixels) { return reinterpret_cast<CSampleBlock*>(pPixels) - 1; }
};
static_assert(sizeof(CSampleBlock) == 128, "keeps the pixels aligned");

/// Keeps storage that was returned, because page-faulting a fresh frame costs as much as filling it.
/// Bounds   : bytes, number of blocks, and age: a block that many returns have passed over goes back to the system.
/// Threads  : every operation from any thread. The system's allocator is not called under the lock while frames flow.
class CSamplePool
{
public:
    static constexpr std::size_t kMaxBytesPooled = std::size_t{256} << 20;
    static constexpr std::size_t kMaxBlocksPooled = 128;
    static constexpr std::uint64_t kMaxAge = 600; ///< returns; ten seconds of a 60-Hz stream of frames
    static constexpr std::size_t kPadding = 128;  ///< bytes behind the pixels that kernels may read and write

    /// The process-wide pool. It outlives every static object: a buffer may be released that late.
    static CSamplePool& Instance();

    /// @param cb  bytes of pixels, at least 1.
    /// @return storage of at least that, or null when memory is short even with everything that rests given back.
    CSampleBlock* Take(std::size_t cb);
    void Return(CSampleBlock* pBlock);

    void BufferMade() { m_nLive.fetch_add(1, std::memory_order_relaxed); }
    void BufferGone() { m_nLive.fetch_sub(1, std::memory_order_relaxed); }
    void GetInfo(tagSampleBufferPoolInfo& info);

private:
    struct Slot
    {
        CSampleBlock* pBlock = nullptr;
        std::size_t cbCapacity = 0;
        std::uint64_t nReturn = 0; ///< m_nReturns when the block came
    };
    struct Drainer;

    CSampleBlock* _TakePooled(std::size_t cbCapacity);
    CSampleBlock* _RemoveSlot(std::size_t index);
    bool _MustEvict() const;
    void _GiveBackAll(bool close);

    std::mutex m_lock;
    std::array<Slot, kMaxBlocksPooled> m_slots; ///< longest-waiting first
    std::size_t m_nSlots = 0;
    std::size_t m_cbPooled = 0;
    std::uint64_t m_nReturns = 0;
    bool m_bClosed = false; ///< the library is being unloaded: nothing is kept any more
    std::uint64_t m_nHits = 0;
    std::uint64_t m_nMisses = 0;
    std::atomic<std::uint64_t> m_nLive = 0;
};
