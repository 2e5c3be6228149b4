/// @file PixelPool.h
/// Recycled memory for converted pictures.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace pal
{
/// Blocks of one size at a time, 64-byte aligned and padded for SIMD overrun. Faulting in a fresh picture costs as much
/// as filling it, so a few blocks are kept.
/// Threads : any.
class PixelPool
{
public:
    struct Free
    {
        void operator()(std::uint8_t* p) const;
    };
    using Block = std::unique_ptr<std::uint8_t[], Free>;

    /// At least @p cb bytes with unspecified content; null when memory is short.
    Block Take(std::size_t cb);
    /// Keeps @p block for the next Take() of the same size.
    void GiveBack(Block block, std::size_t cb);

private:
    std::mutex m_lock;
    std::vector<Block> m_blocks;
    std::size_t m_cb = 0; // size of all kept blocks
};
} // namespace pal
