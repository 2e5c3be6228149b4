/** @file TxEffect.h
 *  What a transition clip and an effect module exchange. An effect module is a library beside the host's executable
 * that exports ApplyTxEffect(). This header is C and C++; a module needs nothing else of the engine. */
#ifndef QMX_TX_EFFECT_H
#define QMX_TX_EFFECT_H

#include <stdint.h>

/** One picture to blend. All three pictures are BGRA of 4 bytes with straight alpha, rows of width * 4 bytes without
 *  padding, top row first. They belong to the caller and are valid during the call. The layout is fixed. */
struct tagTxEffectParam
{
    uint8_t* pOutput;     /**< to be written, every pixel: what it holds before is undefined */
    const uint8_t* pFrom; /**< the clip that ends; never written */
    const uint8_t* pTo;   /**< the clip that begins; never written */
    uint32_t nWidth;      /**< pixels, at least 1 */
    uint32_t nHeight;     /**< rows, at least 1 */
    uint32_t nEffectType; /**< which of the module's effects; unknown values are the module's to define */
    float fProgress;      /**< 0 at the start of the transition, where the from picture shows, 1 at its end */
};

/** Entry point of an effect module, exported with C linkage under the name "ApplyTxEffect". Its result is not looked
 * at. It is called on any thread, for several transitions at the same time, and must not throw. */
typedef void (*QMXApplyTxEffect)(const struct tagTxEffectParam* pParam);

/** @def QMX_EFFECT_EXPORT
 *  Stands before ApplyTxEffect() in a module. In C++ extern "C" stands before it. */
#if defined(_WIN32)
#define QMX_EFFECT_EXPORT __declspec(dllexport)
#else
#define QMX_EFFECT_EXPORT __attribute__((visibility("default")))
#endif

#endif
