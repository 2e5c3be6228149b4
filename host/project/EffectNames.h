/// @file EffectNames.h
/// The effects of the module that comes with the program, as projects name them.
#pragma once

#include "host/project/ObjectReader.h"

#include <array>

namespace qmx::host
{
inline constexpr const char* kDefaultEffectModule = "qmx_transitions";

inline constexpr std::array<NamedNumber, 17> kEffectNames{{{"dissolve", 0},
                                                           {"fade-black", 1},
                                                           {"fade-white", 2},
                                                           {"wipe-right", 3},
                                                           {"wipe-left", 4},
                                                           {"wipe-down", 5},
                                                           {"wipe-up", 6},
                                                           {"push-right", 7},
                                                           {"push-left", 8},
                                                           {"push-down", 9},
                                                           {"push-up", 10},
                                                           {"slide-over", 11},
                                                           {"iris", 12},
                                                           {"clock", 13},
                                                           {"blinds", 14},
                                                           {"zoom", 15},
                                                           {"page-turn", 16}}};
} // namespace qmx::host
