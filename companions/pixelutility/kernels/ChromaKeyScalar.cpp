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
float CbOf(const Pixel& p)
{
    return p.blue * ChromaWeights::cbBlue + p.green * ChromaWeights::cbGreen + p.red * ChromaWeights::cbRed;
}

float CrOf(const Pixel& p)
{
    return p.blue * ChromaWeights::crBlue + p.green * ChromaWeights::crGreen + p.red * ChromaWeights::crRed;
}

float Level(float value)
{
    return std::min(std::max(value, 0.0F), 255.0F);
}

std::uint8_t Rounded(float value)
{
    return static_cast<std::uint8_t>(value + 0.5F);
}

void KeyPixel(const ChromaKeyRule& rule, std::uint8_t* p, const std::uint8_t* pBackground)
{
    Pixel pixel{static_cast<float>(p[0]), static_cast<float>(p[1]), static_cast<float>(p[2])};
    const float cb = CbOf(pixel);
    const float cr = CrOf(pixel);
    const float fromCb = cb - rule.keyCb;
    const float fromCr = cr - rule.keyCr;
    const float distance = std::sqrt(fromCb * fromCb + fromCr * fromCr);
    const float kept = std::min(std::max((distance - rule.similarity) * rule.slope, 0.0F), 1.0F);
    const float along = std::max(cb * rule.directionCb + cr * rule.directionCr, 0.0F);
    pixel.blue = Level(pixel.blue - along * rule.spillBlue);
    pixel.green = Level(pixel.green - along * rule.spillGreen);
    pixel.red = Level(pixel.red - along * rule.spillRed);

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
        return Rounded(level + (front - level) * share);
    };
    p[0] = mix(pixel.blue, pBackground[0]);
    p[1] = mix(pixel.green, pBackground[1]);
    p[2] = mix(pixel.red, pBackground[2]);
    p[3] = 255;
}
} // namespace

ChromaKeyRule MakeChromaKeyRule(const std::uint8_t* pKeyColor, double similarity, double smoothness, double spill)
{
    const Pixel key{static_cast<float>(pKeyColor[0]), static_cast<float>(pKeyColor[1]),
                    static_cast<float>(pKeyColor[2])};
    ChromaKeyRule rule;
    rule.keyCb = CbOf(key);
    rule.keyCr = CrOf(key);
    rule.similarity = UnitRange(similarity);
    // Without a ramp the first distance above the similarity is kept fully.
    rule.slope = 1.0F / std::max(UnitRange(smoothness), 1e-9F);
    const float length = std::hypot(rule.keyCb, rule.keyCr);
    constexpr float kGrey = 0.5F / 255.0F; // half a level: less is rounding
    if (length > kGrey)
    {
        rule.directionCb = rule.keyCb / length;
        rule.directionCr = rule.keyCr / length;
        // One unit of Cb is 2 (1 - Kb) of blue, one of Cr is 2 (1 - Kr) of red; green keeps the luma where it is.
        const double levels = 255.0 * UnitRange(spill);
        const double blue = 2.0 * (1.0 - ChromaWeights::kBlue) * rule.directionCb;
        const double red = 2.0 * (1.0 - ChromaWeights::kRed) * rule.directionCr;
        const double green = -(ChromaWeights::kBlue * blue + ChromaWeights::kRed * red) / ChromaWeights::kGreen;
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
