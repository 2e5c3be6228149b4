// An edge that runs over the picture: before it the from picture shows, behind it the to picture.
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
constexpr float kSoftness = 1.0F / 16; // width of the soft edge as a share of its way
constexpr std::uint32_t kSlats = 12;

/// Weight of the place at @p position of the edge's way, 0..1.
std::uint32_t WeightBehindEdge(float position, float progress)
{
    return WeightOf((progress * (1 + kSoftness) - position) / kSoftness);
}

/// Middle of pixel @p index among @p count, 0..1.
float PositionOf(std::uint32_t index, std::uint32_t count)
{
    return (static_cast<float>(index) + 0.5F) / static_cast<float>(count);
}

void CopyPixels(std::uint8_t* pOutput, const std::uint8_t* pRow, std::uint32_t begin, std::uint32_t end)
{
    std::memcpy(pOutput + std::size_t{begin} * 4, pRow + std::size_t{begin} * 4, std::size_t{end - begin} * 4);
}

/// Tables of weights live as long as their thread.
std::uint16_t* WeightTable(std::uint32_t count)
{
    thread_local std::vector<std::uint16_t> table;
    if (table.size() < count)
        table.resize(count);
    return table.data();
}
} // namespace

void WipeAcross(const EffectPictures& pictures, float progress, bool toRight)
{
    std::uint16_t* const pWeights = WeightTable(pictures.width);
    std::uint32_t softBegin = pictures.width;
    std::uint32_t softEnd = 0;
    for (std::uint32_t x = 0; x < pictures.width; ++x)
    {
        const float position = PositionOf(x, pictures.width);
        const std::uint32_t weight = WeightBehindEdge(toRight ? position : 1 - position, progress);
        pWeights[x] = static_cast<std::uint16_t>(weight);
        if (weight != 0 && weight != kFullWeight)
        {
            softBegin = std::min(softBegin, x);
            softEnd = x + 1;
        }
    }
    if (softEnd == 0) // a picture so narrow that the edge lies between two columns
        softBegin = softEnd = static_cast<std::uint32_t>(
            std::find(pWeights, pWeights + pictures.width, toRight ? 0 : kFullWeight) - pWeights);
    for (std::uint32_t y = 0; y < pictures.height; ++y)
    {
        std::uint8_t* const pOutput = pictures.OutputRow(y);
        const std::uint8_t* const pFrom = pictures.FromRow(y);
        const std::uint8_t* const pTo = pictures.ToRow(y);
        CopyPixels(pOutput, toRight ? pTo : pFrom, 0, softBegin);
        const std::size_t at = std::size_t{softBegin} * 4;
        MixRow(pOutput + at, pFrom + at, pTo + at, softEnd - softBegin, pWeights + softBegin);
        CopyPixels(pOutput, toRight ? pFrom : pTo, softEnd, pictures.width);
    }
}

void WipeAlong(const EffectPictures& pictures, float progress, bool down)
{
    for (std::uint32_t y = 0; y < pictures.height; ++y)
    {
        const float position = PositionOf(y, pictures.height);
        MixRow(pictures.OutputRow(y), pictures.FromRow(y), pictures.ToRow(y), pictures.width,
               WeightBehindEdge(down ? position : 1 - position, progress));
    }
}

void Blinds(const EffectPictures& pictures, float progress)
{
    for (std::uint32_t y = 0; y < pictures.height; ++y)
    {
        const float slat = PositionOf(y, pictures.height) * static_cast<float>(kSlats);
        MixRow(pictures.OutputRow(y), pictures.FromRow(y), pictures.ToRow(y), pictures.width,
               WeightBehindEdge(slat - std::floor(slat), progress));
    }
}

