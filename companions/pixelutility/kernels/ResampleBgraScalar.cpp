#include "companions/pixelutility/kernels/ResampleBgra.h"

#include <algorithm>

namespace qmx::kernels
{
namespace
{
void SumColumns(const BgraResampler& resampler, std::uint32_t row, std::int16_t* pSums)
{
    const std::uint32_t taps = resampler.rows.pairs * 2;
    const std::size_t cb = std::size_t{resampler.horizontal.source} * 4;
    for (std::size_t i = 0; i < cb; ++i)
    {
        std::int32_t sum = 1 << 6;
        for (std::uint32_t tap = 0; tap < taps; ++tap)
        {
            const std::uint32_t source = std::min(resampler.rows.pFirst[row] + tap, resampler.vertical.source - 1);
            sum +=
                resampler
                    .pSource[static_cast<std::ptrdiff_t>(source) * resampler.stride + static_cast<std::ptrdiff_t>(i)] *
                resampler.rows.Weight(row, tap);
        }
        pSums[i] = static_cast<std::int16_t>(sum >> 7);
    }
}

void SumRow(const BgraResampler& resampler, const std::int16_t* pSums, std::uint8_t* pTarget)
{
    const std::uint32_t taps = resampler.columns.pairs * 2;
    for (std::size_t x = 0; x < resampler.horizontal.target; ++x)
    {
        const std::int16_t* const pFirst = pSums + std::size_t{resampler.columns.pFirst[x]} * 4;
        for (std::size_t channel = 0; channel < 4; ++channel)
        {
            std::int32_t sum = 1 << 20;
            for (std::size_t tap = 0; tap < taps; ++tap)
                sum += pFirst[tap * 4 + channel] * resampler.columns.Weight(x, tap);
            pTarget[x * 4 + channel] = static_cast<std::uint8_t>(sum >> 21);
        }
    }
}
} // namespace

void ResampleBgraScalar(const BgraResampler& resampler, std::uint32_t first, std::uint32_t end, std::uint8_t* pTarget,
                        std::ptrdiff_t strideTarget, std::int16_t* pScratch)
{
    std::fill(pScratch + std::size_t{resampler.horizontal.source} * 4, pScratch + resampler.ScratchSize(),
              std::int16_t{0}); // taps beyond the last pixel
    for (std::uint32_t row = first; row < end; ++row)
    {
        SumColumns(resampler, row, pScratch);
        SumRow(resampler, pScratch, pTarget + static_cast<std::ptrdiff_t>(row - first) * strideTarget);
    }
}
} // namespace qmx::kernels
