/// @file PixelRect.h
/// Rectangles of whole pixels.
#pragma once

#include <algorithm>

namespace pal
{
/// Right and bottom lie outside. Every rectangle without pixels is as good as another.
struct PixelRect
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    bool IsEmpty() const { return right <= left || bottom <= top; }
    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
};

/// What both hold.
inline PixelRect Common(const PixelRect& a, const PixelRect& b)
{
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
}

/// The smallest rectangle that holds both.
inline PixelRect Around(const PixelRect& a, const PixelRect& b)
{
    if (a.IsEmpty())
        return b;
    if (b.IsEmpty())
        return a;
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right), std::max(a.bottom, b.bottom)};
}
} // namespace pal
