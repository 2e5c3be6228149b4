#include "host/output/TimeLabel.h"

#include "host/project/Decimal.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace qmx::host
{
namespace
{
constexpr std::int32_t kScale = 2; // pixels for a dot of the shapes below
constexpr std::int32_t kColumns = 5;
constexpr std::int32_t kRows = 7;
constexpr std::int32_t kAdvance = (kColumns + 1) * kScale;
constexpr std::uint32_t kInk = 0xFFD8D8D8U;
static_assert(kRows * kScale == kLabelHeight);

/// Rows from the top, bit 4 is the leftmost dot.
using Shape = std::array<std::uint8_t, kRows>;
constexpr std::array<Shape, 10> kDigits{{
    {0b01110, 0b10001, 0b10001, 0b10001, 0b10001, 0b10001, 0b01110},
    {0b00100, 0b01100, 0b00100, 0b00100, 0b00100, 0b00100, 0b01110},
    {0b01110, 0b10001, 0b00001, 0b00110, 0b01000, 0b10000, 0b11111},
    {0b11110, 0b00001, 0b00001, 0b01110, 0b00001, 0b00001, 0b11110},
    {0b00010, 0b00110, 0b01010, 0b10010, 0b11111, 0b00010, 0b00010},
    {0b11111, 0b10000, 0b11110, 0b00001, 0b00001, 0b10001, 0b01110},
    {0b00110, 0b01000, 0b10000, 0b11110, 0b10001, 0b10001, 0b01110},
    {0b11111, 0b00001, 0b00010, 0b00100, 0b01000, 0b01000, 0b01000},
    {0b01110, 0b10001, 0b10001, 0b01110, 0b10001, 0b10001, 0b01110},
    {0b01110, 0b10001, 0b10001, 0b01111, 0b00001, 0b00010, 0b01100},
}};
constexpr Shape kColon{0, 0b00100, 0b00100, 0, 0b00100, 0b00100, 0};
constexpr Shape kPoint{0, 0, 0, 0, 0, 0b00110, 0b00110};
constexpr Shape kNothing{};

const Shape& ShapeOf(char c)
{
    if (c >= '0' && c <= '9')
        return kDigits[static_cast<std::size_t>(c - '0')];
    return c == ':' ? kColon : c == '.' ? kPoint : kNothing;
}

void DrawDot(Canvas& canvas, std::int32_t left, std::int32_t top)
{
    const PixelBox bounds = canvas.Bounds();
    for (std::int32_t y = top; y < top + kScale; ++y)
    {
        for (std::int32_t x = left; x < left + kScale; ++x)
        {
            if (x >= 0 && x < bounds.right && y >= 0 && y < bounds.bottom)
                std::memcpy(canvas.Row(static_cast<std::uint32_t>(y)) + static_cast<std::size_t>(x) * 4, &kInk, 4);
        }
    }
}
} // namespace

std::string LabelText(std::uint64_t time)
{
    const auto padded = [](std::uint64_t value, std::size_t digits)
    {
        const std::string text = std::to_string(value);
        return std::string(digits - std::min(digits, text.size()), '0') + text;
    };
    const std::uint64_t seconds = time / kTimePerSecond;
    return std::to_string(seconds / 60) + ':' + padded(seconds % 60, 2) + '.' +
           padded(time % kTimePerSecond / 10'000, 3);
}

std::int32_t LabelWidth(std::string_view text)
{
    return static_cast<std::int32_t>(text.size()) * kAdvance;
}

void DrawLabel(Canvas& canvas, std::string_view text, std::int32_t left, std::int32_t top)
{
    for (const char c : text)
    {
        const Shape& shape = ShapeOf(c);
        for (std::int32_t row = 0; row < kRows; ++row)
        {
            for (std::int32_t column = 0; column < kColumns; ++column)
            {
                if (shape[static_cast<std::size_t>(row)] >> (kColumns - 1 - column) & 1)
                    DrawDot(canvas, left + column * kScale, top + row * kScale);
            }
        }
        left += kAdvance;
    }
}
} // namespace qmx::host
