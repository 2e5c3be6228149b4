/// @file Canvas.h
/// The picture that a project's tracks are drawn into.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace qmx::host
{
/// A rectangle of pixels; right and bottom are outside.
struct PixelBox
{
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;

    constexpr std::int32_t Width() const { return right - left; }
    constexpr std::int32_t Height() const { return bottom - top; }
    constexpr bool IsEmpty() const { return right <= left || bottom <= top; }
    constexpr bool Covers(const PixelBox& o) const
    {
        return left <= o.left && top <= o.top && right >= o.right && bottom >= o.bottom;
    }
    friend constexpr bool operator==(const PixelBox&, const PixelBox&) = default;
};

/// BGRA, 8 bits each, rows from the top and tight. Memory is taken once and the pixels start out unspecified.
class Canvas
{
public:
    /// @throw std::bad_alloc
    Canvas(std::uint32_t width, std::uint32_t height)
        : m_width(width), m_height(height),
          m_pPixels(static_cast<std::uint8_t*>(::operator new (ByteCount(), std::align_val_t{kAlignment})))
    {
    }

    std::uint32_t Width() const { return m_width; }
    std::uint32_t Height() const { return m_height; }
    PixelBox Bounds() const { return {0, 0, static_cast<std::int32_t>(m_width), static_cast<std::int32_t>(m_height)}; }
    std::size_t Stride() const { return std::size_t{m_width} * 4; } ///< bytes
    std::size_t ByteCount() const { return Stride() * m_height; }
    std::uint8_t* Row(std::uint32_t y) { return m_pPixels.get() + y * Stride(); }
    const std::uint8_t* Row(std::uint32_t y) const { return m_pPixels.get() + y * Stride(); }

private:
    static constexpr std::size_t kAlignment = 64;
    struct Deleter
    {
        void operator()(std::uint8_t* p) const { ::operator delete (p, std::align_val_t{kAlignment}); }
    };

    std::uint32_t m_width;
    std::uint32_t m_height;
    std::unique_ptr<std::uint8_t, Deleter> m_pPixels;
};
} // namespace qmx::host
