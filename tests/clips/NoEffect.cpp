// A library that is no effect module: it lacks the entry point.
#include "engine/platform/TxEffect.h"

extern "C" QMX_EFFECT_EXPORT void ApplySomethingElse() {}
