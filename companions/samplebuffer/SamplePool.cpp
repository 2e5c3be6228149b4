#include "companions/samplebuffer/SamplePool.h"

#include <algorithm>
#include <bit>
#include <new>

// Resting storage is poisoned where the address sanitizer is on; a pool would otherwise hide every late access.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QMX_POISON 1
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define QMX_POISON 1
#endif
#if defined(QMX_POISON)
#include <sanitizer/asan_interface.h>
#endif

namespace
{
constexpr std::align_val_t kAlignment{alignof(CSampleBlock)};

/// Size classes: sixteen a power of two, so that at most a sixteenth of a block lies idle (and, never being touched,
/// takes addresses only). One page is the smallest.
std::size_t CapacityFor(std::size_t cb)
{
    constexpr std::size_t kPage = 4096;
    const std::size_t step = std::max(std::bit_floor(cb - 1) / 16, kPage);
    return (cb + step - 1) / step * step;
}

void Forbid([[maybe_unused]] CSampleBlock* pBlock)
{
#if defined(QMX_POISON)
    __asan_poison_memory_region(pBlock->Pixels(), pBlock->cbCapacity + CSamplePool::kPadding);
#endif
}

void Permit([[maybe_unused]] CSampleBlock* pBlock, [[maybe_unused]] std::size_t cb)
{
#if defined(QMX_POISON)
    __asan_unpoison_memory_region(pBlock->Pixels(), cb + CSamplePool::kPadding);
#endif
}

CSampleBlock* NewBlock(std::size_t cbCapacity)
{
    void* const p = ::operator new(sizeof(CSampleBlock) + cbCapacity + CSamplePool::kPadding, kAlignment, std::nothrow);
    if (!p)
        return nullptr;
    CSampleBlock* const pBlock = ::new (p) CSampleBlock;
    pBlock->cbCapacity = cbCapacity;
    Forbid(pBlock);
    return pBlock;
}

void DeleteBlock(CSampleBlock* pBlock)
{
    Permit(pBlock, pBlock->cbCapacity);
    ::operator delete(pBlock, kAlignment);
}
} // namespace

/// Gives the resting storage back when the library is unloaded.
struct CSamplePool::Drainer
{
    explicit Drainer(CSamplePool& pool) : m_pool(pool) {}
    Drainer(const Drainer&) = delete;
    Drainer& operator=(const Drainer&) = delete;
    ~Drainer() { m_pool._GiveBackAll(true); }

private:
    CSamplePool& m_pool;
};

CSamplePool& CSamplePool::Instance()
{
    alignas(CSamplePool) static std::byte storage[sizeof(CSamplePool)];
    static CSamplePool& pool = *::new (storage) CSamplePool; // never destroyed
    static const Drainer drainer(pool);
    return pool;
}

CSampleBlock* CSamplePool::Take(std::size_t cb)
{
    const std::size_t cbCapacity = CapacityFor(cb);
    CSampleBlock* pBlock = _TakePooled(cbCapacity);
    if (!pBlock)
        pBlock = NewBlock(cbCapacity);
    if (!pBlock)
    {
        _GiveBackAll(false);
        pBlock = NewBlock(cbCapacity);
    }
    if (!pBlock)
        return nullptr;
    pBlock->cbPixels = cb;
    Permit(pBlock, cb);
    return pBlock;
}

CSampleBlock* CSamplePool::_TakePooled(std::size_t cbCapacity)
{
    const std::lock_guard lock(m_lock);
    for (std::size_t i = m_nSlots; i-- > 0;) // the latest is the one most likely still in the processor's cache
    {
        if (m_slots[i].cbCapacity == cbCapacity)
        {
            ++m_nHits;
            return _RemoveSlot(i);
        }
    }
    ++m_nMisses;
    return nullptr;
}

CSampleBlock* CSamplePool::_RemoveSlot(std::size_t index)
{
    CSampleBlock* const pBlock = m_slots[index].pBlock;
    m_cbPooled -= m_slots[index].cbCapacity;
    std::copy(m_slots.begin() + static_cast<std::ptrdiff_t>(index) + 1,
              m_slots.begin() + static_cast<std::ptrdiff_t>(m_nSlots),
              m_slots.begin() + static_cast<std::ptrdiff_t>(index));
    --m_nSlots;
    return pBlock;
}

bool CSamplePool::_MustEvict() const
{
    return m_nSlots > 0 &&
           (m_cbPooled > kMaxBytesPooled || m_nSlots == m_slots.size() || m_nReturns - m_slots[0].nReturn > kMaxAge);
}

void CSamplePool::Return(CSampleBlock* pBlock)
{
    Forbid(pBlock);
    // Evicted storage is chained through its heads and given back after the lock.
    CSampleBlock* pEvicted = nullptr;
    const auto evict = [&pEvicted](CSampleBlock* p)
    {
        ::new (p->object) CSampleBlock*(pEvicted);
        pEvicted = p;
    };
    {
        const std::lock_guard lock(m_lock);
        ++m_nReturns;
        if (m_bClosed || pBlock->cbCapacity > kMaxBytesPooled)
            evict(pBlock);
        else
        {
            m_cbPooled += pBlock->cbCapacity;
            while (_MustEvict())
                evict(_RemoveSlot(0));
            m_slots[m_nSlots++] = {pBlock, pBlock->cbCapacity, m_nReturns};
        }
    }
    while (pEvicted)
    {
        CSampleBlock* const p = pEvicted;
        pEvicted = *std::launder(reinterpret_cast<CSampleBlock**>(p->object));
        DeleteBlock(p);
    }
}

void CSamplePool::_GiveBackAll(bool close)
{
    // Rare: the system's allocator may be called under the lock here.
    const std::lock_guard lock(m_lock);
    m_bClosed = m_bClosed || close;
    while (m_nSlots > 0)
        DeleteBlock(_RemoveSlot(m_nSlots - 1));
}

void CSamplePool::GetInfo(tagSampleBufferPoolInfo& info)
{
    const std::lock_guard lock(m_lock);
    info = {m_nHits, m_nMisses, m_nLive.load(std::memory_order_relaxed), m_cbPooled};
}
