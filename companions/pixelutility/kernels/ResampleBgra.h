/// @file ResampleBgra.h
/// Scaling of BGRA pictures: first down the columns into one row of 16 bits a channel, then along that row.
#pragma once

#include "companions/pixelutility/kernels/ResampleTaps.h"

#include <cstddef>
#include <cstdint>

namespace qmx::kernels
{
/// What a picture is scaled with. Everything is borrowed.
struct BgraResampler
{
    const std::uint8_t* pSource = nullptr; ///< first row, 4 bytes a pixel
    std::ptrdiff_t stride = 0;             ///< bytes
    ResampleAxis horizontal;
    ResampleAxis vertical;
    ResampleTaps columns; ///< taps along a row
    ResampleTaps rows;    ///< taps down a column

    /// Entries of 16 bits that ResampleBgra() needs for its row.
    std::size_t ScratchSize() const { return (std::size_t{horizontal.source} + std::size_t{columns.pairs} * 2) * 4; }
};

/// Writes the output rows @p first to @p end - 1. Channels are independent. Each is rounded twice, to 1/128 level
/// between the axes and to a level at the end; together with the weights' rounding it is within 1 level of the exact
/// mean for up to about 50 taps an axis.
/// @param pTarget   where row @p first goes: horizontal.target * 4 bytes a row, @p strideTarget bytes apart
/// @param pScratch  ScratchSize() entries for this call's use
void ResampleBgra(const BgraResampler& resampler, std::uint32_t first, std::uint32_t end, std::uint8_t* pTarget,
                  std::ptrdiff_t strideTarget, std::int16_t* pScratch);

/// The scalar twin: the same results.
void ResampleBgraScalar(const BgraResampler& resampler, std::uint32_t first, std::uint32_t end, std::uint8_t* pTarget,
                        std::ptrdiff_t strideTarget, std::int16_t* pScratch);
} // namespace qmx::kernels
