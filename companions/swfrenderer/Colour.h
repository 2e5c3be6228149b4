/// @file Colour.h
/// Colours and colour transforms.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace swf
{
/// Straight alpha.
struct Rgba
{
    std::uint8_t r = 0, g = 0, b = 0, a = 255;
    bool operator==(const Rgba&) const = default;
};

/// Each channel of a straight colour (r, g, b, a in 0..255) becomes clamp(channel * multiply + add).
struct ColourTransform
{
    std::array<float, 4> multiply{1, 1, 1, 1};
    std::array<float, 4> add{0, 0, 0, 0}; ///< levels, -255..255 and beyond where transforms add up

    bool operator==(const ColourTransform&) const = default;
    bool IsIdentity() const { return *this == ColourTransform{}; }
    /// True when nothing that is drawn through it can be seen.
    bool IsInvisible() const { return multiply[3] <= 0 && add[3] <= 0; }
    std::array<float, 4> Apply(std::array<float, 4> rgba) const
    {
        for (std::size_t i = 0; i < 4; ++i)
            rgba[i] = std::clamp(rgba[i] * multiply[i] + add[i], 0.0F, 255.0F);
        return rgba;
    }
    std::array<float, 4> Apply(Rgba c) const
    {
        return Apply(std::array<float, 4>{float(c.r), float(c.g), float(c.b), float(c.a)});
    }
};

/// The transform of an object inside one that has @p outer. No clamping between the two.
inline ColourTransform Inside(const ColourTransform& outer, const ColourTransform& inner)
{
    ColourTransform t;
    for (std::size_t i = 0; i < 4; ++i)
    {
        t.multiply[i] = outer.multiply[i] * inner.multiply[i];
        t.add[i] = outer.multiply[i] * inner.add[i] + outer.add[i];
    }
    return t;
}

/// Premultiplied B, G, R, A bytes as one little-endian number.
inline std::uint32_t Premultiplied(const std::array<float, 4>& rgba)
{
    const float a = rgba[3] / 255;
    const auto byte = [](float v) { return static_cast<std::uint32_t>(v + 0.5F); };
    return byte(rgba[2] * a) | byte(rgba[1] * a) << 8 | byte(rgba[0] * a) << 16 | byte(rgba[3]) << 24;
}
inline std::uint32_t Premultiplied(Rgba c)
{
    return Premultiplied(std::array<float, 4>{float(c.r), float(c.g), float(c.b), float(c.a)});
}
} // namespace swf
