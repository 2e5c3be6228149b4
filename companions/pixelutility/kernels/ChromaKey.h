/// @file ChromaKey.h
/// A soft chroma key over rows of BGRA pixels.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qmx::kernels
{
/// What one level of each channel adds to a coordinate of the chroma plane.
struct ChromaAxis
{
    float blue = 0;
    float green = 0;
    float red = 0;
};

/// The key, made ready for the pixels. With Cb and Cr of a colour by Rec. ITU-R BT.709 from levels / 255 (each -0.5 to
/// 0.5, black, white and grey at 0), turned so that the key lies on the first axis:
///
///   distance = |(along, across) - key's (along, across)|
///   kept     = clamp((distance - similarity) / smoothness, 0, 1)
///   excess   = spill * max(0, along)
///
/// The ramp is linear because the colour of a pixel on an edge is a mix, and so its distance grows with its share of
/// the foreground. The spill pass takes the excess away along the key's direction and leaves the luma as it is.
/// Levels are rounded to the nearest, halves to the even one.
struct ChromaKeyRule
{
    ChromaAxis along; ///< towards the key colour; of a key that has no direction, Cb
    ChromaAxis across;
    float keyAlong = 0; ///< the key's coordinates, as the pixels' own are computed
    float keyAcross = 0;
    float similarity = 0;
    float slope = 0;     ///< 1 / smoothness
    float spillBlue = 0; ///< levels that a pixel loses for each unit along; 0 for a grey key: it has no spill
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
} // namespace qmx::kernels
