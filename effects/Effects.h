/// @file Effects.h
/// The effects of the module. Numbers are fixed: projects store them.
#pragma once

#include "effects/EffectPictures.h"

#include <cstdint>

namespace qmx::effects
{
/// Effect types as the host hands them over.
enum class EffectType : std::uint32_t
{
    Dissolve = 0,
    FadeThroughBlack = 1,
    FadeThroughWhite = 2,
    WipeRight = 3, ///< the edge runs to the right
    WipeLeft = 4,
    WipeDown = 5,
    WipeUp = 6,
    PushRight = 7, ///< both pictures move to the right
    PushLeft = 8,
    PushDown = 9,
    PushUp = 10,
    SlideOver = 11,
    Iris = 12,
    ClockWipe = 13,
    Blinds = 14,
    ZoomCross = 15,
    PageTurn = 16
};
inline constexpr std::uint32_t kEffectCount = 17;

/// Writes the whole output. A progress of 0 or below, or that is no number, gives the from picture, one of 1 or above
/// the to picture, bit by bit. An unknown type is a dissolve.
/// @throw std::bad_alloc
void ApplyEffect(EffectType type, const EffectPictures& pictures, float progress);

// The effects themselves. 0 < progress < 1.
void Dissolve(const EffectPictures& pictures, float progress);
void FadeThrough(const EffectPictures& pictures, float progress, const std::uint8_t* pColor);
void WipeAcross(const EffectPictures& pictures, float progress, bool toRight);
void WipeAlong(const EffectPictures& pictures, float progress, bool down);
void Iris(const EffectPictures& pictures, float progress);
void ClockWipe(const EffectPictures& pictures, float progress);
void Blinds(const EffectPictures& pictures, float progress);
void PushAcross(const EffectPictures& pictures, float progress, bool toRight);
void PushAlong(const EffectPictures& pictures, float progress, bool down);
void SlideOver(const EffectPictures& pictures, float progress);
void ZoomCross(const EffectPictures& pictures, float progress);
void PageTurn(const EffectPictures& pictures, float progress);
} // namespace qmx::effects
