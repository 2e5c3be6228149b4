/// @file ResampleTaps.h
/// Which source samples make an output sample, and with which weights, along one axis.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qmx::kernels
{
/// Weight of 1. The weights of one output sample always add up to it, so that flat areas keep their colour exactly.
inline constexpr std::int32_t kTapOne = 1 << 14;

enum class ResampleMethod
{
    Bilinear, ///< between the two source samples whose centres lie around the output sample's centre
    Area      ///< mean of the source samples that the output sample covers, in proportion; for shrinking
};

/// One axis of a picture and of its scaled copy, 1..32,767 samples each.
struct ResampleAxis
{
    std::uint32_t source = 0; ///< samples of the source
    std::uint32_t target = 0; ///< samples of the output
    ResampleMethod method = ResampleMethod::Bilinear;

    /// Taps of an output sample, in pairs: all have the same number, filled up with taps of weight 0.
    std::uint32_t Pairs() const;
};

/// Entries that kernels read behind the last output sample's.
inline constexpr std::size_t kTapPadding = 16;

/// Borrowed tap table of an axis.
struct ResampleTaps
{
    std::uint32_t count = 0;                ///< output samples
    std::uint32_t pairs = 0;                ///< pairs of taps of an output sample
    const std::uint32_t* pFirst = nullptr;  ///< first source sample of each output sample. The last taps may lie beyond
                                            ///< the last source sample; their weight is 0.
    const std::int16_t* pWeights = nullptr; ///< two weights of every output sample's first pair, then of the second, …

    /// @param sample  output sample  @param tap  below 2 * pairs
    std::int32_t Weight(std::size_t sample, std::size_t tap) const
    {
        return pWeights[(tap / 2 * count + sample) * 2 + tap % 2];
    }
};

/// Entries of a tap table's two arrays.
inline std::size_t TapFirstCount(const ResampleAxis& axis)
{
    return axis.target + kTapPadding;
}
inline std::size_t TapWeightCount(const ResampleAxis& axis, std::uint32_t pairs)
{
    return (std::size_t{axis.target} * pairs + kTapPadding) * 2;
}

/// Computes the taps of @p axis.
/// @param pairs     axis.Pairs()
/// @param pFirst    [out] TapFirstCount() entries
/// @param pWeights  [out] TapWeightCount() entries
/// Both methods see a sample as the area around its centre: source sample j lies at (j + 1/2) / source of the axis.
ResampleTaps MakeResampleTaps(const ResampleAxis& axis, std::uint32_t pairs, std::uint32_t* pFirst,
                              std::int16_t* pWeights);
} // namespace qmx::kernels
