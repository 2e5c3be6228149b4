#include "companions/pixelutility/kernels/TurnBgra.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "companions/pixelutility/kernels/TurnBgra.cpp"
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/cache_control.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace qmx::kernels
{
namespace HWY_NAMESPACE
{
#if HWY_TARGET == HWY_SCALAR
void Transpose(const std::uint8_t* pSource, std::ptrdiff_t stride, std::uint8_t* pTarget, std::ptrdiff_t strideTarget,
               std::size_t width, std::size_t rows)
{
    TransposeBgraScalar(pSource, stride, pTarget, strideTarget, width, rows);
}

void Mirror(const std::uint8_t* pSource, std::uint8_t* pTarget, std::size_t width)
{
    MirrorBgraScalar(pSource, pTarget, width);
}
#else
namespace hn = hwy::HWY_NAMESPACE;

using FourPixels = hn::FixedTag<std::uint32_t, 4>;

HWY_INLINE hn::Vec<FourPixels> LoadFour(const std::uint8_t* p)
{
    return hn::BitCast(FourPixels(), hn::LoadU(hn::FixedTag<std::uint8_t, 16>(), p));
}

template <class V> HWY_INLINE void StoreFour(V pixels, std::uint8_t* p)
{
    const hn::FixedTag<std::uint8_t, 16> d;
    hn::StoreU(hn::BitCast(d, pixels), d, p);
}

/// Four by four pixels.
HWY_INLINE void TransposeBlock(const std::uint8_t* pSource, std::ptrdiff_t stride, std::uint8_t* pTarget,
                               std::ptrdiff_t strideTarget)
{
    const FourPixels d;
    const hn::FixedTag<std::uint64_t, 2> dPairs;
    const auto a = LoadFour(pSource);
    const auto b = LoadFour(pSource + stride);
    const auto c = LoadFour(pSource + stride * 2);
    const auto e = LoadFour(pSource + stride * 3);
    const auto upperLeft = hn::BitCast(dPairs, hn::InterleaveLower(d, a, b));
    const auto upperRight = hn::BitCast(dPairs, hn::InterleaveUpper(d, a, b));
    const auto lowerLeft = hn::BitCast(dPairs, hn::InterleaveLower(d, c, e));
    const auto lowerRight = hn::BitCast(dPairs, hn::InterleaveUpper(d, c, e));
    StoreFour(hn::InterleaveLower(dPairs, upperLeft, lowerLeft), pTarget);
    StoreFour(hn::InterleaveUpper(dPairs, upperLeft, lowerLeft), pTarget + strideTarget);
    StoreFour(hn::InterleaveLower(dPairs, upperRight, lowerRight), pTarget + strideTarget * 2);
    StoreFour(hn::InterleaveUpper(dPairs, upperRight, lowerRight), pTarget + strideTarget * 3);
}

void Transpose(const std::uint8_t* pSource, std::ptrdiff_t stride, std::uint8_t* pTarget, std::ptrdiff_t strideTarget,
               std::size_t width, std::size_t rows)
{
    // Sixteen source rows fill a cache line of a target row. The target rows lie far apart, which no prefetcher
    // foresees: each is asked for eight columns before it is written.
    constexpr std::size_t kStrip = 16;
    constexpr std::size_t kAhead = 8;
    const std::size_t wholeWidth = width / 4 * 4;
    const std::size_t wholeRows = rows / 4 * 4;
    for (std::size_t top = 0; top < wholeRows; top += kStrip)
    {
        const std::size_t end = std::min(top + kStrip, wholeRows);
        for (std::size_t x = 0; x < wholeWidth; x += 4)
        {
            std::uint8_t* const pColumn = pTarget + static_cast<std::ptrdiff_t>(x) * strideTarget;
            for (std::size_t i = 0; x + kAhead + 4 <= width && i < 4; ++i)
                hwy::Prefetch(pColumn + static_cast<std::ptrdiff_t>(kAhead + i) * strideTarget + top * 4);
            for (std::size_t y = top; y < end; y += 4)
                TransposeBlock(pSource + static_cast<std::ptrdiff_t>(y) * stride + x * 4, stride, pColumn + y * 4,
                               strideTarget);
        }
    }
    // The last columns of all rows, then what is left of the last rows.
    TransposeBgraScalar(pSource + wholeWidth * 4, stride,
                        pTarget + static_cast<std::ptrdiff_t>(wholeWidth) * strideTarget, strideTarget,
                        width - wholeWidth, rows);
    TransposeBgraScalar(pSource + static_cast<std::ptrdiff_t>(wholeRows) * stride, stride, pTarget + wholeRows * 4,
                        strideTarget, wholeWidth, rows - wholeRows);
}

void Mirror(const std::uint8_t* pSource, std::uint8_t* pTarget, std::size_t width)
{
    const hn::ScalableTag<std::uint32_t> d;
    const hn::Repartition<std::uint8_t, decltype(d)> dBytes;
    const std::size_t step = hn::Lanes(d);
    std::size_t x = 0;
    for (; x + step <= width; x += step)
    {
        const auto pixels = hn::BitCast(d, hn::LoadU(dBytes, pSource + x * 4));
        hn::StoreU(hn::BitCast(dBytes, hn::Reverse(d, pixels)), dBytes, pTarget + (width - x - step) * 4);
    }
    MirrorBgraScalar(pSource + x * 4, pTarget, width - x);
}
#endif // HWY_SCALAR
} // namespace HWY_NAMESPACE
} // namespace qmx::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qmx::kernels
{
HWY_EXPORT(Transpose);
HWY_EXPORT(Mirror);

void TransposeBgra(const std::uint8_t* pSource, std::ptrdiff_t stride, std::uint8_t* pTarget,
                   std::ptrdiff_t strideTarget, std::size_t width, std::size_t rows)
{
    HWY_DYNAMIC_DISPATCH(Transpose)(pSource, stride, pTarget, strideTarget, width, rows);
}

void MirrorBgra(const std::uint8_t* pSource, std::uint8_t* pTarget, std::size_t width)
{
    HWY_DYNAMIC_DISPATCH(Mirror)(pSource, pTarget, width);
}
} // namespace qmx::kernels
#endif
