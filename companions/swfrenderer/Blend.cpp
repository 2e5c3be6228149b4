#include "companions/swfrenderer/Blend.h"

#include "companions/swfrenderer/Parallel.h"

namespace swf
{
namespace
{
/// Of straight channels 0..1, backdrop first.
float MixChannel(BlendMode mode, float d, float s)
{
    switch (mode)
    {
    case BlendMode::Multiply:
        return d * s;
    case BlendMode::Screen:
        return d + s - d * s;
    case BlendMode::Lighten:
        return std::max(d, s);
    case BlendMode::Darken:
        return std::min(d, s);
    case BlendMode::Difference:
        return d > s ? d - s : s - d;
    case BlendMode::Overlay:
        return d <= 0.5F ? 2 * d * s : 1 - 2 * (1 - d) * (1 - s);
    case BlendMode::HardLight:
        return s <= 0.5F ? 2 * d * s : 1 - 2 * (1 - d) * (1 - s);
    default:
        return s;
    }
}

template <class Function> std::uint32_t ByChannel(std::uint32_t s, std::uint32_t d, const Function& function)
{
    std::uint32_t out = 0;
    for (int shift = 0; shift < 32; shift += 8)
        out |= function(static_cast<int>(s >> shift & 255), static_cast<int>(d >> shift & 255), shift == 24) << shift;
    return out;
}

std::uint32_t BlendSeparable(BlendMode mode, std::uint32_t s, std::uint32_t d)
{
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
                                           a * b * MixChannel(mode, std::min(1.0F, fd / b), std::min(1.0F, fs / a));
                         return static_cast<std::uint32_t>(std::clamp(mixed, 0.0F, 1.0F) * 255 + 0.5F);
                     });
}

std::uint32_t BlendPixel(BlendMode mode, std::uint32_t s, std::uint32_t d)
{
    const std::uint32_t alpha = s >> 24;
    switch (mode)
    {
    case BlendMode::Normal:
    case BlendMode::Layer:
        return Over(s, d);
    case BlendMode::Add:
        return ByChannel(s, d, [](int cs, int cd, bool) { return static_cast<std::uint32_t>(std::min(255, cs + cd)); });
    case BlendMode::Subtract:
        return ByChannel(s, d,
                         [](int cs, int cd, bool isAlpha)
                         { return static_cast<std::uint32_t>(isAlpha ? std::max(cs, cd) : std::max(0, cd - cs)); });
    case BlendMode::Invert:
    {
        const std::uint32_t b = d >> 24;
        const std::uint32_t inverted = (b << 16 | b << 8 | b) - (d & 0xFFFFFF); // premultiplied: no channel borrows
        return (ScalePixel(inverted, alpha) + ScalePixel(d & 0xFFFFFF, 255 - alpha)) | b << 24;
    }
    case BlendMode::Alpha:
        return ScalePixel(d, alpha);
    case BlendMode::Erase:
        return ScalePixel(d, 255 - alpha);
    default:
        return BlendSeparable(mode, s, d);
    }
}
} // namespace

void BlendPicture(BlendMode mode, const Surface& source, const Mask* pMask, const Area& clip, Surface& target)
{
    if (clip.IsEmpty())
        return;
    const auto rows = static_cast<std::uint32_t>(clip.Height());
    ForEachBand(rows, BandCount(rows, clip.Pixels()),
                [&](std::uint32_t, std::uint32_t first, std::uint32_t end)
                {
                    for (int y = clip.top + static_cast<int>(first); y < clip.top + static_cast<int>(end); ++y)
                    {
                        const std::uint32_t* const pSource = source.At(clip.left, y);
                        const std::uint8_t* const pLevel = pMask ? pMask->At(clip.left, y) : nullptr;
                        std::uint32_t* const pTarget = target.At(clip.left, y);
                        for (int x = 0; x < clip.Width(); ++x)
                        {
                            if (pSource[x] == 0)
                                continue;
                            const std::uint32_t level = pLevel ? pLevel[x] : 255;
                            if (level == 0)
                                continue;
                            const std::uint32_t mixed = BlendPixel(mode, pSource[x], pTarget[x]);
                            pTarget[x] =
                                level == 255 ? mixed : ScalePixel(mixed, level) + ScalePixel(pTarget[x], 255 - level);
                        }
                    }
                });
}
} // namespace swf
