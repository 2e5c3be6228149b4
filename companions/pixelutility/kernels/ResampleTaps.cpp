#include "companions/pixelutility/kernels/ResampleTaps.h"

#include <algorithm>

namespace qmx::kernels
{
namespace
{
// Positions are exact: an axis is source * target units long, so a source sample takes `target` units and an output
// sample takes `source` units.

/// Taps that cover output sample @p index: from the source sample at its start to the one before its end.
std::uint32_t CoveredTaps(const ResampleAxis& axis, std::uint32_t index)
{
    const std::uint64_t start = std::uint64_t{index} * axis.source;
    const std::uint64_t end = start + axis.source;
    return static_cast<std::uint32_t>((end + axis.target - 1) / axis.target - start / axis.target);
}

/// Where the weights of one output sample go.
struct WeightColumn
{
    std::int16_t* pFirstPair;
    std::size_t count; ///< output samples of the axis

    std::int16_t& operator[](std::size_t tap) const { return pFirstPair[tap / 2 * count * 2 + tap % 2]; }
};

std::uint32_t FillArea(const ResampleAxis& axis, std::uint32_t index, const WeightColumn& weights)
{
    const std::uint64_t start = std::uint64_t{index} * axis.source;
    const std::uint64_t first = start / axis.target;
    const std::uint32_t taps = CoveredTaps(axis, index);
    // Rounding the running sum instead of each weight makes them add up.
    std::int32_t sum = 0;
    for (std::uint32_t tap = 0; tap < taps; ++tap)
    {
        const std::uint64_t covered = std::min<std::uint64_t>((first + tap + 1) * axis.target - start, axis.source);
        const auto next = static_cast<std::int32_t>((covered * kTapOne + axis.source / 2) / axis.source);
        weights[tap] = static_cast<std::int16_t>(next - sum);
        sum = next;
    }
    return static_cast<std::uint32_t>(first);
}

std::uint32_t FillBilinear(const ResampleAxis& axis, std::uint32_t index, const WeightColumn& weights)
{
    // In half units: the output sample's centre, counted from the centre of source sample 0.
    const std::int64_t whole = std::int64_t{axis.target} * 2;
    const std::int64_t centre = (std::int64_t{index} * 2 + 1) * axis.source - axis.target;
    const std::int64_t last = std::int64_t{axis.source} - 1;
    if (centre <= 0 || centre >= last * whole)
    {
        weights[0] = kTapOne;
        return static_cast<std::uint32_t>(centre <= 0 ? 0 : last);
    }
    const auto second = static_cast<std::int32_t>((centre % whole * kTapOne + axis.target) / whole);
    weights[0] = static_cast<std::int16_t>(kTapOne - second);
    weights[1] = static_cast<std::int16_t>(second);
    return static_cast<std::uint32_t>(centre / whole);
}
} // namespace

std::uint32_t ResampleAxis::Pairs() const
{
    std::uint32_t taps = 2;
    for (std::uint32_t i = 0; method == ResampleMethod::Area && i < target; ++i)
        taps = std::max(taps, CoveredTaps(*this, i));
    return (taps + 1) / 2;
}

ResampleTaps MakeResampleTaps(const ResampleAxis& axis, std::uint32_t pairs, std::uint32_t* pFirst,
                              std::int16_t* pWeights)
{
    std::fill_n(pFirst, TapFirstCount(axis), 0U);
    std::fill_n(pWeights, TapWeightCount(axis, pairs), std::int16_t{0});
    for (std::uint32_t i = 0; i < axis.target; ++i)
    {
        const WeightColumn weights{pWeights + std::size_t{i} * 2, axis.target};
        pFirst[i] = axis.method == ResampleMethod::Area ? FillArea(axis, i, weights) : FillBilinear(axis, i, weights);
    }
    return {axis.target, pairs, pFirst, pWeights};
}
} // namespace qmx::kernels
