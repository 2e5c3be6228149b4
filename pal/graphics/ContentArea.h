/// @file ContentArea.h
/// The part of a picture that may be something else than transparent.
#pragma once

#include "pal/graphics/PixelRect.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace pal
{
/// A few rectangles that hold all content of a picture. Texts lie apart from each other: one rectangle around them
/// would be most of the picture. Rectangles may overlap a little, never so much that one around both would be smaller.
class ContentArea
{
public:
    static constexpr std::size_t kMaxRects = 8; ///< more are joined where that adds least

    void Add(PixelRect rect)
    {
        if (rect.IsEmpty())
            return;
        // Joined with one, a rectangle may have become a neighbour of others.
        for (std::size_t i = 0; i < m_count;)
        {
            const PixelRect both = Around(m_rects[i], rect);
            if (AreaOf(both) > AreaOf(m_rects[i]) + AreaOf(rect))
            {
                ++i;
                continue;
            }
            rect = both;
            m_rects[i] = m_rects[--m_count];
            i = 0;
        }
        if (m_count < kMaxRects)
        {
            m_rects[m_count++] = rect;
            return;
        }
        const auto growth = [&rect](const PixelRect& other) { return AreaOf(Around(other, rect)) - AreaOf(other); };
        PixelRect* const pLeast =
            std::min_element(m_rects.data(), m_rects.data() + m_count,
                             [&growth](const PixelRect& a, const PixelRect& b) { return growth(a) < growth(b); });
        const PixelRect both = Around(*pLeast, rect);
        *pLeast = m_rects[--m_count];
        Add(both);
    }
    void Add(const ContentArea& other)
    {
        for (const PixelRect& rect : other)
            Add(rect);
    }

    const PixelRect* begin() const { return m_rects.data(); }
    const PixelRect* end() const { return m_rects.data() + m_count; }

private:
    static std::int64_t AreaOf(const PixelRect& rect)
    {
        return static_cast<std::int64_t>(rect.Width()) * rect.Height();
    }

    std::array<PixelRect, kMaxRects> m_rects{};
    std::size_t m_count = 0;
};
} // namespace pal