void Iris(const EffectPictures& pictures, float progress)
{
    const float centerX = static_cast<float>(pictures.width) / 2;
    const float centerY = static_cast<float>(pictures.height) / 2;
    const float corner = std::hypot(centerX, centerY);
    const float outer = progress * (1 + kSoftness) * corner; // the from picture begins here
    const float inner = std::max(outer - kSoftness * corner, 0.0F);
    std::uint16_t* const pWeights = WeightTable(pictures.width);
    // Half the width of the circle of @p radius in the row @p dy from the middle; below 0 outside.
    const auto halfChord = [](float radius, float dy)
    { return radius > std::abs(dy) ? std::sqrt(radius * radius - dy * dy) : -1.0F; };
    const auto column = [&](float x)
    { return static_cast<std::uint32_t>(std::clamp(x, 0.0F, static_cast<float>(pictures.width))); };
    for (std::uint32_t y = 0; y < pictures.height; ++y)
    {
        const float dy = static_cast<float>(y) + 0.5F - centerY;
        const float reach = halfChord(outer, dy);
        const std::uint32_t begin = reach < 0 ? pictures.width : column(centerX - reach);
        const std::uint32_t end = reach < 0 ? pictures.width : column(centerX + reach + 1);
        const float full = halfChord(inner, dy);
        const std::uint32_t fullBegin = full < 0 ? end : std::clamp(column(centerX - full + 1), begin, end);
        const std::uint32_t fullEnd = full < 0 ? end : std::clamp(column(centerX + full - 1), fullBegin, end);
        for (std::uint32_t x = begin; x < end; ++x)
        {
            if (x == fullBegin)
                x = fullEnd;
            if (x < end)
                pWeights[x] = static_cast<std::uint16_t>(
                    WeightBehindEdge(std::hypot(static_cast<float>(x) + 0.5F - centerX, dy) / corner, progress));
        }
        std::uint8_t* const pOutput = pictures.OutputRow(y);
        const std::uint8_t* const pFrom = pictures.FromRow(y);
        const std::uint8_t* const pTo = pictures.ToRow(y);
        const auto mix = [&](std::uint32_t first, std::uint32_t last)
        {
            const std::size_t at = std::size_t{first} * 4;
            MixRow(pOutput + at, pFrom + at, pTo + at, last - first, pWeights + first);
        };
        CopyPixels(pOutput, pFrom, 0, begin);
        mix(begin, fullBegin);
        CopyPixels(pOutput, pTo, fullBegin, fullEnd);
        mix(fullEnd, end);
        CopyPixels(pOutput, pFrom, end, pictures.width);
    }
}

void ClockWipe(const EffectPictures& pictures, float progress)
{
    // A place at the angle a, clockwise from the top, lies r * sin(a) right of the upright line and, as the hand stands
    // at the angle h, r * sin(h - a) behind the hand: products instead of an arc tangent for every pixel.
    constexpr float kPi = 3.14159265358979F;
    const float hand = progress * 2 * kPi;
    const float sine = std::sin(hand);
    const float cosine = std::cos(hand);
    const float centerX = static_cast<float>(pictures.width) / 2;
    const float centerY = static_cast<float>(pictures.height) / 2;
    const float soft = std::max(std::hypot(centerX, centerY) * kSoftness / 4, 1.0F); // pixels
    const bool isFirstHalf = hand <= kPi;
    std::uint16_t* const pWeights = WeightTable(pictures.width);
    for (std::uint32_t y = 0; y < pictures.height; ++y)
    {
        const float dy = static_cast<float>(y) + 0.5F - centerY;
        for (std::uint32_t x = 0; x < pictures.width; ++x)
        {
            const float dx = static_cast<float>(x) + 0.5F - centerX;
            const float behindStart = std::clamp(dx / soft + 0.5F, 0.0F, 1.0F);
            const float behindHand = std::clamp((-dy * sine - dx * cosine) / soft + 0.5F, 0.0F, 1.0F);
            const float share = isFirstHalf ? std::min(behindStart, behindHand) : std::max(behindStart, behindHand);
            pWeights[x] = static_cast<std::uint16_t>(share * static_cast<float>(kFullWeight) + 0.5F);
        }
        MixRow(pictures.OutputRow(y), pictures.FromRow(y), pictures.ToRow(y), pictures.width, pWeights);
    }
}
} // namespace qmx::effects
