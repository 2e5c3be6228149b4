/// @file TestImage.h
/// BGRA pictures for the tests of the pixel utility library, and what scaling them should give.
#pragma once

#include "engine/platform/SampleInfo.h"
#include "tests/companions/TestSeed.h"

#include <array>
#include <cstdint>
#include <vector>

using TestPixel = std::array<std::uint8_t, 4>; ///< B, G, R, A

/// A picture that owns its rows. Between the rows lies a gap that no operation may touch.
class TestImage
{
public:
    TestImage(std::uint32_t width, std::uint32_t height, std::uint32_t gap = 0);

    void FillRandomly(TestRandom& random);
    void Fill(const TestPixel& pixel);
    void Set(std::uint32_t x, std::uint32_t y, const TestPixel& pixel);
    TestPixel At(std::uint32_t x, std::uint32_t y) const;
    bool GapsAreUntouched() const;

    std::uint32_t Width() const { return m_info.nWidth; }
    std::uint32_t Height() const { return m_info.nHeight; }
    /// Descriptor of the picture; a copy may be changed freely.
    tagSampleInfo Info() const { return m_info; }
    const std::vector<std::uint8_t>& Bytes() const { return m_bytes; }

private:
    std::vector<std::uint8_t> m_bytes;
    tagSampleInfo m_info;
};

/// Turned clockwise, pixel by pixel.
TestImage Turned(const TestImage& source, std::uint32_t angle);

/// One axis of the exact scaling: the share of every source sample in output sample @p index.
/// @param area  mean of what the output sample covers when it shrinks; else linear between the two nearest centres
std::vector<double> ExactShares(std::uint32_t source, std::uint32_t target, std::uint32_t index, bool area);

/// Largest distance of @p actual from the exact scaling of @p source.
double WorstScalingError(const TestImage& source, const TestImage& actual, bool area);
