#include "effects/Effects.h"

#include <cstring>

namespace qmx::effects
{
namespace
{
constexpr std::uint8_t kBlack[] = {0, 0, 0, 255};
constexpr std::uint8_t kWhite[] = {255, 255, 255, 255};

void Apply(EffectType type, const EffectPictures& pictures, float progress)
{
    switch (type)
    {
    case EffectType::FadeThroughBlack:
        return FadeThrough(pictures, progress, kBlack);
    case EffectType::FadeThroughWhite:
        return FadeThrough(pictures, progress, kWhite);
    case EffectType::WipeRight:
    case EffectType::WipeLeft:
        return WipeAcross(pictures, progress, type == EffectType::WipeRight);
    case EffectType::WipeDown:
    case EffectType::WipeUp:
        return WipeAlong(pictures, progress, type == EffectType::WipeDown);
    case EffectType::PushRight:
    case EffectType::PushLeft:
        return PushAcross(pictures, progress, type == EffectType::PushRight);
    case EffectType::PushDown:
    case EffectType::PushUp:
        return PushAlong(pictures, progress, type == EffectType::PushDown);
    case EffectType::SlideOver:
        return SlideOver(pictures, progress);
    case EffectType::Iris:
        return Iris(pictures, progress);
    case EffectType::ClockWipe:
        return ClockWipe(pictures, progress);
    case EffectType::Blinds:
        return Blinds(pictures, progress);
    case EffectType::ZoomCross:
        return ZoomCross(pictures, progress);
    case EffectType::PageTurn:
        return PageTurn(pictures, progress);
    case EffectType::Dissolve:
        break;
    }
    Dissolve(pictures, progress);
}
} // namespace

void ApplyEffect(EffectType type, const EffectPictures& pictures, float progress)
{
    if (progress > 0 && progress < 1)
        Apply(type, pictures, progress);
    else
        std::memcpy(pictures.pOutput, progress >= 1 ? pictures.pTo : pictures.pFrom,
                    pictures.RowBytes() * pictures.height);
}
} // namespace qmx::effects
