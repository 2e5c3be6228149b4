#include "companions/pixelutility/kernels/YuvToBgra.h"

#include "companions/pixelutility/kernels/YuvArithmetic.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

// The compiler reads this file again for every instruction set, up to HWY_ONCE.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "companions/pixelutility/kernels/YuvToBgra.cpp"
#include <hwy/foreach_target.h> // must come before highway.h
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace qmx::kernels
{
namespace HWY_NAMESPACE
{
#if HWY_TARGET == HWY_SCALAR
// A processor without any of the instruction sets gets the twin; there are no vectors to split.
void Convert(const YuvPicture& source, const YuvArithmetic& /*arithmetic*/, std::uint8_t* pTarget,
             std::ptrdiff_t strideTarget)
{
    (void)ConvertYuvToBgraScalar(source, pTarget, strideTarget);
}
#else
namespace hn = hwy::HWY_NAMESPACE;

using Words = hn::ScalableTag<std::uint16_t>;
using Signed = hn::ScalableTag<std::int16_t>;
using Bytes = hn::ScalableTag<std::uint8_t>;
using WordVector = hn::Vec<Words>;
using SignedVector = hn::Vec<Signed>;
using ByteVector = hn::Vec<Bytes>;

// Pixels are worked on as two vectors, the even and the odd ones: with halved chroma both take the same chroma vector,
// and bytes split into words (and words join into bytes) by shifts and masks alone.
struct EvenOdd
{
    WordVector even;
    WordVector odd;
};

/// How a row's samples are stored. Words: two bytes a sample; Halved: one chroma sample for two pixels;
/// Interleaved: U and V alternate in one plane.
template <bool kWords, bool kHalved, bool kInterleaved> struct Layout
{
    static constexpr bool words = kWords;
    static constexpr bool halved = kHalved;
    static constexpr bool interleaved = kInterleaved;
    static constexpr std::size_t cbSample = kWords ? 2 : 1;
    static constexpr std::size_t cbChroma = cbSample * (kInterleaved ? 2 : 1); ///< from one U to the next
};

/// Where the samples of one chunk of pixels start.
struct ChunkSource
{
    const std::uint8_t* pY;
    const std::uint8_t* pU;
    const std::uint8_t* pV;
    const std::uint8_t* pA;
};

HWY_INLINE WordVector LoadWords(const std::uint8_t* p)
{
    return hn::BitCast(Words(), hn::LoadU(Bytes(), p)); // through bytes: rows may start at odd addresses
}

HWY_INLINE EvenOdd SplitBytes(WordVector pairs)
{
    return {hn::ShiftLeft<8>(pairs), hn::And(pairs, hn::Set(Words(), std::uint16_t{0xFF00}))};
}

HWY_INLINE EvenOdd SplitWords(WordVector low, WordVector high, int shift)
{
    const Words d;
    return {hn::ShiftLeftSame(hn::ConcatEven(d, high, low), shift),
            hn::ShiftLeftSame(hn::ConcatOdd(d, high, low), shift)};
}

/// Samples of a plane, one a pixel, moved to the top of their words.
template <class L> HWY_INLINE EvenOdd LoadPlane(const std::uint8_t* p, int shift)
{
    if constexpr (L::words)
        return SplitWords(LoadWords(p), LoadWords(p + hn::Lanes(Bytes())), shift);
    else
        return SplitBytes(LoadWords(p));
}

/// Halved chroma: even is U and odd is V, each for a whole pair of pixels.
template <class L> HWY_INLINE EvenOdd LoadHalvedChroma(const ChunkSource& source, int shift)
{
    if constexpr (L::interleaved)
        return LoadPlane<L>(source.pU, shift);
    else if constexpr (L::words)
        return {hn::ShiftLeftSame(LoadWords(source.pU), shift), hn::ShiftLeftSame(LoadWords(source.pV), shift)};
    else
    {
        const Words d;
        const hn::Rebind<std::uint8_t, Words> dHalf;
        return {hn::ShiftLeft<8>(hn::PromoteTo(d, hn::LoadU(dHalf, source.pU))),
                hn::ShiftLeft<8>(hn::PromoteTo(d, hn::LoadU(dHalf, source.pV)))};
    }
}

/// Chroma at full width.
template <class L> HWY_INLINE void LoadFullChroma(const ChunkSource& source, int shift, EvenOdd& u, EvenOdd& v)
{
    if constexpr (!L::interleaved)
    {
        u = LoadPlane<L>(source.pU, shift);
        v = LoadPlane<L>(source.pV, shift);
    }
    else if constexpr (L::words)
    {
        const std::size_t cb = hn::Lanes(Bytes());
        const EvenOdd low = SplitWords(LoadWords(source.pU), LoadWords(source.pU + cb), shift);
        const EvenOdd high = SplitWords(LoadWords(source.pU + 2 * cb), LoadWords(source.pU + 3 * cb), shift);
        u = SplitWords(low.even, high.even, 0);
        v = SplitWords(low.odd, high.odd, 0);
    }
    else
    {
        ByteVector bytesU;
        ByteVector bytesV;
        hn::LoadInterleaved2(Bytes(), source.pU, bytesU, bytesV);
        u = SplitBytes(hn::BitCast(Words(), bytesU));
        v = SplitBytes(hn::BitCast(Words(), bytesV));
    }
}

struct Factors
{
    SignedVector lumaScale;
    SignedVector lumaOffset;
    SignedVector redV;
    SignedVector greenU;
    SignedVector greenV;
    SignedVector blueU;
};

/// What chroma adds to each channel, in 1/64 level.
struct Chroma
{
    SignedVector blue;
    SignedVector green; ///< to be subtracted
    SignedVector red;
};

HWY_INLINE Chroma MultiplyChroma(const Factors& factors, WordVector u, WordVector v)
{
    const WordVector middle = hn::Set(Words(), std::uint16_t{0x8000});
    const SignedVector signedU = hn::BitCast(Signed(), hn::Xor(u, middle));
    const SignedVector signedV = hn::BitCast(Signed(), hn::Xor(v, middle));
    return {hn::MulFixedPoint15(signedU, factors.blueU),
            hn::Add(hn::MulFixedPoint15(signedU, factors.greenU), hn::MulFixedPoint15(signedV, factors.greenV)),
            hn::MulFixedPoint15(signedV, factors.redV)};
}

HWY_INLINE SignedVector MultiplyLuma(const Factors& factors, WordVector y)
{
    const SignedVector halves = hn::BitCast(Signed(), hn::ShiftRight<1>(y));
    return hn::Add(hn::MulFixedPoint15(halves, factors.lumaScale), factors.lumaOffset);
}

/// Levels times 64 of the even and the odd pixels to bytes in their order. 16,383 / 64 is the last value below 256.
HWY_INLINE ByteVector JoinBytes(SignedVector even, SignedVector odd)
{
    const Signed d;
    const SignedVector zero = hn::Zero(d);
    const SignedVector most = hn::Set(d, std::int16_t{16383});
    const WordVector low = hn::BitCast(Words(), hn::ShiftRight<6>(hn::Min(hn::Max(even, zero), most)));
    const WordVector high = hn::BitCast(Words(), hn::ShiftLeft<2>(hn::Min(hn::Max(odd, zero), most)));
    return hn::BitCast(Bytes(), hn::OrAnd(low, high, hn::Set(Words(), std::uint16_t{0xFF00})));
}

/// Alpha of more than 8 bits, rounded to 8. Numerator and quotient are below 2^24, so the division in single precision
/// ends in the same integer as the exact one.
HWY_INLINE ByteVector LoadDeepAlpha(const std::uint8_t* p, const YuvArithmetic& arithmetic)
{
    const hn::ScalableTag<float> dFloat;
    const hn::ScalableTag<std::int32_t> dInt;
    const hn::Rebind<std::uint16_t, decltype(dInt)> dWord;
    const hn::Rebind<std::uint8_t, decltype(dInt)> dByte;
    const hn::Repartition<std::uint8_t, decltype(dWord)> dWordBytes;
    const auto maximum = hn::Set(dFloat, static_cast<float>(arithmetic.alphaMaximum));
    const auto half = hn::Set(dInt, static_cast<std::int32_t>(arithmetic.alphaMaximum / 2U));
    HWY_ALIGN std::uint8_t bytes[hn::MaxLanes(Bytes())];
    for (std::size_t i = 0; i < hn::Lanes(Bytes()); i += hn::Lanes(dInt))
    {
        const auto words = hn::BitCast(dWord, hn::LoadU(dWordBytes, p + i * 2));
        const auto samples = hn::ShiftRightSame(hn::PromoteTo(dInt, words), arithmetic.alphaShift);
        const auto numerator = hn::Add(hn::Sub(hn::ShiftLeft<8>(samples), samples), half);
        const auto quotient = hn::Div(hn::ConvertTo(dFloat, numerator), maximum);
        hn::StoreU(hn::DemoteTo(dByte, hn::ConvertTo(dInt, quotient)), dByte, bytes + i);
    }
    return hn::Load(Bytes(), bytes);
}

/// Converts as many pixels as a vector has bytes.
template <class L>
HWY_INLINE void ConvertChunk(const ChunkSource& source, const Factors& factors, const YuvArithmetic& arithmetic,
                             std::uint8_t* HWY_RESTRICT pTarget)
{
    const int shift = arithmetic.sampleShift;
    const EvenOdd y = LoadPlane<L>(source.pY, shift);
    Chroma even;
    Chroma odd;
    if constexpr (L::halved)
    {
        const EvenOdd uv = LoadHalvedChroma<L>(source, shift);
        even = MultiplyChroma(factors, uv.even, uv.odd);
        odd = even;
    }
    else
    {
        EvenOdd u;
        EvenOdd v;
        LoadFullChroma<L>(source, shift, u, v);
        even = MultiplyChroma(factors, u.even, v.even);
        odd = MultiplyChroma(factors, u.odd, v.odd);
    }
    const SignedVector lumaEven = MultiplyLuma(factors, y.even);
    const SignedVector lumaOdd = MultiplyLuma(factors, y.odd);
    // Luma and chroma together can pass 2^15 / 64 = 512 levels, which is white in any case: hence saturated.
    const ByteVector blue = JoinBytes(hn::SaturatedAdd(lumaEven, even.blue), hn::SaturatedAdd(lumaOdd, odd.blue));
    const ByteVector green = JoinBytes(hn::SaturatedSub(lumaEven, even.green), hn::SaturatedSub(lumaOdd, odd.green));
    const ByteVector red = JoinBytes(hn::SaturatedAdd(lumaEven, even.red), hn::SaturatedAdd(lumaOdd, odd.red));
    ByteVector alpha = hn::Set(Bytes(), std::uint8_t{255});
    if (source.pA)
    {
        if constexpr (L::words)
            alpha = LoadDeepAlpha(source.pA, arithmetic);
        else
            alpha = hn::LoadU(Bytes(), source.pA);
    }
    hn::StoreInterleaved4(blue, green, red, alpha, Bytes(), pTarget);
}

/// The last pixels of a row, fewer than a chunk: through buffers, so that nothing beyond the row is read or written.
template <class L>
HWY_NOINLINE void ConvertTail(const ChunkSource& source, std::size_t count, const Factors& factors,
                              const YuvArithmetic& arithmetic, std::uint8_t* pTarget)
{
    constexpr std::size_t kChunk = hn::MaxLanes(Bytes());
    HWY_ALIGN std::uint8_t y[kChunk * 2] = {};
    HWY_ALIGN std::uint8_t u[kChunk * 4] = {};
    HWY_ALIGN std::uint8_t v[kChunk * 2] = {};
    HWY_ALIGN std::uint8_t a[kChunk * 2] = {};
    HWY_ALIGN std::uint8_t pixels[kChunk * 4];
    const std::size_t chroma = L::halved ? (count + 1) / 2 : count;
    std::memcpy(y, source.pY, count * L::cbSample);
    std::memcpy(u, source.pU, chroma * L::cbChroma);
    if constexpr (!L::interleaved)
        std::memcpy(v, source.pV, chroma * L::cbSample);
    if (source.pA)
        std::memcpy(a, source.pA, count * L::cbSample);
    ConvertChunk<L>({y, u, v, source.pA ? a : nullptr}, factors, arithmetic, pixels);
    std::memcpy(pTarget, pixels, count * 4);
}

template <class L>
HWY_INLINE void ConvertRow(ChunkSource row, std::size_t width, const Factors& factors, const YuvArithmetic& arithmetic,
                           std::uint8_t* pTarget)
{
    const std::size_t chunk = hn::Lanes(Bytes());
    const std::size_t chroma = L::halved ? chunk / 2 : chunk;
    for (; width >= chunk; width -= chunk)
    {
        ConvertChunk<L>(row, factors, arithmetic, pTarget);
        row.pY += chunk * L::cbSample;
        row.pU += chroma * L::cbChroma;
        if constexpr (!L::interleaved)
            row.pV += chroma * L::cbSample;
        if (row.pA)
            row.pA += chunk * L::cbSample;
        pTarget += chunk * 4;
    }
    if (width > 0)
        ConvertTail<L>(row, width, factors, arithmetic, pTarget);
}

template <class L>
void ConvertPicture(const YuvPicture& source, const YuvArithmetic& arithmetic, std::uint8_t* pTarget,
                    std::ptrdiff_t strideTarget)
{
    const Signed d;
    const Factors factors = {hn::Set(d, arithmetic.lumaScale), hn::Set(d, arithmetic.lumaOffset),
                             hn::Set(d, arithmetic.redV),      hn::Set(d, arithmetic.greenU),
                             hn::Set(d, arithmetic.greenV),    hn::Set(d, arithmetic.blueU)};
    for (std::ptrdiff_t y = 0; y < source.height; ++y)
    {
        const std::ptrdiff_t yChroma = y >> source.chromaShiftY;
        const ChunkSource row = {source.pY + y * source.strideY, source.pU + yChroma * source.strideU,
                                 L::interleaved ? nullptr : source.pV + yChroma * source.strideV,
                                 source.pA ? source.pA + y * source.strideA : nullptr};
        ConvertRow<L>(row, static_cast<std::size_t>(source.width), factors, arithmetic, pTarget + y * strideTarget);
    }
}

template <bool kWords>
void ConvertSamples(const YuvPicture& source, const YuvArithmetic& arithmetic, std::uint8_t* pTarget,
                    std::ptrdiff_t strideTarget)
{
    if (source.chromaShiftX == 1)
    {
        if (source.interleavedChroma)
            ConvertPicture<Layout<kWords, true, true>>(source, arithmetic, pTarget, strideTarget);
        else
            ConvertPicture<Layout<kWords, true, false>>(source, arithmetic, pTarget, strideTarget);
    }
    else if (source.interleavedChroma)
        ConvertPicture<Layout<kWords, false, true>>(source, arithmetic, pTarget, strideTarget);
    else
        ConvertPicture<Layout<kWords, false, false>>(source, arithmetic, pTarget, strideTarget);
}

void Convert(const YuvPicture& source, const YuvArithmetic& arithmetic, std::uint8_t* pTarget,
             std::ptrdiff_t strideTarget)
{
    if (source.bitDepth > 8)
        ConvertSamples<true>(source, arithmetic, pTarget, strideTarget);
    else
        ConvertSamples<false>(source, arithmetic, pTarget, strideTarget);
}
#endif // HWY_SCALAR
} // namespace HWY_NAMESPACE
} // namespace qmx::kernels
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qmx::kernels
{
HWY_EXPORT(Convert);

bool ConvertYuvToBgra(const YuvPicture& source, std::uint8_t* pTarget, std::ptrdiff_t strideTarget)
{
    if (!IsReadable(source, pTarget, strideTarget))
        return false;
    HWY_DYNAMIC_DISPATCH(Convert)(source, MakeYuvArithmetic(source), pTarget, strideTarget);
    return true;
}
} // namespace qmx::kernels
#endif
