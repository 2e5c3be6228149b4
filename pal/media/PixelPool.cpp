#include "pal/media/PixelPool.h"
#include "pal/media/MediaStatistics.h"

#include <new>
#include <utility>

namespace pal
{
namespace
{
constexpr std::align_val_t kAlignment{64};
constexpr std::size_t kPadding = 256;
constexpr std::size_t kMaxKept = 4;
} // namespace

void PixelPool::Free::operator()(std::uint8_t* p) const
{
    ::operator delete[](p, kAlignment);
}

PixelPool::Block PixelPool::Take(std::size_t cb)
{
    {
        const std::lock_guard lock(m_lock);
        if (m_cb == cb && !m_blocks.empty())
        {
            Block block = std::move(m_blocks.back());
            m_blocks.pop_back();
            return block;
        }
    }
    ++GetMediaStatistics().pixelMisses;
    return Block(static_cast<std::uint8_t*>(::operator new[](cb + kPadding, kAlignment, std::nothrow)));
}

void PixelPool::GiveBack(Block block, std::size_t cb)
{
    std::vector<Block> dropped;
    const std::lock_guard lock(m_lock);
    if (m_cb != cb)
    {
        m_blocks.swap(dropped);
        m_blocks.reserve(kMaxKept);
        m_cb = cb;
    }
    if (m_blocks.size() < kMaxKept)
        m_blocks.push_back(std::move(block));
}
} // namespace pal
