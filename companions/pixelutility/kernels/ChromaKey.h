/// @file ChromaKey.h
/// A soft chroma key over rows of BGRA pixels.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qmx::kernels
{
/// The key, made ready for the pixels. With Cb and Cr of a colour by Rec. ITU-R BT.709 from levels / 255 (each -0.5 to
/// 0.5, black, white and grey at 0):
///
///   distance = |(Cb, Cr) - key's (Cb, Cr)|
///   kept     = clamp((distance - similarity) / smoothness, 0, 1)
///   excess   = spill * max(0, (Cb, Cr) . key's direction)
///
/// The ramp is linear because the colour of a pixel on an edge is a mix, and so its distance grows with its share of
/// the foreground. The spill pass takes the excess away along the key's direction and leaves the luma as it is.
struct ChromaKeyRule
{
    float keyCb = 0;
    float keyCr = 0;
    float similarity = 0;
    float slope = 0;       ///< 1 / smoothness
    float directionCb = 0; ///< unit vector towards the key colour; 0, 0 for a grey key: it has no spill
    float directionCr = 0;
    float spillBlue = 0; ///< levels that a pixel loses for each unit of chroma in the key's direction
    float spillGreen = 0;
    float spillRed = 0;
};

/// @param pKeyColor  bytes B, G, R
/// @param similarity,smoothness,spill  taken into 0..1; what is no number counts as 0
ChromaKeyRule MakeChromaKeyRule(const std::uint8_t* pKeyColor, double similarity, double smoothness, double spill);

/// Keys @p count pixels in place.
/// @param pBackground  pixels that show through: the result is opaque, foreground * kept * alpha + background * rest
///                     (the background's own alpha is not looked at). Null: alpha becomes alpha * kept.
void KeyBgra(const ChromaKeyRule& rule, std::uint8_t* pPixels, const std::uint8_t* pBackground, std::size_t count);

/// The scalar twin: the same results.
void KeyBgraScalar(const ChromaKeyRule& rule, std::uint8_t* pPixels, const std::uint8_t* pBackground,
                   std::size_t count);

/// Weights that the kernel and its twin share: Cb and Cr of one level of each channel.
struct ChromaWeights
{
    static constexpr double kRed = 0.2126; ///< luma weights of Rec. ITU-R BT.709
    static constexpr double kBlue = 0.0722;
    static constexpr double kGreen = 1.0 - kRed - kBlue;
    static constexpr float cbBlue = static_cast<float>(0.5 / 255.0);
    static constexpr float cbGreen = static_cast<float>(-0.5 * kGreen / (1.0 - kBlue) / 255.0);
    static constexpr float cbRed = static_cast<float>(-0.5 * kRed / (1.0 - kBlue) / 255.0);
    static constexpr float crBlue = static_cast<float>(-0.5 * kBlue / (1.0 - kRed) / 255.0);
    static constexpr float crGreen = static_cast<float>(-0.5 * kGreen / (1.0 - kRed) / 255.0);
    static constexpr float crRed = static_cast<float>(0.5 / 255.0);
};
} // namespace qmx::kernels
