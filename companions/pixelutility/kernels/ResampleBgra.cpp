#include "companions/pixelutility/kernels/ResampleBgra.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "companions/pixelutility/kernels/ResampleBgra.cpp"
#include <hwy/foreach_target.h> // must come before highway.h
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace qmx::kernels
{
namespace HWY_NAMESPACE
{
#if HWY_TARGET == HWY_SCALAR
void Resample(const BgraResampler& resampler, std::uint32_t first, std::uint32_t end, std::uint8_t* pTarget,
              std::ptrdiff_t strideTarget, std::int16_t* pScratch)
{
    ResampleBgraScalar(resampler, first, end, pTarget, strideTarget, pScratch);
}
#else
namespace hn = hwy::HWY_NAMESPACE;

using Words = hn::CappedTag<std::int16_t, 32>; // at most 512 bits
using Sums = hn::RepartitionToWide<Words>;
using WordVector = hn::Vec<Words>;
using SumVector = hn::Vec<Sums>;

HWY_INLINE WordVector LoadBytes(const std::uint8_t* p)
{
    return hn::PromoteTo(Words(), hn::LoadU(hn::Rebind<std::uint8_t, Words>(), p));
}

/// Sums of products of neighbouring words, added up over calls. The library splits them over two vectors on some
/// processors.
struct Accumulator
{
    SumVector sum;
    SumVector rest;
};

HWY_INLINE Accumulator StartAt(std::int32_t value)
{
    return {hn::Set(Sums(), value), hn::Zero(Sums())};
}

HWY_INLINE void AddProducts(Accumulator& accumulator, WordVector a, WordVector b)
{
    accumulator.sum = hn::ReorderWidenMulAccumulate(Sums(), a, b, accumulator.sum, accumulator.rest);
}

HWY_INLINE SumVector SumOf(const Accumulator& accumulator)
{
    return hn::RearrangeToOddPlusEven(accumulator.sum, accumulator.rest);
}

/// What makes one output row down the columns.
struct RowTaps
{
    const BgraResampler& resampler;
    std::uint32_t row;
    std::uint32_t pairs; ///< those of weight 0 at the end left out

    HWY_INLINE const std::uint8_t* Source(std::uint32_t tap) const
    {
        const std::uint32_t source = std::min(resampler.rows.pFirst[row] + tap, resampler.vertical.source - 1);
        return resampler.pSource + static_cast<std::ptrdiff_t>(source) * resampler.stride;
    }
    HWY_INLINE std::int32_t Weight(std::uint32_t tap) const { return resampler.rows.Weight(row, tap); }
};

/// Two taps: a + (b - a) * w in 16 bits. With weights that add up to 2^14 the rounding product gives exactly the bits
/// of (a * (2^14 - w) + b * w + 2^6) >> 7.
HWY_INLINE void SumTwoBlocks(const std::uint8_t* pUpper, const std::uint8_t* pLower, WordVector weight,
                             std::int16_t* HWY_RESTRICT pSums)
{
    const WordVector upper = LoadBytes(pUpper);
    const WordVector change = hn::ShiftLeft<7>(hn::Sub(LoadBytes(pLower), upper));
    hn::StoreU(hn::Add(hn::ShiftLeft<7>(upper), hn::MulFixedPoint15(change, weight)), Words(), pSums);
}

HWY_INLINE void SumTwoRows(const RowTaps& taps, std::size_t cb, std::int16_t* HWY_RESTRICT pSums)
{
    const bool lowerAlone = taps.Weight(1) == kTapOne; // does not fit the product's 15 bits
    const std::uint8_t* const pUpper = taps.Source(lowerAlone ? 1 : 0);
    const std::uint8_t* const pLower = taps.Source(1);
    const WordVector weight = hn::Set(Words(), static_cast<std::int16_t>(lowerAlone ? 0 : taps.Weight(1) * 2));
    const std::size_t step = hn::Lanes(Words());
    for (std::size_t i = 0; i + step <= cb; i += step)
        SumTwoBlocks(pUpper + i, pLower + i, weight, pSums + i);
    if (cb % step != 0) // some of the block before once more
        SumTwoBlocks(pUpper + cb - step, pLower + cb - step, weight, pSums + cb - step);
}

/// Any number of taps. Two rows are interleaved, so that one instruction multiplies and adds a pair; interleaving and
/// narrowing both work within blocks of 128 bits, which restores the order.
template <std::size_t kBlocks>
HWY_INLINE void SumRowBlocks(const RowTaps& taps, std::size_t offset, std::int16_t* HWY_RESTRICT pSums)
{
    const Words d;
    const std::size_t step = hn::Lanes(d);
    Accumulator low[kBlocks];
    Accumulator high[kBlocks];
    for (std::size_t i = 0; i < kBlocks; ++i)
        low[i] = high[i] = StartAt(1 << 6);
    for (std::uint32_t tap = 0; tap < taps.pairs * 2; tap += 2)
    {
        const std::uint8_t* const pUpper = taps.Source(tap) + offset;
        const std::uint8_t* const pLower = taps.Source(tap + 1) + offset;
        const std::int32_t pair = taps.Weight(tap) + (taps.Weight(tap + 1) << 16); // neither is negative
        const WordVector weights = hn::BitCast(d, hn::Set(Sums(), pair));
        for (std::size_t i = 0; i < kBlocks; ++i)
        {
            const WordVector upper = LoadBytes(pUpper + i * step);
            const WordVector lower = LoadBytes(pLower + i * step);
            AddProducts(low[i], hn::InterleaveLower(d, upper, lower), weights);
            AddProducts(high[i], hn::InterleaveUpper(d, upper, lower), weights);
        }
    }
    for (std::size_t i = 0; i < kBlocks; ++i)
        hn::StoreU(hn::ReorderDemote2To(d, hn::ShiftRight<7>(SumOf(low[i])), hn::ShiftRight<7>(SumOf(high[i]))), d,
                   pSums + offset + i * step);
}

HWY_INLINE void SumManyRows(const RowTaps& taps, std::size_t cb, std::int16_t* HWY_RESTRICT pSums)
{
    constexpr std::size_t kBlocks = 4;
    const std::size_t step = hn::Lanes(Words());
    std::size_t i = 0;
    for (; i + kBlocks * step <= cb; i += kBlocks * step)
        SumRowBlocks<kBlocks>(taps, i, pSums);
    for (; i + step <= cb; i += step)
        SumRowBlocks<1>(taps, i, pSums);
    if (i < cb)
        SumRowBlocks<1>(taps, cb - step, pSums);
}

/// A vector of 128-bit blocks from one address each, kStride pointers apart.
template <class D, std::size_t kStride>
HWY_INLINE hn::Vec<D> LoadBlocks(D d, const std::int16_t* HWY_RESTRICT pSums, const std::uint32_t* pFirst)
{
    if constexpr (hn::MaxLanes(D()) <= 8)
        return hn::LoadU(d, pSums + std::size_t{*pFirst} * 4);
    else
    {
        const hn::Half<D> dHalf;
        constexpr std::size_t kBlocks = hn::MaxLanes(dHalf) / 8;
        return hn::Combine(d, LoadBlocks<hn::Half<D>, kStride>(dHalf, pSums, pFirst + kBlocks * kStride),
                           LoadBlocks<hn::Half<D>, kStride>(dHalf, pSums, pFirst));
    }
}

/// Sums of the pixels kFirst, kFirst + 4, kFirst + 8, …, one in each block. Two neighbouring source pixels are 16
/// bytes; their channels are brought together in order to multiply and add both at once.
template <int kFirst>
HWY_INLINE SumVector SumPixels(const ResampleTaps& columns, std::size_t pairs, const std::int16_t* HWY_RESTRICT pSums,
                               std::size_t x)
{
    const Words d;
    const hn::Repartition<std::uint8_t, Words> dBytes;
    HWY_ALIGN static constexpr std::uint8_t kTogether[16] = {0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15};
    const auto together = hn::LoadDup128(dBytes, kTogether);
    Accumulator accumulator = StartAt(1 << 20);
    for (std::size_t pair = 0; pair < pairs; ++pair)
    {
        const WordVector pixels = LoadBlocks<Words, 4>(d, pSums + pair * 8, columns.pFirst + x + kFirst);
        const auto channels = hn::TableLookupBytes(hn::BitCast(dBytes, pixels), together);
        const WordVector weights = hn::LoadU(d, columns.pWeights + (pair * columns.count + x) * 2);
        AddProducts(accumulator, hn::BitCast(d, channels),
                    hn::BitCast(d, hn::Broadcast<kFirst>(hn::BitCast(Sums(), weights))));
    }
    return SumOf(accumulator);
}

/// Sums of four pixels a block, one vector for each place in the block, to bytes in their order. A sum is below 2^29,
/// so a shift and a mask leave the level in the byte it belongs to.
HWY_INLINE hn::Vec<hn::Repartition<std::uint8_t, Words>> JoinPixels(SumVector first, SumVector second, SumVector third,
                                                                    SumVector fourth)
{
    const Sums d;
    const hn::Repartition<std::uint8_t, Words> dBytes;
    HWY_ALIGN static constexpr std::uint8_t kPixels[16] = {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};
    SumVector levels = hn::ShiftRight<21>(first);
    levels = hn::OrAnd(levels, hn::ShiftRight<13>(second), hn::Set(d, 0xFF00));
    levels = hn::OrAnd(levels, hn::ShiftRight<5>(third), hn::Set(d, 0xFF0000));
    levels = hn::OrAnd(levels, hn::ShiftLeft<3>(fourth), hn::Set(d, static_cast<std::int32_t>(0xFF000000)));
    return hn::TableLookupBytes(hn::BitCast(dBytes, levels), hn::LoadDup128(dBytes, kPixels));
}

/// @param columns  by value, so that it stays in registers while bytes are written  @param pairs  columns.pairs
HWY_INLINE void SumColumns(const ResampleTaps columns, std::size_t pairs, const std::int16_t* HWY_RESTRICT pSums,
                           std::uint8_t* HWY_RESTRICT pTarget)
{
    const hn::Repartition<std::uint8_t, Words> dBytes;
    const std::size_t pixels = hn::Lanes(Sums());
    const std::size_t width = columns.count;
    for (std::size_t x = 0; x < width; x += pixels)
    {
        const auto bytes = JoinPixels(SumPixels<0>(columns, pairs, pSums, x), SumPixels<1>(columns, pairs, pSums, x),
                                      SumPixels<2>(columns, pairs, pSums, x), SumPixels<3>(columns, pairs, pSums, x));
        if (x + pixels <= width)
            hn::StoreU(bytes, dBytes, pTarget + x * 4);
        else
        {
            HWY_ALIGN std::uint8_t rest[hn::MaxLanes(dBytes)];
            hn::Store(bytes, dBytes, rest);
            std::memcpy(pTarget + x * 4, rest, (width - x) * 4);
        }
    }
}

void Resample(const BgraResampler& resampler, std::uint32_t first, std::uint32_t end, std::uint8_t* pTarget,
              std::ptrdiff_t strideTarget, std::int16_t* pScratch)
{
    const std::size_t cb = std::size_t{resampler.horizontal.source} * 4;
    if (cb < hn::Lanes(Words()))
        return ResampleBgraScalar(resampler, first, end, pTarget, strideTarget, pScratch);
    std::fill(pScratch + cb, pScratch + resampler.ScratchSize(), std::int16_t{0}); // taps beyond the last pixel
    for (std::uint32_t row = first; row < end; ++row, pTarget += strideTarget)
    {
        RowTaps taps{resampler, row, resampler.rows.pairs};
        while (taps.pairs > 1 && taps.Weight(taps.pairs * 2 - 2) == 0 && taps.Weight(taps.pairs * 2 - 1) == 0)
            --taps.pairs;
        if (taps.pairs == 1)
            SumTwoRows(taps, cb, pScratch);
        else
            SumManyRows(taps, cb, pScratch);
        if (resampler.columns.pairs == 1)
            SumColumns(resampler.columns, 1, pScratch, pTarget);
        else
            SumColumns(resampler.columns, resampler.columns.pairs, pScratch, pTarget);
    }
}
#endif // HWY_SCALAR
} // namespace HWY_NAMESPACE
} // namespace qmx::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qmx::kernels
{
HWY_EXPORT(Resample);

void ResampleBgra(const BgraResampler& resampler, std::uint32_t first, std::uint32_t end, std::uint8_t* pTarget,
                  std::ptrdiff_t strideTarget, std::int16_t* pScratch)
{
    HWY_DYNAMIC_DISPATCH(Resample)(resampler, first, end, pTarget, strideTarget, pScratch);
}
} // namespace qmx::kernels
#endif
