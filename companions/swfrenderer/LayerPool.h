/// @file LayerPool.h
/// Pictures and masks beside the canvas, kept from frame to frame.
#pragma once

#include "companions/swfrenderer/Limits.h"
#include "companions/swfrenderer/Surface.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace swf
{
/// Hands layers out and takes them back in the reverse order. Whether one is given depends on those that are out alone,
/// so that a frame looks the same whatever was drawn before it. Spares hold half as much memory as the limit, at most.
class CLayerPool
{
public:
    /// @param bytes  of all layers that are out at one time
    void SetLimit(std::uint64_t bytes) { m_limit = bytes; }

    /// A layer that goes back at the end of the scope.
    template <class T> class CLease
    {
    public:
        CLease(CLayerPool& pool, const Area& area, std::uint64_t cbBeside)
            : m_pool(pool), m_cb(area.Pixels() * sizeof(typename T::Level) + cbBeside), m_p(pool.Take<T>(area, m_cb))
        {
        }
        ~CLease()
        {
            if (m_p)
                m_pool.GiveBack<T>(m_cb);
        }
        CLease(const CLease&) = delete;
        CLease& operator=(const CLease&) = delete;
        explicit operator bool() const { return m_p != nullptr; }
        T& operator*() const { return *m_p; }
        T* operator->() const { return m_p; }

    private:
        CLayerPool& m_pool;
        std::uint64_t m_cb;
        T* m_p; ///< cleared; null when there are too many or they are too large
    };

private:
    template <class T> struct Stack
    {
        std::vector<std::unique_ptr<T>> all;
        std::size_t used = 0; ///< the first so many are out
    };
    template <class T> Stack<T>& StackOf();

    template <class T> T* Take(const Area& area, std::uint64_t cb)
    {
        if (m_surfaces.used + m_masks.used >= kMaxLayers || cb > m_limit - m_inUse)
            return nullptr;
        Stack<T>& stack = StackOf<T>();
        if (stack.used == stack.all.size())
            stack.all.push_back(std::make_unique<T>());
        if (HeldBeside(cb) > m_limit / 2)
            FreeSpares();
        T* const p = stack.all[stack.used].get();
        p->Reset(area);
        ++stack.used;
        m_inUse += cb;
        return p;
    }
    template <class T> void GiveBack(std::uint64_t cb)
    {
        --StackOf<T>().used;
        m_inUse -= cb;
    }
    /// Bytes that spares and those that are out hold beyond what is in use and @p cb more.
    std::uint64_t HeldBeside(std::uint64_t cb) const
    {
        std::uint64_t held = 0;
        for (const auto& p : m_surfaces.all)
            held += p->Held();
        for (const auto& p : m_masks.all)
            held += p->Held();
        return held - std::min(held, m_inUse + cb);
    }
    void FreeSpares()
    {
        for (std::size_t i = m_surfaces.used; i < m_surfaces.all.size(); ++i)
            *m_surfaces.all[i] = {};
        for (std::size_t i = m_masks.used; i < m_masks.all.size(); ++i)
            *m_masks.all[i] = {};
    }

    Stack<Surface> m_surfaces;
    Stack<Mask> m_masks;
    std::uint64_t m_limit = 0, m_inUse = 0;
};

template <> inline CLayerPool::Stack<Surface>& CLayerPool::StackOf<Surface>()
{
    return m_surfaces;
}
template <> inline CLayerPool::Stack<Mask>& CLayerPool::StackOf<Mask>()
{
    return m_masks;
}
} // namespace swf
