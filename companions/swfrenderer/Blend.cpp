#include "companions/swfrenderer/Blend.h"

#include "companions/swfrenderer/Parallel.h"

namespace swf
{
namespace
{
/// Of straight channels 0..1, backdrop first.
template <BlendMode mode> float MixChannel(float d, float s)
{
    if constexpr (mode == BlendMode::Multiply)
        return d * s;
    else if constexpr (mode == BlendMode::Screen)
        return d + s - d * s;
    else if constexpr (mode == BlendMode::Lighten)
        return std::max(d, s);
    else if constexpr (mode == BlendMode::Darken)
        return std::min(d, s);
    else if constexpr (mode == BlendMode::Difference)
        return d > s ? d - s : s - d;
    else if constexpr (mode == BlendMode::Overlay)
        return d <= 0.5F ? 2 * d * s : 1 - 2 * (1 - d) * (1 - s);
    else
        return s <= 0.5F ? 2 * d * s : 1 - 2 * (1 - d) * (1 - s);
}

/// v / 255 rounded, for 0..65,535.
constexpr int Div255(int v)
{
    return (v + 128 + ((v + 128) >> 8)) >> 8;
}

/// The same of levels 0..255 of two opaque pixels.
template <BlendMode mode> int MixLevel(int d, int s)
{
    const auto hard = [](int top, int other)
    {
        const bool dark = 2 * top <= 255;
        const int product = Div255(2 * (dark ? top : 255 - top) * (dark ? other : 255 - other));
        return dark ? product : 255 - product;
    };
    if constexpr (mode == BlendMode::Multiply)
        return Div255(d * s);
    else if constexpr (mode == BlendMode::Screen)
        return 255 - Div255((255 - d) * (255 - s));
    else if constexpr (mode == BlendMode::Lighten)
        return std::max(d, s);
    else if constexpr (mode == BlendMode::Darken)
        return std::min(d, s);
    else if constexpr (mode == BlendMode::Difference)
        return d > s ? d - s : s - d;
    else if constexpr (mode == BlendMode::Overlay)
        return hard(d, s);
    else
        return hard(s, d);
}

template <class Function> std::uint32_t ByChannel(std::uint32_t s, std::uint32_t d, const Function& function)
{
    std::uint32_t out = 0;
    for (int shift = 0; shift < 32; shift += 8)
        out |= function(static_cast<int>(s >> shift & 255), static_cast<int>(d >> shift & 255), shift == 24) << shift;
    return out;
}

template <BlendMode mode> std::uint32_t BlendSeparable(std::uint32_t s, std::uint32_t d)
{
    if ((s & d) >> 24 == 255)
        return ByChannel(s, d,
                         [](int cs, int cd, bool isAlpha)
                         { return isAlpha ? 255U : static_cast<std::uint32_t>(MixLevel<mode>(cd, cs)); });
    const float a = static_cast<float>(s >> 24) / 255, b = static_cast<float>(d >> 24) / 255;
    if (a == 0)
        return d;
    if (b == 0)
        return s;
    return ByChannel(s, d,
                     [&](int cs, int cd, bool isAlpha)
                     {
                         const float fs = static_cast<float>(cs) / 255, fd = static_cast<float>(cd) / 255;
                         const float mixed =
                             isAlpha ? a + b - a * b
                                     : fs * (1 - b) + fd * (1 - a) +
                                           a * b * MixChannel<mode>(std::min(1.0F, fd / b), std::min(1.0F, fs / a));
                         return static_cast<std::uint32_t>(std::clamp(mixed, 0.0F, 1.0F) * 255 + 0.5F);
                     });
}

template <BlendMode mode> std::uint32_t BlendPixel(std::uint32_t s, std::uint32_t d)
{
    const std::uint32_t alpha = s >> 24;
    if constexpr (mode == BlendMode::Normal)
        return Over(s, d);
    else if constexpr (mode == BlendMode::Add)
        return ByChannel(s, d, [](int cs, int cd, bool) { return static_cast<std::uint32_t>(std::min(255, cs + cd)); });
    else if constexpr (mode == BlendMode::Subtract)
        return ByChannel(s, d,
                         [](int cs, int cd, bool isAlpha)
                         { return static_cast<std::uint32_t>(isAlpha ? std::max(cs, cd) : std::max(0, cd - cs)); });
    else if constexpr (mode == BlendMode::Invert)
    {
        const std::uint32_t b = d >> 24;
        const std::uint32_t inverted = (b << 16 | b << 8 | b) - (d & 0xFFFFFF); // premultiplied: no channel borrows
        return (ScalePixel(inverted, alpha) + ScalePixel(d & 0xFFFFFF, 255 - alpha)) | b << 24;
    }
    else if constexpr (mode == BlendMode::Alpha)
        return ScalePixel(d, alpha);
    else if constexpr (mode == BlendMode::Erase)
        return ScalePixel(d, 255 - alpha);
    else
        return BlendSeparable<mode>(s, d);
}

/// @param pLevel  a mask's; may be null
template <BlendMode mode>
void BlendRow(const std::uint32_t* pSource, const std::uint8_t* pLevel, int n, std::uint32_t* pTarget)
{
    for (int x = 0; x < n; ++x)
    {
        const std::uint32_t level = pLevel ? pLevel[x] : 255;
        if (pSource[x] == 0 || level == 0)
            continue;
        const std::uint32_t mixed = BlendPixel<mode>(pSource[x], pTarget[x]);
        pTarget[x] = level == 255 ? mixed : ScalePixel(mixed, level) + ScalePixel(pTarget[x], 255 - level);
    }
}

using RowFunction = void (*)(const std::uint32_t*, const std::uint8_t*, int, std::uint32_t*);

RowFunction RowFunctionOf(BlendMode mode)
{
    switch (mode)
    {
    case BlendMode::Normal:
    case BlendMode::Layer:
        break;
    case BlendMode::Multiply:
        return BlendRow<BlendMode::Multiply>;
    case BlendMode::Screen:
        return BlendRow<BlendMode::Screen>;
    case BlendMode::Lighten:
        return BlendRow<BlendMode::Lighten>;
    case BlendMode::Darken:
        return BlendRow<BlendMode::Darken>;
    case BlendMode::Difference:
        return BlendRow<BlendMode::Difference>;
    case BlendMode::Add:
        return BlendRow<BlendMode::Add>;
    case BlendMode::Subtract:
        return BlendRow<BlendMode::Subtract>;
    case BlendMode::Invert:
        return BlendRow<BlendMode::Invert>;
    case BlendMode::Alpha:
        return BlendRow<BlendMode::Alpha>;
    case BlendMode::Erase:
        return BlendRow<BlendMode::Erase>;
    case BlendMode::Overlay:
        return BlendRow<BlendMode::Overlay>;
    case BlendMode::HardLight:
        return BlendRow<BlendMode::HardLight>;
    }
    return BlendRow<BlendMode::Normal>;
}
} // namespace

void BlendPicture(BlendMode mode, const Surface& source, const Mask* pMask, const Area& clip, Surface& target)
{
    if (clip.IsEmpty())
        return;
    const auto rows = static_cast<std::uint32_t>(clip.Height());
    const RowFunction blendRow = RowFunctionOf(mode);
    ForEachBand(rows, BandCount(rows, clip.Pixels()),
                [&](std::uint32_t, std::uint32_t first, std::uint32_t end)
                {
                    for (int y = clip.top + static_cast<int>(first); y < clip.top + static_cast<int>(end); ++y)
                        blendRow(source.At(clip.left, y), pMask ? pMask->At(clip.left, y) : nullptr, clip.Width(),
                                 target.At(clip.left, y));
                });
}
} // namespace swf
