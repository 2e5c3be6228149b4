#include "companions/pixelutility/ScaleBgra.h"

#include "companions/pixelutility/Bands.h"
#include "companions/pixelutility/RotateBgra.h"
#include "companions/pixelutility/Scratch.h"
#include "companions/pixelutility/kernels/ResampleBgra.h"

#include <algorithm>

using qmx::kernels::BgraResampler;
using qmx::kernels::MakeResampleTaps;
using qmx::kernels::ResampleAxis;
using qmx::kernels::ResampleMethod;
using qmx::kernels::ResampleTaps;

ResampleAxis MakeAxis(std::uint32_t source, std::uint32_t target, ShrinkMode mode)
{
    const bool area = mode == ShrinkMode::Area && target < source;
    return {source, target, area ? ResampleMethod::Area : ResampleMethod::Bilinear};
}

std::size_t TapBytes(const ResampleAxis& axis, std::uint32_t pairs)
{
    return CScratch::BlockBytes<std::uint32_t>(TapFirstCount(axis)) +
           CScratch::BlockBytes<std::int16_t>(TapWeightCount(axis, pairs));
}

ResampleTaps TakeTaps(CScratch& scratch, const ResampleAxis& axis, std::uint32_t pairs)
{
    auto* const pFirst = scratch.Take<std::uint32_t>(TapFirstCount(axis));
    auto* const pWeights = scratch.Take<std::int16_t>(TapWeightCount(axis, pairs));
    return MakeResampleTaps(axis, pairs, pFirst, pWeights);
}

std::uint32_t RowsPerTurn(std::uint32_t width)
{
    constexpr std::uint32_t kBytes = 256 * 1024;
    return std::clamp(kBytes / (width * 4), 16U, 64U);
}

namespace
{
/// What one band works in.
struct BandScratch
{
    std::int16_t* pSums;
    std::uint8_t* pRows; ///< RowsPerTurn() rows
};

void ScaleBand(const BgraResampler& resampler, std::uint32_t first, std::uint32_t end, const BandScratch& scratch,
               const BgraPicture& target, std::uint32_t angle)
{
    if (angle == 0)
    {
        ResampleBgra(resampler, first, end, target.Row(first), target.Stride(), scratch.pSums);
        return;
    }
    const std::uint32_t width = resampler.horizontal.target;
    const std::uint32_t step = RowsPerTurn(width);
    for (std::uint32_t row = first; row < end; row += step)
    {
        const BgraPicture rows{scratch.pRows, width, std::min(step, end - row), width * 4};
        ResampleBgra(resampler, row, row + rows.height, rows.pData, rows.Stride(), scratch.pSums);
        TurnBand(rows, row, resampler.vertical.target, target, angle);
    }
}
} // namespace

bool ScaleAndTurnPicture(const BgraPicture& source, std::uint32_t width, std::uint32_t height,
                         const BgraPicture& target, std::uint32_t angle, ShrinkMode mode)
{
    if (source.width == width && source.height == height)
    {
        TurnPicture(source, target, angle);
        return true;
    }
    BgraResampler resampler;
    resampler.pSource = source.pData;
    resampler.stride = source.Stride();
    resampler.horizontal = MakeAxis(source.width, width, mode);
    resampler.vertical = MakeAxis(source.height, height, mode);
    const std::uint32_t columnPairs = resampler.horizontal.Pairs();
    const std::uint32_t rowPairs = resampler.vertical.Pairs();
    resampler.columns.pairs = columnPairs; // ScratchSize() depends on them

    const std::uint32_t count = BandCount(height, std::max(source.Pixels(), target.Pixels()));
    const std::size_t cRows = angle == 0 ? 0 : std::size_t{RowsPerTurn(width)} * width * 4;
    const std::size_t cbBand =
        CScratch::BlockBytes<std::int16_t>(resampler.ScratchSize()) + CScratch::BlockBytes<std::uint8_t>(cRows);
    CScratch scratch(TapBytes(resampler.horizontal, columnPairs) + TapBytes(resampler.vertical, rowPairs) +
                     cbBand * count);
    if (!scratch)
        return false;
    resampler.columns = TakeTaps(scratch, resampler.horizontal, columnPairs);
    resampler.rows = TakeTaps(scratch, resampler.vertical, rowPairs);
    std::uint8_t* const pBands = scratch.Take<std::uint8_t>(cbBand * count);
    ForEachBand(height, count,
                [&](std::uint32_t index, std::uint32_t first, std::uint32_t end)
                {
                    std::uint8_t* const pBand = pBands + cbBand * index;
                    const BandScratch band{reinterpret_cast<std::int16_t*>(pBand),
                                           pBand + CScratch::BlockBytes<std::int16_t>(resampler.ScratchSize())};
                    ScaleBand(resampler, first, end, band, target, angle);
                });
    return true;
}
