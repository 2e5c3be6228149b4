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
#if HWY_TARGET == HWY_SCALAR || HWY_HAVE_SCALABLE
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
using Words = hn::RebindToUnsigned<Floats>;
using Halves = hn::Repartition<std::int16_t, Floats>;
using FloatVector = hn::Vec<Floats>;
using WordVector = hn::Vec<Words>;
using HalfVector = hn::Vec<Halves>;

HWY_INLINE FloatVector Splat(float value)
{
    return hn::Set(Floats(), value);
}

struct Pixels
{
    FloatVector blue;
    FloatVector green;
    FloatVector red;
    WordVector alpha; ///< levels
};

HWY_INLINE FloatVector ToFloat(WordVector level)
{
    return hn::ConvertTo(Floats(), hn::BitCast(Ints(), level));
}

HWY_INLINE Pixels LoadPixels(const std::uint8_t* p)
{
    const hn::Repartition<std::uint8_t, Floats> dBytes;
    const auto words = hn::BitCast(Words(), hn::LoadU(dBytes, p));
    const auto byte = hn::Set(Words(), 0xFFU);
    return {ToFloat(hn::And(words, byte)), ToFloat(hn::And(hn::ShiftRight<8>(words), byte)),
            ToFloat(hn::And(hn::ShiftRight<16>(words), byte)), hn::ShiftRight<24>(words)};
}

/// The nearest whole number in the lower half of each word. Between 2^23 and 2^24 floats are whole numbers, so the
/// addition rounds, and above this one the lower bits count from 0, below it in two's complement. |value| < 2^15.
HWY_INLINE WordVector Rounded(FloatVector value)
{
    constexpr float kThreeHalvesOf2To23 = 12'582'912.0F;
    return hn::BitCast(Words(), hn::Add(value, Splat(kThreeHalvesOf2To23)));
}

/// Lower halves of two vectors of words, side by side and cut to bytes.
HWY_INLINE WordVector BytesOf(WordVector low, WordVector high)
{
    const HalfVector halves = hn::BitCast(Halves(), hn::OrAnd(hn::ShiftLeft<16>(high), low, hn::Set(Words(), 0xFFFFU)));
    const HalfVector cut = hn::Min(hn::Max(halves, hn::Zero(Halves())), hn::Set(Halves(), 255));
    return hn::BitCast(Words(), cut);
}

/// Each in the lower halves of its words.
HWY_INLINE void StorePixels(WordVector blue, WordVector green, WordVector red, WordVector alpha, std::uint8_t* p)
{
    const hn::Repartition<std::uint8_t, Floats> dBytes;
    const WordVector pixels = hn::Or(BytesOf(blue, red), hn::ShiftLeft<8>(BytesOf(green, alpha)));
    hn::StoreU(hn::BitCast(dBytes, pixels), dBytes, p);
}

HWY_INLINE FloatVector On(const ChromaAxis& axis, const Pixels& pixels)
{
    return hn::Add(hn::Add(hn::Mul(pixels.blue, Splat(axis.blue)), hn::Mul(pixels.green, Splat(axis.green))),
                   hn::Mul(pixels.red, Splat(axis.red)));
}

HWY_INLINE WordVector Mix(FloatVector front, FloatVector back, FloatVector share)
{
    const FloatVector level = hn::Min(hn::Max(front, Splat(0.0F)), Splat(255.0F));
    return Rounded(hn::Add(back, hn::Mul(hn::Sub(level, back), share)));
}

template <bool kHasBackground>
HWY_INLINE void KeyBlock(const ChromaKeyRule& rule, std::uint8_t* p, const std::uint8_t* pBackground)
{
    Pixels pixels = LoadPixels(p);
    const FloatVector along = On(rule.along, pixels);
    const FloatVector fromAlong = hn::Sub(along, Splat(rule.keyAlong));
    const FloatVector fromAcross = hn::Sub(On(rule.across, pixels), Splat(rule.keyAcross));
    const FloatVector distance = hn::Sqrt(hn::Add(hn::Mul(fromAlong, fromAlong), hn::Mul(fromAcross, fromAcross)));
    const FloatVector ramp = hn::Mul(hn::Sub(distance, Splat(rule.similarity)), Splat(rule.slope));
    const FloatVector kept = hn::Min(hn::Max(ramp, Splat(0.0F)), Splat(1.0F));
    const FloatVector excess = hn::Max(along, Splat(0.0F));
    pixels.blue = hn::Sub(pixels.blue, hn::Mul(excess, Splat(rule.spillBlue)));
    pixels.green = hn::Sub(pixels.green, hn::Mul(excess, Splat(rule.spillGreen)));
    pixels.red = hn::Sub(pixels.red, hn::Mul(excess, Splat(rule.spillRed)));
    const FloatVector alpha = hn::Mul(ToFloat(pixels.alpha), kept);
    if constexpr (!kHasBackground)
        StorePixels(Rounded(pixels.blue), Rounded(pixels.green), Rounded(pixels.red), Rounded(alpha), p);
    else
    {
        const Pixels back = LoadPixels(pBackground);
        const FloatVector share = hn::Mul(alpha, Splat(1.0F / 255.0F));
        StorePixels(Mix(pixels.blue, back.blue, share), Mix(pixels.green, back.green, share),
                    Mix(pixels.red, back.red, share), hn::Set(Words(), 255U), p);
    }
}

template <bool kHasBackground>
HWY_INLINE void KeyRow(const ChromaKeyRule& rule, std::uint8_t* pPixels, const std::uint8_t* pBackground,
                       std::size_t count)
{
    const std::size_t step = hn::Lanes(Floats());
    std::size_t i = 0;
    for (; i + step <= count; i += step)
        KeyBlock<kHasBackground>(rule, pPixels + i * 4, kHasBackground ? pBackground + i * 4 : nullptr);
    if (i == count)
        return;
    HWY_ALIGN std::uint8_t pixels[hn::MaxLanes(Floats()) * 4] = {};
    HWY_ALIGN std::uint8_t background[hn::MaxLanes(Floats()) * 4] = {};
    const std::size_t cb = (count - i) * 4;
    std::memcpy(pixels, pPixels + i * 4, cb);
    if constexpr (kHasBackground)
        std::memcpy(background, pBackground + i * 4, cb);
    KeyBlock<kHasBackground>(rule, pixels, background);
    std::memcpy(pPixels + i * 4, pixels, cb);
}

void Key(const ChromaKeyRule& rule, std::uint8_t* pPixels, const std::uint8_t* pBackground, std::size_t count)
{
    // A copy of the rule: through the reference the compiler could not tell it from the pixels that are written.
    const ChromaKeyRule own = rule;
    if (pBackground)
        KeyRow<true>(own, pPixels, pBackground, count);
    else
        KeyRow<false>(own, pPixels, nullptr, count);
}
#endif // HWY_SCALAR, HWY_HAVE_SCALABLE
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
