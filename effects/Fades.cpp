// One weight for the whole picture.
#include "effects/Blend.h"
#include "effects/Effects.h"

namespace qmx::effects
{
void Dissolve(const EffectPictures& pictures, float progress)
{
    const std::uint32_t weight = WeightOf(progress);
    for (std::uint32_t y = 0; y < pictures.height; ++y)
        MixRow(pictures.OutputRow(y), pictures.FromRow(y), pictures.ToRow(y), pictures.width, weight);
}

void FadeThrough(const EffectPictures& pictures, float progress, const std::uint8_t* pColor)
{
    const bool isFirstHalf = progress < 0.5F;
    const std::uint32_t weight = WeightOf(isFirstHalf ? progress * 2 : 2 - progress * 2);
    for (std::uint32_t y = 0; y < pictures.height; ++y)
        MixRowWithColor(pictures.OutputRow(y), isFirstHalf ? pictures.FromRow(y) : pictures.ToRow(y), pColor,
                        pictures.width, weight);
}
} // namespace qmx::effects
