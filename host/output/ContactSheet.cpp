#include "host/output/ContactSheet.h"

#include "host/output/TimeLabel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>

namespace qmx::host
{
namespace
{
constexpr std::uint32_t kGap = 12;         // pixels around every cell
constexpr std::uint32_t kLabelGap = 4;     // pixels between a picture and its time
constexpr std::uint32_t kCellMinimum = 96; // pixels; wide enough for the label of an hour
constexpr std::uint32_t kPaper = 0xFF202020U;

/// A side of a picture when its longer side becomes kMaxPictureSide, if it is longer than that.
std::uint32_t SmallSide(std::uint32_t side, std::uint32_t longer)
{
    if (longer <= ContactSheet::kMaxPictureSide)
        return side;
    const double scaled = std::round(static_cast<double>(side) * ContactSheet::kMaxPictureSide / longer);
    return std::max(1U, static_cast<std::uint32_t>(scaled));
}

/// Mean of the pixels of @p from, rounded to the nearest.
std::uint32_t MeanOf(const Canvas& source, const PixelBox& from)
{
    std::array<std::uint64_t, 4> sum{};
    for (std::int32_t y = from.top; y < from.bottom; ++y)
    {
        const std::uint8_t* p = source.Row(static_cast<std::uint32_t>(y)) + static_cast<std::size_t>(from.left) * 4;
        for (std::int32_t x = from.left; x < from.right; ++x)
        {
            for (std::uint64_t& channel : sum)
                channel += *p++;
        }
    }
    const auto count = static_cast<std::uint64_t>(from.Width()) * static_cast<std::uint64_t>(from.Height());
    std::uint32_t pixel = 0;
    for (std::size_t i = 0; i < sum.size(); ++i)
        pixel |= static_cast<std::uint32_t>((sum[i] + count / 2) / count) << (8 * i);
    return pixel;
}
} // namespace

ContactSheet::ContactSheet(std::uint32_t columns, std::uint32_t rows, std::uint32_t width, std::uint32_t height)
    : m_columns(columns), m_rows(rows), m_pictureWidth(SmallSide(width, std::max(width, height))),
      m_pictureHeight(SmallSide(height, std::max(width, height))), m_cellWidth(std::max(kCellMinimum, m_pictureWidth)),
      m_cellHeight(m_pictureHeight + kLabelGap + static_cast<std::uint32_t>(kLabelHeight)),
      m_page(columns * (m_cellWidth + kGap) + kGap, rows * (m_cellHeight + kGap) + kGap)
{
    for (std::uint32_t y = 0; y < m_page.Height(); ++y)
    {
        for (std::uint32_t x = 0; x < m_page.Width(); ++x)
            std::memcpy(m_page.Row(y) + std::size_t{x} * 4, &kPaper, 4);
    }
}

void ContactSheet::SetCell(std::uint32_t index, const Canvas& picture, std::uint64_t time)
{
    const std::uint32_t left = kGap + index % m_columns * (m_cellWidth + kGap);
    const std::uint32_t top = kGap + index / m_columns * (m_cellHeight + kGap);
    const auto x = static_cast<std::int32_t>(left + (m_cellWidth - m_pictureWidth) / 2);
    const auto y = static_cast<std::int32_t>(top);
    const PixelBox box{x, y, x + static_cast<std::int32_t>(m_pictureWidth),
                       y + static_cast<std::int32_t>(m_pictureHeight)};
    Shrink(picture, m_page, box);
    const std::string label = LabelText(time);
    const std::int32_t margin = (static_cast<std::int32_t>(m_cellWidth) - LabelWidth(label)) / 2;
    DrawLabel(m_page, label, static_cast<std::int32_t>(left) + margin,
              box.bottom + static_cast<std::int32_t>(kLabelGap));
}

void Shrink(const Canvas& source, Canvas& target, const PixelBox& box)
{
    // Edges are cut at whole source pixels; at thumbnail size the difference cannot be seen.
    const auto edge = [](std::int32_t i, std::uint32_t from, std::int32_t to)
    { return static_cast<std::int32_t>(static_cast<std::int64_t>(i) * from / to); };
    for (std::int32_t y = 0; y < box.Height(); ++y)
    {
        std::uint8_t* p = target.Row(static_cast<std::uint32_t>(box.top + y)) + static_cast<std::size_t>(box.left) * 4;
        for (std::int32_t x = 0; x < box.Width(); ++x, p += 4)
        {
            const PixelBox from{edge(x, source.Width(), box.Width()), edge(y, source.Height(), box.Height()),
                                edge(x + 1, source.Width(), box.Width()), edge(y + 1, source.Height(), box.Height())};
            const std::uint32_t pixel = MeanOf(source, from);
            std::memcpy(p, &pixel, 4);
        }
    }
}
} // namespace qmx::host
