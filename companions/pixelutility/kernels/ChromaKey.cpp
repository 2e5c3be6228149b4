#include "companions/pixelutility/kernels/ChromaKey.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "companions/pixelutility/kernels/ChromaKey.cpp"
#include <hwy/foreach_target.h> // must come before highway.h
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace qmx::kernels
{
namespace HWY_NAMESPACE
{
#if HWY_TARGET == HWY_SCALAR
void Key(const ChromaKeyRule& rule, std::uint8_t* pPixels, const std::uint8_t* pBackground, std::size_t count)
{
    KeyBgraScalar(rule, pPixels, pBackground, count);
}
#else
namespace hn = hwy::HWY_NAMESPACE;

// Products and sums stay apart (and the compiler is told not to fuse them): a fused one rounds once instead of twice,
// and the result would differ between processors.
using Floats = hn::CappedTag<float, 16>;
using Ints = hn::RebindToSigned<Floats>;
using FloatVector = hn::Vec<Floats>;
using IntVector = hn::Vec<Ints>;

HWY_INLINE FloatVector Splat(float value)
{
    return hn::Set(Floats(), value);
}

HWY_INLINE FloatVector Clamp(FloatVector value, float least, float most)
{
    return hn::Min(hn::Max(value, Splat(least)), Splat(most));
}

struct Pixels
{
    FloatVector blue;
    FloatVector green;
    FloatVector red;
    FloatVector alpha;
};

HWY_INLINE Pixels LoadPixels(const std::uint8_t* p)
{
    const Floats d;
    const hn::RebindToUnsigned<Floats> dWords;
    const hn::Repartition<std::uint8_t, Floats> dBytes;
    const auto words = hn::BitCast(dWords, hn::LoadU(dBytes, p));
    const auto byte = hn::Set(dWords, 0xFFU);
    return {hn::ConvertTo(d, hn::BitCast(Ints(), hn::And(words, byte))),
            hn::ConvertTo(d, hn::BitCast(Ints(), hn::And(hn::ShiftRight<8>(words), byte))),
            hn::ConvertTo(d, hn::BitCast(Ints(), hn::And(hn::ShiftRight<16>(words), byte))),
            hn::ConvertTo(d, hn::BitCast(Ints(), hn::ShiftRight<24>(words)))};
}

HWY_INLINE IntVector Rounded(FloatVector value)
{
    return hn::ConvertTo(Ints(), hn::Add(value, Splat(0.5F)));
}

HWY_INLINE void StorePixels(IntVector blue, IntVector green, IntVector red, IntVector alpha, std::uint8_t* p)
{
    const hn::Repartition<std::uint8_t, Floats> dBytes;
    const IntVector low = hn::Or(blue, hn::ShiftLeft<8>(green));
    const IntVector high = hn::Or(hn::ShiftLeft<16>(red), hn::ShiftLeft<24>(alpha));
    hn::StoreU(hn::BitCast(dBytes, hn::Or(low, high)), dBytes, p);
}

HWY_INLINE FloatVector Chroma(const Pixels& pixels, float blue, float green, float red)
{
    return hn::Add(hn::Add(hn::Mul(pixels.blue, Splat(blue)), hn::Mul(pixels.green, Splat(green))),
                   hn::Mul(pixels.red, Splat(red)));
}

HWY_INLINE FloatVector WithoutSpill(FloatVector level, FloatVector along, float spill)
{
    return Clamp(hn::Sub(level, hn::Mul(along, Splat(spill))), 0.0F, 255.0F);
}

HWY_INLINE IntVector Mix(FloatVector front, FloatVector back, FloatVector share)
{
    return Rounded(hn::Add(back, hn::Mul(hn::Sub(front, back), share)));
}

HWY_INLINE void KeyBlock(const ChromaKeyRule& rule, std::uint8_t* p, const std::uint8_t* pBackground)
{
    Pixels pixels = LoadPixels(p);
    const FloatVector cb = Chroma(pixels, ChromaWeights::cbBlue, ChromaWeights::cbGreen, ChromaWeights::cbRed);
    const FloatVector cr = Chroma(pixels, ChromaWeights::crBlue, ChromaWeights::crGreen, ChromaWeights::crRed);
    const FloatVector fromCb = hn::Sub(cb, Splat(rule.keyCb));
    const FloatVector fromCr = hn::Sub(cr, Splat(rule.keyCr));
    const FloatVector distance = hn::Sqrt(hn::Add(hn::Mul(fromCb, fromCb), hn::Mul(fromCr, fromCr)));
    const FloatVector kept = Clamp(hn::Mul(hn::Sub(distance, Splat(rule.similarity)), Splat(rule.slope)), 0.0F, 1.0F);
    const FloatVector along =
        hn::Max(hn::Add(hn::Mul(cb, Splat(rule.directionCb)), hn::Mul(cr, Splat(rule.directionCr))), Splat(0.0F));
    pixels.blue = WithoutSpill(pixels.blue, along, rule.spillBlue);
    pixels.green = WithoutSpill(pixels.green, along, rule.spillGreen);
    pixels.red = WithoutSpill(pixels.red, along, rule.spillRed);
    const FloatVector alpha = hn::Mul(pixels.alpha, kept);
    if (!pBackground)
    {
        StorePixels(Rounded(pixels.blue), Rounded(pixels.green), Rounded(pixels.red), Rounded(alpha), p);
        return;
    }
    const Pixels back = LoadPixels(pBackground);
    const FloatVector share = hn::Mul(alpha, Splat(1.0F / 255.0F));
    StorePixels(Mix(pixels.blue, back.blue, share), Mix(pixels.green, back.green, share),
                Mix(pixels.red, back.red, share), hn::Set(Ints(), 255), p);
}

void Key(const ChromaKeyRule& rule, std::uint8_t* pPixels, const std::uint8_t* pBackground, std::size_t count)
{
    const std::size_t step = hn::Lanes(Floats());
    std::size_t i = 0;
    for (; i + step <= count; i += step)
        KeyBlock(rule, pPixels + i * 4, pBackground ? pBackground + i * 4 : nullptr);
    if (i == count)
        return;
    HWY_ALIGN std::uint8_t pixels[hn::MaxLanes(Floats()) * 4] = {};
    HWY_ALIGN std::uint8_t background[hn::MaxLanes(Floats()) * 4] = {};
    const std::size_t cb = (count - i) * 4;
    std::memcpy(pixels, pPixels + i * 4, cb);
    if (pBackground)
        std::memcpy(background, pBackground + i * 4, cb);
    KeyBlock(rule, pixels, pBackground ? background : nullptr);
    std::memcpy(pPixels + i * 4, pixels, cb);
}
#endif // HWY_SCALAR
} // namespace HWY_NAMESPACE
} // namespace qmx::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qmx::kernels
{
HWY_EXPORT(Key);

void KeyBgra(const ChromaKeyRule& rule, std::uint8_t* pPixels, const std::uint8_t* pBackground, std::size_t count)
{
    HWY_DYNAMIC_DISPATCH(Key)(rule, pPixels, pBackground, count);
}
} // namespace qmx::kernels
#endif
