// An effect module that writes down what it was called with. The output begins with these 32-bit words; the rest of it
// is the from picture in even pixels and the to picture in odd ones.
#include "engine/platform/TxEffect.h"

#include <cstdint>
#include <cstring>

extern "C" QMX_EFFECT_EXPORT void ApplyTxEffect(const tagTxEffectParam* pParam)
{
    static std::uint32_t calls = 0; // starts anew with every load
    for (std::size_t i = 0; i < std::size_t{pParam->nWidth} * pParam->nHeight; ++i)
        std::memcpy(pParam->pOutput + i * 4, (i % 2 == 0 ? pParam->pFrom : pParam->pTo) + i * 4, 4);
    std::uint32_t words[] = {++calls, pParam->nEffectType, 0};
    std::memcpy(&words[2], &pParam->fProgress, 4);
    std::memcpy(pParam->pOutput, words, sizeof words);
}
