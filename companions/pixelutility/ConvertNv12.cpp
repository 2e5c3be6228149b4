#include "companions/pixelutility/ConvertNv12.h"

#include "companions/pixelutility/Bands.h"
#include "companions/pixelutility/RotateBgra.h"
#include "companions/pixelutility/kernels/ResampleBgra.h"
#include "companions/pixelutility/kernels/YuvToBgra.h"

#include <algorithm>
#include <array>

using qmx::kernels::BgraResampler;
using qmx::kernels::YuvMatrix;
using qmx::kernels::YuvPicture;

namespace
{
constexpr std::uint32_t kFirstHdHeight = 720;
constexpr std::uint32_t kMaxRowsPerStep = 64;

/// Converts the rows @p first to @p end - 1. @param first  even, where a chroma row begins
void ConvertRows(const Nv12Picture& source, std::uint32_t first, std::uint32_t end, std::uint8_t* pTarget,
                 std::ptrdiff_t strideTarget)
{
    YuvPicture picture;
    picture.pY = source.LumaRow(first);
    picture.pU = source.ChromaRow(first / 2);
    picture.strideY = static_cast<std::ptrdiff_t>(source.width);
    picture.strideU = static_cast<std::ptrdiff_t>(source.ChromaStride());
    picture.width = static_cast<int>(source.width);
    picture.height = static_cast<int>(end - first);
    picture.interleavedChroma = true;
    picture.matrix = source.height >= kFirstHdHeight ? YuvMatrix::Bt709 : YuvMatrix::Bt601;
    (void)ConvertYuvToBgra(picture, pTarget, strideTarget);
}

/// The same size: no scaling.
bool ConvertAndTurn(const Nv12Picture& source, const BgraPicture& target, std::uint32_t angle)
{
    const std::uint32_t pairs = (source.height + 1) / 2;
    const std::uint32_t count = BandCount(pairs, source.Pixels());
    const std::uint32_t step = RowsPerTurn(source.width) & ~1U;
    const std::size_t cbBand =
        CScratch::BlockBytes<std::uint8_t>(angle == 0 ? 0 : std::size_t{step} * source.width * 4);
    CScratch scratch(cbBand * count);
    if (angle != 0 && !scratch)
        return false;
    std::uint8_t* const pBands = angle != 0 ? scratch.Take<std::uint8_t>(cbBand * count) : nullptr;
    ForEachBand(pairs, count,
                [&](std::uint32_t index, std::uint32_t firstPair, std::uint32_t endPair)
                {
                    const std::uint32_t first = firstPair * 2;
                    const std::uint32_t end = std::min(endPair * 2, source.height);
                    if (angle == 0)
                        return ConvertRows(source, first, end, target.Row(first), target.Stride());
                    for (std::uint32_t row = first; row < end; row += step)
                    {
                        const BgraPicture rows{pBands + cbBand * index, source.width, std::min(step, end - row),
                                               source.width * 4};
                        ConvertRows(source, row, row + rows.height, rows.pData, rows.Stride());
                        TurnBand(rows, row, source.height, target, angle);
                    }
                });
    return true;
}

/// One picture being scaled; what all bands share.
struct Scaling
{
    const Nv12Picture& source;
    const BgraPicture& target;
    std::uint32_t angle;
    std::uint32_t step = 0;       ///< output rows that are made at a time
    std::uint32_t sourceRows = 0; ///< most source rows that they are made of
    BgraResampler resampler = {}; ///< its pixels are set for each step

