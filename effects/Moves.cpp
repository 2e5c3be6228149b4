// Pictures that move or grow.
#include "effects/Blend.h"
#include "effects/Effects.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace qmx::effects
{
namespace
{
constexpr std::uint8_t kBlack[] = {0, 0, 0, 255};

/// Whole pixels of a way of @p length.
std::uint32_t Distance(std::uint32_t length, float progress)
{
    return std::min(static_cast<std::uint32_t>(static_cast<float>(length) * progress + 0.5F), length);
}

/// Slow at both ends.
float Smooth(float share)
{
    return share * share * (3 - 2 * share);
}

/// Where one output column or row lies in a picture that is enlarged about its middle.
struct Sample
{
    std::uint32_t first;
    std::uint32_t second; ///< its neighbour, or itself at the border
    std::uint32_t weight; ///< of the second
};

Sample SampleAt(std::uint32_t index, std::uint32_t count, float zoom)
{
    const float middle = static_cast<float>(count) / 2;
    const float place = (static_cast<float>(index) + 0.5F - middle) / zoom + middle - 0.5F;
    const float clamped = std::clamp(place, 0.0F, static_cast<float>(count - 1));
    const auto first = static_cast<std::uint32_t>(clamped);
    return {first, std::min(first + 1, count - 1), WeightOf(clamped - static_cast<float>(first))};
}

/// An enlarged picture, row by row.
class ZoomedPicture
{
public:
    ZoomedPicture(const std::uint8_t* pPixels, std::uint32_t width, std::uint32_t height, float zoom)
        : m_pPixels(pPixels), m_height(height), m_zoom(zoom), m_columns(width), m_mixed(std::size_t{width} * 4),
          m_row(std::size_t{width} * 4)
    {
        for (std::uint32_t x = 0; x < width; ++x)
            m_columns[x] = SampleAt(x, width, zoom);
    }

    /// Valid until the next call.
    const std::uint8_t* Row(std::uint32_t y)
    {
        const Sample rows = SampleAt(y, m_height, m_zoom);
        const auto width = static_cast<std::uint32_t>(m_columns.size());
        MixRow(m_mixed.data(), m_pPixels + rows.first * m_row.size(), m_pPixels + rows.second * m_row.size(), width,
               rows.weight);
        for (std::uint32_t x = 0; x < width; ++x)
            MixPixel(&m_row[std::size_t{x} * 4], &m_mixed[std::size_t{m_columns[x].first} * 4],
                     &m_mixed[std::size_t{m_columns[x].second} * 4], m_columns[x].weight);
        return m_row.data();
    }

private:
    const std::uint8_t* m_pPixels;
    std::uint32_t m_height;
    float m_zoom;
    std::vector<Sample> m_columns;
    std::vector<std::uint8_t> m_mixed; ///< of two rows
    std::vector<std::uint8_t> m_row;
};
} // namespace

void PushAcross(const EffectPictures& pictures, float progress, bool toRight)
{
    const std::size_t entered = std::size_t{Distance(pictures.width, progress)} * 4;
    const std::size_t left = pictures.RowBytes() - entered;
    for (std::uint32_t y = 0; y < pictures.height; ++y)
    {
        std::uint8_t* const pOutput = pictures.OutputRow(y);
        if (toRight)
        {
            std::memcpy(pOutput, pictures.ToRow(y) + left, entered);
            std::memcpy(pOutput + entered, pictures.FromRow(y), left);
        }
        else
        {
            std::memcpy(pOutput, pictures.FromRow(y) + entered, left);
            std::memcpy(pOutput + left, pictures.ToRow(y), entered);
        }
    }
}

void PushAlong(const EffectPictures& pictures, float progress, bool down)
{
    const std::uint32_t entered = Distance(pictures.height, progress);
    const std::uint32_t left = pictures.height - entered;
    const std::size_t enteredBytes = entered * pictures.RowBytes();
    const std::size_t leftBytes = left * pictures.RowBytes();
    if (down)
    {
        std::memcpy(pictures.pOutput, pictures.ToRow(left), enteredBytes);
        std::memcpy(pictures.pOutput + enteredBytes, pictures.pFrom, leftBytes);
    }
    else
    {
        std::memcpy(pictures.pOutput, pictures.FromRow(entered), leftBytes);
        std::memcpy(pictures.pOutput + leftBytes, pictures.pTo, enteredBytes);
    }
}

void SlideOver(const EffectPictures& pictures, float progress)
{
    const std::uint32_t covered = Distance(pictures.width, Smooth(progress));
    const std::uint32_t edge = pictures.width - covered;
    const std::uint32_t shadow = std::min(edge, std::max(pictures.width / 40, 1U));
    for (std::uint32_t y = 0; y < pictures.height; ++y)
    {
        std::uint8_t* const pOutput = pictures.OutputRow(y);
        std::memcpy(pOutput, pictures.FromRow(y), std::size_t{edge} * 4);
        std::memcpy(pOutput + std::size_t{edge} * 4, pictures.ToRow(y), std::size_t{covered} * 4);
        // The picture on top throws a shadow that fades away from it.
        for (std::uint32_t i = 0; covered != 0 && i < shadow; ++i)
        {
            std::uint8_t* const pPixel = pOutput + std::size_t{edge - shadow + i} * 4;
            const std::uint8_t black[] = {kBlack[0], kBlack[1], kBlack[2], pPixel[3]}; // what is not there stays so
            MixPixel(pPixel, pPixel, black, 96 * (i + 1) / shadow);
        }
    }
}

void ZoomCross(const EffectPictures& pictures, float progress)
{
    const float way = Smooth(progress);
    ZoomedPicture from(pictures.pFrom, pictures.width, pictures.height, 1 + way);
    ZoomedPicture to(pictures.pTo, pictures.width, pictures.height, 2 - way);
    const std::uint32_t weight = WeightOf(way);
    for (std::uint32_t y = 0; y < pictures.height; ++y)
        MixRow(pictures.OutputRow(y), from.Row(y), to.Row(y), pictures.width, weight);
}
} // namespace qmx::effects
