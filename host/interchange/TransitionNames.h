/// @file TransitionNames.h
/// Effects of transitions under the names that timelines and projects have for them.
#pragma once

#include <string>
#include <string_view>

namespace qmx::host
{
inline constexpr const char* kDissolveType = "SMPTE_Dissolve"; ///< the one type that every program knows
inline constexpr const char* kCustomType = "Custom_Transition";

struct EffectMatch
{
    const char* pEffect; ///< name of an effect of the module that comes with the program
    bool isExact;        ///< false: the nearest that there is
};

/// The effect for a transition of a timeline. @param type  its transition_type @param name  its own name
EffectMatch MatchEffect(std::string_view type, std::string_view name);

/// The name of an effect that a project gives by name or number; @p effect itself when it is neither.
std::string EffectName(const std::string& effect);
} // namespace qmx::host
