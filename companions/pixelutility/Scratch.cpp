#include "companions/pixelutility/Scratch.h"

#include <memory>
#include <new>

namespace
{
constexpr std::size_t kMaxKept = std::size_t{16} << 20;
constexpr std::align_val_t kScratchAlignment{64};

struct Deleter
{
    void operator()(std::uint8_t* p) const { ::operator delete(p, kScratchAlignment); }
};

struct Kept
{
    std::unique_ptr<std::uint8_t, Deleter> pMemory;
    std::size_t cb = 0;
};

thread_local Kept s_kept;
} // namespace

CScratch::CScratch(std::size_t cb)
{
    if (cb > s_kept.cb)
    {
        s_kept.pMemory.reset();
        s_kept.pMemory.reset(static_cast<std::uint8_t*>(::operator new(cb, kScratchAlignment, std::nothrow)));
        s_kept.cb = s_kept.pMemory ? cb : 0;
    }
    m_pNext = s_kept.pMemory.get();
}

CScratch::~CScratch()
{
    if (s_kept.cb > kMaxKept)
        s_kept = {};
}
