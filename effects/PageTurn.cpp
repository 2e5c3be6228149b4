// The from picture is a page that is rolled up over a cylinder, from the right to the left. The axis stands upright, so
// that what shows depends on the column alone.
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
constexpr float kPi = 3.14159265358979F;
constexpr std::uint8_t kBlack[] = {0, 0, 0, 255};
constexpr std::uint8_t kPaper[] = {255, 255, 255, 255};
constexpr std::uint32_t kPaperWeight = 176; // how far the back of the page hides the picture on its front

enum class Layer
{
    Front,
    Back,
    To
};

struct Column
{
    Layer layer = Layer::To;
    std::uint32_t first = 0;  ///< column of the page
    std::uint32_t second = 0; ///< its neighbour
    std::uint32_t weight = 0; ///< of the second
    std::uint32_t shade = 0;  ///< weight of black
};

Column PageColumn(Layer layer, float place, std::uint32_t width, float shade)
{
    const float clamped = std::clamp(place - 0.5F, 0.0F, static_cast<float>(width - 1));
    const auto first = static_cast<std::uint32_t>(clamped);
    return {layer, first, std::min(first + 1, width - 1), WeightOf(clamped - static_cast<float>(first)),
            WeightOf(shade)};
}

/// What shows at @p x. The page leaves the plane at @p fold and is rolled over a cylinder of @p radius.
Column ColumnAt(float x, float fold, float radius, std::uint32_t width)
{
    const auto end = static_cast<float>(width); // of the page
    if (x < fold)
    {
        // The part that lies over, face down, hides the page below.
        const float over = fold + kPi * radius + (fold - x);
        return over <= end ? PageColumn(Layer::Back, over, width, 0) : PageColumn(Layer::Front, x, width, 0);
    }
    const float beyond = (x - fold) / radius;
    if (beyond < 1)
    {
        const float angle = std::asin(beyond);
        if (const float upper = fold + radius * (kPi - angle); upper <= end)
            return PageColumn(Layer::Back, upper, width, 0.45F * beyond);
        if (const float lower = fold + radius * angle; lower <= end)
            return PageColumn(Layer::Front, lower, width, 0.45F * beyond);
    }
    // The roll throws a shadow on what comes to light; it fades with the roll at the end.
    const float depth = std::clamp(1 - (x - fold - radius) / (2 * radius), 0.0F, 1.0F);
    const float height = std::clamp((end - fold) / radius, 0.0F, 1.0F) * std::clamp(1 + fold / radius, 0.0F, 1.0F);
    Column column;
    column.shade = WeightOf(0.4F * depth * height);
    return column;
}

void Shade(std::uint8_t* pPixel, std::uint32_t weight)
{
    const std::uint8_t black[] = {kBlack[0], kBlack[1], kBlack[2], pPixel[3]}; // what is not there stays so
    MixPixel(pPixel, pPixel, black, weight);
}
} // namespace

void PageTurn(const EffectPictures& pictures, float progress)
{
    const auto width = static_cast<float>(pictures.width);
    const float radius = std::max(width / 12, 1.0F);
    const float fold = width - progress * (width + radius);
    thread_local std::vector<Column> columns;
    columns.resize(pictures.width);
    for (std::uint32_t x = 0; x < pictures.width; ++x)
        columns[x] = ColumnAt(static_cast<float>(x) + 0.5F, fold, radius, pictures.width);
    for (std::uint32_t y = 0; y < pictures.height; ++y)
    {
        const std::uint8_t* const pPage = pictures.FromRow(y);
        const std::uint8_t* const pTo = pictures.ToRow(y);
        std::uint8_t* pPixel = pictures.OutputRow(y);
        for (std::uint32_t x = 0; x < pictures.width; ++x, pPixel += 4)
        {
            const Column& column = columns[x];
            if (column.layer == Layer::To)
                std::memcpy(pPixel, pTo + std::size_t{x} * 4, 4);
            else
                MixPixel(pPixel, pPage + std::size_t{column.first} * 4, pPage + std::size_t{column.second} * 4,
                         column.weight);
            if (column.layer == Layer::Back && pPixel[3] != 0)
                MixPixel(pPixel, pPixel, kPaper, kPaperWeight);
            if (column.shade != 0)
                Shade(pPixel, column.shade);
        }
    }
}
} // namespace qmx::effects