    std::size_t BytesConverted() const { return std::size_t{sourceRows} * source.width * 4; }
    std::size_t BytesScaled() const { return angle == 0 ? 0 : std::size_t{step} * resampler.horizontal.target * 4; }
};

/// What one band works in.
struct BandScratch
{
    std::int16_t* pSums;
    std::uint8_t* pConverted; ///< Scaling::BytesConverted()
    std::uint8_t* pScaled;    ///< Scaling::BytesScaled()
};

/// Last source row, exclusive, that the output rows up to @p row need.
std::uint32_t SourceEnd(const BgraResampler& resampler, std::uint32_t row)
{
    return std::min(resampler.rows.pFirst[row] + resampler.rows.pairs * 2, resampler.vertical.source);
}

/// As many rows at a time as keep what they are made of in the second-level cache.
/// @param pairs  pairs of taps down a column
void ChooseStep(Scaling& scaling, std::uint32_t pairs)
{
    constexpr std::uint32_t kBytes = 256 * 1024;
    const std::uint64_t sourceHeight = scaling.resampler.vertical.source;
    const std::uint64_t targetHeight = scaling.resampler.vertical.target;
    const std::uint64_t fitting = kBytes / (std::uint64_t{scaling.source.width} * 4);
    const std::uint64_t least = scaling.angle == 0 ? 4 : 16; // a quarter turn writes whole cache lines
    const std::uint64_t step = std::clamp<std::uint64_t>(fitting * targetHeight / sourceHeight, least, kMaxRowsPerStep);
    scaling.step = static_cast<std::uint32_t>(step);
    // First taps lie sourceHeight / targetHeight rows apart, each rounded down, the first of them to an even row.
    const std::uint64_t rows = step * sourceHeight / targetHeight + 2 + std::uint64_t{pairs} * 2 + 1;
    scaling.sourceRows = static_cast<std::uint32_t>(std::min(rows, sourceHeight));
}

/// Makes the output rows @p row to @p row + @p count - 1.
void ScaleStep(const Scaling& scaling, std::uint32_t row, std::uint32_t count, const BandScratch& scratch)
{
    const std::uint32_t first = scaling.resampler.rows.pFirst[row] & ~1U;
    const std::uint32_t end = SourceEnd(scaling.resampler, row + count - 1);
    const auto stride = static_cast<std::ptrdiff_t>(scaling.source.width) * 4;
    ConvertRows(scaling.source, first, end, scratch.pConverted, stride);

    // The same taps, counted from the first row that was converted.
    std::array<std::uint32_t, kMaxRowsPerStep> firstTaps{};
    for (std::uint32_t i = 0; i < count; ++i)
        firstTaps[i] = scaling.resampler.rows.pFirst[row + i] - first;
    BgraResampler resampler = scaling.resampler;
    resampler.pSource = scratch.pConverted;
    resampler.stride = stride;
    resampler.vertical.source = end - first;
    resampler.rows.pFirst = firstTaps.data();
    resampler.rows.pWeights += std::size_t{row} * 2;
    if (scaling.angle == 0)
        return ResampleBgra(resampler, 0, count, scaling.target.Row(row), scaling.target.Stride(), scratch.pSums);
    const std::uint32_t width = resampler.horizontal.target;
    const BgraPicture rows{scratch.pScaled, width, count, width * 4};
    ResampleBgra(resampler, 0, count, rows.pData, rows.Stride(), scratch.pSums);
    TurnBand(rows, row, resampler.vertical.target, scaling.target, scaling.angle);
}
} // namespace

bool Nv12Picture::FromDescriptor(const tagSampleInfo* pInfo, Nv12Picture& picture)
{
    constexpr std::uint32_t kMaxSide = 32'767;
    if (!pInfo || !pInfo->pData || pInfo->nWidth == 0 || pInfo->nHeight == 0)
        return false;
    if (pInfo->nWidth > kMaxSide || pInfo->nHeight > kMaxSide)
        return false;
    picture = {pInfo->pData, pInfo->nWidth, pInfo->nHeight};
    return true;
}

bool ConvertScaleAndTurn(const Nv12Picture& source, std::uint32_t width, std::uint32_t height,
                         const BgraPicture& target, std::uint32_t angle, ShrinkMode mode)
{
    if (source.width == width && source.height == height)
        return ConvertAndTurn(source, target, angle);

    Scaling scaling{source, target, angle};
    BgraResampler& resampler = scaling.resampler;
    resampler.horizontal = MakeAxis(source.width, width, mode);
    resampler.vertical = MakeAxis(source.height, height, mode);
    const std::uint32_t columnPairs = resampler.horizontal.Pairs();
    const std::uint32_t rowPairs = resampler.vertical.Pairs();
    resampler.columns.pairs = columnPairs; // ScratchSize() depends on them
    ChooseStep(scaling, rowPairs);

    const std::uint32_t count = BandCount(height, std::max(source.Pixels(), target.Pixels()));
    const std::size_t cbSums = CScratch::BlockBytes<std::int16_t>(resampler.ScratchSize());
    const std::size_t cbConverted = CScratch::BlockBytes<std::uint8_t>(scaling.BytesConverted());
    const std::size_t cbBand = cbSums + cbConverted + CScratch::BlockBytes<std::uint8_t>(scaling.BytesScaled());
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
                    const BandScratch band{reinterpret_cast<std::int16_t*>(pBand), pBand + cbSums,
                                           pBand + cbSums + cbConverted};
                    for (std::uint32_t row = first; row < end; row += scaling.step)
                        ScaleStep(scaling, row, std::min(scaling.step, end - row), band);
                });
    return true;
}
