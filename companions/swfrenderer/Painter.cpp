#include "companions/swfrenderer/Painter.h"

#include <array>

namespace swf
{
namespace
{
constexpr int kPiece = 256; ///< pixels that are fetched at a time

std::uint32_t Channel(std::uint32_t pixel, int shift)
{
    return (pixel >> shift) & 255;
}

/// source * weight + target * (1 - its alpha * weight), rounded once.
std::uint32_t Weighted(std::uint32_t source, std::uint32_t target, std::uint32_t weight)
{
    const std::uint32_t keep =
        kFullWeight - static_cast<std::uint32_t>((std::uint64_t{source >> 24} * weight + 127) / 255);
    std::uint32_t out = 0;
    for (int shift = 0; shift < 32; shift += 8)
    {
        const std::uint32_t v = (Channel(source, shift) * weight + Channel(target, shift) * keep + 32'768) >> 16;
        out |= std::min(v, 255U) << shift;
    }
    return out;
}
} // namespace

void CPainter::BlendSolid(std::uint32_t* pTarget, int n, std::uint32_t colour, std::uint32_t weight) const
{
    if (colour >> 24 == 255 && weight == kFullWeight)
        return (void)std::fill_n(pTarget, n, colour);
    for (int i = 0; i < n; ++i)
        pTarget[i] = Weighted(colour, pTarget[i], weight);
}

void CPainter::Blend(std::uint32_t* pTarget, int n, const std::uint32_t* pSource, std::uint32_t weight,
                     const std::uint8_t* pMask) const
{
    for (int i = 0; i < n; ++i)
    {
        const std::uint32_t w = pMask ? (weight * pMask[i] + 127) / 255 : weight;
        if (w == kFullWeight)
            pTarget[i] = Over(pSource[i], pTarget[i]);
        else if (w != 0)
            pTarget[i] = Weighted(pSource[i], pTarget[i], w);
    }
}

/// Several fills in one pixel: their colours by their shares, which is premultiplied again.
void CPainter::FetchMixed(int y, int x, int n, std::span<const FillWeight> weights, std::uint32_t* pOut) const
{
    std::array<std::uint32_t, kPiece> colours;
    std::array<std::array<std::uint32_t, 4>, kPiece> sums;
    std::fill_n(sums.begin(), n, std::array<std::uint32_t, 4>{32'768, 32'768, 32'768, 32'768});
    for (const FillWeight& w : weights)
    {
        m_paints[w.fill - std::size_t{1}].Fetch(x, y, n, colours.data());
        for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i)
            for (int c = 0; c < 4; ++c)
                sums[i][static_cast<std::size_t>(c)] += Channel(colours[i], 8 * c) * w.weight;
    }
    for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i)
        pOut[i] = sums[i][0] >> 16 | sums[i][1] >> 16 << 8 | sums[i][2] >> 16 << 16 | sums[i][3] >> 16 << 24;
}

void CPainter::Span(int y, int x, int length, std::span<const FillWeight> weights)
{
    std::uint32_t* pTarget = m_target.At(x, y);
    const std::uint8_t* const pMask = m_pMask ? m_pMask->At(x, y) : nullptr;
    const CPaint& first = m_paints[weights[0].fill - std::size_t{1}];
    if (weights.size() == 1 && first.IsSolid() && !pMask)
        return BlendSolid(pTarget, length, first.Solid(), weights[0].weight);
    std::array<std::uint32_t, kPiece> colours;
    for (int done = 0; done < length; done += kPiece)
    {
        const int n = std::min(kPiece, length - done);
        std::uint32_t weight = kFullWeight;
        if (weights.size() == 1)
        {
            first.Fetch(x + done, y, n, colours.data());
            weight = weights[0].weight;
        }
        else
            FetchMixed(y, x + done, n, weights, colours.data());
        Blend(pTarget + done, n, colours.data(), weight, pMask ? pMask + done : nullptr);
    }
}

void CMaskPainter::Span(int y, int x, int length, std::span<const FillWeight> weights)
{
    std::uint32_t sum = 0;
    for (const FillWeight& w : weights)
        sum += w.weight;
    const std::uint32_t level = (std::min(sum, kFullWeight) * 255 + 32'768) >> 16;
    std::uint8_t* const pTarget = m_target.At(x, y);
    for (int i = 0; i < length; ++i)
        pTarget[i] = static_cast<std::uint8_t>(level + (pTarget[i] * (255 - level) + 127) / 255);
}
} // namespace swf
