#include "companions/pixelutility/kernels/ChromaKey.h"

#include <algorithm>
#include <cmath>

namespace qmx::kernels
{
namespace
{
float UnitRange(double value)
{
    return value > 0.0 ? static_cast<float>(std::min(value, 1.0)) : 0.0F; // false for what is no number
}

struct Pixel
{
    float blue;
    float green;
    float red;
};

// Sums in the order of the kernel's: floating-point sums depend on it.
float On(const ChromaAxis& axis, const Pixel& p)
{
    return p.blue * axis.blue + p.green * axis.green + p.red * axis.red;
}

float Level(float value)
{
    return std::min(std::max(value, 0.0F), 255.0F);
}

/// To the nearest, halves to the even one; what lies outside a byte is cut.
std::uint8_t Rounded(float level)
{
    return static_cast<std::uint8_t>(std::clamp(std::nearbyint(level), 0.0F, 255.0F));
}

void KeyPixel(const ChromaKeyRule& rule, std::uint8_t* p, const std::uint8_t* pBackground)
{
    Pixel pixel{static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])};
    const float along = On(rule.along, pixel);
    const float fromAlong = along - rule.keyAlong;
    const float fromAcross = On(rule.across, pixel) - rule.keyAcross;
    const float distance = std::sqrt(fromAlong * fromAlong + fromAcross * fromAcross);
    const float kept = std::min(std::max((distance - rule.similarity) * rule.slope, 0.0F), 1.0F);
    const float excess = std::max(along, 0.0F);
    pixel.blue -= excess * rule.spillBlue;
    pixel.green -= excess * rule.spillGreen;
    pixel.red -= excess * rule.spillRed;

    const float alpha = static_cast<float>(p[3]) * kept;
    if (!pBackground)
    {
        p[0] = Rounded(pixel.blue);
        p[1] = Rounded(pixel.green);
        p[2] = Rounded(pixel.red);
        p[3] = Rounded(alpha);
        return;
    }
    const float share = alpha * (1.0F / 255.0F);
    const auto mix = [share](float front, std::uint8_t back)
    {
        const auto level = static_cast<float>(back);
        return Rounded(level + (Level(front) - level) * share);
    };
    p[0] = mix(pixel.blue, pBackground[0]);
    p[1] = mix(pixel.green, pBackground[1]);
    p[2] = mix(pixel.red, pBackground[2]);
    p[3] = 255;
}

// Luma weights of Rec. ITU-R BT.709.
constexpr double kRed = 0.2126;
constexpr double kBlue = 0.0722;
constexpr double kGreen = 1.0 - kRed - kBlue;

/// @p cb Cb + @p cr Cr
ChromaAxis AxisOf(double cb, double cr)
{
    const double ofCb = cb * 0.5 / (1.0 - kBlue) / 255.0;
    const double ofCr = cr * 0.5 / (1.0 - kRed) / 255.0;
    return {static_cast<float>(ofCb * (1.0 - kBlue) - ofCr * kBlue), static_cast<float>(-(ofCb + ofCr) * kGreen),
            static_cast<float>(ofCr * (1.0 - kRed) - ofCb * kRed)};
}
} // namespace

ChromaKeyRule MakeChromaKeyRule(const std::uint8_t* pKeyColor, double similarity, double smoothness, double spill)
{
    const Pixel key{static_cast<float>(pKeyColor[0]), static_cast<float>(pKeyColor[1]),
                    static_cast<float>(pKeyColor[2])};
    const double cb = On(AxisOf(1, 0), key);
    const double cr = On(AxisOf(0, 1), key);
    const double length = std::hypot(cb, cr);
    constexpr double kGrey = 0.5 / 255.0; // half a level: less is rounding
    const bool isGrey = length <= kGrey;
    const double directionCb = isGrey ? 1 : cb / length;
    const double directionCr = isGrey ? 0 : cr / length;

    ChromaKeyRule rule;
    rule.along = AxisOf(directionCb, directionCr);
    rule.across = AxisOf(-directionCr, directionCb);
    rule.keyAlong = On(rule.along, key);
    rule.keyAcross = On(rule.across, key);
    rule.similarity = UnitRange(similarity);
    // Without a ramp the first distance above the similarity is kept fully.
    rule.slope = 1.0F / std::max(UnitRange(smoothness), 1e-9F);
    if (!isGrey)
    {
        // One unit of Cb is 2 (1 - Kb) of blue, one of Cr is 2 (1 - Kr) of red; green keeps the luma where it is.
        const double levels = 255.0 * UnitRange(spill);
        const double blue = 2.0 * (1.0 - kBlue) * directionCb;
        const double red = 2.0 * (1.0 - kRed) * directionCr;
        const double green = -(kBlue * blue + kRed * red) / kGreen;
        rule.spillBlue = static_cast<float>(levels * blue);
        rule.spillGreen = static_cast<float>(levels * green);
        rule.spillRed = static_cast<float>(levels * red);
    }
    return rule;
}

void KeyBgraScalar(const ChromaKeyRule& rule, std::uint8_t* pPixels, const std::uint8_t* pBackground, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        KeyPixel(rule, pPixels + i * 4, pBackground ? pBackground + i * 4 : nullptr);
}
} // namespace qmx::kernels
