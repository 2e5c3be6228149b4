#include "effects/Blend.h"

#include <algorithm>
#include <cstring>

namespace qmx::effects
{
namespace
{
/// Pixels that are looked at together: where all are opaque, alpha needs no thought.
constexpr std::uint32_t kRun = 64;

bool AllOpaque(const std::uint8_t* pFirst, const std::uint8_t* pSecond, std::uint32_t pixels)
{
    std::uint8_t all = 0xFF;
    for (std::uint32_t i = 0; i < pixels; ++i)
        all = static_cast<std::uint8_t>(all & pFirst[i * 4 + 3] & pSecond[i * 4 + 3]);
    return all == 0xFF;
}

std::uint8_t MixByte(std::uint32_t first, std::uint32_t second, std::uint32_t weight)
{
    return static_cast<std::uint8_t>((first * (kFullWeight - weight) + second * weight + kFullWeight / 2) /
                                     kFullWeight);
}

/// Bytes with one weight, in 16 bits: 255 * 256 + 128 is the most there can be.
void MixBytes(std::uint8_t* pOutput, const std::uint8_t* pFirst, const std::uint8_t* pSecond, std::uint32_t bytes,
              std::uint16_t weight)
{
    const auto rest = static_cast<std::uint16_t>(kFullWeight - weight);
    for (std::uint32_t i = 0; i < bytes; ++i)
    {
        const auto sum = static_cast<std::uint16_t>(pFirst[i] * rest + pSecond[i] * weight + 128);
        pOutput[i] = static_cast<std::uint8_t>(sum >> 8);
    }
}
} // namespace

std::uint32_t WeightOf(float share)
{
    if (!(share > 0))
        return 0;
    return share < 1 ? static_cast<std::uint32_t>(share * static_cast<float>(kFullWeight) + 0.5F) : kFullWeight;
}

void MixPixel(std::uint8_t* pOutput, const std::uint8_t* pFirst, const std::uint8_t* pSecond, std::uint32_t weight)
{
    const std::uint32_t firstShare = pFirst[3] * (kFullWeight - weight);
    const std::uint32_t secondShare = pSecond[3] * weight;
    const std::uint32_t sum = firstShare + secondShare; // alpha * 256
    if (sum == 0)
    {
        std::memset(pOutput, 0, 4);
        return;
    }
    for (int c = 0; c < 3; ++c)
        pOutput[c] = static_cast<std::uint8_t>((pFirst[c] * firstShare + pSecond[c] * secondShare + sum / 2) / sum);
    pOutput[3] = static_cast<std::uint8_t>((sum + kFullWeight / 2) / kFullWeight);
}

void MixRow(std::uint8_t* pOutput, const std::uint8_t* pFirst, const std::uint8_t* pSecond, std::uint32_t pixels,
            std::uint32_t weight)
{
    if (weight == 0 || weight == kFullWeight)
    {
        std::memmove(pOutput, weight == 0 ? pFirst : pSecond, std::size_t{pixels} * 4);
        return;
    }
    for (std::uint32_t begin = 0; begin < pixels; begin += kRun)
    {
        const std::uint32_t count = std::min(kRun, pixels - begin);
        const std::size_t at = std::size_t{begin} * 4;
        if (AllOpaque(pFirst + at, pSecond + at, count))
        {
            MixBytes(pOutput + at, pFirst + at, pSecond + at, count * 4, static_cast<std::uint16_t>(weight));
            continue;
        }
        for (std::uint32_t i = 0; i < count; ++i)
            MixPixel(pOutput + at + i * 4, pFirst + at + i * 4, pSecond + at + i * 4, weight);
    }
}

void MixRow(std::uint8_t* pOutput, const std::uint8_t* pFirst, const std::uint8_t* pSecond, std::uint32_t pixels,
            const std::uint16_t* pWeights)
{
    for (std::uint32_t begin = 0; begin < pixels; begin += kRun)
    {
        const std::uint32_t count = std::min(kRun, pixels - begin);
        const std::size_t at = std::size_t{begin} * 4;
        if (AllOpaque(pFirst + at, pSecond + at, count))
        {
            for (std::uint32_t i = 0; i < count * 4; ++i)
                pOutput[at + i] = MixByte(pFirst[at + i], pSecond[at + i], pWeights[begin + i / 4]);
            continue;
        }
        for (std::uint32_t i = 0; i < count; ++i)
            MixPixel(pOutput + at + i * 4, pFirst + at + i * 4, pSecond + at + i * 4, pWeights[begin + i]);
    }
}

void MixRowWithColor(std::uint8_t* pOutput, const std::uint8_t* pRow, const std::uint8_t* pColor, std::uint32_t pixels,
                     std::uint32_t weight)
{
    std::uint8_t run[kRun * 4];
    for (std::uint32_t i = 0; i < kRun; ++i)
        std::memcpy(run + i * 4, pColor, 4);
    for (std::uint32_t begin = 0; begin < pixels; begin += kRun)
    {
        const std::size_t at = std::size_t{begin} * 4;
        MixRow(pOutput + at, pRow + at, run, std::min(kRun, pixels - begin), weight);
    }
}
} // namespace qmx::effects
