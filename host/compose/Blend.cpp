#include "host/compose/Blend.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace qmx::host
{
namespace
{
constexpr std::uint32_t kBlack = 0xFF000000U;
constexpr std::uint32_t kOddBytes = 0x00FF00FFU; // blue and red, each with 8 bits above it to work in
constexpr std::size_t kBlock = 16;               // pixels that are looked at together

std::uint32_t Load(const std::uint8_t* p)
{
    std::uint32_t value;
    std::memcpy(&value, p, sizeof value);
    return value;
}

void Store(std::uint8_t* p, std::uint32_t value)
{
    std::memcpy(p, &value, sizeof value);
}

/// Both 16-bit halves divided by 255 and rounded to the nearest, exact for 0..65025:
/// (x + 128 + ((x + 128) >> 8)) >> 8.
constexpr std::uint32_t DivideBy255(std::uint32_t pair)
{
    pair += 0x00800080U;
    return (pair + ((pair >> 8) & kOddBytes)) >> 8 & kOddBytes;
}

/// Both 16-bit halves held at 255; each is at most 510 before.
constexpr std::uint32_t HoldAt255(std::uint32_t pair)
{
    const std::uint32_t over = pair >> 8 & 0x00010001U;
    return (pair | over * 255U) & kOddBytes;
}

struct Straight
{
    static std::uint32_t Over(std::uint32_t source, std::uint32_t target)
    {
        const std::uint32_t a = source >> 24;
        const std::uint32_t rest = 255 - a;
        const std::uint32_t odd = DivideBy255((source & kOddBytes) * a + (target & kOddBytes) * rest);
        const std::uint32_t green = DivideBy255((source >> 8 & 0xFFU) * a + (target >> 8 & 0xFFU) * rest);
        return kBlack | odd | green << 8;
    }
};

struct Premultiplied
{
    static std::uint32_t Over(std::uint32_t source, std::uint32_t target)
    {
        const std::uint32_t rest = 255 - (source >> 24);
        const std::uint32_t odd = HoldAt255((source & kOddBytes) + DivideBy255((target & kOddBytes) * rest));
        const std::uint32_t green = HoldAt255((source >> 8 & 0xFFU) + DivideBy255((target >> 8 & 0xFFU) * rest));
        return kBlack | odd | green << 8;
    }
};

void CopyRow(std::uint8_t* pTarget, const std::uint8_t* pSource, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i)
        Store(pTarget + i * 4, Load(pSource + i * 4) | kBlack);
}

/// What the alphas of a block have in common: all bits that are set in every one, and all that are set in any.
struct AlphaBits
{
    std::uint32_t every = 0xFF000000U;
    std::uint32_t any = 0;
};

AlphaBits LookAt(const std::uint8_t* pSource, std::size_t pixels)
{
    AlphaBits bits;
    for (std::size_t i = 0; i < pixels; ++i)
    {
        bits.every &= Load(pSource + i * 4);
        bits.any |= Load(pSource + i * 4);
    }
    return bits;
}

/// Overlays are mostly empty and films mostly solid, so whole blocks are skipped or copied where that gives the
/// same result.
template <class Rule> void BlendRow(std::uint8_t* pTarget, const std::uint8_t* pSource, std::size_t pixels)
{
    for (std::size_t at = 0; at < pixels; at += kBlock)
    {
        const std::size_t count = std::min(kBlock, pixels - at);
        std::uint8_t* const pTo = pTarget + at * 4;
        const std::uint8_t* const pFrom = pSource + at * 4;
        const AlphaBits bits = LookAt(pFrom, count);
        // A premultiplied pixel without alpha can still add light, so there all of its bits have to be clear.
        const bool empty = std::is_same_v<Rule, Straight> ? bits.any >> 24 == 0 : bits.any == 0;
        if (empty)
            continue;
        if (bits.every >> 24 == 255)
            CopyRow(pTo, pFrom, count);
        else
        {
            for (std::size_t i = 0; i < count; ++i)
                Store(pTo + i * 4, Rule::Over(Load(pFrom + i * 4), Load(pTo + i * 4)));
        }
    }
}

std::uint32_t Unpremultiplied(std::uint32_t pixel)
{
    const std::uint32_t a = pixel >> 24;
    if (a == 0 || a == 255)
        return a == 0 ? 0 : pixel;
    const auto level = [&](int shift) { return std::min(((pixel >> shift & 0xFFU) * 255 + a / 2) / a, 255U) << shift; };
    return level(0) | level(8) | level(16) | a << 24;
}
} // namespace

void FillRowBlack(std::uint8_t* pRow, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i)
        Store(pRow + i * 4, kBlack);
}

void DrawRow(std::uint8_t* pTarget, const std::uint8_t* pSource, std::size_t pixels, AlphaMode mode)
{
    switch (mode)
    {
    case AlphaMode::Opaque:
        CopyRow(pTarget, pSource, pixels);
        break;
    case AlphaMode::Straight:
        BlendRow<Straight>(pTarget, pSource, pixels);
        break;
    case AlphaMode::Premultiplied:
        BlendRow<Premultiplied>(pTarget, pSource, pixels);
        break;
    }
}

void CopyRowStraight(std::uint8_t* pTarget, const std::uint8_t* pSource, std::size_t pixels, AlphaMode mode)
{
    switch (mode)
    {
    case AlphaMode::Opaque:
        CopyRow(pTarget, pSource, pixels);
        break;
    case AlphaMode::Straight:
        std::memcpy(pTarget, pSource, pixels * 4);
        break;
    case AlphaMode::Premultiplied:
        for (std::size_t i = 0; i < pixels; ++i)
            Store(pTarget + i * 4, Unpremultiplied(Load(pSource + i * 4)));
        break;
    }
}
} // namespace qmx::host
