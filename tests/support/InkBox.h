/// @file InkBox.h
/// Where a picture has something to show.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>

namespace test_support
{
/// Edges of the pixels that count; right and bottom lie outside. Empty where none does.
struct InkBox
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    bool IsEmpty() const { return right <= left; }
    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool operator==(const InkBox&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const InkBox& box)
{
    return out << box.left << "," << box.top << " to " << box.right << "," << box.bottom;
}

/// A pixel, bytes B, G, R, A.
using PixelTest = std::function<bool(const std::uint8_t* pPixel)>;

/// Box of the pixels that @p counts is true for. @param pPixels  BGRA rows, @p pitch bytes apart
inline InkBox FindInk(const std::uint8_t* pPixels, std::size_t pitch, int width, int height, const PixelTest& counts)
{
    InkBox box{width, height, 0, 0};
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            if (!counts(pPixels + static_cast<std::size_t>(y) * pitch + static_cast<std::size_t>(x) * 4))
                continue;
            box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1),
                   std::max(box.bottom, y + 1)};
        }
    }
    return box.IsEmpty() ? InkBox{} : box;
}

/// Counts what is at least half there, so that smoothed rims of less than half a pixel do not widen the box.
inline bool IsHalfThere(const std::uint8_t* pPixel)
{
    return pPixel[3] >= 128;
}
inline bool IsThere(const std::uint8_t* pPixel)
{
    return pPixel[3] != 0;
}

/// Whether an edge that was found lies within a pixel of where it belongs.
inline testing::AssertionResult IsWithinAPixel(int found, double expected)
{
    if (std::abs(found - expected) <= 1.0)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "at " << found << ", expected " << expected;
}
} // namespace test_support
