/* The smallest effect module, in C: the to picture comes in from the left. */
#include "engine/platform/TxEffect.h"

#include <string.h>

QMX_EFFECT_EXPORT void ApplyTxEffect(const struct tagTxEffectParam* pParam)
{
    /* !(a > b) also holds for what is no number. */
    const float progress = !(pParam->fProgress > 0) ? 0 : pParam->fProgress < 1 ? pParam->fProgress : 1;
    const uint32_t edge = (uint32_t)((float)pParam->nWidth * progress);
    const size_t row = (size_t)pParam->nWidth * 4;
    const size_t covered = (size_t)edge * 4;
    for (uint32_t y = 0; y < pParam->nHeight; ++y)
    {
        memcpy(pParam->pOutput + y * row, pParam->pTo + y * row, covered);
        memcpy(pParam->pOutput + y * row + covered, pParam->pFrom + y * row + covered, row - covered);
    }
}
