#include "effects/Effects.h"
#include "engine/platform/TxEffect.h"

#include <cstring>

extern "C" QMX_EFFECT_EXPORT void ApplyTxEffect(const tagTxEffectParam* pParam)
{
    using namespace qmx::effects;
    if (!pParam || !pParam->pOutput || !pParam->pFrom || !pParam->pTo || pParam->nWidth == 0 || pParam->nHeight == 0)
        return;
    const EffectPictures pictures{pParam->pOutput, pParam->pFrom, pParam->pTo, pParam->nWidth, pParam->nHeight};
    try
    {
        ApplyEffect(static_cast<EffectType>(pParam->nEffectType), pictures, pParam->fProgress);
    }
    catch (...)
    {
        // Memory for a table is short: a cut is better than nothing.
        std::memcpy(pictures.pOutput, pParam->fProgress >= 0.5F ? pictures.pTo : pictures.pFrom,
                    pictures.RowBytes() * pictures.height);
    }
}
