#include "companions/pixelutility/kernels/MergeBgra.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "companions/pixelutility/kernels/MergeBgra.cpp"
#include <hwy/foreach_target.h> // must come before highway.h
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace qmx::kernels
{
namespace HWY_NAMESPACE
{
#if HWY_TARGET == HWY_SCALAR
void MergeRow(const std::uint8_t* pSource, std::uint8_t* pTarget, std::size_t count)
{
    MergeBgraRowScalar(pSource, pTarget, count);
}
#else
namespace hn = hwy::HWY_NAMESPACE;

using Floats = hn::CappedTag<float, 16>;
using Ints = hn::RebindToSigned<Floats>;
using Words = hn::RebindToUnsigned<Floats>;
using FloatVector = hn::Vec<Floats>;
using WordVector = hn::Vec<Words>;

template <int kShift> HWY_INLINE FloatVector Channel(WordVector pixels)
{
    const WordVector level = hn::And(hn::ShiftRight<kShift>(pixels), hn::Set(Words(), 0xFFU));
    return hn::ConvertTo(Floats(), hn::BitCast(Ints(), level));
}

HWY_INLINE WordVector Rounded(FloatVector level)
{
    return hn::BitCast(Words(), hn::ConvertTo(Ints(), hn::Add(level, hn::Set(Floats(), 0.5F))));
}

template <int kShift>
HWY_INLINE WordVector MixChannel(WordVector source, WordVector target, FloatVector front, FloatVector rest,
                                 FloatVector alpha)
{
    const FloatVector sum = hn::Add(hn::Mul(Channel<kShift>(source), front), hn::Mul(Channel<kShift>(target), rest));
    return hn::ShiftLeft<kShift>(Rounded(hn::Div(sum, alpha)));
}

/// Most blocks are opaque or empty throughout; only edges and soft pictures are mixed.
HWY_INLINE void MergeBlock(const std::uint8_t* pSource, std::uint8_t* pTarget)
{
    const Words d;
    const hn::Repartition<std::uint8_t, Words> dBytes;
    const WordVector source = hn::BitCast(d, hn::LoadU(dBytes, pSource));
    const WordVector sourceAlpha = hn::ShiftRight<24>(source);
    const auto isOpaque = hn::Eq(sourceAlpha, hn::Set(d, 0xFFU));
    const auto isEmpty = hn::Eq(sourceAlpha, hn::Zero(d));
    if (hn::AllTrue(d, isEmpty))
        return;
    if (hn::AllTrue(d, isOpaque))
    {
        hn::StoreU(hn::BitCast(dBytes, source), dBytes, pTarget);
        return;
    }
    const WordVector target = hn::BitCast(d, hn::LoadU(dBytes, pTarget));
    WordVector mixed = target;
    if (!hn::AllTrue(d, hn::Or(isOpaque, isEmpty)))
    {
        const FloatVector one = hn::Set(Floats(), 255.0F);
        // An empty lane would divide by zero; what it gives is not used.
        const FloatVector front = hn::Max(Channel<24>(source), hn::Set(Floats(), 1.0F));
        const FloatVector rest =
            hn::Mul(hn::Mul(Channel<24>(target), hn::Sub(one, front)), hn::Set(Floats(), 1.0F / 255.0F));
        const FloatVector alpha = hn::Add(front, rest);
        const WordVector low = hn::Or(MixChannel<0>(source, target, front, rest, alpha),
                                      MixChannel<8>(source, target, front, rest, alpha));
        const WordVector high =
            hn::Or(MixChannel<16>(source, target, front, rest, alpha), hn::ShiftLeft<24>(Rounded(alpha)));
        mixed = hn::Or(low, high);
    }
    mixed = hn::IfThenElse(isEmpty, target, hn::IfThenElse(isOpaque, source, mixed));
    hn::StoreU(hn::BitCast(dBytes, mixed), dBytes, pTarget);
}

void MergeRow(const std::uint8_t* pSource, std::uint8_t* pTarget, std::size_t count)
{
    const std::size_t step = hn::Lanes(Floats());
    std::size_t i = 0;
    for (; i + step <= count; i += step)
        MergeBlock(pSource + i * 4, pTarget + i * 4);
    if (i == count)
        return;
    HWY_ALIGN std::uint8_t source[hn::MaxLanes(Floats()) * 4] = {};
    HWY_ALIGN std::uint8_t target[hn::MaxLanes(Floats()) * 4] = {};
    const std::size_t cb = (count - i) * 4;
    std::memcpy(source, pSource + i * 4, cb);
    std::memcpy(target, pTarget + i * 4, cb);
    MergeBlock(source, target);
    std::memcpy(pTarget + i * 4, target, cb);
}
#endif // HWY_SCALAR
} // namespace HWY_NAMESPACE
} // namespace qmx::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qmx::kernels
{
HWY_EXPORT(MergeRow);

void MergeBgraRow(const std::uint8_t* pSource, std::uint8_t* pTarget, std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(MergeRow)(pSource, pTarget, count);
}
} // namespace qmx::kernels
#endif
